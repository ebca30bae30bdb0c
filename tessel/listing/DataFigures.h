#pragma once

#include "listing/Listing.h"

#include <tessel_data/DataDictionary.h>
#include <tessel_data/StatisticsReport.h>

/*! The figures of data, with the dictionary whose records and variables they name by indexes. */
struct DataFigures {
    tessel::DataDictionary dictionary;
    tessel::StatisticsReport report;
};

/*! Finds the figures of the fields of a listing. */
class FieldFigures {
public:
    /*! Keeps a reference to \a figures. */
    explicit FieldFigures(const DataFigures& figures);

    /*! Of an item with all its occurrences; null: none. */
    const tessel::VariableStatistics* of(const ListedField& field) const;
    /*! Of the field itself, which may be one occurrence; null: none. */
    const tessel::VariableStatistics* ofOne(const ListedField& field) const;

private:
    QHash<QString, const tessel::VariableStatistics*> m_together;
    QHash<QString, const tessel::VariableStatistics*> m_alone;
};
