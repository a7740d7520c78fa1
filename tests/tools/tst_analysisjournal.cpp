// The crash journal: an analysis that never ended (its process died) marks the
// file failed until it changes, for the registry and for tesk-scan alike; a
// process that is still running keeps its entries.

#include "AnalysisErrors.h"
#include "AnalysisJournal.h"
#include "AudioFileInfo.h"
#include "KrokManager.h"
#include "ScanRun.h"
#include "WaveBuilder.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

enum class Entry
{
    Clear,
    Suspect,
    Failed
};

std::pair<std::int64_t, std::int64_t> StampOf(const QString& path)
{
    struct stat s
    {};
    ::stat(QFile::encodeName(path).constData(), &s);
    return {s.st_size, std::int64_t(s.st_mtim.tv_sec) * 1000000000 + s.st_mtim.tv_nsec};
}

// What a new process opening the journal finds for `path` (`touched`: as if changed since).
Entry EntryOf(const QString& journal, const QString& path, bool touched = false)
{
    AnalysisJournal j;
    const auto [size, ns] = StampOf(path);
    if (!j.open(journal))
        return Entry::Clear;
    if (j.isFailed(path.toStdString(), size, ns + touched))
        return Entry::Failed;
    return j.isSuspect(path.toStdString(), size, ns + touched) ? Entry::Suspect : Entry::Clear;
}

// A process that enters `paths` in the journal and then dies (or, with
// `stayAlive`, waits until it is killed) without ending the entries.
pid_t CrashDuringAnalysis(const QString& journal, const QStringList& paths, bool stayAlive = false)
{
    int ready[2];
    if (::pipe(ready) != 0)
        return -1;
    const pid_t child = ::fork();
    if (child == 0) {
        AnalysisJournal j;
        if (j.open(journal))
            for (const QString& path : paths)
                j.begin(path.toStdString(), StampOf(path).first, StampOf(path).second);
        (void)::write(ready[1], "1", 1);
        while (stayAlive)
            ::pause();
        ::_exit(0);
    }
    char byte = 0;
    (void)::read(ready[0], &byte, 1);
    ::close(ready[0]);
    ::close(ready[1]);
    if (!stayAlive)
        ::waitpid(child, nullptr, 0);
    return child;
}

} // namespace

class TestAnalysisJournal final : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;
    QString journal;
    QString file;

private slots:
    void init()
    {
        journal = dir.filePath(QStringLiteral("cache/analysis-journal"));
        QFile::remove(journal);
        file = dir.filePath(QStringLiteral("take.wav"));
        QVERIFY(fixtures::writeSineWav(file, 48000, 2, 4800));
    }

    void deadProcessMarksItsFileFailed()
    {
        CrashDuringAnalysis(journal, {file});
        QCOMPARE(EntryOf(journal, file + 'x'), Entry::Clear);
        QCOMPARE(EntryOf(journal, file), Entry::Failed);
        QCOMPARE(EntryOf(journal, file), Entry::Failed); // across starts, not only the first
        QCOMPARE(EntryOf(journal, file, true), Entry::Clear);
        QCOMPARE(EntryOf(journal, file), Entry::Clear); // a changed file is forgotten for good
    }

    void runningProcessKeepsItsEntries()
    {
        const pid_t child = CrashDuringAnalysis(journal, {file}, true);
        QVERIFY(child > 0);
        {
            AnalysisJournal j;
            QVERIFY(j.open(journal));
            // An analysis that ends leaves nothing behind.
            j.end(j.begin(QString(file + '2').toStdString(), 1, 1));
        }
        QCOMPARE(EntryOf(journal, file), Entry::Clear);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        QCOMPARE(EntryOf(journal, file), Entry::Failed);
        AnalysisJournal after;
        QVERIFY(after.open(journal) && !after.isFailed(QString(file + '2').toStdString(), 1, 1));
    }

    void registryShowsTheCrashUntilTheFileChanges()
    {
        CrashDuringAnalysis(journal, {file});
        KrokManager registry;
        registry.SetJournalPath(journal);
        registry.Initialize();
        registry.AnalyzeFile(file);
        AudioFileInfo info;
        QVERIFY(registry.FindFileInfo(file, info));
        QCOMPARE(info.isValid, 0);
        QCOMPARE(info.errorText, std::string(kErrorAnalysisCrashed));
        QCOMPARE(info.fileSize, StampOf(file).first);
        QVERIFY(fixtures::writeSineWav(file, 48000, 2, 9600));
        registry.AnalyzeFile(file);
        QVERIFY(registry.FindFileInfo(file, info));
        QCOMPARE(info.samples, 9600);
        registry.Finalize();
    }

    // Two in flight when the process died: neither is known to be the
    // culprit, so both are suspects, analysed again alone. One that takes the
    // process down on its own then is named; one that passes is cleared.
    void severalInFlightAreAnalysedAgainAlone()
    {
        QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("elsewhere")))); // not scanned below
        const QString other = dir.filePath(QStringLiteral("elsewhere/other.wav"));
        QVERIFY(fixtures::writeSineWav(other, 44100, 1, 4410));
        CrashDuringAnalysis(journal, {file, other});
        QCOMPARE(EntryOf(journal, file), Entry::Suspect);
        CrashDuringAnalysis(journal, {file});
        QCOMPARE(EntryOf(journal, file), Entry::Failed);
        QCOMPARE(EntryOf(journal, other), Entry::Suspect);
        KrokManager registry;
        registry.SetJournalPath(journal);
        registry.Initialize();
        registry.AnalyzeFile(other);
        AudioFileInfo info;
        QVERIFY(registry.FindFileInfo(other, info));
        QCOMPARE(info.samples, 4410);
        registry.Finalize();
        QCOMPARE(EntryOf(journal, other), Entry::Clear);
        QCOMPARE(EntryOf(journal, file), Entry::Failed);
    }

    void scannerHonoursTheSameJournal()
    {
        const QString cache = dir.filePath(QStringLiteral("xdg"));
        CrashDuringAnalysis(cache + QStringLiteral("/Orvane Works/Tesk/analysis-journal"), {file});
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_CACHE_HOME"), cache);
        const ScanRun run = RunScan({QStringLiteral("--json"), dir.path()}, env);
        QCOMPARE(run.exitCode, 0);
        const QJsonArray rows = QJsonDocument::fromJson(run.out).array();
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows[0]["isValid"].toInt(), 0);
        QCOMPARE(rows[0]["errorText"].toString(), QString::fromLatin1(kErrorAnalysisCrashed));
    }
};

QTEST_GUILESS_MAIN(TestAnalysisJournal)
#include "tst_analysisjournal.moc"
