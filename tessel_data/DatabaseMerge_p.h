#pragma once

#include <tessel_data/DatabaseTarget.h>

#include <QHash>

namespace tessel {

/*
 * A transaction in a database that holds tables of a build and, as temporary tables of the same
 * names, those of a batch that is added to it.
 */
class MergeSession {
public:
    enum class Place { Kept, Staged };
    struct TableColumn {
        QString name;
        QString type; // as the database says it
    };

    virtual ~MergeSession();

    // What the database is called in messages.
    virtual QString name() const = 0;
    // What stands in front of the names of tables.
    virtual QString prefix(Place place) const = 0;
    // Returns how many rows were changed.
    virtual qint64 run(const QString& sql) = 0;
    // The values as texts.
    virtual std::vector<QStringList> rows(const QString& sql) = 0;
    // None where there is no such table.
    virtual std::vector<TableColumn> columns(Place place, const QString& table) = 0;
    // Tells the database that a temporary table has its rows, so that it can plan for their number.
    virtual void filled(const QString& table);
    // These make what the plan says among the kept tables.
    virtual void makeTable(const DatabaseTable& table) = 0;
    virtual void makeIndex(const DatabaseIndex& index) = 0;
    virtual void makeViews(const DatabaseTable& table) = 0;
};

/*
 * Adds the cases of a batch to those of a database: which is which is found by UUID, then by
 * identification, and what changed by the number that tells the content of a case. All in the
 * transaction of the session; throws DataError.
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

    QString kept(const QString& table) const;
    QString staged(const QString& table) const;
    QString sameCase(const QString& first, const QString& second, const QString& table);
    QString isBlank(const QString& table) const;
    QString isPartlyBlank() const;
    QString idList(const QString& table) const;
    qint64 number(const QString& sql);

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

    void matchCases();
    void matchByUuid();
    void matchById(const Pass& pass);
    void numberNewCases();
    void comparePaths();
    void compareCases(const KnownPath& path);
    void findWithdrawn();
    void findTouched();
    void keepUuids();
    void removeGone();
    void addCases();
    void addRows();
    void addSources();
    void addProblems();
    void addRejects();
    void addBuild();
    void markDuplicates();
    void tellDuplicates();
    void countRows();
    void removeRepeated(const QString& table, const QString& condition, const QString& columns);
    QString insertion(const QString& table, const QString& from,
        const QHash<QString, QString>& replaced, const QString& condition) const;

    MergeSession& m_session;
    const DatabasePlan& m_plan;
    QString m_integer; // the type of numbers of cases
    QStringList m_ids; // columns that identify a case
    QHash<QString, qint64> m_rows; // by table, rows of the database
    qint64 m_build = 0;
    qint64 m_sources = 0; // those that the database had
    DatabaseChanges m_changes;
};

} // namespace tessel
