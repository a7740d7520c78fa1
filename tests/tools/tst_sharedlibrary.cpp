// A studio's shared analysis library on a real PostgreSQL server, started for
// this run in a temporary cluster: two workstations that mount the same files
// in different places, writers at once, a server that stops mid-scan, and the
// servers that refuse (a wrong password, no right to create tables...).
#include "FallbackAnalysisLibrary.h"
#include "FileMetadata.h"
#include "KrokManager.h"
#include "LibraryRowSample.h"
#include "PostgresAnalysisLibrary.h"
#include "PostgresCluster.h"
#include "ScanRun.h"
#include "TeskManager.h"
#include "TestSettings.h"
#include "WaveBuilder.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>
#include <memory>

namespace {

const QString kUser = QStringLiteral("studio");
const QString kVisitor = QStringLiteral("visitor");
const QString kCannot = QStringLiteral("Cannot use the shared analysis library");

// What the detail worker does for a list: one lookup, then the misses.
void Scan(KrokManager& registry, const QStringList& files)
{
    registry.RecallFromLibrary(files);
    for (const QString& file : files)
        if (!registry.IsAnalyzed(file))
            registry.AnalyzeFile(file);
    registry.FlushLibrary();
}

} // namespace

class TestSharedLibrary final : public QObject
{
    Q_OBJECT

public:
    explicit TestSharedLibrary(fixtures::PostgresCluster& server)
        : cluster(server)
    {}

private:
    fixtures::PostgresCluster& cluster;
    fixtures::TestSettings settings;
    QTemporaryDir dir;
    int databases = 0;

    LibraryServer server(const QString& database, const QString& user = kUser) const
    {
        return {cluster.Host(), cluster.Port(), database, user};
    }
    QString newDatabase()
    {
        const QString name = QStringLiteral("sfx%1").arg(++databases);
        return cluster.Sql(QStringLiteral("CREATE DATABASE %1 OWNER %2").arg(name, kUser))
                   ? name
                   : QString();
    }
    QString sql(const QString& query, const QString& database)
    {
        QString out;
        return cluster.Sql(query, database, &out) ? out : QStringLiteral("(failed)");
    }
    QString count(const QString& database)
    {
        return sql(QStringLiteral("SELECT count(*) FROM file_analysis"), database);
    }
    int outboxRows(const QString& name, const LibraryKey& under)
    {
        SqliteAnalysisLibrary outbox(name);
        return outbox.Open() ? int(outbox.KeysIn(under, true).size()) : -1;
    }
    // The server with this computer's library and outbox in the test's files.
    std::unique_ptr<FallbackAnalysisLibrary> shared(const LibraryServer& to, const QString& name,
                                                    int retryMs = 30000)
    {
        FallbackAnalysisLibrary::Options options;
        options.retryDelay = std::chrono::milliseconds(retryMs);
        return std::make_unique<FallbackAnalysisLibrary>(
            std::make_unique<PostgresAnalysisLibrary>(to),
            std::make_unique<SqliteAnalysisLibrary>(dir.filePath(name + "-local")),
            std::make_unique<SqliteAnalysisLibrary>(dir.filePath(name + "-outbox")), options);
    }
    // `count` mono WAV files in `folder`, and a symbolic link to the folder
    // standing for another workstation's mount point of the share.
    QStringList makeFiles(const QString& folder, int count, QString* otherMount = nullptr)
    {
        QStringList files;
        for (int i = 0; i < count; ++i) {
            files << QStringLiteral("%1/take%2.wav").arg(folder).arg(i, 3, 10, QLatin1Char('0'));
            if (!fixtures::writeSineWav(files.last(), 48000, 1, 4800, 0.1 + 0.002 * i))
                return {};
        }
        if (otherMount && !QFile::link(folder, *otherMount = folder + QStringLiteral("-mount")))
            return {};
        return files;
    }
    bool writeWorkstationSettings(const QString& rootPath, const QString& database)
    {
        return settings.writeIni(
            QStringLiteral(
                "[General]\nRootPath=%1\nrecursiveFlag=true\nanalysisLibraryServer=true\n"
                "analysisLibraryHost=%2\nanalysisLibraryDatabase=%3\n"
                "analysisLibraryUser=studio\nanalysisLibraryRoots=SFX=%1/lib\n")
                .arg(rootPath, cluster.Host(), database)
                .toUtf8());
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(cluster.AddUser(kUser, QStringLiteral("pw1")) &&
                     cluster.AddUser(kVisitor, QStringLiteral("pw2")),
                 qPrintable(cluster.Error()));
        // Every connection of this run, tesk-scan's included, finds its password here.
        const QString passwords = cluster.WritePasswordFile(
            QStringLiteral("pgpass"), {kUser, QStringLiteral("pw1"), kVisitor, "pw2"});
        qputenv("PGPASSFILE", QFile::encodeName(passwords));
        qunsetenv("PGPASSWORD");
    }

