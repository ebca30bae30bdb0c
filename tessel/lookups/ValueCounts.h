#pragma once

#include <QString>
#include <QVector>

#include <map>

class TOxLookupValue;

/*! A value of a lookup and how many keys carry it. */
struct ValueCount {
    QString value;
    int keys;
};
Q_DECLARE_TYPEINFO(ValueCount, Q_MOVABLE_TYPE);

/*!
 * The values of the records, most frequent first, those of the same frequency in their order. The
 * empty key stands for no record.
 */
QVector<ValueCount> countValues(const std::map<QString, TOxLookupValue*>& records);
