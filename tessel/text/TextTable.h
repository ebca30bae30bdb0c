#pragma once

#include "text/ByteSink.h"

#include <QString>
#include <QStringList>
#include <QVector>

/*! Columns that \a text takes on a terminal: wide characters two, combining marks none. */
int displayWidth(const QString& text);

/*!
 * \a text cut into lines of at most \a width columns, at blanks where there are any; at least one
 * line.
 */
QStringList wrapped(const QString& text, int width);

/*!
 * Aligned columns of text with one free-running last column, which wraps within the table's width.
 *
 * Headings and rows are kept and laid out together, so that all groups of a table line up; a column
 * that is empty in every row is left out. Where the columns are too wide together, cells that are
 * wide themselves wrap, and a long first cell stands on a line of its own.
 */
class TextTable {
public:
    enum class Align { Left, Right };
    struct Column {
        QString heading;
        Align align;
    };

    /*! The last of \a columns is the wrapping one. */
    explicit TextTable(const QVector<Column>& columns);

    /*! Starts a group of rows, under \a title and the headings. */
    void beginGroup(const QString& title);
    /*! One cell for each column. */
    void addRow(const QStringList& cells);
    /*! A line of its own under the last row, indented. */
    void addDetail(const QString& text);
    /*! Several of them; the same list under many rows is laid out once. */
    void addDetails(const QStringList& texts);

    QString toText(int width) const;
    /*! Hands the text in UTF-8 to \a sink piece by piece. */
    void write(int width, const ByteSink& sink) const;

private:
    struct Row {
        QStringList cells;
        QVector<QStringList> details;
    };
    struct Group {
        QString title;
        QVector<Row> rows;
    };

    QVector<int> columnWidths(int width) const;
    QString line(QStringList cells, const QVector<int>& widths, int width) const;
    QString fixedCells(
        const QVector<QStringList>& parts, int number, const QVector<int>& widths) const;

    QVector<Column> m_columns;
    QVector<Group> m_groups;
};
