#pragma once

#include <tessel_data/DataBatch.h>
#include <tessel_data/DataDictionary.h>

#include <array>

namespace tessel {

// Which code of one value set a value of a variable is, by its place; rest() where it is none.
class CodePlaces {
public:
    CodePlaces(const DataDictionary& dictionary, int valueSet, const DataVariable& variable);

    int rest() const
    {
        return m_rest;
    }
    int of(qint64 number) const
    {
        return placeOf(m_codes.find(number));
    }
    int of(double number) const
    {
        return placeOf(m_codes.find(number));
    }
    int of(std::string_view text) const
    {
        return placeOf(m_codes.find(text));
    }
    // Of a blank that means special.
    int ofBlank(Special special) const;
    // Of a kind of missing values, 'a' to 'z'.
    int ofKind(char letter) const
    {
        return m_kinds[std::size_t(letter - 'a')];
    }
    // Of any value of a batch.
    int of(const DataBatch& batch, quint32 cell) const;

private:
    int placeOf(const CodeTable::Match& match) const
    {
        return match.isCode ? match.entry : m_rest;
    }

    static constexpr std::size_t Letters = 26;

    CodeTable m_codes;
    int m_rest;
    std::array<int, Letters> m_kinds;
};

} // namespace tessel
