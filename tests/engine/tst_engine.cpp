// The engine through its offline render path: what comes out of the mixer,
// frame by frame, with no device.

#include "AudioEngine.h"
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
        const auto part = render(std::min(pieces[i % 7], frames - out.size() / 2));
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

bool silent(const std::vector<float>& v, int from = 0)
{
    return std::all_of(v.begin() + from, v.end(), [](float x) { return x == 0.0f; });
}

} // namespace

class TestEngine : public QObject
{
    Q_OBJECT
    PlayerHandle player_ = nullptr;
    // Kept alive while the player reads it, exactly the file's size so that a
    // sanitizer build catches any read past its end.
    std::vector<char> data_;
    QTemporaryDir dir_;

    void startWave(const QByteArray& file, DataFormat format = DataFormat::Wave, int startMs = 0)
    {
        data_.assign(file.begin(), file.end());
        data_.shrink_to_fit();
        SetDataFormat(player_, format);
        SetData(player_, data_.data(), data_.size());
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
        const auto* bytes = reinterpret_cast<const char*>(pcm.data());
        data_.assign(bytes, bytes + pcm.size() * sizeof(float));
        SetDataFormat(player_, DataFormat::RawPcm);
        SetVoicePoolId(player_, 0);
        SetNumChannels(player_, channels);
        SetSamplingRate(player_, rate);
        SetData(player_, data_.data(), data_.size());
        Start(player_);
    }

    void initEngine()
    {
        InitConfig config;
        config.output = OutputMode::Offline;
        config.outputRate = 48000;
        QVERIFY(Initialize(config));
        QVERIFY(CreateWaveVoicePool({0, 1, 8, 192000}));
        QVERIFY(CreateAiffVoicePool({0, 1, 8, 192000}));
        QVERIFY(CreateRawPcmVoicePool({0, 1, 8, 192000, SampleFormat::Float32}));
        QVERIFY(CreateStreamVoicePool({0, 1, 8, 192000}));
        player_ = CreatePlayer();
        QVERIFY(player_);
        // These cases check the samples themselves; the start fade has its own.
        SetFadeIn(player_, false);
    }

    std::int64_t played() const { return GetPlayedSamples(GetLastPlaybackId(player_)); }

private slots:
    void init()
    {
        g_errors.clear();
        SetErrorCallback(collectError);
        initEngine();
    }

    void cleanup()
    {
        Finalize();
        SetErrorCallback(nullptr);
        SetAllocationFunctions(nullptr, nullptr);
    }

    // Every sample format the header reader knows (and caller memory) plays its
    // own values, converted block by block while the mixer runs; more than two
    // channels fold to stereo. A file cut short inside its data chunk plays the
    // whole frames it holds and never reads past its bytes.
    void everyEncodingRendersItsOwnSamples_data()
    {
        QTest::addColumn<QString>("kind"); // wav, aiff, sowt, wavfloat, aifcfloat, pcm
        QTest::addColumn<int>("bits");
        QTest::addColumn<int>("channels");
        QTest::addColumn<int>("cut"); // bytes chopped off the end, the header unchanged
        QTest::newRow("WAV 8-bit stereo") << "wav" << 8 << 2 << 0;
        QTest::newRow("WAV 16-bit mono") << "wav" << 16 << 1 << 0;
        QTest::newRow("WAV 24-bit 5 channels") << "wav" << 24 << 5 << 0;
        QTest::newRow("WAV 32-bit stereo") << "wav" << 32 << 2 << 0;
        QTest::newRow("WAV 16-bit 6 channels, LFE dropped") << "wav" << 16 << 6 << 0;
        QTest::newRow("WAV 32-bit float mono") << "wavfloat" << 32 << 1 << 0;
        QTest::newRow("WAV 64-bit float stereo") << "wavfloat" << 64 << 2 << 0;
        QTest::newRow("AIFF 16-bit stereo") << "aiff" << 16 << 2 << 0;
        QTest::newRow("AIFF 24-bit stereo") << "aiff" << 24 << 2 << 0;
        QTest::newRow("AIFF 32-bit mono") << "aiff" << 32 << 1 << 0;
        QTest::newRow("AIFC little-endian 16-bit") << "sowt" << 16 << 2 << 0;
        QTest::newRow("AIFC 32-bit float") << "aifcfloat" << 32 << 2 << 0;
        QTest::newRow("AIFC 64-bit float") << "aifcfloat" << 64 << 1 << 0;
        QTest::newRow("float PCM from caller memory") << "pcm" << 32 << 2 << 0;
        QTest::newRow("WAV 16-bit stereo cut by 200 bytes") << "wav" << 16 << 2 << 200;
        QTest::newRow("AIFF 24-bit stereo cut mid-frame") << "aiff" << 24 << 2 << 2;
        QTest::newRow("AIFF 24-bit stereo cut mid-sample") << "aiff" << 24 << 2 << 301;
    }

