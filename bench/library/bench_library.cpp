// The persistent analysis library: a cold scan against a reopen with a warm
// library, printed side by side in one run.
//
//   bench_library [SHORT_FILES=100000] [REAL_FILES=2000] [DATA_FOLDER]
//
// 1. The table's whole pipeline (offscreen, loudness on, so that every
//    analysis column is filled) over SHORT_FILES generated 144-byte WAV files:
//    cold without the library, cold with it (what the library costs), and a
//    reopen in a fresh manager with the library warm.
// 2. tesk-scan --loudness over REAL_FILES real-size files (WAV 16 and 24 bit,
//    AIFF, MP3, Ogg Vorbis; 1 to 6 s, mono and stereo, 44.1 and 48 kHz):
//    without the library, a first run that fills it, and a second run.
// Library bytes per file for both. The folders are generated once (in
// DATA_FOLDER, default the system's temporary folder) and reused; every run
// reads files the earlier runs just read, so the page cache is warm for all.

#include "AnalysisLibrary.h"
#include "KrokManager.h"
#include "SoundFolder.h"
#include "SqliteAnalysisLibrary.h"
#include "TeskManager.h"
#include "WaveBuilder.h"
#include "WidgetTableBrowser.h"
#include "krokTableModel.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>

#include <sys/resource.h>

#include <cmath>
#include <cstdio>
#include <random>