    void twoWorkstationsShareRows()
    {
        // Workstation A sees the share at share/, B through another mount
        // point; both name its lib/ folder SFX. loose.wav lies outside the root.
        const QString database = newDatabase();
        const QString share = dir.filePath(QStringLiteral("share"));
        QString mount;
        const QStringList files = makeFiles(share + QStringLiteral("/lib/sub"), 3) +
                                  makeFiles(share + QStringLiteral("/lib"), 12);
        QVERIFY(fixtures::writeSineWav(share + QStringLiteral("/loose.wav"), 48000, 1, 4800));
        using namespace fixtures;
        QVERIFY(writeFile(share + QStringLiteral("/lib/door.wav"),
                          riff({chunk("fmt ", fmtBody(1, 1, 48000, 16)),
                                chunk("bext", bextBody("Old oak door", 0)),
                                chunk("data", pcm16(std::vector<int>(4800, 999)))})));
        QVERIFY(QFile::link(share, mount = share + QStringLiteral("-b")));

        QVERIFY(writeWorkstationSettings(share, database));
        {
            TeskManager first;
            QSignalSpy ends(&first, &TeskManager::SigEndGetDetailInfo);
            QSignalSpy status(&first, &TeskManager::SigSetStatusMessage);
            first.ApplyStoredSettings();
            QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, 60000);
            const QString told = fixtures::SpiedTexts(status).join(QLatin1Char('\n'));
            QVERIFY2(!told.contains(QStringLiteral("shared analysis library")), qPrintable(told));
        }
        QCOMPARE(sql(QStringLiteral("SELECT string_agg(path, ',' ORDER BY path) FROM file_analysis"
                                    " WHERE root = 'SFX' AND path LIKE 'sub/%'"),
                     database),
                 QStringLiteral("sub/take000.wav,sub/take001.wav,sub/take002.wav"));
        QCOMPARE(count(database), QStringLiteral("17"));
        // A value no analysis gives shows which records came from the server.
        QVERIFY(cluster.Sql(QStringLiteral("UPDATE file_analysis SET sampling_rate = 12345"),
                            database));

