#pragma once

#include "listing/DiffContext.h"
#include "listing/DifferenceList.h"

/*! Adds to \a differences all in which the codes of two variables differ. */
void compareValues(const ListedField& before, const ListedField& after, const DiffContext& context,
    DifferenceList& differences);
