// The playback manager over the engine's offline render path, with WAVE, AIFF,
// FLAC files and the build's MP3 and Ogg fixtures.

#include "AudioEngine.h"
#include "FlacEncoding.h"
#include "KrokManager.h"
#include "LumoManager.h"
#include "WaveBuilder.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

std::vector<float> render(std::size_t frames)
{
    std::vector<float> out(frames * 2);
    AudioEngine::RenderOffline(out.data(), frames);
    return out;
}

// Every start ramps in over 5 ms; from then on the file's own samples play.
constexpr int kRamp = 48000 / 200;

bool silent(const std::vector<float>& v)
{
    return std::all_of(v.begin(), v.end(), [](float x) { return x == 0.0f; });
}

} // namespace

class TestLumoManager : public QObject
{
    Q_OBJECT

    QTemporaryDir dir_;
    std::unique_ptr<LumoManager> lumo_;
    const std::vector<std::int32_t> mono_ = fixtures::distinct16(48000 * 2, 3);
    const std::vector<std::int32_t> stereo_ = fixtures::distinct16(2000 * 2, 5);

    QString path(const QString& name) const
    {
        return name.contains('/') ? name : dir_.filePath(name);
    }
    // The first frame after the ramp of a start at `startFrame`, left and right.
    void expectFirstFrames(const std::vector<std::int32_t>& values, int channels, int startFrame)
    {
        const auto out = render(kRamp + 1);
        const auto at = std::size_t((startFrame + kRamp) * channels);
        QCOMPARE(out[2 * kRamp], values[at] / 32768.0f);
        QCOMPARE(out[2 * kRamp + 1], values[at + std::size_t(channels - 1)] / 32768.0f);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(fixtures::writeFile(path("long.wav"), fixtures::wavInts(1, 48000, 16, mono_)));
        QVERIFY(fixtures::writeFile(path("UPPER.WAV"), fixtures::wavInts(1, 48000, 16, mono_)));
        QVERIFY(fixtures::writeFile(path("x.aif"), fixtures::aiffInts(2, 48000, 16, stereo_)));
        QVERIFY(fixtures::writeFile(path("x.aiff"), fixtures::aiffInts(2, 48000, 16, stereo_)));
        QVERIFY(fixtures::encodeFlac(path("long.wav"), path("long.FLAC")));
    }

    void init()
    {
        lumo_ = std::make_unique<LumoManager>(nullptr, AudioEngine::OutputMode::Offline);
        lumo_->Initialize();
    }

    void cleanup()
    {
        if (lumo_)
            lumo_->Finalize();
        lumo_.reset();
    }

