#pragma once

// The rule of withoutTrailingBlanks(), for texts and for bytes.
template <typename Text> Text trailingBlanksCut(const Text& text)
{
    const typename Text::value_type blank(0x20);
    int length = text.size();
    while (length > 0 && text.at(length - 1) == blank)
        --length;
    return text.left(length);
}
