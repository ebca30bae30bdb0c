#include <tessel_data/CodeTable.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <queue>

namespace tessel {

namespace {

// States of so many numbers stand ready; most code lists span less.
constexpr quint64 MostDense = 65'536;

qint64 after(qint64 number)
{
    return number == std::numeric_limits<qint64>::max() ? number : number + 1;
}
double after(double number)
{
    return std::nextafter(number, std::numeric_limits<double>::infinity());
}
qint64 before(qint64 number)
{
    return number - 1;
}
double before(double number)
{
    return std::nextafter(number, -std::numeric_limits<double>::infinity());
}

} // namespace

void CodeTable::addNumbers(qint64 low, qint64 high, Special special, int entry)
{
    if (low > high)
        return;
    m_numbers.push_back({ low, high, special, entry });
    if (special != Special::None)
        return;
    const bool isFirst = m_lowest > m_highest;
    m_lowest = isFirst ? low : std::min(m_lowest, low);
    m_highest = isFirst ? high : std::max(m_highest, high);
}

void CodeTable::addReals(double low, double high, Special special, int entry)
{
    if (!(low <= high))
        return;
    m_reals.push_back({ low, high, special, entry });
    m_hasReals = m_hasReals || special == Special::None;
}

void CodeTable::addText(std::string_view code, Special special, int entry)
{
    if (m_texts.count(code) != 0)
        return;
    m_textStore.push_back(std::make_unique<std::string>(code));
    m_texts.emplace(*m_textStore.back(), Match { true, special, entry });
    m_hasTexts = m_hasTexts || special == Special::None;
}

void CodeTable::addBlank(Special special, int entry)
{
    if (!m_blank.isCode)
        m_blank = { true, special, entry };
}

void CodeTable::finish()
{
    sweep(m_numbers);
    sweep(m_reals);
    fillDense();
}

// Cuts overlapping segments so that of each number the first entry is left; O(n log n).
template <typename Number> void CodeTable::sweep(std::vector<Segment<Number>>& segments)
{
    std::vector<Segment<Number>> sorted = segments;
    std::stable_sort(sorted.begin(), sorted.end(),
        [](const auto& first, const auto& second) { return first.low < second.low; });
    const auto isLater = [](const auto& first, const auto& second) {
        return first.entry > second.entry;
    };
    std::priority_queue<Segment<Number>, std::vector<Segment<Number>>, decltype(isLater)> open(
        isLater);
    std::vector<Segment<Number>> result;
    std::size_t next = 0;
    Number place {};
    while (next < sorted.size() || !open.empty()) {
        if (open.empty())
            place = sorted[next].low;
        while (next < sorted.size() && sorted[next].low <= place)
            open.push(sorted[next++]);
        const Segment<Number> top = open.top();
        if (top.high < place) {
            open.pop();
            continue;
        }
        const bool isCut = next < sorted.size() && sorted[next].low <= top.high;
        const Number high = isCut ? before(sorted[next].low) : top.high;
        result.push_back({ place, high, top.special, top.entry });
        if (after(high) == high) // the last number there is
            break;
        place = after(high);
    }
    segments = std::move(result);
}

template <typename Number>
const CodeTable::Segment<Number>* CodeTable::segmentOf(
    const std::vector<Segment<Number>>& segments, Number number)
{
    auto found = std::upper_bound(segments.begin(), segments.end(), number,
        [](Number value, const auto& segment) { return value < segment.low; });
    if (found == segments.begin())
        return nullptr;
    --found;
    return number <= found->high ? &*found : nullptr;
}

void CodeTable::fillDense()
{
    if (m_numbers.empty())
        return;
    m_denseLow = m_numbers.front().low;
    const quint64 span = quint64(m_numbers.back().high) - quint64(m_denseLow);
    m_dense.resize(std::min(span, MostDense - 1) + 1);
    for (std::size_t i = 0; i < m_dense.size(); ++i)
        m_dense[i] = stateOfSegment(qint64(quint64(m_denseLow) + i));
}

bool CodeTable::isEmpty() const
{
    return m_numbers.empty() && m_reals.empty() && m_texts.empty() && !m_blank.isCode;
}

const CodeTable::Match& CodeTable::blank() const
{
    return m_blank;
}

CodeTable::Match CodeTable::find(qint64 number) const
{
    const auto* segment = segmentOf(m_numbers, number);
    return segment ? Match { true, segment->special, segment->entry } : Match();
}

CodeTable::Match CodeTable::find(double number) const
{
    const auto* segment = segmentOf(m_reals, number);
    return segment ? Match { true, segment->special, segment->entry } : Match();
}

CodeTable::Match CodeTable::find(std::string_view text) const
{
    const auto found = m_texts.find(text);
    return found == m_texts.end() ? Match() : found->second;
}

// A table of nothing but special values says nothing of the others.
ValueState CodeTable::stateOfRare(qint64 number) const
{
    return m_lowest > m_highest && m_dense.empty() ? ValueState(ValueKind::Number)
                                                   : stateOfSegment(number);
}

ValueState CodeTable::stateOfSegment(qint64 number) const
{
    if (const auto* segment = segmentOf(m_numbers, number))
        return ValueState(ValueKind::Number, segment->special);
    if (m_lowest > m_highest)
        return ValueState(ValueKind::Number);
    return ValueState(
        ValueKind::Number, Special::None, true, number < m_lowest || number > m_highest);
}

ValueState CodeTable::stateOf(double number) const
{
    const Match match = find(number);
    return ValueState(ValueKind::Real, match.special, !match.isCode && m_hasReals);
}

ValueState CodeTable::stateOf(std::string_view text) const
{
    const Match match = find(text);
    return ValueState(ValueKind::Text, match.special, !match.isCode && m_hasTexts);
}

ValueState CodeTable::stateOfBlank() const
{
    return ValueState(ValueKind::Blank, m_blank.special);
}

} // namespace tessel
