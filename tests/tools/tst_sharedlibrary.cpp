// A studio's shared analysis library on a real PostgreSQL server, started for
// this run in a temporary cluster: two workstations that mount the same files
// in different places, writers at once, a server that stops mid-scan, and the
// servers that refuse (a wrong password, no right to create tables...).
#include "FallbackAnalysisLibrary.h"
#include "KrokManager.h"
#include "LibraryRowSample.h"
#include "PostgresAnalysisLibrary.h"
#include "PostgresCluster.h"
#include "TeskManager.h"
#include "TestSettings.h"
#include "WaveBuilder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>
#include <QProcess>
#include <QSettings>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>
#include <memory>

namespace {

// CTest shows the run as skipped, not passed, when there is no server.
constexpr int kSkipped = 77;

const QString kUser = QStringLiteral("studio");
const QString kPassword = QStringLiteral("studio-pw");
const QString kVisitor = QStringLiteral("visitor");
const QString kVisitorPassword = QStringLiteral("visitor-pw");

struct Run
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

Run Scan(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral(TESK_SCAN_PATH), arguments);
    Run run;
    if (!process.waitForFinished(120000))
        return run;
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

// What a library tells the user, gathered on its thread.
class Problems final
{
public:
    void Watch(KrokManager& registry)
    {
        QObject::connect(
            &registry, &KrokManager::SigLibraryProblem, &registry,
            [this](const QString& text) {
                const QMutexLocker lock(&mutex);
                texts << text;
            },
            Qt::DirectConnection);
    }
    int Count(const QString& fragment)
    {
        const QMutexLocker lock(&mutex);
        return int(std::count_if(texts.cbegin(), texts.cend(),
                                 [&](const QString& t) { return t.contains(fragment); }));
    }
    QString All()
    {
        const QMutexLocker lock(&mutex);
        return texts.join(QStringLiteral(" | "));
    }

private:
    QMutex mutex;
    QStringList texts;
};

// Sets an environment variable for a scope (or removes it when `value` is null).
class EnvironmentValue final
{
public:
    EnvironmentValue(const char* variableName, const QByteArray& value)
        : name(variableName)
        , had(qEnvironmentVariableIsSet(variableName))
        , before(qgetenv(variableName))
    {
        if (value.isNull())
            qunsetenv(name);
        else
            qputenv(name, value);
    }
    ~EnvironmentValue()
    {
        if (had)
            qputenv(name, before);
        else
            qunsetenv(name);
    }
    EnvironmentValue(const EnvironmentValue&) = delete;
    EnvironmentValue& operator=(const EnvironmentValue&) = delete;

private:
    const char* name;
    bool had;
    QByteArray before;
};

// What the detail worker does for a list: one lookup, then the misses. The
// files taken from the library come back.
QStringList Scan(KrokManager& registry, const QStringList& files)
{
    registry.RecallFromLibrary(files);
    QStringList recalled;
    for (const QString& file : files) {
        if (registry.IsAnalyzed(file))
            recalled << file;
        else
            registry.AnalyzeFile(file);
    }
    return recalled;
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

    // A new database for one test, owned by the studio's user.
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

    // The shared library with this computer's library and outbox in files of
    // the test's own, trying the server again after `retryMs`.
    std::unique_ptr<FallbackAnalysisLibrary> shared(const LibraryServer& to, const QString& name,
                                                    int retryMs = 30000)
    {
        FallbackAnalysisLibrary::Options options;
        options.retryDelay = std::chrono::milliseconds(retryMs);
        return std::make_unique<FallbackAnalysisLibrary>(
            std::make_unique<PostgresAnalysisLibrary>(to),
            std::make_unique<SqliteAnalysisLibrary>(localPath(name)),
            std::make_unique<SqliteAnalysisLibrary>(outboxPath(name)), options);
    }
    QString localPath(const QString& name) const
    {
        return dir.filePath(name + QStringLiteral("-local.sqlite"));
    }
    QString outboxPath(const QString& name) const
    {
        return dir.filePath(name + QStringLiteral("-outbox.sqlite"));
    }

    // `count` mono 48 kHz WAV files in `folder` (made when missing).
    QStringList makeFiles(const QString& folder, int count)
    {
        QStringList files;
        for (int i = 0; i < count; ++i) {
            files << QStringLiteral("%1/take%2.wav").arg(folder).arg(i, 3, 10, QLatin1Char('0'));
            if (!fixtures::writeSineWav(files.last(), 48000, 1, 4800, 0.1 + 0.002 * i))
                return {};
        }
        return files;
    }

    // The same files as another workstation sees them: through a symbolic
    // link standing for a mount point elsewhere.
    QString otherMount(const QString& folder, const QString& name)
    {
        const QString link = dir.filePath(name);
        return QFile::link(folder, link) ? link : QString();
    }

    static QStringList Moved(const QStringList& files, const QString& from, const QString& to)
    {
        QStringList moved;
        for (const QString& file : files)
            moved << to + file.mid(from.size());
        return moved;
    }

    void writeWorkstationSettings(const QString& rootPath, const QString& database,
                                  const QString& rootEntry)
    {
        QSettings ini(settings.iniPath(), QSettings::IniFormat);
        ini.clear();
        ini.setValue(QStringLiteral("RootPath"), rootPath);
        ini.setValue(QStringLiteral("recursiveFlag"), true);
        ini.setValue(QStringLiteral("analysisLibraryServer"), true);
        ini.setValue(QStringLiteral("analysisLibraryHost"), cluster.Host());
        ini.setValue(QStringLiteral("analysisLibraryPort"), cluster.Port());
        ini.setValue(QStringLiteral("analysisLibraryDatabase"), database);
        ini.setValue(QStringLiteral("analysisLibraryUser"), kUser);
        ini.setValue(QStringLiteral("analysisLibraryRoots"), QStringList{rootEntry});
        ini.sync();
    }

private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        QVERIFY2(cluster.AddUser(kUser, kPassword), qPrintable(cluster.Error()));
        QVERIFY2(cluster.AddUser(kVisitor, kVisitorPassword), qPrintable(cluster.Error()));
        // Every connection of this run, tesk-scan's included, finds its password here.
        const QString passwords = cluster.WritePasswordFile(
            QStringLiteral("pgpass"), {kUser, kPassword, kVisitor, kVisitorPassword});
        QVERIFY(!passwords.isEmpty());
        qputenv("PGPASSFILE", QFile::encodeName(passwords));
        qunsetenv("PGPASSWORD");
    }

