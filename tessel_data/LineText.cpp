#include <tessel_data/LineText_p.h>

#include <model_Tessel/TextEncoding.h>

#include <QTextCodec>

namespace tessel {

namespace {

// What each byte is before UTF-8; those without a character are control characters.
QString charactersBeforeUtf8()
{
    QByteArray bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += char(byte);
    return codecBeforeUtf8()->toUnicode(bytes);
}

void appendUtf8(std::string& text, char16_t character)
{
    if (character < 0x80) {
        text += char(character);
    } else if (character < 0x800) {
        text += char(0xC0 | (character >> 6));
        text += char(0x80 | (character & 0x3F));
    } else {
        text += char(0xE0 | (character >> 12));
        text += char(0x80 | ((character >> 6) & 0x3F));
        text += char(0x80 | (character & 0x3F));
    }
}

bool isFollower(uchar byte)
{
    return (byte & 0xC0) == 0x80;
}

// Bytes of the character that begins at at; 0 when it is none.
int utf8Size(const uchar* at, std::size_t left)
{
    const uchar first = at[0];
    if (first < 0x80)
        return 1;
    if (first < 0xC2 || first > 0xF4)
        return 0;
    const int size = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (left < std::size_t(size))
        return 0;
    for (int i = 1; i < size; ++i) {
        if (!isFollower(at[i]))
            return 0;
    }
    // Neither longer than needed, nor a surrogate, nor beyond the last character.
    const bool isOdd = (first == 0xE0 && at[1] < 0xA0) || (first == 0xED && at[1] > 0x9F)
        || (first == 0xF0 && at[1] < 0x90) || (first == 0xF4 && at[1] > 0x8F);
    return isOdd ? 0 : size;
}

} // namespace

void LineText::set(std::string_view text)
{
    uchar high = 0;
    uchar controls = 0;
    for (const char character : text) { // without a branch, so that it runs many bytes at a time
        const auto byte = uchar(character);
        high = uchar(high | byte);
        controls = uchar(controls | (byte < 0x20 ? 1 : 0));
    }
    m_text = text;
    m_isAscii = high < 0x80;
    m_hasControls = controls != 0;
    m_encoding = LineEncoding::Unknown;
    if (m_isAscii)
        return;
    m_encoding = placeUtf8() ? LineEncoding::Utf8 : LineEncoding::Windows1252;
    if (m_encoding == LineEncoding::Windows1252)
        decodeWindows1252();
}

bool LineText::placeUtf8()
{
    m_places.clear();
    const auto* bytes = reinterpret_cast<const uchar*>(m_text.data());
    std::size_t at = 0;
    while (at < m_text.size()) {
        m_places.push_back(quint32(at));
        const int size = utf8Size(bytes + at, m_text.size() - at);
        if (size == 0)
            return false;
        at += std::size_t(size);
    }
    m_places.push_back(quint32(at));
    return true;
}

void LineText::decodeWindows1252()
{
    static const QString characters = charactersBeforeUtf8();
    m_decoded.clear();
    m_places.clear();
    for (const char character : m_text) {
        const auto byte = uchar(character);
        m_places.push_back(quint32(m_decoded.size()));
        appendUtf8(m_decoded, characters.at(byte).unicode());
    }
    m_places.push_back(quint32(m_decoded.size()));
    m_text = m_decoded;
}

} // namespace tessel