        QVERIFY(writeWorkstationSettings(mount, database));
        TeskManager second;
        QSignalSpy ends(&second, &TeskManager::SigEndGetDetailInfo);
        second.ApplyStoredSettings();
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, 60000);
        KrokManager* registry = second.GetKrokManager();
        for (const QString& file : files)
            QCOMPARE(registry->GetFileInfo(mount + file.mid(share.size())).samplingRate, 12345);
        const AudioFileInfo door = registry->GetFileInfo(mount + QStringLiteral("/lib/door.wav"));
        QVERIFY(door.samplingRate == 12345 && door.metadata);
        QCOMPARE(door.metadata->text(MetadataKey::Description), std::string_view("Old oak door"));
        // Outside every root a file is known by its absolute path, which differs here.
        QCOMPARE(registry->GetFileInfo(mount + QStringLiteral("/loose.wav")).samplingRate, 48000);
        registry->FlushLibrary();
        QCOMPARE(count(database), QStringLiteral("18"));
    }

    void writersAtOnceThroughTeskScan()
    {
        // Two workstations scan the same files through their own mount points
        // while a third scans another folder, all at the same time.
        const QString database = newDatabase();
        const QString share = dir.filePath(QStringLiteral("share-w"));
        QString mount;
        const QStringList files = makeFiles(share, 300, &mount);
        QVERIFY(!files.isEmpty() && !makeFiles(share + QStringLiteral("-other"), 300).isEmpty());
        const QStringList library{QStringLiteral("-l"), QStringLiteral("--library"),
                                  cluster.Url(kUser, database)};
        const QList<QStringList> scans{library + QStringList{"--root", "SFX=" + share, share},
                                       library + QStringList{"--root", "SFX=" + mount, mount},
                                       library + QStringList{share + "-other"}};
        for (const ScanRun& run : RunScansAtOnce(scans))
            QCOMPARE(run.status(), QByteArray("0 "));
        QCOMPARE(sql(QStringLiteral("SELECT root, count(*), min(loudness) > -40 FROM file_analysis"
                                    " GROUP BY root ORDER BY root"),
                     database),
                 QStringLiteral("|300|t\nSFX|300|t"));

        // Without its server the scan carries on with this computer's library
        // and says why once; the rows wait in the outbox.
        const ScanRun alone = RunScan({QStringLiteral("--library"),
                                       QStringLiteral("postgresql://studio@/sfx?host=/nonexistent"),
                                       QStringLiteral("--json"), share});
        QCOMPARE(QJsonDocument::fromJson(alone.out).array().size(), 300);
        QCOMPARE(alone.err.count('\n'), 1);
        QVERIFY(alone.err.startsWith(QByteArray("tesk-scan: ") + kCannot.toUtf8()));
        const QString outbox = FallbackAnalysisLibrary::OutboxPath();
        QCOMPARE(outboxRows(outbox, LibraryKey::Absolute(share)), 300);
        // The next scan that reaches the server sends them before it ends.
        QCOMPARE(RunScan(library + QStringList{share + QStringLiteral("-other")}).exitCode, 0);
        QCOMPARE(outboxRows(outbox, LibraryKey::Absolute(share)), 0);
        QCOMPARE(
            sql(QStringLiteral("SELECT count(*) FROM file_analysis WHERE root = ''"), database),
            QStringLiteral("600"));
    }

    void serverStoppedMidScanLosesNothing()
    {
        const QString database = newDatabase();
        const QStringList files = makeFiles(dir.filePath(QStringLiteral("share-s")), 40);
        QStringList problems;
        KrokManager registry;
        registry.Initialize();
        connect(&registry, &KrokManager::SigLibraryProblem, this,
                [&](const QString& text) { problems << text; });
        registry.SetLibrary(
            shared(server(database), QStringLiteral("stopped"), 200),
            LibraryRoots::Parse({"SFX=" + dir.filePath(QStringLiteral("share-s"))}));
        Scan(registry, files.mid(0, 10));
        // A restart between two batches goes unnoticed: a new connection is made.
        QVERIFY2(cluster.Stop() && cluster.Restart(), qPrintable(cluster.Error()));
        Scan(registry, files.mid(10, 10));
        QCOMPARE(count(database), QStringLiteral("20"));
        QCoreApplication::processEvents();
        QCOMPARE(problems, QStringList());

        QVERIFY2(cluster.Stop(), qPrintable(cluster.Error()));
        Scan(registry, files.mid(20));
        QTRY_COMPARE(problems.filter(kCannot).size(), 1);
        const QString outbox = dir.filePath(QStringLiteral("stopped-outbox"));
        QCOMPARE(outboxRows(outbox, {QStringLiteral("SFX"), QString()}), 20);
        QVERIFY2(cluster.Restart(), qPrintable(cluster.Error()));
        QTRY_COMPARE_WITH_TIMEOUT(problems.filter(QStringLiteral("can be reached again")).size(), 1,
                                  30000);
        QTRY_COMPARE_WITH_TIMEOUT(count(database), QStringLiteral("40"), 30000);
        registry.Finalize();
        QCOMPARE(problems.filter(kCannot).size(), 1);
        QCOMPARE(outboxRows(outbox, {QStringLiteral("SFX"), QString()}), 0);
    }

    void refusingServersFallBack_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<int>("port");         // 0: the test's server
        QTest::addColumn<QString>("password"); // PGPASSFILE's USER:PASSWORD, or PGPASSWORD=...
        QTest::addColumn<QString>("setup");    // SQL as the administrator on the database
        QTest::addColumn<QString>("reason");
        const QString failed = QStringLiteral("password authentication failed");
        QTest::newRow("wrong password in the file") << kUser << 0 << "studio:x"
                                                    << "" << failed;
        QTest::newRow("wrong PGPASSWORD") << kUser << 0 << "PGPASSWORD=x"
                                          << "" << failed;
        QTest::newRow("no password") << kUser << 0 << "nobody:x"
                                     << ""
                                     << "no password supplied";
        QTest::newRow("no server there") << kUser << 1 << ""
                                         << ""
                                         << ".s.PGSQL.1";
        QTest::newRow("no right to create tables")
            << kVisitor << 0 << ""
            << ""
            << "no analysis tables yet, and user visitor may not create them";
        QTest::newRow("tables of a newer Tesk")
            << kUser << 0 << ""
            << "SET ROLE studio; CREATE TABLE library_schema (version INTEGER NOT NULL);"
               " INSERT INTO library_schema VALUES (99)"
            << "made by a newer version of Tesk";
    }

    void refusingServersFallBack()
    {
        QFETCH(QString, user);
        QFETCH(int, port);
        QFETCH(QString, password);
        QFETCH(QString, setup);
        QFETCH(QString, reason);
        const QString database = newDatabase();
        QVERIFY(setup.isEmpty() || cluster.Sql(setup, database));
        const char* name = password.startsWith("PGPASSWORD=") ? "PGPASSWORD" : "PGPASSFILE";
        const QByteArray before = qgetenv(name);
        const auto restore =
            qScopeGuard([&] { before.isNull() ? qunsetenv(name) : qputenv(name, before); });
        if (password.startsWith("PGPASSWORD="))
            qputenv(name, password.mid(11).toUtf8());
        else if (!password.isEmpty())
            qputenv(name,
                    QFile::encodeName(cluster.WritePasswordFile(database, password.split(':'))));

        LibraryServer to = server(database, user);
        to.port = port ? port : to.port;
        auto library = shared(to, database, 0);
        QVERIFY(library->Open() && !library->IsOnServer());
        const QString problem = library->TakeProblem();
        QVERIFY2(problem.startsWith(kCannot) && problem.contains(reason), qPrintable(problem));
        // Rows go to this computer's library and wait for the server; trying
        // again, as the library thread does when it is time, tells nothing new.
        const LibraryRow row =
            fixtures::FullLibraryRow(LibraryKey::Absolute(QStringLiteral("/sounds/a.wav")));
        QVERIFY(library->Store({row}) && library->Fetch({row.key}).front());
        library->Maintain();
        QVERIFY(!library->IsOnServer());
        QCOMPARE(library->TakeProblem(), QString());
        library->Close();
        SqliteAnalysisLibrary local(dir.filePath(database + QStringLiteral("-local")));
        QVERIFY(local.Open() && local.Fetch({row.key}).front());
    }
};

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    fixtures::PostgresCluster cluster;
    if (!cluster.Start()) { // CTest shows the run as skipped (77), not passed
        std::fprintf(stderr, "SKIPPED: no PostgreSQL server for these tests: %s\n",
                     qPrintable(cluster.Error()));
        return 77;
    }
    TestSharedLibrary test(cluster);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_sharedlibrary.moc"
