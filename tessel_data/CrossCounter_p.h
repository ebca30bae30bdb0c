#pragma once

#include <tessel_data/CodePlaces_p.h>
#include <tessel_data/StatisticsPlan_p.h>
#include <tessel_data/Tally_p.h>

namespace tessel {

// Counts how often the codes of two variables come together.
class CrossCounter {
public:
    // Throws DataError when the two cannot be crossed.
    CrossCounter(const DataDictionary& dictionary, StatisticsPlan& plan,
        const QPair<QString, QString>& names);

    // Record whose rows are counted; -1: cases, or the nodes of level().
    int record() const
    {
        return m_record;
    }
    int level() const
    {
        return m_level;
    }
    void add(const DataBatch& batch, const DataBatch::Record& row, double weight);
    CrossTable table(bool isWeighted) const;

private:
    struct Side {
        NamedVariable named;
        int valueSet;
        CodePlaces codes;
        ValuePlace place;
    };

    static Side sideOf(
        const DataDictionary& dictionary, const StatisticsPlan& plan, const QString& name);
    void choose(const DataDictionary& dictionary, StatisticsPlan& plan);
    int placeOf(const Side& side, const DataBatch& batch, const DataBatch::Record& row) const;
    Tally sumOf(std::size_t first, std::size_t step, int count) const;

    const StatisticsPlan& m_plan;
    QString m_name;
    Side m_first;
    Side m_second;
    int m_record = -1;
    int m_level = 1;
    std::size_t m_columns;
    std::vector<Tally> m_cells;
};

} // namespace tessel
