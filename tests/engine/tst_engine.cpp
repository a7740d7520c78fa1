// The engine through its offline render path: what comes out of the mixer,
// frame by frame, with no device.

#include "AudioEngine.h"
#include "Mixer.h"
#include "TestSounds.h"

#include <QRegularExpression>
#include <QtTest>

#include <cmath>
#include <cstdlib>
#include <vector>

using namespace AudioEngine;

namespace {

QStringList g_errors;
void collectError(const char* text)
{
    g_errors << QString::fromLocal8Bit(text);
}

std::atomic<int> g_allocs{0};
std::atomic<int> g_frees{0};
void* countingAlloc(std::size_t n)
{
    ++g_allocs;
    return std::malloc(n);
}
void countingFree(void* p)
{
    ++g_frees;
    std::free(p);
}

std::vector<float> render(std::size_t frames)
{
    std::vector<float> out(frames * 2);
    RenderOffline(out.data(), frames);
    return out;
}

} // namespace

class TestEngine : public QObject
{
    Q_OBJECT

    VoicePoolHandle wavePool_ = nullptr;
    VoicePoolHandle aiffPool_ = nullptr;
    VoicePoolHandle pcmPool_ = nullptr;
    PlayerHandle player_ = nullptr;
    QByteArray data_; // kept alive while the player reads it

    void startWave(const QByteArray& file, DataFormat format = DataFormat::Wave, int startMs = 0)
    {
        data_ = file;
        SetDataFormat(player_, format);
        SetData(player_, data_.constData(), static_cast<std::size_t>(data_.size()));
        SetStartTimeMs(player_, startMs);
        Start(player_);
    }

    void startPcm(const std::vector<float>& pcm, int channels, int rate)
    {
        data_ = QByteArray(reinterpret_cast<const char*>(pcm.data()),
                           static_cast<int>(pcm.size() * sizeof(float)));
        SetDataFormat(player_, DataFormat::RawPcm);
        SetVoicePoolId(player_, 0);
        SetNumChannels(player_, channels);
        SetSamplingRate(player_, rate);
        SetData(player_, data_.constData(), static_cast<std::size_t>(data_.size()));
        Start(player_);
    }

    void initEngine(int rate)
    {
        InitConfig config;
        config.output = OutputMode::Offline;
        config.outputRate = rate;
        QVERIFY(Initialize(config));
        wavePool_ = CreateWaveVoicePool({0, 1, 8, 192000});
        aiffPool_ = CreateAiffVoicePool({0, 1, 8, 192000});
        pcmPool_ = CreateRawPcmVoicePool({0, 1, 8, 192000, SampleFormat::Float32});
        player_ = CreatePlayer();
        QVERIFY(wavePool_ && aiffPool_ && pcmPool_ && player_);
    }

private slots:
    void init()
    {
        g_errors.clear();
        SetErrorCallback(collectError);
        initEngine(48000);
    }

    void cleanup()
    {
        Finalize();
        SetErrorCallback(nullptr);
    }

    void wavRendersItsOwnSamples_data()
    {
        QTest::addColumn<int>("bits");
        QTest::addColumn<int>("channels");
        QTest::newRow("16-bit mono") << 16 << 1;
        QTest::newRow("16-bit stereo") << 16 << 2;
        QTest::newRow("24-bit stereo") << 24 << 2;
        QTest::newRow("8-bit mono") << 8 << 1;
    }

    void wavRendersItsOwnSamples()
    {
        QFETCH(int, bits);
        QFETCH(int, channels);
        const std::size_t frames = 3000;
        std::vector<std::int32_t> values = TestSounds::distinct16(frames * channels);
        const int shift = 16 - bits;
        for (auto& v : values)
            v = shift >= 0 ? v >> shift : v * (1 << -shift) + 77;
        startWave(TestSounds::wavPcm(channels, 48000, bits, values));
        QCOMPARE(GetStatus(player_), PlayerStatus::Preparing);

        const auto out = render(frames + 100);
        const float full = static_cast<float>(1 << (bits - 1));
        for (std::size_t i = 0; i < frames; ++i) {
            const float l = values[i * channels] / full;
            const float r = values[i * channels + (channels - 1)] / full;
            QCOMPARE(out[2 * i], l);
            QCOMPARE(out[2 * i + 1], r);
        }
        for (std::size_t i = frames * 2; i < out.size(); ++i)
            QCOMPARE(out[i], 0.0f);
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
        QCOMPARE(GetPlayedSamples(GetLastPlaybackId(player_)), std::int64_t(frames));
        QVERIFY2(g_errors.isEmpty(), qPrintable(g_errors.join('\n')));
    }

