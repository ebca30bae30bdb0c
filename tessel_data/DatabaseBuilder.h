#pragma once

#include <tessel_data/Checker.h>
#include <tessel_data/DatabaseTarget.h>

#include <memory>

namespace tessel {

/*! How a database is built. */
struct BuildOptions {
    PlanOptions plan; /*!< its dialect, hasCases and hasWidths are those of target and source */
    QByteArray dictionaryText; /*!< kept in the database; empty: there is none */
    QString options; /*!< kept in the database, as the user gave them; without passwords */
    QString version; /*!< of the program, kept in the database */
};

/*! What was built. */
struct BuildReport {
    CheckReport check;
    std::vector<qint64> rows; /*!< by table of the plan */
    qint64 rejects = 0;
    qint64 cases = 0;
    qint64 problems = 0;
    qint64 nullCharacters = 0; /*!< values with some, written as U+2400; among the problems */
    DatabaseChanges changes; /*!< of an addition */
};

/*!
 * Fills a target with the data of a source, which it checks on the way. finish() throws DataError
 * when what arrived is not what was read.
 */
class TESSEL_DATA_EXPORT DatabaseBuilder : public DataConsumer {
public:
    /*! Source and target stay as long as the builder. */
    DatabaseBuilder(const DataSource& source, DatabaseTarget& target, const BuildOptions& options);
    ~DatabaseBuilder() override;

    void take(const DataBatch& batch) override;
    /*! Writes what is known at the end; the target is not yet finished. */
    void finish(const DataSource& source) override;
    bool finishWhile(const DataSource& source, const std::function<bool()>& goesOn) override;

    /*! What is built. */
    const DatabasePlan& plan() const;
    /*! What was built so far. */
    const BuildReport& report() const;

private:
    Q_DISABLE_COPY(DatabaseBuilder)

    class Job;
    std::unique_ptr<Job> m_job;
};

/*!
 * Reads \a source into \a target, from begin() to finish(). False, with nothing left behind, when
 * \a progress cancelled; throws DataError, with nothing left behind either.
 */
TESSEL_DATA_EXPORT bool buildDatabase(DataSource& source, DatabaseTarget& target,
    const BuildOptions& options, BuildReport& report, const DataProgress& progress = {});

} // namespace tessel
