// The persistent analysis library on real SQLite files and real WAV files in
// temporary folders, through the registry as the detail worker drives it.
#include "KrokManager.h"
#include "LibraryRoots.h"
#include "LibraryRowSample.h"
#include "SqliteAnalysisLibrary.h"
#include "TestSettings.h"
#include "WaveBuilder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

using Options = SqliteAnalysisLibrary::Options;

std::unique_ptr<KrokManager> Registry(const QString& library, Options options = {})
{
    auto registry = std::make_unique<KrokManager>();
    registry->Initialize();
    if (!library.isEmpty())
        registry->SetLibrary(std::make_unique<SqliteAnalysisLibrary>(library, options));
    return registry;
}

// What the detail worker does for a list: one lookup, then the misses.
void Scan(KrokManager& registry, const QStringList& files)
{
    registry.RecallFromLibrary(files);
    for (const QString& file : files) {
        if (!registry.IsAnalyzed(file))
            registry.AnalyzeFile(file);
    }
}

std::optional<LibraryRow> StoredRow(const QString& library, const QString& path,
                                    Options options = {})
{
    SqliteAnalysisLibrary store(library, options);
    if (!store.Open())
        return std::nullopt;
    return store.Fetch({LibraryKey::Absolute(path)}).front();
}

QStringList Paths(const LibraryKeys& keys)
{
    QStringList paths;
    for (const LibraryKey& key : keys)
        paths << (key.root.isEmpty() ? key.path : key.root + QLatin1Char(':') + key.path);
    return paths;
}

constexpr std::int8_t kMarker = 77;

// Replaces the stored mixed plot with a marker no analysis makes: a record
// that still shows it afterwards was taken from the library, not analysed.
bool MarkStoredPlot(const QString& library, const QString& path)
{
    SqliteAnalysisLibrary store(library);
    if (!store.Open())
        return false;
    std::optional<LibraryRow> row = store.Fetch({LibraryKey::Absolute(path)}).front();
    if (!row)
        return false;
    row->info.plot.fill(PlotPoint{kMarker, -kMarker});
    return store.Store({*row});
}

bool HasMarker(const AudioFileInfo& info)
{
    return info.plot.front().max == kMarker && info.plot.back().min == -kMarker;
}

