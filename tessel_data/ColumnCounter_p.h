#pragma once

#include <tessel_data/CheckReport.h>
#include <tessel_data/DataDictionary.h>
#include <tessel_data/FrequentCodes_p.h>

#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace tessel {

// Counts different 64-bit values up to a limit.
class DistinctCounter {
public:
    void add(quint64 value, std::size_t limit)
    {
        if (value < SmallValues)
            m_small[value / 64] |= quint64(1) << (value % 64);
        else if (!m_isFull && value != m_last)
            addLarge(value, limit);
    }
    qint64 count() const;
    bool isFull() const
    {
        return m_isFull;
    }

private:
    static constexpr quint64 SmallValues = 512; // most codes are below

    void addLarge(quint64 value, std::size_t limit);
    void place(quint64 value);

    quint64 m_small[SmallValues / 64] = {};
    quint64 m_last = 0; // values come in stretches
    std::vector<quint64> m_slots; // 0: free; none of the values here is small
    std::size_t m_count = 0;
    bool m_isFull = false;
};

// Sums up one column.
class ColumnCounter {
public:
    static constexpr ValueState PlainNumber { ValueKind::Number };

    struct Limits {
        std::size_t distinct = 1000;
        std::size_t outsideCodes = 1000; // of one column
        std::size_t outsideBytes = 8'388'608; // left for those of all columns
    };

    // Columns of a value; what its texts may take is planned by it.
    void setWidth(int width)
    {
        m_width = std::size_t(width);
    }
    void addNumber(qint64 number, const Limits& limits)
    {
        ++m_numbers;
        m_lowest = number < m_lowest ? number : m_lowest;
        m_highest = number > m_highest ? number : m_highest;
        if (__builtin_add_overflow(m_sum, number, &m_sum))
            carrySum(number);
        m_distinct.add(quint64(number), limits.distinct);
    }
    // Any other value; in batch, cell.
    void add(const DataBatch& batch, quint32 cell, Limits& limits);

    ColumnReport report(const DataVariable& variable, int shownCodes, const Limits& limits) const;

private:
    void addSpecial(Special special);
    void addReal(double number, const Limits& limits);
    void addOutside(const DataBatch& batch, quint32 cell, Limits& limits);
    void addOutsideText(std::string_view text, Limits& limits);
    QVector<OutsideCode> outsideCodes(const DataVariable& variable) const;
    void carrySum(qint64 number);

    std::size_t m_width = 0;
    qint64 m_numbers = 0;
    qint64 m_lowest = std::numeric_limits<qint64>::max();
    qint64 m_highest = std::numeric_limits<qint64>::min();
    qint64 m_sum = 0;
    DistinctCounter m_distinct;
    double m_largeSum = 0; // what m_sum could not hold
    qint64 m_reals = 0;
    double m_lowestReal = std::numeric_limits<double>::infinity();
    double m_highestReal = -std::numeric_limits<double>::infinity();
    double m_realSum = 0;
    qint64 m_texts = 0;
    ColumnReport m_counts;
    FrequentCodes<qint64> m_outsideNumbers; // or the bits of doubles
    FrequentCodes<std::string> m_outsideTexts;
};

} // namespace tessel
