#include <tessel_data/PostgresTarget.h>

#include <tessel_data/DataError.h>
#include <tessel_data/DatabaseViews_p.h>
#include <tessel_data/PostgresConnection_p.h>
#include <tessel_data/PostgresCopy_p.h>
#include <tessel_data/PostgresRows_p.h>
#include <tessel_data/PostgresSchema_p.h>
#include <tessel_data/SqlNames.h>
#include <tessel_data/UniqueNames.h>

#include <algorithm>
#include <memory>

namespace tessel {

namespace {

using Column = DatabaseColumn;
using Kind = DatabaseTable::Kind;

constexpr int LongestIndexed = 2000; // bytes of a code

// Names until all is whole: those of the former build stay in use.
QString workingName(const char* kind, std::size_t number)
{
    return QStringLiteral("tessel_build_%1%2").arg(QLatin1String(kind)).arg(number);
}

QString tableName(std::size_t table)
{
    return workingName("t", table);
}

const QString& duplicatesName()
{
    static const QString name = QStringLiteral("tessel_build_duplicates");
    return name;
}

QString commentOn(const QString& what, const QString& text)
{
    return text.isEmpty() ? QString()
                          : QStringLiteral("COMMENT ON %1 IS %2;\n").arg(what, sqlText(text));
}

} // namespace

class PostgresTarget::Job {
public:
    explicit Job(const PostgresOptions& chosen)
        : options(chosen)
        , server(chosen.connection)
        , m_copy(server)
    {
    }

    void begin(const DatabasePlan& databasePlan);
    qint64 append(int table, const DatabaseRows& rows);
    void markDuplicate(qint64 caseId, qint64 firstCaseId);
    bool finish(const GoesOn& goesOn);
    void close() noexcept;

    PostgresOptions options;
    PostgresConnection server;

private:
    // An index that is made under a working name.
    struct Index {
        QString working;
        QString name;
        QString statement;
    };

    QString definition(std::size_t table) const;
    void planIndexes();
    void planKey(std::size_t table, UniqueNames& names);
    void planCodeIndex(const DatabaseValueTable& values, UniqueNames& names);
    QStringList lastSteps() const;
    QString markStatement() const;
    QString takeOverStatements() const;
    QString commentStatements() const;

