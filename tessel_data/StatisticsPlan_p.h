#pragma once

#include <tessel_data/DataStatistics.h>

#include <limits>
#include <string>
#include <unordered_map>
#include <vector>

namespace tessel {

// A variable that another record's rows are to see, by its name.
struct NamedVariable {
    int variable = -1;
    int record = -1; // -1: an identification item
    int column = 0; // of its record; of an identification item, of all that have it
    int level = 1;
};

// Where a row finds a variable.
struct ValuePlace {
    enum class Where { Nowhere, OwnRow, OtherRow };

    Where where = Where::Nowhere;
    int column = 0;
    int link = -1; // index among the links, of another row
};

/*
 * Finds the variables that options name, and says which rows see them. The rows of records of which
 * others see a variable are kept in mind for each case.
 */
class StatisticsPlan {
public:
    static constexpr quint32 NoCell = std::numeric_limits<quint32>::max();

    StatisticsPlan(const DataDictionary& dictionary, bool hasCases);

    // The variable called NAME or RECORD.NAME; what says in errors what it is for. Throws
    // DataError.
    NamedVariable find(const QString& name, const QString& what) const;
    // Where the rows of record see the variable.
    ValuePlace placeFor(const NamedVariable& named, int record);
    // The same for the cases, or nodes of a level, that records of the level and below tell of.
    ValuePlace placeForLevel(const NamedVariable& named, int level);
    // True when a case is to be seen as a whole.
    bool hasLinks() const
    {
        return !m_links.empty();
    }

    // Keeps in mind what others see of a case.
    void seeCase(const DataBatch& batch, std::size_t first, std::size_t end);
    // The cell of a place, for a row; NoCell where there is none.
    quint32 cellOf(
        const ValuePlace& place, const DataBatch& batch, const DataBatch::Record& row) const;
    // The identification items of the levels from from to to, as a key.
    std::string keyOf(const DataBatch& batch, const DataBatch::Record& row, int from, int to) const;

private:
    // A record that there is once for others.
    struct Link {
        int record;
        int level;
        std::unordered_map<std::string, quint32> cells; // first ones, by what is below the case
    };

    int linkTo(int record);
    std::vector<NamedVariable> called(const QString& name) const;

    const DataDictionary& m_dictionary;
    bool m_hasCases;
    std::vector<Link> m_links;
};

} // namespace tessel
