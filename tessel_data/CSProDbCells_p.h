#pragma once

#include <tessel_data/CSProDbRun_p.h>
#include <tessel_data/LineText_p.h>

#include <string>
#include <string_view>

namespace tessel {

// Schema 3: the columns of rows as values.
class CSProDbCells {
public:
    explicit CSProDbCells(const CSProDbRun& run);

    // Each row has its own bound of text.
    void beginRow();
    // As UTF-8, until the next text.
    std::string_view textOf(const SqliteQuery& row, int column);
    // The columns from first on that are not null, as "name=number " or "name='text' ".
    std::string filledColumns(const SqliteQuery& row, int first);
    // Fills a cell, and tells in the batch what is odd about it.
    void set(DataBatch& batch, quint32 cell, const DataVariable& variable, const SqliteQuery& row,
        int column);

private:
    void setText(
        DataBatch& batch, quint32 cell, const DataVariable& variable, std::string_view text);
    void setNumber(DataBatch& batch, quint32 cell, const DataVariable& variable,
        const SqliteQuery& row, int column);
    NumberStatus readColumn(const SqliteQuery& row, int column, int decimals, qint64& number) const;
    void tell(DataBatch& batch, LineProblem problem, const DataVariable& variable, TextRef text);

    const CSProDbRun& m_run;
    std::size_t m_rowBytes = 0;
    LineText m_decoded;
};

} // namespace tessel
