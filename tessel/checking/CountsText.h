#pragma once

#include <tessel_data/DataSource.h>

#include <QString>

/*!
 * The lines that say what became of all that \a source read: "5871 lines read = 5871 rows + 0
 * rejects + ...", and likewise its cases, where it has any.
 */
QString countsText(
    const tessel::DataSource& source, const tessel::SourceCounts& read, qint64 rejects);
