#include <tessel_data/LineText_p.h>

#include <model_Tessel/TextEncoding.h>

#include <QTextCodec>
#include <QtEndian>

#include <algorithm>

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

// Eight bytes at a time; the last ones of a longer line are looked at twice.
void LineText::scan(std::string_view text)
{
    constexpr std::size_t size = sizeof(quint64);
    constexpr quint64 each = 0x0101010101010101;
    constexpr quint64 highBits = each * 0x80;
    quint64 high = 0;
    quint64 low = 0; // its high bits tell bytes below the blank
    const auto look = [&](quint64 word) {
        high |= word;
        low |= (word - each * ' ') & ~word;
    };
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); end - at >= qptrdiff(size); at += size)
        look(qFromUnaligned<quint64>(at));
    if (text.size() >= size) {
        look(qFromUnaligned<quint64>(end - size));
    } else {
        for (const char character : text)
            look(each * uchar(character));
    }
    m_text = text;
    m_isAscii = (high & highBits) == 0;
    m_hasControls = (low & highBits) != 0;
    m_encoding = LineEncoding::Unknown;
    m_isOther = false;
    m_hasBadBytes = false;
}

void LineText::set(std::string_view text)
{
    scan(text);
    if (m_isAscii)
        return;
    m_encoding = LineEncoding::Utf8;
    if (placeUtf8().badBytes > 0)
        decodeWindows1252();
}

void LineText::setLine(std::string_view text, LineEncoding file, bool isStated)
{
    scan(text);
    if (m_isAscii)
        return;
    m_encoding = LineEncoding::Utf8;
    const Utf8Shape shape = placeUtf8();
    const bool isUtf8 = shape.badBytes == 0;
    const bool hasNoUtf8 = shape.characters == 0;
    m_isOther = !isStated
        && ((file == LineEncoding::Windows1252 && isUtf8)
            || (file == LineEncoding::Utf8 && hasNoUtf8));
    if (file == LineEncoding::Windows1252 || (hasNoUtf8 && !isStated))
        decodeWindows1252();
    else if (!isUtf8)
        replaceBadBytes();
}

LineText::Utf8Shape LineText::placeUtf8()
{
    Utf8Shape shape;
    m_places.clear();
    const auto* bytes = reinterpret_cast<const uchar*>(m_text.data());
    std::size_t at = 0;
    while (at < m_text.size()) {
        m_places.push_back(quint32(at));
        const int size = utf8Size(bytes + at, m_text.size() - at);
        shape.badBytes += size == 0 ? 1 : 0;
        shape.characters += size > 1 ? 1 : 0;
        at += std::size_t(std::max(size, 1));
    }
    m_places.push_back(quint32(at));
    return shape;
}

// Their columns stay one byte each.
void LineText::replaceBadBytes()
{
    m_decoded.clear();
    for (std::size_t column = 0; column + 1 < m_places.size(); ++column) {
        const std::size_t start = m_places[column];
        const std::string_view character = m_text.substr(start, m_places[column + 1] - start);
        m_places[column] = quint32(m_decoded.size());
        if (character.size() == 1 && uchar(character.front()) >= 0x80)
            m_decoded += BadByte;
        else
            m_decoded += character;
    }
    m_places.back() = quint32(m_decoded.size());
    m_text = m_decoded;
    m_hasBadBytes = true;
}

int LineText::columnAt(std::size_t place) const
{
    if (m_isAscii)
        return int(place);
    const auto next = std::upper_bound(m_places.begin(), m_places.end(), quint32(place));
    return int(next - m_places.begin()) - 1;
}

void LineText::decodeWindows1252()
{
    m_encoding = LineEncoding::Windows1252;
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
