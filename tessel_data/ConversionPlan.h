#pragma once

#include <tessel_data/DataDictionary.h>
#include <tessel_data/StatNames.h>

#include <QString>
#include <QStringList>
#include <QVector>

#include <vector>

namespace tessel {

/*! Kind of the files that data are converted into. */
enum class ConversionFormat { Spss, Stata, Csv };

/*! How CSV is written. */
struct CsvForm {
    bool hasLabels = false; /*!< labels in place of codes that have one */
    bool forSpreadsheet = false; /*!< a byte-order mark, and no text that would run as a formula */
};

/*! What a number of a column is counted from and in, in its source and in the file. */
enum class ConversionUnit {
    AsIs,
    SecondsToDays, /*!< dates of SPSS, of Stata */
    SecondsToMilliseconds, /*!< dates with times */
    DaysToSeconds, /*!< dates of Stata, of SPSS */
    MillisecondsToSeconds,
    TimeToMilliseconds, /*!< times of the day */
    TimeToSeconds,
};

/*! \a number in another unit. */
TESSEL_DATA_EXPORT double converted(double number, ConversionUnit unit);

/*! A code with its label, as a file holds it. */
struct ConversionLabel {
    double number = 0; /*!< of numbers */
    QString text; /*!< of texts */
    char tag = '\0'; /*!< 'a' to 'z' for a kind of missing values */
    QString label;
};

/*! The value labels of one or several columns. */
struct ConversionLabelSet {
    QString name; /*!< as the file takes it */
    bool isText = false;
    std::vector<ConversionLabel> labels;
};

/*! A code, or a range of them, as people read it; it may have no end. */
TESSEL_DATA_EXPORT QString rangeText(double low, double high);

/*! Values that mean missing. */
struct ConversionMissing {
    double low = 0; /*!< of numbers, as the file counts them; the same twice is one value */
    double high = 0;
    QString text; /*!< of texts */
    char tag = '\0'; /*!< 'a' to 'z': what stands in their place; null: they stay */
};

/*! One variable of a file. */
struct ConversionColumn {
    /*! What a column is for. */
    enum class Role {
        Value,
        Row, /*!< number of the record within its case */
        Occurrence, /*!< number of the occurrence, from 1 */
    };
    /*! What a column holds; of numbers each holds what those before it do. */
    enum class Type { Byte, Int, Long, Float, Double, Text, LongText };
    /*! How its values are to be understood. */
    enum class Measure { Unknown, Nominal, Ordinal, Scale };
    /*! Where its values stand on the screen. */
    enum class Alignment { Unknown, Left, Center, Right };

    QString name;
    QString label;
    Role role = Role::Value;
    Type type = Type::Double; /*!< data may need a larger one */
    ConversionUnit unit = ConversionUnit::AsIs;
    QString format;
    int displayWidth = 0; /*!< 0: as the format says */
    Measure measure = Measure::Unknown;
    Alignment alignment = Alignment::Unknown;
    int width = 0; /*!< of a text: the dictionary's, in characters, or more bytes of a code */
    int decimals = 0; /*!< of exact numbers, which are scaled by 10 to them */
    bool isId = false;
    int variable = -1; /*!< index in the dictionary; -1: none */
    int source = 0; /*!< index in ConversionFile::records */
    int labelSet = -1; /*!< index in ConversionPlan::labelSets; -1: none */
    std::vector<ConversionMissing> missing;
    double missingBase = 0; /*!< kinds of missing values become this number and those behind it */

