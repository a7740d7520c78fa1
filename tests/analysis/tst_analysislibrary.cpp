// The persistent analysis library on real SQLite files and real WAV files in
// temporary folders, through the registry as the detail worker drives it.
#include "FileMetadata.h"
#include "KrokManager.h"
#include "SqliteAnalysisLibrary.h"
#include "TestSettings.h"
#include "WaveBuilder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <cstring>
#include <memory>
#include <unistd.h>

namespace {

using Options = SqliteAnalysisLibrary::Options;

std::unique_ptr<KrokManager> Registry(const QString& library, bool loudness = false,
                                      bool multiPlot = false, Options options = {})
{
    auto registry = std::make_unique<KrokManager>();
    registry->Initialize();
    registry->SetLoudnessEnabled(loudness);
    registry->SetMultiPlotEnabled(multiPlot);
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

std::optional<LibraryRow> StoredRow(const QString& library, const QString& key,
                                    Options options = {})
{
    SqliteAnalysisLibrary store(library, options);
    if (!store.Open())
        return std::nullopt;
    return store.Fetch({key}).front();
}

constexpr std::int8_t kMarker = 77;

// Replaces the stored mixed plot with a marker no analysis makes: a record
// that still shows it afterwards was taken from the library, not analysed.
bool MarkStoredPlot(const QString& library, const QString& key)
{
    SqliteAnalysisLibrary store(library);
    if (!store.Open())
        return false;
    std::optional<LibraryRow> row = store.Fetch({key}).front();
    if (!row)
        return false;
    row->info.plot.fill(PlotPoint{kMarker, -kMarker});
    return store.Store({*row});
}

bool HasMarker(const AudioFileInfo& info)
{
    return info.plot.front().max == kMarker && info.plot.back().min == -kMarker;
}

bool SetModified(const QString& path, const QDateTime& when)
{
    QFile file(path);
    return file.open(QIODevice::ReadWrite) &&
           file.setFileTime(when, QFileDevice::FileModificationTime);
}

QByteArray ReadAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Makes a file unwritable even for root (whom permissions do not stop);
// undone when the guard goes.
class ReadOnlyFile final
{
public:
    explicit ReadOnlyFile(QString filePath)
        : path(std::move(filePath))
    {
        QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther);
        immutable = ::geteuid() == 0 &&
                    QProcess::execute(QStringLiteral("chattr"), {QStringLiteral("+i"), path}) == 0;
        ok = ::geteuid() != 0 || immutable;
    }
    ~ReadOnlyFile()
    {
        if (immutable)
            QProcess::execute(QStringLiteral("chattr"), {QStringLiteral("-i"), path});
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    }
    bool ok = false;

private:
    QString path;
    bool immutable = false;
};

} // namespace

class TestAnalysisLibrary final : public QObject
{
    Q_OBJECT

private:
    fixtures::TestSettings settings;
    QTemporaryDir dir;
    int folderCount = 0;

    // A new folder with `count` mono 48 kHz WAV files of 4800 frames.
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
        LibraryRow full;
        full.key = QStringLiteral("/sounds/Ä 音/take,1.wav");
        full.stamp = {5000000000LL, 1700000000123456789LL};
        AudioFileInfo& i = full.info;
        i = {};
        i.isValid = 0;
        i.isHeaderRead = 1;
        i.fileSize = full.stamp.size;
        i.modifyTime = ModifyTime::FromText("2024/01/02 03:04:05");
        i.samplingRate = 96000;
        i.channels = 3;
        i.samples = 123456;
        i.loopCount = 2;
        i.markerCount = 5;
        i.bitDepthOrMinKbps = 32;
        i.bitDepthOrMaxKbps = 320;
        i.loopStart = 10;
        i.loopEnd = 2000;
        i.loudness = -23.25f;
        i.format = "MP3";
        for (int k = 0; k < kPlotPoints; ++k)
            i.plot[std::size_t(k)] = {std::int8_t(k % 100), std::int8_t(-(k % 90))};
        std::vector<PlotPoint> lanes(3 * kPlotPoints);
        for (int k = 0; k < 3 * kPlotPoints; ++k)
            lanes[std::size_t(k)] = {std::int8_t(k % 101), std::int8_t(-(k % 7))};
        i.setMultiPlot(lanes.data(), 3);
        i.errorText = "E2006110803 : File size is too small.";
        i.samplePeak = 0.5f;
        i.measuredParts = AnalysisPartLoudness | AnalysisPartMultiPlot;
        FileMetadata m;
        m.setText(MetadataKey::Description, "Old oak door \xE2\x80\x94 slow creak");
        m.setText(MetadataKey::CueNotes, "one\ntwo");
        m.hasTimeReference = true;
        m.timeReference = 172800000;
        m.hasAcid = true;
        m.acid.tempo = 98.5f;
        m.acid.beats = 16;
        i.metadata = ShareMetadata(std::move(m));
        LibraryRow plain;
        plain.key = QStringLiteral("/sounds/plain.wav");
        plain.stamp = {144, 1};

