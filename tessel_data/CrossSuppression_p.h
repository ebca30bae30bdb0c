#pragma once

#include <tessel_data/StatisticsReport.h>

#include <vector>

namespace tessel {

/*
 * Finds the cells of a cross table that are to be hidden, its totals among them: small ones, and as
 * many others as it takes that none follows from totals.
 *
 * Lines and columns, totals included, are the nodes of a graph, hidden cells its edges. A hidden
 * cell can be worked out exactly when its edge is in no circle, so the cheapest circle is hidden
 * with it: the one with the fewest values in the cells that it takes.
 */
class CrossSuppression {
public:
    CrossSuppression(const CrossTable& table, qint64 fewest);

    // A total that is hidden elsewhere already. Before run().
    void hideLineTotal(int line);
    void hideColumnTotal(int column);
    // Totals of lines, or of columns, are told elsewhere, so that hiding them here protects
    // nothing.
    void keepLineTotals()
    {
        m_keepsLineTotals = true;
    }
    void keepColumnTotals()
    {
        m_keepsColumnTotals = true;
    }
    void run();
    // Hides in the table what was found.
    void apply(CrossTable& table) const;

private:
    struct Cell {
        qint64 count = 0;
        bool isHidden = false;
    };
    struct Place {
        int line;
        int column;
    };
    class Circles;

    Cell& at(int line, int column)
    {
        return m_cells[std::size_t(line) * std::size_t(m_columns) + std::size_t(column)];
    }
    const Cell& at(int line, int column) const
    {
        return m_cells[std::size_t(line) * std::size_t(m_columns) + std::size_t(column)];
    }
    void hideSmall();
    void hideAll();
    // A hidden cell that can be worked out; nothing when there is none.
    std::optional<Place> weakCell() const;
    // A line, or column, whose hidden cells are few all together.
    std::optional<Place> weakLine() const;
    bool isWeak(int line, int column, int lineStep, int columnStep) const;
    bool hideCircle(const Place& place);
    bool hideAnother(const Place& line);
    bool mayHide(int line, int column) const;
    qint64 costOf(int line, int column) const;
    // The cells of the cheapest way from the line of a cell to its column, but for the cell itself.
    std::vector<Place> cheapestWay(const Place& place) const;

    qint64 m_fewest;
    int m_lines; // the totals' included, which is the last
    int m_columns;
    bool m_keepsLineTotals = false;
    bool m_keepsColumnTotals = false;
    std::vector<Cell> m_cells;
};

} // namespace tessel
