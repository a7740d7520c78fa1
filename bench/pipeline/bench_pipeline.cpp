// The real window over a folder of FILE_COUNT short WAV files (0.1 s each)
// plus the real samples of /usr/share/lmms/samples when they are installed,
// loudness on, library off, offscreen: how long until the table is full and
// the analysis done, how long the GUI thread is kept from its events while
// results stream in and while the end is handled (the table sorted again, the
// search run): a 10 ms timer, and a menu opened by a posted click every half
// second; and the resident memory. Then how long a cancelled pass takes
// to stop its workers. Peer tools on the same folder: find (listing) and
// Python's wave module (headers), each on one core.
//
//   bench_pipeline [FILE_COUNT=100000] [FOLDER]
//
// The folder is generated once and reused. Settings and caches go to a
// temporary folder, never the user's.

#include "KrokManager.h"
#include "MainWindow.h"
#include "SubThreadGetDetail.h"
#include "TeskManager.h"
#include "WaveBuilder.h"

#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <malloc.h>
#include <unistd.h>
#include <vector>

namespace {

// 0.1 s of 16-bit mono at 8 kHz.
std::vector<std::uint8_t> shortWav(int seed)
{
    std::vector<std::int32_t> values(800);
    for (std::size_t f = 0; f < values.size(); ++f)
        values[f] = std::int32_t((f * 37 + std::size_t(seed)) % 2000) * 8 - 8000;
    return fixtures::wavInts(1, 8000, 16, values);
}

int ensureFolder(const QString& folder, int count)
{
    const QString marker = QDir(folder).filePath(QStringLiteral(".complete"));
    if (!QFile::exists(marker)) {
        std::printf("generating %d files in %s ...\n", count, qPrintable(folder));
        std::fflush(stdout);
        const QString shorts = QDir(folder).filePath(QStringLiteral("short"));
        if (!QDir().mkpath(shorts))
            return -1;
        for (int k = 0; k < count; ++k) {
            const QString path = QDir(shorts).filePath(
                QStringLiteral("take_%1.wav").arg(k, 6, 10, QLatin1Char('0')));
            if (!fixtures::writeFile(path, shortWav(k)))
                return -1;
        }
        // Real recordings beside them, as a sound library has.
        const QString real = QDir(folder).filePath(QStringLiteral("real"));
        QDir().mkpath(real);
        QDirIterator it(QStringLiteral("/usr/share/lmms/samples"), {"*.wav", "*.ogg"}, QDir::Files,
                        QDirIterator::Subdirectories);
        for (int k = 0; it.hasNext(); ++k) {
            const QString from = it.next();
            QFile::copy(from, QDir(real).filePath(
                                  QStringLiteral("%1_%2").arg(k).arg(QFileInfo(from).fileName())));
        }
        QFile done(marker);
        if (!done.open(QIODevice::WriteOnly))
            return -1;
    }
    int files = 0;
    QDirIterator it(folder, {"*.wav", "*.ogg"}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        ++files;
    }
    return files;
}

double statusKiB(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0.0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(int(qstrlen(field))).trimmed().split(' ').first().toDouble();
    }
    return 0.0;
}

qint64 timePeer(const QString& program, const QStringList& args, QString* output)
{
    QProcess process;
    QElapsedTimer clock;
    clock.start();
    process.start(program, args);
    if (!process.waitForStarted(5000) || !process.waitForFinished(600000))
        return -1;
    *output = QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    return process.exitCode() == 0 ? clock.elapsed() : -1;
}

// Opens a menu of the menu bar by a posted click, as a user would, and
// measures until the menu has painted; then closes it.
class MenuProbe final : public QObject
{
public:
    MenuProbe(QMenuBar* bar, QElapsedTimer& clock)
        : bar(bar)
        , clock(clock)
    {
        action = bar->actions().value(0);
        if (action && action->menu())
            action->menu()->installEventFilter(this);
    }

    void open()
    {
        if (!action || !action->menu() || waiting)
            return;
        waiting = true;
        postedAt = clock.nsecsElapsed();
        const QPoint at = bar->actionGeometry(action).center();
        QCoreApplication::postEvent(bar,
                                    new QMouseEvent(QEvent::MouseButtonPress, at, Qt::LeftButton,
                                                    Qt::LeftButton, Qt::NoModifier));
    }

    std::vector<double> times;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (waiting && event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            const bool handled = watched->event(event);
            watched->installEventFilter(this);
            times.push_back(double(clock.nsecsElapsed() - postedAt) / 1e6);
            waiting = false;
            QTimer::singleShot(0, action->menu(), &QMenu::close);
            return handled;
        }
        return false;
    }

private:
    QMenuBar* bar;
    QElapsedTimer& clock;
    QAction* action = nullptr;
    bool waiting = false;
    qint64 postedAt = 0;
};

