#include <tessel_data/CsvBytes_p.h>

#include <tessel_data/DataValue.h>
#include <tessel_data/WriteBytes_p.h>
#include <tessel_data/Writeback_p.h>

#include <algorithm>
#include <cmath>

namespace tessel {

namespace {

constexpr std::size_t Piece = 1 << 20; // bytes

// Digits with at most one point among them, behind a minus.
bool isNegativeNumber(std::string_view text)
{
    if (text.substr(0, 1) != "-")
        return false;
    text.remove_prefix(1);
    const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    return std::count(text.begin(), text.end(), '.') <= 1
        && std::any_of(text.begin(), text.end(), isDigit)
        && std::all_of(text.begin(), text.end(),
            [&](char character) { return isDigit(character) || character == '.'; });
}

bool beginsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

bool needsQuotes(std::string_view text)
{
    bool isPlain = true; // all of it is looked at, many characters at once
    for (const char character : text)
        isPlain &= character != ',' && character != '"' && character != '\n' && character != '\r';
    return !isPlain;
}

} // namespace

CsvBytes::CsvBytes(int descriptor, const QString& path, bool forSpreadsheet)
    : m_descriptor(descriptor)
    , m_path(path)
    , m_forSpreadsheet(forSpreadsheet)
    , m_buffer(Piece + Piece / 4, '\0')
{
    if (forSpreadsheet) {
        constexpr std::string_view mark = "\xEF\xBB\xBF";
        std::memcpy(room(mark.size()), mark.data(), mark.size());
        m_rowStart = m_size = mark.size();
    }
}

void CsvBytes::grow(std::size_t bytes)
{
    m_buffer.resize(2 * m_buffer.size() + bytes);
}

bool CsvBytes::isFormula(std::string_view text)
{
    if (text.empty() || isNegativeNumber(text))
        return false;
    if (std::string_view("=+-@\t\r\n").find(text[0]) != std::string_view::npos)
        return true;
    return beginsWith(text, u8"\uFF1D") || beginsWith(text, u8"\uFF0B")
        || beginsWith(text, u8"\uFF0D") || beginsWith(text, u8"\uFF20");
}

bool CsvBytes::isGuarded(std::string_view text) const
{
    return m_forSpreadsheet && isFormula(text);
}

std::string CsvBytes::cellOf(std::string_view text) const
{
    std::string cell;
    const bool isQuoted = needsQuotes(text);
    if (isQuoted)
        cell += '"';
    if (isGuarded(text))
        cell += '\'';
    for (const char character : text) {
        if (character == '"')
            cell += '"';
        cell += character;
    }
    if (isQuoted)
        cell += '"';
    return cell;
}

void CsvBytes::addText(std::string_view text)
{
    if (needsQuotes(text) || isGuarded(text))
        addCell(cellOf(text));
    else
        addCell(text);
}

void CsvBytes::addScaled(qint64 number, int decimals)
{
    char* const begin = room(MostOfNumber);
    char* at = begin;
    quint64 size = quint64(number);
    if (number < 0) {
        *at++ = '-';
        size = -size;
    }
    const auto power = quint64(powerOfTen(decimals));
    at = std::to_chars(at, begin + MostOfNumber, size / power).ptr;
    *at = '.';
    quint64 part = size % power;
    for (char* digit = at + decimals; digit > at; --digit, part /= 10)
        *digit = char('0' + part % 10);
    endNumber(begin, at + decimals + 1);
}

// Whole ones without an exponent as far as a double tells them apart; infinite ones as descriptions
// of tables have them.
void CsvBytes::addReal(double number)
{
    constexpr double mostWhole = 1e17;
    if (std::isinf(number))
        return addCell(number < 0 ? "-INF" : "INF");
    if (std::floor(number) == number && std::abs(number) < mostWhole)
        return addNumber(qint64(number));
    char* const at = room(MostOfNumber);
    endNumber(at, std::to_chars(at, at + MostOfNumber, number).ptr);
}

// A line of one empty cell would be none to a reader.
void CsvBytes::endRow()
{
    const bool isEmpty = m_size == m_rowStart + 1;
    --m_size; // the last comma
    const std::string_view end = isEmpty ? "\"\"\r\n" : "\r\n";
    std::memcpy(room(end.size()), end.data(), end.size());
    m_size += end.size();
    m_rowStart = m_size;
    if (m_size >= Piece)
        flush();
}

void CsvBytes::flush()
{
    writeBytes(m_descriptor, m_buffer.data(), m_size, m_path);
    beginWriteback(m_descriptor, qint64(m_size));
    m_written += qint64(m_size);
    m_rowStart = m_size = 0;
}

} // namespace tessel