    void rowsKeepEveryFieldOnTheServer()
    {
        const QString database = newDatabase();
        PostgresAnalysisLibrary library(server(database));
        QVERIFY2(library.Open(), qPrintable(library.Failure()));
        QVERIFY(library.IsWritable());
        QCOMPARE(sql(QStringLiteral("SELECT version FROM library_schema"), database),
                 QString::number(LibrarySql::kSchemaVersion));

        const LibraryRow full =
            fixtures::FullLibraryRow({QStringLiteral("SFX"), QStringLiteral("Ä 音/take,1.wav")});
        LibraryRow deep = full;
        deep.key.path = QStringLiteral("Ä 音/deeper/x.wav");
        LibraryRow loose = full;
        loose.key = LibraryKey::Absolute(QStringLiteral("/home/ann/x.wav"));
        loose.info.metadata = nullptr;
        loose.info.isMultiPlotValid = 0;
        loose.info.multiPlot = {};
        QVERIFY2(library.Store({full, deep, loose}), qPrintable(library.Failure()));

        // A second connection, as another workstation, reads what the first wrote.
        PostgresAnalysisLibrary other(server(database));
        QVERIFY(other.Open());
        const LibraryRows rows = other.Fetch(
            {loose.key, LibraryKey::Absolute(full.key.path), full.key, {QString(), QString()}});
        QCOMPARE(int(rows.size()), 4);
        QVERIFY(rows[0] && !rows[1] && rows[2] && !rows[3]);
        fixtures::CompareLibraryRows(*rows[2], full);
        if (QTest::currentTestFailed())
            return;
        fixtures::CompareLibraryRows(*rows[0], loose);
        if (QTest::currentTestFailed())
            return;

        const LibraryKey folder{QStringLiteral("SFX"), QStringLiteral("Ä 音")};
        QCOMPARE(int(other.KeysIn(folder, false).size()), 1);
        QCOMPARE(int(other.KeysIn(folder, true).size()), 2);
        QCOMPARE(int(other.KeysIn({QStringLiteral("SFX"), QString()}, true).size()), 2);
        QVERIFY(other.Remove({full.key}));
        QVERIFY(!library.Fetch({full.key}).front());
        QVERIFY(library.Clear());
        QCOMPARE(sql(QStringLiteral("SELECT count(*) FROM file_analysis"), database),
                 QStringLiteral("0"));
    }

