#pragma once

#include <QtAlgorithms>
#include <QtEndian>

#include <string_view>

// The rule of withoutTrailingBlanks(), for texts, for bytes and for views of them.
template <typename Text> auto sizeWithoutTrailingBlanks(const Text& text)
{
    const typename Text::value_type blank(0x20);
    auto size = text.size();
    while (size > 0 && text[size - 1] == blank)
        --size;
    return size;
}

template <typename Text> Text trailingBlanksCut(const Text& text)
{
    return text.left(sizeWithoutTrailingBlanks(text));
}

// Eight bytes at a time, as columns of texts are wide.
inline std::size_t sizeWithoutTrailingBlanks(std::string_view text)
{
    constexpr std::size_t wordSize = sizeof(quint64);
    constexpr quint64 blanks = 0x2020202020202020;
    constexpr uint byteBits = 8;
    std::size_t size = text.size();
    for (; size >= wordSize; size -= wordSize) {
        const quint64 inked = qFromLittleEndian<quint64>(text.data() + size - wordSize) ^ blanks;
        if (inked != 0)
            return size - qCountLeadingZeroBits(inked) / byteBits;
    }
    while (size > 0 && text[size - 1] == ' ')
        --size;
    return size;
}

inline std::string_view trailingBlanksCut(std::string_view text)
{
    return text.substr(0, sizeWithoutTrailingBlanks(text));
}