    /*! True for texts. */
    bool isText() const
    {
        return type >= Type::Text;
    }
};

/*! One file, with the rows of a record. */
struct ConversionFile {
    QString name; /*!< with its ending, without a folder */
    QString label;
    QString recordName;
    bool isRepeat = false; /*!< its rows are occurrences of a repeated item */
    /*! Records of the dictionary whose cells a row is made of; its own first, then merged ones. */
    QVector<int> records;
    QVector<ConversionColumn> columns;
    /*! By occurrence, one but for repeats: the cell of each column in its record; -1: none. */
    std::vector<QVector<int>> cells;
    QStringList notes; /*!< of its records, variables and value sets, behind their names */
    int weight = -1; /*!< index of the column that weights the rows; -1: none */
};

/*! What a person is told of something that a file cannot hold as it is. */
struct ConversionNote {
    /*! What becomes of it. */
    enum class Kind {
        FileRenamed,
        VariableRenamed,
        LabelSetRenamed,
        FileLabelCut,
        VariableLabelCut,
        ValueLabelCut,
        ValuesUnlabelled, /*!< codes whose labels a file cannot hold */
        FurtherValueSet, /*!< only the first one of a variable is written */
        MissingNotHeld, /*!< codes stay values, as there are too many or they are texts */
        MissingMerged, /*!< different codes become one kind of missing values */
        PrecisionAtRisk, /*!< numbers may have more digits than a double holds */
        TextAtRisk, /*!< texts may be longer than a file holds */
        NotesNotHeld, /*!< those of variables */
        NoVariables, /*!< a record without variables, of which no file is made */
        WeightNotHeld, /*!< the rows had a weight */
        AttributesNotHeld, /*!< those of SPSS, of the file or of a variable */
        RoleNotHeld, /*!< of a variable of SPSS */
        ResponseSetsNotHeld, /*!< multiple response sets */
        VariableSetsNotHeld, /*!< sets of variables of SPSS */
        LabelShared, /*!< by missing and other codes, which stay */
        LabelLikeCode, /*!< it reads like a code that stays; so does its own */
        LabelsAlike, /*!< codes, or the values of a range, have one label in their place */
        MissingRecoded, /*!< codes become kinds of missing values, or kinds become codes */
        KindsRecoded, /*!< the same of kinds without a label, when a variable has some */
        UnitChanged, /*!< dates count from another day, in another unit */
        FormatNotHeld, /*!< another format shows the values */
        DisplayNotHeld, /*!< measures, widths and alignments */
        NotesMoved, /*!< notes of variables, records and value sets are notes of the file */
        MergedOnce, /*!< variables of records that a case has once are on each row of others */
        DatesStay, /*!< numbers, which count as their format does */
    };
    /*! Why. */
    enum class Reason {
        None,
        TooLong,
        NotAllowed, /*!< characters */
        TextCodes,
        DecimalCodes,
        LargeCodes,
        RangeCodes,
        BlankCode,
        TooMany,
        Repeated, /*!< they have a label already */
    };

    Kind kind = Kind::VariableRenamed;
    Reason reason = Reason::None;
    QString file; /*!< that it is in, as ConversionFile::name */
    QString variable; /*!< as the file calls it; empty: it concerns the file */
    QString text; /*!< what it is about: the former name, the label, the value set or the format */
    QString newText; /*!< what stands in the file instead */
    int count = 1; /*!< of codes, or of variables */
    QVector<StatNameReason> nameReasons; /*!< of a new name */

    /*! True when something of the data or of their labels is lost or has another name. */
    bool isLoss() const
    {
        return kind < Kind::MissingRecoded;
    }
};

/*! What a plan is to be like. */
struct ConversionOptions {
    ConversionFormat format = ConversionFormat::Spss;
    bool hasRepeatTables = false; /*!< repeated items in files of their own */
    bool isMerged = false; /*!< variables of records that a case has once on each row of others */
    bool keepsMissingCodes = false; /*!< Stata: missing codes stay what they are */
    bool hasCases = true; /*!< false: rows, as from SPSS and Stata */
    /*! No value is wider than its item, and each character is a byte: see hasByteWidths(). */
    bool hasByteWidths = false;
    CsvForm csv;
};

/*!
 * The files that data of a dictionary become: their variables, with the names, types and labels
 * that the format takes. Made from the dictionary alone, so that it can be shown before anything is
 * done.
 */
class TESSEL_DATA_EXPORT ConversionPlan {
public:
    /*! The plan for data of \a dictionary. */
    ConversionPlan(const DataDictionary& dictionary, const ConversionOptions& options);

    /*! True when a note is a loss. */
    bool hasLosses() const;

    ConversionFormat format = ConversionFormat::Spss;
    bool hasByteWidths = false; /*!< what is planned is wide enough for all data */
    CsvForm csv;
    std::vector<ConversionFile> files; /*!< in the order of the dictionary */
    std::vector<ConversionLabelSet> labelSets;
    QStringList fileNotes; /*!< of each file */
    std::vector<ConversionNote> notes;
};

} // namespace tessel