    void floatWavAndAiffRenderTheirSamples()
    {
        std::vector<float> f = {0.5f, -0.25f, 1.0f, -1.0f, 0.125f, 0.0f};
        startWave(TestSounds::wavFloat(1, 48000, f));
        auto out = render(6);
        for (int i = 0; i < 6; ++i)
            QCOMPARE(out[2 * i], f[i]);

        const auto values = TestSounds::distinct16(1000);
        startWave(TestSounds::aiffPcm(2, 48000, 16, values), DataFormat::Aiff);
        out = render(500);
        for (std::size_t i = 0; i < 1000; ++i)
            QCOMPARE(out[i], values[i] / 32768.0f);
    }

    // Head, then the loop body over and over; the seam joins sample-exactly.
    void loopPlaysHeadThenBodyRepeated_data()
    {
        QTest::addColumn<bool>("aiff");
        QTest::newRow("WAVE smpl") << false;
        QTest::newRow("AIFF INST") << true;
    }

    void loopPlaysHeadThenBodyRepeated()
    {
        QFETCH(bool, aiff);
        // A sine whose period divides the loop length: continuous across the seam
        // only if the jump lands on exactly the right frame.
        const int start = 1000;
        const int end = 5000; // exclusive
        const int total = 6000;
        std::vector<std::int32_t> v(total);
        for (int i = 0; i < total; ++i)
            v[i] = static_cast<std::int32_t>(std::lround(20000.0 * std::sin(2 * M_PI * i / 400.0)));
        // Past the loop the file holds a tail that must never be heard.
        for (int i = end; i < total; ++i)
            v[i] = 30000;
        startWave(aiff ? TestSounds::aiffPcm(1, 48000, 16, v, start, end)
                       : TestSounds::wavPcm(1, 48000, 16, v, {{start, end - 1}}),
                  aiff ? DataFormat::Aiff : DataFormat::Wave);

        const int frames = 20000;
        std::vector<float> out;
        for (int chunk = 0; chunk < 4; ++chunk) { // odd chunking crosses the seam mid-buffer
            const auto part = render(frames / 4);
            out.insert(out.end(), part.begin(), part.end());
        }
        float maxStep = 0.0f;
        for (int i = 0; i < frames; ++i) {
            const int src = i < end ? i : start + (i - start) % (end - start);
            QCOMPARE(out[2 * i], v[src] / 32768.0f);
            if (i > 0)
                maxStep = std::max(maxStep, std::fabs(out[2 * i] - out[2 * i - 2]));
        }
        // The sine's largest step is 2*pi/400 * 20000/32768 = 0.0096.
        QVERIFY2(maxStep < 0.0097f, qPrintable(QString::number(maxStep)));
        QCOMPARE(GetStatus(player_), PlayerStatus::Playing);
        QCOMPARE(GetPlayedSamples(GetLastPlaybackId(player_)), std::int64_t(frames));
        Stop(player_);
        QCOMPARE(GetStatus(player_), PlayerStatus::Stopped);
    }

    void startTimeSeeksToTheExactFrame()
    {
        const auto values = TestSounds::distinct16(48000 * 2);
        startWave(TestSounds::wavPcm(1, 48000, 16, values), DataFormat::Wave, 1500);
        const auto out = render(100);
        for (int i = 0; i < 100; ++i)
            QCOMPARE(out[2 * i], values[72000 + i] / 32768.0f);
        QCOMPARE(GetPlayedSamples(GetLastPlaybackId(player_)), std::int64_t(72100));
    }

