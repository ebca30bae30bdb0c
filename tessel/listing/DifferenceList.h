#pragma once

#include "listing/Difference.h"

#include <QString>
#include <QVector>

/*! Takes differences as they are found and orders them by groups. */
class DifferenceList {
public:
    explicit DifferenceList(int groups)
        : m_groups(groups)
    {
    }

    /*! The next differences are of this record and variable, null for none, in this group. */
    void begin(int group, const QString& record, const QString& variable)
    {
        m_group = group;
        m_record = record;
        m_variable = variable;
    }

    Difference& add(DifferenceKind kind, bool breaks);
    Difference& add(DifferenceKind kind, DifferingProperty property, bool breaks,
        const PropertyValue& before, const PropertyValue& after);

    /*! Those of the first group, of the second and so on. */
    QVector<Difference> all() const;

private:
    QVector<QVector<Difference>> m_groups;
    int m_group = 0;
    QString m_record;
    QString m_variable;
};
