#include <tessel_data/StatisticsReport.h>

#include <algorithm>

namespace tessel {

QString statisticsKindName(StatisticsKind kind)
{
    static constexpr std::array<const char*, StatisticsKindCount> names { "valid", "missing",
        "not-applicable", "refused", "default", "blank", "not-a-number", "unfit" };
    return QLatin1String(names[std::size_t(kind)]);
}

void StatisticsCell::hide()
{
    *this = {};
    m_isHidden = true;
}

StatisticsCell& StatisticsCell::operator+=(const StatisticsCell& other)
{
    m_count += other.m_count;
    m_weight += other.m_weight;
    if (m_isHidden || other.m_isHidden)
        hide();
    return *this;
}

const VariableStatistics* StatisticsReport::find(int variable) const
{
    const auto found = std::find_if(variables.begin(), variables.end(),
        [&](const VariableStatistics& one) { return one.variable == variable; });
    return found == variables.end() ? nullptr : &*found;
}

} // namespace tessel
