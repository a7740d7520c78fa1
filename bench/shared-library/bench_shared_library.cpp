// A studio's shared analysis library on a PostgreSQL server started for the
// run (fsync on, as a real server has it), listening on a Unix socket.
//
//   bench_shared_library [FILES=20000] [DATA_FOLDER]
//
// 1. tesk-scan --loudness over FILES real-size files on a first workstation
//    (cold: everything analysed and written to the server), then on a second
//    that mounts the same files elsewhere and names the share by the same
//    library root, beside psql reading the same rows.
// 2. Four tesk-scan processes at once, each over a quarter of the files
//    (header and plots, no loudness), writing into the server: rows per
//    second, beside the same four with the embedded library and with no
//    library (the analysis alone). Reading and analysing the files bounds all
//    three.
// 3. The write path alone: four writers at once, each with a connection of
//    its own as four tesk-scan processes have, store the rows of 1 in batches
//    of 256 as the library thread does: rows per second into the server and
//    into one embedded library, beside psql's COPY of the same rows.
// The folder is generated once (in DATA_FOLDER, default the system's temporary
// folder) and reused.

#include "PostgresAnalysisLibrary.h"
#include "PostgresCluster.h"
#include "SoundFolder.h"
#include "SqliteAnalysisLibrary.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

const QString kUser = QStringLiteral("tesk");
const QString kPassword = QStringLiteral("tesk-pw");

// CPU seconds of the reaped children: not stretched by other work on a shared machine.
double ChildCpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval& t) { return double(t.tv_sec) + t.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

struct Timed
{
    qint64 wallMs = -1; // -1: a process failed
    double cpuSeconds = 0.0;
};

// tesk-scan processes started together; the time until the last ends.
Timed RunScans(const QList<QStringList>& runs)
{
    Timed timed;
    const double cpuBefore = ChildCpuSeconds();
    std::vector<std::unique_ptr<QProcess>> processes;
    QElapsedTimer clock;
    clock.start();
    for (const QStringList& args : runs) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->setStandardOutputFile(QProcess::nullDevice());
        processes.back()->start(QStringLiteral(TESK_SCAN_PATH), args);
    }
    bool ok = true;
    for (const auto& process : processes) {
        ok = process->waitForFinished(7200000) && process->exitStatus() == QProcess::NormalExit &&
             process->exitCode() == 0 && ok;
        const QByteArray err = process->readAllStandardError();
        if (!err.isEmpty())
            std::printf("  tesk-scan: %s", err.constData());
    }
    if (ok)
        timed.wallMs = clock.elapsed();
    timed.cpuSeconds = ChildCpuSeconds() - cpuBefore;
    return timed;
}

Timed RunPsql(fixtures::PostgresCluster& cluster, const QString& sql, const QString& database)
{
    Timed timed;
    QElapsedTimer clock;
    clock.start();
    if (cluster.Sql(sql, database))
        timed.wallMs = clock.elapsed();
    else
        std::printf("  psql: %s\n", qPrintable(cluster.Error()));
    return timed;
}

QString Count(fixtures::PostgresCluster& cluster, const QString& database)
{
    QString out;
    cluster.Sql(QStringLiteral("SELECT count(*) FROM file_analysis"), database, &out);
    return out;
}

// The files of `folder` in `parts` folders of hard links, for writers of their own.
QStringList SplitFolder(const QString& folder, const QString& into, int parts)
{
    const QStringList names = QDir(folder).entryList(QDir::Files, QDir::Name);
    QStringList folders;
    for (int p = 0; p < parts; ++p) {
        folders << QDir(into).filePath(QStringLiteral("part%1").arg(p));
        QDir().mkpath(folders.last());
    }
    int i = 0;
    for (const QString& name : names) {
        if (name.startsWith(QLatin1Char('.')))
            continue;
        const QString target = QDir(folders.at(i++ % parts)).filePath(name);
        const QByteArray from = QFile::encodeName(QDir(folder).filePath(name));
        if (!QFile::exists(target) &&
            ::link(from.constData(), QFile::encodeName(target).constData()) != 0)
            return {};
    }
    return folders;
}

// Every row of the server's library, read as a workstation reads them.
std::vector<LibraryRow> ReadAllRows(const LibraryServer& server)
{
    std::vector<LibraryRow> rows;
    PostgresAnalysisLibrary library(server);
    if (!library.Open())
        return rows;
    const LibraryKeys keys = library.KeysIn({QStringLiteral("SFX"), QString()}, true);
    for (std::size_t from = 0; from < keys.size(); from += 512) {
        const LibraryKeys chunk(keys.begin() + std::ptrdiff_t(from),
                                keys.begin() + std::ptrdiff_t(std::min(keys.size(), from + 512)));
        for (auto& row : library.Fetch(chunk)) {
            if (row)
                rows.push_back(std::move(*row));
        }
    }
    return rows;
}

