#include <tessel_data/TargetForm_p.h>

#include <algorithm>

namespace tessel {

bool isKeyed(const DatabasePlan& plan, const DatabaseTable& table)
{
    return (table.kind == DatabaseTable::Kind::Cases || !plan.hasCases)
        && table.kind != DatabaseTable::Kind::Repeat
        && table.columns.first().role != DatabaseColumn::Role::Value;
}

QString freePrefix(const DatabasePlan& plan, const QString& wanted)
{
    const auto isTaken = [&plan](const QString& prefix) {
        return std::any_of(plan.tables.begin(), plan.tables.end(), [&](const DatabaseTable& table) {
            return table.name.startsWith(prefix, Qt::CaseInsensitive)
                || table.labelView.startsWith(prefix, Qt::CaseInsensitive)
                || table.validView.startsWith(prefix, Qt::CaseInsensitive);
        });
    };
    QString prefix = wanted;
    while (isTaken(prefix))
        prefix += QLatin1String("x_");
    return prefix;
}

bool areOfBuild(const QStringList& tables)
{
    const QStringList told { SystemTable::builds, SystemTable::records, SystemTable::sources };
    return std::all_of(
        told.begin(), told.end(), [&](const QString& table) { return tables.contains(table); });
}

ExistingDatabase existingDatabase(
    const std::function<std::vector<QStringList>(const QString&)>& rows)
{
    const auto valueOf = [&rows](const char* query) {
        const std::vector<QStringList> found = rows(QLatin1String(query));
        return found.empty() ? QByteArray() : found.front().first().toUtf8();
    };
    return {
        valueOf("SELECT dictionary FROM tessel_sources ORDER BY source_id DESC LIMIT 1"),
        valueOf("SELECT options FROM tessel_builds ORDER BY build_id LIMIT 1"),
    };
}

} // namespace tessel
