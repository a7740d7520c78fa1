// What the preview really sends to the sound card: the playback manager on
// SDL's "disk" driver, which writes every buffer the device callback produced
// to a file, read back and measured here.

#include "AudioEngine.h"
#include "FlacEncoding.h"
#include "LumoManager.h"
#include "SoundSource.h"
#include "WaveBuilder.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace {

constexpr int kRamp = 48000 / 200;

// Frames (stereo floats) that were sent to the device.
std::vector<float> readCapture(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = f.readAll();
    std::vector<float> out(static_cast<std::size_t>(bytes.size()) / sizeof(float));
    std::memcpy(out.data(), bytes.constData(), out.size() * sizeof(float));
    return out;
}

// The whole file as its decoder gives it, read straight through from the start.
std::vector<float> decodeWhole(const QString& path, int& channels)
{
    std::unique_ptr<SoundSource> source =
        SoundSource::forSuffix(QFileInfo(path).suffix().toLower().toStdString());
    if (!source || !source->open(QFile::encodeName(path).constData()))
        return {};
    channels = source->channels();
    std::vector<float> all;
    std::vector<float> block(4096 * static_cast<std::size_t>(channels));
    for (;;) {
        const std::int64_t got = source->read(block.data(), 4096);
        if (got <= 0)
            return all;
        all.insert(all.end(), block.begin(), block.begin() + got * channels);
    }
}

// Index (in floats) of the first frame with sound in it.
std::size_t firstSound(const std::vector<float>& out)
{
    std::size_t first = 0;
    while (first + 1 < out.size() && out[first] == 0.0f && out[first + 1] == 0.0f)
        first += 2;
    return first;
}

bool waitUntilDone(LumoManager& lumo, int timeoutMs)
{
    QElapsedTimer t;
    t.start();
    while (lumo.IsPlaying() || lumo.IsPreparing()) {
        if (t.elapsed() > timeoutMs)
            return false;
        QThread::msleep(5);
    }
    return true;
}

} // namespace

class TestPreviewCapture : public QObject
{
    Q_OBJECT

    QTemporaryDir dir_;
    std::unique_ptr<LumoManager> lumo_;
    QString capture_;
    int run_ = 0;

    QString path(const char* name) const { return dir_.filePath(QLatin1String(name)); }

    // The disk driver writes to `file`, waiting `delayMs` per 256-frame buffer
    // (5.3 ms of sound): 1 ms runs five times real time, slow enough for a
    // request to land mid-sound; a streamed sound gets more, so that a busy
    // machine does not starve its worker.
    void start(const QByteArray& file, int delayMs = 1)
    {
        qputenv("SDL_AUDIODRIVER", "disk");
        qputenv("SDL_DISKAUDIOFILE", file);
        qputenv("SDL_DISKAUDIODELAY", QByteArray::number(delayMs));
        lumo_ = std::make_unique<LumoManager>();
        lumo_->Initialize();
        QVERIFY(AudioEngine::IsDeviceRunning());
        QCOMPARE(AudioEngine::GetOutputRate(), 48000);
    }

    void startCapture(int delayMs = 1)
    {
        capture_ = dir_.filePath(QStringLiteral("capture-%1.raw").arg(++run_));
        start(QFile::encodeName(capture_), delayMs);
    }

    std::vector<float> finishCapture()
    {
        lumo_->Finalize();
        lumo_.reset();
        return readCapture(capture_);
    }

