#pragma once

#include <tessel_data/NumberTable_p.h>

#include <vector>

namespace tessel {

/*
 * Bars over numbers of an unknown range, between 5 and 20 of them as soon as there are as many
 * different numbers: where the range grows, bars become twice as wide, each of two whole ones.
 */
class NumberHistogram {
public:
    // finest: the least that two numbers differ by; 0: not known.
    explicit NumberHistogram(double finest)
        : m_finest(finest)
    {
    }

    // Numbers in order.
    void add(const std::vector<CountedNumber>& numbers);
    std::vector<StatisticsBin> bins(bool isWeighted) const;

private:
    void begin(const std::vector<CountedNumber>& numbers);
    void widen(double lowest, double highest);
    void doubleWidth();
    qint64 indexOf(double number) const;
    double edge(qint64 index) const;
    double width() const;

    double m_finest;
    double m_digits = 0; // of the width: 1, 2, 5 or twice, four times, ... that; 0: no bars yet
    int m_exponent = 0; // of ten, of the width
    qint64 m_first = 0; // index of the first bar, which begins at so many widths
    std::vector<Tally> m_bars;
    bool m_isLost = false; // numbers came that no bars fit
};

} // namespace tessel
