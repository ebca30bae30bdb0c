#include <tessel_data/PostgresTables_p.h>

#include <tessel_data/DatabaseViews_p.h>
#include <tessel_data/SqlNames.h>
#include <tessel_data/TargetForm_p.h>
#include <tessel_data/UniqueNames.h>

#include <algorithm>

namespace tessel {

namespace {

using Column = DatabaseColumn;

constexpr int LongestIndexed = 2000; // bytes of a code

QString commentOn(const QString& what, const QString& text)
{
    return text.isEmpty() ? QString()
                          : QStringLiteral("COMMENT ON %1 IS %2;\n").arg(what, sqlText(text));
}

} // namespace

QString PostgresTables::Index::statement(const QString& name, const QString& table) const
{
    const QString made = kind == Kind::Key
        ? QStringLiteral("ALTER TABLE %2 ADD CONSTRAINT %1 PRIMARY KEY (%3)")
        : QStringLiteral("CREATE %4INDEX %1 ON %2 (%3)")
              .arg(QStringLiteral("%1"), QStringLiteral("%2"), QStringLiteral("%3"),
                  kind == Kind::Unique ? QStringLiteral("UNIQUE ") : QString());
    return made.arg(name, table, columns)
        + (condition.isEmpty() ? QString() : QLatin1String(" WHERE ") + condition);
}

PostgresTables::PostgresTables(const DatabasePlan& plan)
    : m_plan(plan)
{
    UniqueNames names;
    for (const DatabaseTable& table : plan.tables) {
        for (const QString& name : { table.name, table.labelView, table.validView })
            names.take(name);
    }
    for (const DatabaseIndex& index : plan.indexes) {
        names.take(index.name);
        QStringList columns;
        for (const QString& column : index.columns)
            columns.append(sqlIdentifier(column));
        const QString condition =
            index.skipsNull ? columns.first() + QLatin1String(" IS NOT NULL") : QString();
        m_indexes.push_back({ index.name, index.table, Index::Kind::Plain,
            columns.join(QLatin1String(", ")), condition, true });
    }
    for (int t = 0; t < int(plan.tables.size()); ++t)
        planKey(t, names);
    for (const DatabaseValueTable& values : plan.valueTables)
        planCodeIndex(values, names);
}

void PostgresTables::planKey(int table, UniqueNames& names)
{
    const DatabaseTable& definition = m_plan.tables[std::size_t(table)];
    if (!isKeyed(m_plan, definition))
        return;
    m_indexes.push_back({ names.take(shortSqlName(definition.name) + QLatin1String("_pkey")), table,
        Index::Kind::Key, sqlIdentifier(definition.columns.first().name), QString(), false });
}

// Very long codes fit no index; there are few of them.
void PostgresTables::planCodeIndex(const DatabaseValueTable& values, UniqueNames& names)
{
    const bool isLong = std::any_of(values.entries.begin(), values.entries.end(),
        [](const auto& entry) { return entry.text.toUtf8().size() > LongestIndexed; });
    if (isLong)
        return;
    const DatabaseTable& table = m_plan.tables[std::size_t(values.table)];
    m_indexes.push_back(
        { names.take(shortSqlName(table.name) + QLatin1String("_code")), values.table,
            Index::Kind::Unique, sqlIdentifier(table.columns.first().name), QString(), false });
}

// Rows are not checked for nulls, which takes the server a twentieth of COPY: numbers of cases and
// rows are always there. A key is checked quicker now than when it is made.
QString PostgresTables::definition(const DatabaseTable& table) const
{
    QStringList columns;
    for (const Column& column : table.columns)
        columns.append(sqlIdentifier(column.name) + QLatin1Char(' ') + column.sqlType);
    if (isKeyed(m_plan, table))
        columns.first() += QLatin1String(" NOT NULL");
    return QLatin1Char('(') + columns.join(QLatin1String(", ")) + QLatin1Char(')');
}

QString PostgresTables::views(const DatabaseTable& table) const
{
    QString statements;
    if (!table.labelView.isEmpty())
        statements += labelViewSql(m_plan, table) + QLatin1String(";\n");
    if (!table.validView.isEmpty())
        statements += validViewSql(table) + QLatin1String(";\n");
    return statements;
}

QString PostgresTables::comments(const DatabaseTable& table)
{
    const QString name = sqlIdentifier(table.name);
    QString statements = commentOn(QLatin1String("TABLE ") + name, table.label);
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
    return statements;
}

} // namespace tessel
