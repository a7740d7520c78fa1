#include "AnalysisErrors.h"
#include "AnalysisJournal.h"
#include "AnalysisLibraryThread.h"
#include "KrokManager.h"
#include "ScanRun.h"
#include "SqliteAnalysisLibrary.h"
#include "TestSettings.h"
#include "WaveBuilder.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

QString Fixture(const char* name)
{
    return QStringLiteral(TESK_FIXTURE_DIR "/") + QLatin1String(name);
}

// RFC 4180, enough for the scanner's output: the rows by their first field.
QMap<QString, QStringList> ParseCsv(const QByteArray& bytes)
{
    const QString text = QString::fromUtf8(bytes);
    QMap<QString, QStringList> rows;
    QStringList row;
    QString field;
    bool quoted = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('"') && quoted && text.mid(i + 1, 1) == QLatin1String("\""))
            field += text.at(++i);
        else if (c == QLatin1Char('"'))
            quoted = !quoted;
        else if (quoted || (c != QLatin1Char(',') && c != QLatin1Char('\n')))
            field += c;
        else {
            row << field;
            field.clear();
            if (c == QLatin1Char('\n'))
                rows[row[0]] = row, row.clear();
        }
    }
    return rows;
}

std::size_t StoredCount(const QString& library, const QString& folder)
{
    SqliteAnalysisLibrary store(library);
    return store.Open() ? store.KeysIn(LibraryKey::Absolute(folder), true).size() : 0;
}

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

class TestTeskScan final : public QObject
{
    Q_OBJECT

    fixtures::TestSettings settings; // the default library goes to the test's own cache
    QTemporaryDir dir;
    QTemporaryDir scratch;
    QTemporaryDir crashDir;
    QString journal;
    QString file;