// Four writers, each with its own connection, store every fourth row in
// batches of 256; the time from when all are connected until the last is done.
qint64 WriteAtOnce(const std::vector<LibraryRow>& rows,
                   const std::function<std::unique_ptr<AnalysisLibrary>()>& make)
{
    constexpr int kWriters = 4;
    std::mutex mutex;
    std::condition_variable wake;
    int ready = 0;
    bool go = false;
    std::atomic<bool> ok{true};
    std::vector<std::thread> writers;
    for (int w = 0; w < kWriters; ++w) {
        writers.emplace_back([&, w] {
            std::unique_ptr<AnalysisLibrary> library = make();
            ok = library->Open() && ok;
            std::vector<LibraryRow> batch;
            {
                std::unique_lock<std::mutex> lock(mutex);
                ++ready;
                wake.notify_all();
                wake.wait(lock, [&] { return go; });
            }
            for (std::size_t i = std::size_t(w); i < rows.size(); i += kWriters) {
                batch.push_back(rows[i]);
                if (batch.size() == 256 || i + kWriters >= rows.size()) {
                    ok = library->Store(batch) && ok;
                    batch.clear();
                }
            }
            library->Close();
        });
    }
    QElapsedTimer clock;
    {
        std::unique_lock<std::mutex> lock(mutex);
        wake.wait(lock, [&] { return ready == kWriters; });
        go = true;
        clock.start();
    }
    wake.notify_all();
    for (std::thread& writer : writers)
        writer.join();
    return ok ? clock.elapsed() : -1;
}

