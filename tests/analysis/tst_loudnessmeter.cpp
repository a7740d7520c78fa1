#include "LoudnessMeter.h"
#include "WaveBuilder.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

using namespace fixtures;

namespace {

using Planes = std::vector<std::vector<float>>;

// "-23 dBFS" is the sine's peak level: amplitude 10^(-23/20) in each channel.
// Each channel's mean square is then A^2/2; two channels sum to A^2, and the
// K-weighting gain at 1 kHz (+0.691 dB) cancels the -0.691 offset, so the
// stereo tone reads 20 log10(A) = -23.0 LUFS. (Read as RMS it would be 3 dB
// louder and read -20.)
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

// A plain per-sample version of the same meter, written from the algorithm's
// description: K-weighting at the given coefficients, 100 ms sub-blocks, each
// block the mean square of the last four, two gates. Doubles throughout.
double referenceLoudness(const Planes& planes, int rate)
{
    double b[2][3], a[2][2];
    if (rate == 48000) {
        const double s1[5] = {1.5351249, -2.6916962, 1.1983929, -1.6906593, 0.7324808};
        const double s2[5] = {1.0, -2.0, 1.0, -1.9900475, 0.9900723};
        for (int i = 0; i < 3; ++i) {
            b[0][i] = s1[i];
            b[1][i] = s2[i];
        }
        a[0][0] = s1[3], a[0][1] = s1[4], a[1][0] = s2[3], a[1][1] = s2[4];
    } else {
        double k = std::tan(M_PI * 1681.974450955533 / rate);
        const double vh = std::pow(10.0, 3.999843853973347 / 20.0);
        const double vb = std::pow(vh, 0.4996667741545416);
        double q = 0.7071752369554196;
        double a0 = 1.0 + k / q + k * k;
        b[0][0] = (vh + vb * k / q + k * k) / a0;
        b[0][1] = 2.0 * (k * k - vh) / a0;
        b[0][2] = (vh - vb * k / q + k * k) / a0;
        a[0][0] = 2.0 * (k * k - 1.0) / a0;
        a[0][1] = (1.0 - k / q + k * k) / a0;
        k = std::tan(M_PI * 38.13547087602444 / rate);
        q = 0.5003270373238773;
        a0 = 1.0 + k / q + k * k;
        b[1][0] = 1.0, b[1][1] = -2.0, b[1][2] = 1.0;
        a[1][0] = 2.0 * (k * k - 1.0) / a0;
        a[1][1] = (1.0 - k / q + k * k) / a0;
    }
    const int inputs = std::min<int>(int(planes.size()), 8);
    const std::size_t frames = planes[0].size();
    const std::size_t step = std::size_t((rate + 9) / 10);
    std::vector<double> subSums;   // per sub-block, weighted sum over channels
    std::vector<double> subFrames; // frames in each sub-block
    for (std::size_t at = 0; at < frames; at += step) {
        subSums.push_back(0.0);
        subFrames.push_back(double(std::min(step, frames - at)));
    }
    for (int ch = 0; ch < inputs; ++ch) {
        if (ch == 3)
            continue; // LFE
        const double weight = ch >= 4 ? 1.41 : 1.0;
        double st[2][4] = {};
        for (std::size_t i = 0; i < frames; ++i) {
            double x = planes[ch][i];
            for (int s = 0; s < 2; ++s) {
                const double y = b[s][0] * x + b[s][1] * st[s][0] + b[s][2] * st[s][1] -
                                 a[s][0] * st[s][2] - a[s][1] * st[s][3];
                st[s][1] = st[s][0];
                st[s][0] = x;
                st[s][3] = st[s][2];
                st[s][2] = y;
                x = y;
            }
            subSums[i / step] += weight * x * x;
        }
    }
    std::vector<double> power;
    for (std::size_t k = 0; k < subSums.size(); ++k) {
        double sum = 0.0, count = 0.0;
        for (std::size_t j = k >= 3 ? k - 3 : 0; j <= k; ++j) {
            sum += subSums[j];
            count += subFrames[j];
        }
        power.push_back(sum / count);
    }
    auto lufs = [](double p) {
        return p > 0.0 ? std::max(10.0 * std::log10(p) - 0.691, -96.0) : -96.0;
    };
    auto gated = [&](double threshold) {
        double sum = 0.0;
        int count = 0;
        for (const double p : power) {
            if (lufs(p) >= threshold) {
                sum += p;
                ++count;
            }
        }
        return count ? lufs(sum / count) : -96.0;
    };
    const double absolute = gated(-70.0);
    if (absolute < -70.0)
        return absolute;
    return gated(std::max(absolute - 10.0, -70.0));
}

Bytes wavFromPlanes(const Planes& planes, int rate)
{
    std::vector<double> interleaved;
    for (std::size_t i = 0; i < planes[0].size(); ++i)
        for (const auto& p : planes)
            interleaved.push_back(p[i]);
    return wav(int(planes.size()), rate, 16, interleaved);
}

} // namespace