QByteArray ReadAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestAnalysisLibrary final : public QObject
{
    Q_OBJECT

private:
    fixtures::TestSettings settings;
    QTemporaryDir dir;
    int folderCount = 0;

    QStringList makeFiles(int count, const QString& name = QStringLiteral("take%1.wav"))
    {
        const QString folder = dir.filePath(QStringLiteral("f%1").arg(++folderCount));
        QStringList files;
        for (int i = 0; i < count; ++i) {
            files << folder + QLatin1Char('/') + name.arg(i);
            if (!fixtures::writeSineWav(files.last(), 48000, 1, 4800, 0.25 + 0.05 * i))
                return {};
        }
        return files;
    }

    QString newLibraryPath()
    {
        return dir.filePath(QStringLiteral("lib%1.sqlite").arg(++folderCount));
    }

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    void rowsRoundTrip()
    {
        const LibraryRow full =
            fixtures::FullLibraryRow({QStringLiteral("SFX"), QStringLiteral("Ä 音/take,1.wav")});
        LibraryRow plain;
        plain.key = LibraryKey::Absolute(QStringLiteral("/sounds/plain.wav"));
        plain.stamp = {144, 1};

        const QString path = newLibraryPath();
        {
            SqliteAnalysisLibrary store(path);
            QVERIFY(store.Open());
            QVERIFY2(store.Store({full, plain}), qPrintable(store.TakeProblem()));
        }
        SqliteAnalysisLibrary store(path);
        QVERIFY(store.Open());
        // The same path under another root, or none, is another file.
        const auto rows = store.Fetch({plain.key,
                                       {QStringLiteral("SFX"), plain.key.path},
                                       LibraryKey::Absolute(full.key.path),
                                       full.key});
        QCOMPARE(int(rows.size()), 4);
        QVERIFY(rows[0] && !rows[1] && !rows[2] && rows[3]);
        QVERIFY(!rows[0]->info.hasMultiPlot());
        QCOMPARE(rows[0]->info.samplePeak, -1.0f);
        QVERIFY(!rows[0]->info.metadata);
        QCOMPARE(fixtures::LibraryRowFields(*rows[3]), fixtures::LibraryRowFields(full));
    }

    // A stored record whose file changed, or that an older analysis made, is not taken.
    void changedFileIsAnalysedAgain_data()
    {
        QTest::addColumn<int>("frames"); // 0: the file stays, the analysis version goes up
        QTest::addColumn<int>("channels");
        QTest::newRow("same size, new time") << 4800 << 1;
        QTest::newRow("new size") << 9600 << 2;
        QTest::newRow("analysis version bumped") << 0 << 1;
    }
    void changedFileIsAnalysedAgain()
    {
        QFETCH(int, frames);
        QFETCH(int, channels);
        const QStringList files = makeFiles(2);
        const QString library = newLibraryPath();
        Options bumped;
        bumped.analysisVersion = kAnalysisVersion + (frames ? 0 : 1);
        Scan(*Registry(library), files);
        QVERIFY(MarkStoredPlot(library, files.at(0)) && MarkStoredPlot(library, files.at(1)));
        const FileStamp before = ReadFileStamp(files.at(1));
        if (frames) {
            QVERIFY(fixtures::writeSineWav(files.at(1), 44100, channels, frames));
            QFile file(files.at(1));
            QVERIFY(file.open(QIODevice::ReadWrite) &&
                    file.setFileTime(QDateTime::currentDateTime().addSecs(60),
                                     QFileDevice::FileModificationTime));
            QCOMPARE(ReadFileStamp(files.at(1)).size == before.size, frames == 4800);
        }
        const auto second = Registry(library, bumped);
        Scan(*second, files);
        QCOMPARE(HasMarker(second->GetFileInfo(files.at(0))), frames != 0);
        const AudioFileInfo changed = second->GetFileInfo(files.at(1));
        QVERIFY(!HasMarker(changed));
        QCOMPARE(changed.channels, channels);
        second->Finalize();
        const std::optional<LibraryRow> row = StoredRow(library, files.at(1), bumped);
        QVERIFY(row && row->stamp == ReadFileStamp(files.at(1)));
        QCOMPARE(row->info.samplingRate, frames ? 44100 : 48000);
        QCOMPARE(bool(StoredRow(library, files.at(1))), frames != 0); // the old version's row went

        // The same holds within one session: a record in memory is checked too.
        QVERIFY(fixtures::writeSineWav(files.at(0), 22050, 1, 2205));
        const auto session = Registry({});
        Scan(*session, files);
        QVERIFY(fixtures::writeSineWav(files.at(0), 32000, 1, 3200));
        Scan(*session, files);
        QCOMPARE(session->GetFileInfo(files.at(0)).samplingRate, 32000);
    }

    void unusableLibraryLeavesAnalysisWorking_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("message");
        for (const auto& [kind, message] :
             {std::pair<const char*, const char*>{"garbage", "was damaged"},
              {"locked", "is locked"},
              {"newer", "newer version"},
              {"folder", "Cannot open"}})
            QTest::newRow(kind) << QString::fromLatin1(kind) << QString::fromLatin1(message);
    }

    void unusableLibraryLeavesAnalysisWorking()
    {
        QFETCH(QString, kind);
        QFETCH(QString, message);
        const QStringList files = makeFiles(2);
        const QString library = newLibraryPath();
        if (kind == QLatin1String("garbage")) {
            QVERIFY(fixtures::WriteBytes(library, QByteArray(5000, '\x5a')));
        } else if (kind == QLatin1String("folder")) {
            QVERIFY(QDir().mkpath(library));
        } else {
            const auto first = Registry(library);
            Scan(*first, {files.at(0)});
            first->Finalize();
        }
        if (kind == QLatin1String("newer")) {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), kind);
            db.setDatabaseName(library);
            QVERIFY(db.open());
            QVERIFY(QSqlQuery(db).exec(QStringLiteral("PRAGMA user_version = 99")));
            db.close();
        }
        // Another connection holds the file: nobody else may even read.
        QSqlDatabase locker;
        if (kind == QLatin1String("locked")) {
            locker = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), kind);
            locker.setDatabaseName(library);
            QVERIFY(locker.open());
            QSqlQuery lock(locker);
            QVERIFY(lock.exec(QStringLiteral("PRAGMA locking_mode=EXCLUSIVE")));
            QVERIFY(lock.exec(QStringLiteral("BEGIN EXCLUSIVE")));
            QVERIFY(lock.exec(QStringLiteral("DELETE FROM file_analysis WHERE size < 0")));
        }
        const QByteArray bytesBefore = ReadAll(library);

        Options quick;
        quick.busyTimeoutMs = 300;
        const auto registry = Registry(library, quick);
        QStringList problems;
        connect(
            registry.get(), &KrokManager::SigLibraryProblem, this,
            [&problems](const QString& text) { problems << text; }, Qt::DirectConnection);
        Scan(*registry, files);
        for (const QString& file : files) {
            QCOMPARE(registry->GetFileInfo(file).samplingRate, 48000);
            QVERIFY(registry->IsAnalyzed(file));
        }
        registry->Finalize();
        QCOMPARE(problems.size(), 1);
        QVERIFY2(problems.first().contains(message), qPrintable(problems.first()));

        if (locker.isValid()) {
            QSqlQuery(locker).exec(QStringLiteral("ROLLBACK"));
            locker.close();
            locker = QSqlDatabase();
            QSqlDatabase::removeDatabase(kind);
        }
        const QFileInfo file(library);
        const QStringList aside = file.dir().entryList({file.fileName() + ".damaged-*"});
        if (kind == QLatin1String("garbage")) // kept aside as it was
            QCOMPARE(ReadAll(file.dir().filePath(aside.value(0))), QByteArray(5000, '\x5a'));
        else if (kind != QLatin1String("folder"))
            QCOMPARE(ReadAll(library), bytesBefore);
    }

    // "ROOT:relative" under a root, the absolute path outside them; and back.
    void rootsMapPathsToKeys()
    {
        const QStringList sfx{"SFX=/mnt/sfx/", "MUS=/mnt/sfx/music", "ALL=/"};
        for (const auto& [entries, path, key] :
             {std::tuple<QStringList, const char*, const char*>{sfx, "/mnt/sfx/door/creak 1.wav",
                                                                "SFX:door/creak 1.wav"},
              {sfx, "/mnt/sfx/music/a.wav", "MUS:a.wav"}, // the innermost root
              {sfx, "/mnt/sfx", "SFX:"},
              {sfx, "/mnt/sfx2/a.wav", "ALL:mnt/sfx2/a.wav"}, // a name that starts alike
              {QStringList{"SFX=/mnt/sfx"}, "/home/a.wav", "/home/a.wav"},
              {QStringList(), "/mnt/sfx/a.wav", "/mnt/sfx/a.wav"}}) {
            QStringList errors;
            const LibraryRoots roots = LibraryRoots::Parse(entries, &errors);
            QVERIFY(errors.isEmpty());
            const LibraryKey mapped = roots.KeyOf(QString::fromUtf8(path));
            QCOMPARE(Paths({mapped}).front(), QString::fromUtf8(key));
            QCOMPARE(roots.PathOf(mapped), QString::fromUtf8(path));
        }
        QStringList errors;
        LibraryRoots::Parse({"=/nameless", "REL=sounds", "SFX=/a", "SFX=/again", "no folder"},
                            &errors);
        QCOMPARE(errors.size(), 4);
    }
};

QTEST_GUILESS_MAIN(TestAnalysisLibrary)
#include "tst_analysislibrary.moc"
