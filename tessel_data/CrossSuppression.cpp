#include <tessel_data/CrossSuppression_p.h>

#include <algorithm>
#include <limits>
#include <queue>

namespace tessel {

// Edges that are in no circle, by walking the graph in depth once (Tarjan).
class CrossSuppression::Circles {
public:
    explicit Circles(const CrossSuppression& table)
        : m_table(table)
        , m_order(std::size_t(table.m_lines) + std::size_t(table.m_columns))
    {
        for (int node = 0; node < int(m_order.size()); ++node) {
            if (m_order[std::size_t(node)] == 0)
                walk(node, -1);
        }
    }

    std::vector<Place> cutEdges; // that are in none

private:
    bool isEdge(int node, int other) const
    {
        return node < m_table.m_lines ? m_table.at(node, other - m_table.m_lines).isHidden
                                      : m_table.at(other, node - m_table.m_lines).isHidden;
    }

    int walk(int node, int from)
    {
        const bool isLine = node < m_table.m_lines;
        const int first = isLine ? m_table.m_lines : 0;
        const int end = isLine ? m_table.m_lines + m_table.m_columns : m_table.m_lines;
        int lowest = m_order[std::size_t(node)] = ++m_count;
        for (int other = first; other < end; ++other) {
            if (other == from || !isEdge(node, other))
                continue;
            const int order = m_order[std::size_t(other)];
            const int reached = order > 0 ? order : walk(other, node);
            if (order == 0 && reached > m_order[std::size_t(node)])
                cutEdges.push_back(isLine ? Place { node, other - m_table.m_lines }
                                          : Place { other, node - m_table.m_lines });
            lowest = std::min(lowest, reached);
        }
        return lowest;
    }

