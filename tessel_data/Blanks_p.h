#pragma once

#include <string_view>

namespace tessel {

// A text without the blanks at its end, which are padding.
inline std::string_view withoutTrailingBlanks(std::string_view text)
{
    std::size_t size = text.size();
    while (size > 0 && text[size - 1] == ' ')
        --size;
    return text.substr(0, size);
}

} // namespace tessel
