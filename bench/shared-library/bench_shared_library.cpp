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
//    second, beside the same four with the embedded library, with no library
//    (the analysis alone), and beside psql's COPY of the same rows.
// The folder is generated once (in DATA_FOLDER, default the system's temporary
// folder) and reused.

#include "PostgresCluster.h"
#include "SoundFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
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
    const Timed none = fourScans({QStringLiteral("--no-library")});
    const Timed server =
        fourScans({QStringLiteral("--library"), cluster.Url(kUser, QStringLiteral("writers"))});
    const QString written = Count(cluster, QStringLiteral("writers"));
    const Timed embedded =
        fourScans({QStringLiteral("--library"), scratch.filePath(QStringLiteral("four.sqlite"))});
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
    std::printf("  %-44s %7lld ms %8.1f s %12.0f\n", "no library (the analysis alone)",
                static_cast<long long>(none.wallMs), none.cpuSeconds,
                PerSecond(count, none.wallMs));
    std::printf("  %-44s %7lld ms %8.1f s %12.0f\n", "shared library on the server",
                static_cast<long long>(server.wallMs), server.cpuSeconds,
                PerSecond(count, server.wallMs));
    std::printf("  %-44s %7lld ms %8.1f s %12.0f\n", "embedded library (one SQLite file)",
                static_cast<long long>(embedded.wallMs), embedded.cpuSeconds,
                PerSecond(count, embedded.wallMs));
    std::printf("  %-44s %7lld ms %10s %12.0f\n", "psql COPY of the same rows (one writer)",
                static_cast<long long>(copy.wallMs), "", PerSecond(count, copy.wallMs));
    std::printf("  rows on the server after the four: %s of %d\n", qPrintable(written), count);

    const bool ok = first.wallMs >= 0 && second.wallMs >= 0 && none.wallMs >= 0 &&
                    server.wallMs >= 0 && embedded.wallMs >= 0 &&
                    stored == QString::number(count) && written == QString::number(count);
    return ok ? 0 : 1;
}
