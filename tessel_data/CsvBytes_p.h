#pragma once

#include <QString>
#include <QtGlobal>

#include <string>
#include <string_view>

namespace tessel {

/*
 * A CSV file as RFC 4180 has it, written in large pieces: cells in quotes where they need them,
 * lines that end in CR LF. Throws DataError.
 */
class CsvBytes {
public:
    // path is told in errors. For spreadsheets a byte-order mark stands first, and an apostrophe
    // before texts that would run as formulas.
    CsvBytes(int descriptor, const QString& path, bool forSpreadsheet);

    // A text as it stands in a cell.
    std::string cellOf(std::string_view text) const;

    void beginRow()
    {
        m_isFirst = true;
        m_rowStart = m_written + qint64(m_buffer.size());
    }
    void addNothing()
    {
        separate();
    }
    void addNumber(qint64 number, int decimals);
    void addReal(double number);
    void addText(std::string_view text);
    // What cellOf() made.
    void addCell(std::string_view cell)
    {
        separate();
        m_buffer.append(cell);
    }
    void endRow();
    void flush();

    // Of the file so far.
    qint64 size() const
    {
        return m_written + qint64(m_buffer.size());
    }

private:
    void separate()
    {
        if (!m_isFirst)
            m_buffer += ',';
        m_isFirst = false;
    }
    void append(std::string& cell, std::string_view text) const;

    int m_descriptor;
    QString m_path;
    bool m_forSpreadsheet;
    bool m_isFirst = true;
    qint64 m_rowStart = 0;
    qint64 m_written = 0;
    std::string m_buffer;
};

} // namespace tessel