double PerSecond(int rows, qint64 ms)
{
    return ms > 0 ? 1000.0 * rows / double(ms) : 0.0;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int count = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 20000;
    const QString data = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QDir::tempPath();
    const QString folder =
        QDir(data).filePath(QStringLiteral("tesk-bench-library-real-%1").arg(count));
    if (count <= 0 || !fixtures::MakeRealSizeFolder(folder, count)) {
        std::fprintf(stderr, "cannot prepare %s\n", qPrintable(folder));
        return 1;
    }
    QTemporaryDir scratch;
    fixtures::PostgresCluster cluster;
    if (!scratch.isValid() || !cluster.Start(true) || !cluster.AddUser(kUser, kPassword)) {
        std::fprintf(stderr, "no PostgreSQL server: %s\n", qPrintable(cluster.Error()));
        return 1;
    }
    for (const char* database : {"workstations", "writers"})
        cluster.Sql(
            QStringLiteral("CREATE DATABASE %1 OWNER %2").arg(QLatin1String(database), kUser));
    qputenv("PGPASSFILE", QFile::encodeName(cluster.WritePasswordFile(QStringLiteral("pgpass"),
                                                                      {kUser, kPassword})));
    // tesk-scan's own library and outbox stay in the scratch folder.
    qputenv("XDG_CACHE_HOME", QFile::encodeName(scratch.filePath(QStringLiteral("cache"))));

    // 1. Two workstations.
    const QString mount = scratch.filePath(QStringLiteral("mount-b"));
    QFile::link(folder, mount);
    const QString library = cluster.Url(kUser, QStringLiteral("workstations"));
    const Timed first =
        RunScans({{QStringLiteral("--loudness"), QStringLiteral("--library"), library,
                   QStringLiteral("--root"), QStringLiteral("SFX=") + folder, folder}});
    const QString stored = Count(cluster, QStringLiteral("workstations"));
    const Timed second =
        RunScans({{QStringLiteral("--loudness"), QStringLiteral("--library"), library,
                   QStringLiteral("--root"), QStringLiteral("SFX=") + mount, mount}});
    const Timed psqlRead =
        RunPsql(cluster, QStringLiteral("\\copy (SELECT * FROM file_analysis) TO '/dev/null'"),
                QStringLiteral("workstations"));

    std::printf("\ntesk-scan --loudness over %d real-size files (%s)\n", count, qPrintable(folder));
    std::printf("  %-44s %10s %10s\n", "", "wall", "CPU");
    std::printf("  %-44s %7lld ms %8.1f s\n", "first workstation (analyses, writes)",
                static_cast<long long>(first.wallMs), first.cpuSeconds);
    std::printf("  %-44s %7lld ms %8.1f s\n", "second workstation (other mount point)",
                static_cast<long long>(second.wallMs), second.cpuSeconds);
    std::printf("  %-44s %7lld ms\n", "psql reading the same rows (\\copy to null)",
                static_cast<long long>(psqlRead.wallMs));
    std::printf("  rows on the server: %s of %d\n", qPrintable(stored), count);
    std::printf("  second workstation %.1fx faster than the first   (goal >= 20x)\n",
                double(first.wallMs) / double(std::max<qint64>(second.wallMs, 1)));

    // 2. Four writers at once.
    const QStringList parts = SplitFolder(
        folder, QDir(data).filePath(QStringLiteral("tesk-bench-library-parts-%1").arg(count)), 4);
    if (parts.size() != 4) {
        std::fprintf(stderr, "cannot split %s\n", qPrintable(folder));
        return 1;
    }
    const auto fourScans = [&](const QStringList& library) {
        QList<QStringList> runs;
        for (const QString& part : parts)
            runs << library + QStringList{part};
        return RunScans(runs);
    };
    // Each pass reads the files again; the last ones find more of them cached.
    const Timed server =
        fourScans({QStringLiteral("--library"), cluster.Url(kUser, QStringLiteral("writers"))});
    const QString written = Count(cluster, QStringLiteral("writers"));
    const Timed embedded =
        fourScans({QStringLiteral("--library"), scratch.filePath(QStringLiteral("four.sqlite"))});
    const Timed none = fourScans({QStringLiteral("--no-library")});
    const QString rows = scratch.filePath(QStringLiteral("rows.copy"));
    RunPsql(cluster, QStringLiteral("\\copy file_analysis TO '%1'").arg(rows),
            QStringLiteral("writers"));
    cluster.Sql(QStringLiteral("SET ROLE %1; CREATE TABLE file_analysis_copy"
                               " (LIKE file_analysis INCLUDING ALL)")
                    .arg(kUser),
                QStringLiteral("writers"));
    const Timed copy =
        RunPsql(cluster, QStringLiteral("\\copy file_analysis_copy FROM '%1'").arg(rows),
                QStringLiteral("writers"));

    std::printf("\nFour tesk-scan processes at once, a quarter of the files each (header and "
                "plots)\n");
    std::printf("  %-44s %10s %10s %12s\n", "", "wall", "CPU", "rows/s");
    std::printf("  %-44s %7lld ms %8.1f s %12.0f\n", "shared library on the server",
                static_cast<long long>(server.wallMs), server.cpuSeconds,
                PerSecond(count, server.wallMs));
    std::printf("  %-44s %7lld ms %8.1f s %12.0f\n", "embedded library (one SQLite file)",
                static_cast<long long>(embedded.wallMs), embedded.cpuSeconds,
                PerSecond(count, embedded.wallMs));
    std::printf("  %-44s %7lld ms %8.1f s %12.0f\n", "no library (the analysis alone)",
                static_cast<long long>(none.wallMs), none.cpuSeconds,
                PerSecond(count, none.wallMs));
    std::printf("  rows on the server after the four: %s of %d\n", qPrintable(written), count);

    // 3. The write path alone.
    const LibraryServer replay{cluster.Host(), cluster.Port(), QStringLiteral("replay"), kUser};
    cluster.Sql(QStringLiteral("CREATE DATABASE replay OWNER %1").arg(kUser));
    const std::vector<LibraryRow> all =
        ReadAllRows({cluster.Host(), cluster.Port(), QStringLiteral("workstations"), kUser});
    const qint64 serverWrite =
        WriteAtOnce(all, [&] { return std::make_unique<PostgresAnalysisLibrary>(replay); });
    const QString replayed = Count(cluster, QStringLiteral("replay"));
    const QString embeddedFile = scratch.filePath(QStringLiteral("replay.sqlite"));
    const qint64 embeddedWrite =
        WriteAtOnce(all, [&] { return std::make_unique<SqliteAnalysisLibrary>(embeddedFile); });

    std::printf("\nThe write path alone: four writers at once, %d rows in batches of 256\n",
                int(all.size()));
    std::printf("  %-44s %10s %12s\n", "", "wall", "rows/s");
    std::printf("  %-44s %7lld ms %12.0f\n", "into the server (upserts)",
                static_cast<long long>(serverWrite), PerSecond(int(all.size()), serverWrite));
    std::printf("  %-44s %7lld ms %12.0f\n", "into one embedded library (upserts)",
                static_cast<long long>(embeddedWrite), PerSecond(int(all.size()), embeddedWrite));
    std::printf("  %-44s %7lld ms %12.0f\n", "psql COPY of the same rows (one writer)",
                static_cast<long long>(copy.wallMs), PerSecond(count, copy.wallMs));
    std::printf("  rows on the server after the four: %s of %d\n", qPrintable(replayed),
                int(all.size()));

    const bool ok = first.wallMs >= 0 && second.wallMs >= 0 && none.wallMs >= 0 &&
                    server.wallMs >= 0 && embedded.wallMs >= 0 &&
                    stored == QString::number(count) && written == QString::number(count) &&
                    serverWrite >= 0 && embeddedWrite >= 0 &&
                    replayed == QString::number(all.size());
    return ok ? 0 : 1;
}
