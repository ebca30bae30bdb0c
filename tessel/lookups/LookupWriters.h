#pragma once

#include "writers/FieldWriters.h"
#include "lookups/LookupCheck.h"

#include <QStringList>

/*! How the keys, duplicates and so on are counted in words, one text for each line. */
QStringList lookupSummary(const LookupOutcome& outcome);

/*! Hands the outcome in UTF-8 to \a sink piece by piece. */
void writeLookup(const LookupOutcome& outcome, const ListingFormat& format, const ByteSink& sink);
