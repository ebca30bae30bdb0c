#pragma once

#include "listing/Listing.h"
#include "text/ByteSink.h"

#include <QVector>

/*! How a listing is written; UTF-8 all. */
struct ListingFormat {
    enum class Kind { Table, Csv, Json };
    Kind kind = Kind::Table;
    bool withValues = false; /*!< the value labels too */
    bool forSpreadsheet = false; /*!< CSV whose cells no spreadsheet takes for formulas */
    int width = 80; /*!< columns of a table */
};

/*! Hands the text to \a sink piece by piece: JSON with its values can be longer than a text may be.
 */
void writeListings(
    const QVector<Listing>& listings, const ListingFormat& format, const ByteSink& sink);
