#pragma once

#include <QtAlgorithms>
#include <QtEndian>

#include <limits>

namespace tessel {

/*
 * The place of a column of at most eight ASCII characters, which are read as one word: digits
 * behind blanks, as nearly every number stands. The first character is in the lowest byte.
 */
class NumberWord {
public:
    enum class Content { Number, Blank, Other };

    // Of a column that is read otherwise.
    NumberWord() = default;
    NumberWord(int start, int width)
    {
        if (width < 1 || width > Size)
            return;
        const int end = start + width;
        m_start = end < Size ? 0 : end - Size;
        m_end = m_start + Size;
        m_shift = CharacterBits * (m_end - end);
        m_kept = ~quint64(0) << (CharacterBits * (Size - width));
    }

    // Other for a line that ends too early, too. The number of a blank is 0.
    Content read(const char* line, int size, qint64& number) const
    {
        if (m_end > size)
            return Content::Other;
        const quint64 word = qFromLittleEndian<quint64>(line + m_start) << m_shift;
        const quint64 inked = (word ^ (Each * ' ')) & m_kept; // with zeros for blanks
        if (inked == 0) {
            number = 0;
            return Content::Blank;
        }
        const uint blanks = qCountTrailingZeroBits(inked) / CharacterBits * CharacterBits;
        const quint64 digits = (inked ^ (Each * (' ' ^ '0'))) >> blanks << blanks;
        if (((digits + Each * AboveNine) | digits) & (Each * HighBit))
            return Content::Other;
        number = numberOf(digits);
        return Content::Number;
    }

private:
    static constexpr int Size = 8;
    static constexpr int CharacterBits = 8;
    static constexpr quint64 Each = 0x0101010101010101;
    static constexpr quint64 HighBit = 0x80;
    static constexpr quint64 AboveNine = 0x76; // brings ten and more into the high bit

    // Neighbours are joined: digits to pairs, pairs to fours, and these to the number.
    static qint64 numberOf(quint64 digits)
    {
        constexpr quint64 pair = 0x00FF00FF00FF00FF;
        constexpr quint64 four = 0x0000FFFF0000FFFF;
        const quint64 pairs = (digits * 10 + (digits >> CharacterBits)) & pair;
        const quint64 fours = (pairs * 100 + (pairs >> (2 * CharacterBits))) & four;
        return qint64(quint32(fours) * quint64(10000) + (fours >> (4 * CharacterBits)));
    }

    int m_start = 0;
    int m_end = std::numeric_limits<int>::max(); // of the word
    int m_shift = 0; // what drops the characters behind the column
    quint64 m_kept = 0; // the bytes of the column
};

} // namespace tessel
