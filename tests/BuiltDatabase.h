#pragma once

#include "SqliteRows.h"

// Numbers that have no label are texts of 15 digits in a view with labels.
inline bool areSameLabels(const QStringList& found, const QStringList& expected)
{
    for (int i = 0; i < expected.size(); ++i) {
        bool isNumber = false;
        const double number = expected.at(i).toDouble(&isNumber);
        const bool isSame = found.value(i) == expected.at(i)
            || (isNumber
                && QString::number(number, 'g', 15)
                    == QString::number(found.value(i).toDouble(), 'g', 15));
        if (!isSame || found.value(i).isNull() != expected.at(i).isNull())
            return false;
    }
    return found.size() == expected.size();
}
