#pragma once

#include <tessel_data/DataDictionary.h>
#include <tessel_data/StatNames.h>

#include <QString>
#include <QStringList>
#include <QVector>

#include <vector>

/*!
 * What a program that reads text data has to say of a dictionary, the same for every program for
 * statistics: names that it takes, labels as long as it takes them, value labels and missing
 * values.
 */

/*! A code, or the numbers of a range, with its label. */
struct SetupLabel {
    qint64 low = 0; /*!< of numbers: times 10 to the decimals of the variable */
    qint64 high = 0;
    QString text; /*!< of texts, and of a blank: empty */
    bool isBlank = false; /*!< what blank columns mean */
    bool isMissing = false; /*!< stands for no answer */
    QString label;

    bool isRange() const
    {
        return low != high;
    }
};

/*! The labels of a value set, for variables of one type and as many decimals. */
struct SetupLabels {
    QString name; /*!< one that the program takes for value labels */
    QString setName; /*!< in the dictionary */
    bool isText = false;
    int decimals = 0;
    int width = 0; /*!< of the first variable that has them */
    QVector<SetupLabel> labels; /*!< in the order of the dictionary; no two of one value */
    /*! True when a value has a label. */
    bool hasLabels() const;

    QVector<SetupLabel> missing; /*!< the missing values that the program takes, without blanks */
};

/*! How columns are read. */
enum class SetupType { Whole, Decimals, Text };

struct SetupVariable {
    QString name; /*!< one that the program takes */
    QString label;
    SetupType type = SetupType::Text;
    int start = 0; /*!< from 1 */
    int width = 0;
    int decimals = 0;
    int labels = -1; /*!< index in SetupPlan::labels; -1: none */

    /*! The last column. */
    int end() const
    {
        return start + width - 1;
    }
};

struct SetupRecord {
    QString name; /*!< one that the program takes */
    QString label;
    QString typeCode; /*!< what the columns of the record type hold, without trailing blanks */
    int width = 0; /*!< last column */
    std::vector<SetupVariable> variables; /*!< identification items first */
    QString typeName; /*!< for the variables that the program itself needs, of no other's name */
    QString firstName;
    QString lineName;
    bool hasText = false; /*!< so that lines may hold other characters than ASCII */
    QVector<int> labels; /*!< those of its variables, indexes in SetupPlan::labels */

    /*! Names of the variables that have the labels \a index. */
    QStringList namesWith(int index) const;
};

/*! What a person is told of what a program cannot say as the dictionary does. */
struct SetupNote {
    enum class Kind {
        Renamed,
        LabelCut,
        ValueLabelsCut,
        CharactersReplaced,
        LabelsOfTexts, /*!< this, and those that follow: so many labels of a value set left out */
        LabelsOfDecimals,
        LabelsOfRanges,
        LabelOfBlank,
        LabelsTooLarge,
        RepeatedCodes,
        UnreadableCodes,
        FurtherSets,
        MissingOfTexts,
        MissingTooMany,
        WideNumber,
        WideText,
        Binary,
        NoColumns,
        Bytes,
        NoRecords
    };

    Kind kind = Kind::Renamed;
    QString thing; /*!< a variable, value set or record, as the dictionary calls it */
    QString record; /*!< that a variable is of; null: none */
    QString newName;
    QVector<tessel::StatNameReason> reasons;
    int count = 0;
};

/*! \a note as a sentence without an end, and what notes of its kind are counted by. */
QString noteText(const SetupNote& note, tessel::StatProgram program);
QString groupOf(const SetupNote& note);

/*! What a program can label. */
struct SetupAbilities {
    bool labelsTexts = true;
    bool labelsDecimals = true;
    bool labelsRanges = true;
    bool labelsBlankNumbers = true;
    bool hasFurtherSets =
        true; /*!< value labels stand by themselves, so that all sets are written */
    bool hasMissingTexts = true;
    bool countsBytes = true; /*!< columns are bytes */
    qint64 largestLabelled = 0; /*!< 0: any */
    int widestText = 0; /*!< bytes; 0: any */
};

struct SetupPlan {
    SetupPlan(
        const tessel::DataDictionary& dictionary, const QString& file, tessel::StatProgram program);

    tessel::StatProgram program;
    SetupAbilities can;
    QString title; /*!< label of the dictionary, else its name */
    QString dictionaryFile; /*!< name of its file */
    QString dataFile; /*!< what the data file is called until a person says otherwise */
    int typeStart = 0; /*!< column of the record type, from 1 */
    int typeWidth = 0; /*!< 0: none */
    int width = 0; /*!< last column of all records */
    /*! True when a line of \a record is known by its not being blank. */
    bool needsLine(const SetupRecord& record) const
    {
        return typeWidth == 0 || record.typeCode.trimmed().isEmpty();
    }
    /*! Lines for the head of the program: what it reads, what it writes, what it cannot say. */
    QStringList heading(const QStringList& usage) const;

    std::vector<SetupRecord> records; /*!< those with columns */
    std::vector<SetupLabels> labels; /*!< in use, and further ones where the program has them */
    QVector<SetupNote> notes;
};

/*! True for what Stata expands or ends in quotes, too: macros, and comments that begin there. */
bool isStataSpecial(const QString& text, int place);

/*! Bytes of a variable of SPSS that holds texts of \a columns characters. */
int spssWidth(int columns);

/*! \a code, scaled by \a decimals, as every program writes a number. */
QString setupNumber(qint64 code, int decimals);

/*! \a text for a comment of any of the programs: on one line, and nothing in it ends a comment. */
QString setupComment(const QString& text);
