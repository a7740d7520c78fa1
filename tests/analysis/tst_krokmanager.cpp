#include "AnalysisErrors.h"
#include "CellFormat.h"
#include "KrokManager.h"
#include "PreviewPlayer.h"
#include "TestSettings.h"
#include "WaveBuilder.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

namespace {

QString Fixture(const char* name)
{
    return QStringLiteral(TESK_FIXTURE_DIR "/") + QLatin1String(name);
}

class FakePlayer final : public PreviewPlayer
{
    Q_OBJECT
public:
    QStringList calls;
    std::int64_t playedSamples = 0;
    bool playing = false;
    bool preparing = false;

    void Initialize() override { calls << QStringLiteral("Initialize"); }
    void Finalize() override { calls << QStringLiteral("Finalize"); }
    void Play(const QString& path) override { calls << QStringLiteral("Play ") + path; }
    void PlayFrom(const QString& path, std::int32_t startMs) override
    {
        calls << QStringLiteral("PlayFrom %1 %2").arg(path).arg(startMs);
    }
    void PlayRange(const QString& path, std::int64_t startFrame, std::int64_t endFrame) override
    {
        calls << QStringLiteral("PlayRange %1 %2 %3").arg(path).arg(startFrame).arg(endFrame);
    }
    void Stop() override { calls << QStringLiteral("Stop"); }
    void SetVolume(float volume) override { calls << QStringLiteral("SetVolume %1").arg(volume); }
    bool IsPlaying() override { return playing; }
    bool IsPreparing() override { return preparing; }
    std::int64_t GetPlayedSamples() override { return playedSamples; }
};

// 16-bit mono WAV of `frames` silent samples with one 'smpl' loop whose last
// looped sample is `lastLooped` (the file format stores an inclusive end).
fixtures::Bytes LoopedWav(std::uint32_t frames, std::uint32_t loopStart, std::uint32_t lastLooped)
{
    using namespace fixtures;
    return riff({chunk("fmt ", fmtBody(1, 1, 48000, 16)), chunk("data", Bytes(frames * 2, 0)),
                 chunk("smpl", smplBody(1, {{loopStart, lastLooped}}))});
}

} // namespace

class TestKrokManager final : public QObject
{
    Q_OBJECT

private slots:
    void unknownPathGivesDefaults()
    {
        KrokManager registry;
        for (int pass = 0; pass < 2; ++pass) {
            const AudioFileInfo info = registry.GetFileInfo(QStringLiteral("/no/such/file.wav"));
            QCOMPARE(info.isValid, 1);
            QCOMPARE(info.isHeaderRead, 0);
            QCOMPARE(info.samplingRate, 48000);
            QCOMPARE(info.channels, 1);
            QCOMPARE(info.bitDepthOrMinKbps, 16);
            QCOMPARE(info.bitDepthOrMaxKbps, 16);
            QCOMPARE(info.loudness, -96.0f);
            QVERIFY(info.format.empty());
            QVERIFY(info.modifyTime.empty());
            AudioFileInfo out;
            QVERIFY(!registry.FindFileInfo(QStringLiteral("/no/such/file.wav"), out));
            QVERIFY(!registry.IsAnalyzed(QStringLiteral("/no/such/file.wav")));
            registry.Initialize();
        }
        registry.Finalize();
    }

    void registrationNeedsInitialize()
    {
        KrokManager registry;
        QVERIFY(!registry.RegisterFiles({}));
        QVERIFY(!registry.RegisterFiles({QStringLiteral("/a.wav")}));
        registry.Initialize();
        QStringList many;
        many.reserve(100000);
        for (int i = 0; i < 100000; ++i)
            many << QStringLiteral("/library/take_%1.wav").arg(i);
        QVERIFY(registry.RegisterFiles(many));
        QVERIFY(registry.RegisterFiles({}));
        registry.Finalize();
        QVERIFY(!registry.RegisterFiles(many));
    }

    void flagsNeedInitialize()
    {
        KrokManager registry;
        registry.SetLoudnessEnabled(true);
        registry.SetMultiPlotEnabled(true);
        QVERIFY(!registry.IsLoudnessEnabled());
        QVERIFY(!registry.IsMultiPlotEnabled());
        registry.Initialize();
        registry.SetLoudnessEnabled(true);
        QVERIFY(registry.IsLoudnessEnabled());
        QVERIFY(!registry.IsMultiPlotEnabled());
        registry.Finalize();
    }

