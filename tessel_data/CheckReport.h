#pragma once

#include <tessel_data/DataBatch.h>

#include <QString>
#include <QVector>

#include <vector>

namespace tessel {

/*! What is wrong with data; the first ones are those of LineProblem, in its order. */
enum class ProblemKind {
    UnknownRecordType,
    EndsInIdentification,
    IdNotANumber,
    EndlessLine,
    DamagedRecord,
    TextBeyondRecord,
    ControlCharacters,
    OtherEncoding,
    NotUtf8,
    NotInDictionary,
    TooWideValue,
    KeyDiffers,
    SpecialWithoutCode,
    FileChanged, /*!< another program wrote to the file while it was read */
    IdBlank, /*!< some identification items of the case are blank */
    BlankIdentification, /*!< all of them are */
    NotANumber, /*!< a text where a number is due */
    UnfitNumber, /*!< a number with more digits or decimals than its item */
    OutOfRange, /*!< below the lowest or above the highest code of the value set */
    OutsideValueSet, /*!< in its range, but none of its codes */
    MissingRecord, /*!< a required record that the case has not */
    TooManyRecords,
    LevelWithoutParent, /*!< a record whose level above has none in the case */
    DuplicateCase, /*!< the same identification again, with a record of a kind that is there once */
    ScatteredCase, /*!< the same identification again, with other records: one case in two places */
    PartlySavedCase,
};

constexpr int ProblemKindCount = int(ProblemKind::PartlySavedCase) + 1;

/*! The kind of what a source tells. */
constexpr ProblemKind problemKindOf(LineProblem problem)
{
    return ProblemKind(problem);
}

/*!
 * True for what real data have: codes outside their value sets, special values without a code and
 * blank identification items. They fail a check only when that is strict.
 */
TESSEL_DATA_EXPORT bool isTolerated(ProblemKind kind);

/*! Name of a kind of problem in files and tables, for example "not-a-number". */
TESSEL_DATA_EXPORT QString problemKindName(ProblemKind kind);

/*! One thing that is wrong, with its place. */
struct DataProblem {
    ProblemKind kind = ProblemKind::UnknownRecordType;
    int file = 0; /*!< index among the files of the source */
    qint64 line = 0; /*!< or row, from 1; 0: none */
    qint64 caseNumber = 0; /*!< of its case in the source, from 1; 0: not known */
    QString caseKey; /*!< identification of the case; empty: not known */
    int record = -1; /*!< index in the dictionary; -1: none */
    int variable = -1; /*!< index in the dictionary; -1: none */
    QString value; /*!< the value, the line, or the part of it that is concerned, as it stands */
    int otherFile = -1; /*!< where the case began before; -1: nowhere */
    qint64 otherLine = 0;
    qint64 otherCase = 0; /*!< number of the case that began there */
};

/*! A code that is in no value set, and how often it comes. */
struct OutsideCode {
    QString code;
    qint64 count = 0; /*!< at least */
    qint64 uncertain = 0; /*!< as many more there may be, where not all codes were counted */
};

/*! What one column of a record holds. */
struct ColumnReport {
    int record = 0;
    int variable = 0;
    qint64 rows = 0; /*!< the sum of those down to \c defaults, \c unfit included */
    qint64 values = 0; /*!< neither blank nor special, and of the variable's type */
    qint64 blank = 0;
    qint64 notANumber = 0;
    qint64 unfit = 0;
    qint64 missing = 0;
    qint64 notApplicable = 0;
    qint64 refused = 0;
    qint64 defaults = 0;
    qint64 outside = 0; /*!< of the values: in no code of the value set, out of range or not */
    qint64 outOfRange = 0; /*!< of those outside */
    QVector<OutsideCode> outsideCodes; /*!< the most frequent ones first */
    bool hasAllOutsideCodes = true; /*!< false: too many to count each; the counts are bounds */
    qint64 distinct = 0; /*!< different values; the limit when there are more */
    bool hasAllDistinct = true; /*!< false: there are more */
    bool hasNumbers = false; /*!< the next are there */
    QString lowest;
    QString highest;
    double mean = 0;
};

/*! The outcome of a check. */
struct TESSEL_DATA_EXPORT CheckReport {
    SourceCounts counts;
    std::vector<SourceFile> files;
    std::vector<ColumnReport> columns; /*!< by record, in the order of its columns */
    std::vector<qint64> recordCounts; /*!< by record */
    QVector<qint64> problemCounts = QVector<qint64>(ProblemKindCount); /*!< by kind */
    std::vector<DataProblem> samples; /*!< the first few of each kind, in order of the kinds */
    bool hasCases = true;
    bool addsUp = false; /*!< what was checked is what was read, and that equals its parts */

    /*! How often \a kind was met. */
    qint64 problemCount(ProblemKind kind) const
    {
        return problemCounts.at(int(kind));
    }
    /*! False when something is wrong; with \a isStrict what is tolerated counts, too. */
    bool isClean(bool isStrict = false) const;
};

} // namespace tessel