    void truncatedFilePlaysWhatIsThere()
    {
        const auto values = TestSounds::distinct16(1000);
        QByteArray file = TestSounds::wavPcm(1, 48000, 16, values);
        file.chop(200); // the data chunk still claims 1000 frames
        startWave(file);
        const auto out = render(1200);
        for (int i = 0; i < 900; ++i)
            QCOMPARE(out[2 * i], values[static_cast<std::size_t>(i)] / 32768.0f);
        for (std::size_t i = 2 * 900; i < out.size(); ++i)
            QCOMPARE(out[i], 0.0f);
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
    }

    // Starting inside the release tail of a looped sound plays the tail and ends.
    void startPastTheLoopPlaysTheTail()
    {
        const auto values = TestSounds::distinct16(4800);
        startWave(TestSounds::wavPcm(1, 48000, 16, values, {{480, 959}}), DataFormat::Wave, 50);
        const auto out = render(4800);
        for (int i = 0; i < 4800 - 2400; ++i)
            QCOMPARE(out[2 * i], values[static_cast<std::size_t>(2400 + i)] / 32768.0f);
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
    }

    void outputIsClippedAndFreeOfNaN()
    {
        const std::vector<float> f = {2.0f, -3.0f, std::nanf(""), INFINITY, 0.5f};
        startWave(TestSounds::wavFloat(1, 48000, f));
        const auto out = render(5);
        const std::vector<float> want = {1.0f, -1.0f, 0.0f, 1.0f, 0.5f};
        for (int i = 0; i < 5; ++i)
            QCOMPARE(out[2 * i], want[static_cast<std::size_t>(i)]);
    }

    void startPastTheEndEndsAtOnce()
    {
        startWave(TestSounds::wavPcm(1, 48000, 16, TestSounds::distinct16(480)), DataFormat::Wave,
                  5000);
        const auto out = render(64);
        QVERIFY(std::all_of(out.begin(), out.end(), [](float x) { return x == 0.0f; }));
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
        Stop(player_);
        QCOMPARE(GetStatus(player_), PlayerStatus::Stopped);
    }

    void rawPcmPlaysFromCallerMemory()
    {
        std::vector<float> pcm(2 * 1000);
        for (std::size_t i = 0; i < pcm.size(); ++i)
            pcm[i] = static_cast<float>(i % 97) / 97.0f - 0.5f;
        startPcm(pcm, 2, 48000);
        const auto out = render(1000);
        for (std::size_t i = 0; i < pcm.size(); ++i)
            QCOMPARE(out[i], pcm[i]);
    }

    void sixChannelsFoldToStereo()
    {
        std::vector<float> pcm = {0.1f, 0.2f, 0.4f, 0.8f, 0.01f, 0.02f};
        startPcm(pcm, 6, 48000);
        const auto out = render(1);
        const float centre = 0.4f * 0.70710678f;
        QVERIFY(std::fabs(out[0] - (0.1f + centre + 0.01f)) < 1e-6f);
        QVERIFY(std::fabs(out[1] - (0.2f + centre + 0.02f)) < 1e-6f);
    }

    void stopSilencesAndReadsStopped()
    {
        std::vector<float> pcm(48000, 0.5f);
        startPcm(pcm, 1, 48000);
        render(100);
        QCOMPARE(GetStatus(player_), PlayerStatus::Playing);
        Stop(player_);
        QCOMPARE(GetStatus(player_), PlayerStatus::Stopped);
        const auto out = render(100);
        QVERIFY(std::all_of(out.begin(), out.end(), [](float x) { return x == 0.0f; }));
    }

    // A volume change glides over about 5 ms instead of stepping.
    void volumeChangeIsRamped()
    {
        std::vector<float> pcm(48000, 0.5f);
        startPcm(pcm, 1, 48000);
        render(10);
        SetVolume(player_, 0.0f);
        ApplyParameters(player_);
        const auto out = render(400);
        const int ramp = 48000 / 200;
        for (int i = 1; i < 400; ++i) {
            const float step = out[2 * i - 2] - out[2 * i];
            QVERIFY2(step >= -1e-6f && step <= 0.5f / ramp + 1e-5f, qPrintable(QString::number(i)));
        }
        QVERIFY(out[0] > 0.49f);
        QCOMPARE(out[2 * ramp], 0.0f);
        QCOMPARE(out[2 * 399], 0.0f);
        QCOMPARE(GetStatus(player_), PlayerStatus::Playing);

        // The next sound starts at the player's volume.
        startPcm(pcm, 1, 48000);
        const auto silent = render(50);
        QVERIFY(std::all_of(silent.begin(), silent.end(), [](float x) { return x == 0.0f; }));
        SetVolume(player_, 0.25f);
        startPcm(pcm, 1, 48000);
        QCOMPARE(render(1)[0], 0.125f);
    }