    void compressedHeaders_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("format");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("channels");
        QTest::addColumn<int>("samples");
        QTest::addColumn<QString>("bits");
        QTest::newRow("cbr mp3") << Fixture("cbr128.mp3") << "MP3" << 44100 << 2 << 220500 << "128";
        QTest::newRow("mono mp3") << Fixture("mono-cbr128.mp3") << "MP3" << 44100 << 1 << 220500
                                  << "128";
        QTest::newRow("96 and 320")
            << Fixture("vbr-96-320.mp3") << "MP3" << 44100 << 2 << -1 << "96 - 320";
        QTest::newRow("ogg") << Fixture("tones-stereo.ogg") << "Vorbis" << 44100 << 2 << 220500
                             << "";
        QTest::newRow("ogg mono") << Fixture("tones-mono.ogg") << "Vorbis" << 44100 << 1 << 220500
                                  << "";
    }

    void compressedHeaders()
    {
        QFETCH(QString, file);
        QFETCH(QString, format);
        QFETCH(int, rate);
        QFETCH(int, channels);
        QFETCH(int, samples);
        QFETCH(QString, bits);
        KrokManager registry;
        registry.Initialize();
        QVERIFY(!registry.IsAnalyzed(file));
        registry.AnalyzeFile(file);
        QVERIFY(registry.IsAnalyzed(file));
        const AudioFileInfo info = registry.GetFileInfo(file);
        QCOMPARE(info.isValid, 1);
        QCOMPARE(info.isHeaderRead, 1);
        QCOMPARE(QString::fromStdString(info.format.str()), format);
        QCOMPARE(info.samplingRate, rate);
        QCOMPARE(info.channels, channels);
        if (samples >= 0)
            QCOMPARE(info.samples, samples);
        if (!bits.isEmpty())
            QCOMPARE(FormatBits(info.bitDepthOrMinKbps, info.bitDepthOrMaxKbps), bits);
        const QFileInfo fileInfo(file);
        QCOMPARE(qint64(info.fileSize), fileInfo.size());
        QCOMPARE(QString::fromStdString(info.modifyTime.text()),
                 fileInfo.lastModified().toString(QStringLiteral("yyyy/MM/dd HH:mm:ss")));
        QCOMPARE(info.loudness, -96.0f); // not asked for
        bool anyPlot = false;
        for (const PlotPoint& p : info.plot)
            anyPlot = anyPlot || p.max != 0 || p.min != 0;
        QVERIFY(anyPlot);
        QVERIFY(!info.hasMultiPlot());
        registry.Finalize();
    }

    void notMp3DataIsInvalid()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("x.mp3"));
        QVERIFY(fixtures::WriteBytes(path, "Just some notes, not audio.\n"));
        KrokManager registry;
        registry.Initialize();
        registry.AnalyzeFile(path);
        const AudioFileInfo info = registry.GetFileInfo(path);
        QCOMPARE(info.isValid, 0);
        QCOMPARE(info.isHeaderRead, 0);
        QCOMPARE(info.fileSize, 28);
        QCOMPARE(RecordCellValue(ColumnFormat, info, false, false).toString(),
                 QStringLiteral("ERROR"));
        QVERIFY(!registry.IsAnalyzed(path));
        registry.Finalize();
    }

    void unreadableHeaderIsAnalysedEveryPass()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("take.wav"));
        QVERIFY(fixtures::WriteBytes(path, QByteArray("RIFF\x04\0\0\0WAVE", 12)));
        KrokManager registry;
        registry.Initialize();
        registry.AnalyzeFile(path);
        QVERIFY(!registry.IsAnalyzed(path));
        QCOMPARE(registry.GetFileInfo(path).isHeaderRead, 0);
        QCOMPARE(registry.GetFileInfo(path).errorText.str(),
                 std::string("E2006110803 : File size is too small."));
        // The next pass reads it again and sees the repaired file.
        QVERIFY(fixtures::writeFile(path, LoopedWav(4800, 0, 99)));
        QVERIFY(!registry.IsAnalyzed(path));
        registry.AnalyzeFile(path);
        QVERIFY(registry.IsAnalyzed(path));
        QCOMPARE(registry.GetFileInfo(path).samples, 4800);

        // A file that vanished says so, with no made-up values.
        const QString gone = dir.filePath(QStringLiteral("gone.ogg"));
        registry.AnalyzeFile(gone);
        AudioFileInfo info;
        QVERIFY(registry.FindFileInfo(gone, info));
        QCOMPARE(info.isValid, 0);
        QCOMPARE(info.errorText.str(), std::string(kErrorNotFound));
        QCOMPARE(info.fileSize, std::int64_t(0));
        QVERIFY(info.modifyTime.empty());
        registry.Finalize();
    }

    void invalidateMarksForReanalysis()
    {
        const QString file = Fixture("cbr128.mp3");
        KrokManager registry;
        registry.Initialize();
        registry.AnalyzeFile(file);
        QVERIFY(registry.IsAnalyzed(file));
        registry.InvalidateFiles({file, QStringLiteral("/unknown.wav")});
        QVERIFY(!registry.IsAnalyzed(file));
        // The record stays readable until the next analysis.
        QCOMPARE(registry.GetFileInfo(file).samples, 220500);
        registry.AnalyzeFile(file);
        QVERIFY(registry.IsAnalyzed(file));
        registry.Finalize();
    }

    void loudnessMatchesWav_data()
    {
        QTest::addColumn<QString>("wav");
        QTest::addColumn<QString>("compressed");
        QTest::newRow("vbr mp3") << Fixture("tones-stereo.wav") << Fixture("tones-vbr.mp3");
        QTest::newRow("mono mp3") << Fixture("tones-mono.wav") << Fixture("mono-vbr.mp3");
        QTest::newRow("vbr mp3, noise") << Fixture("music-stereo.wav") << Fixture("music-vbr.mp3");
        QTest::newRow("ogg") << Fixture("tones-stereo.wav") << Fixture("tones-stereo.ogg");
        QTest::newRow("mono ogg") << Fixture("tones-mono.wav") << Fixture("tones-mono.ogg");
        QTest::newRow("ogg, noise") << Fixture("music-stereo.wav") << Fixture("music-stereo.ogg");
    }

    void loudnessMatchesWav()
    {
        QFETCH(QString, wav);
        QFETCH(QString, compressed);
        KrokManager registry;
        registry.Initialize();
        registry.SetLoudnessEnabled(true);
        registry.AnalyzeFile(wav);
        registry.AnalyzeFile(compressed);
        const float reference = registry.GetFileInfo(wav).loudness;
        const float measured = registry.GetFileInfo(compressed).loudness;
        // The signals sit well above the gate, so a real measurement is far from -96.
        QVERIFY2(reference > -40.0f && reference < -10.0f, qPrintable(QString::number(reference)));
        QVERIFY2(std::fabs(measured - reference) <= 0.2f,
                 qPrintable(QStringLiteral("%1 vs %2").arg(measured).arg(reference)));
        registry.Finalize();
    }

    void multiPlotWhenWanted()
    {
        const QString file = Fixture("tones-stereo.ogg");
        KrokManager registry;
        registry.Initialize();
        registry.SetMultiPlotEnabled(true);
        registry.AnalyzeFile(file);
        const AudioFileInfo info = registry.GetFileInfo(file);
        QVERIFY(info.hasMultiPlot());
        auto channelHasData = [&info](int channel) {
            const PlotPoint* lane = info.multiPlotLane(channel);
            for (int i = 0; lane && i < kPlotPoints; ++i) {
                const PlotPoint& p = lane[i];
                if (p.max != 0 || p.min != 0)
                    return true;
            }
            return false;
        };
        QVERIFY(channelHasData(0));
        QVERIFY(channelHasData(1));
        QVERIFY(!channelHasData(2));
        // Partials at about -18 dBFS each peak well below full scale.
        for (const PlotPoint& p : info.plot) {
            QVERIFY(p.max <= 40 && p.min >= -40);
            QVERIFY(p.max >= p.min);
        }
        registry.Finalize();
    }

    void playbackForwarding()
    {
        auto* player = new FakePlayer;
        KrokManager registry(player);
        QCOMPARE(player->parent(), &registry);
        registry.PlayFile(QStringLiteral("/a.wav"));
        registry.SetVolume(0.5f);
        player->playing = true;
        QVERIFY(!registry.IsPlaying());
        QCOMPARE(registry.GetPlaybackPosition(), std::int64_t(0));
        QVERIFY(player->calls.isEmpty());
        QVERIFY(registry.GetPlayingPath().isEmpty());

        registry.Initialize();
        registry.PlayFile(QStringLiteral("/a.wav"));
        QCOMPARE(registry.GetPlayingPath(), QStringLiteral("/a.wav"));
        registry.PlayFileWithSeek(QStringLiteral("/b.ogg"), 1500);
        QCOMPARE(registry.GetPlayingPath(), QStringLiteral("/b.ogg"));
        registry.SetVolume(0.25f);
        QVERIFY(registry.IsPlaying());
        QVERIFY(!registry.IsPreparing());
        player->preparing = true;
        QVERIFY(registry.IsPreparing());
        player->playedSamples = 12345;
        QCOMPARE(registry.GetPlaybackPosition(), std::int64_t(12345));
        registry.StopPlayback();
        QVERIFY(registry.GetPlayingPath().isEmpty());
        registry.Finalize();
        registry.Finalize(); // a second Finalize does not finalise the player again
        QCOMPARE(player->calls, (QStringList{"Initialize", "Play /a.wav", "PlayFrom /b.ogg 1500",
                                             "SetVolume 0.25", "Stop", "Finalize"}));

        // Without a player every request is a no-op.
        KrokManager silent;
        silent.Initialize();
        silent.PlayFile(QStringLiteral("/a.wav"));
        silent.SetVolume(1.0f);
        QVERIFY(!silent.IsPlaying());
        QVERIFY(!silent.IsPreparing());
        QCOMPARE(silent.GetPlaybackPosition(), std::int64_t(0));
        silent.StopPlayback();
        silent.Finalize();
    }

    void stopClearsPathBeforeInitialize()
    {
        auto* player = new FakePlayer;
        KrokManager registry(player);
        registry.Initialize();
        registry.PlayFile(QStringLiteral("/a.wav"));
        registry.Finalize();
        QCOMPARE(registry.GetPlayingPath(), QStringLiteral("/a.wav"));
        player->calls.clear();
        registry.StopPlayback();
        QVERIFY(registry.GetPlayingPath().isEmpty());
        QVERIFY(player->calls.isEmpty()); // the engine is not touched while finalised

        KrokManager fresh(new FakePlayer);
        fresh.StopPlayback();
        QVERIFY(fresh.GetPlayingPath().isEmpty());
    }

    void loopFolding_data()
    {
        QTest::addColumn<qint64>("played");
        QTest::addColumn<qint64>("shown");
        QTest::newRow("before the loop") << qint64(500) << qint64(500);
        QTest::newRow("inside the loop") << qint64(1500) << qint64(1500);
        QTest::newRow("at the loop end") << qint64(2000) << qint64(2000);
        QTest::newRow("one past the end") << qint64(2001) << qint64(1001);
        QTest::newRow("half a loop on") << qint64(2500) << qint64(1500);
        QTest::newRow("many loops on") << qint64(1000 + 7 * 1000 + 250) << qint64(1250);
    }

    void loopFolding()
    {
        QFETCH(qint64, played);
        QFETCH(qint64, shown);
        QTemporaryDir dir;
        const QString looped = dir.filePath(QStringLiteral("looped.wav"));
        const QString plain = dir.filePath(QStringLiteral("plain.mp3"));
        // Loop over samples 1000..1999: start 1000, end 2000 one past the last.
        QVERIFY(fixtures::writeFile(looped, LoopedWav(48000, 1000, 1999)));
        QVERIFY(QFile::copy(Fixture("cbr128.mp3"), plain));

        auto* player = new FakePlayer;
        KrokManager registry(player);
        registry.Initialize();
        registry.AnalyzeFile(looped);
        registry.AnalyzeFile(plain);
        const AudioFileInfo info = registry.GetFileInfo(looped);
        QCOMPARE(info.loopCount, 1);
        QCOMPARE(info.loopStart, 1000);
        QCOMPARE(info.loopEnd, 2000);

        player->playedSamples = played;
        registry.PlayFile(looped);
        QCOMPARE(registry.GetPlaybackPosition(), std::int64_t(shown));
        // A file without loops, and an unknown file, are not folded.
        registry.PlayFile(plain);
        QCOMPARE(registry.GetPlaybackPosition(), std::int64_t(played));
        registry.PlayFile(dir.filePath(QStringLiteral("unknown.wav")));
        QCOMPARE(registry.GetPlaybackPosition(), std::int64_t(played));
        // A region plays straight through the loop: its position runs on.
        registry.PlayFileRange(looped, 100, 40000);
        QCOMPARE(player->calls.last(), QStringLiteral("PlayRange %1 100 40000").arg(looped));
        QCOMPARE(registry.GetPlaybackPosition(), std::int64_t(played));
        registry.Finalize();
    }

    void errorsAreForwarded()
    {
        auto* player = new FakePlayer;
        KrokManager registry(player);
        QSignalSpy spy(&registry, &KrokManager::SigErrorReceived);
        emit player->ErrorOccurred(QStringLiteral("E2009042301 : no audio device"));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.at(0).at(0).toString(), QStringLiteral("E2009042301 : no audio device"));
    }
};

QTEST_GUILESS_MAIN(TestKrokManager)
#include "tst_krokmanager.moc"
