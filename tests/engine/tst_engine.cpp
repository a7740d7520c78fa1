// The engine through its offline render path: what comes out of the mixer,
// frame by frame, with no device.

#include "AudioEngine.h"
#include "Mixer.h"
#include "SampleConversion.h"
#include "WaveBuilder.h"
#include "WaveFileStream.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
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
std::atomic<std::int64_t> g_allocBytes{0};
void* countingAlloc(std::size_t n)
{
    ++g_allocs;
    g_allocBytes += static_cast<std::int64_t>(n);
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

// Renders in uneven pieces, so that block and loop boundaries fall mid-buffer.
std::vector<float> renderInPieces(std::size_t frames)
{
    static const std::size_t pieces[] = {1, 255, 257, 3, 511, 1000, 64};
    std::vector<float> out;
    for (std::size_t i = 0; out.size() < frames * 2; ++i) {
        const std::size_t n = std::min(pieces[i % 7], frames - out.size() / 2);
        const auto part = render(n);
        out.insert(out.end(), part.begin(), part.end());
    }
    return out;
}

// Sine with a period of 400 frames in the range of `bits`.
std::vector<std::int32_t> sine(int frames, int channels, int bits)
{
    const double amplitude = 0.6 * std::ldexp(1.0, bits - 1);
    std::vector<std::int32_t> v(static_cast<std::size_t>(frames) * channels);
    for (int i = 0; i < frames; ++i)
        for (int c = 0; c < channels; ++c)
            v[static_cast<std::size_t>(i) * channels + c] = static_cast<std::int32_t>(
                std::lround(amplitude * std::sin(2 * M_PI * (i + 100 * c) / 400.0)));
    return v;
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
    QTemporaryDir dir_;

    void startWave(const QByteArray& file, DataFormat format = DataFormat::Wave, int startMs = 0)
    {
        data_ = file;
        SetDataFormat(player_, format);
        SetData(player_, data_.constData(), static_cast<std::size_t>(data_.size()));
        SetStartTimeMs(player_, startMs);
        Start(player_);
    }

    void startWave(const fixtures::Bytes& file, DataFormat format = DataFormat::Wave,
                   int startMs = 0)
    {
        startWave(fixtures::toQByteArray(file), format, startMs);
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

    // The same file streamed from disk by the engine's worker (run inline offline).
    void startStream(const fixtures::Bytes& file, int startMs = 0)
    {
        const QString path = dir_.filePath(QStringLiteral("streamed.bin"));
        QVERIFY(fixtures::writeFile(path, file));
        SetDataFormat(player_, DataFormat::Stream);
        SetStreamSource(player_, new WaveFileStream(QFile::encodeName(path).toStdString()));
        SetStartTimeMs(player_, startMs);
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
        QVERIFY(CreateStreamVoicePool({0, 1, 8, 192000}));
        player_ = CreatePlayer();
        QVERIFY(wavePool_ && aiffPool_ && pcmPool_ && player_);
        // These cases check the samples themselves; the start fade has its own.
        SetFadeIn(player_, false);
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
        std::vector<std::int32_t> values = fixtures::distinct16(frames * channels);
        const int shift = 16 - bits;
        for (auto& v : values)
            v = shift >= 0 ? v >> shift : v * (1 << -shift) + 77;
        startWave(fixtures::wavInts(channels, 48000, bits, values));
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
        startWave(fixtures::wavFloat(1, 48000, 32, {f.begin(), f.end()}));
        auto out = render(6);
        for (int i = 0; i < 6; ++i)
            QCOMPARE(out[2 * i], f[i]);

        const auto values = fixtures::distinct16(1000);
        startWave(fixtures::aiffInts(2, 48000, 16, values), DataFormat::Aiff);
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
        startWave(aiff ? fixtures::aiffInts(1, 48000, 16, v, start, end)
                       : fixtures::wavInts(1, 48000, 16, v, {{start, end - 1}}),
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
        const auto values = fixtures::distinct16(48000 * 2);
        startWave(fixtures::wavInts(1, 48000, 16, values), DataFormat::Wave, 1500);
        const auto out = render(100);
        for (int i = 0; i < 100; ++i)
            QCOMPARE(out[2 * i], values[72000 + i] / 32768.0f);
        QCOMPARE(GetPlayedSamples(GetLastPlaybackId(player_)), std::int64_t(72100));
    }

    void truncatedFilePlaysWhatIsThere()
    {
        const auto values = fixtures::distinct16(1000);
        QByteArray file = fixtures::toQByteArray(fixtures::wavInts(1, 48000, 16, values));
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
        const auto values = fixtures::distinct16(4800);
        startWave(fixtures::wavInts(1, 48000, 16, values, {{480, 959}}), DataFormat::Wave, 50);
        const auto out = render(4800);
        for (int i = 0; i < 4800 - 2400; ++i)
            QCOMPARE(out[2 * i], values[static_cast<std::size_t>(2400 + i)] / 32768.0f);
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
    }

    void outputIsClippedAndFreeOfNaN()
    {
        const std::vector<float> f = {2.0f, -3.0f, std::nanf(""), INFINITY, 0.5f};
        startWave(fixtures::wavFloat(1, 48000, 32, {f.begin(), f.end()}));
        const auto out = render(5);
        const std::vector<float> want = {1.0f, -1.0f, 0.0f, 1.0f, 0.5f};
        for (int i = 0; i < 5; ++i)
            QCOMPARE(out[2 * i], want[static_cast<std::size_t>(i)]);
    }

    void startPastTheEndEndsAtOnce()
    {
        startWave(fixtures::wavInts(1, 48000, 16, fixtures::distinct16(480)), DataFormat::Wave,
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

    // L R C LFE Ls Rs: centre and surrounds at -3 dB, LFE dropped, each side
    // scaled by 1 / (1 + 2 x 0.7071) so that full scale everywhere stays full scale.
    void sixChannelsFoldToStereo()
    {
        std::vector<float> pcm = {0.1f, 0.2f, 0.4f, 0.8f, 0.01f, 0.02f};
        startPcm(pcm, 6, 48000);
        const auto out = render(1);
        const double k = 1.0 / (1.0 + 2.0 * M_SQRT1_2);
        QVERIFY(std::fabs(out[0] - k * (0.1 + M_SQRT1_2 * (0.4 + 0.01))) < 1e-6);
        QVERIFY(std::fabs(out[1] - k * (0.2 + M_SQRT1_2 * (0.4 + 0.02))) < 1e-6);
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
        SetFadeIn(other, false);
        Start(other);
        QCOMPARE(GetStatus(other), PlayerStatus::Error); // the pool's one voice is busy
        QVERIFY(g_errors.last().startsWith(QStringLiteral("E2026112210")));
        Stop(player_);
        Start(other);
        QCOMPARE(render(1)[0], 0.25f);
        QCOMPARE(GetStatus(other), PlayerStatus::Playing);
        DestroyPlayer(other);
    }

    // Every sample format the header reader knows plays its own values, converted
    // block by block from the file's bytes while the mixer runs.
    void everyEncodingRendersItsOwnSamples_data()
    {
        QTest::addColumn<QString>("kind"); // wav, aiff, sowt, wavfloat, aifcfloat
        QTest::addColumn<int>("bits");
        QTest::addColumn<int>("channels");
        QTest::newRow("WAV 8-bit stereo") << "wav" << 8 << 2;
        QTest::newRow("WAV 32-bit stereo") << "wav" << 32 << 2;
        QTest::newRow("WAV 24-bit 5 channels") << "wav" << 24 << 5;
        QTest::newRow("WAV 64-bit float stereo") << "wavfloat" << 64 << 2;
        QTest::newRow("AIFF 8-bit mono") << "aiff" << 8 << 1;
        QTest::newRow("AIFF 16-bit stereo") << "aiff" << 16 << 2;
        QTest::newRow("AIFF 24-bit stereo") << "aiff" << 24 << 2;
        QTest::newRow("AIFF 32-bit mono") << "aiff" << 32 << 1;
        QTest::newRow("AIFC little-endian 16-bit") << "sowt" << 16 << 2;
        QTest::newRow("AIFC 32-bit float") << "aifcfloat" << 32 << 2;
        QTest::newRow("AIFC 64-bit float") << "aifcfloat" << 64 << 1;
    }

    void everyEncodingRendersItsOwnSamples()
    {
        QFETCH(QString, kind);
        QFETCH(int, bits);
        QFETCH(int, channels);
        const int frames = 1500;
        const std::size_t count = static_cast<std::size_t>(frames) * channels;
        // Independent of the engine's arithmetic: the value each sample stands for.
        std::vector<double> want(count);
        fixtures::Bytes file;
        DataFormat format = DataFormat::Aiff;
        if (kind.endsWith(QLatin1String("float"))) {
            std::vector<double> d(count);
            std::uint32_t x = 7;
            for (auto& v : d) {
                x = x * 1664525u + 1013904223u;
                v = (static_cast<double>(x) / 4294967296.0 - 0.5) * 1.9; // finer than a float
            }
            for (std::size_t i = 0; i < count; ++i)
                want[i] = bits == 32 ? static_cast<double>(static_cast<float>(d[i])) : d[i];
            if (kind == QLatin1String("wavfloat")) {
                file = fixtures::wavFloat(channels, 48000, 64, d);
                format = DataFormat::Wave;
            } else {
                file = fixtures::aifc(channels, 48000, bits, bits == 32 ? "fl32" : "fl64",
                                      fixtures::floats(bits, d, true));
            }
        } else {
            std::vector<std::int32_t> values = fixtures::distinct16(count, 3);
            for (auto& v : values) {
                v = bits <= 16 ? v >> (16 - bits)
                               : v * (1 << (bits - 16)) + (v & ((1 << (bits - 16)) - 1));
            }
            for (std::size_t i = 0; i < count; ++i)
                want[i] = std::ldexp(static_cast<double>(values[i]), 1 - bits);
            if (kind == QLatin1String("wav")) {
                file = fixtures::wavInts(channels, 48000, bits, values);
                format = DataFormat::Wave;
            } else if (kind == QLatin1String("aiff")) {
                file = fixtures::aiffInts(channels, 48000, bits, values);
            } else {
                file = fixtures::aifc(channels, 48000, bits, "sowt", fixtures::ints(bits, values));
            }
        }
        startWave(file, format);
        const auto out = renderInPieces(static_cast<std::size_t>(frames) + 50);
        for (int i = 0; i < frames; ++i) {
            const std::size_t f = static_cast<std::size_t>(i) * channels;
            if (channels <= 2) {
                QCOMPARE(out[2 * i], static_cast<float>(want[f]));
                QCOMPARE(out[2 * i + 1], static_cast<float>(want[f + channels - 1]));
            } else {
                // 5 channels: L R C Ls Rs, centre and surrounds at -3 dB, scaled to fit.
                const double k = 1.0 / (1.0 + 2.0 * M_SQRT1_2);
                const double l = k * (want[f] + M_SQRT1_2 * (want[f + 2] + want[f + 3]));
                const double r = k * (want[f + 1] + M_SQRT1_2 * (want[f + 2] + want[f + 4]));
                QVERIFY(std::fabs(out[2 * i] - l) < 1e-6);
                QVERIFY(std::fabs(out[2 * i + 1] - r) < 1e-6);
            }
        }
        for (std::size_t i = 2 * frames; i < out.size(); ++i)
            QCOMPARE(out[i], 0.0f);
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
        QCOMPARE(GetPlayedSamples(GetLastPlaybackId(player_)), std::int64_t(frames));
        QVERIFY2(g_errors.isEmpty(), qPrintable(g_errors.join('\n')));
    }

    // Starting a long sound costs no memory the size of the sound: it plays from
    // the bytes it was given.
    void startAllocatesNothingTheSizeOfTheFile()
    {
        Finalize();
        SetAllocationFunctions(countingAlloc, countingFree);
        initEngine(48000);
        const int frames = 48000 * 20;
        const auto values = sine(frames, 2, 24);
        const QByteArray file = fixtures::toQByteArray(fixtures::aiffInts(2, 48000, 24, values));
        g_allocBytes = 0;
        startWave(file, DataFormat::Aiff, 19000);
        const std::int64_t atStart = g_allocBytes.load();
        const auto out = render(48000 + 10);
        QVERIFY2(atStart < 64 * 1024, qPrintable(QString::number(atStart)));
        QCOMPARE(g_allocBytes.load(), atStart); // and the mixer allocates nothing
        QCOMPARE(out[0], static_cast<float>(std::ldexp(values[2 * 912000], -23)));
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
        Finalize();
        SetAllocationFunctions(nullptr, nullptr);
        initEngine(48000);
    }

    // A 24-bit loop seam falls between conversion blocks and render buffers and
    // still joins sample-exactly.
    void loopSeamInA24BitFile_data()
    {
        QTest::addColumn<bool>("aiff");
        QTest::newRow("WAVE 24-bit little-endian") << false;
        QTest::newRow("AIFF 24-bit big-endian") << true;
    }

    void loopSeamInA24BitFile()
    {
        QFETCH(bool, aiff);
        const int start = 777; // neither on a block boundary nor a multiple of the period
        const int end = start + 400 * 9;
        const int total = end + 500;
        std::vector<std::int32_t> v = sine(total, 2, 24);
        for (std::size_t i = 2 * static_cast<std::size_t>(end); i < v.size(); ++i)
            v[i] = 8000000; // the release tail, never reached while the loop runs
        startWave(aiff ? fixtures::aiffInts(2, 48000, 24, v, start, end)
                       : fixtures::wavInts(2, 48000, 24, v, {{start, end - 1}}),
                  aiff ? DataFormat::Aiff : DataFormat::Wave);
        const int frames = 3 * total;
        const auto out = renderInPieces(static_cast<std::size_t>(frames));
        float maxStep = 0.0f;
        for (int i = 0; i < frames; ++i) {
            const int src = i < end ? i : start + (i - start) % (end - start);
            QCOMPARE(out[2 * i], static_cast<float>(std::ldexp(v[2 * src], -23)));
            QCOMPARE(out[2 * i + 1], static_cast<float>(std::ldexp(v[2 * src + 1], -23)));
            if (i > 0)
                maxStep = std::max(maxStep, std::fabs(out[2 * i] - out[2 * i - 2]));
        }
        // The sine's largest step is 2*pi/400 * 0.6 = 0.0094.
        QVERIFY2(maxStep < 0.0095f, qPrintable(QString::number(maxStep)));
        QCOMPARE(GetPlayedSamples(GetLastPlaybackId(player_)), std::int64_t(frames));
    }

    // A file cut short inside its data chunk plays the whole frames it holds and
    // never reads past its bytes (the buffer is exactly the file, so a sanitizer
    // build catches any overread).
    void truncatedDataChunkPlaysWhatIsThere_data()
    {
        QTest::addColumn<bool>("aiff");
        QTest::addColumn<int>("cut");
        QTest::newRow("WAVE 24-bit stereo, cut mid-frame") << false << 4;
        QTest::newRow("AIFF 24-bit stereo, cut mid-frame") << true << 2;
        QTest::newRow("AIFF 24-bit stereo, cut mid-sample") << true << 301;
    }

    void truncatedDataChunkPlaysWhatIsThere()
    {
        QFETCH(bool, aiff);
        QFETCH(int, cut);
        const int frames = 1000;
        const auto values = sine(frames, 2, 24);
        QByteArray file = fixtures::toQByteArray(aiff ? fixtures::aiffInts(2, 48000, 24, values)
                                                      : fixtures::wavInts(2, 48000, 24, values));
        file.chop(cut); // the header still claims 1000 frames
        const std::vector<char> exact(file.begin(), file.end());
        SetDataFormat(player_, aiff ? DataFormat::Aiff : DataFormat::Wave);
        SetData(player_, exact.data(), exact.size());
        SetStartTimeMs(player_, 0);
        Start(player_);
        const int whole = frames - (cut + 5) / 6;
        const auto out = renderInPieces(static_cast<std::size_t>(frames + 100));
        for (int i = 0; i < whole; ++i) {
            QCOMPARE(out[2 * i], static_cast<float>(std::ldexp(values[2 * i], -23)));
            QCOMPARE(out[2 * i + 1], static_cast<float>(std::ldexp(values[2 * i + 1], -23)));
        }
        for (std::size_t i = 2 * static_cast<std::size_t>(whole); i < out.size(); ++i)
            QCOMPARE(out[i], 0.0f);
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
        QCOMPARE(GetPlayedSamples(GetLastPlaybackId(player_)), std::int64_t(whole));
        Stop(player_);
    }

    // Converting in the mixer feeds the resampler exactly what a float copy of the
    // same sound would: a 44.1 kHz 24-bit AIFF and its float twin come out alike.
    void resampledFileMatchesItsFloatTwin()
    {
        const int frames = 44100;
        const auto values = sine(frames, 2, 24);
        std::vector<float> twin(values.size());
        for (std::size_t i = 0; i < values.size(); ++i)
            twin[i] = static_cast<float>(std::ldexp(values[i], -23));
        startWave(fixtures::aiffInts(2, 44100, 24, values), DataFormat::Aiff);
        const auto fromFile = renderInPieces(48000 + 500);
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
        const std::int64_t played = GetPlayedSamples(GetLastPlaybackId(player_));
        startPcm(twin, 2, 44100);
        const auto fromFloat = renderInPieces(48000 + 500);
        QCOMPARE(fromFile.size(), fromFloat.size());
        double energy = 0.0;
        for (std::size_t i = 0; i < fromFile.size(); ++i) {
            QCOMPARE(fromFile[i], fromFloat[i]);
            energy += fromFile[i] * fromFile[i];
        }
        // A 0.6 sine over one second on two channels: 0.18 * 48000 * 2.
        QVERIFY2(std::fabs(energy - 17280.0) < 200.0, qPrintable(QString::number(energy)));
        QCOMPARE(played, GetPlayedSamples(GetLastPlaybackId(player_)));
        QVERIFY2(std::llabs(played - frames) < 50, qPrintable(QString::number(played)));
    }

    // A long file streamed from disk through the worker's ring plays exactly what
    // the same file plays from memory: head, loop rounds across ring wraps, start
    // offsets, cut-off data, resampling, play ranges.
    void streamPlaysWhatMemoryPlays_data()
    {
        QTest::addColumn<bool>("aiff");
        QTest::addColumn<int>("bits");
        QTest::addColumn<int>("channels");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("frames");
        QTest::addColumn<int>("loopStart");
        QTest::addColumn<int>("loopEnd"); // exclusive; equal to loopStart for none
        QTest::addColumn<int>("startMs");
        QTest::addColumn<int>("cut"); // bytes chopped off the file's end
        QTest::addColumn<int>("rangeStart");
        QTest::addColumn<int>("rangeEnd");
        QTest::addColumn<int>("render");
        QTest::newRow("WAV 16-bit stereo")
            << false << 16 << 2 << 48000 << 30000 << 0 << 0 << 0 << 0 << -1 << -1 << 30500;
        QTest::newRow("AIFF 24-bit loop, rounds over ring wraps")
            << true << 24 << 2 << 48000 << 9000 << 777 << 4377 << 0 << 0 << -1 << -1 << 150000;
        QTest::newRow("WAV mono from 1500 ms")
            << false << 16 << 1 << 48000 << 144000 << 0 << 0 << 1500 << 0 << -1 << -1 << 80000;
        QTest::newRow("WAV 24-bit cut mid-frame")
            << false << 24 << 2 << 48000 << 5000 << 0 << 0 << 0 << 4 << -1 << -1 << 5200;
        QTest::newRow("AIFF 44.1 kHz looped, resampled")
            << true << 24 << 2 << 44100 << 20000 << 1000 << 9000 << 0 << 0 << -1 << -1 << 90000;
        QTest::newRow("WAV 5 channels folded")
            << false << 24 << 5 << 48000 << 4000 << 0 << 0 << 0 << 0 << -1 << -1 << 4100;
        QTest::newRow("range over a loop, straight through")
            << false << 16 << 1 << 48000 << 20000 << 2000 << 3000 << 0 << 0 << 500 << 9000 << 9000;
        QTest::newRow("range in a 96 kHz file, resampled")
            << false << 16 << 2 << 96000 << 40000 << 0 << 0 << 0 << 0 << 1234 << 30000 << 16000;
    }

    void streamPlaysWhatMemoryPlays()
    {
        QFETCH(bool, aiff);
        QFETCH(int, bits);
        QFETCH(int, channels);
        QFETCH(int, rate);
        QFETCH(int, frames);
        QFETCH(int, loopStart);
        QFETCH(int, loopEnd);
        QFETCH(int, startMs);
        QFETCH(int, cut);
        QFETCH(int, rangeStart);
        QFETCH(int, rangeEnd);
        QFETCH(int, render);
        const auto values = sine(frames, channels, bits);
        const bool looped = loopEnd > loopStart;
        fixtures::Bytes file =
            aiff ? fixtures::aiffInts(channels, static_cast<std::uint32_t>(rate), bits, values,
                                      static_cast<std::uint32_t>(loopStart),
                                      static_cast<std::uint32_t>(loopEnd))
                 : fixtures::wavInts(
                       channels, rate, bits, values,
                       looped
                           ? std::vector<fixtures::Loop>{{static_cast<std::uint32_t>(loopStart),
                                                          static_cast<std::uint32_t>(loopEnd - 1)}}
                           : std::vector<fixtures::Loop>{});
        file.resize(file.size() - static_cast<std::size_t>(cut));

        SetPlayRange(player_, rangeStart, rangeEnd);
        startWave(file, aiff ? DataFormat::Aiff : DataFormat::Wave, startMs);
        const auto fromMemory = renderInPieces(static_cast<std::size_t>(render));
        const PlayerStatus memoryStatus = GetStatus(player_);
        const std::int64_t memoryPlayed = GetPlayedSamples(GetLastPlaybackId(player_));
        Stop(player_);

        startStream(file, startMs);
        QCOMPARE(GetStatus(player_), PlayerStatus::Preparing);
        const auto fromDisk = renderInPieces(static_cast<std::size_t>(render));
        QCOMPARE(fromDisk.size(), fromMemory.size());
        double energy = 0.0;
        for (std::size_t i = 0; i < fromMemory.size(); ++i) {
            QCOMPARE(fromDisk[i], fromMemory[i]);
            energy += fromMemory[i] * fromMemory[i];
        }
        QVERIFY(energy > 100.0);
        QCOMPARE(GetStatus(player_), memoryStatus);
        if (memoryStatus == PlayerStatus::Playing)
            QCOMPARE(GetPlayedSamples(GetLastPlaybackId(player_)), memoryPlayed);
        QVERIFY2(g_errors.isEmpty(), qPrintable(g_errors.join('\n')));
    }

    // Each start ramps in from silence over 5 ms, so a start in the middle of a
    // loud sound (a seek) rises no faster than the sound itself.
    void startsRampInFromSilence_data()
    {
        QTest::addColumn<int>("startMs");
        QTest::newRow("from the top") << 0;
        QTest::newRow("seek into a crest") << 1234;
    }

    void startsRampInFromSilence()
    {
        QFETCH(int, startMs);
        const double a = 0.9;
        std::vector<std::int32_t> v(48000 * 2);
        for (std::size_t i = 0; i < v.size(); ++i) // a cosine: full height at every whole ms
            v[i] =
                static_cast<std::int32_t>(std::lround(a * 32767 * std::cos(2 * M_PI * i / 48.0)));
        SetFadeIn(player_, true);
        startWave(fixtures::wavInts(1, 48000, 16, v), DataFormat::Wave, startMs);
        const auto out = render(2000);
        const int ramp = 48000 / 200;
        const std::size_t first = static_cast<std::size_t>(startMs) * 48;
        float maxStep = std::fabs(out[0]);
        for (int i = 0; i < 2000; ++i) {
            const float x = v[first + static_cast<std::size_t>(i)] / 32768.0f;
            const float want = i < ramp ? x * static_cast<float>(i + 1) / ramp : x;
            QVERIFY2(std::fabs(out[2 * i] - want) < 1e-5f, qPrintable(QString::number(i)));
            if (i > 0)
                maxStep = std::max(maxStep, std::fabs(out[2 * i] - out[2 * i - 2]));
        }
        // The cosine's own largest step is 2 pi / 48 x 0.9 = 0.118; the ramp adds 0.9 / 240.
        QVERIFY2(maxStep < 0.118f + 0.9f / ramp, qPrintable(QString::number(maxStep)));
    }

    // A resampled sound lasts exactly its length at the output rate, to the true
    // last frame, and ramps out over the frames before it instead of stopping dead.
    void resampledSoundEndsOnItsLastFrame_data()
    {
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("frames");
        QTest::addColumn<int>("startMs");
        QTest::newRow("44.1 kHz, 1 s") << 44100 << 44100 << 0;
        QTest::newRow("24 kHz, odd length") << 24000 << 1001 << 0;
        QTest::newRow("96 kHz, down") << 96000 << 9601 << 0;
        QTest::newRow("44.1 kHz from 500 ms") << 44100 << 88200 << 500;
        QTest::newRow("22.05 kHz, 7 frames") << 22050 << 7 << 0;
    }

    void resampledSoundEndsOnItsLastFrame()
    {
        QFETCH(int, rate);
        QFETCH(int, frames);
        QFETCH(int, startMs);
        SetFadeIn(player_, true);
        const std::vector<double> dc(static_cast<std::size_t>(frames), 0.5);
        startWave(fixtures::wavFloat(1, rate, 32, dc), DataFormat::Wave, startMs);
        const std::int64_t left = frames - static_cast<std::int64_t>(startMs) * rate / 1000;
        const std::int64_t want = (left * 48000 + rate - 1) / rate;
        const auto out = renderInPieces(static_cast<std::size_t>(want) + 1000);
        std::int64_t heard = 0;
        for (std::size_t i = 0; i < out.size() / 2; ++i) {
            if (out[2 * i] != 0.0f) {
                QCOMPARE(static_cast<std::int64_t>(i), heard); // one unbroken run from the start
                ++heard;
            }
        }
        QCOMPARE(heard, want);
        const float last = std::fabs(out[2 * static_cast<std::size_t>(want - 1)]);
        QVERIFY2(last < 0.5f / 200.0f, qPrintable(QString::number(last)));
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
    }

    // A play range plays its frames once, past any loop, and ramps out at its end.
    void playRangePlaysTheRegionOnce()
    {
        const auto values = fixtures::distinct16(20000, 11);
        const auto file = fixtures::wavInts(1, 48000, 16, values, {{2000, 2999}});
        SetPlayRange(player_, 1000, 5000);
        startWave(file);
        const auto out = render(5000);
        const int ramp = 48000 / 200;
        for (int i = 0; i < 4000; ++i) {
            const float x = values[static_cast<std::size_t>(1000 + i)] / 32768.0f;
            const float g = i >= 4000 - ramp ? static_cast<float>(4000 - i) / ramp : 1.0f;
            QVERIFY2(std::fabs(out[2 * i] - x * g) < 1e-6f, qPrintable(QString::number(i)));
        }
        for (int i = 4000; i < 5000; ++i)
            QCOMPARE(out[2 * i], 0.0f);
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);

        // Without a range the loop is back.
        SetPlayRange(player_, -1, -1);
        startWave(file);
        const auto looped = render(3001);
        QCOMPARE(looped[2 * 3000], values[2000] / 32768.0f);
    }

    void allocationGoesThroughTheHostFunctions()
    {
        Finalize();
        g_allocs = 0;
        g_frees = 0;
        SetAllocationFunctions(countingAlloc, countingFree);
        initEngine(48000);
        startWave(fixtures::wavInts(1, 48000, 16, fixtures::distinct16(100)));
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
        voice.samples = pcm.data();
        voice.frameCount = 48000;
        voice.channels = 1;
        voice.rate = 48000;
        voice.fadeIn = false;
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
        voice.samples = pcm.data();
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

    // Stated frames beyond the bytes in memory play as silence, down to the value:
    // the left half of a cut frame still sounds.
    void valuesPastTheMemoryAreSilence()
    {
        const unsigned char bytes[] = {0x00, 0x40, 0x00, 0xc0, 0x00, 0x20};
        float scratch[Mixer::kMaxPull * 2];
        Voice voice;
        voice.samples = bytes;
        voice.encoding = SampleEncoding::Int16Le;
        voice.valuesInMemory = 3;
        voice.scratch = scratch;
        voice.channels = 2;
        voice.frameCount = 4;
        const float* p = nullptr;
        QCOMPARE(Mixer::PullSource(voice, &p, 100), 4L);
        const float want[] = {0.5f, -0.5f, 0.25f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f};
        for (int i = 0; i < 8; ++i)
            QCOMPARE(p[i], want[i]);
        QCOMPARE(Mixer::PullSource(voice, &p, 100), 0L);
    }

    // The converter against byte patterns worked out by hand.
    void conversionOfEachEncoding_data()
    {
        QTest::addColumn<int>("encoding");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QVector<float>>("want");
        const auto e = [](SampleEncoding x) { return static_cast<int>(x); };
        const auto b = [](std::initializer_list<int> v) {
            QByteArray a;
            for (int x : v)
                a.append(static_cast<char>(x));
            return a;
        };
        const float q15 = 1.0f / 32768.0f;
        const float q23 = 1.0f / 8388608.0f;
        QTest::newRow("8-bit offset") << e(SampleEncoding::UInt8) << b({0x00, 0x80, 0xff})
                                      << QVector<float>{-1.0f, 0.0f, 127.0f / 128.0f};
        QTest::newRow("8-bit signed") << e(SampleEncoding::Int8) << b({0x80, 0x00, 0x7f})
                                      << QVector<float>{-1.0f, 0.0f, 127.0f / 128.0f};
        QTest::newRow("16 LE") << e(SampleEncoding::Int16Le)
                               << b({0x00, 0x80, 0xff, 0x7f, 0x01, 0x00})
                               << QVector<float>{-1.0f, 32767 * q15, q15};
        QTest::newRow("16 BE") << e(SampleEncoding::Int16Be)
                               << b({0x80, 0x00, 0x7f, 0xff, 0x00, 0x01})
                               << QVector<float>{-1.0f, 32767 * q15, q15};
        QTest::newRow("24 LE") << e(SampleEncoding::Int24Le)
                               << b({0x00, 0x00, 0x80, 0xff, 0xff, 0x7f, 0xff, 0xff, 0xff})
                               << QVector<float>{-1.0f, 8388607 * q23, -q23};
        QTest::newRow("24 BE") << e(SampleEncoding::Int24Be)
                               << b({0x80, 0x00, 0x00, 0x7f, 0xff, 0xff, 0xff, 0xff, 0xff})
                               << QVector<float>{-1.0f, 8388607 * q23, -q23};
        QTest::newRow("32 LE") << e(SampleEncoding::Int32Le)
                               << b({0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x40})
                               << QVector<float>{-1.0f, 0.5f};
        QTest::newRow("32 BE") << e(SampleEncoding::Int32Be)
                               << b({0x80, 0x00, 0x00, 0x00, 0xc0, 0x00, 0x00, 0x00})
                               << QVector<float>{-1.0f, -0.5f};
        // 0.5, -2, NaN, +inf, -inf
        QTest::newRow("float LE") << e(SampleEncoding::Float32Le)
                                  << b({0,    0,    0, 0x3f, 0,    0,    0, 0xc0, 0,    0,
                                        0xc0, 0x7f, 0, 0,    0x80, 0x7f, 0, 0,    0x80, 0xff})
                                  << QVector<float>{0.5f, -2.0f, 0.0f, 1.0f, -1.0f};
        QTest::newRow("float BE") << e(SampleEncoding::Float32Be)
                                  << b({0x3f, 0, 0,    0,    0xc0, 0, 0,    0,    0x7f, 0xc0,
                                        0,    0, 0x7f, 0x80, 0,    0, 0xff, 0x80, 0,    0})
                                  << QVector<float>{0.5f, -2.0f, 0.0f, 1.0f, -1.0f};
        // 0.25, -0.75
        QTest::newRow("double LE")
            << e(SampleEncoding::Float64Le)
            << b({0, 0, 0, 0, 0, 0, 0xd0, 0x3f, 0, 0, 0, 0, 0, 0, 0xe8, 0xbf})
            << QVector<float>{0.25f, -0.75f};
        QTest::newRow("double BE")
            << e(SampleEncoding::Float64Be)
            << b({0x3f, 0xd0, 0, 0, 0, 0, 0, 0, 0xbf, 0xe8, 0, 0, 0, 0, 0, 0})
            << QVector<float>{0.25f, -0.75f};
    }

    void conversionOfEachEncoding()
    {
        QFETCH(int, encoding);
        QFETCH(QByteArray, bytes);
        QFETCH(QVector<float>, want);
        const auto enc = static_cast<SampleEncoding>(encoding);
        QCOMPARE(BytesPerSample(enc) * want.size(), bytes.size());
        std::vector<float> got(static_cast<std::size_t>(want.size()) + 1, 9.0f);
        ConvertSamples(enc, reinterpret_cast<const unsigned char*>(bytes.constData()), got.data(),
                       static_cast<std::size_t>(want.size()));
        for (int i = 0; i < want.size(); ++i)
            QCOMPARE(got[static_cast<std::size_t>(i)], want[i]);
        QCOMPARE(got.back(), 9.0f); // nothing written past the count
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