class TestLoudnessMeter : public QObject
{
    Q_OBJECT
private slots:
    void workSizeFormula_data()
    {
        QTest::addColumn<uint>("rate");
        QTest::addColumn<uint>("samples");
        QTest::addColumn<qulonglong>("bytes");
        // 28 x ceil(fs/10) + 8 x (trunc(samples x 10 / fs) + 64)
        QTest::newRow("1 s at 48k") << 48000u << 48000u << qulonglong(28 * 4800 + 8 * (10 + 64));
        QTest::newRow("1.05 s at 44.1k")
            << 44100u << 46305u << qulonglong(28 * 4410 + 8 * (10 + 64));
        QTest::newRow("odd rate rounds up") << 22051u << 100u << qulonglong(28 * 2206 + 8 * 64);
        QTest::newRow("60 s at 48k") << 48000u << 2880000u << qulonglong(28 * 4800 + 8 * 664);
    }
    void workSizeFormula()
    {
        QFETCH(uint, rate);
        QFETCH(uint, samples);
        QFETCH(qulonglong, bytes);
        LoudnessConfig config;
        config.channels = 2;
        config.samplingRate = rate;
        config.samples = samples;
        QCOMPARE(qulonglong(GetLoudnessWorkSize(config)), bytes);
    }

    void refusesShortWorkAreaAndEmptyInput()
    {
        Planes planes(1, std::vector<float>(48000, 0.1f));
        LoudnessConfig config{1, 48000, 48000};
        std::vector<std::uint64_t> work(GetLoudnessWorkSize(config) / 8);
        const float* p = planes[0].data();
        const LoudnessResult tooSmall =
            MeasureLoudness(config, work.data(), work.size() * 8 - 8, &p);
        QCOMPARE(tooSmall.valid, 0);
        QCOMPARE(tooSmall.value, 0.0f);
        QCOMPARE(MeasureLoudness(config, work.data(), work.size() * 8, &p).valid, 1);
        config.samples = 0;
        const LoudnessResult empty = MeasureLoudness(config, work.data(), work.size() * 8, &p);
        QCOMPARE(empty.valid, 0);
        QCOMPARE(empty.value, 0.0f);
    }

    // EBU Tech 3341 cases 1 and 3 to 5: a steady tone, then gates that must
    // remove the quiet parts.
    void ebuGatingCases_data()
    {
        QTest::addColumn<QVector<double>>("levels");
        QTest::addColumn<QVector<double>>("seconds");
        QTest::addColumn<int>("rate");
        for (const int rate : {48000, 44100}) {
            const QByteArray r = QByteArray::number(rate);
            QTest::newRow(QByteArray("case 1 @" + r).constData())
                << QVector<double>{-23} << QVector<double>{20} << rate;
            QTest::newRow(QByteArray("case 3 @" + r).constData())
                << QVector<double>{-36, -23, -36} << QVector<double>{10, 60, 10} << rate;
            QTest::newRow(QByteArray("case 4 @" + r).constData())
                << QVector<double>{-72, -36, -23, -36, -72} << QVector<double>{10, 10, 60, 10, 10}
                << rate;
            QTest::newRow(QByteArray("case 5 @" + r).constData())
                << QVector<double>{-26, -20, -26} << QVector<double>{20, 20.1, 20} << rate;
        }
    }
    void ebuGatingCases()
    {
        QFETCH(QVector<double>, levels);
        QFETCH(QVector<double>, seconds);
        QFETCH(int, rate);
        Planes planes(2);
        for (int i = 0; i < levels.size(); ++i)
            appendSine(planes, 3, levels[i], seconds[i], rate);
        const LoudnessResult r = measure(planes, rate);
        QCOMPARE(r.valid, 1);
        QVERIFY2(std::abs(r.value + 23.0f) <= 0.1f, qPrintable(QString::number(r.value)));
        QVERIFY(std::abs(r.value - referenceLoudness(planes, rate)) <= 0.01);
    }

