#pragma once

#include <tessel_data/CaseMatch_p.h>

#include <QHash>

namespace tessel {

/*
 * Adds the cases of a batch to those of a database, in the transaction of the session; throws
 * DataError.
 */
class DatabaseMerge {
public:
    DatabaseMerge(MergeSession& session, const DatabasePlan& plan);

    // That the kept tables are those of a build of this form, and take what the batch will bring.
    // To be called when the temporary tables are there and still empty.
    void check();
    // When they are filled.
    DatabaseChanges run();

private:
    QStringList checkColumns(const DatabaseTable& table);
    QStringList checkVariables();
    void checkForm();

    QStringList narrowColumns(const DatabaseTable& table);
    bool isNarrow();
    void widen(const DatabaseTable& table);
    void updateDefinitions();
    bool hasSameDefinitions();
    void makeMissing(const DatabaseTable& table);
    void renewValueTables();
    void copyAll(const QString& table);

    void keepUuids();
    void removeGone();
    void addCases();
    void addRows();
    void addSources();
    void addProblems();
    void addRejects();
    void addBuild();
    void countRows();
    void removeRepeated(const QString& table, const QString& condition, const QString& columns);
    QString insertion(const QString& table, const QString& from,
        const QHash<QString, QString>& replaced, const QString& condition) const;

    MergeSession& m_session;
    const DatabasePlan& m_plan;
    CaseMatch m_match;
    QHash<QString, qint64> m_rows; // by table, rows of the database
    qint64 m_build = 0;
    qint64 m_sources = 0; // those that the database had
    DatabaseChanges m_changes;
};

} // namespace tessel