    // Plays what `play` starts until `frames` frames were heard, then checks
    // that after the fade-in the card got exactly the frames a straight decode
    // of `file` has at source(i).
    template<typename Play, typename Source>
    void expectDecodedFrames(const QString& file, std::size_t frames, Play play, Source source)
    {
        int channels = 0;
        const std::vector<float> decoded = decodeWhole(file, channels);
        QCOMPARE(channels, 2);
        // Half real time: a sanitizer build on a busy machine decodes slowly,
        // and the first fill holds only 2048 frames.
        startCapture(10);
        lumo_->SetStreamThreshold(0);
        play();
        QVERIFY(lumo_->IsStreaming());
        QTRY_VERIFY_WITH_TIMEOUT(lumo_->GetPlayedSamples() > std::int64_t(source(0) + frames),
                                 15000);
        lumo_->Stop();
        QVERIFY(waitUntilDone(*lumo_, 5000));
        const auto out = finishCapture();
        const std::size_t first = firstSound(out);
        QVERIFY(out.size() >= first + 2 * frames);
        for (std::size_t i = kRamp; i < frames; ++i)
            for (std::size_t c = 0; c < 2; ++c)
                QVERIFY2(std::fabs(out[first + 2 * i + c] - decoded[2 * source(i) + c]) < 1e-6f,
                         qPrintable(QStringLiteral("frame %1").arg(i)));
        QCOMPARE(AudioEngine::GetCallbackStats().streamUnderruns, std::int64_t(0));
    }

    static constexpr std::size_t kLoopStart = 10007;
    static constexpr std::size_t kLoopLength = 9973;

private slots:
    // The build's 48 kHz stereo music as MP3 and Ogg, and as FLAC; an Ogg, a
    // FLAC and a WAV with a loop.
    void initTestCase()
    {
        const QString music = QStringLiteral(TESK_FIXTURE_DIR "/music-stereo.wav");
        QVERIFY(QFile::copy(QStringLiteral(TESK_FIXTURE_DIR "/music-vbr.mp3"), path("music.mp3")));
        QVERIFY(
            QFile::copy(QStringLiteral(TESK_FIXTURE_DIR "/music-stereo.ogg"), path("music.ogg")));
        QVERIFY(fixtures::encodeFlac(music, path("music.flac")));
        const QString start = QString::number(kLoopStart), length = QString::number(kLoopLength);
        QCOMPARE(
            QProcess::execute("oggenc", {"--quiet", "-c", "LOOPSTART=" + start, "-c",
                                         "LOOPLENGTH=" + length, "-o", path("loop.ogg"), music}),
            0);
        QVERIFY(fixtures::encodeFlac(music, path("loop.flac"),
                                     {"-T", "LOOPSTART=" + start, "-T", "LOOPLENGTH=" + length}));
        QVERIFY(fixtures::writeFile(
            path("loop.wav"), fixtures::wavInts(2, 48000, 16, fixtures::distinct16(96000),
                                                {{kLoopStart, kLoopStart + kLoopLength - 1}})));
    }

    void cleanup()
    {
        lumo_.reset();
        qunsetenv("SDL_AUDIODRIVER");
        qunsetenv("SDL_DISKAUDIOFILE");
        qunsetenv("SDL_DISKAUDIODELAY");
    }

    // Seeking twice into the crest of a loud tone: the output never jumps more
    // than the tone itself does from one sample to the next (plus what the 5 ms
    // ramps add), where a cut would jump by up to twice the amplitude.
    void seekPointsDoNotClick()
    {
        const double a = 0.9;
        std::vector<std::int32_t> v(48000 * 3);
        for (std::size_t i = 0; i < v.size(); ++i)
            v[i] =
                static_cast<std::int32_t>(std::lround(a * 32767 * std::cos(2 * M_PI * i / 48.0)));
        QVERIFY(fixtures::writeFile(path("tone.wav"), fixtures::wavInts(1, 48000, 16, v)));
        startCapture();
        lumo_->Play(path("tone.wav"));
        QTRY_VERIFY_WITH_TIMEOUT(lumo_->GetPlayedSamples() > 9600, 5000);
        lumo_->PlayFrom(path("tone.wav"), 1234);
        QTRY_VERIFY_WITH_TIMEOUT(lumo_->GetPlayedSamples() > 1234 * 48 + 4800, 5000);
        lumo_->PlayFrom(path("tone.wav"), 2001);
        QTRY_VERIFY_WITH_TIMEOUT(lumo_->GetPlayedSamples() > 2001 * 48 + 4800, 5000);
        lumo_->Stop();
        QVERIFY(waitUntilDone(*lumo_, 5000));
        const auto out = finishCapture();

        // The positions above show that both seeks happened; between them every
        // frame the card got is here.
        float maxStep = 0.0f;
        std::size_t heard = 0;
        for (std::size_t i = 2; i < out.size(); i += 2) {
            maxStep = std::max(maxStep, std::fabs(out[i] - out[i - 2]));
            heard += out[i] != 0.0f;
        }
        QVERIFY(heard > 9600 + 2 * 4800);
        // The tone's own largest step is 2 pi / 48 x 0.9 = 0.118.
        QVERIFY2(maxStep < 0.118f + a / kRamp + 1e-4f, qPrintable(QString::number(maxStep)));
    }