    void silenceIsTheFloor()
    {
        Planes planes(2, std::vector<float>(48000 * 3, 0.0f));
        const LoudnessResult r = measure(planes, 48000);
        QCOMPARE(r.valid, 1);
        QCOMPARE(r.value, -96.0f);
    }

    // Correct from 8 kHz to 384 kHz; outside that the filters do not hold and
    // the meter declines rather than give a wrong or infinite value.
    void fullScaleSineInOneChannel_data()
    {
        QTest::addColumn<int>("rate");
        QTest::addColumn<bool>("measured");
        for (const int rate : {8000, 11025, 22050, 44100, 48000, 96000, 192000, 384000})
            QTest::newRow(qPrintable(QString::number(rate))) << rate << true;
        for (const int rate : {1000, 4000, 7999, 384001, 768000})
            QTest::newRow(qPrintable(QString::number(rate))) << rate << false;
    }

    void fullScaleSineInOneChannel()
    {
        QFETCH(int, rate);
        QFETCH(bool, measured);
        Planes planes(2);
        appendSine(planes, 1, 0.0, 3.0, rate, 997.0 * std::min(1.0, rate / 8000.0));
        const LoudnessResult r = measure(planes, rate);
        QCOMPARE(r.valid, measured ? 1 : 0);
        if (measured)
            QVERIFY2(std::abs(r.value + 3.01f) <= 0.05f, qPrintable(QString::number(r.value)));
    }

    void lfeIsNotMeasuredAndSurroundsWeighMore()
    {
        Planes front(3);
        appendSine(front, 0b111, -30.0, 3.0, 48000);
        Planes withLfe(4);
        appendSine(withLfe, 0b1111, -30.0, 3.0, 48000);
        QCOMPARE(measure(withLfe, 48000).value, measure(front, 48000).value);

        Planes onlyLfe(4);
        appendSine(onlyLfe, 0b1000, -10.0, 3.0, 48000);
        QCOMPARE(measure(onlyLfe, 48000).value, -96.0f);

        // The same tone in a surround channel reads 10 log10(1.41) = 1.49 dB louder.
        Planes left(6), surround(6);
        appendSine(left, 0b000001, -20.0, 3.0, 48000);
        appendSine(surround, 0b010000, -20.0, 3.0, 48000);
        const float difference = measure(surround, 48000).value - measure(left, 48000).value;
        QVERIFY2(std::abs(difference - 1.4922f) < 0.005f, qPrintable(QString::number(difference)));
    }

    void ninthChannelIsIgnored()
    {
        Planes eight(8), nine(9);
        appendSine(eight, 0xFF, -30.0, 2.0, 48000);
        appendSine(nine, 0x1FF, -30.0, 2.0, 48000);
        QCOMPARE(measure(nine, 48000).value, measure(eight, 48000).value);
    }

