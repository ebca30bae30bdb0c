#pragma once

#include "listing/Listing.h"
#include "reading/InputDictionary.h"

/*!
 * Lists the fields of the file \a path, whatever kind it is. False, and told on standard error,
 * when it cannot be read; Listing::isPartial when something of it cannot.
 */
bool readListing(const QString& path, const InputOptions& options, Listing& listing);

/*!
 * The same in every language that the file has, the first one first, or in the one that the options
 * name. All of them have the same fields in the same order.
 */
bool readLanguages(const QString& path, const InputOptions& options, QVector<Listing>& languages);
