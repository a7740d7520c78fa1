#include "BackgroundPriority.h"

#include <QtGlobal>

#include <algorithm>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <cerrno>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace {

// Nice 5: a busy worker gets about a third of the time a thread of normal
// priority wants, so the window never waits a whole time slice.
constexpr int kNiceSteps = 5;

} // namespace

void LowerCurrentThreadPriority()
{
#ifdef Q_OS_WIN
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_BELOW_NORMAL);
#elif defined(Q_OS_LINUX)
    // On Linux the nice value belongs to the thread (its id), not the process.
    const auto tid = static_cast<id_t>(syscall(SYS_gettid));
    errno = 0;
    const int current = getpriority(PRIO_PROCESS, tid);
    if (errno == 0)
        setpriority(PRIO_PROCESS, tid, std::min(current + kNiceSteps, 19));
#endif
}
