#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QList>
#include <QString>
#include <QStringList>

#include <map>

class TGenericField;
class TOxSourceField;

/*!
 * Base of every importer: the source's names and the list of its fields.
 *
 * Ownership: the importer owns the list object \c fields and the fields in it, but deletes neither,
 * not when it is destroyed either; hosts keep both.
 */
class MODEL_TESSEL_EXPORT TDataImport {
public:
    TDataImport();
    /*! Stores \a sourceName unchanged, without looking for the file. */
    explicit TDataImport(const QString& sourceName);
    virtual ~TDataImport();

    /*! Identifies the source among others of the application. */
    virtual QString getDataProviderId() = 0;
    /*! Provider type name, for example "CSPRO". */
    virtual QString getDataProviderType() = 0;
    /*! Reads the dictionary into the fields; false here. */
    virtual bool openFile();
    /*! Lists the fields of a source whose layout is given in \a layoutSources; nothing here. */
    virtual void getDictionary(QList<TOxSourceField*>* list, QStringList* layoutSources);
    /*! Opens the source and returns a new list of its field names, which the caller owns. */
    virtual QStringList* selectLayoutSource();
    /*! True when the data hold several record types; false here. */
    virtual bool isMultiple();
    /*! Number of record types; 0 here. */
    virtual int getGroupCount();
    /*! Name of record type \a index, from 0; empty here. */
    virtual QString getGroupName(int index);
    /*! Value of record type \a index, from 0; empty here. */
    virtual QString getGroupValue(int index);
    /*! Index of the record type with that \a value; -1 when there is none, and always here. */
    virtual int getRecordTypeIndex(QString value);
    /*! Record type of the current data line; empty here. */
    virtual QString getRecordTypeCurrent();
    /*! A new list of layout sources, which the caller owns; empty here. */
    virtual QStringList* getLayoutSource();
    /*! Column of the record-type code in a data line, from 1; 0 here. */
    virtual int getRecordTypeStart();
    /*! Width of the record-type code; 0 here. */
    virtual int getRecordTypeSize();

    /*!
     * Appends a new source field for each field to \a list, which may be null when there are none;
     * the caller owns the source fields. Identifier and type are asked for with each field. A
     * subclass that overrides the other overload keeps this one with a using-declaration.
     */
    void getDictionary(QList<TOxSourceField*>* list);

    /*! Asks for the provider type and drops the answer; a hook of the constructors of subclasses.
     */
    void initDataImport();
    /*! Does nothing; where an importer may register its format. */
    void registerIOFormat();
    /*!
     * Starts with a new empty list of fields and an empty index; the old list and the fields stay
     * alive.
     */
    void openDataImport();
    /*! True, always. */
    bool closeDataImport();

    /*! Appends \a field; of two fields of one name, the index has the newer. */
    void addField(TGenericField* field);
    /*! The field of exactly that name; null when there is none. */
    TGenericField* fieldByName(const QString& name) const;
    /*! Field \a index of \c fields, from 0; null outside the list. */
    TGenericField* getField(int index) const;

    /*! The name of the source. */
    QString getSourceName() const;
    /*! Stores the absolute path of \a path, or an empty text when there is no such file. */
    void setSourceName(const QString& path);

    /*! The name of the data source. */
    QString getDataSourceName() const;
    /*!
     * Stores the absolute path of \a path. When there is no such file, a file whose name is the
     * last component of the dictionary's directory followed directly by the name of \a path, beside
     * that directory, is taken if it exists; without a dictionary the working directory stands for
     * the dictionary's.
     */
    void setDataSourceName(const QString& path);

    QString auxName;
    QString
        sourceName; /*!< dictionary file: an absolute path, empty, or what the constructor got */
    qint64 importSlotA = 0;
    double importRatio = 0;
    qint64 importSlotB = 0;
    QList<TGenericField*>* fields; /*!< in order of addition */
    QString dataSourceName; /*!< data file: an absolute path, or empty */
    qint64 importSlotC = 0;
    qint64 importSlotE = 0;
    qint64 importSlotF = 0;
    std::map<QString, TGenericField*> fieldsByName; /*!< index of \c fields by exact name */
    qint64 importSlotD = 0;
    QList<TGenericField*> extraList;

private:
    Q_DISABLE_COPY(TDataImport)
};
