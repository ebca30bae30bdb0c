#pragma once

#include "listing/Listing.h"

class TCSProDataImport;

/*! Lists the fields of \a importer, which was opened from \a file. */
Listing listFields(const QString& file, TCSProDataImport& importer);

/*! The same in each language of the dictionary, the first one first. */
QVector<Listing> listLanguages(const QString& file, TCSProDataImport& importer);
