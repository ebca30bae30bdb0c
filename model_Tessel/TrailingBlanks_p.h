#pragma once

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

inline std::string_view trailingBlanksCut(std::string_view text)
{
    return text.substr(0, sizeWithoutTrailingBlanks(text));
}
