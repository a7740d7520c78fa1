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
        emit SigWritten();
        // Written after the signal has gone: nothing orders it before the slot.
        while (!g_go.load())
            QThread::yieldCurrentThread();
        for (int i = 0; i < 1000; ++i) {
            if (guarded) {
                QMutexLocker lock(&g_mutex);
                ++g_shared;
            } else {
                ++g_shared;
            }
        }
    }

private:
    const bool guarded;
};

int ReadShared(bool guarded)
{
    if (!guarded)
        return g_shared;
    QMutexLocker lock(&g_mutex);
    return g_shared;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const char* mode = argc > 1 ? argv[1] : "";
    const bool guarded = std::strcmp(mode, "guarded") == 0;
    int seen = 0;
    if (std::strcmp(mode, "pool") == 0) {
        QThreadPool::globalInstance()->start([] {
            while (!g_go.load())
                QThread::yieldCurrentThread();
            for (int i = 0; i < 1000; ++i)
                ++g_shared;
        });
        g_go = true;
        for (int i = 0; i < 1000; ++i)
            seen += g_shared;
        QThreadPool::globalInstance()->waitForDone();
    } else {
        Writer writer(guarded);
        const bool queued = std::strcmp(mode, "queued") == 0;
        QObject::connect(
            &writer, &Writer::SigWritten, &app,
            [&] {
                if (queued) {
                    g_go = true;
                    for (int i = 0; i < 1000; ++i)
                        seen += ReadShared(false);
                }
            },
            Qt::QueuedConnection);
        writer.start();
        if (!queued) {
            g_go = true;
            for (int i = 0; i < 1000; ++i)
                seen += ReadShared(guarded);
        }
        QTimer::singleShot(200, &app, &QCoreApplication::quit);
        QCoreApplication::exec();
        writer.wait();
        seen += ReadShared(guarded);
    }
    std::printf("%s: %d\n", mode, seen);
    return 0;
}

#include "tsan_canary.moc"
