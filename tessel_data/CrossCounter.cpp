#include <tessel_data/CrossCounter_p.h>

#include <tessel_data/DataError.h>

#include <algorithm>

namespace tessel {

namespace {

constexpr int MostCells = 5000;

[[noreturn]] void fail(const QString& text)
{
    throw DataError(DataError::Code::UnfitSelection, QString(), text);
}

QString nameOf(const QString& first, const QString& second)
{
    return QStringLiteral("cross table of %1 and %2").arg(first, second);
}

} // namespace

CrossCounter::Side CrossCounter::sideOf(
    const DataDictionary& dictionary, const StatisticsPlan& plan, const QString& name)
{
    const NamedVariable named = plan.find(name, QStringLiteral("cross table"));
    const DataVariable& variable = dictionary.variables[std::size_t(named.variable)];
    if (variable.valueSets.isEmpty() || variable.type == DataVariable::Type::Binary) {
        fail(QStringLiteral("cross table: '%1' has no value set, whose codes could be crossed")
                 .arg(name));
    }
    const int set = variable.valueSets.first();
    return { named, set, CodePlaces(dictionary, set, variable), {} };
}

CrossCounter::CrossCounter(
    const DataDictionary& dictionary, StatisticsPlan& plan, const QPair<QString, QString>& names)
    : m_plan(plan)
    , m_name(nameOf(names.first, names.second))
    , m_first(sideOf(dictionary, plan, names.first))
    , m_second(sideOf(dictionary, plan, names.second))
    , m_columns(std::size_t(m_second.codes.rest()) + 1)
{
    const std::size_t lines = std::size_t(m_first.codes.rest()) + 1;
    if (lines > MostCells || m_columns > MostCells || lines * m_columns > MostCells) {
        fail(QStringLiteral("%1: %2 and %3 codes make a table of more than %4 cells")
                 .arg(m_name)
                 .arg(m_first.codes.rest())
                 .arg(m_second.codes.rest())
                 .arg(MostCells));
    }
    m_cells.resize(lines * m_columns);
    choose(dictionary, plan);
}

// The rows are those of the variable that sees the other one.
void CrossCounter::choose(const DataDictionary& dictionary, StatisticsPlan& plan)
{
    using Where = ValuePlace::Where;
    m_level = std::max(m_first.named.level, m_second.named.level);
    if (m_first.named.record < 0 && m_second.named.record < 0) {
        m_first.place = plan.placeForLevel(m_first.named, m_level);
        m_second.place = plan.placeForLevel(m_second.named, m_level);
        return;
    }
    for (const int record : { m_second.named.record, m_first.named.record }) {
        if (record < 0)
            continue;
        m_record = record;
        m_first.place = plan.placeFor(m_first.named, record);
        m_second.place = plan.placeFor(m_second.named, record);
        if (m_first.place.where != Where::Nowhere && m_second.place.where != Where::Nowhere)
            return;
    }
    const auto recordName = [&](const Side& side) {
        return dictionary.records[std::size_t(std::max(0, side.named.record))].name;
    };
    fail(QStringLiteral("%1: neither %2 nor %3 is a record that there is once for the rows of the "
                        "other")
             .arg(m_name, recordName(m_first), recordName(m_second)));
}

int CrossCounter::placeOf(
    const Side& side, const DataBatch& batch, const DataBatch::Record& row) const
{
    const quint32 cell = m_plan.cellOf(side.place, batch, row);
    return cell == StatisticsPlan::NoCell ? side.codes.rest() : side.codes.of(batch, cell);
}

void CrossCounter::add(const DataBatch& batch, const DataBatch::Record& row, double weight)
{
    const auto line = std::size_t(placeOf(m_first, batch, row));
    const auto column = std::size_t(placeOf(m_second, batch, row));
    m_cells[line * m_columns + column].add(weight);
}

Tally CrossCounter::sumOf(std::size_t first, std::size_t step, int count) const
{
    Tally sum;
    for (int i = 0; i < count; ++i)
        sum.add(m_cells[first + std::size_t(i) * step]);
    return sum;
}

CrossTable CrossCounter::table(bool isWeighted) const
{
    CrossTable table;
    table.first = m_first.named.variable;
    table.second = m_second.named.variable;
    table.firstValueSet = m_first.valueSet;
    table.secondValueSet = m_second.valueSet;
    table.record = m_record;
    table.isWeighted = isWeighted;
    table.columnCount = int(m_columns);
    table.lineCount = int(m_cells.size() / m_columns);
    for (const Tally& tally : m_cells)
        table.cells.push_back(tally.cell(isWeighted));
    for (int line = 0; line < table.lineCount; ++line) {
        const Tally sum = sumOf(std::size_t(line) * m_columns, 1, table.columnCount);
        table.lineTotals.push_back(sum.cell(isWeighted));
    }
    for (int column = 0; column < table.columnCount; ++column) {
        const Tally sum = sumOf(std::size_t(column), m_columns, table.lineCount);
        table.columnTotals.push_back(sum.cell(isWeighted));
    }
    table.total = sumOf(0, 1, int(m_cells.size())).cell(isWeighted);
    return table;
}

} // namespace tessel