    void twoWorkstationsShareRows()
    {
        // Workstation A sees the share at share/, B through another mount
        // point; both name its lib/ folder SFX. loose.wav lies outside the root.
        const QString database = newDatabase();
        const QString share = dir.filePath(QStringLiteral("share-a"));
        const QStringList files = makeFiles(share + QStringLiteral("/lib"), 12) +
                                  makeFiles(share + QStringLiteral("/lib/sub"), 3);
        QVERIFY(fixtures::writeSineWav(share + QStringLiteral("/loose.wav"), 48000, 1, 4800));
        const QString mount = otherMount(share, QStringLiteral("mount-b"));
        QVERIFY(!mount.isEmpty());

        writeWorkstationSettings(share, database,
                                 QStringLiteral("SFX=") + share + QStringLiteral("/lib"));
        {
            TeskManager first;
            QSignalSpy ends(&first, &TeskManager::SigEndGetDetailInfo);
            QSignalSpy status(&first, &TeskManager::SigSetStatusMessage);
            first.ApplyStoredSettings();
            QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, 60000);
            QVERIFY(first.GetAnalysisLibrarySettings().onServer);
            const QString told = fixtures::SpiedTexts(status).join(QLatin1Char('\n'));
            QVERIFY2(!told.contains(QStringLiteral("shared analysis library")), qPrintable(told));
        }
        QCOMPARE(
            sql(QStringLiteral("SELECT count(*) FROM file_analysis WHERE root = 'SFX'"), database),
            QStringLiteral("15"));
        QCOMPARE(sql(QStringLiteral("SELECT path FROM file_analysis WHERE root = 'SFX'"
                                    " ORDER BY path LIMIT 1"),
                     database),
                 QStringLiteral("sub/take000.wav"));
        // Values no analysis gives show which records came from the server.
        QVERIFY(cluster.Sql(QStringLiteral("UPDATE file_analysis SET sampling_rate = 12345"),
                            database));

