// Feeds bytes to all readers of Stata files.
#include "FuzzStat.h"

#include <model_Tessel/STATADataImport.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return fuzzStat<TSTATADataImport>(data, size, TStatFileKind::Stata);
}
