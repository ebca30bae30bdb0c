// Feeds bytes to the reader of CSPro dictionaries, with either reading.
#include "ReadDictionary.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // The first byte chooses the reading, so that one corpus serves both.
    const bool asWritten = size > 0 && data[0] != ' ';
    readDictionary(data, size, asWritten ? CSProReading::AsWritten : CSProReading::Established);
    return 0;
}
