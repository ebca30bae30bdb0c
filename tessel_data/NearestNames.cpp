#include <tessel_data/NearestNames_p.h>

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace tessel {

namespace {

// Characters that are added, left out, changed or swapped to make one of the other.
int distance(const QString& first, const QString& second)
{
    const auto width = std::size_t(second.size()) + 1;
    std::vector<int> before(width);
    std::vector<int> last(width);
    std::vector<int> row(width);
    std::iota(row.begin(), row.end(), 0);
    for (int i = 1; i <= first.size(); ++i) {
        before.swap(last);
        last.swap(row);
        row[0] = i;
        for (int j = 1; j <= second.size(); ++j) {
            const auto at = std::size_t(j);
            const bool isSame = first.at(i - 1) == second.at(j - 1);
            row[at] = std::min({ last[at - 1] + (isSame ? 0 : 1), last[at] + 1, row[at - 1] + 1 });
            if (i > 1 && j > 1 && first.at(i - 1) == second.at(j - 2)
                && first.at(i - 2) == second.at(j - 1))
                row[at] = std::min(row[at], before[at - 2] + 1);
        }
    }
    return row.back();
}

} // namespace

QStringList nearestNames(const QString& name, const QStringList& names)
{
    constexpr int most = 3;
    const int limit = std::max(1, std::min(name.size() / 3, most));
    const QString wanted = name.toUpper();
    std::vector<std::pair<int, QString>> near;
    for (const QString& candidate : names) {
        if (std::abs(candidate.size() - name.size()) > limit)
            continue;
        const int difference = distance(wanted, candidate.toUpper());
        if (difference <= limit)
            near.emplace_back(difference, candidate);
    }
    std::sort(near.begin(), near.end());
    near.erase(std::unique(near.begin(), near.end()), near.end());
    QStringList result;
    for (std::size_t i = 0; i < near.size() && i < most; ++i)
        result.append(near[i].second);
    return result;
}

QString nearestNamesText(const QString& name, const QStringList& names)
{
    constexpr int mostShown = 8;
    const QStringList near = nearestNames(name, names);
    if (!near.isEmpty())
        return QStringLiteral("; did you mean %1?").arg(near.join(QLatin1String(" or ")));
    if (names.isEmpty())
        return QString();
    return QStringLiteral("; there are %1%2")
        .arg(QStringList(names.mid(0, mostShown)).join(QLatin1String(", ")),
            names.size() > mostShown ? QStringLiteral(" and more") : QString());
}

} // namespace tessel
