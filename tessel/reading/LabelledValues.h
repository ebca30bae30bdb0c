#pragma once

#include "listing/Listing.h"

/*!
 * Finds out by the rows of an SPSS or Stata file which fields hold labelled and missing values only
 * and sets their \c areValuesListed; a field without any value stays as it is. Other files are left
 * alone. False when the rows could not be read to their end, or are too many; no field is set then.
 */
bool findListedValues(Listing& listing);
