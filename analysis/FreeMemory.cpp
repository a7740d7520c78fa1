#include "FreeMemory.h"

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
