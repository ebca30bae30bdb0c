#pragma once

#include <QtGlobal>

#include <string>
#include <string_view>
#include <vector>

namespace tessel {

/*! How the texts of a file are encoded. */
enum class LineEncoding { Unknown, Utf8, Windows1252 };

/*
 * One line as UTF-8, with the places of its columns. A line with other than ASCII characters is
 * UTF-8 when it is valid, else Windows-1252.
 */
class LineText {
public:
    // The text has to stay until the next call, unless it is decoded.
    void set(std::string_view text);

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

private:
    bool placeUtf8();
    void decodeWindows1252();

    std::string_view m_text;
    std::string m_decoded;
    std::vector<quint32> m_places; // of each column, and the end; unless all is ASCII
    LineEncoding m_encoding = LineEncoding::Unknown;
    bool m_isAscii = true;
    bool m_hasControls = false;
};

} // namespace tessel
