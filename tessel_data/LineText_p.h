#pragma once

#include <tessel_data/DataBatch.h>

#include <string>
#include <string_view>
#include <vector>

namespace tessel {

// One line as UTF-8, with the places of its columns.
class LineText {
public:
    // What stands for a byte that is no UTF-8, U+FFFD.
    static constexpr std::string_view BadByte = "\xEF\xBF\xBD";

    // UTF-8 when it is valid, else Windows-1252. The text has to stay until the next call, unless
    // it is decoded.
    void set(std::string_view text);
    // A line of a file in this encoding. As far as that was not stated, and gives the same columns,
    // a line without any UTF-8 is Windows-1252; else each byte that is no UTF-8 becomes U+FFFD.
    void setLine(std::string_view text, LineEncoding file, bool isStated);

    std::string_view text() const
    {
        return m_text;
    }
    bool isAscii() const
    {
        return m_isAscii;
    }
    // Unknown for ASCII, which is both.
    LineEncoding encoding() const
    {
        return m_encoding;
    }
    // The line by itself speaks for another encoding than that of its file.
    bool isOther() const
    {
        return m_isOther;
    }
    bool hasBadBytes() const
    {
        return m_hasBadBytes;
    }
    bool hasControlCharacters() const
    {
        return m_hasControls;
    }
    int columnCount() const
    {
        return m_isAscii ? int(m_text.size()) : int(m_places.size()) - 1;
    }
    // The columns from first on; fewer where the line ends.
    std::string_view columns(int first, int width) const
    {
        const int count = columnCount();
        if (first >= count)
            return {};
        const int end = width < count - first ? first + width : count;
        if (m_isAscii)
            return m_text.substr(std::size_t(first), std::size_t(end - first));
        const quint32 start = m_places[std::size_t(first)];
        return m_text.substr(start, m_places[std::size_t(end)] - start);
    }

    // The column that the byte at place of the text is in.
    int columnAt(std::size_t place) const;

private:
    // What the bytes of a line are that are not ASCII.
    struct Utf8Shape {
        std::size_t characters = 0;
        std::size_t badBytes = 0;
    };

    void scan(std::string_view text);
    Utf8Shape placeUtf8();
    void decodeWindows1252();
    void replaceBadBytes();

    std::string_view m_text;
    std::string m_decoded;
    std::vector<quint32> m_places; // of each column, and the end; unless all is ASCII
    LineEncoding m_encoding = LineEncoding::Unknown;
    bool m_isAscii = true;
    bool m_hasControls = false;
    bool m_isOther = false;
    bool m_hasBadBytes = false;
};

} // namespace tessel
