#pragma once

#include "listing/Listing.h"

/*! The lowest and the highest of some codes, as they are written; the library's own have six
 * digits. */
class CodeRange {
public:
    /*! The range of the ordinary codes of \a valueSets. */
    static CodeRange of(const QVector<ListedValueSet>& valueSets);

    /*! Takes \a code in when it is a number. */
    void add(const QString& code);
    /*! Sets the range of \a field, unless no code was a number. */
    void applyTo(ListedField& field) const;

private:
    double m_lowest = 0;
    double m_highest = 0;
    QString m_min;
    QString m_max;
};
