// The crash journal: an analysis that never ended (its process died) marks the
// file failed until it changes, for the registry and for tesk-scan alike; a
// process that is still running keeps its entries.

#include "AnalysisErrors.h"
#include "AnalysisJournal.h"
#include "AudioFileInfo.h"
#include "KrokManager.h"
#include "WaveBuilder.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Stamp
{
    std::int64_t size = 0;
    std::int64_t modifiedNs = 0;
};

Stamp StampOf(const QString& path)
{
    struct stat status
    {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0)
        return {};
    return {status.st_size,
            std::int64_t(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec};
}

// A process that enters `paths` in the journal and then dies (or, with
// `stayAlive`, waits until it is killed) without ending the entries.
pid_t CrashDuringAnalysis(const QString& journal, const QStringList& paths, bool stayAlive)
{
    int ready[2];
    if (::pipe(ready) != 0)
        return -1;
    const pid_t child = ::fork();
    if (child == 0) {
        AnalysisJournal j;
        if (j.open(journal)) {
            for (const QString& path : paths) {
                const Stamp stamp = StampOf(path);
                j.begin(path.toStdString(), stamp.size, stamp.modifiedNs);
            }
        }
        const char byte = 1;
        (void)::write(ready[1], &byte, 1);
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
        QVERIFY(dir.isValid());
        journal = dir.filePath(QStringLiteral("cache/analysis-journal"));
        QFile::remove(journal);
        file = dir.filePath(QStringLiteral("take.wav"));
        QVERIFY(fixtures::writeSineWav(file, 48000, 2, 4800));
    }

    void deadProcessMarksItsFileFailed()
    {
        CrashDuringAnalysis(journal, {file}, false);
        const Stamp stamp = StampOf(file);
        {
            AnalysisJournal j;
            QVERIFY(j.open(journal));
            QVERIFY(j.isFailed(file.toStdString(), stamp.size, stamp.modifiedNs));
            QVERIFY(!j.isFailed(QString(file + QLatin1Char('x')).toStdString(), stamp.size,
                                stamp.modifiedNs));
        }
        // Remembered across starts, not only at the first one.
        AnalysisJournal again;
        QVERIFY(again.open(journal));
        QVERIFY(again.isFailed(file.toStdString(), stamp.size, stamp.modifiedNs));
        // A changed file is forgotten for good.
        QVERIFY(!again.isFailed(file.toStdString(), stamp.size, stamp.modifiedNs + 1));
        AnalysisJournal third;
        QVERIFY(third.open(journal));
        QVERIFY(!third.isFailed(file.toStdString(), stamp.size, stamp.modifiedNs));
    }

    void runningProcessKeepsItsEntries()
    {
        const pid_t child = CrashDuringAnalysis(journal, {file}, true);
        QVERIFY(child > 0);
        const Stamp stamp = StampOf(file);
        {
            AnalysisJournal j;
            QVERIFY(j.open(journal));
            QVERIFY(!j.isFailed(file.toStdString(), stamp.size, stamp.modifiedNs));
            // An analysis that ends leaves nothing behind.
            j.end(j.begin(QString(file + QLatin1Char('2')).toStdString(), 1, 1));
        }
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        AnalysisJournal after;
        QVERIFY(after.open(journal));
        QVERIFY(after.isFailed(file.toStdString(), stamp.size, stamp.modifiedNs));
        QVERIFY(!after.isFailed(QString(file + QLatin1Char('2')).toStdString(), 1, 1));
    }

    void registryShowsTheCrashUntilTheFileChanges()
    {
        CrashDuringAnalysis(journal, {file}, false);
        KrokManager registry;
        registry.SetJournalPath(journal);
        registry.Initialize();
        registry.AnalyzeFile(file);
        AudioFileInfo info;
        QVERIFY(registry.FindFileInfo(file, info));
        QCOMPARE(info.isValid, 0);
        QCOMPARE(info.errorText, std::string(kErrorAnalysisCrashed));
        QCOMPARE(info.fileSize, StampOf(file).size);

        QVERIFY(fixtures::writeSineWav(file, 48000, 2, 9600));
        registry.AnalyzeFile(file);
        QVERIFY(registry.FindFileInfo(file, info));
        QCOMPARE(info.isValid, 1);
        QCOMPARE(info.samples, 9600);
        registry.Finalize();
    }

    void severalInFlightAreAnalysedAgainAlone()
    {
        // Two files in flight when the process died: neither is known to be
        // the culprit, so both are suspects, analysed again (alone). One that
        // takes the process down on its own then is named; one that passes is
        // cleared.
        // Out of the folder that the scanner test lists.
        QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("elsewhere"))));
        const QString other = dir.filePath(QStringLiteral("elsewhere/other.wav"));
        QVERIFY(fixtures::writeSineWav(other, 44100, 1, 4410));
        CrashDuringAnalysis(journal, {file, other}, false);
        const Stamp stamp = StampOf(file);
        const Stamp otherStamp = StampOf(other);
        {
            AnalysisJournal j;
            QVERIFY(j.open(journal));
            QVERIFY(!j.isFailed(file.toStdString(), stamp.size, stamp.modifiedNs));
            QVERIFY(j.isSuspect(file.toStdString(), stamp.size, stamp.modifiedNs));
            QVERIFY(j.isSuspect(other.toStdString(), otherStamp.size, otherStamp.modifiedNs));
        }
        CrashDuringAnalysis(journal, {file}, false);
        {
            AnalysisJournal j;
            QVERIFY(j.open(journal));
            QVERIFY(j.isFailed(file.toStdString(), stamp.size, stamp.modifiedNs));
            QVERIFY(j.isSuspect(other.toStdString(), otherStamp.size, otherStamp.modifiedNs));
        }
        KrokManager registry;
        registry.SetJournalPath(journal);
        registry.Initialize();
        registry.AnalyzeFile(other);
        AudioFileInfo info;
        QVERIFY(registry.FindFileInfo(other, info));
        QCOMPARE(info.isValid, 1);
        QCOMPARE(info.samples, 4410);
        registry.Finalize();
        AnalysisJournal after;
        QVERIFY(after.open(journal));
        QVERIFY(!after.isSuspect(other.toStdString(), otherStamp.size, otherStamp.modifiedNs));
        QVERIFY(!after.isFailed(other.toStdString(), otherStamp.size, otherStamp.modifiedNs));
        QVERIFY(after.isFailed(file.toStdString(), stamp.size, stamp.modifiedNs));
    }

    void scannerHonoursTheSameJournal()
    {
        const QString cache = dir.filePath(QStringLiteral("xdg"));
        CrashDuringAnalysis(cache + QStringLiteral("/Orvane Works/Tesk/analysis-journal"), {file},
                            false);
        QProcess scan;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_CACHE_HOME"), cache);
        scan.setProcessEnvironment(env);
        scan.start(QStringLiteral(TESK_SCAN_PATH), {QStringLiteral("--json"), dir.path()});
        QVERIFY(scan.waitForFinished(60000));
        QCOMPARE(scan.exitCode(), 0);
        const QJsonArray rows = QJsonDocument::fromJson(scan.readAllStandardOutput()).array();
        QCOMPARE(rows.size(), 1);
        const QJsonObject row = rows.first().toObject();
        QCOMPARE(row.value(QStringLiteral("isValid")).toInt(), 0);
        QCOMPARE(row.value(QStringLiteral("errorText")).toString(),
                 QString::fromLatin1(kErrorAnalysisCrashed));
    }
};

QTEST_GUILESS_MAIN(TestAnalysisJournal)
#include "tst_analysisjournal.moc"
