#include <tessel_data/LineReader_p.h>

#include <algorithm>
#include <cstring>

namespace tessel {

LineReader::LineReader(Read read, qint64 longestLine)
    : m_read(std::move(read))
    , m_longestLine(longestLine)
    , m_buffer(std::size_t(BlockSize))
{
}

std::string_view LineReader::head()
{
    if (!m_hasBegun)
        begin();
    return { m_buffer.data(), std::size_t(m_end) };
}

bool LineReader::next(Line& line)
{
    if (!m_hasBegun)
        begin();
    line.isEndless = false;
    qint64 searched = m_begin;
    for (;;) {
        const void* found = searched == m_end ? nullptr
                                              : std::memchr(&m_buffer[std::size_t(searched)],
                                                  m_lineEnd, std::size_t(m_end - searched));
        if (found) {
            take(line, static_cast<const char*>(found) - m_buffer.data(), true);
            return true;
        }
        if (m_end - m_begin > m_longestLine) {
            takeFirstPart(line);
            return true;
        }
        searched = m_end - m_begin;
        const bool hasMore = fill(); // moves what is there to the front
        if (!hasMore && m_begin == m_end)
            return false;
        if (!hasMore) {
            take(line, m_end, false);
            return true;
        }
    }
}

// A byte-order mark is passed over; without any LF in the first block CR ends the lines.
void LineReader::begin()
{
    m_hasBegun = true;
    while (m_end < BlockSize && fill()) { }
    m_hasMark = m_end >= 3 && std::memcmp(m_buffer.data(), "\xEF\xBB\xBF", 3) == 0;
    m_begin = m_hasMark ? 3 : 0;
    const bool hasLf = m_end > 0 && std::memchr(m_buffer.data(), '\n', std::size_t(m_end));
    const bool hasCr = m_end > 0 && std::memchr(m_buffer.data(), '\r', std::size_t(m_end));
    if (hasCr && !hasLf
        && (m_buffer[std::size_t(m_end) - 1] != '\r'
            || std::memchr(m_buffer.data(), '\r', std::size_t(m_end) - 1)))
        m_lineEnd = '\r';
}

// Reads on behind what was not taken; false at the end.
bool LineReader::fill()
{
    if (m_isAtEnd)
        return false;
    if (m_begin > 0) {
        std::memmove(
            m_buffer.data(), &m_buffer[std::size_t(m_begin)], std::size_t(m_end - m_begin));
        m_end -= m_begin;
        m_begin = 0;
    }
    if (m_end == qint64(m_buffer.size()))
        m_buffer.resize(std::min(m_buffer.size() * 2, std::size_t(m_longestLine + BlockSize)));
    const qint64 size = m_read(&m_buffer[std::size_t(m_end)], qint64(m_buffer.size()) - m_end);
    m_isAtEnd = size == 0;
    m_end += size;
    m_bytesRead += size;
    return !m_isAtEnd;
}

// Keeps the first part of an endless line and passes over the rest.
void LineReader::takeFirstPart(Line& line)
{
    const char* const first = m_buffer.data() + m_begin;
    m_firstPart.assign(first, first + m_longestLine);
    line.text = { m_firstPart.data(), m_firstPart.size() };
    line.isEndless = true;
    m_begin += m_longestLine;
    do {
        const char* const rest = m_buffer.data() + m_begin;
        const void* found = std::memchr(rest, m_lineEnd, std::size_t(m_end - m_begin));
        if (found) {
            m_begin = static_cast<const char*>(found) - m_buffer.data() + 1;
            ++(m_lineEnd == '\r' ? m_crLines : m_lfLines);
            return;
        }
        m_begin = m_end;
    } while (fill());
}

void LineReader::take(Line& line, qint64 end, bool isEnded)
{
    const char* const first = m_buffer.data() + m_begin;
    qint64 size = end - m_begin;
    m_begin = end + (isEnded ? 1 : 0);
    const bool hasCr = m_lineEnd == '\n' && size > 0 && first[size - 1] == '\r';
    size -= hasCr ? 1 : 0;
    if (isEnded && m_lineEnd == '\r')
        ++m_crLines;
    else if (isEnded)
        ++(hasCr ? m_crlfLines : m_lfLines);
    line.text = { first, std::size_t(size) };
    if (size > m_longestLine) {
        line.text = line.text.substr(0, std::size_t(m_longestLine));
        line.isEndless = true;
    }
}

} // namespace tessel
