#pragma once

#include <tessel_data/DataDictionary.h>

namespace tessel {

/*
 * The label that all ranges but those of special values have in common, as it is written: of a
 * quantity, whose values have no names. Null when there is none.
 */
inline QString quantityLabelOf(const DataValueSet& set)
{
    QString common;
    for (const DataCode& code : set.codes) {
        if (code.highCode.isNull() || code.special != Special::None)
            continue;
        if (!common.isNull() && code.label != common)
            return QString();
        common = code.label;
    }
    return common;
}

} // namespace tessel
