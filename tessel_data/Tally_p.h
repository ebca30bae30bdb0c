#pragma once

#include <tessel_data/StatisticsReport.h>

#include <cmath>

namespace tessel {

// A sum that loses no digits however many terms it has (Neumaier).
class ExactSum {
public:
    void add(double term)
    {
        const double sum = m_sum + term;
        m_rest += std::abs(m_sum) >= std::abs(term) ? (m_sum - sum) + term : (term - sum) + m_sum;
        m_sum = sum;
    }
    void add(const ExactSum& other)
    {
        add(other.m_sum);
        m_rest += other.m_rest;
    }
    double value() const
    {
        return std::isfinite(m_sum) ? m_sum + m_rest : m_sum;
    }

private:
    double m_sum = 0;
    double m_rest = 0;
};

// Counts, and sums up weights.
struct Tally {
    qint64 count = 0;
    ExactSum weight;

    void add(double rowWeight)
    {
        ++count;
        if (rowWeight != 0)
            weight.add(rowWeight);
    }
    void add(const Tally& other)
    {
        count += other.count;
        weight.add(other.weight);
    }
    StatisticsCell cell(bool isWeighted) const
    {
        return { count, isWeighted ? weight.value() : double(count) };
    }
};

} // namespace tessel
