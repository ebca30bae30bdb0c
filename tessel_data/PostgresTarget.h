#pragma once

#include <tessel_data/DatabaseTarget.h>

#include <memory>

namespace tessel {

/*! Where in which database the tables are made. */
struct PostgresOptions {
    QString connection; /*!< "postgresql://user@host/database", as libpq takes it */
    QString schema; /*!< made when it is not there; empty: the first of the search path */
    bool replaces = false; /*!< the tables of a former build in the schema */
};

/*!
 * Tables in a schema of a PostgreSQL database, version 12 or later. All of it is one transaction:
 * until it is committed nobody else sees anything, and what was there before stays in use. After
 * openExisting() too, while nobody else writes to the tables.
 */
class TESSEL_DATA_EXPORT PostgresTarget : public DatabaseTarget {
public:
    /*! Nothing is done before begin(). */
    explicit PostgresTarget(const PostgresOptions& options);
    ~PostgresTarget() override;

    /*! True for "postgresql://" and "postgres://", by which a connection is told from a file. */
    static bool isConnection(const QString& text);
    /*!
     * True for "KEYWORD=VALUE ..." with a keyword of libpq: a connection too, but none that is
     * taken here, and no name of a file either, as it may hold a password.
     */
    static bool isKeywordConnection(const QString& text);
    /*! What is wrong with a connection, to stand behind its name; null when nothing is. */
    static QString mistakeIn(const QString& connection);
    /*! What \a connection is called in messages: without its password and further settings. */
    static QString nameOf(const QString& connection);
    /*! \a connection with all but its passwords. */
    static QString withoutPasswords(const QString& connection);

    SqlDialect dialect() const override;
    QString name() const override;
    bool holdsNullCharacters() const override;
    ExistingDatabase openExisting() override;
    void begin(const DatabasePlan& plan) override;
    qint64 append(int table, const DatabaseRows& rows) override;
    void markDuplicate(qint64 caseId, qint64 firstCaseId) override;
    bool finish(const GoesOn& goesOn) override;
    DatabaseChanges changes() const override;
    void abandon() noexcept override;

private:
    Q_DISABLE_COPY(PostgresTarget)

    class Job;
    std::unique_ptr<Job> m_job;
};

} // namespace tessel
