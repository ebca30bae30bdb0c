#pragma once

#include <tessel_data/DataDictionary.h>
#include <tessel_data/DataSource.h>
#include <tessel_data/LineText_p.h>

#include <string>
#include <string_view>
#include <vector>

namespace tessel {

// Compares the key of a case with its identification items, which repeat it.
class CSProDbKey {
public:
    // Keys are those of the dictionary in the file; another one may cut them elsewhere.
    CSProDbKey(const DataDictionary& dictionary, const DataDictionary& ofFile);

    // The cells are those of a record, or of its identification items of level 1.
    bool differs(std::string_view key, const DataBatch& batch, quint32 firstCell);
    // As "NAME=value NAME=value".
    std::string idsText(const DataBatch& batch, quint32 firstCell) const;

private:
    struct Part {
        std::string name;
        int start;
        int width;
        int decimals;
        bool isNumber;

        friend bool operator==(const Part& first, const Part& second)
        {
            return first.name == second.name && first.width == second.width
                && first.decimals == second.decimals && first.isNumber == second.isNumber;
        }
    };

    static std::vector<Part> partsOf(const DataDictionary& dictionary);
    static bool isSame(
        const Part& part, std::string_view text, const DataBatch& batch, quint32 cell);

    std::vector<Part> m_parts;
    bool m_isComparable;
    LineText m_key;
};

} // namespace tessel
