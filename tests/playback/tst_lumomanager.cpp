// The playback manager over the engine's offline render path (and once over
// SDL's dummy driver), with WAVE/AIFF files and MP3 files made by lame.

#include "AudioEngine.h"
#include "FlacEncoding.h"
#include "KrokManager.h"
#include "LumoManager.h"
#include "WaveBuilder.h"

#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cmath>
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

std::vector<std::int32_t> sine16(int frames, int channels, double hz, int rate)
{
    std::vector<std::int32_t> v(static_cast<std::size_t>(frames * channels));
    for (int i = 0; i < frames; ++i)
        for (int c = 0; c < channels; ++c)
            v[static_cast<std::size_t>(i * channels + c)] =
                static_cast<std::int32_t>(12000.0 * std::sin(2 * M_PI * hz * i / rate));
    return v;
}

} // namespace

class TestLumoManager : public QObject
{
    Q_OBJECT

    QTemporaryDir dir_;
    std::unique_ptr<LumoManager> lumo_;
    std::vector<std::int32_t> values48k_;
    bool haveMp3_ = false;
    bool haveOgg_ = false;

    QString path(const char* name) const { return dir_.filePath(QLatin1String(name)); }

    bool encodeMp3(const char* wav, const char* mp3, const QStringList& extra)
    {
        QStringList args{QStringLiteral("--quiet"), QStringLiteral("-b"), QStringLiteral("128")};
        args << extra << path(wav) << path(mp3);
        return QProcess::execute(QStringLiteral("lame"), args) == 0;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(dir_.isValid());
        values48k_ = fixtures::distinct16(48000 * 2, 3);
        QVERIFY(fixtures::writeFile(path("long.wav"), fixtures::wavInts(1, 48000, 16, values48k_)));
        QVERIFY(
            fixtures::writeFile(path("UPPER.WAV"), fixtures::wavInts(1, 48000, 16, values48k_)));
        const auto stereo = fixtures::distinct16(2000, 5);
        QVERIFY(fixtures::writeFile(path("x.aif"), fixtures::aiffInts(2, 48000, 16, stereo)));
        QVERIFY(fixtures::writeFile(path("x.aiff"), fixtures::aiffInts(2, 48000, 16, stereo)));
        QVERIFY(fixtures::encodeFlac(path("long.wav"), path("long.FLAC")));

        if (QStandardPaths::findExecutable(QStringLiteral("lame")).isEmpty())
            return;
        QVERIFY(fixtures::writeFile(path("a44.wav"),
                                    fixtures::wavInts(2, 44100, 16, sine16(44100, 2, 440, 44100))));
        QVERIFY(fixtures::writeFile(path("b44.wav"),
                                    fixtures::wavInts(2, 44100, 16, sine16(22050, 2, 660, 44100))));
        QVERIFY(fixtures::writeFile(path("m48.wav"),
                                    fixtures::wavInts(1, 48000, 16, sine16(48000, 1, 550, 48000))));
        QVERIFY(encodeMp3("a44.wav", "a.mp3", {}));
        QVERIFY(encodeMp3("b44.wav", "b.mp3", {}));
        QVERIFY(encodeMp3("m48.wav", "mono48.mp3", {QStringLiteral("-m"), QStringLiteral("m")}));
        haveMp3_ = true;
        if (!QStandardPaths::findExecutable(QStringLiteral("oggenc")).isEmpty())
            haveOgg_ = QProcess::execute(QStringLiteral("oggenc"),
                                         {QStringLiteral("--quiet"), QStringLiteral("-o"),
                                          path("m48.ogg"), path("m48.wav")}) == 0;
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

    void suffixPicksThePlayer_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("channels");
        QTest::newRow("upper-case WAV") << "UPPER.WAV" << 1;
        QTest::newRow("aif") << "x.aif" << 2;
        QTest::newRow("aiff") << "x.aiff" << 2;
    }

