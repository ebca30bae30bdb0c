#pragma once

#include <sys/resource.h>

// The most memory that the test had until now, in KiB.
inline long peakMemory()
{
    struct rusage usage { };
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}
