#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QList>
#include <QString>
#include <QStringList>

class TDataImport;
class TGenericField;
class TOxRecord;
class TOxSourceField;

/*!
 * One data source of the application: its identity and type, its layout and data files, where its
 * lines hold the record type, and its fields.
 *
 * Ownership: the lists are the provider's own; the source fields, the importer and the record tree
 * are not, and are never deleted here.
 */
class MODEL_TESSEL_EXPORT TOxDataProvider {
public:
    TOxDataProvider();
    virtual ~TOxDataProvider();

    /*! Identification of the importer. */
    QString getDataProviderId() const;
    /*! Sets the identification. */
    void setDataProviderId(const QString& id);
    /*! Label of the source. */
    QString getDataProviderLabel() const;
    /*! Sets the label. */
    void setDataProviderLabel(const QString& label);

    /*! Name of the source's type; empty while it is none of the known ones. */
    QString getDataProviderType() const;
    /*! Number of the source's type: the index of its name, 0 while it is none of the known ones. */
    int getDataProviderTypeIndex() const;
    /*! Stores \a name and its number; does nothing when it is "NONE" or not in the list. */
    void setDataProviderType(const QString& name);

    /*! Column of the record type, from 1. */
    int getRecordTypeStart() const;
    /*! Sets that column. */
    void setRecordTypeStart(int start);
    /*! Width of the record type. */
    int getRecordTypeSize() const;
    /*! Sets that width. */
    void setRecordTypeSize(int size);
    /*! Number of record types; 0, as the library never sets it. */
    int getRecordTypes() const;
    /*! Does nothing. */
    void setRecordTypes(int count);
    /*! The record types. */
    QStringList getRecordTypeList() const;
    /*! Number of references, as the host set it. */
    int getReferences() const;
    /*! Sets that number. */
    void setReferences(int count);
    /*! The importer; null: none. */
    TDataImport* getImportData() const;
    /*! Sets the importer, which stays the caller's. */
    void setImportData(TDataImport* importer);

    /*! Name of the dictionary file, with native separators. */
    QString getLayoutFileName() const;
    /*! Sets it as it is given. */
    void setLayoutFileName(const QString& name);
    /*! Name of the data file, with native separators. */
    QString getDataFileName() const;
    /*! Sets it as it is given. */
    void setDataFileName(const QString& name);

    /*! The first field of exactly that name; null when there is none. */
    TOxSourceField* getField(const QString& name) const;
    /*! \a name when there is a field of that name; else empty. */
    QString getFieldName(const QString& name) const;
    /*!
     * The first field of exactly that name which belongs to every record or to \a record, in upper
     * or lower case; null when there is none.
     */
    TOxSourceField* getFieldFromRecord(const QString& name, const QString& record) const;
    /*! The record that TOxRecord::retrieveRecord() finds in the tree; null when there is none. */
    TOxRecord* getRecord(const QString& name) const;
    /*!
     * Searches an importer of this source's type for a field. The format registry knows none, so
     * the result is null, or the registry throws an error object: code 106 when there is none, 107
     * when a host has added the type.
     */
    TGenericField* findField(const QString& name, const QString& record) const;

    /*! Sets \c ErrorNumber to 0; true when there is a name of a data file. */
    bool openDataProvider();
    /*! False, always; does nothing. */
    bool closeDataProvider();

    /*! The record-type code of \c currentLine; empty when the line ends before the code does. */
    QString getRecordTypeValue() const;
    /*!
     * Cuts the record-type code of \c currentLine into \c recordTypeValue and looks for it in the
     * record tree. The result, also in \c recordTypeChar, is the character of the first record with
     * that code, or the character 255.
     */
    QString getRecordType();

    /*! Takes identity, type, record-type position, file names and fields from \a importer. */
    void genericGetFieldsFrom(TDataImport* importer);

    TDataImport* importData = nullptr; /*!< what the fields were read by; not owned */
    QString recordTypeValue; /*!< what getRecordType() cut last */
    QString currentLine; /*!< data line that is looked at */
    QString recordTypeChar; /*!< what getRecordType() found last */
    QString alternateFile; /*!< second name of a data file */
    TOxRecord* recordTree = nullptr; /*!< root; made by genericGetFieldsFrom() */
    QList<TOxSourceField*>* fields; /*!< in the importer's order */
    QString dataProviderId;
    QString dataProviderLabel;
    int dataProviderTypeIndex = 0;
    QString dataProviderTypeName;
    int recordTypeStart = 0; /*!< column of the record-type code in a data line, from 1 */
    int recordTypeSize = 0; /*!< width of the record-type code */
    QString layoutFileName; /*!< dictionary file */
    QString dataFileName;
    int recordTypes = 0; /*!< the library leaves it at 0 */
    int references = 0;
    QStringList recordTypeList;
    QStringList* layoutSources; /*!< layout of a CSV source, for its importer */
    QStringList* providerTypeNames; /*!< the index of a name is the number of the type */

private:
    Q_DISABLE_COPY(TOxDataProvider)
};
