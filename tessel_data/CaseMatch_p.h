#pragma once

#include <tessel_data/DatabaseTarget.h>
#include <tessel_data/MergeSession_p.h>

namespace tessel {

/*
 * Which cases of a batch are which of a database: found by UUID, then by identification, and what
 * changed by the number that tells the content of a case. The outcome stands in temporary tables:
 *
 *     tessel_add_match      batch_id, case_id, kind; every case of the batch, with its number in
 *                           the database
 *     tessel_add_withdrawn  case_id; those of the database that the batch takes away
 *     tessel_add_gone       case_id; withdrawn and changed ones, whose rows are removed
 *     tessel_add_path       source_id, batch_source, is_known; files that came before
 *
 * All in the transaction of the session; throws DataError.
 */
class CaseMatch {
public:
    enum Kind { Unchanged, Changed, Added };

    CaseMatch(MergeSession& session, const DatabasePlan& plan);

    // A statement or a part of one, in which tables of this class are called as above: where a
    // table of the plan is called so, they have other names.
    QString sql(const char* text) const;

    // When the temporary tables are filled.
    void find();
    // After find().
    DatabaseChanges changes() const;
    // When the cases are in the database: which of them repeat others, and what is told of it.
    void markDuplicates();

private:
    // Which cases are compared by their identification.
    struct Pass {
        const char* batch; // condition on those of the batch
        const char* known;
        bool byContent; // only equal ones
    };
    // A file of the batch at the path of one that came before.
    struct KnownPath {
        QString source; // its number in the batch
        QString file;
        qint64 absent; // cases that came from the path and are not in it
        qint64 present;
    };

    QString sameCase(const QString& first, const QString& second, const QString& table) const;
    QString isBlank(const QString& table) const;
    QString isPartlyBlank() const;
    QString idList(const QString& table) const;

    void matchCases();
    void matchByUuid();
    void matchById(const Pass& pass);
    void numberNewCases();
    void comparePaths();
    void compareCases(const KnownPath& path);
    void findWithdrawn();
    void findTouched();
    void tellDuplicates();

    MergeSession& m_session;
    const DatabasePlan& m_plan;
    const QString m_prefix; // of the names of tables
    QString m_integer; // the type of numbers of cases
    QStringList m_ids; // columns that identify a case
    QVector<DatabaseChanges::Absent> m_absent;
};

} // namespace tessel
