#pragma once

#include <tessel_data/DataError.h>

struct DictionaryFile;

namespace tessel {

// What keeps file from being read whole, as one error with the texts of all.
DataError errorOf(const DictionaryFile& file);

} // namespace tessel
