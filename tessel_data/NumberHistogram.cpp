#include <tessel_data/NumberHistogram_p.h>

#include <algorithm>

namespace tessel {

namespace {

constexpr qint64 MostBars = 20;

} // namespace

double NumberHistogram::edge(qint64 index) const
{
    const double digits = double(index) * m_digits;
    // 3 tenths are 0.3, but 3 times 0.1 is not.
    return m_exponent < 0 ? digits / std::pow(10.0, -m_exponent)
                          : digits * std::pow(10.0, m_exponent);
}

double NumberHistogram::width() const
{
    return edge(1);
}

// A number that is an edge but for its last digits is one.
qint64 NumberHistogram::indexOf(double number) const
{
    constexpr double nearly = 1e-9;
    const double place = number / width();
    const double nearest = std::nearbyint(place);
    const bool isEdge = std::abs(place - nearest) <= nearly * std::max(1.0, std::abs(nearest));
    return qint64(isEdge && std::abs(nearest) < 1 / nearly ? nearest : std::floor(place));
}

// Whole numbers have no bars narrower than 1.
void NumberHistogram::begin(const std::vector<CountedNumber>& numbers)
{
    const double lowest = numbers.front().number;
    const double highest = numbers.back().number;
    const bool areWhole = std::all_of(numbers.begin(), numbers.end(),
        [](const CountedNumber& one) { return one.number == std::nearbyint(one.number); });
    const double least =
        std::max(areWhole ? 1 : m_finest, highest / double(MostBars) - lowest / double(MostBars));
    constexpr double nearly = 1 - 1e-9;
    constexpr double finestOfAll = 1e-290;
    if (!(least > finestOfAll)) // a bar could not be told from the next
        return;
    m_exponent = int(std::floor(std::log10(least)));
    for (m_digits = 1; width() < least * nearly;) {
        constexpr double one = 1;
        constexpr double two = 2;
        constexpr double five = 5;
        constexpr double ten = 10;
        m_digits = m_digits == one ? two : m_digits == two ? five : ten;
    }
    m_first = indexOf(lowest);
    m_bars.resize(1);
}

void NumberHistogram::doubleWidth()
{
    const auto half = [](qint64 index) { return index >= 0 ? index / 2 : (index - 1) / 2; };
    const qint64 first = half(m_first);
    std::vector<Tally> bars;
    for (std::size_t i = 0; i < m_bars.size(); ++i) {
        const auto place = std::size_t(half(m_first + qint64(i)) - first);
        bars.resize(std::max(bars.size(), place + 1));
        bars[place].add(m_bars[i]);
    }
    m_first = first;
    m_bars = std::move(bars);
    m_digits *= 2;
}

void NumberHistogram::widen(double lowest, double highest)
{
    const auto first = [&] { return std::min(m_first, indexOf(lowest)); };
    const auto last = [&] {
        return std::max(m_first + qint64(m_bars.size()) - 1, indexOf(highest));
    };
    // In doubles, as indexes of numbers far away from what was there may not fit.
    constexpr double mostIndex = 1e17;
    while (std::max(std::abs(lowest), std::abs(highest)) / width() > mostIndex
        || last() - first() >= MostBars)
        doubleWidth();
    const qint64 begin = first();
    const qint64 end = last() + 1;
    m_bars.insert(m_bars.begin(), std::size_t(m_first - begin), Tally());
    m_first = begin;
    m_bars.resize(std::size_t(end - begin));
}

// A portion that no bar fits would be missing in those of later ones.
void NumberHistogram::add(const std::vector<CountedNumber>& numbers)
{
    if (numbers.empty() || m_isLost)
        return;
    const double lowest = numbers.front().number;
    const double highest = numbers.back().number;
    if (m_digits == 0 && lowest < highest)
        begin(numbers);
    m_isLost = m_digits == 0;
    if (m_isLost)
        return;
    widen(lowest, highest);
    for (const CountedNumber& one : numbers)
        m_bars[std::size_t(indexOf(one.number) - m_first)].add(one.tally);
}

std::vector<StatisticsBin> NumberHistogram::bins(bool isWeighted) const
{
    std::vector<StatisticsBin> bins;
    for (std::size_t i = 0; i < m_bars.size(); ++i) {
        const qint64 index = m_first + qint64(i);
        bins.push_back({ edge(index), edge(index + 1), m_bars[i].cell(isWeighted) });
    }
    return bins;
}

} // namespace tessel
