#pragma once

#include "listing/Listing.h"

#include <model_Tessel/DictionaryFile.h>

/*!
 * Lists the variables of the SPSS or Stata file \a file: as they are written or, when its importer
 * was opened, as that gives them.
 */
Listing listStatFile(const DictionaryFile& file);
