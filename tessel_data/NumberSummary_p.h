#pragma once

#include <tessel_data/NumberHistogram_p.h>
#include <tessel_data/QuantileSketch_p.h>

namespace tessel {

// Mean and squares of portions of numbers, put together without loss (Chan).
class MomentSum {
public:
    void add(const std::vector<QuantileSketch::Point>& points);
    std::optional<double> mean() const;
    std::optional<double> deviation() const;

private:
    double m_weight = 0;
    double m_mean = 0;
    double m_squares = 0; // of the distances from the mean
};

// Sums up portions of the numbers of a variable.
class NumberSummary {
public:
    // One end of the numbers, and how many have it.
    struct End {
        qint64 key = 0;
        double number = 0;
        qint64 count = 0;
    };

    NumberSummary(double finest, std::size_t pointLimit);

    // Numbers in order.
    void add(const std::vector<CountedNumber>& numbers);

    bool isEmpty() const
    {
        return m_lowest.count == 0;
    }
    const End& lowest() const
    {
        return m_lowest;
    }
    const End& highest() const
    {
        return m_highest;
    }
    StatisticsMoments moments() const
    {
        return momentsOf(m_sum, m_sketch);
    }
    StatisticsMoments weightedMoments() const
    {
        return momentsOf(m_weightedSum, m_weightedSketch);
    }
    std::vector<StatisticsBin> histogram(bool isWeighted) const
    {
        return m_histogram.bins(isWeighted);
    }
    std::size_t pointCount() const
    {
        return m_sketch.pointCount() + m_weightedSketch.pointCount();
    }

private:
    static StatisticsMoments momentsOf(const MomentSum& sum, const QuantileSketch& sketch);

    End m_lowest;
    End m_highest;
    MomentSum m_sum;
    MomentSum m_weightedSum;
    QuantileSketch m_sketch;
    QuantileSketch m_weightedSketch;
    NumberHistogram m_histogram;
};

} // namespace tessel
