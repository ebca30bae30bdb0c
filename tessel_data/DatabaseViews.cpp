#include <tessel_data/DatabaseViews_p.h>

#include <tessel_data/SqlNames.h>

#include <QLocale>

#include <algorithm>
#include <limits>

namespace tessel {

namespace {

using Type = DatabaseColumn::Type;

QString realText(double number)
{
    return QString::number(number, 'g', QLocale::FloatingPointShortest);
}

// The test that a column has the code, or one of the range.
QString testOf(const QString& name, const DatabaseColumn& column, const DatabaseCode& code)
{
    if (column.type == Type::Text)
        return name + QLatin1String(" = ") + sqlText(code.text);
    QString low;
    QString high;
    if (column.type == Type::Real) {
        constexpr double most = std::numeric_limits<double>::max();
        low = code.lowReal <= -most ? QString() : realText(code.lowReal);
        high = code.highReal >= most ? QString() : realText(code.highReal);
    } else {
        low = numberText(code.low, column.decimals);
        high = numberText(code.high, column.decimals);
    }
    if (column.type == Type::Digits) // a text in SQLite
        return name + QLatin1String(" = ") + sqlText(low);
    if (low.isEmpty() && high.isEmpty())
        return name + QLatin1String(" IS NOT NULL");
    if (low == high)
        return name + QLatin1String(" = ") + low;
    if (low.isEmpty())
        return name + QLatin1String(" <= ") + high;
    if (high.isEmpty())
        return name + QLatin1String(" >= ") + low;
    return QStringLiteral("%1 BETWEEN %2 AND %3").arg(name, low, high);
}

QString valid(const DatabaseColumn& column)
{
    QString name = QLatin1String("t.") + sqlIdentifier(column.name);
    QStringList tests;
    for (const DatabaseCode& code : column.invalid)
        tests.append(testOf(name, column, code));
    if (tests.isEmpty())
        return name;
    return QStringLiteral("CASE WHEN %1 THEN NULL ELSE %2 END")
        .arg(tests.join(QLatin1String(" OR ")), name);
}

// What stands for a null: the label of blanks; of a kind of missing values its label, or else its
// name.
QString labelOfNull(
    const DatabasePlan& plan, const DatabaseTable& table, const DatabaseColumn& column)
{
    const DatabaseValueTable& values = plan.valueTables[std::size_t(column.valueTable)];
    if (!plan.hasMissingKinds) {
        return !values.entries.empty() && values.entries.back().isBlank
            ? sqlText(values.entries.back().labels.first())
            : QStringLiteral("NULL");
    }
    QString label = QStringLiteral("m.kind");
    if (!values.missingLabels.isEmpty()) {
        label = QStringLiteral("CASE m.kind");
        for (auto kind = values.missingLabels.begin(); kind != values.missingLabels.end(); ++kind)
            label += QLatin1String(" WHEN ") + sqlText(kind.key()) + QLatin1String(" THEN ")
                + sqlText(*kind);
        label += QLatin1String(" ELSE m.kind END");
    }
    const QString row = sqlIdentifier(QStringLiteral("row"));
    return QStringLiteral("(SELECT %1 FROM %2 m WHERE m.table_name = %3 AND m.column_name = %4 AND "
                          "m.%5 = t.%5)")
        .arg(label, SystemTable::missing, sqlText(table.name), sqlText(column.name), row);
}

// True when no value but of a quantity has a label.
bool hasOnlyQuantities(const DatabaseValueTable& values)
{
    return !values.quantityLabel.isEmpty()
        && std::all_of(values.entries.begin(), values.entries.end(), [&](const auto& entry) {
               return !entry.isBlank && entry.labels.first() == values.quantityLabel;
           });
}

// A look-up for each row that asks for it: joins are limited in number, and columns that a query
// does not name cost nothing. What is in no set stays as it is, and so do quantities.
QString labelled(
    const DatabasePlan& plan, const DatabaseTable& definition, const DatabaseColumn& column)
{
    QString value = QLatin1String("t.") + sqlIdentifier(column.name);
    if (column.valueTable < 0)
        return value;
    const DatabaseValueTable& values = plan.valueTables[std::size_t(column.valueTable)];
    if (hasOnlyQuantities(values))
        return value;
    const QString table = sqlIdentifier(plan.tables[std::size_t(values.table)].name);
    const QString look = values.hasRanges
        ? QStringLiteral("(SELECT CASE WHEN v.code_to >= %1 THEN nullif(v.label, %3) END FROM %2 v "
                         "WHERE v.code_from <= %1 ORDER BY v.code_from DESC LIMIT 1)")
        : QStringLiteral("(SELECT nullif(v.label, %3) FROM %2 v WHERE v.code = %1)");
    return QLatin1String("CASE WHEN ") + value + QLatin1String(" IS NULL THEN ")
        + labelOfNull(plan, definition, column) + QLatin1String(" ELSE coalesce(")
        + look.arg(value, table, sqlText(values.quantityLabel)) + QLatin1String(", CAST(") + value
        + QLatin1String(" AS TEXT)) END");
}

QString viewSql(const QString& view, const DatabaseTable& table, const QStringList& expressions)
{
    QStringList columns;
    for (int c = 0; c < table.columns.size(); ++c) {
        columns.append(
            expressions.at(c) + QLatin1String(" AS ") + sqlIdentifier(table.columns.at(c).name));
    }
    return QLatin1String("CREATE VIEW ") + sqlIdentifier(view) + QLatin1String(" AS SELECT\n  ")
        + columns.join(QLatin1String(",\n  ")) + QLatin1String("\nFROM ")
        + sqlIdentifier(table.name) + QLatin1String(" t");
}

} // namespace

QString labelViewSql(const DatabasePlan& plan, const DatabaseTable& table)
{
    QStringList expressions;
    for (const DatabaseColumn& column : table.columns)
        expressions.append(labelled(plan, table, column));
    return viewSql(table.labelView, table, expressions);
}

QString validViewSql(const DatabaseTable& table)
{
    QStringList expressions;
    for (const DatabaseColumn& column : table.columns)
        expressions.append(valid(column));
    return viewSql(table.validView, table, expressions);
}

} // namespace tessel
