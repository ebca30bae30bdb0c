#pragma once

#include <tessel_data/Tally_p.h>

#include <cstring>
#include <unordered_map>
#include <vector>

namespace tessel {

// A number, how often it came and what it weighs.
struct CountedNumber {
    double number = 0;
    qint64 key = 0; // the scaled number, or the bits of a double
    Tally tally;
};

// How many different numbers may be kept.
struct NumberRoom {
    std::size_t distinct = 50'000; // of a variable
    std::size_t left = 2'000'000; // of all variables together
};

// Different numbers of a variable, as many as there is room for.
class NumberTable {
public:
    // decimals: of exact numbers; below 0: doubles.
    explicit NumberTable(int decimals);

    // False, and not added: the table is to be emptied first.
    bool add(qint64 number, double weight, NumberRoom& room)
    {
        return quint64(number) < SmallNumbers ? addSmall(std::size_t(number), weight)
                                              : addLarge(number, weight, room);
    }
    bool add(double number, double weight, NumberRoom& room);
    // All that is there, in order; the table is empty then.
    std::vector<CountedNumber> take(NumberRoom& room);
    std::size_t size() const
    {
        return m_large.size();
    }

private:
    static constexpr quint64 SmallNumbers = 256; // most codes are below
    static constexpr std::size_t Fewest = 256; // for which there is always room

    bool addSmall(std::size_t number, double weight)
    {
        if (number >= m_small.size())
            m_small.resize(number + 1);
        m_small[number].add(weight);
        return true;
    }
    bool addLarge(qint64 key, double weight, NumberRoom& room);
    double numberOf(qint64 key) const;

    bool m_isReal;
    double m_scale;
    std::vector<Tally> m_small; // of whole numbers
    std::unordered_map<qint64, Tally> m_large; // by key
};

} // namespace tessel
