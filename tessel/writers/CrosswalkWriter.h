#pragma once

#include "listing/Crosswalk.h"
#include "text/ByteSink.h"

/*! Hands a line for each row to \a sink, as CSV. */
void writeCrosswalk(const QVector<CrosswalkRow>& rows, bool forSpreadsheet, const ByteSink& sink);
