#pragma once

#include <tessel_data/DataBatch.h>
#include <tessel_data/DatabasePlan.h>

#include <functional>
#include <string_view>
#include <vector>

namespace tessel {

/*! One value on its way into a database. */
struct DatabaseValue {
    /*! What it is. */
    enum class Kind { Null, Integer, Decimal, Real, Text };

    Kind kind = Kind::Null;
    int decimals = 0; /*!< of Decimal */
    qint64 number = 0; /*!< Integer; Decimal: times 10 to the decimals */
    double real = 0;
    std::string_view text; /*!< UTF-8; may hold any character, also NUL */
};

/*! Rows of one table, whose values stand in a batch. */
class TESSEL_DATA_EXPORT DatabaseRows {
public:
    /*! One row. */
    struct Row {
        quint32 firstCell = 0;
        int occurrence = 0; /*!< from 0 */
        qint64 caseId = 0;
        qint64 number = 0;
    };

    /*! Rows of \a table, which refer to all three. */
    DatabaseRows(const DatabaseTable& table, const DataBatch& batch, const std::vector<Row>& rows)
        : m_table(table)
        , m_batch(batch)
        , m_rows(rows)
    {
    }

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
        return m_batch;
    }
    /*! Texts are valid as long as the batch is. */
    DatabaseValue value(std::size_t row, int column) const;

private:
    DatabaseValue ofCell(const DatabaseColumn& column, quint32 cell) const;

    const DatabaseTable& m_table;
    const DataBatch& m_batch;
    const std::vector<Row>& m_rows;
};

/*! The double that is nearest to \a number divided by 10 to the \a decimals. */
TESSEL_DATA_EXPORT double nearestDouble(qint64 number, int decimals);

/*! What an addition did to the cases of a database. */
struct DatabaseChanges {
    qint64 added = 0;
    qint64 changed = 0;
    qint64 unchanged = 0;
    qint64 withdrawn = 0;

    /*! Cases that came from a file of the same path before and are not in it; they stay. */
    struct Absent {
        QString file; /*!< as it was given */
        qint64 cases = 0;
    };
    QVector<Absent> absent; /*!< by file */
};

/*! What a database tells of how it was made. */
struct ExistingDatabase {
    QByteArray dictionary; /*!< that it was last filled with, its text */
    QByteArray options; /*!< BuildOptions::options of its first build */
};

/*!
 * A database that is made whole or not at all: begin(), append() as often as there are rows,
 * finish(). Without finish(), or when that fails, what was there before is untouched and nothing
 * is left behind. All but the destructor and abandon() throw DataError.
 *
 * Threads: all calls come from one thread.
 */
class TESSEL_DATA_EXPORT DatabaseTarget {
public:
    /*! False: stop. */
    using GoesOn = std::function<bool()>;

    /*! Abandons what is not finished. */
    virtual ~DatabaseTarget();

    /*! The dialect of the database. */
    virtual SqlDialect dialect() const = 0;
    /*! What it is called in messages; never with a password. */
    virtual QString name() const = 0;
    /*! False: null characters in texts are replaced by their picture, U+2400. */
    virtual bool holdsNullCharacters() const;
    /*!
     * Opens a database that is there, to be added to: before begin(), whose plan then says so.
     * Until the end nobody else writes to it.
     */
    virtual ExistingDatabase openExisting();
    /*! Makes the tables of \a plan, which stays as long as the target. */
    virtual void begin(const DatabasePlan& plan) = 0;
    /*! Adds rows to table \a table of the plan; the number that the database took. */
    virtual qint64 append(int table, const DatabaseRows& rows) = 0;
    /*! Notes that a case, whose row was appended, is the same as an earlier one. */
    virtual void markDuplicate(qint64 caseId, qint64 firstCaseId) = 0;
    /*!
     * Makes indexes and views, and then all of it visible at once. False, with nothing left behind,
     * when \a goesOn stopped it.
     */
    virtual bool finish(const GoesOn& goesOn) = 0;
    /*! After finish(): what it did to the cases that were there. */
    virtual DatabaseChanges changes() const;
    /*! Gives up: nothing is left behind. */
    virtual void abandon() noexcept = 0;
};

} // namespace tessel
