#pragma once

#include "listing/Listing.h"
#include "reading/InputFile.h"

/*!
 * Lists the variables of the SPSS or Stata file \a path: as they are written, or, for the library's
 * established rules, as its importers give them. False, and told, when the file cannot be read
 * whole.
 */
bool listStatFile(const QString& path, FileKind kind, bool asWritten, Listing& listing);
