#pragma once

#include "listing/Listing.h"
#include "reading/DictionaryText.h"
#include "reading/InputFile.h"

/*! How files are read, the same in every command that reads dictionaries. */
struct InputOptions {
    FileKind kind = FileKind::Unknown; /*!< Unknown: as the content says */
    DictionaryOptions dictionary;
};

/*!
 * The kind to read the opened \a file as: Spss, Stata, or CSPro for whatever holds a dictionary of
 * CSPro. Options that are not for this kind are told.
 */
FileKind kindOfInput(const InputFile& file, const InputOptions& options);

/*!
 * Lists the fields of the file \a path, whatever kind it is. False, and told on standard error,
 * when it cannot be read; Listing::isPartial when something of it cannot.
 */
bool readListing(const QString& path, const InputOptions& options, Listing& listing);
