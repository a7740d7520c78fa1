// What the preview really sends to the sound card: the playback manager on
// SDL's "disk" driver, which writes every buffer the device callback produced
// to a file, read back and measured here.

#include "AudioEngine.h"
#include "FlacEncoding.h"
#include "LumoManager.h"
#include "SoundSource.h"
#include "WaveBuilder.h"

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
    // request to land mid-sound.
    void start(int delayMs, const QString& file = {})
    {
        capture_ = dir_.filePath(QStringLiteral("capture-%1.raw").arg(++run_));
        qputenv("SDL_AUDIODRIVER", "disk");
        qputenv("SDL_DISKAUDIOFILE", QFile::encodeName(file.isEmpty() ? capture_ : file));
        qputenv("SDL_DISKAUDIODELAY", QByteArray::number(delayMs));
        lumo_ = std::make_unique<LumoManager>();
        lumo_->Initialize();
        QVERIFY(AudioEngine::IsDeviceRunning());
        QCOMPARE(AudioEngine::GetOutputRate(), 48000);
    }

    // Frames (stereo floats) that were sent to the device, once it has played out.
    std::vector<float> finishCapture()
    {
        if (!QTest::qWaitFor([&] { return !lumo_->IsPlaying() && !lumo_->IsPreparing(); }))
            return {};
        lumo_->Finalize();
        lumo_.reset();
        QFile f(capture_);
        const QByteArray bytes = f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
        std::vector<float> out(static_cast<std::size_t>(bytes.size()) / sizeof(float));
        std::memcpy(out.data(), bytes.constData(), out.size() * sizeof(float));
        return out;
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

    // A seek into a streamed MP3, Ogg or FLAC file, or an Ogg or FLAC file whose
    // comments state a loop, or a WAV with a sampler loop, from the top: after
    // the fade-in the card gets exactly the frames of a straight decode, each
    // loop wrap sample-exact.
    void streamedFileSendsItsOwnFrames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("startMs"); // -1: from the top, through its loop
        QTest::newRow("MP3 at 4321 ms") << "music.mp3" << 4321;
        QTest::newRow("Ogg at 1234 ms") << "music.ogg" << 1234;
        QTest::newRow("FLAC at 2345 ms") << "music.flac" << 2345;
        QTest::newRow("Ogg loop") << "loop.ogg" << -1;
        QTest::newRow("FLAC loop") << "loop.flac" << -1;
        QTest::newRow("WAV loop") << "loop.wav" << -1;
    }

    void streamedFileSendsItsOwnFrames()
    {
        QFETCH(QString, name);
        QFETCH(int, startMs);
        const QString file = dir_.filePath(name);
        const std::size_t frames = startMs < 0 ? kLoopStart + 2 * kLoopLength + 100 : 9600;
        const auto source = [&](std::size_t i) {
            if (startMs >= 0)
                return std::size_t(startMs) * 48 + i;
            return i < kLoopStart + kLoopLength ? i : kLoopStart + (i - kLoopStart) % kLoopLength;
        };
        int channels = 0;
        const std::vector<float> decoded = decodeWhole(file, channels);
        QCOMPARE(channels, 2);
        // Half real time: a sanitizer build on a busy machine decodes slowly,
        // and the first fill holds only 2048 frames.
        start(10);
        lumo_->SetStreamThreshold(0);
        lumo_->PlayFrom(file, std::max(startMs, 0));
        QVERIFY(lumo_->IsStreaming());
        QTRY_VERIFY_WITH_TIMEOUT(lumo_->GetPlayedSamples() > std::int64_t(source(0) + frames),
                                 15000);
        lumo_->Stop();
        const auto out = finishCapture();
        const std::size_t first = firstSound(out);
        QVERIFY(out.size() >= first + 2 * frames);
        for (std::size_t i = kRamp; i < frames; ++i)
            for (std::size_t c = 0; c < 2; ++c)
                QVERIFY2(std::fabs(out[first + 2 * i + c] - decoded[2 * source(i) + c]) < 1e-6f,
                         qPrintable(QStringLiteral("frame %1").arg(i)));
        QCOMPARE(AudioEngine::GetCallbackStats().streamUnderruns, std::int64_t(0));
    }

    // The output moves to the device asked for while a looped sound plays on;
    // a device that cannot open (for the disk driver, a file in a missing
    // folder) leaves the default playing; asking for the one in use answers at once.
    void outputMovesWhileTheSoundPlaysOn()
    {
        start(1);
        const QStringList devices = lumo_->OutputDevices();
        QVERIFY(!devices.isEmpty());
        lumo_->Play(path("loop.wav"));
        const QString moves[][2] = {{devices[0], devices[0]}, {path("gone/card"), {}}, {{}, {}}};
        for (const auto& [asked, opened] : moves) {
            lumo_->SetOutputDevice(asked);
            QString requested = QStringLiteral("unset");
            bool ok = false;
            QVERIFY(QTest::qWaitFor([&] { return lumo_->TakeOutputChange(&requested, &ok); }));
            QCOMPARE(QPair(requested, ok), QPair(asked, asked == opened));
            QCOMPARE(lumo_->OutputDevice(), opened);
        }
        QVERIFY(lumo_->IsPlaying());
        lumo_->Stop();
        const auto out = finishCapture(); // written since the last move
        QVERIFY(std::any_of(out.begin(), out.end(), [](float x) { return x != 0.0f; }));
    }

    // The device goes away mid-sound (the disk driver's writes start failing):
    // the output moves to the default device and the sound plays on to its end
    // instead of hanging.
    void lostDeviceFallsBackToTheDefault()
    {
        std::vector<std::int32_t> v(48000, 8000);
        QVERIFY(fixtures::writeFile(path("half.wav"), fixtures::wavInts(1, 48000, 16, v)));
        start(1, QStringLiteral("/dev/full"));
        lumo_->Play(path("half.wav"));
        qputenv("SDL_DISKAUDIOFILE", QFile::encodeName(capture_)); // where the default opens
        QString lost = QStringLiteral("unset");
        QVERIFY(QTest::qWaitFor([&] { return lumo_->CheckOutputDevice(&lost); }));
        QVERIFY2(lost.isEmpty(), qPrintable(lost)); // the default itself went
        QVERIFY(AudioEngine::IsDeviceRunning() && !lumo_->CheckOutputDevice());
        const auto out = finishCapture();
        QVERIFY(std::any_of(out.begin(), out.end(), [](float x) { return x > 0.2f; }));
    }
};

QTEST_GUILESS_MAIN(TestPreviewCapture)
#include "tst_previewcapture.moc"