    void memoryPlayerStartsWhereAsked_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("startMs");
        QTest::newRow("upper-case WAV") << "UPPER.WAV" << 0;
        QTest::newRow("aif") << "x.aif" << 0;
        QTest::newRow("aiff") << "x.aiff" << 0;
        QTest::newRow("WAV at 1500 ms") << "long.wav" << 1500;
    }

    void memoryPlayerStartsWhereAsked()
    {
        QFETCH(QString, name);
        QFETCH(int, startMs);
        const bool mono = name.endsWith(QLatin1String("WAV"), Qt::CaseInsensitive);
        lumo_->PlayFrom(path(name), startMs);
        QVERIFY(!lumo_->IsStreaming() && lumo_->IsPreparing());
        expectFirstFrames(mono ? mono_ : stereo_, mono ? 1 : 2, startMs * 48);
        QVERIFY(lumo_->IsPlaying());
        QCOMPARE(lumo_->GetPlayedSamples(), std::int64_t(startMs * 48 + kRamp + 1));
    }

    // After a stop or the end of a file nothing plays and nothing is counted;
    // playing again starts from the top.
    void stopAndEndReturnToStopped()
    {
        lumo_->Play(path("long.wav"));
        render(10);
        lumo_->Stop();
        QVERIFY(!lumo_->IsPlaying() && !lumo_->IsPreparing());
        QCOMPARE(lumo_->GetPlayedSamples(), std::int64_t(0));
        QVERIFY(silent(render(100)));
        lumo_->Play(path("x.aif")); // 2000 frames
        render(3000);
        QVERIFY(!lumo_->IsPlaying());
        QCOMPARE(lumo_->GetPlayedSamples(), std::int64_t(0));
        lumo_->Play(path("long.wav"));
        expectFirstFrames(mono_, 1, 0);

        LumoManager idle(nullptr, AudioEngine::OutputMode::Offline); // never initialised
        idle.Play(path("long.wav"));
        idle.SetVolume(0.5f);
        idle.Stop();
        QVERIFY(!idle.IsPlaying());
    }

    void missingFileReportsAnEngineError()
    {
        QSignalSpy spy(lumo_.get(), &PreviewPlayer::ErrorOccurred);
        lumo_->Play(path("nope.wav"));
        QCOMPARE(spy.count(), 1);
        QVERIFY(spy[0][0].toString().startsWith(QStringLiteral("E2026112205 : ")));
        QVERIFY(!lumo_->IsPlaying());
        QVERIFY(silent(render(10)));
    }

    void volumeZeroSilencesBothPlayers()
    {
        lumo_->Play(path("long.wav"));
        render(10);
        lumo_->SetVolume(0.0f);
        render(240); // the ramp down
        QVERIFY(silent(render(1000)));
        lumo_->Play(path(TESK_FIXTURE_DIR "/cbr128.mp3"));
        QVERIFY(lumo_->IsStreaming());
        QVERIFY(silent(render(4000)));
        QVERIFY(lumo_->IsPlaying());
        lumo_->SetVolume(1.0f);
        render(240);
        QVERIFY(!silent(render(1000)));
    }

    // Decoded files stream whatever their rate and channels, and a seek (or a
    // region) starts where it was asked, in the file's own frames.
    void decodedFilesStartWhereAsked_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("startMs");
        QTest::addColumn<qint64>("rangeEnd"); // a region when above 0
        QTest::addColumn<qint64>("firstFrame");
        const QString fixtures = QStringLiteral(TESK_FIXTURE_DIR "/");
        QTest::newRow("44.1 kHz stereo MP3 at 500 ms")
            << fixtures + "cbr128.mp3" << 500 << qint64(0) << qint64(22050);
        QTest::newRow("44.1 kHz mono MP3 at 250 ms")
            << fixtures + "mono-cbr128.mp3" << 250 << qint64(0) << qint64(11025);
        QTest::newRow("Ogg at 100 ms")
            << fixtures + "tones-mono.ogg" << 100 << qint64(0) << qint64(4410);
        QTest::newRow("Ogg region")
            << fixtures + "tones-mono.ogg" << 0 << qint64(16000) << qint64(6000);
        QTest::newRow("FLAC at 250 ms") << "long.FLAC" << 250 << qint64(0) << qint64(12000);
        QTest::newRow("FLAC region") << "long.FLAC" << 0 << qint64(16000) << qint64(6000);
    }

    void decodedFilesStartWhereAsked()
    {
        QFETCH(QString, name);
        QFETCH(int, startMs);
        QFETCH(qint64, rangeEnd);
        QFETCH(qint64, firstFrame);
        lumo_->Play(path("long.wav"));
        render(10);
        if (rangeEnd > 0)
            lumo_->PlayRange(path(name), firstFrame, rangeEnd);
        else
            lumo_->PlayFrom(path(name), startMs);
        QVERIFY(lumo_->IsStreaming());
        QVERIFY(!silent(render(4800)));
        QVERIFY(lumo_->IsPlaying());
        const std::int64_t played = lumo_->GetPlayedSamples();
        QVERIFY2(played > firstFrame + 4000 && played <= firstFrame + 4800,
                 qPrintable(QString::number(played)));
        if (rangeEnd > 0) {
            render(9600);
            QVERIFY(!lumo_->IsPlaying()); // the region's 10000 frames are over
        }
        // Back to a WAVE file: the memory player again.
        lumo_->Play(path("long.wav"));
        QVERIFY(!lumo_->IsStreaming());
        expectFirstFrames(mono_, 1, 0);
    }

    // The registry folds the played count of a looping file back into its loop.
    void loopedPositionThroughTheRegistry_data()
    {
        QTest::addColumn<int>("played");
        QTest::addColumn<qint64>("position");
        QTest::newRow("at the loop end, not folded") << 5000 << qint64(5000);
        QTest::newRow("one past the end") << 5001 << qint64(1001);
        QTest::newRow("many rounds") << 1000 + 4000 * 50 + 123 << qint64(1123);
    }

    void loopedPositionThroughTheRegistry()
    {
        QFETCH(int, played);
        QFETCH(qint64, position);
        cleanup();
        const QString looped = path("looped.wav");
        const auto values = fixtures::distinct16(6000, 9);
        QVERIFY(
            fixtures::writeFile(looped, fixtures::wavInts(1, 48000, 16, values, {{1000, 4999}})));
        KrokManager registry(new LumoManager(nullptr, AudioEngine::OutputMode::Offline));
        registry.Initialize();
        registry.AnalyzeFile(looped);
        registry.PlayFile(looped);
        QCOMPARE(registry.GetPlayingPath(), looped);
        std::vector<float> out;
        for (int left = played; left > 0; left -= 4096)
            out = render(static_cast<std::size_t>(std::min(left, 4096)));
        QVERIFY(registry.IsPlaying());
        QCOMPARE(registry.GetPlaybackPosition(), std::int64_t(position));
        // The last frame heard is the unrolled timeline's frame played - 1.
        const int source = played - 1 < 5000 ? played - 1 : 1000 + (played - 1 - 1000) % 4000;
        QCOMPARE(out[out.size() - 2], values[static_cast<std::size_t>(source)] / 32768.0f);
        registry.StopPlayback();
        QVERIFY(!registry.IsPlaying());
        registry.Finalize();
        init(); // cleanup() finalises a manager
    }
};

QTEST_GUILESS_MAIN(TestLumoManager)
#include "tst_lumomanager.moc"
