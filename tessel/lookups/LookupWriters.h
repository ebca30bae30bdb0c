#pragma once

#include "writers/FieldWriters.h"
#include "lookups/LookupCheck.h"

#include <QByteArray>

/*! How the keys, duplicates and so on are counted in words, one text for each line. */
QStringList lookupSummary(const LookupOutcome& outcome);

/*! The outcome in UTF-8. */
QByteArray writeLookup(const LookupOutcome& outcome, const ListingFormat& format);