    void resamplesToTheOutputRate()
    {
        // A 1 kHz sine at 24 kHz played on a 48 kHz output stays 1 kHz and lasts twice as many
        // frames.
        std::vector<float> pcm(24000);
        for (std::size_t i = 0; i < pcm.size(); ++i)
            pcm[i] = 0.5f * static_cast<float>(std::sin(2 * M_PI * 1000.0 * i / 24000.0));
        startPcm(pcm, 1, 24000);
        const auto out = render(48000 + 2000);
        double err = 0.0;
        int crossings = 0;
        for (std::size_t i = 1000; i < 47000; ++i) {
            if ((out[2 * i - 2] < 0.0f) != (out[2 * i] < 0.0f))
                ++crossings;
        }
        std::size_t last = 0;
        for (std::size_t i = 0; i < out.size() / 2; ++i)
            if (out[2 * i] != 0.0f)
                last = i;
        // 46 ms of 1 kHz has 2 crossings per ms.
        QVERIFY2(std::abs(crossings - 2 * 46000 / 48) <= 2, qPrintable(QString::number(crossings)));
        QVERIFY2(last > 47900 && last < 48100, qPrintable(QString::number(last)));
        // Peak amplitude survives the conversion.
        for (std::size_t i = 2000; i < 46000; ++i)
            err = std::max(err, std::fabs(out[2 * i]) - 0.5);
        QVERIFY(err < 0.01);
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
        QCOMPARE(GetPlaybackSamplingRate(GetLastPlaybackId(player_)), 24000);
        const std::int64_t played = GetPlayedSamples(GetLastPlaybackId(player_));
        QVERIFY2(std::llabs(played - 24000) < 50, qPrintable(QString::number(played)));
    }

    void failuresReportCodedTexts_data()
    {
        QTest::addColumn<int>("what");
        QTest::addColumn<QString>("code");
        QTest::newRow("empty data") << 0 << "E2026112205";
        QTest::newRow("not a wave file") << 1 << "E2026112206";
        QTest::newRow("unknown pool") << 2 << "E2026112207";
        QTest::newRow("too many channels") << 3 << "E2026112208";
        QTest::newRow("rate above the limit") << 4 << "E2026112209";
    }

    void failuresReportCodedTexts()
    {
        QFETCH(int, what);
        QFETCH(QString, code);
        VoicePoolHandle small = CreateRawPcmVoicePool({3, 1, 1, 44100, SampleFormat::Float32});
        QVERIFY(small);
        std::vector<float> pcm(64, 0.1f);
        switch (what) {
        case 0:
            startWave(QByteArray());
            break;
        case 1:
            startWave(QByteArray(100, 'x'));
            break;
        case 2:
            SetVoicePoolId(player_, 9);
            SetDataFormat(player_, DataFormat::RawPcm);
            SetData(player_, pcm.data(), pcm.size() * 4);
            Start(player_);
            break;
        case 3:
        case 4:
            SetVoicePoolId(player_, 3);
            SetDataFormat(player_, DataFormat::RawPcm);
            SetNumChannels(player_, what == 3 ? 2 : 1);
            SetSamplingRate(player_, what == 3 ? 44100 : 48000);
            SetData(player_, pcm.data(), pcm.size() * 4);
            Start(player_);
            break;
        }
        QCOMPARE(GetStatus(player_), PlayerStatus::Error);
        QVERIFY(!g_errors.isEmpty());
        const QRegularExpression form(QStringLiteral("^E\\d{10} : \\S.*$"));
        QVERIFY2(form.match(g_errors.last()).hasMatch(), qPrintable(g_errors.last()));
        QVERIFY2(g_errors.last().startsWith(code), qPrintable(g_errors.last()));
        Stop(player_);
        QCOMPARE(GetStatus(player_), PlayerStatus::Stopped);
    }