namespace {

// CPU seconds (user and system) of this process or of its reaped children:
// unlike wall time, not stretched by other work on a shared machine.
double CpuSeconds(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    const auto seconds = [](const timeval& t) { return double(t.tv_sec) + t.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// 100 frames of 8-bit mono at 8 kHz: a 144-byte file, the smallest real one.
bool MakeShortFiles(const QString& folder, int count)
{
    if (fixtures::FolderComplete(folder))
        return true;
    std::printf("generating %d short files in %s ...\n", count, qPrintable(folder));
    std::fflush(stdout);
    if (!QDir().mkpath(folder))
        return false;
    for (int k = 0; k < count; ++k) {
        std::vector<std::int32_t> values(100);
        for (int f = 0; f < 100; ++f)
            values[std::size_t(f)] = (f * 7 + k) % 100 - 50;
        const QString path =
            QDir(folder).filePath(QStringLiteral("take_%1.wav").arg(k, 6, 10, QLatin1Char('0')));
        if (!fixtures::writeFile(path, fixtures::wavInts(1, 8000, 8, values)))
            return false;
    }
    return fixtures::MarkFolderComplete(folder);
}

qint64 LibraryBytes(const QString& library)
{
    qint64 bytes = 0;
    for (const char* suffix : {"", "-wal"})
        bytes += QFileInfo(library + QLatin1String(suffix)).size();
    return bytes;
}

void RemoveLibrary(const QString& library)
{
    for (const char* suffix : {"", "-wal", "-shm"})
        QFile::remove(library + QLatin1String(suffix));
}

struct PipelineRun
{
    qint64 filledMs = -1; // root change to every row in the table
    qint64 doneMs = -1;   // root change to "Completed acquiring analyzed data"
    int ranges = 0;
    bool columnsFilled = false;
    double cpuSeconds = 0.0; // every thread, from the root change to the end
};

// One session: a fresh manager and table, loudness on, the folder opened once.
PipelineRun RunPipeline(QApplication& app, const QString& folder, int count, const QString& library)
{
    PipelineRun result;
    auto* manager = new TeskManager;
    auto* browser = new WidgetTableBrowser(manager, {});
    browser->resize(1400, 900);
    browser->show();
    manager->SlotChangeLoudnessCalled(true);
    if (!library.isEmpty())
        manager->GetKrokManager()->SetLibrary(std::make_unique<SqliteAnalysisLibrary>(library));
    QCoreApplication::processEvents();

    QElapsedTimer clock;
    krokTableModel* model = browser->tableModel();
    QObject::connect(model, &QAbstractItemModel::rowsInserted, [&] {
        if (model->rowCount() == count && result.filledMs < 0)
            result.filledMs = clock.elapsed();
    });
    QObject::connect(manager, &TeskManager::SigAnalyzedInfoAcquired, [&] { ++result.ranges; });
    QObject::connect(manager, &TeskManager::SigSetStatusMessage, [&](const QString& message) {
        if (message == QLatin1String("Completed acquiring analyzed data") && result.doneMs < 0) {
            result.doneMs = clock.elapsed();
            QTimer::singleShot(0, &app, &QCoreApplication::quit);
        }
    });
    const double cpuBefore = CpuSeconds(RUSAGE_SELF);
    clock.start();
    QTimer::singleShot(0, manager, [&] { manager->SlotChangeRootPathCalled(folder); });
    app.exec();
    // The library's last batch belongs to the run.
    manager->GetKrokManager()->FlushLibrary();
    result.cpuSeconds = CpuSeconds(RUSAGE_SELF) - cpuBefore;

    // Every analysis column of the first, middle and last rows holds a value.
    result.columnsFilled = true;
    for (const int row : {0, count / 2, count - 1}) {
        for (const int column : {ColumnSize, ColumnFormat, ColumnSamplingRate, ColumnDuration,
                                 ColumnPlots, ColumnLoudness}) {
            const QVariant value = model->data(model->index(row, column), Qt::DisplayRole);
            result.columnsFilled =
                result.columnsFilled && value.isValid() && value.toString() != QLatin1String("---");
        }
    }
    delete browser;
    delete manager;
    return result;
}

struct ScanRun
{
    qint64 wallMs = -1;
    double cpuSeconds = 0.0;
};

// One tesk-scan run; wallMs is -1 when it fails.
ScanRun RunScan(const QStringList& args)
{
    ScanRun run;
    const double cpuBefore = CpuSeconds(RUSAGE_CHILDREN);
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    QElapsedTimer clock;
    clock.start();
    process.start(QStringLiteral(TESK_SCAN_PATH), args);
    if (!process.waitForStarted(10000) || !process.waitForFinished(3600000))
        return run;
    const qint64 wallMs = clock.elapsed();
    run.cpuSeconds = CpuSeconds(RUSAGE_CHILDREN) - cpuBefore;
    const QByteArray err = process.readAllStandardError();
    if (!err.isEmpty())
        std::printf("  tesk-scan: %s", err.constData());
    if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        run.wallMs = wallMs;
    return run;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int shortCount = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 100000;
    const int realCount = argc > 2 ? QString::fromLocal8Bit(argv[2]).toInt() : 2000;
    const QString data = argc > 3 ? QString::fromLocal8Bit(argv[3]) : QDir::tempPath();
    const QString shortFolder =
        QDir(data).filePath(QStringLiteral("tesk-bench-library-short-%1").arg(shortCount));
    const QString realFolder =
        QDir(data).filePath(QStringLiteral("tesk-bench-library-real-%1").arg(realCount));
    const QString library = QDir(data).filePath(QStringLiteral("tesk-bench-library.sqlite"));
    if (shortCount <= 0 || realCount <= 0 || !MakeShortFiles(shortFolder, shortCount) ||
        !fixtures::MakeRealSizeFolder(realFolder, realCount)) {
        std::fprintf(stderr, "cannot prepare the folders under %s\n", qPrintable(data));
        return 1;
    }

    // 1. The table.
    RemoveLibrary(library);
    const PipelineRun plain = RunPipeline(app, shortFolder, shortCount, {});
    const PipelineRun cold = RunPipeline(app, shortFolder, shortCount, library);
    const qint64 shortBytes = LibraryBytes(library);
    const PipelineRun warm = RunPipeline(app, shortFolder, shortCount, library);

    std::printf("\nThe table over %d short WAV files, loudness on (%s)\n", shortCount,
                qPrintable(shortFolder));
    std::printf("  %-34s %12s %12s %12s\n", "", "no library", "cold", "reopen");
    std::printf("  %-34s %9lld ms %9lld ms %9lld ms\n", "root change to rows in the table",
                static_cast<long long>(plain.filledMs), static_cast<long long>(cold.filledMs),
                static_cast<long long>(warm.filledMs));
    std::printf("  %-34s %9lld ms %9lld ms %9lld ms   (goal for the reopen: < 2000)\n",
                "root change to analysis complete", static_cast<long long>(plain.doneMs),
                static_cast<long long>(cold.doneMs), static_cast<long long>(warm.doneMs));
    std::printf("  %-34s %10.2f s %10.2f s %10.2f s\n", "CPU time, all threads", plain.cpuSeconds,
                cold.cpuSeconds, warm.cpuSeconds);
    std::printf("  %-34s %12d %12d %12d\n", "ranges reported", plain.ranges, cold.ranges,
                warm.ranges);
    std::printf("  %-34s %12s %12s %12s\n", "every analysis column filled",
                plain.columnsFilled ? "yes" : "NO", cold.columnsFilled ? "yes" : "NO",
                warm.columnsFilled ? "yes" : "NO");
    std::printf(
        "  cost of the library on a cold scan: %+.1f %% wall, %+.1f %% CPU   (goal <= 10 %%)\n",
        100.0 * double(cold.doneMs - plain.doneMs) / double(plain.doneMs),
        100.0 * (cold.cpuSeconds - plain.cpuSeconds) / plain.cpuSeconds);
    std::printf("  library size: %.0f bytes per file   (goal <= 1536, mixed plot only)\n",
                double(shortBytes) / shortCount);

    // 2. tesk-scan over real-size files.
    RemoveLibrary(library);
    const QStringList scan{QStringLiteral("--loudness"), realFolder};
    const ScanRun scanPlain = RunScan(QStringList{QStringLiteral("--no-library")} + scan);
    const ScanRun scanFirst = RunScan(QStringList{QStringLiteral("--library"), library} + scan);
    const qint64 realBytes = LibraryBytes(library);
    const ScanRun scanSecond = RunScan(QStringList{QStringLiteral("--library"), library} + scan);
    RemoveLibrary(library);

    std::printf("\ntesk-scan --loudness over %d real-size files (%s)\n", realCount,
                qPrintable(realFolder));
    std::printf("  %-34s %12s %12s %12s\n", "", "no library", "first run", "second run");
    std::printf("  %-34s %9lld ms %9lld ms %9lld ms\n", "wall time",
                static_cast<long long>(scanPlain.wallMs), static_cast<long long>(scanFirst.wallMs),
                static_cast<long long>(scanSecond.wallMs));
    std::printf("  %-34s %10.2f s %10.2f s %10.2f s\n", "CPU time", scanPlain.cpuSeconds,
                scanFirst.cpuSeconds, scanSecond.cpuSeconds);
    std::printf("  second run %.1fx faster than the first   (goal >= 20x)\n",
                double(scanFirst.wallMs) / double(std::max<qint64>(scanSecond.wallMs, 1)));
    std::printf(
        "  cost of the library on the first run: %+.1f %% wall, %+.1f %% CPU   (goal <= 10 %%)\n",
        100.0 * double(scanFirst.wallMs - scanPlain.wallMs) / double(scanPlain.wallMs),
        100.0 * (scanFirst.cpuSeconds - scanPlain.cpuSeconds) / scanPlain.cpuSeconds);
    std::printf("  library size: %.0f bytes per file   (goal <= 1536, mixed plot only)\n",
                double(realBytes) / realCount);

    const bool ok = plain.doneMs >= 0 && cold.doneMs >= 0 && warm.doneMs >= 0 &&
                    scanPlain.wallMs >= 0 && scanFirst.wallMs >= 0 && scanSecond.wallMs >= 0;
    return ok ? 0 : 1;
}