        const QString path = newLibraryPath();
        {
            SqliteAnalysisLibrary store(path);
            QVERIFY(store.Open());
            QVERIFY(store.Store({full, plain}));
        }
        SqliteAnalysisLibrary store(path);
        QVERIFY(store.Open());
        const auto rows = store.Fetch({plain.key, QStringLiteral("/sounds/none.wav"), full.key});
        QCOMPARE(int(rows.size()), 3);
        QVERIFY(rows[0] && !rows[1] && rows[2]);
        QVERIFY(!rows[0]->info.hasMultiPlot());
        QCOMPARE(rows[0]->info.samplePeak, -1.0f);
        QVERIFY(!rows[0]->info.metadata);
        const LibraryRow& r = *rows[2];
        const AudioFileInfo& o = r.info;
        QCOMPARE(r.key, full.key);
        QVERIFY(r.stamp == full.stamp);
        QCOMPARE(o.fileSize, i.fileSize);
        QCOMPARE(o.isValid, 0);
        QCOMPARE(o.isHeaderRead, 1);
        QCOMPARE(o.modifyTime, i.modifyTime);
        QCOMPARE(o.samplingRate, 96000);
        QCOMPARE(o.channels, 3);
        QCOMPARE(o.samples, 123456);
        QCOMPARE(o.loopCount, 2);
        QCOMPARE(o.markerCount, 5);
        QCOMPARE(o.bitDepthOrMinKbps, 32);
        QCOMPARE(o.bitDepthOrMaxKbps, 320);
        QCOMPARE(o.loopStart, 10);
        QCOMPARE(o.loopEnd, 2000);
        QCOMPARE(o.loudness, -23.25f);
        QCOMPARE(o.format, i.format);
        QCOMPARE(o.errorText, i.errorText);
        QCOMPARE(o.samplePeak, 0.5f);
        QCOMPARE(o.measuredParts, i.measuredParts);
        QCOMPARE(o.multiPlotLanes(), 3);
        QVERIFY(std::memcmp(o.plot.data(), i.plot.data(), sizeof o.plot) == 0);
        QVERIFY(std::memcmp(o.multiPlotLane(0), lanes.data(),
                            3 * kPlotPoints * sizeof(PlotPoint)) == 0);
        QVERIFY(o.metadata);
        QCOMPARE(StoredMetadataBytes(o.metadata.get()), StoredMetadataBytes(i.metadata.get()));
        QCOMPARE(o.metadata->text(MetadataKey::CueNotes), std::string_view("one\ntwo"));
        QCOMPARE(o.metadata->acid.tempo, 98.5f);
        QCOMPARE(o.metadata->timeReference, std::uint64_t(172800000));
    }

    void changedFileIsAnalysedAgain_data()
    {
        QTest::addColumn<int>("frames");
        QTest::addColumn<int>("channels");
        QTest::newRow("same size, new time") << 4800 << 1;
        QTest::newRow("new size") << 9600 << 2;
    }

    void changedFileIsAnalysedAgain()
    {
        QFETCH(int, frames);
        QFETCH(int, channels);
        const QStringList files = makeFiles(2);
        const QString library = newLibraryPath();
        {
            const auto first = Registry(library);
            Scan(*first, files);
        }
        QVERIFY(MarkStoredPlot(library, files.at(0)));
        QVERIFY(MarkStoredPlot(library, files.at(1)));
        const FileStamp before = ReadFileStamp(files.at(1));
        QVERIFY(fixtures::writeSineWav(files.at(1), 44100, channels, frames));
        QVERIFY(SetModified(files.at(1), QDateTime::currentDateTime().addSecs(60)));
        const FileStamp after = ReadFileStamp(files.at(1));
        QCOMPARE(after.size == before.size, frames == 4800 && channels == 1);

        const auto second = Registry(library);
        Scan(*second, files);
        QVERIFY(HasMarker(second->GetFileInfo(files.at(0))));
        const AudioFileInfo changed = second->GetFileInfo(files.at(1));
        QVERIFY(!HasMarker(changed));
        QCOMPARE(changed.samplingRate, 44100);
        QCOMPARE(changed.channels, channels);
        second->Finalize();
        const std::optional<LibraryRow> row = StoredRow(library, files.at(1));
        QVERIFY(row);
        QVERIFY(row->stamp == after);
        QCOMPARE(row->info.samplingRate, 44100);

        // The same holds within one session: a record in memory is checked too.
        QVERIFY(fixtures::writeSineWav(files.at(0), 22050, 1, 2205));
        const auto session = Registry({});
        Scan(*session, files);
        QVERIFY(fixtures::writeSineWav(files.at(0), 32000, 1, 3200));
        Scan(*session, files);
        QCOMPARE(session->GetFileInfo(files.at(0)).samplingRate, 32000);
    }

    void goneFilesLeaveTheLibrary()
    {
        QStringList files = makeFiles(3);
        const QString folder = QFileInfo(files.first()).absolutePath();
        const QString nested = folder + QStringLiteral("/sub/deep.wav");
        const QString hidden = folder + QStringLiteral("/.hidden.wav");
        QVERIFY(fixtures::writeSineWav(nested, 48000, 1, 480));
        QVERIFY(fixtures::writeSineWav(hidden, 48000, 1, 480));
        const QString library = newLibraryPath();
        const auto registry = Registry(library);
        Scan(*registry, files + QStringList{nested, hidden});
        registry->FlushLibrary();

        const QString deleted = files.takeAt(1);
        QVERIFY(QFile::remove(deleted));
        QVERIFY(QFile::remove(nested));
        // A neighbour folder whose name starts like this one is not under it.
        LibraryRow neighbour;
        neighbour.key = folder + QStringLiteral("x/gone.wav");
        neighbour.stamp = {1, 1};
        SqliteAnalysisLibrary store(library);
        QVERIFY(store.Open());
        QVERIFY(store.Store({neighbour}));

        // A flat listing without hidden files: the deleted file's row goes,
        // the hidden file (still there) and the subfolder's row stay.
        registry->ForgetMissingFiles(folder, false, files);
        registry->FlushLibrary();
        QCOMPARE(store.KeysIn(folder, false), (QStringList{hidden, files.at(0), files.at(1)}));
        QCOMPARE(store.KeysIn(folder, true),
                 (QStringList{hidden, nested, files.at(0), files.at(1)}));

        registry->ForgetMissingFiles(folder, true, files);
        registry->FlushLibrary();
        QCOMPARE(store.KeysIn(folder, true), (QStringList{hidden, files.at(0), files.at(1)}));
        QVERIFY(store.Fetch({neighbour.key}).front());
    }

    void loudnessLaterMeasuresOnlyLoudness()
    {
        const QStringList files = makeFiles(2);
        const QString library = newLibraryPath();
        {
            const auto first = Registry(library, false, true);
            Scan(*first, files);
            QCOMPARE(first->GetFileInfo(files.at(0)).loudness, -96.0f);
        }
        QVERIFY(MarkStoredPlot(library, files.at(0)));

        const auto later = Registry(library, true, false);
        later->RecallFromLibrary(files);
        QVERIFY(!later->IsAnalyzed(files.at(0)));
        Scan(*later, files);
        QVERIFY(later->IsAnalyzed(files.at(0)));
        const AudioFileInfo info = later->GetFileInfo(files.at(0));
        AudioFileInfo fresh;
        AnalyzeAudioFile(files.at(0), fresh, false, true);
        QVERIFY(fresh.loudness > -96.0f);
        QCOMPARE(info.loudness, fresh.loudness);
        // The plots were not measured again: the marker and the per-channel plot stay.
        QVERIFY(HasMarker(info));
        QVERIFY(info.hasMultiPlot());
        QCOMPARE(info.measuredParts, AnalysisPartLoudness | AnalysisPartMultiPlot);
        later->Finalize();
        const std::optional<LibraryRow> row = StoredRow(library, files.at(0));
        QVERIFY(row);
        QCOMPARE(row->info.measuredParts, AnalysisPartLoudness | AnalysisPartMultiPlot);
        QCOMPARE(row->info.loudness, fresh.loudness);
    }

    void analysisVersionBumpInvalidates()
    {
        const QStringList files = makeFiles(1);
        const QString library = newLibraryPath();
        Options v1;
        v1.analysisVersion = kAnalysisVersion;
        Options v2;
        v2.analysisVersion = kAnalysisVersion + 1;
        {
            const auto old = Registry(library, false, false, v1);
            Scan(*old, files);
        }
        QVERIFY(MarkStoredPlot(library, files.at(0)));
        QVERIFY(StoredRow(library, files.at(0), v1));
        QVERIFY(!StoredRow(library, files.at(0), v2));

        const auto bumped = Registry(library, false, false, v2);
        Scan(*bumped, files);
        QVERIFY(!HasMarker(bumped->GetFileInfo(files.at(0))));
        bumped->Finalize();
        QVERIFY(StoredRow(library, files.at(0), v2));
        QVERIFY(!StoredRow(library, files.at(0), v1));
    }

    void unusableLibraryLeavesAnalysisWorking_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("message");
        QTest::newRow("garbage") << "garbage"
                                 << "was damaged";
        QTest::newRow("read-only") << "read-only"
                                   << "is read-only";
        QTest::newRow("locked") << "locked"
                                << "is locked";
        QTest::newRow("newer schema") << "newer"
                                      << "newer version";
        QTest::newRow("a folder") << "folder"
                                  << "Cannot open";
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
            QVERIFY(MarkStoredPlot(library, files.at(0)));
        }
        if (kind == QLatin1String("newer")) {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), kind);
            db.setDatabaseName(library);
            QVERIFY(db.open());
            QVERIFY(QSqlQuery(db).exec(QStringLiteral("PRAGMA user_version = 99")));
            db.close();
        }
        std::unique_ptr<ReadOnlyFile> readOnly;
        if (kind == QLatin1String("read-only")) {
            readOnly = std::make_unique<ReadOnlyFile>(library);
            if (!readOnly->ok)
                QSKIP("cannot make a file read-only for root here (no chattr)");
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
        const auto registry = Registry(library, false, false, quick);
        QStringList problems;
        connect(
            registry.get(), &KrokManager::SigLibraryProblem, this,
            [&problems](const QString& text) { problems << text; }, Qt::DirectConnection);
        Scan(*registry, files);
        for (const QString& file : files) {
            QCOMPARE(registry->GetFileInfo(file).samplingRate, 48000);
            QVERIFY(registry->IsAnalyzed(file));
        }
        // A read-only library is still read.
        QCOMPARE(HasMarker(registry->GetFileInfo(files.at(0))), kind == QLatin1String("read-only"));
        registry->Finalize();
        QCOMPARE(problems.size(), 1);
        QVERIFY2(problems.first().contains(message), qPrintable(problems.first()));

        if (locker.isValid()) {
            QSqlQuery(locker).exec(QStringLiteral("ROLLBACK"));
            locker.close();
            locker = QSqlDatabase();
            QSqlDatabase::removeDatabase(kind);
        }
        if (kind == QLatin1String("garbage")) {
            // The damaged file is kept aside as it was; the new library holds the scan.
            const QStringList aside =
                QDir(QFileInfo(library).absolutePath())
                    .entryList({QFileInfo(library).fileName() + QStringLiteral(".damaged-*")});
            QCOMPARE(aside.size(), 1);
            QCOMPARE(ReadAll(QFileInfo(library).absolutePath() + '/' + aside.first()),
                     QByteArray(5000, '\x5a'));
            QVERIFY(StoredRow(library, files.at(1)));
        } else if (kind != QLatin1String("folder")) {
            QCOMPARE(ReadAll(library), bytesBefore);
        }
    }

    void registryWithoutLibraryKeepsWorking()
    {
        // Switching the library off while it is in use: lookups and writes
        // still in flight end quietly.
        const QStringList files = makeFiles(3);
        const QString library = newLibraryPath();
        const auto registry = Registry(library);
        Scan(*registry, files.mid(0, 1));
        registry->SetLibrary(nullptr);
        QVERIFY(!registry->HasLibrary());
        Scan(*registry, files);
        registry->FlushLibrary();
        registry->Finalize();
        QVERIFY(StoredRow(library, files.at(0)));
        QVERIFY(!StoredRow(library, files.at(2)));
    }
};

QTEST_GUILESS_MAIN(TestAnalysisLibrary)
#include "tst_analysislibrary.moc"
