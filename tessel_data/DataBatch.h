#pragma once

#include <tessel_data/DataValue.h>

#include <QByteArray>
#include <QString>
#include <QVector>

#include <string>
#include <string_view>
#include <vector>

namespace tessel {

/*! How the texts of a file are encoded. */
enum class LineEncoding { Unknown, Utf8, Windows1252 };

/*! What a source tells of a line, a record or a case. */
enum class LineProblem : quint8 {
    UnknownRecordType, /*!< rejected */
    EndsInIdentification, /*!< rejected: the line ends before its identification does */
    IdNotANumber, /*!< rejected: an identification item is no number */
    EndlessLine, /*!< rejected: too long to be kept in memory; its first part is here */
    DamagedRecord, /*!< rejected: a row of a database that belongs nowhere or cannot be read */
    TextBeyondRecord, /*!< kept: text behind the record's last column is passed over */
    ControlCharacters, /*!< kept: NUL or another control character */
    OtherEncoding, /*!< kept: speaks for another encoding than the lines before */
    NotUtf8, /*!< kept: bytes that are no UTF-8, in a file that is; each became U+FFFD */
    NotInDictionary, /*!< a record or an item of a database that the dictionary given lacks */
    TooWideValue, /*!< kept: a value of a database that is wider than its item */
    KeyDiffers, /*!< kept: a case of a database whose identification items are not its key */
    SpecialWithoutCode, /*!< kept: a special value of a database that no code stands for */
};

/*! True when a line with this problem is not among the records. */
TESSEL_DATA_EXPORT bool isRejected(LineProblem problem);

/*! A text in a batch. */
struct TextRef {
    quint32 start = 0;
    quint32 size = 0;
};

/*!
 * Some cases and records of a source, in its order. Values stand row by row in two arrays. Filled
 * by one thread, then read by another; never both at once.
 */
class TESSEL_DATA_EXPORT DataBatch {
public:
    /*! One record; its cells are those of its columns. */
    struct Record {
        qint64 line = 0; /*!< line in its file, or row, from 1; of the case in a .csdb */
        qint64 caseNumber = 0; /*!< number of its case in the source, from 0 */
        int file = 0; /*!< index among the files of the source */
        int record = 0; /*!< index among the records of the dictionary */
        quint32 firstCell = 0; /*!< of its columns */
        TextRef text; /*!< the line as UTF-8; empty where there is none */
    };
    /*! One case, whose records follow each other. */
    struct Case {
        qint64 number = 0; /*!< from 0 */
        quint32 firstRecord = 0; /*!< in this batch; later ones may stand in the next */
        int file = 0;
        qint64 line = 0; /*!< its first line, or its row */
        TextRef key; /*!< identification: numbers zero-filled and texts padded to their widths */
        TextRef uuid; /*!< of a .csdb; else empty */
        bool isPartlySaved = false;
    };
    /*! A case that the source holds as deleted. */
    struct Deleted {
        TextRef key; /*!< as of a case */
        TextRef uuid;
    };
    /*! What is to be told of a line. */
    struct Told {
        LineProblem problem = LineProblem::UnknownRecordType;
        int file = 0;
        int variable = -1; /*!< that it concerns; -1: none */
        qint64 line = 0; /*!< 0: of the file, or of a row of a database that is in no case */
        qint64 caseNumber = -1; /*!< -1: not known */
        /*!
         * What is rejected, whole: the line, the first part of an endless one, or names and values
         * of a row. Of what is kept the part that the problem is in.
         */
        TextRef text;
        int record = -1; /*!< of the line; -1: not known, or that of the variable */
        TextRef key = {}; /*!< of a rejected line, its identification; empty: not known */
    };

    /*! Empties the batch, and keeps its memory. */
    void clear();
    /*! True without records and without anything to tell. */
    bool isEmpty() const;
    /*! True when the batch should be handed on before another record. */
    bool isFull() const;

