#include <tessel_data/StatisticsPlan_p.h>

#include <tessel_data/DataError.h>
#include <tessel_data/NearestNames_p.h>

#include <algorithm>

namespace tessel {

namespace {

[[noreturn]] void fail(const QString& text)
{
    throw DataError(DataError::Code::UnfitSelection, QString(), text);
}

bool isCalled(
    const DataDictionary& dictionary, int record, const QString& variable, const QString& name)
{
    if (variable == name)
        return true;
    return record >= 0
        && dictionary.records[std::size_t(record)].name + QLatin1Char('.') + variable == name;
}

QStringList variableNames(const DataDictionary& dictionary)
{
    QStringList names;
    for (std::size_t r = 0; r < dictionary.records.size(); ++r) {
        const int count = dictionary.records[r].columns.size();
        for (int c = 0; c < count; ++c)
            names.append(dictionary.variable(int(r), c).name);
    }
    names.removeDuplicates();
    return names;
}

} // namespace

StatisticsPlan::StatisticsPlan(const DataDictionary& dictionary, bool hasCases)
    : m_dictionary(dictionary)
    , m_hasCases(hasCases)
{
}

// Identification items are found once, at their place in all records that have them.
std::vector<NamedVariable> StatisticsPlan::called(const QString& name) const
{
    std::vector<NamedVariable> found;
    for (std::size_t r = 0; r < m_dictionary.records.size(); ++r) {
        const DataRecord& record = m_dictionary.records[r];
        for (int c = 0; c < record.columns.size(); ++c) {
            const DataVariable& variable = m_dictionary.variable(int(r), c);
            if (!isCalled(m_dictionary, int(r), variable.name, name))
                continue;
            const int index = record.columns.at(c);
            const bool isKnown = std::any_of(found.begin(), found.end(),
                [&](const NamedVariable& known) { return known.variable == index; });
            if (!isKnown)
                found.push_back({ index, variable.record, c, variable.level });
        }
    }
    return found;
}

NamedVariable StatisticsPlan::find(const QString& name, const QString& what) const
{
    const std::vector<NamedVariable> found = called(name);
    if (found.size() == 1)
        return found.front();
    if (found.size() > 1) {
        fail(QStringLiteral("%1: several records have a variable '%2'; give one as RECORD.%2")
                 .arg(what, name));
    }
    for (const DataVariable& variable : m_dictionary.variables) {
        if (variable.occurrence > 0
            && isCalled(m_dictionary, variable.record, variable.itemName, name)) {
            fail(QStringLiteral("%1: '%2' is repeated; give one of its occurrences, such as %3")
                     .arg(what, name, variable.name));
        }
    }
    fail(QStringLiteral("%1: there is no variable '%2'%3")
             .arg(what, name, nearestNamesText(name, variableNames(m_dictionary))));
}

int StatisticsPlan::linkTo(int record)
{
    for (std::size_t i = 0; i < m_links.size(); ++i) {
        if (m_links[i].record == record)
            return int(i);
    }
    m_links.push_back({ record, m_dictionary.records[std::size_t(record)].level, {} });
    return int(m_links.size()) - 1;
}

ValuePlace StatisticsPlan::placeForLevel(const NamedVariable& named, int level)
{
    if (named.level > level)
        return {};
    if (named.record < 0)
        return { ValuePlace::Where::OwnRow, named.column, -1 };
    if (!m_hasCases || m_dictionary.records[std::size_t(named.record)].maximum > 1)
        return {};
    return { ValuePlace::Where::OtherRow, named.column, linkTo(named.record) };
}

ValuePlace StatisticsPlan::placeFor(const NamedVariable& named, int record)
{
    if (named.record == record)
        return { ValuePlace::Where::OwnRow, named.column, -1 };
    return placeForLevel(named, m_dictionary.records[std::size_t(record)].level);
}

std::string StatisticsPlan::keyOf(
    const DataBatch& batch, const DataBatch::Record& row, int from, int to) const
{
    std::string key;
    const DataRecord& record = m_dictionary.records[std::size_t(row.record)];
    for (int c = 0; c < record.idCount; ++c) {
        const int level = m_dictionary.variable(row.record, c).level;
        if (level < from || level > to)
            continue;
        const quint32 cell = row.firstCell + quint32(c);
        const ValueKind kind = batch.states[cell].kind();
        const bool hasText =
            kind == ValueKind::Text || kind == ValueKind::NotANumber || kind == ValueKind::Unfit;
        key += char('0' + int(kind));
        key += hasText ? std::string(batch.textOf(cell)) : std::to_string(batch.numbers[cell]);
        key += '\0';
    }
    return key;
}

void StatisticsPlan::seeCase(const DataBatch& batch, std::size_t first, std::size_t end)
{
    for (Link& link : m_links)
        link.cells.clear();
    for (std::size_t r = first; r < end; ++r) {
        const DataBatch::Record& row = batch.records[r];
        for (Link& link : m_links) {
            if (link.record == row.record)
                link.cells.emplace(keyOf(batch, row, 2, link.level), row.firstCell);
        }
    }
}

quint32 StatisticsPlan::cellOf(
    const ValuePlace& place, const DataBatch& batch, const DataBatch::Record& row) const
{
    if (place.where == ValuePlace::Where::Nowhere)
        return NoCell;
    if (place.where == ValuePlace::Where::OwnRow)
        return row.firstCell + quint32(place.column);
    const Link& link = m_links[std::size_t(place.link)];
    const auto found = link.cells.find(keyOf(batch, row, 2, link.level));
    return found == link.cells.end() ? NoCell : found->second + quint32(place.column);
}

} // namespace tessel