    void everyEncodingRendersItsOwnSamples()
    {
        QFETCH(QString, kind);
        QFETCH(int, bits);
        QFETCH(int, channels);
        QFETCH(int, cut);
        const int frameBytes = bits / 8 * channels;
        const int frames = 1500 - (cut + frameBytes - 1) / frameBytes;
        const std::size_t count = std::size_t(1500) * channels;
        // Independent of the engine's arithmetic: the value each sample stands for.
        std::vector<double> want(count);
        fixtures::Bytes file;
        DataFormat format = DataFormat::Aiff;
        if (kind.endsWith(QLatin1String("float")) || kind == QLatin1String("pcm")) {
            std::vector<double> d(count);
            std::uint32_t x = 7;
            for (auto& v : d) {
                x = x * 1664525u + 1013904223u;
                v = (static_cast<double>(x) / 4294967296.0 - 0.5) * 1.9; // finer than a float
            }
            for (std::size_t i = 0; i < count; ++i)
                want[i] = bits == 32 ? static_cast<double>(static_cast<float>(d[i])) : d[i];
            if (kind == QLatin1String("wavfloat")) {
                file = fixtures::wavFloat(channels, 48000, bits, d);
                format = DataFormat::Wave;
            } else if (kind == QLatin1String("aifcfloat")) {
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
        if (kind == QLatin1String("pcm")) {
            startPcm(std::vector<float>(want.begin(), want.end()), channels, 48000);
        } else {
            file.resize(file.size() - static_cast<std::size_t>(cut));
            startWave(file, format);
            QCOMPARE(GetStatus(player_), PlayerStatus::Preparing);
        }
        const auto out = renderInPieces(1550);
        // L R C [LFE] Ls Rs: centre and surrounds at -3 dB, LFE dropped, each side
        // scaled by 1 / (1 + 2 x 0.7071) so that full scale everywhere stays full scale.
        const double k = 1.0 / (1.0 + 2.0 * M_SQRT1_2);
        const int ls = channels == 6 ? 4 : 3;
        for (int i = 0; i < frames; ++i) {
            const double* w = want.data() + static_cast<std::size_t>(i) * channels;
            if (channels <= 2) {
                QCOMPARE(out[2 * i], static_cast<float>(w[0]));
                QCOMPARE(out[2 * i + 1], static_cast<float>(w[channels - 1]));
            } else {
                const double l = k * (w[0] + M_SQRT1_2 * (w[2] + w[ls]));
                const double r = k * (w[1] + M_SQRT1_2 * (w[2] + w[ls + 1]));
                QVERIFY(std::fabs(out[2 * i] - l) < 1e-6);
                QVERIFY(std::fabs(out[2 * i + 1] - r) < 1e-6);
            }
        }
        QVERIFY(silent(out, 2 * frames));
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
        QCOMPARE(played(), std::int64_t(frames));
        QVERIFY2(g_errors.isEmpty(), qPrintable(g_errors.join('\n')));
    }

    // Head, then the loop body over and over: the seam falls between conversion
    // blocks and render buffers and still joins sample-exactly.
    void loopPlaysHeadThenBodyRepeated_data()
    {
        QTest::addColumn<bool>("aiff");
        QTest::addColumn<int>("bits");
        QTest::newRow("WAVE smpl 16-bit") << false << 16;
        QTest::newRow("AIFF INST 16-bit") << true << 16;
        QTest::newRow("WAVE 24-bit little-endian") << false << 24;
        QTest::newRow("AIFF 24-bit big-endian") << true << 24;
    }

    void loopPlaysHeadThenBodyRepeated()
    {
        QFETCH(bool, aiff);
        QFETCH(int, bits);
        const int start = 777; // neither on a block boundary nor a multiple of the period
        const int end = start + 400 * 9;
        const int total = end + 500;
        std::vector<std::int32_t> v = sine(total, 2, bits);
        for (std::size_t i = 2 * static_cast<std::size_t>(end); i < v.size(); ++i)
            v[i] = 30000 << (bits - 16); // the release tail, never reached while the loop runs
        startWave(aiff ? fixtures::aiffInts(2, 48000, bits, v, start, end)
                       : fixtures::wavInts(2, 48000, bits, v, {{start, end - 1}}),
                  aiff ? DataFormat::Aiff : DataFormat::Wave);
        const int frames = 3 * total;
        const auto out = renderInPieces(static_cast<std::size_t>(frames));
        for (int i = 0; i < frames; ++i) {
            const int src = i < end ? i : start + (i - start) % (end - start);
            QCOMPARE(out[2 * i], static_cast<float>(std::ldexp(v[2 * src], 1 - bits)));
            QCOMPARE(out[2 * i + 1], static_cast<float>(std::ldexp(v[2 * src + 1], 1 - bits)));
        }
        QCOMPARE(played(), std::int64_t(frames));
        QCOMPARE(GetStatus(player_), PlayerStatus::Playing);
        Stop(player_);
        QCOMPARE(GetStatus(player_), PlayerStatus::Stopped);
        QVERIFY(silent(render(100)));
    }

    void outputIsClippedAndFreeOfNaN()
    {
        const std::vector<float> f = {2.0f, -3.0f, std::nanf(""), INFINITY, 0.5f};
        startWave(fixtures::wavFloat(1, 48000, 32, {f.begin(), f.end()}));
        const auto out = render(5);
        const float want[] = {1.0f, -1.0f, 0.0f, 1.0f, 0.5f};
        for (int i = 0; i < 5; ++i)
            QCOMPARE(out[2 * i], want[i]);
    }

    // A volume change glides over about 5 ms instead of stepping; the next sound
    // starts at the player's volume.
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
        QCOMPARE(GetStatus(player_), PlayerStatus::Playing);
        startPcm(pcm, 1, 48000);
        QVERIFY(silent(render(50)));
        SetVolume(player_, 0.25f);
        startPcm(pcm, 1, 48000);
        QCOMPARE(render(1)[0], 0.125f);
    }

    void failuresReportCodedTexts()
    {
        // Each failure leaves the player in Error with a coded text: "E<10 digits> : why".
        QVERIFY(CreateRawPcmVoicePool({3, 1, 1, 44100, SampleFormat::Float32}));
        const std::vector<float> pcm(64, 0.25f);
        const char* codes[] = {"E2026112205", "E2026112206", "E2026112206",
                               "E2026112207", "E2026112208", "E2026112209"};
        for (int what = 0; what < 6; ++what) {
            if (what < 2) {
                startWave(what == 0 ? QByteArray() : QByteArray(100, 'x'));
            } else if (what == 2) { // a streamed file gone before its worker opens it
                SetDataFormat(player_, DataFormat::Stream);
                SetStreamSource(player_,
                                new WaveFileStream(dir_.filePath("gone.wav").toStdString()));
                Start(player_);
                render(1);
            } else { // unknown pool, too many channels, rate above the limit
                SetVoicePoolId(player_, what == 3 ? 9 : 3);
                SetDataFormat(player_, DataFormat::RawPcm);
                SetNumChannels(player_, what == 4 ? 2 : 1);
                SetSamplingRate(player_, what == 5 ? 48000 : 44100);
                SetData(player_, pcm.data(), pcm.size() * 4);
                Start(player_);
            }
            QCOMPARE(GetStatus(player_), PlayerStatus::Error);
            QVERIFY2(
                QRegularExpression("^E\\d{10} : \\S.*$").match(g_errors.value(what)).hasMatch() &&
                    g_errors.value(what).startsWith(QLatin1String(codes[what])),
                qPrintable(g_errors.value(what)));
            Stop(player_);
            QCOMPARE(GetStatus(player_), PlayerStatus::Stopped);
        }
    }

    // Starting a long sound costs no memory the size of the sound: it plays from
    // the bytes it was given, the mixer allocates nothing, and every allocation
    // goes through the host's functions and is given back.
    void allocationGoesThroughTheHostFunctions()
    {
        Finalize();
        g_allocs = 0;
        g_frees = 0;
        SetAllocationFunctions(countingAlloc, countingFree);
        initEngine();
        const auto values = sine(48000 * 20, 2, 24);
        const QByteArray file = fixtures::toQByteArray(fixtures::aiffInts(2, 48000, 24, values));
        g_allocBytes = 0;
        startWave(file, DataFormat::Aiff, 19000);
        const std::int64_t atStart = g_allocBytes.load();
        const auto out = render(48000 + 10);
        QVERIFY2(atStart < 64 * 1024, qPrintable(QString::number(atStart)));
        QCOMPARE(g_allocBytes.load(), atStart);
        QCOMPARE(out[0], static_cast<float>(std::ldexp(values[2 * 912000], -23)));
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
        Finalize();
        QVERIFY(g_allocs > 4); // mixer, pools, player, voice
        QCOMPARE(g_frees.load(), g_allocs.load());
        SetAllocationFunctions(nullptr, nullptr);
        initEngine();
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
        const auto ls = static_cast<std::uint32_t>(loopStart);
        const auto le = static_cast<std::uint32_t>(loopEnd);
        fixtures::Bytes file =
            aiff ? fixtures::aiffInts(channels, static_cast<std::uint32_t>(rate), bits, values, ls,
                                      le)
                 : fixtures::wavInts(channels, rate, bits, values,
                                     le > ls ? std::vector<fixtures::Loop>{{ls, le - 1}}
                                             : std::vector<fixtures::Loop>{});
        file.resize(file.size() - static_cast<std::size_t>(cut));
        SetPlayRange(player_, rangeStart, rangeEnd);
        startWave(file, aiff ? DataFormat::Aiff : DataFormat::Wave, startMs);
        const auto fromMemory = renderInPieces(static_cast<std::size_t>(render));
        const PlayerStatus memoryStatus = GetStatus(player_);
        const std::int64_t memoryPlayed = played();
        Stop(player_);
        const QString path = dir_.filePath(QStringLiteral("streamed.bin"));
        QVERIFY(fixtures::writeFile(path, file));
        SetDataFormat(player_, DataFormat::Stream);
        SetStreamSource(player_, new WaveFileStream(QFile::encodeName(path).toStdString()));
        SetStartTimeMs(player_, startMs);
        Start(player_);
        QCOMPARE(GetStatus(player_), PlayerStatus::Preparing);
        const auto fromDisk = renderInPieces(static_cast<std::size_t>(render));
        double energy = 0.0;
        for (std::size_t i = 0; i < fromMemory.size(); ++i) {
            QCOMPARE(fromDisk[i], fromMemory[i]);
            energy += fromMemory[i] * fromMemory[i];
        }
        QVERIFY(energy > 100.0);
        QCOMPARE(GetStatus(player_), memoryStatus);
        if (memoryStatus == PlayerStatus::Playing)
            QCOMPARE(played(), memoryPlayed);
        QVERIFY2(g_errors.isEmpty(), qPrintable(g_errors.join('\n')));
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
        QVERIFY(silent(out, 2 * 4000));
        QCOMPARE(GetStatus(player_), PlayerStatus::PlayEnd);
        // Without a range the loop is back.
        SetPlayRange(player_, -1, -1);
        startWave(file);
        QCOMPARE(render(3001)[2 * 3000], values[2000] / 32768.0f);
    }
};

QTEST_GUILESS_MAIN(TestEngine)

#include "tst_engine.moc"
