#pragma once

#include <model_Tessel/StatInput.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QString>
#include <QStringList>
#include <QVector>

#include <readstat.h>

/*!
 * \file StatDictionary.h
 * The dictionary of an SPSS or Stata file as it is written, with what the fields of
 * TSPSSDataImport and TSTATADataImport do not show: widths and formats, missing values, labels of
 * every value, notes, and whether the file could be read at all.
 */

/*! Kind of a file that readStatDescription() reads. */
enum class TStatFileKind {
    Spss, /*!< SPSS system file (.sav, and .zsav where libreadstat reads it) */
    Stata, /*!< Stata data file (.dta) */
};

/*! A value as the file has it. */
struct TStatValue {
    readstat_type_t type = READSTAT_TYPE_DOUBLE;
    char tag = '\0'; /*!< 'a' to 'z' for a tagged missing value of Stata; else null */
    bool isSystemMissing = false; /*!< no number at all, and no tag */
    double number = 0; /*!< exact for every numeric type; 0 for strings and missing values */
    /*!
     * Strings as they are, integers in digits, floating numbers in the shortest form that reads
     * back as the same number, tagged missing values as ".a" to ".z", system missing as ".";
     * "-inf" and "inf" are the open ends of a range, "-inf" to 9 meaning 9 and all below it.
     */
    QString text;
};

/*! A value and its label. */
struct TStatLabelledValue {
    TStatValue value;
    QString label;
};

Q_DECLARE_TYPEINFO(TStatValue, Q_MOVABLE_TYPE);
Q_DECLARE_TYPEINFO(TStatLabelledValue, Q_MOVABLE_TYPE);

/*! The value labels of one name, in the order of the file. */
struct TStatLabelSet {
    QString name; /*!< SPSS files name no sets; libreadstat numbers them */
    QVector<TStatLabelledValue> labels;
};

/*! User-defined missing values from \c low to \c high; a single value has both the same. */
struct TStatMissingRange {
    TStatValue low;
    TStatValue high;
};

/*! A text that a Stata file keeps under a name, for itself or for a variable; notes are apart. */
struct TStatCharacteristic {
    QString name;
    QString text;
};

/*! One variable as the file has it. */
struct MODEL_TESSEL_EXPORT TStatVariableDescription {
    QString name;
    QString label;
    readstat_type_t type = READSTAT_TYPE_DOUBLE;
    /*!
     * Bytes of a value in libreadstat's rows; strings are padded. Nothing is told of the texts of a
     * strL (READSTAT_TYPE_STRING_REF), which stand apart from the rows.
     */
    quint64 storageWidth = 0;
    quint64 userWidth = 0; /*!< width asked for by the writer of the file; 0: not told */
    int displayWidth = 0; /*!< columns on the screen, below 0 when aligned left; 0: not told */
    QString format; /*!< as written, with width and decimals: "F8.2", "A20", "%9.0g", "%td" */
    readstat_measure_t measure = READSTAT_MEASURE_UNKNOWN;
    readstat_alignment_t alignment = READSTAT_ALIGNMENT_UNKNOWN;
    QVector<TStatMissingRange> missingRanges; /*!< in the order of the file */
    QString labelSetName; /*!< empty: no value labels */
    int labelSet = -1; /*!< index in \c labelSets of the file; -1: the file has no such set */
    QStringList notes; /*!< of Stata, by their numbers */
    QVector<TStatCharacteristic> characteristics; /*!< of Stata, in the order of the file */
    QStringList attributes; /*!< names of an SPSS file's own, without its role */
    QString role; /*!< of SPSS, as the file has it: "1" target, "2" both, ...; empty: input */

    /*! True for texts of any length. */
    bool isString() const;
    /*!
     * "STRING", "REAL" or "INTEGER". SPSS has no whole numbers of its own; those shown without
     * decimals are taken for them, dates are not.
     */
    QString typeName(TStatFileKind kind) const;
    /*! Width of a value in characters, as the format shows it; 0: not told, as for a strL. */
    int width(TStatFileKind kind) const;
    /*! Decimal places that the format shows. */
    int decimals() const;
    /*! True for a value of \c missingRanges, a tagged missing value and no number at all. */
    bool isMissing(const TStatValue& value) const;
};

/*! How the reading of a file ended. */
struct TStatOutcome {
    readstat_error_t error = READSTAT_OK; /*!< libreadstat's result */
    QString errorText; /*!< libreadstat's text of \c error; empty when there is none */
    QStringList errorDetails; /*!< what libreadstat told beside it, may be empty */
    bool endsEarly = false; /*!< the file was cut, which libreadstat does not always see */
    /*! Why the file could not be opened or read to its end, or that it changed; else empty. */
    QString inputFailure;
    /*!
     * True when the structure of the file is sound from end to end and libreadstat refuses it all
     * the same, as it does with what is larger than it takes. Told by readStatDescription() alone.
     */
    bool isUnsupported = false;

    /*! False when the file was not read to its end. */
    bool isWhole() const
    {
        return error == READSTAT_OK && !endsEarly && inputFailure.isEmpty();
    }
};

/*! What a file says of itself. */
struct TStatFileDescription {
    QString path; /*!< as it was given */
    TStatFileKind kind = TStatFileKind::Spss; /*!< as it was read */
    QString fileLabel;
    QString encoding; /*!< name of the encoding of its texts; empty: not told */
    int formatVersion = 0;
    qint64 rowCount = -1; /*!< -1: not told */
    QStringList notes; /*!< notes or document lines, by their numbers */
    QVector<TStatCharacteristic> characteristics; /*!< of a Stata file itself, in its order */
    QVector<TStatVariableDescription> variables; /*!< in the order of the file */
    int weight = -1; /*!< index of the variable that weights the rows, of SPSS; -1: none */
    QStringList attributes; /*!< names of those of an SPSS file itself */
    QStringList responseSets; /*!< names of multiple response sets of SPSS, "$" in front */
    QStringList variableSets; /*!< names of sets of variables of SPSS */
    QVector<TStatLabelSet> labelSets; /*!< in the order of the file, used or not */
    TStatOutcome outcome; /*!< of all that stands here */
    TStatOutcome variablesOutcome; /*!< of the same without the value labels */

    /*! False when something of the dictionary could not be read. */
    bool isWhole() const
    {
        return outcome.isWhole();
    }
};

/*!
 * Reads the dictionary of the file \a path in one parse, without its data. All texts are decoded
 * as what they are. A damaged file is read once more without its value labels, so that nothing is
 * missing here that an importer shows. Nothing is printed; what went wrong is told by the result.
 */
MODEL_TESSEL_EXPORT TStatFileDescription readStatDescription(
    const QString& path, TStatFileKind kind);
/*! The same of a file that is open. */
MODEL_TESSEL_EXPORT TStatFileDescription readStatDescription(TStatInput& input, TStatFileKind kind);

/*!
 * How the two passes of an importer over the file \a path end, value labels first: the first that
 * fails, or the second. libreadstat passes over damage in one way with some handlers and not with
 * others, so this may differ from the outcome of readStatDescription().
 */
MODEL_TESSEL_EXPORT TStatOutcome readStatOutcome(const QString& path, TStatFileKind kind);
/*! The same of a file that is open. */
MODEL_TESSEL_EXPORT TStatOutcome readStatOutcome(TStatInput& input, TStatFileKind kind);
