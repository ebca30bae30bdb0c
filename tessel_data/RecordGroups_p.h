#pragma once

#include <tessel_data/DataDictionary.h>

#include <QString>
#include <QStringList>
#include <QVector>

namespace tessel {

/* What becomes one table of a record: the places of its variables among the record's columns. */
struct RecordGroup {
    QString name;
    QString label;
    bool isRepeat = false; // a repeated item with its subitems, or a repeated subitem alone
    QVector<QVector<int>> places; // by occurrence, one but for a repeat
    QStringList columnNames; // as wanted
};

/*
 * The tables of record \a record, its own first: with hasRepeatTables repeated items have tables of
 * their own. Labels are in language \a language.
 */
QVector<RecordGroup> recordGroups(
    const DataDictionary& dictionary, int record, bool hasRepeatTables, int language);

} // namespace tessel