    void onePoolVoiceIsSharedByPlayersInTurn()
    {
        PlayerHandle other = CreatePlayer();
        std::vector<float> pcm(4800, 0.25f);
        startPcm(pcm, 1, 48000);
        SetDataFormat(other, DataFormat::RawPcm);
        SetNumChannels(other, 1);
        SetSamplingRate(other, 48000);
        SetData(other, pcm.data(), pcm.size() * 4);
        Start(other);
        QCOMPARE(GetStatus(other), PlayerStatus::Error); // the pool's one voice is busy
        QVERIFY(g_errors.last().startsWith(QStringLiteral("E2026112210")));
        Stop(player_);
        Start(other);
        QCOMPARE(render(1)[0], 0.25f);
        QCOMPARE(GetStatus(other), PlayerStatus::Playing);
        DestroyPlayer(other);
    }

    void allocationGoesThroughTheHostFunctions()
    {
        Finalize();
        g_allocs = 0;
        g_frees = 0;
        SetAllocationFunctions(countingAlloc, countingFree);
        initEngine(48000);
        startWave(TestSounds::wavPcm(1, 48000, 16, TestSounds::distinct16(100)));
        render(200);
        Finalize();
        SetAllocationFunctions(nullptr, nullptr);
        QVERIFY(g_allocs > 4); // mixer, pools, player, voice, decoded samples
        QCOMPARE(g_frees.load(), g_allocs.load());
        initEngine(48000);
    }
};

// The mixer's stop ramp, which offline Stop skips because nobody listens.
class TestMixer : public QObject
{
    Q_OBJECT
private slots:
    void stopRampsOutThenLetsGo()
    {
        Mixer mixer(48000, 4);
        std::vector<float> pcm(48000, 0.5f);
        Voice voice;
        voice.frames = pcm.data();
        voice.frameCount = 48000;
        voice.channels = 1;
        voice.rate = 48000;
        SetStereoFold(voice);
        QVERIFY(mixer.Post({MixerCommand::Type::Add, &voice, 0.0f}));
        std::vector<float> out(2 * 1000);
        mixer.Render(out.data(), 10);
        QCOMPARE(out[0], 0.5f);
        QVERIFY(mixer.Post({MixerCommand::Type::Stop, &voice, 0.0f}));
        mixer.Render(out.data(), 1000);
        const int ramp = mixer.RampFrames();
        QCOMPARE(ramp, 240);
        for (int i = 1; i < ramp; ++i) {
            const float step = out[2 * i - 2] - out[2 * i];
            QVERIFY(step > 0.0f && step < 0.5f / ramp + 1e-5f);
        }
        for (int i = ramp; i < 1000; ++i)
            QCOMPARE(out[2 * i], 0.0f);
        QVERIFY(voice.released.load());
        QCOMPARE(voice.state.load(), static_cast<std::int32_t>(VoiceState::Stopped));
    }

    void loopSeamInsideOnePull()
    {
        std::vector<float> pcm = {0, 1, 2, 3, 4, 5};
        Voice voice;
        voice.frames = pcm.data();
        voice.frameCount = 6;
        voice.channels = 1;
        voice.loopStart = 2;
        voice.loopEnd = 4;
        voice.loopActive = true;
        std::vector<float> got;
        for (int i = 0; i < 8; ++i) {
            const float* p = nullptr;
            const long n = Mixer::PullSource(voice, &p, 3);
            QVERIFY(n > 0);
            got.insert(got.end(), p, p + n);
        }
        const std::vector<float> want = {0, 1, 2, 3, 2, 3, 2, 3, 2, 3, 2, 3};
        QVERIFY(std::equal(want.begin(), want.end(), got.begin()));
    }
};

int main(int argc, char** argv)
{
    int status = 0;
    {
        TestEngine t;
        status |= QTest::qExec(&t, argc, argv);
    }
    {
        TestMixer t;
        status |= QTest::qExec(&t, argc, argv);
    }
    return status;
}

#include "tst_engine.moc"
