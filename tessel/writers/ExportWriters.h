#pragma once

#include "listing/DataFigures.h"

#include <tessel_data/SqlNotes.h>
#include <tessel_data/SqlTypes.h>

#include <QByteArray>

using tessel::SqlDialect;

struct SqlOptions {
    SqlDialect dialect = SqlDialect::Sqlite;
    bool hasUniqueKeys = false; /*!< where a case has one row, no two rows have the same keys */
};

/*!
 * A dictionary as an XML document of DDI-Codebook 2.5.
 * \param languages it in each of its languages; one listing at least
 * \param figures of its data; null: none
 */
QByteArray writeDdi(const QVector<Listing>& languages, const DataFigures* figures = nullptr);

/*!
 * The listing as SQL statements that make its tables.
 * \param notes takes one for each name that is not written as it is in the dictionary
 */
QByteArray writeSql(const Listing& listing, const SqlOptions& options, tessel::SqlNotes& notes);
