#pragma once

#include <QString>
#include <QtGlobal>

#include <charconv>
#include <cstring>
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

    // A spreadsheet would run it; some take the wide forms of the signs for the signs, and pass
    // over a line end.
    static bool isFormula(std::string_view text);

    // A text as it stands in a cell.
    std::string cellOf(std::string_view text) const;

    // Cells of a row in their order, then endRow(). A comma stands behind each until the row ends.
    void addNothing()
    {
        *room(1) = ',';
        ++m_size;
    }
    void addNumber(qint64 number)
    {
        char* const at = room(MostOfNumber);
        if (quint64(number) < 10) { // nearly every code is one digit
            at[0] = char('0' + number);
            at[1] = ',';
            m_size += 2;
            return;
        }
        endNumber(at, std::to_chars(at, at + MostOfNumber, number).ptr);
    }
    void addNumber(qint64 number, int decimals)
    {
        if (decimals == 0)
            addNumber(number);
        else
            addScaled(number, decimals);
    }
    void addReal(double number);
    void addText(std::string_view text);
    // What cellOf() made.
    void addCell(std::string_view cell)
    {
        std::memcpy(room(cell.size() + 1), cell.data(), cell.size());
        m_size += cell.size();
        m_buffer[m_size++] = ',';
    }
    void endRow();
    void flush();

    // Of the file so far.
    qint64 size() const
    {
        return m_written + qint64(m_size);
    }

private:
    static constexpr std::size_t MostOfNumber = 48; // bytes, with the comma

    // For so many bytes at the end.
    char* room(std::size_t bytes)
    {
        if (m_size + bytes > m_buffer.size())
            grow(bytes);
        return &m_buffer[m_size];
    }
    void endNumber(const char* begin, char* end)
    {
        *end = ',';
        m_size += std::size_t(end - begin) + 1;
    }
    void addScaled(qint64 number, int decimals);
    void grow(std::size_t bytes);
    bool isGuarded(std::string_view text) const;

    int m_descriptor;
    QString m_path;
    bool m_forSpreadsheet;
    qint64 m_written = 0;
    std::size_t m_size = 0; // of what waits in the buffer
    std::size_t m_rowStart = 0; // in the buffer, which holds whole rows
    std::string m_buffer;
};

} // namespace tessel