    const DatabasePlan* m_plan = nullptr;
    std::unique_ptr<PostgresSchema> m_schema;
    PostgresCopy m_copy; // by table of the plan
    std::vector<PostgresRows> m_forms; // likewise
    int m_duplicates = 0; // table among those of m_copy
    std::vector<Index> m_indexes;
};

void PostgresTarget::Job::begin(const DatabasePlan& databasePlan)
{
    m_plan = &databasePlan;
    server.open();
    server.run(QStringLiteral(
        "SET client_min_messages = error; SET standard_conforming_strings = on; BEGIN; "
        "SET LOCAL statement_timeout = 0; SET LOCAL lock_timeout = 0; "
        "SET LOCAL idle_in_transaction_session_timeout = 0; "
        "SET LOCAL default_statistics_target = 30")); // of ANALYZE, the server's own comes later
    m_schema = std::make_unique<PostgresSchema>(server, options.schema);
    m_schema->prepare(*m_plan, options.replaces);
    for (std::size_t t = 0; t < m_plan->tables.size(); ++t) {
        server.run(definition(t));
        m_copy.addTable(tableName(t));
        m_forms.emplace_back(m_plan->tables[t]);
    }
    server.run(QStringLiteral("CREATE TABLE %1 (case_id BIGINT, first_case_id BIGINT, "
                              "place BIGINT)")
                   .arg(duplicatesName()));
    m_duplicates = m_copy.addTable(duplicatesName());
    planIndexes();
}

QString PostgresTarget::Job::definition(std::size_t table) const
{
    QStringList columns;
    for (const Column& column : m_plan->tables[table].columns) {
        columns.append(sqlIdentifier(column.name) + QLatin1Char(' ') + column.sqlType
            + (column.role == Column::Role::Value ? QString() : QStringLiteral(" NOT NULL")));
    }
    return QStringLiteral("CREATE TABLE %1 (%2)")
        .arg(tableName(table), columns.join(QLatin1String(", ")));
}

void PostgresTarget::Job::planIndexes()
{
    UniqueNames names;
    for (const DatabaseTable& table : m_plan->tables) {
        for (const QString& name : { table.name, table.labelView, table.validView })
            names.take(name);
    }
    for (const DatabaseIndex& index : m_plan->indexes) {
        names.take(index.name);
        QStringList columns;
        for (const QString& column : index.columns)
            columns.append(sqlIdentifier(column));
        const QString working = workingName("i", m_indexes.size());
        m_indexes.push_back({ working, index.name,
            QStringLiteral("CREATE INDEX %1 ON %2 (%3)")
                .arg(working, tableName(std::size_t(index.table)),
                    columns.join(QLatin1String(", "))) });
    }
    for (std::size_t t = 0; t < m_plan->tables.size(); ++t)
        planKey(t, names);
    for (const DatabaseValueTable& values : m_plan->valueTables)
        planCodeIndex(values, names);
}

void PostgresTarget::Job::planKey(std::size_t table, UniqueNames& names)
{
    const DatabaseTable& definition = m_plan->tables[table];
    const bool isKeyed = (definition.kind == Kind::Cases || !m_plan->hasCases)
        && definition.columns.first().role != Column::Role::Value
        && definition.kind != Kind::Repeat;
    if (!isKeyed)
        return;
    const QString working = workingName("i", m_indexes.size());
    m_indexes.push_back(
        { working, names.take(shortSqlName(definition.name) + QLatin1String("_pkey")),
            QStringLiteral("ALTER TABLE %1 ADD CONSTRAINT %2 PRIMARY KEY (%3)")
                .arg(tableName(table), working, sqlIdentifier(definition.columns.first().name)) });
}

// Very long codes fit no index; there are few of them.
void PostgresTarget::Job::planCodeIndex(const DatabaseValueTable& values, UniqueNames& names)
{
    const bool isLong = std::any_of(values.entries.begin(), values.entries.end(),
        [](const auto& entry) { return entry.text.toUtf8().size() > LongestIndexed; });
    if (isLong)
        return;
    const DatabaseTable& table = m_plan->tables[std::size_t(values.table)];
    const QString working = workingName("i", m_indexes.size());
    m_indexes.push_back({ working, names.take(shortSqlName(table.name) + QLatin1String("_code")),
        QStringLiteral("CREATE UNIQUE INDEX %1 ON %2 (%3)")
            .arg(working, tableName(std::size_t(values.table)),
                sqlIdentifier(table.columns.first().name)) });
}

// Their number is compared with what the server took when all of them are there.
qint64 PostgresTarget::Job::append(int table, const DatabaseRows& rows)
{
    m_copy.append(table, m_forms[std::size_t(table)], rows);
    return qint64(rows.count());
}

// There is no index yet by which a case could be found quickly.
void PostgresTarget::Job::markDuplicate(qint64 caseId, qint64 firstCaseId)
{
    m_copy.append(m_duplicates, { caseId, firstCaseId, m_copy.rows(m_duplicates) });
}

QString PostgresTarget::Job::markStatement() const
{
    return QStringLiteral("UPDATE %1 c SET duplicate_of = d.first_case_id FROM (SELECT DISTINCT ON "
                          "(case_id) case_id, first_case_id FROM %2 ORDER BY case_id, place) d "
                          "WHERE c.case_id = d.case_id")
        .arg(tableName(std::size_t(m_plan->table(SystemTable::cases))), duplicatesName());
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
    for (const Index& index : m_indexes)
        statements += rename.arg(QStringLiteral("INDEX"), index.working, sqlIdentifier(index.name));
    for (const DatabaseTable& table : m_plan->tables) {
        if (!table.labelView.isEmpty())
            statements += labelViewSql(*m_plan, table) + QLatin1String(";\n");
        if (!table.validView.isEmpty())
            statements += validViewSql(table) + QLatin1String(";\n");
    }
    return statements;
}

QString PostgresTarget::Job::commentStatements() const
{
    QString statements;
    for (const DatabaseTable& table : m_plan->tables) {
        const QString name = sqlIdentifier(table.name);
        statements += commentOn(QLatin1String("TABLE ") + name, table.label);
        for (const Column& column : table.columns) {
            statements += commentOn(
                QLatin1String("COLUMN ") + name + QLatin1Char('.') + sqlIdentifier(column.name),
                column.label);
        }
        if (!table.labelView.isEmpty()) {
            statements += commentOn(QLatin1String("VIEW ") + sqlIdentifier(table.labelView),
                QStringLiteral("%1 with labels in place of codes").arg(table.name));
        }
        if (!table.validView.isEmpty()) {
            statements += commentOn(QLatin1String("VIEW ") + sqlIdentifier(table.validView),
                QStringLiteral("%1 without missing and not-applicable codes").arg(table.name));
        }
    }
    return statements;
}

// Others wait for nothing but the last of them.
QStringList PostgresTarget::Job::lastSteps() const
{
    QStringList steps;
    if (m_copy.rows(m_duplicates) > 0)
        steps.append(markStatement());
    steps.append(QLatin1String("DROP TABLE ") + duplicatesName());
    for (const Index& index : m_indexes)
        steps.append(index.statement);
    for (std::size_t t = 0; t < m_plan->tables.size(); ++t)
        steps.append(QLatin1String("ANALYZE ") + tableName(t));
    steps.append(takeOverStatements());
    steps.append(commentStatements());
    return steps;
}

bool PostgresTarget::Job::finish(const GoesOn& goesOn)
{
    m_copy.finish();
    const QStringList steps = lastSteps();
    for (const QString& step : steps) {
        if ((goesOn && !goesOn()) || !server.run(step, goesOn)) {
            server.close();
            return false;
        }
    }
    server.commit();
    server.close();
    return true;
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

QString PostgresTarget::mistakeIn(const QString& connection)
{
    return PostgresConnection::mistakeIn(connection);
}

QString PostgresTarget::nameOf(const QString& connection)
{
    return PostgresConnection(connection).name();
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