    // A journal of its own and one file for each crash-journal test.
    void freshJournal()
    {
        journal = crashDir.filePath(QStringLiteral("cache/analysis-journal"));
        QFile::remove(journal);
        file = crashDir.filePath(QStringLiteral("take.wav"));
        QVERIFY(fixtures::writeSineWav(file, 48000, 2, 4800));
        QVERIFY(QDir().mkpath(crashDir.filePath(QStringLiteral("elsewhere")))); // not scanned below
    }

private slots:
    void initTestCase()
    {
        QVERIFY(QFile::copy(Fixture("cbr128.mp3"), dir.filePath(QStringLiteral("a-tones.mp3"))));
        QVERIFY(QFile::copy(Fixture("tones-stereo.wav"), dir.filePath("c, \"quoted\".wav")));
        QVERIFY(fixtures::WriteBytes(dir.filePath(QStringLiteral("b-broken.mp3")), "liner notes"));
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("sub")));
        QVERIFY(QFile::copy(Fixture("tones-mono.ogg"), dir.filePath(QStringLiteral("sub/d.ogg"))));
        QVERIFY(QFile::copy(Fixture("tones-mono.wav"), dir.filePath(".e-hidden.wav")));
        QVERIFY(fixtures::WriteBytes(dir.filePath(QStringLiteral("ucs.csv")),
                                     "Category,SubCategory,CatID,Explanations\n"
                                     "DOORS,WOOD,DOORWood,\"Wooden doors, gates\"\n"));
        fixtures::Bext bext;
        bext.description = "Old oak door, slow creak, \"heavy\"";
        bext.originator = "Field Kit";
        bext.originationDate = "2023-04-01";
        bext.originationTime = "12:30:05";
        bext.timeReference = 48000ull * 3600;
        const std::string ixml = "<BWFXML><SCENE>12A</SCENE><TAKE>3</TAKE><SPEED><TIMECODE_RATE>"
                                 "25/1</TIMECODE_RATE></SPEED></BWFXML>";
        QVERIFY(fixtures::writeFile(
            dir.filePath(QStringLiteral("DOORWood_Creak Open_JD_FKIT_01.wav")),
            fixtures::wavWith(
                {fixtures::chunk("bext", fixtures::bextBody(bext)),
                 fixtures::chunk("iXML", fixtures::text(ixml)),
                 fixtures::chunk("LIST", fixtures::infoList({{"ICMT", "line one\r\nline two"}})),
                 fixtures::chunk("acid", fixtures::acidBody(2, 57, 8, 4, 4, 92.5f))})));
    }

    // The hidden file is listed, the sub-folder's is not; names with commas and
    // quotes survive the quoting; metadata and the category list fill their columns.
    void csvRows()
    {
        const ScanRun run = RunScan(
            {"--hidden", "--ucs-list", dir.filePath(QStringLiteral("ucs.csv")), dir.path()});
        QCOMPARE(run.exitCode, 0);
        const QMap<QString, QStringList> rows = ParseCsv(run.out);
        QCOMPARE(rows.value("File").join(','),
                 QStringLiteral("File,Full Path,Size,Modify Time,Format,Sampling Rate,Channels,"
                                "Samples,BIT,Duration,Plots,Loudness,Loops,Sort Specification,"
                                "Sort Comments,Description,Title/Name,Artist/Originator,Comment,"
                                "Date,Tempo/Key,CatID,Category,FX Name,Creator,Source"));
        QCOMPARE(rows.size(), 1 + 5);
        for (const QStringList& row : rows)
            QCOMPARE(row.size(), 26);
        const QStringList mp3 = rows.value(QStringLiteral("a-tones.mp3"));
        QCOMPARE(mp3.value(1), dir.filePath(QStringLiteral("a-tones.mp3")));
        QCOMPARE(mp3.value(2),
                 QStringLiteral("%1 KB").arg(QFileInfo(mp3.value(1)).size() / 1024.0, 0, 'f', 2));
        QVERIFY(QDateTime::fromString(mp3.value(3), "yyyy/MM/dd HH:mm:ss").isValid());
        QCOMPARE(mp3.mid(4).join('|'),
                 QStringLiteral("MP3|44100|2|220500|128|0:05.000||---|0|||||||||||||"));
        QCOMPARE(rows.value("c, \"quoted\".wav").mid(4, 5).join('|'),
                 QStringLiteral("wav|44100|2|220500|16"));
        QCOMPARE(rows.value(QStringLiteral("b-broken.mp3")).value(4), QStringLiteral("ERROR"));
        QVERIFY(rows.contains(QStringLiteral(".e-hidden.wav")));
        QCOMPARE(rows.value(QStringLiteral("DOORWood_Creak Open_JD_FKIT_01.wav")).mid(15),
                 (QStringList{"Old oak door, slow creak, \"heavy\"", "12A", "Field Kit",
                              "line one line two", "2023-04-01 12:30:05", "92.5 BPM, A3",
                              "DOORWood", "DOORS-WOOD", "Creak Open", "JD", "FKIT"}));
    }

    // JSON gives the values themselves: the time reference and its timecode,
    // the acid chunk, every part of a UCS name.
    void jsonValues()
    {
        const ScanRun run =
            RunScan({"--json", "--ucs-list", dir.filePath(QStringLiteral("ucs.csv")), dir.path()});
        QCOMPARE(run.status(), QByteArray("0 "));
        QJsonObject row;
        for (const QJsonValue v : QJsonDocument::fromJson(run.out).array())
            if (v["path"].toString().endsWith(QLatin1String("FKIT_01.wav")))
                row = v.toObject();
        const QJsonObject m = row["metadata"].toObject();
        QCOMPARE(m["timeReference"].toDouble(), 48000.0 * 3600);
        QCOMPARE(m["timecode"].toString(), QStringLiteral("01:00:00:00"));
        QCOMPARE(m["acid"].toObject(), (QJsonObject{{"oneShot", false},
                                                    {"rootNote", 57},
                                                    {"beats", 8},
                                                    {"meterNumerator", 4},
                                                    {"meterDenominator", 4},
                                                    {"tempo", 92.5}}));
        QCOMPARE(row["ucs"].toObject(), (QJsonObject{{"catId", "DOORWood"},
                                                     {"category", "DOORS"},
                                                     {"subCategory", "WOOD"},
                                                     {"fxName", "Creak Open"},
                                                     {"creatorId", "JD"},
                                                     {"sourceId", "FKIT"},
                                                     {"userData", "01"}}));
    }

    void usageErrors_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("says");
        QTest::newRow("missing folder") << QStringList{dir.filePath("nowhere")} << QByteArray();
        QTest::newRow("a file") << QStringList{dir.filePath("ucs.csv")} << QByteArray();
        QTest::newRow("bad option") << QStringList{"--frobnicate", dir.path()} << QByteArray();
        QTest::newRow("no folder") << QStringList{"--json"} << QByteArray();
        QTest::newRow("two folders") << QStringList{dir.path(), dir.path()} << QByteArray();
        QTest::newRow("no threads")
            << QStringList{"--threads", "0", dir.path()} << QByteArray("--threads");
        QTest::newRow("root without a name")
            << QStringList{"--root", "=/x", dir.path()} << QByteArray("=/x");
        QTest::newRow("library and no library")
            << QStringList{"--library", dir.filePath("x.sqlite"), "--no-library", dir.path()}
            << QByteArray();
        // A list that is no list stops the scan before it starts.
        QTest::newRow("not a category list")
            << QStringList{"--ucs-list", Fixture("tones-mono.wav"), dir.path()}
            << QByteArray("CatID");
        QTest::newRow("password in the URL")
            << QStringList{"--library", "postgresql://a:secret@db/sfx", dir.path()}
            << QByteArray("password");
    }

    void usageErrors()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, says);
        const ScanRun run = RunScan(arguments);
        QCOMPARE(run.exitCode, 2);
        QVERIFY(run.out.isEmpty());
        QVERIFY(run.err.startsWith("tesk-scan: ") && run.err.contains(says));
    }

    void killedMidWriteLosesAtMostABatch()
    {
        const QString library = scratch.filePath(QStringLiteral("killed.sqlite"));
        const QString folder = scratch.filePath(QStringLiteral("killed"));
        for (int i = 0; i < 2000; ++i)
            QVERIFY(fixtures::writeSineWav(QStringLiteral("%1/t%2.wav").arg(folder).arg(i), 48000,
                                           1, 4800, 0.1 + 0.0004 * i));
        QProcess process;
        process.start(QStringLiteral(TESK_SCAN_PATH), {"-l", "--library", library, folder});
        QByteArray seen;
        while (seen.count('\n') < 900 && process.state() != QProcess::NotRunning) {
            process.waitForReadyRead(50);
            seen += process.readAllStandardOutput();
        }
        QVERIFY2(process.state() == QProcess::Running, "the scan ended before it could be killed");
        ::kill(pid_t(process.processId()), SIGKILL);
        QVERIFY(process.waitForFinished(10000));
        const int printed = seen.count('\n') - 1;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), "check");
            db.setDatabaseName(library);
            QSqlQuery q(db);
            QVERIFY(db.open() && q.exec(QStringLiteral("PRAGMA integrity_check")) && q.next());
            QCOMPARE(q.value(0).toString(), QStringLiteral("ok"));
        }
        QSqlDatabase::removeDatabase(QStringLiteral("check"));
        // Rows queued for the batch being gathered, and the pipe's buffer, are all that is lost.
        const int stored = int(StoredCount(library, folder));
        QVERIFY2(stored >= printed - 2 * int(AnalysisLibraryThread::kBatchRows),
                 qPrintable(QStringLiteral("%1 stored, %2 printed").arg(stored).arg(printed)));

        // Two scans write the rest at once. One file caught alone in its
        // analysis is named by the journal and shows as failed; several caught
        // at once are analysed again, alone.
        const auto again = RunScansAtOnce(
            {{"-l", "--library", library, folder}, {"-l", "--library", library, folder}});
        QCOMPARE(again[0].status() + again[1].status(), QByteArray("0 0 "));
        const int named = again[0].out.count(",ERROR,");
        QVERIFY2(named <= 1, again[0].out.constData());
        SqliteAnalysisLibrary store(library);
        QVERIFY(store.Open());
        const LibraryKeys keys = store.KeysIn(LibraryKey::Absolute(folder), true);
        QCOMPARE(keys.size(), std::size_t(2000 - named));
        for (const auto& row : store.Fetch(keys))
            QVERIFY(row && row->stamp == ReadFileStamp(row->key.path) &&
                    row->info.measuredParts == AnalysisPartLoudness);
    }

    // The crash journal: an analysis that never ended (its process died) marks
    // the file failed until it changes, for the registry and for tesk-scan
    // alike; a process that is still running keeps its entries.
    void deadProcessMarksItsFileFailed()
    {
        freshJournal();
        const pid_t child = CrashDuringAnalysis(journal, {file}, true);
        const QString ended = crashDir.filePath(QStringLiteral("elsewhere/ended.wav"));
        QVERIFY(child > 0 && fixtures::writeSineWav(ended, 48000, 1, 480));
        {
            AnalysisJournal j;
            QVERIFY(j.open(journal));
            j.end(j.begin(ended.toStdString(), StampOf(ended).first, StampOf(ended).second));
        }
        QCOMPARE(EntryOf(journal, file), Entry::Clear); // its process still runs
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        QCOMPARE(EntryOf(journal, ended), Entry::Clear); // an analysis that ends leaves nothing
        QCOMPARE(EntryOf(journal, file), Entry::Failed);
        QCOMPARE(EntryOf(journal, file), Entry::Failed); // across starts, not only the first
        QCOMPARE(EntryOf(journal, file, true), Entry::Clear);
        QCOMPARE(EntryOf(journal, file), Entry::Clear); // a changed file is forgotten for good
    }

    // Two in flight when the process died: neither is known to be the
    // culprit, so both are suspects, analysed again alone. One that takes the
    // process down on its own then is named, and shows as failed until it
    // changes; one that passes is cleared.
    void registryAnalysesSuspectsAgainAlone()
    {
        freshJournal();
        const QString other = crashDir.filePath(QStringLiteral("elsewhere/other.wav"));
        QVERIFY(fixtures::writeSineWav(other, 44100, 1, 4410));
        CrashDuringAnalysis(journal, {file, other});
        QCOMPARE(EntryOf(journal, file), Entry::Suspect);
        CrashDuringAnalysis(journal, {file});
        QCOMPARE(EntryOf(journal, file), Entry::Failed);
        QCOMPARE(EntryOf(journal, other), Entry::Suspect);
        KrokManager registry;
        registry.SetJournalPath(journal);
        registry.Initialize();
        AudioFileInfo info;
        registry.AnalyzeFile(other);
        QVERIFY(registry.FindFileInfo(other, info));
        QCOMPARE(info.samples, 4410);
        registry.AnalyzeFile(file);
        QVERIFY(registry.FindFileInfo(file, info));
        QCOMPARE(info.errorText, std::string(kErrorAnalysisCrashed));
        QVERIFY(info.isValid == 0 && info.fileSize == StampOf(file).first);
        QVERIFY(fixtures::writeSineWav(file, 48000, 2, 9600));
        registry.AnalyzeFile(file);
        QVERIFY(registry.FindFileInfo(file, info));
        QCOMPARE(info.samples, 9600);
        registry.Finalize();
        QCOMPARE(EntryOf(journal, other), Entry::Clear);
    }

    void scannerHonoursTheSameJournal()
    {
        freshJournal();
        const QString cache = crashDir.filePath(QStringLiteral("xdg"));
        CrashDuringAnalysis(cache + QStringLiteral("/Orvane Works/Tesk/analysis-journal"), {file});
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_CACHE_HOME"), cache);
        const ScanRun run = RunScan({QStringLiteral("--json"), crashDir.path()}, env);
        QCOMPARE(run.exitCode, 0);
        const QJsonArray rows = QJsonDocument::fromJson(run.out).array();
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows[0]["isValid"].toInt(), 0);
        QCOMPARE(rows[0]["errorText"].toString(), QString::fromLatin1(kErrorAnalysisCrashed));
    }
};

QTEST_GUILESS_MAIN(TestTeskScan)
#include "tst_teskscan.moc"
