#pragma once

#include "text/ByteSink.h"

#include <QStringList>

/*! Writes a CSV file in UTF-8: cells are quoted where needed, lines end in CR LF. */
class CsvWriter {
public:
    /*!
     * Hands each line to \a sink. With \a forSpreadsheet the file has a byte-order mark, and an
     * apostrophe stands before each cell that a spreadsheet would run as a formula; numbers are
     * left as they are.
     */
    CsvWriter(const ByteSink& sink, bool forSpreadsheet);

    void addLine(const QStringList& cells) const;

private:
    ByteSink m_sink;
    bool m_forSpreadsheet;
};
