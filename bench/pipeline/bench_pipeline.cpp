// Runs root change -> file list -> registration -> analysis -> table on a
// generated folder, offscreen, and prints the figures beside those of two peer
// tools on the same folder (find for the listing, Python's wave module for the
// headers).
//
//   bench_pipeline [FILE_COUNT=100000] [FOLDER]
//
// The folder is generated once and reused on later runs.

#include "KrokTableSortModel.h"
#include "TeskManager.h"
#include "WaveBuilder.h"
#include "WidgetTableBrowser.h"
#include "krokTableModel.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTimer>
#include <QVector>

#include <cstdio>
#include <unistd.h>

namespace {

// 100 frames of 8-bit mono at 8 kHz: a 144-byte file, the smallest real one.
QByteArray tinyWav(int seed)
{
    const int frames = 100;
    std::vector<std::int32_t> values(frames);
    for (int f = 0; f < frames; ++f)
        values[std::size_t(f)] = (f * 7 + seed) % 100 - 50;
    return fixtures::toQByteArray(fixtures::wavInts(1, 8000, 8, values));
}

bool ensureFolder(const QString& folder, int count)
{
    const QString marker = QDir(folder).filePath(QStringLiteral(".complete"));
    if (QFile::exists(marker)) {
        return true;
    }
    std::printf("generating %d files in %s ...\n", count, qPrintable(folder));
    std::fflush(stdout);
    if (!QDir().mkpath(folder)) {
        return false;
    }
    for (int k = 0; k < count; ++k) {
        QFile file(
            QDir(folder).filePath(QStringLiteral("take_%1.wav").arg(k, 6, 10, QLatin1Char('0'))));
        if (!file.open(QIODevice::WriteOnly) || file.write(tinyWav(k)) < 0) {
            return false;
        }
    }
    QFile done(marker);
    return done.open(QIODevice::WriteOnly);
}

double residentKiB()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly)) {
        return 0.0;
    }
    const QList<QByteArray> fields = statm.readAll().simplified().split(' ');
    return fields.size() > 1 ? fields[1].toDouble() * sysconf(_SC_PAGESIZE) / 1024.0 : 0.0;
}

// Wall time of a peer command in milliseconds, or -1 when it cannot run.
qint64 timePeer(const QString& program, const QStringList& args, QString* output)
{
    QProcess process;
    QElapsedTimer clock;
    clock.start();
    process.start(program, args);
    if (!process.waitForStarted(5000) || !process.waitForFinished(600000)) {
        return -1;
    }
    *output = QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    return process.exitCode() == 0 ? clock.elapsed() : -1;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    const int count = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 100000;
    const QString folder =
        argc > 2 ? QString::fromLocal8Bit(argv[2])
                 : QDir::temp().filePath(QStringLiteral("tesk-bench-pipeline-%1").arg(count));
    if (count <= 0 || !ensureFolder(folder, count)) {
        std::fprintf(stderr, "cannot prepare %s\n", qPrintable(folder));
        return 1;
    }

    auto* manager = new TeskManager;
    auto* browser = new WidgetTableBrowser(manager, {});
    browser->resize(1400, 900);
    browser->show();
    QCoreApplication::processEvents();
    const double rssBefore = residentKiB();

    QElapsedTimer clock;
    qint64 filledMs = -1;
    qint64 doneMs = -1;
    qint64 lastTick = 0;
    qint64 longestStall = 0;
    qint64 longestStallEnd = 0;
    int ranges = 0;
    // Every stall over 50 ms (end time, length), and the steps of the end of
    // the list: the browser's slots run between these marks because they were
    // connected to the manager first.
    QVector<QPair<qint64, qint64>> stalls;
    qint64 endStatusMs = -1;
    qint64 endSignalMs = -1;
    qint64 searchMs = -1;

    QTimer tick;
    tick.setInterval(1);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        const qint64 now = clock.elapsed();
        if (now - lastTick > 50) {
            stalls.append({now, now - lastTick});
        }
        if (now - lastTick > longestStall) {
            longestStall = now - lastTick;
            longestStallEnd = now;
        }
        lastTick = now;
    });
    QObject::connect(browser->tableModel(), &QAbstractItemModel::rowsInserted, [&] {
        if (browser->tableModel()->rowCount() == count && filledMs < 0) {
            filledMs = clock.elapsed();
        }
    });
    QObject::connect(manager, &TeskManager::SigAnalyzedInfoAcquired, [&] { ++ranges; });
    QObject::connect(manager, &TeskManager::SigSetStatusMessage, [&](const QString& message) {
        if (message == QLatin1String("Completed acquiring analyzed data")) {
            doneMs = clock.elapsed();
            endStatusMs = doneMs;
        }
    });
    // Let the filter and sort that follow the end run before stopping.
    QObject::connect(manager, &TeskManager::SigEndGetDetailInfo, [&] {
        endSignalMs = clock.elapsed();
        QTimer::singleShot(200, &app, &QCoreApplication::quit);
    });
    QObject::connect(manager, &TeskManager::SigSearchExecute, [&] {
        if (endSignalMs >= 0 && searchMs < 0) {
            searchMs = clock.elapsed();
        }
    });

    clock.start();
    tick.start();
    QTimer::singleShot(0, manager, [&] { manager->SlotChangeRootPathCalled(folder); });
    app.exec();
    tick.stop();
    const double rssAfter = residentKiB();
    const qint64 shownRows = browser->sortModel()->rowCount();

    std::printf("\nTesk pipeline over %d files of 144 bytes (%s)\n", count, qPrintable(folder));
    std::printf("  root change to filled model:            %8lld ms  (goal < 2000)\n",
                static_cast<long long>(filledMs));
    std::printf("  root change to \"Completed acquiring analyzed data\": %lld ms, %d ranges\n",
                static_cast<long long>(doneMs), ranges);
    std::printf("  longest GUI event-loop stall:           %8lld ms  (goal < 100)\n",
                static_cast<long long>(longestStall));
    std::printf("    (the longest stall ended %lld ms after the root change)\n",
                static_cast<long long>(longestStallEnd));
    for (const auto& stall : stalls) {
        std::printf("    stall of %lld ms ending at %lld ms\n",
                    static_cast<long long>(stall.second), static_cast<long long>(stall.first));
    }
    std::printf("  end of list: sorting switched on in    %8lld ms\n",
                static_cast<long long>(endSignalMs - endStatusMs));
    std::printf("  end of list: search and status line in %8lld ms\n",
                static_cast<long long>(searchMs - endSignalMs));
    std::printf("  resident memory per analysed file:      %8.2f KB  (goal < 6)\n",
                (rssAfter - rssBefore) / count);
    std::printf("  rows shown after the end:               %8lld\n",
                static_cast<long long>(shownRows));

    std::printf("\nPeer tools on the same folder\n");
    QString out;
    const qint64 findMs = timePeer(
        QStringLiteral("sh"),
        {QStringLiteral("-c"), QStringLiteral("find \"$0\" -type f -name '*.wav' | wc -l"), folder},
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
    const qint64 pyMs =
        timePeer(QStringLiteral("python3"), {QStringLiteral("-c"), script, folder}, &out);
    std::printf("  python3 wave (list + read headers):     %8lld ms  (%s)\n",
                static_cast<long long>(pyMs), qPrintable(out));

    delete browser;
    delete manager;
    return filledMs >= 0 && doneMs >= 0 ? 0 : 1;
}
