#include "WaveBuilder.h"
#include "WaveHeaderReader.h"
#include "WaveformPlot.h"

#include <QtTest>

#include <memory>

using namespace fixtures;

namespace {

using Mixed = std::array<PlotPoint, kPlotPoints>;
using Multi = std::array<PlotPoint, kMaxPlotChannels * kPlotPoints>;

// The points that are not {0, 0}, as "point:max/min" (per channel "channel.point:max/min").
template<std::size_t N>
QString nonZero(const std::array<PlotPoint, N>& plot)
{
    QStringList out;
    for (std::size_t i = 0; i < N; ++i) {
        if (plot[i].max == 0 && plot[i].min == 0)
            continue;
        const QString at = N == kPlotPoints
                               ? QString::number(i)
                               : QStringLiteral("%1.%2").arg(i / kPlotPoints).arg(i % kPlotPoints);
        out << QStringLiteral("%1:%2/%3").arg(at).arg(plot[i].max).arg(plot[i].min);
    }
    return out.join(QLatin1Char(' '));
}

// Both plots of a WAV/AIFF file; every point must be written.
std::pair<QString, QString> plotsOf(const QByteArray& file)
{
    Mixed mixed;
    Multi multi;
    mixed.fill({55, 55});
    multi.fill({55, 55});
    const std::unique_ptr<WaveHeaderHandle, void (*)(WaveHeaderHandle*)> h(
        OpenWaveHeaderFromMemory(file.constData(), std::size_t(file.size())), CloseWaveHeader);
    ComputeWaveMixedPlot(h.get(), mixed.data());
    ComputeWaveMultiPlot(h.get(), multi.data());
    return {nonZero(mixed), nonZero(multi)};
}

} // namespace

class TestWaveformPlot : public QObject
{
    Q_OBJECT
private slots:
    void geometry_data()
    {
        QTest::addColumn<int>("samples");
        QTest::addColumn<int>("rate");
        QTest::addColumn<QString>("expected"); // points frames-per-bucket scan skip
        QTest::newRow("empty") << 0 << 48000 << "0 0 0 0";
        QTest::newRow("249 frames") << 249 << 48000 << "249 1 1 0";
        QTest::newRow("short buckets") << 250 * 500 + 249 << 48000 << "250 500 500 0";
        QTest::newRow("exactly 20 ms") << 250 * 960 << 48000 << "250 960 960 0";
        QTest::newRow("long buckets") << 250 * 2000 << 48000 << "250 2000 960 1040";
        QTest::newRow("44.1k") << 250 * 1000 << 44100 << "250 1000 882 118";
    }
    void geometry()
    {
        QFETCH(int, samples);
        QFETCH(int, rate);
        const PlotGeometry g = ComputePlotGeometry(samples, rate);
        QTEST(QStringLiteral("%1 %2 %3 %4")
                  .arg(g.points)
                  .arg(g.framesPerBucket)
                  .arg(g.scan)
                  .arg(g.skip),
              "expected");
    }

    // Percent of full scale, truncated: 16-bit data from its high byte
    // (127 -> 99, -128 -> -100), other depths from their decoded values.
    void wavePlots_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("mixed");
        QTest::addColumn<QString>("multi");
        const auto add = [](const char* name, const Bytes& b, const QString& mixed,
                            const QString& multi) {
            QTest::newRow(name) << toQByteArray(b) << mixed << multi;
        };
        std::vector<int> ramp;
        QStringList points, channel0;
        for (int i = 0; i < 100; ++i) {
            ramp.push_back(i * 300 - 15000);
            const int v = ((i * 300 - 15000) >> 8) * 100 / 128;
            if (v != 0) {
                points << QStringLiteral("%1:%2/%2").arg(i).arg(v);
                channel0 << QStringLiteral("0.%1:%2/%2").arg(i).arg(v);
            }
        }
        add("100 frames give 100 points", wav16(1, 48000, ramp), points.join(' '),
            channel0.join(' '));
        add("full scale mono", wav16(1, 48000, {32767, -32768}), "0:99/99 1:-100/-100",
            "0.0:99/99 0.1:-100/-100");
        add("full scale 24-bit",
            riff({chunk("fmt ", fmtBody(1, 1, 48000, 24)),
                  chunk("data", pcm24({0x7FFFFF, -0x800000}))}),
            "0:99/99 1:-100/-100", "0.0:99/99 0.1:-100/-100");
        // High bytes 64 and -32 average to 16: 16 x 100 / 128 = 12.
        add("stereo averaged per frame", wav16(2, 48000, {64 << 8, -32 * 256}), "0:12/12",
            "0.0:50/50 1.0:-25/-25");
        // The mixed plot of three channels averages the first two.
        add("three channels", wav16(3, 48000, {100 << 8, 50 << 8, -128 * 256}), "0:58/58",
            "0.0:78/78 1.0:39/39 2.0:-100/-100");
        add("nine channels plot nothing", wav16(9, 48000, std::vector<int>(90, 20000)), "", "");
        // 2000 frames per bucket at 48 kHz: only frames 0..959 are looked at.
        for (const int bits : {16, 24}) {
            std::vector<double> v(250 * 2000, 0.0);
            v[500] = 0.5;         // bucket 0, early: shows
            v[2000 + 1500] = 0.5; // bucket 1, late: missed
            v[4000 + 959] = -0.5; // bucket 2, last frame looked at
            add(bits == 16 ? "late peak missed, 16-bit" : "late peak missed, 24-bit",
                wav(1, 48000, bits, v), "0:50/0 2:0/-50", "0.0:50/0 0.2:0/-50");
        }
    }
    void wavePlots()
    {
        QFETCH(QByteArray, file);
        const auto [mixed, multi] = plotsOf(file);
        QTEST(mixed, "mixed");
        QTEST(multi, "multi");
    }
};

QTEST_GUILESS_MAIN(TestWaveformPlot)
#include "tst_waveformplot.moc"
