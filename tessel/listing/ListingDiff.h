#pragma once

#include "listing/Difference.h"

/*!
 * All that differs from \a before to \a after: by record and position in \a before, what only
 * \a after has at the end of its record. Takes time in proportion to the sizes.
 */
QVector<Difference> compareListings(const Listing& before, const Listing& after);

/*! A variable of one dictionary and what it is in the other. */
struct VariablePair {
    const ListedField* before; /*!< of a repeated item the first occurrence; null: none */
    const ListedField* after;
};

/*!
 * The variables as compareListings() pairs them, of a repeated item one pair for all occurrences
 * where both have records. In the order of its differences.
 */
QVector<VariablePair> pairVariables(const Listing& before, const Listing& after);