    void suffixPicksThePlayer()
    {
        QFETCH(QString, name);
        QFETCH(int, channels);
        lumo_->Play(dir_.filePath(name));
        QVERIFY(!lumo_->IsStreaming());
        QVERIFY(lumo_->IsPreparing());
        const auto out = render(kRamp + 100);
        QVERIFY(lumo_->IsPlaying());
        const auto expected = channels == 1 ? values48k_ : fixtures::distinct16(2000, 5);
        const auto at = static_cast<std::size_t>(kRamp * channels);
        QCOMPARE(out[2 * kRamp], expected[at] / 32768.0f);
        QCOMPARE(out[2 * kRamp + 1],
                 expected[at + static_cast<std::size_t>(channels - 1)] / 32768.0f);
        QCOMPARE(lumo_->GetPlayedSamples(), std::int64_t(kRamp + 100));
    }

    void playFromStartsAtTheRequestedFrame()
    {
        lumo_->PlayFrom(path("long.wav"), 1500);
        const auto out = render(kRamp + 64);
        for (int i = kRamp; i < kRamp + 64; ++i)
            QCOMPARE(out[2 * i], values48k_[static_cast<std::size_t>(72000 + i)] / 32768.0f);
        QCOMPARE(lumo_->GetPlayedSamples(), std::int64_t(72000 + kRamp + 64));
    }

    void stopReturnsToStopped()
    {
        lumo_->Play(path("long.wav"));
        render(10);
        QVERIFY(lumo_->IsPlaying());
        lumo_->Stop();
        QVERIFY(!lumo_->IsPlaying());
        QVERIFY(!lumo_->IsPreparing());
        QCOMPARE(lumo_->GetPlayedSamples(), std::int64_t(0));
        QVERIFY(silent(render(100)));
        // Playing again after a stop starts from the top.
        lumo_->Play(path("long.wav"));
        QCOMPARE(render(kRamp + 1)[2 * kRamp], values48k_[kRamp] / 32768.0f);
    }

    void missingFileReportsAnEngineError()
    {
        QSignalSpy spy(lumo_.get(), &PreviewPlayer::ErrorOccurred);
        lumo_->Play(path("nope.wav"));
        QCOMPARE(spy.count(), 1);
        QVERIFY2(spy[0][0].toString().startsWith(QStringLiteral("E2026112205 : ")),
                 qPrintable(spy[0][0].toString()));
        QVERIFY(!lumo_->IsPlaying());
        QVERIFY(silent(render(10)));
    }

    void volumeZeroSilencesBothPlayers()
    {
        if (!haveMp3_)
            QSKIP("lame is not installed");
        lumo_->Play(path("long.wav"));
        render(10);
        lumo_->SetVolume(0.0f);
        render(240); // the ramp down
        QVERIFY(silent(render(1000)));

        lumo_->Play(path("a.mp3"));
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
        QTest::newRow("44.1 kHz stereo MP3 from the top") << "a.mp3" << 0 << qint64(0) << qint64(0);
        QTest::newRow("44.1 kHz stereo MP3 at 500 ms")
            << "a.mp3" << 500 << qint64(0) << qint64(22050);
        QTest::newRow("48 kHz mono MP3 at 250 ms")
            << "mono48.mp3" << 250 << qint64(0) << qint64(12000);
        QTest::newRow("Ogg at 100 ms") << "m48.ogg" << 100 << qint64(0) << qint64(4800);
        QTest::newRow("Ogg region") << "m48.ogg" << 0 << qint64(16000) << qint64(6000);
        QTest::newRow("FLAC at 250 ms") << "long.FLAC" << 250 << qint64(0) << qint64(12000);
        QTest::newRow("FLAC region") << "long.FLAC" << 0 << qint64(16000) << qint64(6000);
    }

    void decodedFilesStartWhereAsked()
    {
        QFETCH(QString, name);
        QFETCH(int, startMs);
        QFETCH(qint64, rangeEnd);
        QFETCH(qint64, firstFrame);
        if (!name.endsWith(QLatin1String(".FLAC")) &&
            (!haveMp3_ || (name.endsWith(QLatin1String(".ogg")) && !haveOgg_)))
            QSKIP("lame or oggenc is not installed");
        lumo_->Play(path("long.wav"));
        render(10);
        if (rangeEnd > 0)
            lumo_->PlayRange(path(qPrintable(name)), firstFrame, rangeEnd);
        else
            lumo_->PlayFrom(path(qPrintable(name)), startMs);
        QVERIFY(lumo_->IsStreaming());
        const auto out = render(4800);
        QVERIFY(lumo_->IsPlaying());
        QVERIFY(!silent(out));
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
        QCOMPARE(render(kRamp + 1)[2 * kRamp], values48k_[kRamp] / 32768.0f);
    }

