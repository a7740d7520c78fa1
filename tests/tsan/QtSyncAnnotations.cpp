// Preloaded into the tests under ThreadSanitizer. Qt's locks, thread ends and
// event queues live in the uninstrumented libQt5Core, so to the sanitizer
// everything they order would look unsynchronised. These definitions take the
// place of the exported functions our code calls, call the real ones and tell
// the sanitizer what they did; what libQt5Core orders internally is left to
// the suppression file.

#include <QCoreApplication>
#include <QEvent>
#include <QMetaObject>
#include <QMutex>
#include <QThread>
#include <QThreadPool>
#include <QWaitCondition>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

#include <functional>
#include <mutex>
#include <unordered_set>

namespace {

template<typename F>
F Real(const char* name)
{
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

// One address models all event queues (one thread receives events), one the
// global pool's queue (the only pool used).
char g_eventQueues;
char g_poolQueue;

// Threads whose end is announced to the sanitizer, each once.
std::mutex g_threadsMutex;
std::unordered_set<const QThread*> g_threads;

void AnnounceEnd(QThread* thread)
{
    {
        std::lock_guard<std::mutex> lock(g_threadsMutex);
        if (!g_threads.insert(thread).second)
            return;
    }
    // finished is emitted on the ending thread after run().
    QObject::connect(
        thread, &QThread::finished, thread, [thread] { __tsan_release(thread); },
        Qt::DirectConnection);
    QObject::connect(thread, &QObject::destroyed, [thread] {
        std::lock_guard<std::mutex> lock(g_threadsMutex);
        g_threads.erase(thread);
    });
}

} // namespace

void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto real = Real<void (*)(QMutex*)>("_ZN6QMutex4lockEv");
    real(this);
    __tsan_acquire(this);
}

bool QMutex::tryLock(int timeout) QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto real = Real<bool (*)(QMutex*, int)>("_ZN6QMutex7tryLockEi");
    const bool locked = real(this, timeout);
    if (locked)
        __tsan_acquire(this);
    return locked;
}

void QMutex::unlock() noexcept
{
    static const auto real = Real<void (*)(QMutex*)>("_ZN6QMutex6unlockEv");
    __tsan_release(this);
    real(this);
}

bool QWaitCondition::wait(QMutex* lockedMutex, QDeadlineTimer deadline)
{
    static const auto real = Real<bool (*)(QWaitCondition*, QMutex*, QDeadlineTimer)>(
        "_ZN14QWaitCondition4waitEP6QMutex14QDeadlineTimer");
    __tsan_release(lockedMutex);
    const bool woken = real(this, lockedMutex, deadline);
    __tsan_acquire(lockedMutex);
    return woken;
}

bool QWaitCondition::wait(QMutex* lockedMutex, unsigned long time)
{
    static const auto real = Real<bool (*)(QWaitCondition*, QMutex*, unsigned long)>(
        "_ZN14QWaitCondition4waitEP6QMutexm");
    __tsan_release(lockedMutex);
    const bool woken = real(this, lockedMutex, time);
    __tsan_acquire(lockedMutex);
    return woken;
}

void QThread::start(Priority priority)
{
    static const auto real = Real<void (*)(QThread*, Priority)>("_ZN7QThread5startENS_8PriorityE");
    AnnounceEnd(this);
    // A restart follows the previous run's end.
    __tsan_acquire(this);
    real(this, priority);
}

bool QThread::wait(QDeadlineTimer deadline)
{
    static const auto real =
        Real<bool (*)(QThread*, QDeadlineTimer)>("_ZN7QThread4waitE14QDeadlineTimer");
    const bool ended = real(this, deadline);
    if (ended)
        __tsan_acquire(this);
    return ended;
}

bool QThread::wait(unsigned long time)
{
    static const auto real = Real<bool (*)(QThread*, unsigned long)>("_ZN7QThread4waitEm");
    const bool ended = real(this, time);
    if (ended)
        __tsan_acquire(this);
    return ended;
}

bool QThread::isRunning() const
{
    static const auto real = Real<bool (*)(const QThread*)>("_ZNK7QThread9isRunningEv");
    const bool running = real(this);
    if (!running)
        __tsan_acquire(const_cast<QThread*>(this));
    return running;
}

bool QThread::isFinished() const
{
    static const auto real = Real<bool (*)(const QThread*)>("_ZNK7QThread10isFinishedEv");
    const bool finished = real(this);
    if (finished)
        __tsan_acquire(const_cast<QThread*>(this));
    return finished;
}

void QMetaObject::activate(QObject* sender, const QMetaObject* meta, int localSignalIndex,
                           void** argv)
{
    static const auto real = Real<void (*)(QObject*, const QMetaObject*, int, void**)>(
        "_ZN11QMetaObject8activateEP7QObjectPKS_iPPv");
    __tsan_release(&g_eventQueues);
    real(sender, meta, localSignalIndex, argv);
    // A blocking-queued emit returns once the receiver has handled it.
    __tsan_acquire(&g_eventQueues);
}

bool QMetaObject::invokeMethodImpl(QObject* object, QtPrivate::QSlotObjectBase* slot,
                                   Qt::ConnectionType type, void* ret)
{
    static const auto real =
        Real<bool (*)(QObject*, QtPrivate::QSlotObjectBase*, Qt::ConnectionType, void*)>(
            "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14"
            "ConnectionTypeEPv");
    __tsan_release(&g_eventQueues);
    const bool invoked = real(object, slot, type, ret);
    __tsan_acquire(&g_eventQueues);
    return invoked;
}

void QCoreApplication::postEvent(QObject* receiver, QEvent* event, int priority)
{
    static const auto real = Real<void (*)(QObject*, QEvent*, int)>(
        "_ZN16QCoreApplication9postEventEP7QObjectP6QEventi");
    __tsan_release(&g_eventQueues);
    real(receiver, event, priority);
}

// Reached through our classes' virtual tables.
bool QObject::event(QEvent* event)
{
    static const auto real = Real<bool (*)(QObject*, QEvent*)>("_ZN7QObject5eventEP6QEvent");
    if (event->type() != QEvent::MetaCall)
        return real(this, event);
    __tsan_acquire(&g_eventQueues);
    const bool handled = real(this, event);
    __tsan_release(&g_eventQueues);
    return handled;
}

void QThreadPool::start(std::function<void()> functionToRun, int priority)
{
    static const auto real = Real<void (*)(QThreadPool*, std::function<void()>, int)>(
        "_ZN11QThreadPool5startESt8functionIFvvEEi");
    std::function<void()> handedOver = [task = std::move(functionToRun)] {
        __tsan_acquire(&g_poolQueue);
        task();
    };
    __tsan_release(&g_poolQueue);
    real(this, std::move(handedOver), priority);
}