    const CrossSuppression& m_table;
    std::vector<int> m_order; // in which nodes were met; 0: not yet
    int m_count = 0;
};

CrossSuppression::CrossSuppression(const CrossTable& table, qint64 fewest)
    : m_fewest(fewest)
    , m_lines(table.lineCount + 1)
    , m_columns(table.columnCount + 1)
    , m_cells(std::size_t(m_lines) * std::size_t(m_columns))
{
    for (int line = 0; line < table.lineCount; ++line) {
        for (int column = 0; column < table.columnCount; ++column)
            at(line, column).count = table.cell(line, column).count().value_or(0);
        at(line, m_columns - 1).count = table.lineTotals[std::size_t(line)].count().value_or(0);
    }
    for (int column = 0; column < table.columnCount; ++column)
        at(m_lines - 1, column).count = table.columnTotals[std::size_t(column)].count().value_or(0);
    at(m_lines - 1, m_columns - 1).count = table.total.count().value_or(0);
}

void CrossSuppression::hideLineTotal(int line)
{
    at(line, m_columns - 1).isHidden = at(line, m_columns - 1).count > 0;
}

void CrossSuppression::hideColumnTotal(int column)
{
    at(m_lines - 1, column).isHidden = at(m_lines - 1, column).count > 0;
}

void CrossSuppression::hideSmall()
{
    for (Cell& cell : m_cells)
        cell.isHidden = cell.isHidden || (cell.count > 0 && cell.count < m_fewest);
}

void CrossSuppression::hideAll()
{
    for (Cell& cell : m_cells)
        cell.isHidden = true;
}

std::optional<CrossSuppression::Place> CrossSuppression::weakCell() const
{
    const std::vector<Place> weak = Circles(*this).cutEdges;
    return weak.empty() ? std::nullopt : std::optional<Place>(weak.front());
}

// Hidden cells that are few all together may each be one.
bool CrossSuppression::isWeak(int line, int column, int lineStep, int columnStep) const
{
    qint64 sum = 0;
    while (line < m_lines - lineStep && column < m_columns - columnStep) {
        sum += at(line, column).isHidden ? at(line, column).count : 0;
        line += lineStep;
        column += columnStep;
    }
    return sum > 0 && sum < m_fewest && !at(line, column).isHidden;
}

std::optional<CrossSuppression::Place> CrossSuppression::weakLine() const
{
    for (int line = 0; line + 1 < m_lines; ++line) {
        if (isWeak(line, 0, 0, 1))
            return Place { line, -1 };
    }
    for (int column = 0; column + 1 < m_columns; ++column) {
        if (isWeak(0, column, 1, 0))
            return Place { -1, column };
    }
    return std::nullopt;
}

bool CrossSuppression::mayHide(int line, int column) const
{
    const bool isLineTotal = column == m_columns - 1;
    const bool isColumnTotal = line == m_lines - 1;
    return at(line, column).count > 0 && !(isLineTotal && isColumnTotal)
        && !(isLineTotal && m_keepsLineTotals) && !(isColumnTotal && m_keepsColumnTotals);
}

// Rather any number of cells than a total; below 0: it cannot be hidden.
qint64 CrossSuppression::costOf(int line, int column) const
{
    if (at(line, column).isHidden)
        return 0;
    if (!mayHide(line, column))
        return -1;
    const bool isTotal = line == m_lines - 1 || column == m_columns - 1;
    return at(line, column).count + (isTotal ? at(m_lines - 1, m_columns - 1).count : 0);
}

// Dijkstra's.
std::vector<CrossSuppression::Place> CrossSuppression::cheapestWay(const Place& place) const
{
    constexpr qint64 far = std::numeric_limits<qint64>::max();
    const std::size_t lines = std::size_t(m_lines);
    std::vector<qint64> costs(lines + std::size_t(m_columns), far);
    std::vector<std::size_t> from(costs.size());
    using Step = std::pair<qint64, std::size_t>;
    std::priority_queue<Step, std::vector<Step>, std::greater<>> next;
    const auto cellBetween = [&](std::size_t one, std::size_t other) {
        return one < lines ? Place { int(one), int(other - lines) }
                           : Place { int(other), int(one - lines) };
    };
    costs[std::size_t(place.line)] = 0;
    next.emplace(0, std::size_t(place.line));
    while (!next.empty()) {
        const auto [cost, node] = next.top();
        next.pop();
        const std::size_t first = node < lines ? lines : 0;
        const std::size_t end = node < lines ? costs.size() : lines;
        for (std::size_t other = first; cost == costs[node] && other < end; ++other) {
            const Place cell = cellBetween(node, other);
            const qint64 step = costOf(cell.line, cell.column);
            const bool isItself = cell.line == place.line && cell.column == place.column;
            if (isItself || step < 0 || cost + step >= costs[other])
                continue;
            costs[other] = cost + step;
            from[other] = node;
            next.emplace(costs[other], other);
        }
    }
    std::vector<Place> way;
    std::size_t node = lines + std::size_t(place.column);
    for (; costs[node] < far && node != std::size_t(place.line); node = from[node])
        way.push_back(cellBetween(from[node], node));
    return way;
}

// False: the cell is in no circle that could be hidden.
bool CrossSuppression::hideCircle(const Place& place)
{
    const std::vector<Place> way = cheapestWay(place);
    for (const Place& cell : way)
        at(cell.line, cell.column).isHidden = true;
    return !way.empty();
}

// The smallest cell of a line or column that can be hidden with a circle; false: there is none.
bool CrossSuppression::hideAnother(const Place& line)
{
    std::vector<Place> cells;
    for (int column = 0; line.line >= 0 && column < m_columns; ++column)
        cells.push_back({ line.line, column });
    for (int one = 0; line.line < 0 && one < m_lines; ++one)
        cells.push_back({ one, line.column });
    const auto isShut = [this](const Place& cell) {
        return at(cell.line, cell.column).isHidden || !mayHide(cell.line, cell.column);
    };
    cells.erase(std::remove_if(cells.begin(), cells.end(), isShut), cells.end());
    std::sort(cells.begin(), cells.end(), [this](const Place& first, const Place& second) {
        return costOf(first.line, first.column) < costOf(second.line, second.column);
    });
    for (const Place& cell : cells) {
        if (!hideCircle(cell))
            continue;
        at(cell.line, cell.column).isHidden = true;
        return true;
    }
    return false;
}

void CrossSuppression::run()
{
    hideSmall();
    if (at(m_lines - 1, m_columns - 1).isHidden)
        return hideAll();
    for (;;) {
        if (const auto cell = weakCell()) {
            if (!hideCircle(*cell))
                return hideAll();
        } else if (const auto line = weakLine()) {
            if (!hideAnother(*line))
                return hideAll();
        } else {
            return;
        }
    }
}

void CrossSuppression::apply(CrossTable& table) const
{
    const auto hide = [&](int line, int column, StatisticsCell& cell) {
        if (at(line, column).isHidden)
            cell.hide();
    };
    for (int line = 0; line < table.lineCount; ++line) {
        for (int column = 0; column < table.columnCount; ++column) {
            hide(line, column,
                table.cells[std::size_t(line) * std::size_t(table.columnCount)
                    + std::size_t(column)]);
        }
        hide(line, m_columns - 1, table.lineTotals[std::size_t(line)]);
    }
    for (int column = 0; column < table.columnCount; ++column)
        hide(m_lines - 1, column, table.columnTotals[std::size_t(column)]);
    hide(m_lines - 1, m_columns - 1, table.total);
}

} // namespace tessel
