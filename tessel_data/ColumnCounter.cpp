#include <tessel_data/ColumnCounter_p.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>

namespace tessel {

namespace {

quint64 mixed(quint64 value)
{
    value ^= value >> 32;
    value *= 0x9E3779B97F4A7C15U;
    return value ^ (value >> 29);
}

// Different texts have different numbers, as good as always.
quint64 textNumber(std::string_view text)
{
    return quint64(std::hash<std::string_view>()(text)) | (quint64(1) << 63);
}

// -0 is 0.
qint64 bitsOf(double number)
{
    const double plain = number == 0 ? 0 : number;
    qint64 bits = 0;
    std::memcpy(&bits, &plain, sizeof bits);
    return bits;
}

double realOf(qint64 bits)
{
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

} // namespace

qint64 DistinctCounter::count() const
{
    auto count = qint64(m_count);
    for (const quint64 bits : m_small)
        count += __builtin_popcountll(bits);
    return count;
}

void DistinctCounter::addLarge(quint64 value, std::size_t limit)
{
    m_last = value;
    if (m_count * 2 >= m_slots.size()) {
        std::vector<quint64> old(std::max<std::size_t>(16, m_slots.size() * 2));
        old.swap(m_slots);
        m_count = 0;
        for (const quint64 kept : old) {
            if (kept != 0)
                place(kept);
        }
    }
    place(value);
    if (m_count > limit) {
        m_isFull = true;
        --m_count;
        std::vector<quint64>().swap(m_slots);
    }
}

void DistinctCounter::place(quint64 value)
{
    std::size_t slot = mixed(value) & (m_slots.size() - 1);
    while (m_slots[slot] != 0 && m_slots[slot] != value)
        slot = (slot + 1) & (m_slots.size() - 1);
    if (m_slots[slot] == value)
        return;
    m_slots[slot] = value;
    ++m_count;
}

void ColumnCounter::carrySum(qint64 number)
{
    // The sum wrapped around, so it is taken back before it is put aside.
    const auto before = qint64(quint64(m_sum) - quint64(number));
    m_largeSum += double(before) + double(number);
    m_sum = 0;
}

void ColumnCounter::add(const DataBatch& batch, quint32 cell, Limits& limits)
{
    const ValueState state = batch.states[cell];
    if (state.special() != Special::None)
        return addSpecial(state.special());
    if (state.isOutside())
        addOutside(batch, cell, limits);
    switch (state.kind()) {
    case ValueKind::Blank:
        ++m_counts.blank;
        break;
    case ValueKind::Number:
        addNumber(batch.numbers[cell], limits);
        break;
    case ValueKind::Real:
        addReal(batch.realOf(cell), limits);
        break;
    case ValueKind::Text:
        ++m_texts;
        m_distinct.add(textNumber(batch.textOf(cell)), limits.distinct);
        break;
    case ValueKind::NotANumber:
        ++m_counts.notANumber;
        break;
    case ValueKind::Unfit:
        ++m_counts.unfit;
        break;
    }
}

void ColumnCounter::addSpecial(Special special)
{
    switch (special) {
    case Special::Missing:
        ++m_counts.missing;
        break;
    case Special::NotApplicable:
        ++m_counts.notApplicable;
        break;
    case Special::Refused:
        ++m_counts.refused;
        break;
    case Special::Default:
    case Special::None:
        ++m_counts.defaults;
        break;
    }
}

void ColumnCounter::addReal(double number, const Limits& limits)
{
    ++m_reals;
    m_lowestReal = std::min(m_lowestReal, number);
    m_highestReal = std::max(m_highestReal, number);
    m_realSum += number;
    m_distinct.add(quint64(bitsOf(number)), limits.distinct);
}

void ColumnCounter::addOutside(const DataBatch& batch, quint32 cell, Limits& limits)
{
    const ValueState state = batch.states[cell];
    ++m_counts.outside;
    m_counts.outOfRange += state.isOutOfRange() ? 1 : 0;
    if (state.kind() == ValueKind::Number)
        m_outsideNumbers.add(batch.numbers[cell], 0, limits.outsideCodes, limits.outsideBytes);
    else if (state.kind() == ValueKind::Real)
        m_outsideNumbers.add(
            bitsOf(batch.realOf(cell)), 0, limits.outsideCodes, limits.outsideBytes);
    else
        addOutsideText(batch.textOf(cell), limits);
}

void ColumnCounter::addOutsideText(std::string_view text, Limits& limits)
{
    const std::size_t longest = std::max(m_width, text.size());
    m_outsideTexts.add(std::string(text), longest, limits.outsideCodes, limits.outsideBytes);
}

// Those that come most often for certain are the first ones.
QVector<OutsideCode> ColumnCounter::outsideCodes(const DataVariable& variable) const
{
    QVector<OutsideCode> codes;
    for (const auto& one : m_outsideNumbers.counts()) {
        codes.append({ m_reals > 0 ? realText(realOf(one.code()))
                                   : numberText(one.code(), variable.decimals),
            one.count - one.taken, one.taken });
    }
    for (const auto& one : m_outsideTexts.counts()) {
        codes.append({ QString::fromUtf8(one.code().data(), int(one.code().size())),
            one.count - one.taken, one.taken });
    }
    std::sort(codes.begin(), codes.end(), [](const OutsideCode& first, const OutsideCode& second) {
        return first.count != second.count ? first.count > second.count : first.code < second.code;
    });
    return codes;
}

ColumnReport ColumnCounter::report(
    const DataVariable& variable, int shownCodes, const Limits& limits) const
{
    ColumnReport report = m_counts;
    report.values = m_numbers + m_reals + m_texts;
    report.rows = report.values + report.blank + report.notANumber + report.unfit + report.missing
        + report.notApplicable + report.refused + report.defaults;
    // Small values are known without a limit, but are no exception from it.
    report.hasAllDistinct = !m_distinct.isFull() && m_distinct.count() <= qint64(limits.distinct);
    report.distinct = report.hasAllDistinct ? m_distinct.count() : qint64(limits.distinct);
    report.hasNumbers = m_numbers > 0 || m_reals > 0;
    if (m_reals > 0) {
        report.lowest = realText(m_lowestReal);
        report.highest = realText(m_highestReal);
        report.mean = m_realSum / double(m_reals);
    } else if (m_numbers > 0) {
        report.lowest = numberText(m_lowest, variable.decimals);
        report.highest = numberText(m_highest, variable.decimals);
        report.mean = (m_largeSum + double(m_sum)) / double(m_numbers)
            / double(powerOfTen(variable.decimals));
    }
    report.hasAllOutsideCodes = m_outsideNumbers.hasAll() && m_outsideTexts.hasAll();
    report.outsideCodes = outsideCodes(variable);
    if (report.outsideCodes.size() > shownCodes)
        report.outsideCodes.resize(shownCodes);
    return report;
}

} // namespace tessel
