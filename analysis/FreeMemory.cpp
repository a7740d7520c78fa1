#include "FreeMemory.h"

// Any C library header defines __GLIBC__ (the test below needs one first).
#include <cstdlib>

#ifdef __GLIBC__
#include <malloc.h>
#endif

void ReleaseFreeMemory()
{
#ifdef __GLIBC__
    // Every arena, not only the calling thread's.
    malloc_trim(0);
#endif
}
