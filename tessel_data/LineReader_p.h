#pragma once

#include <QtGlobal>

#include <functional>
#include <string_view>
#include <vector>

namespace tessel {

/*
 * Cuts a stream of bytes into lines, whatever ends them: LF, CRLF, both mixed, or CR alone in a
 * stream whose first block has no LF. Memory is bounded: of a longer line the first part is given.
 */
class LineReader {
public:
    // Fills the buffer; the number of bytes, 0 at the end. Throws what went wrong.
    using Read = std::function<qint64(char* buffer, qint64 size)>;

    struct Line {
        std::string_view text; // without its end; valid until the next line
        bool isEndless = false; // only its first part is there
    };

    static constexpr qint64 BlockSize = 262'144;

    explicit LineReader(Read read, qint64 longestLine);

    // The first bytes, up to a block, with their byte-order mark.
    std::string_view head();
    // False at the end.
    bool next(Line& line);

    qint64 bytesRead() const
    {
        return m_bytesRead;
    }
    bool hasMark() const
    {
        return m_hasMark;
    }
    qint64 lfLines() const
    {
        return m_lfLines;
    }
    qint64 crlfLines() const
    {
        return m_crlfLines;
    }
    qint64 crLines() const
    {
        return m_crLines;
    }

private:
    void begin();
    bool fill();
    void takeFirstPart(Line& line);
    void take(Line& line, qint64 end, bool isEnded);

    Read m_read;
    qint64 m_longestLine;
    std::vector<char> m_buffer;
    std::vector<char> m_firstPart; // of the last endless line
    qint64 m_begin = 0; // of what was not taken yet
    qint64 m_end = 0;
    qint64 m_bytesRead = 0;
    qint64 m_lfLines = 0;
    qint64 m_crlfLines = 0;
    qint64 m_crLines = 0;
    char m_lineEnd = '\n';
    bool m_hasBegun = false;
    bool m_isAtEnd = false;
    bool m_hasMark = false;
};

} // namespace tessel
