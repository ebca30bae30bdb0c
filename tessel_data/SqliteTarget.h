#pragma once

#include <tessel_data/DatabaseTarget.h>

#include <memory>

namespace tessel {

/*!
 * An SQLite database, made in a temporary file beside its place and renamed when it is whole. The
 * temporary file is called like it, with a point before and ".tessel-build" behind; one whose maker
 * was killed is taken over by the next build. After openExisting() the file itself is changed, in
 * one transaction that a journal beside it undoes; others read meanwhile.
 */
class TESSEL_DATA_EXPORT SqliteTarget : public DatabaseTarget {
public:
    /*! What becomes of a file that is there. */
    enum class Existing { Refuse, Replace };

    /*! A database in the file \a path; nothing is done before begin(). */
    explicit SqliteTarget(const QString& path, Existing existing = Existing::Refuse);
    ~SqliteTarget() override;

    /*! SQLite. */
    SqlDialect dialect() const override;
    QString name() const override;
    ExistingDatabase openExisting() override;
    void begin(const DatabasePlan& plan) override;
    qint64 append(int table, const DatabaseRows& rows) override;
    void markDuplicate(qint64 caseId, qint64 firstCaseId) override;
    bool finish(const GoesOn& goesOn) override;
    DatabaseChanges changes() const override;
    void abandon() noexcept override;

private:
    Q_DISABLE_COPY(SqliteTarget)

    class Job;
    std::unique_ptr<Job> m_job;
};

} // namespace tessel
