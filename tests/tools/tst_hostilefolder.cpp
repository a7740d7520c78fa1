// A folder of hostile files, scanned by tesk-scan and by the table's detail
// worker: every file gets a row, nothing crashes or hangs, and every row that
// cannot show values says why. Run under the sanitizers in the test script.

#include "AnalysisErrors.h"
#include "AudioFileInfo.h"
#include "AudioFileLister.h"
#include "FlacEncoding.h"
#include "KrokManager.h"
#include "ScanRun.h"
#include "SubThreadGetDetail.h"
#include "TestSettings.h"
#include "WaveBuilder.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

using namespace fixtures;

namespace {

Bytes ReadBytes(const char* name)
{
    QFile f(QStringLiteral(TESK_FIXTURE_DIR "/") + QLatin1String(name));
    const QByteArray all = f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    return Bytes(all.begin(), all.end());
}

void PutLe32(Bytes& b, std::size_t at, std::uint32_t v)
{
    for (int k = 0; k < 4 && at + k < b.size(); ++k)
        b[at + k] = static_cast<unsigned char>(v >> (8 * k));
}

} // namespace

class TestHostileFolder final : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;
    int fileCount = 0; // every name written under small/
    QString deleted;   // listed, then removed before it is analysed
    QString undecodable;

    void write(const QString& name, const Bytes& bytes)
    {
        QVERIFY2(writeFile(dir.filePath(QStringLiteral("small/") + name), bytes), qPrintable(name));
        ++fileCount;
    }

    // Every 4-byte field (at every even offset) in the header ranges set to
    // values that lie.
    void lyingFields(const QString& suffix, const Bytes& good,
                     const std::vector<std::pair<std::size_t, std::size_t>>& ranges,
                     bool oggPages = false)
    {
        for (const auto& [from, to] : ranges) {
            for (std::size_t at = from; at + 4 <= std::min(to, good.size()); at += 2) {
                for (const std::uint32_t lie : {0u, 0xFFFFFFFFu, 0x7FFFFFFFu, 0x80000001u}) {
                    Bytes b = good;
                    PutLe32(b, at, lie);
                    // Keep Ogg pages' checksums right, so the lie is read.
                    for (std::size_t page = 0; oggPages && page + 27 < b.size();) {
                        fixOggPageCrc(b, page);
                        std::size_t size = 27 + b[page + 26];
                        for (std::size_t i = 0; i < b[page + 26] && page + 27 + i < b.size(); ++i)
                            size += b[page + 27 + i];
                        if (page + size > b.size() || page + size <= page)
                            break;
                        page += size;
                    }
                    write(QStringLiteral("%1-field%2-%3.%1").arg(suffix).arg(at).arg(lie, 0, 16),
                          b);
                }
            }
        }
    }

    void truncations(const QString& suffix, const Bytes& good)
    {
        for (int i = 0; i < 24; ++i) {
            const std::size_t cut = i < 12 ? std::size_t(i) * 7 : good.size() * std::size_t(i) / 24;
            write(QStringLiteral("cut%1.%2").arg(cut).arg(suffix),
                  Bytes(good.begin(), good.begin() + std::ptrdiff_t(std::min(cut, good.size()))));
        }
    }

