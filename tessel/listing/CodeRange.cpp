#include "listing/CodeRange.h"

CodeRange CodeRange::of(const QVector<ListedValueSet>& valueSets)
{
    CodeRange range;
    for (const ListedValueSet& valueSet : valueSets) {
        for (const ListedCode& entry : valueSet.codes) {
            if (!entry.special.isNull())
                continue;
            range.add(entry.code);
            range.add(entry.highCode);
        }
    }
    return range;
}

void CodeRange::add(const QString& code)
{
    bool isNumber = false;
    const double number = code.toDouble(&isNumber);
    if (!isNumber)
        return;
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
}