        writeWorkstationSettings(mount, database,
                                 QStringLiteral("SFX=") + mount + QStringLiteral("/lib"));
        TeskManager second;
        QSignalSpy ends(&second, &TeskManager::SigEndGetDetailInfo);
        second.ApplyStoredSettings();
        QTRY_COMPARE_WITH_TIMEOUT(ends.count(), 1, 60000);
        KrokManager* registry = second.GetKrokManager();
        for (const QString& file : Moved(files, share, mount))
            QCOMPARE(registry->GetFileInfo(file).samplingRate, 12345);
        // Outside every root a file is known by its absolute path, which differs here.
        QCOMPARE(registry->GetFileInfo(mount + QStringLiteral("/loose.wav")).samplingRate, 48000);
        registry->FlushLibrary();
        QCOMPARE(
            sql(QStringLiteral("SELECT count(*) FROM file_analysis WHERE root = ''"), database),
            QStringLiteral("2"));
    }

    void writersAtOnceThroughTeskScan()
    {
        // Two workstations scan the same files through their own mount points
        // while a third scans another folder, all at the same time.
        const QString database = newDatabase();
        const QString share = dir.filePath(QStringLiteral("share-w"));
        const QStringList files = makeFiles(share, 300);
        const QStringList others = makeFiles(dir.filePath(QStringLiteral("other-w")), 300);
        QVERIFY(!files.isEmpty() && !others.isEmpty());
        const QString mount = otherMount(share, QStringLiteral("mount-w"));
        const QString url = cluster.Url(kUser, database);
        const QList<QStringList> scans{
            {QStringLiteral("--root"), QStringLiteral("SFX=") + share, share},
            {QStringLiteral("--root"), QStringLiteral("SFX=") + mount, mount},
            {dir.filePath(QStringLiteral("other-w"))},
        };
        QList<QProcess*> processes;
        for (const QStringList& scan : scans) {
            auto* process = new QProcess(this);
            process->setStandardOutputFile(QProcess::nullDevice());
            process->start(QStringLiteral(TESK_SCAN_PATH),
                           QStringList{QStringLiteral("-l"), QStringLiteral("--library"), url} +
                               scan);
            processes << process;
        }
        for (QProcess* process : processes) {
            QVERIFY(process->waitForFinished(120000));
            QCOMPARE(process->exitCode(), 0);
            QCOMPARE(process->readAllStandardError(), QByteArray());
            delete process;
        }
        QCOMPARE(sql(QStringLiteral("SELECT root, count(*) FROM file_analysis GROUP BY root"
                                    " ORDER BY root"),
                     database),
                 QStringLiteral("|300\nSFX|300"));
        PostgresAnalysisLibrary library(server(database));
        QVERIFY(library.Open());
        LibraryKeys keys;
        for (const QString& file : files)
            keys.push_back({QStringLiteral("SFX"), QFileInfo(file).fileName()});
        const LibraryRows rows = library.Fetch(keys);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            QVERIFY(rows[i] && rows[i]->stamp == ReadFileStamp(files.at(int(i))));
            QCOMPARE(rows[i]->info.measuredParts, int(AnalysisPartLoudness));
            QVERIFY(rows[i]->info.loudness > -40.0f);
        }

        // A later scan through the other mount point reads the server's rows.
        QVERIFY(cluster.Sql(QStringLiteral("UPDATE file_analysis SET sampling_rate = 12345"),
                            database));
        const Run again =
            Scan({QStringLiteral("--json"), QStringLiteral("-l"), QStringLiteral("--library"), url,
                  QStringLiteral("--root"), QStringLiteral("SFX=") + mount, mount});
        QCOMPARE(again.exitCode, 0);
        QCOMPARE(again.err, QByteArray());
        const QJsonArray printed = QJsonDocument::fromJson(again.out).array();
        QCOMPARE(printed.size(), 300);
        for (const QJsonValue& entry : printed)
            QCOMPARE(entry.toObject().value(QStringLiteral("samplingRate")).toInt(), 12345);
    }

    void serverStoppedMidScanLosesNothing()
    {
        const QString database = newDatabase();
        const QString share = dir.filePath(QStringLiteral("share-s"));
        const QStringList files = makeFiles(share, 40);
        QVERIFY(!files.isEmpty());
        const QString root = QStringLiteral("SFX=") + share;
        Problems problems;
        KrokManager registry;
        registry.Initialize();
        problems.Watch(registry);
        registry.SetLibrary(shared(server(database), QStringLiteral("stopped"), 200),
                            LibraryRoots::Parse({root}));
        Scan(registry, files.mid(0, 10));
        registry.FlushLibrary();
        // A restart between two batches goes unnoticed: a new connection is made.
        QVERIFY2(cluster.Stop() && cluster.Restart(), qPrintable(cluster.Error()));
        Scan(registry, files.mid(10, 10));
        registry.FlushLibrary();
        QCOMPARE(sql(QStringLiteral("SELECT count(*) FROM file_analysis"), database),
                 QStringLiteral("20"));
        QCOMPARE(problems.All(), QString());

        QVERIFY2(cluster.Stop(), qPrintable(cluster.Error()));
        Scan(registry, files.mid(20));
        registry.FlushLibrary();
        QCOMPARE(problems.Count(QStringLiteral("Cannot use the shared analysis library")), 1);
        {
            // The rows wait in the outbox, and this computer's library has them.
            SqliteAnalysisLibrary outbox(outboxPath(QStringLiteral("stopped")));
            QVERIFY(outbox.Open());
            QCOMPARE(int(outbox.KeysIn({QStringLiteral("SFX"), QString()}, true).size()), 20);
            KrokManager meanwhile;
            meanwhile.Initialize();
            Problems told;
            told.Watch(meanwhile);
            meanwhile.SetLibrary(shared(server(database), QStringLiteral("stopped")),
                                 LibraryRoots::Parse({root}));
            QCOMPARE(Scan(meanwhile, files.mid(20)), files.mid(20));
            meanwhile.Finalize();
            QCOMPARE(told.Count(QStringLiteral("Cannot use the shared analysis library")), 1);
        }

        QVERIFY2(cluster.Restart(), qPrintable(cluster.Error()));
        QElapsedTimer clock;
        clock.start();
        while (sql(QStringLiteral("SELECT count(*) FROM file_analysis"), database) !=
                   QStringLiteral("40") &&
               clock.elapsed() < 30000)
            QTest::qWait(100);
        QCOMPARE(sql(QStringLiteral("SELECT count(*) FROM file_analysis"), database),
                 QStringLiteral("40"));
        QTRY_COMPARE_WITH_TIMEOUT(problems.Count(QStringLiteral("can be reached again")), 1, 10000);
        QCOMPARE(problems.Count(QStringLiteral("Cannot use the shared analysis library")), 1);
        registry.Finalize();
        SqliteAnalysisLibrary outbox(outboxPath(QStringLiteral("stopped")));
        QVERIFY(outbox.Open());
        QVERIFY(outbox.FetchAny(1).empty());
        PostgresAnalysisLibrary library(server(database));
        QVERIFY(library.Open());
        const std::optional<LibraryRow> last =
            library.Fetch({{QStringLiteral("SFX"), QStringLiteral("take039.wav")}}).front();
        QVERIFY(last && last->stamp == ReadFileStamp(files.last()));
    }

    void unreachableServerLeavesTeskScanWorking()
    {
        const QString share = dir.filePath(QStringLiteral("share-u"));
        QVERIFY(!makeFiles(share, 5).isEmpty());
        const QString nowhere = QStringLiteral("postgresql://%1@/sfx?host=%2")
                                    .arg(kUser, dir.filePath(QStringLiteral("no-server")));
        const Run plain = Scan({QStringLiteral("--no-library"), share});
        const Run run = Scan({QStringLiteral("--library"), nowhere, share});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.out, plain.out);
        QCOMPARE(run.err.count('\n'), 1);
        QVERIFY2(run.err.startsWith("tesk-scan: Cannot use the shared analysis library"),
                 run.err.constData());
        SqliteAnalysisLibrary outbox(FallbackAnalysisLibrary::OutboxPath());
        QVERIFY(outbox.Open());
        QCOMPARE(int(outbox.KeysIn(LibraryKey::Absolute(share), true).size()), 5);

        const Run withPassword = Scan({QStringLiteral("--library"),
                                       QStringLiteral("postgresql://studio:secret@db/sfx"), share});
        QCOMPARE(withPassword.exitCode, 2);
        QVERIFY(withPassword.err.contains("password"));
    }

    void refusingServersFallBack_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("passwordFile"); // "" keeps the good one
        QTest::addColumn<QByteArray>("passwordVariable");
        QTest::addColumn<QString>("setup"); // SQL as the administrator on the database
        QTest::addColumn<QString>("reason");
        QTest::newRow("wrong password in the password file")
            << kUser << "studio:wrong" << QByteArray() << ""
            << "password authentication failed";
        QTest::newRow("wrong PGPASSWORD") << kUser << "" << QByteArray("wrong") << ""
                                          << "password authentication failed";
        QTest::newRow("no password anywhere") << kUser << "nobody:x" << QByteArray() << ""
                                              << "no password supplied";
        QTest::newRow("no right to create tables")
            << kVisitor << "" << QByteArray() << ""
            << "no analysis tables yet, and user visitor may not create them";
        QTest::newRow("tables of a newer Tesk")
            << kUser << "" << QByteArray()
            << "SET ROLE studio; CREATE TABLE library_schema (version INTEGER NOT NULL);"
               " INSERT INTO library_schema VALUES (99)"
            << "made by a newer version of Tesk";
    }

    void refusingServersFallBack()
    {
        QFETCH(QString, user);
        QFETCH(QString, passwordFile);
        QFETCH(QByteArray, passwordVariable);
        QFETCH(QString, setup);
        QFETCH(QString, reason);
        const QString database = newDatabase();
        if (!setup.isEmpty())
            QVERIFY2(cluster.Sql(setup, database), qPrintable(cluster.Error()));
        QByteArray file;
        if (!passwordFile.isEmpty()) {
            const QString path = cluster.WritePasswordFile(
                QStringLiteral("pgpass-%1").arg(databases), passwordFile.split(QLatin1Char(':')));
            file = QFile::encodeName(path);
        }
        const EnvironmentValue pgpassfile("PGPASSFILE",
                                          file.isEmpty() ? qgetenv("PGPASSFILE") : file);
        const EnvironmentValue pgpassword("PGPASSWORD", passwordVariable);

        const QString name = QStringLiteral("refused%1").arg(databases);
        auto library = shared(server(database, user), name, 0);
        QVERIFY(library->Open());
        QVERIFY(!library->IsOnServer());
        const QString problem = library->TakeProblem();
        QVERIFY2(problem.startsWith(QStringLiteral("Cannot use the shared analysis library")) &&
                     problem.contains(reason),
                 qPrintable(problem));
        // Rows go to this computer's library and wait for the server.
        const LibraryRow row =
            fixtures::FullLibraryRow(LibraryKey::Absolute(QStringLiteral("/sounds/a.wav")));
        QVERIFY(library->Store({row}));
        QVERIFY(library->Fetch({row.key}).front());
        // Trying again, as the library thread does when it is time, tells nothing new.
        QVERIFY(library->MaintenanceDue() <= AnalysisLibrary::Clock::now());
        library->Maintain();
        QVERIFY(!library->IsOnServer());
        QCOMPARE(library->TakeProblem(), QString());
        library->Close();
        SqliteAnalysisLibrary local(localPath(name));
        QVERIFY(local.Open());
        QVERIFY(local.Fetch({row.key}).front());
    }

    void readOnlyUserReadsTheSharedRows()
    {
        const QString database = newDatabase();
        const LibraryRow row =
            fixtures::FullLibraryRow({QStringLiteral("SFX"), QStringLiteral("a.wav")});
        {
            PostgresAnalysisLibrary owner(server(database));
            QVERIFY(owner.Open());
            QVERIFY(owner.Store({row}));
        }
        QVERIFY(cluster.Sql(
            QStringLiteral("GRANT SELECT ON file_analysis, library_schema TO %1").arg(kVisitor),
            database));
        auto library = shared(server(database, kVisitor), QStringLiteral("reader"));
        QVERIFY(library->Open());
        QVERIFY(library->IsOnServer());
        QVERIFY2(library->TakeProblem().contains(QStringLiteral("does not let user visitor write")),
                 "the user is told once that results stay on this computer");
        QVERIFY(library->Fetch({row.key}).front());
        LibraryRow mine = row;
        mine.key.path = QStringLiteral("b.wav");
        QVERIFY(library->Store({mine}));
        QCOMPARE(library->TakeProblem(), QString());
        QVERIFY(library->Fetch({mine.key}).front());
        QCOMPARE(sql(QStringLiteral("SELECT count(*) FROM file_analysis"), database),
                 QStringLiteral("1"));
        // Nothing waits for a server that will never take it.
        QVERIFY(!QFile::exists(outboxPath(QStringLiteral("reader"))));
    }
};

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QPSQL"))) {
        std::fprintf(stderr, "SKIPPED: Qt's PostgreSQL driver is not installed "
                             "(Debian package libqt5sql5-psql)\n");
        return kSkipped;
    }
    fixtures::PostgresCluster cluster;
    if (!cluster.Start()) {
        std::fprintf(stderr, "SKIPPED: no PostgreSQL server could be started for these tests: %s\n",
                     qPrintable(cluster.Error()));
        return kSkipped;
    }
    TestSharedLibrary test(cluster);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_sharedlibrary.moc"
