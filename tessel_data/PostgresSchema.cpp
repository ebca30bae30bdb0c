#include <tessel_data/PostgresSchema_p.h>

#include <tessel_data/SqlNames.h>
#include <tessel_data/TargetForm_p.h>

#include <algorithm>

namespace tessel {

namespace {

QString quoted(const QString& catalogName)
{
    return QLatin1Char('"') + QString(catalogName).replace(QLatin1Char('"'), QLatin1String("\"\""))
        + QLatin1Char('"');
}

QString listOf(const QStringList& names, QString (*shown)(const QString&))
{
    QStringList texts;
    for (const QString& name : names)
        texts.append(shown(name));
    return texts.join(QLatin1String(", "));
}

} // namespace

QString catalogName(const QString& name)
{
    return sqlIdentifier(name) == name ? name.toLower() : name;
}

PostgresSchema::PostgresSchema(PostgresConnection& server, const QString& name)
    : m_server(server)
    , m_name(name.isEmpty() ? QString() : catalogName(name))
{
}

void PostgresSchema::prepare(const DatabasePlan& plan, bool mayReplace)
{
    choose();
    lock();
    make();
    readRelations();
    readFormer();
    if (!m_formerTables.isEmpty() && !mayReplace) {
        m_server.fail(QStringLiteral("schema %1 has the tables of a build already; give "
                                     "--overwrite to replace them, or another --schema")
                          .arg(quoted(m_name)));
    }
    checkFormer();
    checkDependents();
    checkNames(plan);
}

// Those who read go on.
void PostgresSchema::openFormer()
{
    choose();
    lock();
    if (isThere()) {
        if (!hasRight("USAGE")) {
            m_server.fail(QStringLiteral("permission denied for schema %1; the right to use it has "
                                         "to be granted by the owner")
                              .arg(quoted(m_name)));
        }
        enter();
        readRelations();
        readFormer();
    }
    if (m_formerTables.isEmpty()) {
        m_server.fail(QStringLiteral("schema %1 has no tables of a build to be added to; build "
                                     "without --add first, or give its --schema")
                          .arg(quoted(m_name)));
    }
    m_server.run(QStringLiteral("SET LOCAL lock_timeout = '5s'; LOCK TABLE %1 IN SHARE ROW "
                                "EXCLUSIVE MODE; SET LOCAL lock_timeout = 0")
                     .arg(listOf(m_formerTables, quoted)));
}

QString PostgresSchema::name() const
{
    return quoted(m_name);
}

void PostgresSchema::choose()
{
    if (m_name.isEmpty())
        m_name = m_server.query(QStringLiteral("SELECT current_schema()")).front().front();
    if (m_name.isEmpty()) {
        m_server.fail(QStringLiteral(
            "the database has none of the schemas of the search path; name one with --schema"));
    }
}

void PostgresSchema::lock()
{
    const QString isLocked =
        m_server
            .query(QStringLiteral("SELECT pg_try_advisory_xact_lock(hashtextextended(%1, 0))")
                       .arg(sqlText(QLatin1String("tessel build ") + m_name)))
            .front()
            .front();
    if (isLocked != QLatin1String("t")) {
        m_server.fail(QStringLiteral("another build into schema %1 is at work; wait for its end")
                          .arg(quoted(m_name)));
    }
}

bool PostgresSchema::isThere() const
{
    return !m_server
                .query(QStringLiteral("SELECT 1 FROM pg_namespace WHERE nspname = %1")
                           .arg(sqlText(m_name)))
                .empty();
}

bool PostgresSchema::hasRight(const char* right) const
{
    return m_server
               .query(QStringLiteral("SELECT has_schema_privilege(%1, '%2')")
                          .arg(sqlText(m_name), QLatin1String(right)))
               .front()
               .front()
        == QLatin1String("t");
}

void PostgresSchema::enter() const
{
    m_server.run(QLatin1String("SET LOCAL search_path = ") + quoted(m_name));
}

void PostgresSchema::make()
{
    if (!isThere())
        m_server.run(QLatin1String("CREATE SCHEMA ") + quoted(m_name));
    if (!hasRight("USAGE") || !hasRight("CREATE")) {
        m_server.fail(QStringLiteral("permission denied for schema %1; the rights to use it and to "
                                     "create tables there have to be granted by the owner")
                          .arg(quoted(m_name)));
    }
    enter();
}

void PostgresSchema::readRelations()
{
    const auto rows = m_server.query(
        QStringLiteral("SELECT c.relname, pg_has_role(c.relowner, 'USAGE') FROM pg_class c JOIN "
                       "pg_namespace n ON n.oid = c.relnamespace WHERE n.nspname = %1")
            .arg(sqlText(m_name)));
    for (const QStringList& row : rows)
        m_relations.push_back({ row.at(0), row.at(1) == QLatin1String("t") });
}

bool PostgresSchema::has(const QString& relation) const
{
    return std::any_of(m_relations.begin(), m_relations.end(),
        [&](const Relation& known) { return known.name == relation; });
}

// A build tells of itself what it made; other tables in the schema are nobody's here.
void PostgresSchema::readFormer()
{
    QStringList names;
    for (const Relation& relation : m_relations)
        names.append(relation.name);
    if (!areOfBuild(names))
        return;
    const auto add = [this](QStringList& list, const QString& name) {
        const QString known = catalogName(name);
        if (!name.isEmpty() && has(known) && !list.contains(known))
            list.append(known);
    };
    const auto records = m_server.query(
        QStringLiteral("SELECT table_name, label_view, valid_view FROM ") + SystemTable::records);
    for (const QStringList& row : records) {
        add(m_formerTables, row.at(0));
        add(m_formerViews, row.at(1));
        add(m_formerViews, row.at(2));
    }
    const auto values =
        m_server.query(QStringLiteral("SELECT DISTINCT value_table FROM ") + SystemTable::values);
    for (const QStringList& row : values)
        add(m_formerTables, row.at(0));
    for (const QString& name : { SystemTable::cases, SystemTable::records, SystemTable::variables,
             SystemTable::values, SystemTable::sources, SystemTable::builds, SystemTable::problems,
             SystemTable::rejects, SystemTable::missing })
        add(m_formerTables, name);
}

// Now, and not when hours of work are done.
void PostgresSchema::checkFormer() const
{
    const QStringList former = m_formerTables + m_formerViews;
    for (const Relation& relation : m_relations) {
        if (former.contains(relation.name) && !relation.isOwned) {
            m_server.fail(QStringLiteral("table %1 of the former build belongs to another user, "
                                         "who alone can replace it")
                              .arg(quoted(relation.name)));
        }
    }
}

void PostgresSchema::checkDependents() const
{
    if (m_formerTables.isEmpty())
        return;
    const QString former = listOf(m_formerTables + m_formerViews, sqlText);
    const auto views = m_server.query(QStringLiteral(
        "SELECT DISTINCT v.oid::regclass FROM pg_depend d JOIN pg_rewrite r ON r.oid = d.objid "
        "JOIN pg_class v ON v.oid = r.ev_class JOIN pg_class t ON t.oid = d.refobjid "
        "JOIN pg_namespace n ON n.oid = t.relnamespace "
        "WHERE d.classid = 'pg_rewrite'::regclass AND d.refclassid = 'pg_class'::regclass "
        "AND n.nspname = %1 AND t.relname IN (%2) "
        "AND NOT (v.relnamespace = n.oid AND v.relname IN (%2)) ORDER BY 1")
                                          .arg(sqlText(m_name), former));
    if (!views.empty()) {
        m_server.fail(QStringLiteral("view %1 depends on the tables of the former build; drop it, "
                                     "then build again")
                          .arg(views.front().front()));
    }
}

void PostgresSchema::checkNames(const DatabasePlan& plan) const
{
    QStringList wanted;
    for (const DatabaseTable& table : plan.tables)
        wanted << table.name << table.labelView << table.validView;
    for (const QString& name : qAsConst(wanted)) {
        const QString place = catalogName(name);
        const bool isFormer = m_formerTables.contains(place) || m_formerViews.contains(place);
        if (!name.isEmpty() && !isFormer && has(place)) {
            m_server.fail(QStringLiteral("schema %1 has a table or view %2 that is of no build; "
                                         "choose another --schema")
                              .arg(quoted(m_name), quoted(place)));
        }
    }
}

QString PostgresSchema::dropStatements() const
{
    QString statements;
    if (!m_formerViews.isEmpty())
        statements +=
            QLatin1String("DROP VIEW ") + listOf(m_formerViews, quoted) + QLatin1Char(';');
    if (!m_formerTables.isEmpty())
        statements +=
            QLatin1String("DROP TABLE ") + listOf(m_formerTables, quoted) + QLatin1Char(';');
    return statements;
}

} // namespace tessel
