#pragma once

#include <tessel_data/ConversionPlan.h>
#include <tessel_data/DataBatch.h>

#include <functional>
#include <vector>

namespace tessel {

/*! Rows of one file, whose values stand in a batch. */
class TESSEL_DATA_EXPORT ConversionRows {
public:
    /*! One row. */
    struct Row {
        quint32 record = 0; /*!< of its first cells among those given with add() */
        int occurrence = 0; /*!< from 0 */
        qint64 number = 0; /*!< of its record within its case */
    };
    /*! In place of a cell: there is none, as of a record that a case lacks. */
    static constexpr quint32 NoCell = ~quint32(0);

    /*! Rows of \a file, which it refers to. */
    explicit ConversionRows(const ConversionFile& file)
        : m_file(&file)
        , m_sources(quint32(file.records.size()))
    {
    }

    /*! \name Filling them */
    /*! @{ */
    /*! Begins with the rows of another batch. */
    void begin(const DataBatch& batch)
    {
        m_batch = &batch;
        m_rows.clear();
        m_firstCells.clear();
    }
    /*! First cell of each source of the rows added next, in their order, or NoCell. */
    void addRecord(quint32 firstCell)
    {
        m_firstCells.push_back(firstCell);
    }
    /*! Adds a row of the record whose cells were given last. */
    void addRow(qint64 number, int occurrence = 0)
    {
        m_rows.push_back({ quint32(m_firstCells.size()) - m_sources, occurrence, number });
    }
    /*! @} */

    /*! Number of rows. */
    std::size_t count() const
    {
        return m_rows.size();
    }
    /*! Row \a index. */
    const Row& row(std::size_t index) const
    {
        return m_rows[index];
    }
    /*! Where the values stand. */
    const DataBatch& batch() const
    {
        return *m_batch;
    }
    /*! What the rows are of. */
    const ConversionFile& file() const
    {
        return *m_file;
    }
    /*! The cell of a column of values in \a row, or NoCell. */
    quint32 cell(const Row& row, int column) const
    {
        const int place = m_file->cells[std::size_t(row.occurrence)].at(column);
        const quint32 first = m_firstCells[row.record + quint32(m_file->columns.at(column).source)];
        return place < 0 || first == NoCell ? NoCell : first + quint32(place);
    }
    /*! First cell of the sources of \a row, in their order. */
    const quint32* firstCells(const Row& row) const
    {
        return m_firstCells.data() + row.record;
    }

private:
    const ConversionFile* m_file;
    const DataBatch* m_batch = nullptr;
    quint32 m_sources;
    std::vector<quint32> m_firstCells; // of each source, record by record
    std::vector<Row> m_rows;
};

/*! What became of the values of a column that did not fit, and of the column. */
struct ConversionCounts {
    qint64 notNumbers = 0; /*!< texts where a number is due: missing */
    qint64 roundedNumbers = 0; /*!< with more digits than a double holds */
    qint64 unheldNumbers = 0; /*!< larger than the format takes: missing */
    qint64 cutTexts = 0;
    qint64 datesAsTimes = 0; /*!< beyond one day where times are due */
    qint64 nullCharacters = 0; /*!< texts with some, written as U+2400 */
    qint64 valuesLikeLabels = 0; /*!< without a label, that read like that of another code */
    quint32 recodedKinds = 0; /*!< of missing values, that became codes: bit 0 for 'a' */
    double missingBase = 0; /*!< the code of 'a', when there are some */
    bool isWidened = false; /*!< its type is larger than planned; nothing is lost */

    /*! True when something was lost. */
    bool hasLosses() const
    {
        return notNumbers + roundedNumbers + unheldNumbers + cutTexts + nullCharacters
            + datesAsTimes + valuesLikeLabels
            > 0;
    }
};

/*!
 * Where data are converted to: files in a folder, whole or not there at all. One use: begin(),
 * append() as often as there are rows, finish(); or abandon() at any time. All may throw DataError.
 */
class TESSEL_DATA_EXPORT ConversionTarget {
public:
    virtual ~ConversionTarget();

    /*! What it writes. */
    virtual ConversionFormat format() const = 0;
    /*! Called in messages. */
    virtual QString name() const = 0;
    /*! Makes room for the files of \a plan, which stays as long as the target. */
    virtual void begin(const ConversionPlan& plan) = 0;
    /*! Takes rows of file \a file, its index in the plan. */
    virtual void append(int file, const ConversionRows& rows) = 0;
    /*! What did not fit so far, by file and column. */
    virtual const std::vector<std::vector<ConversionCounts>>& counts() const = 0;
    /*! Rows of each file. */
    virtual const std::vector<qint64>& rows() const = 0;
    /*!
     * Makes the files and puts them in their places; false, with nothing left behind, when
     * \a goesOn says so.
     */
    virtual bool finish(const std::function<bool()>& goesOn) = 0;
    /*! Leaves nothing behind. */
    virtual void abandon() noexcept = 0;
};

} // namespace tessel
