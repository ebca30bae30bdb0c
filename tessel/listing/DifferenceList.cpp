#include "listing/DifferenceList.h"

Difference& DifferenceList::add(DifferenceKind kind, bool breaks)
{
    Difference difference;
    difference.kind = kind;
    difference.breaks = breaks;
    difference.record = m_record;
    difference.variable = m_variable;
    m_groups[m_group].append(difference);
    return m_groups[m_group].last();
}

Difference& DifferenceList::add(DifferenceKind kind, DifferingProperty property, bool breaks,
    const PropertyValue& before, const PropertyValue& after)
{
    Difference& difference = add(kind, breaks);
    difference.property = property;
    difference.before = before;
    difference.after = after;
    return difference;
}

QVector<Difference> DifferenceList::all() const
{
    QVector<Difference> differences;
    for (const QVector<Difference>& group : m_groups)
        differences += group;
    return differences;
}
