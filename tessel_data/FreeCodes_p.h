#pragma once

#include <QtGlobal>

#include <algorithm>
#include <limits>

namespace tessel {

/*
 * Finds codes for the kinds of missing values ".a" to ".z" that no value and no label has: the
 * first free one of blocks of so many codes that follow each other, else those beyond all that is
 * taken.
 */
class FreeCodes {
public:
    static constexpr int Count = 26;

    /* first: where the first block begins. */
    explicit FreeCodes(double first = 0)
        : m_first(first)
    {
    }

    void take(double number)
    {
        m_low = std::min(m_low, number);
        m_high = std::max(m_high, number);
        if (number >= m_first && number < m_first + Blocks * Count)
            m_taken |= quint64(1) << int((number - m_first) / Count);
    }

    /* The code of ".a"; not a number when there is none. */
    double first() const;

private:
    static constexpr int Blocks = 64;

    double m_first;
    double m_low = std::numeric_limits<double>::infinity(); // of all that is taken
    double m_high = -std::numeric_limits<double>::infinity();
    quint64 m_taken = 0; // by block
};

} // namespace tessel