// Bytes the heap hands out now (what the program holds, whatever RSS says).
// CPU time of the calling thread: what the GUI thread itself spent, apart from
// the time it waited for a core on a busy machine.
double threadCpuMs()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) / 1e6;
}

double heapInUseKiB()
{
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks + info.hblkhd) / 1024.0;
}

double percentile(std::vector<double> v, double p)
{
    if (v.empty())
        return -1.0;
    std::sort(v.begin(), v.end());
    return v[std::min(v.size() - 1, std::size_t(p * double(v.size() - 1) + 0.5))];
}

// Starts a pass over `files` with loudness on, cancels it after `afterMs`
// and returns how long the workers took to stop.
double cancelLatencyMs(const QStringList& files, int afterMs)
{
    KrokManager registry;
    registry.SetJournalPath(QString());
    registry.Initialize();
    registry.SetLoudnessEnabled(true);
    SubThreadGetDetail worker(&registry);
    worker.start(files);
    QThread::msleep(static_cast<unsigned long>(afterMs));
    QElapsedTimer clock;
    clock.start();
    worker.cancel();
    worker.wait();
    const double ms = double(clock.nsecsElapsed()) / 1e6;
    registry.Finalize();
    return ms;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.filePath(QStringLiteral("config"))));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(home.filePath(QStringLiteral("cache"))));
    qputenv("XDG_DATA_HOME", QFile::encodeName(home.filePath(QStringLiteral("data"))));
    QApplication app(argc, argv);
    const int count = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 100000;
    const QString folder =
        argc > 2 ? QString::fromLocal8Bit(argv[2])
                 : QDir::temp().filePath(QStringLiteral("tesk-bench-window-%1").arg(count));
    const int files = count > 0 ? ensureFolder(folder, count) : -1;
    if (files <= 0) {
        std::fprintf(stderr, "cannot prepare %s\n", qPrintable(folder));
        return 1;
    }
    {
        QSettings ini(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Orvane Works"),
                      QStringLiteral("Tesk"));
        // The window opens on an empty folder; the user then opens the big one.
        QDir().mkpath(home.filePath(QStringLiteral("empty")));
        ini.setValue(QStringLiteral("RootPath"), home.filePath(QStringLiteral("empty")));
        ini.setValue(QStringLiteral("recursiveFlag"), true);
        ini.setValue(QStringLiteral("loudnessFlag"), true);
        ini.setValue(QStringLiteral("analysisLibrary"), false);
        ini.setValue(QStringLiteral("width"), 1400);
        ini.setValue(QStringLiteral("height"), 900);
        ini.setValue(QStringLiteral("left"), 0);
        ini.setValue(QStringLiteral("top"), 0);
    }
    QElapsedTimer clock;
    double rssIdle = 0.0;
    double heapIdle = 0.0;
    bool opened = false;
    qint64 filledMs = -1;
    qint64 doneMs = -1;
    qint64 endHandledMs = -1;
    double rssFilled = 0.0;
    double worstDelayMs = 0.0;
    qint64 worstDelayAt = 0;
    int delaysOver50 = 0;
    bool streaming = false;
    qint64 lastTick = -1;
    double lastTickCpu = 0.0;
    double worstBusyMs = 0.0;
    qint64 worstBusyAt = 0;

    auto* window = new MainWindow;
    TeskManager* manager = window->GetManager();
    MenuProbe probe(window->menuBar(), clock);

    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    ticker.setInterval(10);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        const double cpu = threadCpuMs();
        if (opened && lastTick >= 0 && endHandledMs < 0 && cpu - lastTickCpu > worstBusyMs) {
            worstBusyMs = cpu - lastTickCpu;
            worstBusyAt = now / 1000000;
        }
        lastTickCpu = cpu;
        if (opened && lastTick >= 0 && endHandledMs < 0) {
            const double late = double(now - lastTick) / 1e6 - 10.0;
            if (late > worstDelayMs) {
                worstDelayMs = late;
                worstDelayAt = now / 1000000;
            }
            if (late > 50.0)
                ++delaysOver50;
        }
        lastTick = now;
    });
    QTimer menuTimer;
    menuTimer.setInterval(500);
    QObject::connect(&menuTimer, &QTimer::timeout, [&] {
        if (streaming)
            probe.open();
    });
    QObject::connect(manager, &TeskManager::SigFilePathListAcquired, [&](const QList<QString>& l) {
        if (!opened)
            return;
        filledMs = clock.elapsed();
        rssFilled = statusKiB("VmRSS:");
        streaming = !l.isEmpty();
    });
    QObject::connect(manager, &TeskManager::SigSetStatusMessage, [&](const QString& message) {
        if (opened && message == QLatin1String("Completed acquiring analyzed data") && doneMs < 0) {
            doneMs = clock.elapsed();
            streaming = false;
        }
    });
    QObject::connect(manager, &TeskManager::SigEndGetDetailInfo, [&] {
        if (!opened) {
            // The empty folder is done: the window is idle. Now the big one.
            QTimer::singleShot(500, [&] {
                rssIdle = statusKiB("VmRSS:");
                heapIdle = heapInUseKiB();
                opened = true;
                clock.start();
                lastTick = -1;
                manager->SlotChangeRootPathCalled(folder);
            });
            return;
        }
        QTimer::singleShot(0, [&] {
            // The end's sort and search have run by now.
            endHandledMs = clock.elapsed();
            QTimer::singleShot(300, &app, &QCoreApplication::quit);
        });
    });
    ticker.start();
    menuTimer.start();
    window->show();
    app.exec();
    ticker.stop();
    menuTimer.stop();
    const double rssEnd = statusKiB("VmRSS:");
    const double heapEnd = heapInUseKiB();
    const double rssPeak = statusKiB("VmHWM:");

    std::printf("\nTesk window opening a folder of %d files (%d of 0.1 s, the rest real samples), "
                "loudness on, %d analysis threads (%s); times from the folder's choice\n",
                files, count, QThread::idealThreadCount(), qPrintable(folder));
    std::printf("  table full (every file listed):         %8lld ms\n",
                static_cast<long long>(filledMs));
    std::printf("  analysis done:                          %8lld ms\n",
                static_cast<long long>(doneMs));
    std::printf("  end of list handled (sort, search):     %8lld ms\n",
                static_cast<long long>(endHandledMs));
    std::printf("  worst GUI delay of a 10 ms timer:       %8.1f ms at %lld ms  (goal < 50)\n",
                worstDelayMs, static_cast<long long>(worstDelayAt));
    std::printf("  timer delays over 50 ms:                %8d\n", delaysOver50);
    std::printf("  worst GUI-thread CPU between two ticks: %8.1f ms at %lld ms  (the delay "
                "above less the waits for a core)\n",
                worstBusyMs, static_cast<long long>(worstBusyAt));
    std::printf("  menu opened by a click while streaming: median %.1f ms, worst %.1f ms "
                "(%zu opened)\n",
                percentile(probe.times, 0.5), percentile(probe.times, 1.0), probe.times.size());
    std::printf("  resident memory: idle window %.0f MB, table full %.0f MB, end %.0f MB, peak "
                "%.0f MB  (goal < 200 MB)\n",
                rssIdle / 1024, rssFilled / 1024, rssEnd / 1024, rssPeak / 1024);
    std::printf("  resident memory per file (end - idle):   %8.2f KB  (goal <= 1); heap in use "
                "per file %.2f KB\n",
                (rssEnd - rssIdle) / files, (heapEnd - heapIdle) / files);
    delete window;

    QStringList longFiles;
    const QString longFolder = folder + QStringLiteral("-long");
    QDir().mkpath(longFolder);
    for (int k = 0; k < 4; ++k) {
        const QString path = QDir(longFolder).filePath(QStringLiteral("long%1.wav").arg(k));
        if (!QFile::exists(path))
            fixtures::writeSineWav(path, 48000, 2, 48000 * 300);
        longFiles << path;
    }
    std::vector<double> stops;
    for (int k = 0; k < 5; ++k)
        stops.push_back(cancelLatencyMs(longFiles, 300 + 97 * k));
    std::printf("  cancel to every worker stopped (5-minute WAVs, loudness on): median %.1f ms, "
                "worst %.1f ms  (goal < 50)\n",
                percentile(stops, 0.5), percentile(stops, 1.0));

    std::printf("\nPeer tools on the same folder\n");
    QString out;
    const qint64 findMs =
        timePeer(QStringLiteral("sh"),
                 {QStringLiteral("-c"), QStringLiteral("find \"$0\" -type f -name '*.wav' | wc -l"),
                  QDir(folder).filePath(QStringLiteral("short"))},
                 &out);
    std::printf("  find (listing only):                    %8lld ms  (%s files)\n",
                static_cast<long long>(findMs), qPrintable(out));
    const QString script = QStringLiteral(
        "import os,sys,wave\n"
        "d=sys.argv[1]; n=0; t=0.0\n"
        "for e in os.scandir(d):\n"
        "  if e.name.endswith('.wav'):\n"
        "    w=wave.open(e.path); t+=w.getnframes()/w.getframerate(); w.close(); n+=1\n"
        "print(n, round(t,3))\n");
    const qint64 pyMs = timePeer(
        QStringLiteral("python3"),
        {QStringLiteral("-c"), script, QDir(folder).filePath(QStringLiteral("short"))}, &out);
    std::printf("  python3 wave (list + read headers):     %8lld ms  (%s)\n",
                static_cast<long long>(pyMs), qPrintable(out));
    return filledMs >= 0 && doneMs >= 0 ? 0 : 1;
}
