#pragma once

#include "listing/Difference.h"

/*!
 * All that differs from \a before to \a after: by record and position in \a before, what only
 * \a after has at the end of its record. Takes time in proportion to the sizes.
 */
QVector<Difference> compareListings(const Listing& before, const Listing& after);