    /*! The text that \a ref stands for. */
    std::string_view text(TextRef ref) const
    {
        return std::string_view(bytes).substr(ref.start, ref.size);
    }
    /*! Text of the value in cell \a cell, which is Text, NotANumber or Unfit. */
    std::string_view textOf(quint32 cell) const
    {
        return std::string_view(bytes).substr(
            std::size_t(quint64(numbers[cell]) >> 32), quint32(numbers[cell]));
    }
    /*! Number of the value in cell \a cell, which is Real. */
    double realOf(quint32 cell) const;

    /*! Letter of the kind of a missing value, 'a' to 'z', in cell \a cell; null for any other. */
    char missingKind(quint32 cell) const
    {
        constexpr ValueState missing(ValueKind::Blank, Special::Missing);
        return states[cell] == missing ? char(numbers[cell]) : '\0';
    }

    /*! Adds \a count cells, which are blank; the first one's index. */
    quint32 addCells(std::size_t count)
    {
        const auto first = quint32(states.size());
        states.resize(states.size() + count);
        numbers.resize(numbers.size() + count);
        return first;
    }
    /*! Fills a cell with a number or with nothing. */
    void set(quint32 cell, ValueState state, qint64 number = 0)
    {
        states[cell] = state;
        numbers[cell] = number;
    }
    /*! Fills a cell with a text that keep() made. */
    void setText(quint32 cell, ValueState state, TextRef ref)
    {
        set(cell, state, qint64((quint64(ref.start) << 32) | ref.size));
    }
    /*! Fills a cell with a real number. */
    void setReal(quint32 cell, ValueState state, double number);
    /*! Keeps a copy of \a text. */
    TextRef keep(std::string_view text);

    std::vector<Record> records;
    std::vector<Case> cases; /*!< those that begin in this batch */
    std::vector<Deleted> deleted; /*!< of a .csdb */
    std::vector<Told> told; /*!< in the order of the lines */
    std::vector<ValueState> states; /*!< of all cells */
    std::vector<qint64> numbers; /*!< of all cells: a number, the bits of a double, or a text */
    std::string bytes; /*!< the texts */
    qint64 doneBytes = 0; /*!< of the source, when the batch was filled; progress */
};

/*! What a source read; for each file, and in all. */
struct TESSEL_DATA_EXPORT SourceCounts {
    qint64 lines = 0; /*!< or rows; the sum of the next ones down to leftOutLines */
    qint64 records = 0;
    qint64 deletedLines = 0;
    qint64 blankLines = 0;
    qint64 rejectedLines = 0;
    qint64 leftOutLines = 0; /*!< by a selection */
    qint64 casesRead = 0; /*!< equals cases + deletedCases + leftOutCases */
    qint64 cases = 0;
    qint64 deletedCases = 0;
    qint64 leftOutCases = 0; /*!< by a selection */
    qint64 partlySavedCases = 0;

    /*! True when the sums are right. */
    bool addUp() const
    {
        return lines == records + deletedLines + blankLines + rejectedLines + leftOutLines
            && casesRead == cases + deletedCases + leftOutCases;
    }
    /*! Adds the counts of \a other. */
    SourceCounts& operator+=(const SourceCounts& other);
};

/*! What is known of a file after it was read. */
struct SourceFile {
    QString path; /*!< as it was given; "-" for standard input */
    QString encoding; /*!< "UTF-8" or "windows-1252"; "ASCII" when it has nothing else */
    bool hasByteOrderMark = false;
    qint64 bytes = 0;
    qint64 lfLines = 0; /*!< lines that end so */
    qint64 crlfLines = 0;
    qint64 crLines = 0;
    qint64 linesWithCr = 0; /*!< lines that hold a carriage return before their end */
    bool changedWhileRead = false; /*!< another program wrote to it, so the data may be torn */
    SourceCounts counts;
};

} // namespace tessel
