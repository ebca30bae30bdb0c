#pragma once

#include "listing/DataFigures.h"
#include "text/ByteSink.h"

/*!
 * The figures as JSON: a member for each figure, null where there is none, and for hidden ones
 * "hidden" in place of their numbers.
 */
void writeFigures(const DataFigures& figures, const ByteSink& sink);
