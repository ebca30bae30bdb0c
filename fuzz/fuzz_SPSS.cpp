// Feeds bytes to all readers of SPSS files.
#include "FuzzStat.h"

#include <model_Tessel/SPSSDataImport.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return fuzzStat<TSPSSDataImport>(data, size, TStatFileKind::Spss);
}
