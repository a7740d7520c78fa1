#pragma once

// Hands the heap's free pages back to the system. Work that builds large
// passing structures (sort keys for a whole list, the batches of a pass)
// leaves its memory free but resident in the allocator's arenas, one per
// thread; a 100,000-file folder would keep tens of megabytes that way.
// Takes a few milliseconds; for worker threads, after such work.
void ReleaseFreeMemory();
