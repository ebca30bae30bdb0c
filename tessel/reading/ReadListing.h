#pragma once

#include "listing/Listing.h"
#include "reading/InputDictionary.h"

/*!
 * Lists the fields of the file \a path, whatever kind it is. False, and told on standard error,
 * when it cannot be read; Listing::isPartial when something of it cannot.
 */
bool readListing(const QString& path, const InputOptions& options, Listing& listing);
