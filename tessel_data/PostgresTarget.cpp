#include <tessel_data/PostgresTarget.h>

#include <tessel_data/DataError.h>
#include <tessel_data/PostgresConnection_p.h>
#include <tessel_data/PostgresCopy_p.h>
#include <tessel_data/PostgresMerge_p.h>
#include <tessel_data/PostgresRows_p.h>
#include <tessel_data/PostgresSchema_p.h>
#include <tessel_data/PostgresTables_p.h>
#include <tessel_data/SqlNames.h>
#include <tessel_data/TargetForm_p.h>

#include <algorithm>
#include <memory>

namespace tessel {

class PostgresTarget::Job {
public:
    explicit Job(const PostgresOptions& chosen)
        : options(chosen)
        , server(chosen.connection)
        , m_copy(server)
    {
    }

    ExistingDatabase openExisting();
    void begin(const DatabasePlan& databasePlan);
    qint64 append(int table, const DatabaseRows& rows);
    void markDuplicate(qint64 caseId, qint64 firstCaseId);
    bool finish(const GoesOn& goesOn);
    void close() noexcept;

    PostgresOptions options;
    PostgresConnection server;
    DatabaseChanges changes;

private:
    QString workingName(const char* kind) const
    {
        return m_prefix + QLatin1String(kind);
    }
    QString tableName(std::size_t table) const
    {
        return workingName("t") + QString::number(table);
    }
    QString indexName(std::size_t index) const
    {
        return workingName("i") + QString::number(index);
    }
    void start();
    void makeTables();
    void makeStagedTables();
    QStringList lastSteps() const;
    QString markStatement() const;
    QString takeOverStatements() const;
    QString commentStatements() const;
    bool complete(const GoesOn& goesOn);
    bool merge(const GoesOn& goesOn);

