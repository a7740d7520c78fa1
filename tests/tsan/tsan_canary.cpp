// Proves that the sanitizer still sees races through the annotations and the
// suppressions: each racing mode must be reported, the guarded one must not.
//   tsan_canary worker|queued|pool|guarded
#include <QCoreApplication>
#include <QMutex>
#include <QMutexLocker>
#include <QThread>
#include <QThreadPool>
#include <QTimer>

#include <atomic>
#include <cstdio>
#include <cstring>

namespace {

int g_shared = 0;
QMutex g_mutex;
std::atomic<bool> g_go{false};

// Once told to go, writes the shared value a thousand times.
void WriteShared(bool guarded)
{
    while (!g_go.load())
        QThread::yieldCurrentThread();
    for (int i = 0; i < 1000; ++i) {
        QMutexLocker lock(guarded ? &g_mutex : nullptr);
        ++g_shared;
    }
}

int ReadShared(bool guarded)
{
    QMutexLocker lock(guarded ? &g_mutex : nullptr);
    return g_shared;
}

class Writer final : public QThread
{
    Q_OBJECT

public:
    explicit Writer(bool guarded)
        : guarded(guarded)
    {}

signals:
    void SigWritten();

protected:
    void run() override
    {
        // Written after the signal has gone: nothing orders it before the slot.
        emit SigWritten();
        WriteShared(guarded);
    }

private:
    const bool guarded;
};

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const char* mode = argc > 1 ? argv[1] : "";
    const bool guarded = std::strcmp(mode, "guarded") == 0;
    const bool queued = std::strcmp(mode, "queued") == 0;
    int seen = 0;
    const auto readAll = [&](bool guard) {
        g_go = true;
        for (int i = 0; i < 1000; ++i)
            seen += ReadShared(guard);
    };
    if (std::strcmp(mode, "pool") == 0) {
        QThreadPool::globalInstance()->start([] { WriteShared(false); });
        readAll(false);
        QThreadPool::globalInstance()->waitForDone();
    } else {
        Writer writer(guarded);
        QObject::connect(
            &writer, &Writer::SigWritten, &app, [&] { queued ? readAll(false) : void(); },
            Qt::QueuedConnection);
        writer.start();
        if (!queued)
            readAll(guarded);
        QTimer::singleShot(200, &app, &QCoreApplication::quit);
        QCoreApplication::exec();
        writer.wait();
        seen += ReadShared(guarded);
    }
    std::printf("%s: %d\n", mode, seen);
    return 0;
}

#include "tsan_canary.moc"