    // A file at another rate lasts exactly its length at 48 kHz, to its true last
    // frame, and its last frame is ramped down rather than cut.
    void resampledFileLastsItsLength_data()
    {
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("frames");
        QTest::addColumn<bool>("stream");
        QTest::newRow("44.1 kHz, one second") << 44100 << 44100 << false;
        QTest::newRow("22.05 kHz, odd length") << 22050 << 12345 << false;
        QTest::newRow("96 kHz, streamed from disk") << 96000 << 96001 << true;
    }

    void resampledFileLastsItsLength()
    {
        QFETCH(int, rate);
        QFETCH(int, frames);
        QFETCH(bool, stream);
        const std::vector<double> dc(static_cast<std::size_t>(frames) * 2, 0.5);
        QVERIFY(fixtures::writeFile(path("dc.wav"), fixtures::wavFloat(2, rate, 32, dc)));
        startCapture(stream ? 3 : 1);
        lumo_->SetStreamThreshold(stream ? 0 : LumoManager::kDefaultStreamThreshold);
        lumo_->Play(path("dc.wav"));
        QCOMPARE(lumo_->IsStreaming(), stream);
        QVERIFY(waitUntilDone(*lumo_, 10000));
        const auto out = finishCapture();

        const std::size_t first = firstSound(out);
        std::size_t last = out.size();
        while (last > first && out[last - 2] == 0.0f)
            last -= 2;
        const auto heard = static_cast<std::int64_t>((last - first) / 2);
        const std::int64_t want = (std::int64_t(frames) * 48000 + rate - 1) / rate;
        QCOMPARE(heard, want);
        for (std::size_t i = first; i < last; ++i)
            QVERIFY2(out[i] != 0.0f, "one unbroken sound");
        QVERIFY2(std::fabs(out[last - 2]) < 0.5f / 200.0f,
                 qPrintable(QString::number(out[last - 2])));
    }

    // A full-scale 5.1 file folds to stereo with the usual weights (centre and
    // surrounds at -3 dB, LFE dropped), scaled so that it cannot clip: all six
    // channels at full scale in phase come out at full scale, not clipped.
    void sixChannelsFoldWithoutClipping_data()
    {
        QTest::addColumn<int>("mask"); // channels that carry the tone: L R C LFE Ls Rs
        QTest::newRow("all six in phase") << 0x3f;
        QTest::newRow("LFE alone") << 0x08;
        QTest::newRow("left surround alone") << 0x10;
    }

