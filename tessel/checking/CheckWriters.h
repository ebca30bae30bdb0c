#pragma once

#include "checking/CheckRun.h"
#include "writers/FieldWriters.h"

/*! Hands what a check found to \a sink, as \a format says. */
void writeCheck(const CheckOutcome& outcome, const ListingFormat& format, const ByteSink& sink);
