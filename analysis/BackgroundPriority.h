#pragma once

// Lowers the calling thread's scheduling priority a step, for analysis
// workers: with every core analysing, the window's thread (and the user's
// other programs) still get a core the moment they wake. Only the calling
// thread changes; it cannot be raised again, so call it on threads that end.
void LowerCurrentThreadPriority();
