#pragma once

#include <sys/resource.h>

// The most memory that the test had until now, in KiB; always 0 under the address sanitizer, which
// keeps what was freed.
inline long peakMemory()
{
#ifdef __SANITIZE_ADDRESS__
    return 0;
#else
    struct rusage usage { };
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
#endif
}
