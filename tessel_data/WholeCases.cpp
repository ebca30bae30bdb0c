#include <tessel_data/WholeCases_p.h>

namespace tessel {

WholeCases::WholeCases(const DataDictionary& dictionary, Take take, std::function<void()> tooLarge,
    Frame before, Frame behind)
    : m_dictionary(dictionary)
    , m_take(std::move(take))
    , m_tooLarge(std::move(tooLarge))
    , m_before(std::move(before))
    , m_behind(std::move(behind))
{
}

void WholeCases::frame(const Frame& what, const DataBatch& batch) const
{
    if (what)
        what(batch);
}

void WholeCases::add(const DataBatch& batch)
{
    const auto& records = batch.records;
    const std::size_t count = records.size();
    std::size_t first = 0;
    while (first < count && !m_kept.records.empty()
        && records[first].caseNumber == m_kept.records.front().caseNumber)
        keep(batch, records[first++]);
    if (first == count)
        return;
    finish();
    frame(m_before, batch);
    for (std::size_t end = first + 1; end < count; ++end) {
        if (records[end].caseNumber == records[first].caseNumber)
            continue;
        m_take(batch, first, end);
        first = end;
    }
    frame(m_behind, batch);
    for (; first < count; ++first)
        keep(batch, records[first]);
}

void WholeCases::keep(const DataBatch& batch, const DataBatch::Record& record)
{
    constexpr std::size_t mostCells = 20'000'000;
    if (m_kept.states.size() > mostCells)
        m_tooLarge();
    const int cells = m_dictionary.records[std::size_t(record.record)].columns.size();
    DataBatch::Record kept = record;
    kept.firstCell = m_kept.addCells(std::size_t(cells));
    kept.text = {};
    for (quint32 c = 0; c < quint32(cells); ++c) {
        const ValueState state = batch.states[record.firstCell + c];
        const bool hasText = state.kind() == ValueKind::Text
            || state.kind() == ValueKind::NotANumber || state.kind() == ValueKind::Unfit;
        if (hasText)
            m_kept.setText(
                kept.firstCell + c, state, m_kept.keep(batch.textOf(record.firstCell + c)));
        else
            m_kept.set(kept.firstCell + c, state, batch.numbers[record.firstCell + c]);
    }
    m_kept.records.push_back(kept);
}

void WholeCases::finish()
{
    if (m_kept.records.empty())
        return;
    frame(m_before, m_kept);
    m_take(m_kept, 0, m_kept.records.size());
    frame(m_behind, m_kept);
    m_kept.clear();
}

} // namespace tessel
