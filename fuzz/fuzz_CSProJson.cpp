// Feeds bytes to the reader of JSON dictionaries.
#include "ReadDictionary.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > 0 && data[0] == '{') // whatever else is text, which has a target of its own
        readDictionary(data, size, CSProReading::AsWritten);
    return 0;
}
