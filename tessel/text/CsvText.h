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

    /*! \a cells as they stand in a line, for lines that share some of them. */
    QByteArray textOf(const QStringList& cells) const;
    /*! Appends one of them to \a text. */
    void appendCell(QByteArray& text, const QString& cell) const;
    /*! A line of two parts by textOf(). */
    void addLine(const QByteArray& first, const QByteArray& second) const;

private:
    ByteSink m_sink;
    bool m_forSpreadsheet;
};
