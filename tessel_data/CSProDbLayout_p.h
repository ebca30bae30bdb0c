#pragma once

#include <tessel_data/DataDictionary.h>

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

namespace tessel {

/* Names that a dictionary's records and items have in the tables of a CSPro DB of schema 3. */
namespace CSProDbLayout {

QString levelTable(int level);
// Table of the rows that those of a level belong to, and its column that tells them apart.
QString tableAbove(int level);
QString idAbove(int level);
// Column of a row of a level that names the row above.
QString linkOf(int level);
QString idOf(const QString& table);
QString tableOf(const DataRecord& record);
QString columnOf(const DataVariable& variable);

// All columns by table.
QHash<QString, QSet<QString>> columnsOf(const DataDictionary& dictionary);

} // namespace CSProDbLayout

// What a file holds, and a dictionary that is not its own lacks.
struct CSProDbLeftOut {
    struct Item {
        QString table;
        QString name; // "ITEM of RECORD"
        QStringList columns;
    };
    // Items that only say more of the columns of another one are not among them.
    CSProDbLeftOut(const DataDictionary& dictionary, const DataDictionary& ofFile);

    QVector<DataRecord> records;
    QVector<Item> items; // of other records
};

} // namespace tessel