    void agreesWithPlainVersion_data()
    {
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("channels");
        QTest::addColumn<int>("frames");
        QTest::newRow("shorter than 100 ms") << 48000 << 1 << 1000;
        QTest::newRow("one block plus a frame") << 48000 << 2 << 4801;
        QTest::newRow("3.3 s 5.1") << 48000 << 6 << 158400 + 17;
        QTest::newRow("2 s 44.1k") << 44100 << 2 << 88200 + 3;
        QTest::newRow("1 s 96k 8 ch") << 96000 << 8 << 96000;
        QTest::newRow("0.5 s 8k") << 8000 << 1 << 4003;
    }
    void agreesWithPlainVersion()
    {
        QFETCH(int, rate);
        QFETCH(int, channels);
        QFETCH(int, frames);
        std::mt19937 random(1234);
        std::uniform_real_distribution<float> noise(-0.5f, 0.5f);
        Planes planes(static_cast<std::size_t>(channels),
                      std::vector<float>(static_cast<std::size_t>(frames)));
        for (int ch = 0; ch < channels; ++ch) {
            // Noise bursts with quiet gaps, so both gates have work.
            for (int i = 0; i < frames; ++i) {
                const float envelope = (i / (rate / 4)) % 3 == 2 ? 0.001f : 1.0f;
                planes[ch][i] = noise(random) * envelope / float(ch + 1);
            }
        }
        const LoudnessResult r = measure(planes, rate);
        QCOMPARE(r.valid, 1);
        // Fed block by block in uneven pieces, the meter gives the same bits.
        LoudnessStream stream;
        LoudnessConfig config;
        config.channels = std::uint32_t(channels);
        config.samplingRate = std::uint32_t(rate);
        config.samples = std::uint32_t(frames);
        QVERIFY(stream.start(config));
        std::vector<float> block;
        for (int at = 0, step = 1; at < frames; at += step, step = step * 3 % 4099 + 1) {
            const int n = std::min(step, frames - at);
            block.clear();
            for (int i = 0; i < n; ++i)
                for (int ch = 0; ch < channels; ++ch)
                    block.push_back(planes[ch][at + i]);
            stream.feed(block.data(), std::uint32_t(n));
        }
        const LoudnessResult streamed = stream.finish();
        QCOMPARE(streamed.valid, 1);
        QCOMPARE(std::memcmp(&streamed.value, &r.value, sizeof r.value), 0);
        const double expected = referenceLoudness(planes, rate);
        QVERIFY2(std::abs(r.value - expected) <= 0.01,
                 qPrintable(QStringLiteral("%1 vs %2").arg(r.value).arg(expected)));
    }

    void measuresWaveFiles()
    {
        QTemporaryDir dir;
        Planes planes(2);
        appendSine(planes, 3, -23.0, 10.0, 48000);
        const std::string stereo = dir.filePath(QStringLiteral("s.wav")).toStdString();
        QVERIFY(writeFile(stereo, wavFromPlanes(planes, 48000)));
        float value = 0.0f;
        QVERIFY(MeasureFileLoudness(stereo.c_str(), &value));
        QVERIFY2(std::abs(value + 23.0f) <= 0.1f, qPrintable(QString::number(value)));

        // Three channels take the allocated buffers instead of the static pool.
        Planes three(3);
        appendSine(three, 0b111, -30.0, 2.0, 48000);
        const std::string path3 = dir.filePath(QStringLiteral("t.wav")).toStdString();
        QVERIFY(writeFile(path3, wavFromPlanes(three, 48000)));
        QVERIFY(MeasureFileLoudness(path3.c_str(), &value));
        QVERIFY(std::abs(value - measure(three, 48000).value) <= 0.01f);

        // Four channels are measured on the first three.
        Planes four(4);
        appendSine(four, 0b1111, -30.0, 2.0, 48000);
        const std::string path4 = dir.filePath(QStringLiteral("q.wav")).toStdString();
        QVERIFY(writeFile(path4, wavFromPlanes(four, 48000)));
        float value4 = 0.0f;
        QVERIFY(MeasureFileLoudness(path4.c_str(), &value4));
        QVERIFY(std::abs(value4 - value) <= 0.001f);

        Planes nine(9);
        appendSine(nine, 0x1FF, -30.0, 1.0, 48000);
        const std::string path9 = dir.filePath(QStringLiteral("n.wav")).toStdString();
        QVERIFY(writeFile(path9, wavFromPlanes(nine, 48000)));
        QVERIFY(!MeasureFileLoudness(path9.c_str(), &value));

        const std::string silent = dir.filePath(QStringLiteral("z.wav")).toStdString();
        QVERIFY(writeFile(silent, wav16(1, 48000, std::vector<int>(4800, 0))));
        QVERIFY(MeasureFileLoudness(silent.c_str(), &value));
        QCOMPARE(value, -96.0f);
        QVERIFY(!MeasureFileLoudness(
            dir.filePath(QStringLiteral("missing.wav")).toLocal8Bit().constData(), &value));
    }
};

QTEST_GUILESS_MAIN(TestLoudnessMeter)
#include "tst_loudnessmeter.moc"