    void sixChannelsFoldWithoutClipping()
    {
        QFETCH(int, mask);
        std::vector<std::int32_t> v(9600 * 6); // full scale, a 6 kHz square-ish tone
        for (std::size_t i = 0; i < v.size(); ++i)
            v[i] = (mask >> (i % 6)) & 1 ? ((i / 24) % 2 ? 32767 : -32767) : 0;
        QVERIFY(fixtures::writeFile(path("six.wav"), fixtures::wavInts(6, 48000, 16, v)));
        startCapture();
        lumo_->Play(path("six.wav"));
        QVERIFY(waitUntilDone(*lumo_, 5000));
        const auto out = finishCapture();

        // Expected peaks: the weights of the channels that carry the tone.
        const double k = 1.0 / (1.0 + 2.0 * M_SQRT1_2), c = k * M_SQRT1_2, full = 32767.0 / 32768.0;
        const double weights[2][6] = {{k, 0, c, 0, c, 0}, {0, k, c, 0, 0, c}};
        for (std::size_t side = 0; side < 2; ++side) {
            double want = 0.0;
            for (int ch = 0; ch < 6; ++ch)
                want += (mask >> ch) & 1 ? weights[side][ch] * full : 0.0;
            float peak = 0.0f;
            for (std::size_t i = side; i < out.size(); i += 2)
                peak = std::max(peak, std::fabs(out[i]));
            QVERIFY2(std::fabs(peak - want) < 1e-5, qPrintable(QString::number(peak, 'g', 9)));
        }
    }

    // A seek into a streamed MP3, Ogg or FLAC file: after the fade-in, the card gets
    // exactly the frames a straight decode has at the requested position.
    void seekInAStreamedFileLandsOnItsFrame_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("startMs");
        QTest::newRow("MP3 at 4321 ms") << "music.mp3" << 4321;
        QTest::newRow("Ogg at 1234 ms") << "music.ogg" << 1234;
        QTest::newRow("FLAC at 2345 ms") << "music.flac" << 2345;
    }

    void seekInAStreamedFileLandsOnItsFrame()
    {
        QFETCH(QString, name);
        QFETCH(int, startMs);
        const QString file = dir_.filePath(name);
        expectDecodedFrames(
            file, 9600, [&] { lumo_->PlayFrom(file, startMs); },
            [&](std::size_t i) { return std::size_t(startMs) * 48 + i; });
    }

    // An Ogg or FLAC file whose comments state a loop, or a WAV with a sampler
    // loop, streams head then loop rounds, each wrap sample-exact.
    void streamedLoopWrapsSampleExactly_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("Ogg") << "loop.ogg";
        QTest::newRow("FLAC") << "loop.flac";
        QTest::newRow("WAV") << "loop.wav";
    }

    void streamedLoopWrapsSampleExactly()
    {
        QFETCH(QString, name);
        expectDecodedFrames(
            dir_.filePath(name), kLoopStart + 2 * kLoopLength + 100,
            [&] { lumo_->Play(dir_.filePath(name)); },
            [](std::size_t i) {
                return i < kLoopStart + kLoopLength ? i
                                                    : kLoopStart + (i - kLoopStart) % kLoopLength;
            });
    }

    // The device goes away mid-sound (the disk driver's writes start failing):
    // the output moves to the default device and the sound plays on to its end
    // instead of hanging.
    void lostDeviceFallsBackToTheDefault()
    {
        std::vector<std::int32_t> v(48000, 8000);
        QVERIFY(fixtures::writeFile(path("half.wav"), fixtures::wavInts(1, 48000, 16, v)));
        start(QByteArrayLiteral("/dev/full"));
        lumo_->Play(path("half.wav"));
        capture_ = dir_.filePath(QStringLiteral("after-loss.raw"));
        qputenv("SDL_DISKAUDIOFILE", QFile::encodeName(capture_)); // where the default opens
        QString lost = QStringLiteral("unset");
        bool recovered = false;
        QElapsedTimer t;
        t.start();
        while (!recovered && t.elapsed() < 5000) {
            QThread::msleep(10);
            recovered = lumo_->CheckOutputDevice(&lost);
        }
        QVERIFY(recovered);
        QVERIFY2(lost.isEmpty(), qPrintable(lost)); // the default itself went
        QVERIFY(AudioEngine::IsDeviceRunning());
        QVERIFY(waitUntilDone(*lumo_, 5000));
        QVERIFY(!lumo_->CheckOutputDevice());
        const auto out = finishCapture();
        QVERIFY(std::any_of(out.begin(), out.end(), [](float x) { return x > 0.2f; }));
    }
};

QTEST_GUILESS_MAIN(TestPreviewCapture)
#include "tst_previewcapture.moc"
