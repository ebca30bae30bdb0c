#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

class TStatInput;

/*! What a listing was made of. */
enum class ListingKind { CSPro, Spss, Stata };

/*! What the values of a field are. */
enum class ValueType { Integer, Real, String };

/*! How the values of a field may be used in computations. */
enum class Measure { Untold, Nominal, Ordinal, Scale };

/*! What a code stands for besides its label. */
enum class SpecialCode { None, Missing, NotApplicable, Refused, Default };

/*! Where the decimal point of the numbers stands. */
enum class DecimalPoint {
    Untold,
    Implied, /*!< in no column */
    InData
};

/*! \a text, where an empty one tells nothing: null then. */
inline QString orNull(const QString& text)
{
    return text.isEmpty() ? QString() : text;
}

/*! One value of a value set and its label; codes that share one label stand each for themselves. */
struct ListedCode {
    QString code; /*!< of a range: its low bound */
    QString highCode; /*!< high bound of a range; null: no range */
    QString label;
    SpecialCode special = SpecialCode::None;

    bool isRange() const
    {
        return !highCode.isNull();
    }

    bool isSpecial() const
    {
        return special != SpecialCode::None;
    }

    /*! The code, or "low:high" for a range. */
    QString text() const
    {
        return isRange() ? code + QLatin1Char(':') + highCode : code;
    }
};

/*! What is told of a value besides its codes and its label; null: nothing. */
struct ListedDetail {
    QString note;
    QString image; /*!< path as written */
};

struct ListedValueSet {
    QString name;
    QString label;
    QVector<ListedCode> codes;
    QString note {}; /*!< null: none */
    QHash<int, ListedDetail> details {}; /*!< of some codes, by their index */
};

/*! What bounds the numbers of a field. */
enum class RangeSource {
    Untold, /*!< nothing, or what the established rules make of it */
    Length, /*!< what fits the columns, and no more */
    ValueSet
};

/*! One field as a person expects it: numbers in digits, codes apart from their labels. */
struct ListedField {
    QString name; /*!< of an occurrence: ends in "_" and its number in digits */
    QString item; /*!< name in the dictionary */
    int occurrence = 0; /*!< number of the occurrence, from 1; 0: not repeated */
    QString occurrenceLabel; /*!< null: none */
    QString label;
    QString record; /*!< name of the record; null for an identification item, and without records */
    bool isIdentification = false; /*!< on the lines of every record of its level and below */
    int level = 0; /*!< of the questionnaire, from 1; 0: not read */
    QString parent; /*!< name in the dictionary of the item that a subitem describes columns of;
                       null: none, or not read */
    ValueType type = ValueType::String;
    int start = 0; /*!< first column, from 1; 0: the file has no columns */
    int length = 0; /*!< in columns, or as the format shows the values */
    int decimals = 0;
    QString format; /*!< as written, for example "F8.2"; null: none */
    Measure measure = Measure::Untold;
    bool hasDecimalChar = false; /*!< the decimal point is in the data */
    bool isZeroFilled = false; /*!< numbers have zeros on their left, not blanks */
    bool isSubItem = false;
    QString missing; /*!< code, or codes and ranges joined by commas; null: none */
    QVector<ListedCode> missingRanges; /*!< the same one by one, of SPSS files */
    QString notApplicable; /*!< code; null: none */
    QString min; /*!< null: none */
    QString max; /*!< null: none */
    RangeSource rangeSource = RangeSource::Untold;
    QString rangeValueSet; /*!< name of the value set that has the range; null: none has */
    QString note; /*!< null: none */
    QVector<ListedValueSet> valueSets; /*!< the first is the one to show when one is shown */
    bool areValuesListed = false; /*!< all values of the rows, which were read, are in the first
                                     value set */

    bool isText() const
    {
        return type == ValueType::String;
    }

    /*! True when the values stand in columns of lines. */
    bool hasColumns() const
    {
        return start > 0;
    }

    /*! True when more than the columns bounds the numbers. */
    bool hasRange() const
    {
        return rangeSource != RangeSource::Length && !(min.isNull() && max.isNull());
    }

    /*! Untold without decimals and without columns. */
    DecimalPoint decimalPoint() const
    {
        if (isText() || decimals <= 0 || start <= 0)
            return DecimalPoint::Untold;
        return hasDecimalChar ? DecimalPoint::InData : DecimalPoint::Implied;
    }

    /*! The missing codes one by one, of every kind of file. */
    QVector<ListedCode> missingCodes() const
    {
        if (!missingRanges.isEmpty() || missing.isNull())
            return missingRanges;
        return { { missing, QString(), QString() } };
    }

    /*! The not-applicable code, if there is one. */
    QVector<ListedCode> notApplicableCodes() const
    {
        if (notApplicable.isNull())
            return {};
        return { { notApplicable, QString(), QString() } };
    }

    /*! Number of codes with labels, in the first value set. */
    int valueLabelCount() const
    {
        return valueSets.isEmpty() ? 0 : valueSets.constFirst().codes.size();
    }

    /*! The label, of an occurrence followed by the occurrence's own. */
    QString fullLabel() const
    {
        return occurrenceLabel.isNull() ? label
                                        : QStringLiteral("%1 (%2)").arg(label, occurrenceLabel);
    }
};

struct ListedRecord {
    QString name;
    QString label;
    QString recordType; /*!< code in the data line */
    int level = 0; /*!< from 1; 0: not read */
    int maxRecords = 0;
    int length = 0; /*!< last column */
    bool isRequired = true; /*!< in every case */
    QString note {}; /*!< null: none */
};

/*! What one dictionary holds. */
struct Listing {
    QString file;
    bool isPartial = false; /*!< something of the file could not be read, and was told of */
    ListingKind kind = ListingKind::CSPro;
    QString name;
    QString label;
    QString version; /*!< as written, for example "CSPro 7.7" */
    QString encoding; /*!< that the file was decoded with */
    int recordTypeStart = 0; /*!< first column, from 1 */
    int recordTypeLength = 0; /*!< 0: one record type */
    QStringList languages; /*!< names */
    QStringList languageLabels; /*!< what these are called, "" where that is not told */
    QStringList levels; /*!< names */
    qint64 rowCount = -1; /*!< cases in the file; -1: not told */
    QStringList notes;
    QVector<ListedRecord> records;
    QVector<ListedField> fields;
    std::shared_ptr<TStatInput> input; /*!< that the rows can be read from; null: none */

    /*! True for a kind of file whose fields stand in records; others are tables of rows. */
    bool hasRecords() const
    {
        return kind == ListingKind::CSPro;
    }

    /*!
     * Index of the first occurrence when field \a index is a later one with the same value sets,
     * else \a index.
     */
    int firstWithValuesOf(int index) const
    {
        const ListedField& field = fields.at(index);
        const int first = index - field.occurrence + 1;
        if (field.occurrence <= 1 || first < 0)
            return index;
        const ListedField& other = fields.at(first);
        const bool isSame = other.occurrence == 1 && other.item == field.item
            && other.record == field.record
            && other.valueSets.constData() == field.valueSets.constData();
        return isSame ? first : index;
    }
};