private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("small")));
        std::vector<std::int32_t> values = distinct16(4000 * 2);
        const Bytes wav = wavInts(2, 48000, 16, values, {{100, 999}});
        Bytes adtl;
        putId(adtl, "adtl");
        Bytes label;
        putLe32(label, 1);
        label.insert(label.end(), {'x', 0});
        append(adtl, chunk("labl", label));
        const Bytes rich =
            riff({chunk("fmt ", fmtBody(1, 2, 44100, 16)), chunk("cue ", cueBody(2, 2)),
                  chunk("LIST", adtl), chunk("smpl", smplBody(1, {{10, 99}})),
                  chunk("data", pcm16(std::vector<int>(values.begin(), values.begin() + 2000)))});
        const Bytes aif = aiffInts(2, 44100, 24, values, 10, 900);
        // The first second of each compressed fixture keeps every header kind.
        Bytes mp3 = ReadBytes("cbr128.mp3");
        Bytes ogg = ReadBytes("tones-stereo.ogg");
        QVERIFY(mp3.size() > 20000 && ogg.size() > 20000);
        mp3.resize(16000);
        ogg.resize(20000);
        // Half a second of the same stereo values, with small blocks so that
        // truncations cut frames of every part of it.
        const QTemporaryDir work;
        const Bytes flac =
            flacFromWav(wav, work.path(), {QStringLiteral("-b"), QStringLiteral("576")});
        const std::size_t frames = flacFramesStart(flac);
        QVERIFY(flac.size() > 10000 && frames > 42);
        std::size_t lastFrame = flac.size() - 2;
        while (lastFrame > frames && !(flac[lastFrame] == 0xFF && flac[lastFrame + 1] == 0xF8))
            --lastFrame;

        lyingFields(QStringLiteral("wav"), rich, {{0, 200}});
        lyingFields(QStringLiteral("aif"), aif, {{0, 120}});
        // LAME's Info frame and the first audio frame's header.
        lyingFields(QStringLiteral("mp3"), mp3, {{0, 48}, {150, 180}, {414, 424}});
        // The identification page and the start of the comment and setup headers.
        lyingFields(QStringLiteral("ogg"), ogg, {{0, 62}, {62, 150}}, true);
        // STREAMINFO with the next block's header, the first and the last frame's headers.
        lyingFields(QStringLiteral("flac"), flac,
                    {{0, 50}, {frames, frames + 16}, {lastFrame, lastFrame + 16}});
        truncations(QStringLiteral("wav"), rich);
        truncations(QStringLiteral("aiff"), aif);
        truncations(QStringLiteral("mp3"), mp3);
        truncations(QStringLiteral("ogg"), ogg);
        truncations(QStringLiteral("flac"), flac);

        std::mt19937 random(2024);
        for (const char* suffix :
             {"wav", "aif", "aiff", "mp3", "ogg", "flac", "WAV", "Mp3", "FLAC"}) {
            for (const std::size_t size :
                 {std::size_t(1), std::size_t(13), std::size_t(4096), std::size_t(70000)}) {
                Bytes noise(size);
                for (auto& b : noise)
                    b = static_cast<unsigned char>(random());
                write(QStringLiteral("random%1.%2").arg(size).arg(QLatin1String(suffix)), noise);
            }
            write(QStringLiteral("empty.%1").arg(QLatin1String(suffix)), {});
        }
        // PCM that only has an MP3 suffix.
        write(QStringLiteral("pcm-as.mp3"), wav);

        const QString small = dir.filePath(QStringLiteral("small/"));
        QCOMPARE(::mkfifo(QFile::encodeName(small + QStringLiteral("fifo.wav")).constData(), 0644),
                 0);
        ++fileCount;
        write(QStringLiteral("unreadable.wav"), wav);
        QVERIFY(QFile::setPermissions(small + QStringLiteral("unreadable.wav"), {}));
        QVERIFY(QFile::link(small + QStringLiteral("loop-b.wav"),
                            small + QStringLiteral("loop-a.wav")));
        QVERIFY(QFile::link(small + QStringLiteral("loop-a.wav"),
                            small + QStringLiteral("loop-b.wav")));
        fileCount += 2;
        const QByteArray badName = QFile::encodeName(small) + QByteArray("bad\xff\xfe name.wav");
        QVERIFY(writeFile(std::string(badName.constData()), wav));
        ++fileCount;
        undecodable = QFile::decodeName(badName);
        write(QStringLiteral("deleted.wav"), wav);
        deleted = small + QStringLiteral("deleted.wav");

        // 4 GB of 48 kHz stereo that is almost all hole: cheap on disk, and
        // cheap to plot, since only the frames the plot looks at are read.
        const QString big = dir.filePath(QStringLiteral("big.wav"));
        const std::int64_t size = 4000000000;
        Bytes head = riff({chunk("fmt ", fmtBody(1, 2, 48000, 16))});
        putId(head, "data");
        putLe32(head, std::uint32_t(size - std::int64_t(head.size()) - 4));
        PutLe32(head, 4, std::uint32_t(size - 8));
        QVERIFY(writeFile(big, head));
        QCOMPARE(::truncate(QFile::encodeName(big).constData(), size), 0);
    }

    void cleanupTestCase()
    {
        QFile::setPermissions(dir.filePath(QStringLiteral("small/unreadable.wav")),
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }

    void scannerGivesEveryFileARow()
    {
        ScanRun run = RunScan({"--json", "--loudness", "--multi-plot", "--hidden",
                               dir.filePath(QStringLiteral("small"))});
        QCOMPARE(run.exitCode, 0);
        const QJsonArray rows = QJsonDocument::fromJson(run.out).array();
        QCOMPARE(rows.size(), fileCount);
        int failed = 0;
        for (const QJsonValue& o : rows) {
            // A row either has values or says why it has none.
            const QString name = o["path"].toString();
            failed += o["isValid"].toInt() == 0;
            QVERIFY2(o["isValid"].toInt() || !o["errorText"].toString().isEmpty(),
                     qPrintable(name));
            QVERIFY2(std::isfinite(o["loudness"].toDouble(NAN)), qPrintable(name));
        }
        QVERIFY(failed > fileCount / 4);

        // The whole tree without loudness, the 4 GB file included, is quick.
        run = RunScan({"--json", "--recursive", "--hidden", dir.path()});
        QCOMPARE(run.exitCode, 0);
        const QJsonArray all = QJsonDocument::fromJson(run.out).array();
        QCOMPARE(all.size(), fileCount + 1);
        for (const QJsonValue& o : all)
            if (o["path"].toString().endsWith(QLatin1String("big.wav")))
                QCOMPARE(o["samples"].toInt(), int((4000000000 - 44) / 4));
    }

    void detailWorkerGivesEveryFileARow()
    {
        const QList<QString> files =
            ListAudioFiles(dir.filePath(QStringLiteral("small")), false, true, {});
        QCOMPARE(files.size(), fileCount);
        QVERIFY(files.contains(undecodable) && files.contains(deleted) && QFile::remove(deleted));

        KrokManager registry;
        registry.Initialize();
        registry.SetLoudnessEnabled(true);
        registry.SetMultiPlotEnabled(true);
        SubThreadGetDetail worker(&registry);
        QSignalSpy end(&worker, &SubThreadGetDetail::SigEndGetDetailInfo);
        worker.start(files);
        QVERIFY(end.wait(240000));
        worker.wait();

        // Every row has values or says why it has none; some say exactly why.
        const auto reasonOf = [&](const QString& path) {
            AudioFileInfo info;
            return !registry.FindFileInfo(path, info) ? std::string("no row")
                   : info.isValid                     ? std::string("valid")
                                                      : info.errorText.str();
        };
        for (const QString& path : files)
            QVERIFY2(!reasonOf(path).empty() && reasonOf(path) != "no row", qPrintable(path));
        const QString small = dir.filePath(QStringLiteral("small/"));
        QCOMPARE(reasonOf(deleted), std::string(kErrorNotFound));
        QCOMPARE(reasonOf(undecodable), std::string(kErrorNameNotUtf8));
        QCOMPARE(reasonOf(small + QStringLiteral("fifo.wav")), std::string(kErrorNotRegularFile));
        QCOMPARE(reasonOf(small + QStringLiteral("pcm-as.mp3")),
                 std::string(kErrorOtherFormatAsMp3));
        QVERIFY(!reasonOf(small + QStringLiteral("loop-a.wav")).empty());
        registry.Finalize();
    }
};

QTEST_GUILESS_MAIN(TestHostileFolder)
#include "tst_hostilefolder.moc"