    void notPlayingReportsNoSamples()
    {
        QCOMPARE(lumo_->GetPlayedSamples(), std::int64_t(0));
        QVERIFY(!lumo_->IsPlaying());
        QVERIFY(!lumo_->IsPreparing());
        lumo_->Play(path("x.aif")); // 2000 frames, then play end
        render(3000);
        QVERIFY(!lumo_->IsPlaying());
        QCOMPARE(lumo_->GetPlayedSamples(), std::int64_t(0));
    }

    void requestsBeforeInitializeDoNothing()
    {
        LumoManager idle(nullptr, AudioEngine::OutputMode::Offline);
        idle.Play(path("long.wav"));
        idle.SetVolume(0.5f);
        idle.Stop();
        QVERIFY(!idle.IsPlaying());
        QCOMPARE(idle.GetPlayedSamples(), std::int64_t(0));
    }

    // The registry folds the played count of a looping file back into its loop.
    void loopedPositionThroughTheRegistry_data()
    {
        QTest::addColumn<int>("played");
        QTest::addColumn<qint64>("position");
        QTest::newRow("before the loop end") << 4000 << qint64(4000);
        QTest::newRow("at the loop end, not folded") << 5000 << qint64(5000);
        QTest::newRow("one past the end") << 5001 << qint64(1001);
        QTest::newRow("9000 played") << 9000 << qint64(1000);
        QTest::newRow("many rounds") << 1000 + 4000 * 50 + 123 << qint64(1123);
    }

    void loopedPositionThroughTheRegistry()
    {
        QFETCH(int, played);
        QFETCH(qint64, position);
        lumo_->Finalize();
        lumo_.reset();
        const QString looped = path("looped.wav");
        const auto values = fixtures::distinct16(6000, 9);
        QVERIFY(
            fixtures::writeFile(looped, fixtures::wavInts(1, 48000, 16, values, {{1000, 4999}})));
        KrokManager registry(new LumoManager(nullptr, AudioEngine::OutputMode::Offline));
        registry.Initialize();
        registry.AnalyzeFile(looped);
        QCOMPARE(registry.GetFileInfo(looped).loopEnd, 5000);
        registry.PlayFile(looped);
        QCOMPARE(registry.GetPlayingPath(), looped);
        std::vector<float> out;
        for (int left = played; left > 0; left -= 4096) {
            const auto part = render(static_cast<std::size_t>(std::min(left, 4096)));
            out.insert(out.end(), part.begin(), part.end());
        }
        QVERIFY(registry.IsPlaying());
        QCOMPARE(registry.GetPlaybackPosition(), std::int64_t(position));
        // The last frame heard is the unrolled timeline's frame played - 1.
        const int last = played - 1;
        const int source = last < 5000 ? last : 1000 + (last - 1000) % 4000;
        QCOMPARE(out[out.size() - 2], values[static_cast<std::size_t>(source)] / 32768.0f);
        registry.StopPlayback();
        QVERIFY(!registry.IsPlaying());
        registry.Finalize();
        init(); // cleanup() finalises a manager
    }

    // On a running device the stop-and-wait spins through the stop ramp.
    void switchingFilesOnTheDummyDevice()
    {
        lumo_->Finalize();
        qputenv("SDL_AUDIODRIVER", "dummy");
        lumo_ = std::make_unique<LumoManager>();
        lumo_->Initialize();
        qunsetenv("SDL_AUDIODRIVER");
        QVERIFY(AudioEngine::IsDeviceRunning());
        lumo_->Play(path("long.wav"));
        QTRY_VERIFY_WITH_TIMEOUT(lumo_->IsPlaying(), 2000);
        lumo_->PlayFrom(path("long.wav"), 1000);
        QTRY_VERIFY_WITH_TIMEOUT(lumo_->IsPlaying(), 2000);
        QVERIFY(lumo_->GetPlayedSamples() >= 48000);
    }
};

QTEST_GUILESS_MAIN(TestLumoManager)
#include "tst_lumomanager.moc"
