#pragma once

#include <tessel_data/CodeTable.h>

#include <model_Tessel/CSProProblem.h>
#include <model_Tessel/CSProStructure.h>

#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>
#include <vector>

struct TStatFileDescription;

class TCSPro;

namespace tessel {

/*! Which value sets of a variable its values are compared with. */
enum class ValueSetChoice { First, Any };

/*! One code of a value set, or a range. */
struct DataCode {
    QString code; /*!< as written */
    QString highCode; /*!< upper bound; null: a single code */
    QString label; /*!< see DataDictionary::labelText() */
    Special special = Special::None;
};

/*! Codes with their labels. */
struct DataValueSet {
    QString name;
    QString label;
    QVector<DataCode> codes; /*!< in the order of the dictionary */
    QStringList notes; /*!< its own, and those of codes with the code in front */
};

/*! A field of a record, one for each occurrence, or an identification item. */
struct DataVariable {
    /*! What its values are. */
    enum class Type { Number, Text, Real, Binary };

    QString name; /*!< unique in its record; occurrences end in "_" and their number */
    QString itemName; /*!< the item's own name */
    QString label;
    QString occurrenceLabel; /*!< empty: none */
    QString note; /*!< of a CSPro dictionary; may have several lines */
    Type type = Type::Number;
    int level = 1; /*!< from 1 */
    int record = -1; /*!< index of the record; -1: identification item */
    int start = 0; /*!< first column in a data line, from 0, in characters */
    int width = 0; /*!< columns */
    int decimals = 0; /*!< of numbers, 0 to 18 */
    bool hasDecimalMark = false; /*!< the data hold the point */
    bool isZeroFilled = false;
    bool isSubItem = false;
    int parent = -1; /*!< index of the variable that a subitem describes columns of */
    int occurrence = 0; /*!< from 1; 0: not repeated */
    QVector<int> valueSets; /*!< indexes in DataDictionary::valueSets */
    std::shared_ptr<const CodeTable> codes; /*!< as chosen; null: any value is allowed */
};

/*! A record type. */
struct DataRecord {
    QString name;
    QString label;
    QString note;
    QString typeCode; /*!< what the record type's columns hold, without trailing blanks */
    int level = 1; /*!< from 1 */
    bool isRequired = true; /*!< a case has at least one */
    qint64 maximum = 1; /*!< most records of this type in a case */
    int width = 0; /*!< last column that the record's variables use */
    QVector<int> columns; /*!< variables: identification items of its level and above, its own */
    int idCount = 0; /*!< how many of \c columns are identification items */
    int firstColumn = 0; /*!< number of its first column among those of all records */
};

/*!
 * What a dictionary says of data, resolved for reading: columns from 0, occurrences one by one,
 * codes ready for looking up. Copies share the code tables.
 */
class TESSEL_DATA_EXPORT DataDictionary {
public:
    /*!
     * Reads the CSPro dictionary \a path, text or JSON, or that of a CSPro DB, as it is written;
     * throws DataError. What the reader passed over is in \c problems; readDictionaryFile() and
     * fromReader() tell also what is odd, and which encoding had to be assumed.
     */
    static DataDictionary fromFile(
        const QString& path, ValueSetChoice choice = ValueSetChoice::First);
    /*!
     * As fromFile(), of a dictionary's bytes; \a name is told in errors. Without the name of an
     * \a encoding it is found.
     */
    static DataDictionary fromBytes(const QByteArray& bytes, const QString& name,
        ValueSetChoice choice = ValueSetChoice::First, const QByteArray& encoding = QByteArray());
    /*! Copies the dictionary that \a reader read as it is written; \a name is told in errors. */
    static DataDictionary fromReader(
        const TCSPro& reader, const QString& name, ValueSetChoice choice = ValueSetChoice::First);
    /*! The dictionary of an SPSS or Stata file: one record, no identification items. */
    static DataDictionary fromDescription(const TStatFileDescription& description);

    /*! The text of \a label in the chosen language; where that has none, the first. */
    QString labelText(const QString& label) const;
    /*! The same in language \a language, its index. */
    QString labelText(const QString& label, int language) const;
    /*! The label of \a variable, of an occurrence followed by its own, in the chosen language. */
    QString fullLabel(const DataVariable& variable) const;
    /*! Variable behind column \a column of record \a record. */
    const DataVariable& variable(int record, int column) const;
    /*! The codes of value set \a set as values of \a variable, by their places in the set. */
    CodeTable codesOf(int set, const DataVariable& variable) const;
    /*! Columns of all records. */
    int columnCount() const;

    bool hasMissingKinds = false; /*!< blanks may be of the kinds ".a" to ".z" of Stata */
    QString name;
    QString label;
    QString note; /*!< of a CSPro dictionary itself */
    int recordTypeStart = 0; /*!< column of the record type, from 0 */
    int recordTypeWidth = 0; /*!< 0: one record, which every line is */
    QVector<CSProLanguage> languages;
    int language = 0; /*!< the chosen one, its index */
    QVector<CSProLevel> levels;
    std::vector<DataVariable> variables; /*!< in the order of the dictionary */
    QVector<int> ids; /*!< identification items of all levels, by level */
    std::vector<DataRecord> records;
    std::vector<DataValueSet> valueSets;
    QVector<CSProProblem> problems;
    /*! Of an SPSS or Stata file, whose variables are those of \c variables; else null. */
    std::shared_ptr<const TStatFileDescription> description;

private:
    friend class DictionaryResolver;

    void placeColumns();
};

} // namespace tessel
