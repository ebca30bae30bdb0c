#pragma once

#include <QByteArray>
#include <QStringList>

/*! Writes a CSV file in UTF-8: cells are quoted where needed, lines end in CR LF. */
class CsvWriter {
public:
    /*!
     * With \a forSpreadsheet the file has a byte-order mark, and an apostrophe stands before each
     * cell that a spreadsheet would run as a formula; numbers are left as they are.
     */
    explicit CsvWriter(bool forSpreadsheet);

    void addLine(const QStringList& cells);
    QByteArray text() const;

private:
    bool m_forSpreadsheet;
    QByteArray m_bytes;
};
