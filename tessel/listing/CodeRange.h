#pragma once

#include "listing/Listing.h"

/*!
 * The lowest and the highest code of a value set, as they are written; the library's own have six
 * digits.
 */
class CodeRange {
public:
    /*! The range of the ordinary codes of the first of \a valueSets that has numbers. */
    static CodeRange of(const QVector<ListedValueSet>& valueSets);

    /*! Sets the range of \a field, unless no code was a number. */
    void applyTo(ListedField& field) const;

private:
    void add(const ListedCode& entry);
    void add(const QString& code, double number);

    QString m_valueSet;
    double m_lowest = 0;
    double m_highest = 0;
    QString m_min;
    QString m_max;
};
