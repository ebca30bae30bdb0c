#include <tessel_data/PostgresMerge_p.h>

#include <tessel_data/PostgresSchema_p.h>
#include <tessel_data/SqlNames.h>

#include <algorithm>

namespace tessel {

PostgresMerge::PostgresMerge(PostgresConnection& server, const QString& schema,
    const DatabasePlan& plan, const PostgresTables& tables)
    : m_server(server)
    , m_schema(schema)
    , m_plan(plan)
    , m_tables(tables)
{
}

QString PostgresMerge::prefix(Place place) const
{
    return place == Place::Kept ? m_schema + QLatin1Char('.') : QStringLiteral("pg_temp.");
}

qint64 PostgresMerge::run(const QString& sql)
{
    qint64 changed = 0;
    if ((!m_goesOn || m_goesOn()) && m_server.run(sql, m_goesOn, &changed))
        return changed;
    m_isStopped = true;
    m_server.fail(QStringLiteral("the build was stopped"));
}

std::vector<QStringList> PostgresMerge::rows(const QString& sql)
{
    return m_server.query(sql);
}

// PostgreSQL has most names in small letters; here they are those of the plan.
std::vector<MergeSession::TableColumn> PostgresMerge::columns(Place place, const QString& table)
{
    QHash<QString, QString> planned; // by name in the catalog
    const int known = m_plan.table(table);
    if (known >= 0) {
        for (const DatabaseColumn& column : m_plan.tables[std::size_t(known)].columns)
            planned.insert(catalogName(column.name), column.name);
    }
    std::vector<TableColumn> found;
    for (const QStringList& row :
        rows(QStringLiteral("SELECT attname, format_type(atttypid, atttypmod) FROM pg_attribute "
                            "WHERE attrelid = to_regclass(%1) AND attnum > 0 AND NOT attisdropped "
                            "ORDER BY attnum")
                 .arg(sqlText(prefix(place) + sqlIdentifier(table)))))
        found.push_back({ planned.value(row.at(0), row.at(0)), row.at(1) });
    return found;
}

void PostgresMerge::filled(const QString& table)
{
    run(QLatin1String("ANALYZE pg_temp.") + sqlIdentifier(table));
}

void PostgresMerge::makeTable(const DatabaseTable& table)
{
    run(QStringLiteral("CREATE TABLE %1 %2")
            .arg(prefix(Place::Kept) + sqlIdentifier(table.name), m_tables.definition(table)));
    for (const PostgresTables::Index& index : m_tables.indexes()) {
        if (!index.isPlanned && m_plan.tables[std::size_t(index.table)].name == table.name)
            makeIndex(index);
    }
}

void PostgresMerge::makeIndex(const DatabaseIndex& index)
{
    const auto& known = m_tables.indexes();
    const auto found = std::find_if(known.begin(), known.end(),
        [&](const PostgresTables::Index& one) { return one.isPlanned && one.name == index.name; });
    makeIndex(*found);
}

void PostgresMerge::makeIndex(const PostgresTables::Index& index)
{
    run(index.statement(sqlIdentifier(index.name),
        prefix(Place::Kept) + sqlIdentifier(m_plan.tables[std::size_t(index.table)].name)));
}

// They name their tables without a schema, and mean those that are kept.
void PostgresMerge::makeViews(const DatabaseTable& table)
{
    const QString statements = m_tables.views(table) + PostgresTables::comments(table);
    if (table.kind != DatabaseTable::Kind::Deleted && !statements.isEmpty()) {
        run(QStringLiteral("SET LOCAL search_path = %1, pg_temp; %2 SET LOCAL search_path = %1")
                .arg(m_schema, statements));
    }
}

} // namespace tessel
