#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

// Cells of CSV, row by row.
inline QVector<QStringList> csvRows(const QString& text)
{
    QVector<QStringList> rows;
    QStringList row;
    QString cell;
    bool isQuoted = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        if (character == '"') {
            if (isQuoted && i + 1 < text.size() && text.at(i + 1) == '"')
                cell += text.at(++i);
            else
                isQuoted = !isQuoted;
        } else if (!isQuoted && (character == ',' || character == '\n')) {
            row.append(cell);
            cell.clear();
            if (character == '\n') {
                rows.append(row);
                row.clear();
            }
        } else if (character != '\r' || isQuoted) {
            cell += character;
        }
    }
    return rows;
}
