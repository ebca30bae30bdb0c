#include "building/BuildTexts.h"

#include "checking/CountsText.h"
#include "text/ShownText.h"

#include <tessel_data/SqlNames.h>

using namespace tessel;

namespace {

using Kind = DatabaseTable::Kind;

QString columnLine(const DatabasePlan& plan, const DatabaseColumn& column)
{
    QString line = QStringLiteral("  %1 %2").arg(sqlIdentifier(column.name), column.sqlType);
    if (!column.label.isEmpty())
        line += QLatin1String("  ") + column.label;
    if (column.valueTable >= 0) {
        const int table = plan.valueTables[std::size_t(column.valueTable)].table;
        line += QStringLiteral(" (values: %1)")
                    .arg(sqlIdentifier(plan.tables[std::size_t(table)].name));
    }
    return printable(line) + QLatin1Char('\n');
}

QString tableText(const DatabasePlan& plan, const DatabaseTable& table)
{
    QString text = QStringLiteral("table %1").arg(sqlIdentifier(table.name));
    if (!table.label.isEmpty())
        text += QLatin1String("  ") + table.label;
    text = printable(text) + QLatin1Char('\n');
    for (const DatabaseColumn& column : table.columns)
        text += columnLine(plan, column);
    for (const QString& view : { table.labelView, table.validView }) {
        if (!view.isEmpty())
            text +=
                printable(QStringLiteral("view %1").arg(sqlIdentifier(view))) + QLatin1Char('\n');
    }
    return text;
}

QString changesText(const QString& target, const DatabaseChanges& changes)
{
    return QStringLiteral("%1: %2 new, %3 changed, %4 deleted (%5 as they were)\n")
        .arg(printable(target), QString::number(changes.added), QString::number(changes.changed),
            QString::number(changes.withdrawn), QString::number(changes.unchanged));
}

} // namespace

QString planText(const DatabasePlan& plan)
{
    QString text;
    for (const DatabaseTable& table : plan.tables)
        text += tableText(plan, table);
    for (const DatabaseIndex& index : plan.indexes) {
        QStringList columns;
        for (const QString& column : index.columns)
            columns.append(sqlIdentifier(column));
        text += printable(QStringLiteral("index %1 on %2 (%3)")
                              .arg(sqlIdentifier(index.name),
                                  sqlIdentifier(plan.tables[std::size_t(index.table)].name),
                                  columns.join(QLatin1String(", "))))
            + QLatin1Char('\n');
    }
    for (const SqlNote& note : plan.notes)
        text += printable(QLatin1String("note: ") + noteText(note)) + QLatin1Char('\n');
    return text;
}

QString buildSummary(
    const DataSource& source, const BuildSettings& settings, const BuildReport& report)
{
    QString text = settings.addsToTarget
        ? changesText(targetName(settings), report.changes)
        : printable(targetName(settings)) + QLatin1String(" is made.\n");
    for (std::size_t r = 0; r < report.check.recordCounts.size(); ++r) {
        text += QStringLiteral("  %1: %2\n")
                    .arg(printable(source.dictionary().records[r].name),
                        plural(report.check.recordCounts[r], QStringLiteral("row")));
    }
    text += countsText(source, report.check.counts, report.rejects);
    if (report.problems > 0)
        text += QStringLiteral("%1, in tessel_problems\n")
                    .arg(plural(report.problems, QStringLiteral("problem")));
    if (report.nullCharacters > 0) {
        text += QStringLiteral("%1 texts hold a null character, which PostgreSQL does not; it is "
                               "written as U+2400, see tessel_problems\n")
                    .arg(report.nullCharacters);
    }
    return text;
}
