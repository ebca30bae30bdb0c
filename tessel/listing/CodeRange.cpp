#include "listing/CodeRange.h"

#include <cmath>

CodeRange CodeRange::of(const QVector<ListedValueSet>& valueSets)
{
    CodeRange range;
    for (const ListedValueSet& valueSet : valueSets) {
        for (const ListedCode& entry : valueSet.codes) {
            if (!entry.isSpecial())
                range.add(entry);
        }
        if (range.m_min.isNull())
            continue;
        range.m_valueSet = valueSet.name;
        break;
    }
    return range;
}

void CodeRange::add(const ListedCode& entry)
{
    const QString& highCode = entry.isRange() ? entry.highCode : entry.code;
    bool isLowNumber = false;
    bool isHighNumber = false;
    const double low = entry.code.toDouble(&isLowNumber);
    const double high = highCode.toDouble(&isHighNumber);
    if (!isLowNumber || !isHighNumber || !std::isfinite(low) || !std::isfinite(high))
        return;
    add(entry.code, low);
    add(highCode, high);
}

void CodeRange::add(const QString& code, double number)
{
    if (m_min.isNull() || number < m_lowest) {
        m_lowest = number;
        m_min = code;
    }
    if (m_max.isNull() || number > m_highest) {
        m_highest = number;
        m_max = code;
    }
}

void CodeRange::applyTo(ListedField& field) const
{
    if (m_min.isNull())
        return;
    field.min = m_min;
    field.max = m_max;
    field.rangeSource = RangeSource::ValueSet;
    field.rangeValueSet = m_valueSet;
}
