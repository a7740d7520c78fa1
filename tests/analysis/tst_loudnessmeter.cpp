#include "LoudnessMeter.h"
#include "WaveBuilder.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

using namespace fixtures;

namespace {

using Planes = std::vector<std::vector<float>>;

// "-23 dBFS" is the sine's peak level A: two channels of mean square A^2/2 sum to A^2,
// and the K-weighting gain at 1 kHz (+0.691 dB) cancels the -0.691 offset, so the
// stereo tone reads 20 log10(A) = -23.0 LUFS (read as RMS it would read -20).
void appendSine(Planes& planes, int channelMask, double dbfs, double seconds, int rate,
                double frequency = 1000.0)
{
    const double amplitude = std::pow(10.0, dbfs / 20.0);
    const std::size_t start = planes[0].size();
    const std::size_t frames = static_cast<std::size_t>(std::llround(seconds * rate));
    for (std::size_t ch = 0; ch < planes.size(); ++ch) {
        for (std::size_t i = 0; i < frames; ++i) {
            const double phase = 2.0 * M_PI * frequency * double(start + i) / rate;
            planes[ch].push_back((channelMask >> ch) & 1 ? float(amplitude * std::sin(phase))
                                                         : 0.0f);
        }
    }
}

LoudnessResult measure(const Planes& planes, int rate)
{
    LoudnessConfig config;
    config.channels = std::uint32_t(planes.size());
    config.samplingRate = std::uint32_t(rate);
    config.samples = std::uint32_t(planes.empty() ? 0 : planes[0].size());
    std::vector<std::uint64_t> work(GetLoudnessWorkSize(config) / 8 + 1);
    std::vector<const float*> pointers;
    for (const auto& p : planes)
        pointers.push_back(p.data());
    return MeasureLoudness(config, work.data(), work.size() * 8, pointers.data());
}

Bytes wavFromPlanes(const Planes& planes, int rate)
{
    std::vector<double> interleaved;
    for (std::size_t i = 0; i < planes[0].size(); ++i)
        for (const auto& p : planes)
            interleaved.push_back(p[i]);
    return wav(int(planes.size()), rate, 16, interleaved);
}

struct Tone
{
    int mask; // channels that carry it
    double dbfs;
    double seconds;
};

struct Signal
{
    const char* name;
    int rate;
    int channels;
    std::vector<Tone> tones; // one after the other
    double lufs;             // NaN: the meter declines
    double tolerance;
};

constexpr double kDeclines = std::numeric_limits<double>::quiet_NaN();

// 1 kHz sines and what they must read. EBU Tech 3341 cases 1 and 3 to 5 need
// the gates to drop their quiet parts; a full-scale sine in one channel of two
// reads -3.01 at every rate the filters hold for; the LFE is not measured, the
// surrounds (and channels 7 and 8) weigh 1.41, a ninth channel is ignored.
const std::vector<Tone> kCase4 = {
    {3, -72, 10}, {3, -36, 10}, {3, -23, 60}, {3, -36, 10}, {3, -72, 10}};
const std::vector<Signal> kSignals = {
    {"case 1 @48k", 48000, 2, {{3, -23, 20}}, -23.0, 0.1},
    {"case 3 @48k", 48000, 2, {{3, -36, 10}, {3, -23, 60}, {3, -36, 10}}, -23.0, 0.1},
    {"case 4 @48k", 48000, 2, kCase4, -23.0, 0.1},
    {"case 5 @48k", 48000, 2, {{3, -26, 20}, {3, -20, 20.1}, {3, -26, 20}}, -23.0, 0.1},
    // A part 9 LU under the mean passes the relative gate; one at -65 LUFS the absolute.
    {"relative gate", 48000, 2, {{3, -23, 10}, {3, -34.5, 10}}, -25.7, 0.1},
    {"just above the absolute gate", 48000, 2, {{3, -65, 5}}, -65.0, 0.1},
    {"under the absolute gate", 48000, 2, {{3, -75, 5}}, -96.0, 0},
    {"full scale @8k", 8000, 2, {{1, 0, 3}}, -3.01, 0.05},
    {"full scale @384k", 384000, 2, {{1, 0, 3}}, -3.01, 0.05},
    {"@7999 Hz", 7999, 2, {{1, 0, 3}}, kDeclines, 0},
    {"@384001 Hz", 384001, 2, {{1, 0, 3}}, kDeclines, 0},
    {"silence", 48000, 2, {{0, 0, 3}}, -96.0, 0},
    // Shorter than one block, and one 100 ms step and a frame: the partial blocks count.
    {"50 ms", 48000, 2, {{3, -23, 0.05}}, -23.0, 0.1},
    {"100 ms and a frame", 48000, 1, {{1, -20, 0.1 + 1 / 48000.0}}, -23.0, 0.1},
    {"three fronts", 48000, 3, {{7, -30, 3}}, -28.24, 0.02},
    {"three fronts and LFE", 48000, 4, {{15, -30, 3}}, -28.24, 0.02},
    {"LFE alone", 48000, 4, {{8, -10, 3}}, -96.0, 0},
    {"5.1 left surround", 48000, 6, {{16, -20, 3}}, -21.52, 0.02},
    {"eight channels", 48000, 8, {{255, -30, 2}}, -23.645, 0.02},
    {"nine channels", 48000, 9, {{511, -30, 2}}, -23.645, 0.02},
};

// The same planes fed to the streaming meter interleaved, in uneven blocks.
LoudnessResult measureStreamed(const Planes& planes, int rate)
{
    const int channels = int(planes.size());
    const int frames = int(planes[0].size());
    LoudnessStream stream;
    if (!stream.start({std::uint32_t(channels), std::uint32_t(rate), std::uint32_t(frames)}))
        return {};
    std::vector<float> block;
    for (int at = 0, step = 1; at < frames; at += step, step = step * 3 % 4099 + 1) {
        const int n = std::min(step, frames - at);
        block.clear();
        for (int i = 0; i < n; ++i)
            for (int ch = 0; ch < channels; ++ch)
                block.push_back(planes[ch][at + i]);
        stream.feed(block.data(), std::uint32_t(n));
    }
    return stream.finish();
}

} // namespace