    const DatabasePlan* m_plan = nullptr;
    QString m_prefix; // of names until all is whole: those of the former build stay in use
    std::unique_ptr<PostgresTables> m_tables;
    std::unique_ptr<PostgresSchema> m_schema;
    std::unique_ptr<PostgresMerge> m_merge; // of an addition
    PostgresCopy m_copy; // by table of the plan
    std::vector<PostgresRows> m_forms; // likewise
    int m_duplicates = -1; // table among those of m_copy; an addition has none
};

void PostgresTarget::Job::start()
{
    server.open();
    server.run(QStringLiteral(
        "SET client_min_messages = error; SET standard_conforming_strings = on; BEGIN; "
        "SET LOCAL statement_timeout = 0; SET LOCAL lock_timeout = 0; "
        "SET LOCAL idle_in_transaction_session_timeout = 0; "
        "SET LOCAL default_statistics_target = 10")); // of ANALYZE, the server's own comes later
    m_schema = std::make_unique<PostgresSchema>(server, options.schema);
}

ExistingDatabase PostgresTarget::Job::openExisting()
{
    start();
    m_schema->openFormer();
    return existingDatabase([this](const QString& query) { return server.query(query); });
}

void PostgresTarget::Job::begin(const DatabasePlan& databasePlan)
{
    m_plan = &databasePlan;
    m_prefix = freePrefix(*m_plan, QStringLiteral("tessel_build_"));
    m_tables = std::make_unique<PostgresTables>(*m_plan);
    for (const DatabaseTable& table : m_plan->tables)
        m_forms.emplace_back(table);
    if (m_plan->addition == Addition::None)
        makeTables();
    else
        makeStagedTables();
}

void PostgresTarget::Job::makeTables()
{
    start();
    m_schema->prepare(*m_plan, options.replaces);
    for (std::size_t t = 0; t < m_plan->tables.size(); ++t) {
        server.run(QStringLiteral("CREATE TABLE %1 %2")
                       .arg(tableName(t), m_tables->definition(m_plan->tables[t])));
        m_copy.addTable(tableName(t));
    }
    server.run(QStringLiteral("CREATE TABLE %1 (case_id BIGINT, first_case_id BIGINT, "
                              "place BIGINT)")
                   .arg(workingName("duplicates")));
    m_duplicates = m_copy.addTable(workingName("duplicates"));
}

void PostgresTarget::Job::makeStagedTables()
{
    m_merge = std::make_unique<PostgresMerge>(server, m_schema->name(), *m_plan, *m_tables);
    for (const DatabaseTable& table : m_plan->tables) {
        const QString name =
            m_merge->prefix(MergeSession::Place::Staged) + sqlIdentifier(table.name);
        server.run(QStringLiteral("CREATE TABLE %1 %2").arg(name, m_tables->definition(table)));
        m_copy.addTable(name);
    }
    DatabaseMerge(*m_merge, *m_plan).check();
}

// Their number is compared with what the server took when all of them are there.
qint64 PostgresTarget::Job::append(int table, const DatabaseRows& rows)
{
    m_copy.append(table, m_forms[std::size_t(table)], rows);
    return qint64(rows.count());
}

// There is no index yet by which a case could be found quickly. Of an addition those are marked
// that are duplicates in the whole database.
void PostgresTarget::Job::markDuplicate(qint64 caseId, qint64 firstCaseId)
{
    if (m_duplicates < 0)
        return;
    m_copy.append(m_duplicates, { caseId, firstCaseId, m_copy.rows(m_duplicates) });
}

QString PostgresTarget::Job::markStatement() const
{
    return QStringLiteral("UPDATE %1 c SET duplicate_of = d.first_case_id FROM (SELECT DISTINCT ON "
                          "(case_id) case_id, first_case_id FROM %2 ORDER BY case_id, place) d "
                          "WHERE c.case_id = d.case_id")
        .arg(tableName(std::size_t(m_plan->table(SystemTable::cases))), workingName("duplicates"));
}

// Under their own names, in place of those of the former build.
QString PostgresTarget::Job::takeOverStatements() const
{
    const QString rename = QStringLiteral("ALTER %1 %2 RENAME TO %3;\n");
    QString statements = m_schema->dropStatements();
    for (std::size_t t = 0; t < m_plan->tables.size(); ++t) {
        statements += rename.arg(
            QStringLiteral("TABLE"), tableName(t), sqlIdentifier(m_plan->tables[t].name));
    }
    const auto& indexes = m_tables->indexes();
    for (std::size_t i = 0; i < indexes.size(); ++i) {
        statements +=
            rename.arg(QStringLiteral("INDEX"), indexName(i), sqlIdentifier(indexes[i].name));
    }
    for (const DatabaseTable& table : m_plan->tables)
        statements += m_tables->views(table);
    return statements;
}

QString PostgresTarget::Job::commentStatements() const
{
    QString statements;
    for (const DatabaseTable& table : m_plan->tables)
        statements += PostgresTables::comments(table);
    return statements;
}

// Others wait for nothing but the last of them.
QStringList PostgresTarget::Job::lastSteps() const
{
    QStringList steps;
    if (m_copy.rows(m_duplicates) > 0)
        steps.append(markStatement());
    steps.append(QLatin1String("DROP TABLE ") + workingName("duplicates"));
    const auto& indexes = m_tables->indexes();
    for (std::size_t i = 0; i < indexes.size(); ++i)
        steps.append(indexes[i].statement(indexName(i), tableName(std::size_t(indexes[i].table))));
    for (std::size_t t = 0; t < m_plan->tables.size(); ++t)
        steps.append(QLatin1String("ANALYZE ") + tableName(t));
    steps.append(takeOverStatements());
    steps.append(commentStatements());
    return steps;
}

// False when it was stopped.
bool PostgresTarget::Job::complete(const GoesOn& goesOn)
{
    const QStringList steps = lastSteps();
    return std::all_of(steps.begin(), steps.end(),
        [&](const QString& step) { return (!goesOn || goesOn()) && server.run(step, goesOn); });
}

bool PostgresTarget::Job::merge(const GoesOn& goesOn)
{
    m_merge->setGoesOn(goesOn);
    try {
        m_merge->filled(SystemTable::cases);
        changes = DatabaseMerge(*m_merge, *m_plan).run();
    } catch (const DataError&) {
        if (!m_merge->isStopped())
            throw;
        return false;
    }
    return true;
}

bool PostgresTarget::Job::finish(const GoesOn& goesOn)
{
    m_copy.finish();
    const bool isDone = m_merge ? merge(goesOn) : complete(goesOn);
    if (isDone)
        server.commit();
    server.close();
    return isDone;
}

void PostgresTarget::Job::close() noexcept
{
    m_copy.stop();
    server.close();
}

PostgresTarget::PostgresTarget(const PostgresOptions& options)
    : m_job(std::make_unique<Job>(options))
{
}

PostgresTarget::~PostgresTarget()
{
    m_job->close();
}

bool PostgresTarget::isConnection(const QString& text)
{
    return text.startsWith(QLatin1String("postgresql://"))
        || text.startsWith(QLatin1String("postgres://"));
}

bool PostgresTarget::isKeywordConnection(const QString& text)
{
    return PostgresConnection::hasKeyword(text);
}

QString PostgresTarget::mistakeIn(const QString& connection)
{
    return PostgresConnection::mistakeIn(connection);
}

QString PostgresTarget::nameOf(const QString& connection)
{
    return PostgresConnection(connection).name();
}

QString PostgresTarget::withoutPasswords(const QString& connection)
{
    return PostgresConnection::withoutPasswords(connection);
}

SqlDialect PostgresTarget::dialect() const
{
    return SqlDialect::PostgreSql;
}

QString PostgresTarget::name() const
{
    return m_job->server.name();
}

bool PostgresTarget::holdsNullCharacters() const
{
    return false;
}

ExistingDatabase PostgresTarget::openExisting()
{
    return m_job->openExisting();
}

DatabaseChanges PostgresTarget::changes() const
{
    return m_job->changes;
}

void PostgresTarget::begin(const DatabasePlan& plan)
{
    m_job->begin(plan);
}

qint64 PostgresTarget::append(int table, const DatabaseRows& rows)
{
    return m_job->append(table, rows);
}

void PostgresTarget::markDuplicate(qint64 caseId, qint64 firstCaseId)
{
    m_job->markDuplicate(caseId, firstCaseId);
}

bool PostgresTarget::finish(const GoesOn& goesOn)
{
    return m_job->finish(goesOn);
}

void PostgresTarget::abandon() noexcept
{
    m_job->close();
}

} // namespace tessel