class TestLoudnessMeter : public QObject
{
    Q_OBJECT
private slots:
    void knownSignals_data()
    {
        QTest::addColumn<int>("index");
        for (std::size_t i = 0; i < kSignals.size(); ++i)
            QTest::newRow(kSignals[i].name) << int(i);
    }
    void knownSignals()
    {
        QFETCH(int, index);
        const Signal& s = kSignals[std::size_t(index)];
        Planes planes(static_cast<std::size_t>(s.channels));
        for (const Tone& t : s.tones)
            appendSine(planes, t.mask, t.dbfs, t.seconds, s.rate);
        const LoudnessResult r = measure(planes, s.rate);
        const LoudnessResult streamed = measureStreamed(planes, s.rate);
        QCOMPARE(r.valid, std::isnan(s.lufs) ? 0 : 1);
        QCOMPARE(streamed.valid, r.valid);
        if (!r.valid)
            return;
        QVERIFY2(std::abs(r.value - s.lufs) <= s.tolerance, qPrintable(QString::number(r.value)));
        QCOMPARE(std::memcmp(&streamed.value, &r.value, sizeof r.value), 0);
    }

    // Channels are filtered side by side, each with its own state: a tone
    // reads the same to the bit alone, in either channel of two, and in the
    // third of three.
    void channelsKeepTheirOwnFilter()
    {
        Planes mono(1);
        appendSine(mono, 1, -20, 1.5, 44100, 60.0);
        appendSine(mono, 1, -30, 1.5, 44100, 5000.0);
        const LoudnessResult alone = measure(mono, 44100);
        const std::vector<float> silence(mono[0].size());
        for (const Planes& planes : {Planes{mono[0], silence}, Planes{silence, mono[0]},
                                     Planes{silence, silence, mono[0]}}) {
            const LoudnessResult r = measure(planes, 44100);
            QCOMPARE(std::memcmp(&r.value, &alone.value, sizeof r.value), 0);
        }
    }

    // Files read block by block give what the meter gives on their samples
    // (16-bit quantised), and the largest sample; nine channels are declined
    // but still give their peak.
    void measuresWaveFiles()
    {
        QTemporaryDir dir;
        const std::string path = dir.filePath(QStringLiteral("x.wav")).toStdString();
        for (const int channels : {4, 6}) {
            Planes planes(static_cast<std::size_t>(channels));
            appendSine(planes, 0xFF, -23.0 - channels, 2.0, 48000);
            QVERIFY(writeFile(path, wavFromPlanes(planes, 48000)));
            float value = 0.0f, peak = 0.0f;
            QVERIFY(MeasureFileLoudness(path.c_str(), &value, &peak));
            QVERIFY(std::abs(value - measure(planes, 48000).value) <= 0.01f);
            QVERIFY(std::abs(peak - std::pow(10.0, (-23.0 - channels) / 20.0)) < 1e-4);
        }
        float value = 0.0f, peak = 0.0f;
        QVERIFY(writeFile(path, wavFromPlanes(Planes(9, std::vector<float>(4800, 0.1f)), 48000)));
        QVERIFY(!MeasureFileLoudness(path.c_str(), &value, &peak) && std::abs(peak - 0.1f) < 1e-4);
    }
};

QTEST_GUILESS_MAIN(TestLoudnessMeter)
#include "tst_loudnessmeter.moc"
