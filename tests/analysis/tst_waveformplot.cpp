#include "PlotBuilder.h"
#include "WaveBuilder.h"
#include "WaveHeaderReader.h"
#include "WaveformPlot.h"

#include <QtTest>

#include <cstring>
#include <memory>
#include <random>

using namespace fixtures;

namespace {

struct HandleCloser
{
    void operator()(WaveHeaderHandle* h) const { CloseWaveHeader(h); }
};
using Handle = std::unique_ptr<WaveHeaderHandle, HandleCloser>;

std::array<PlotPoint, kPlotPoints> mixedOf(const Bytes& file)
{
    std::array<PlotPoint, kPlotPoints> plot;
    plot.fill({55, 55}); // every point must be written
    Handle h(OpenWaveHeaderFromMemory(file.data(), file.size()));
    ComputeWaveMixedPlot(h.get(), plot.data());
    return plot;
}

std::array<PlotPoint, kMaxPlotChannels * kPlotPoints> multiOf(const Bytes& file)
{
    std::array<PlotPoint, kMaxPlotChannels * kPlotPoints> plot;
    plot.fill({55, 55});
    Handle h(OpenWaveHeaderFromMemory(file.data(), file.size()));
    ComputeWaveMultiPlot(h.get(), plot.data());
    return plot;
}

bool allZero(const PlotPoint* p, int from, int to)
{
    for (int i = from; i < to; ++i) {
        if (p[i].max != 0 || p[i].min != 0)
            return false;
    }
    return true;
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
        QTest::addColumn<int>("points");
        QTest::addColumn<int>("perBucket");
        QTest::addColumn<int>("scan");
        QTest::addColumn<int>("skip");
        QTest::newRow("empty") << 0 << 48000 << 0 << 0 << 0 << 0;
        QTest::newRow("100 frames") << 100 << 48000 << 100 << 1 << 1 << 0;
        QTest::newRow("249 frames") << 249 << 48000 << 249 << 1 << 1 << 0;
        QTest::newRow("short buckets") << 250 * 500 + 249 << 48000 << 250 << 500 << 500 << 0;
        QTest::newRow("exactly 20 ms") << 250 * 960 << 48000 << 250 << 960 << 960 << 0;
        QTest::newRow("long buckets") << 250 * 2000 << 48000 << 250 << 2000 << 960 << 1040;
        QTest::newRow("44.1k") << 250 * 1000 << 44100 << 250 << 1000 << 882 << 118;
    }
    void geometry()
    {
        QFETCH(int, samples);
        QFETCH(int, rate);
        const PlotGeometry g = ComputePlotGeometry(samples, rate);
        QTEST(g.points, "points");
        QTEST(g.framesPerBucket, "perBucket");
        QTEST(g.scan, "scan");
        QTEST(g.skip, "skip");
    }

    void hundredFramesGiveHundredPoints()
    {
        std::vector<int> values;
        for (int i = 0; i < 100; ++i)
            values.push_back(i * 300 - 15000);
        const auto plot = mixedOf(wav16(1, 48000, values));
        for (int i = 0; i < 100; ++i) {
            // High byte (arithmetic >> 8) in percent of 128.
            const int expected = ((i * 300 - 15000) >> 8) * 100 / 128;
            QCOMPARE(int(plot[i].max), expected);
            QCOMPARE(int(plot[i].min), expected);
        }
        QVERIFY(allZero(plot.data(), 100, kPlotPoints));
    }

    void emptyFileGivesZeroPoints()
    {
        const auto plot = mixedOf(wav16(2, 48000, {}));
        QVERIFY(allZero(plot.data(), 0, kPlotPoints));
        const auto multi = multiOf(wav16(2, 48000, {}));
        QVERIFY(allZero(multi.data(), 0, kMaxPlotChannels * kPlotPoints));
    }

    void fullScaleReads99_data()
    {
        QTest::addColumn<QByteArray>("file");
        auto add = [](const char* name, const Bytes& b) {
            QTest::newRow(name) << QByteArray(reinterpret_cast<const char*>(b.data()),
                                              int(b.size()));
        };
        add("fast mono", wav16(1, 48000, {32767, -32768}));
        add("fast stereo", wav16(2, 48000, {32767, 32767, -32768, -32768}));
        add("fast aiff", aiff16(1, 48000, {32767, -32768}));
        add("generic 24-bit", riff({chunk("fmt ", fmtBody(1, 1, 48000, 24)),
                                    chunk("data", pcm24({0x7FFFFF, -0x800000}))}));
    }
    void fullScaleReads99()
    {
        QFETCH(QByteArray, file);
        const Bytes bytes(file.begin(), file.end());
        const auto plot = mixedOf(bytes);
        QCOMPARE(int(plot[0].max), 99); // 127 x 100 / 128, or 32767 x 100 / 32768
        QCOMPARE(int(plot[1].min), -100);
        const auto multi = multiOf(bytes);
        QCOMPARE(int(multi[0].max), 99);
        QCOMPARE(int(multi[1].min), -100);
    }

    void stereoIsAveragedPerFrame()
    {
        // High bytes 64 and -32 average to 16: 16 x 100 / 128 = 12.
        const auto plot = mixedOf(wav16(2, 48000, {64 << 8, -32 * 256}));
        QCOMPARE(int(plot[0].max), 12);
        const auto multi = multiOf(wav16(2, 48000, {64 << 8, -32 * 256}));
        QCOMPARE(int(multi[0].max), 50);
        QCOMPARE(int(multi[kPlotPoints].max), -25);
        QVERIFY(allZero(multi.data(), 2 * kPlotPoints, kMaxPlotChannels * kPlotPoints));
    }

    void latePeakDoesNotShow_data()
    {
        QTest::addColumn<int>("bits");
        QTest::newRow("fast path") << 16;
        QTest::newRow("generic path") << 24;
    }
    void latePeakDoesNotShow()
    {
        QFETCH(int, bits);
        // 2000 frames per bucket at 48 kHz: only frames 0..959 are looked at.
        std::vector<int> values(250 * 2000, 0);
        values[500] = bits == 16 ? 16384 : 0x400000;          // bucket 0, early: shows
        values[2000 + 1500] = bits == 16 ? 16384 : 0x400000;  // bucket 1, late: missed
        values[4000 + 959] = bits == 16 ? -16384 : -0x400000; // bucket 2, last frame looked at
        const Bytes data = bits == 16 ? pcm16(values) : pcm24(values);
        const Bytes file = riff({chunk("fmt ", fmtBody(1, 1, 48000, bits)), chunk("data", data)});
        const auto plot = mixedOf(file);
        QCOMPARE(int(plot[0].max), 50);
        QCOMPARE(int(plot[1].max), 0);
        QCOMPARE(int(plot[2].min), -50);
        const auto multi = multiOf(file);
        QCOMPARE(int(multi[0].max), 50);
        QCOMPARE(int(multi[1].max), 0);
        QCOMPARE(int(multi[2].min), -50);
    }

    void manyChannels()
    {
        // Three 16-bit channels: the mixed plot decodes the first two.
        const auto plot = mixedOf(wav16(3, 48000, {100 << 8, 50 << 8, -128 * 256}));
        QCOMPARE(int(plot[0].max), (100 * 256 + 50 * 256) / 2 * 100 / 32768);
        const auto multi = multiOf(wav16(3, 48000, {100 << 8, 50 << 8, -128 * 256}));
        QCOMPARE(int(multi[2 * kPlotPoints].min), -100);

        std::vector<int> nine(9 * 10, 20000);
        QVERIFY(allZero(mixedOf(wav16(9, 48000, nine)).data(), 0, kPlotPoints));
        QVERIFY(allZero(multiOf(wav16(9, 48000, nine)).data(), 0, kMaxPlotChannels * kPlotPoints));
    }

    void compressedPaths()
    {
        const std::vector<float> a = {0.5f, 0.9f, -1.5f};
        const std::vector<float> b = {-0.25f, 0.2f, -1.5f};
        const float* both[] = {a.data(), b.data()};
        std::array<PlotPoint, kPlotPoints> plot;
        plot.fill({55, 55});
        ComputeMixedPlot(both, 2, 3, 48000, plot.data());
        QCOMPARE(int(plot[0].max), 12);   // (0.5 - 0.25) / 2 x 100, truncated
        QCOMPARE(int(plot[1].max), 55);   // (0.9 + 0.2) / 2
        QCOMPARE(int(plot[2].min), -100); // clipped decoder output stays in range
        QVERIFY(allZero(plot.data(), 3, kPlotPoints));

        std::vector<std::vector<float>> ten(10, std::vector<float>(300, 0.0f));
        std::vector<const float*> pointers;
        for (int ch = 0; ch < 10; ++ch) {
            ten[ch][0] = -(float(ch) + 1.5f) / 100.0f; // truncates to -(ch + 1) percent
            pointers.push_back(ten[ch].data());
        }
        std::array<PlotPoint, kMaxPlotChannels * kPlotPoints> multi;
        multi.fill({55, 55});
        ComputeMultiPlot(pointers.data(), 10, 300, 48000, multi.data());
        for (int ch = 0; ch < kMaxPlotChannels; ++ch) {
            QCOMPARE(int(multi[ch * kPlotPoints].min), -(ch + 1));
            QCOMPARE(int(multi[ch * kPlotPoints].max), -(ch + 1));
            QCOMPARE(int(multi[ch * kPlotPoints + 1].max), 0);
        }
    }
    // Streamed in uneven blocks, the builder gives the whole-file plots byte
    // for byte; a decoder that stops early plots the rest as silence.
    void streamedEqualsWhole_data()
    {
        QTest::addColumn<int>("frames");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("channels");
        QTest::addColumn<int>("decoded");
        QTest::newRow("100 frames") << 100 << 48000 << 2 << 100;
        QTest::newRow("scan equals bucket") << 250 * 960 << 48000 << 1 << 250 * 960;
        QTest::newRow("long, skipping") << 250 * 5000 + 77 << 44100 << 3 << 250 * 5000 + 77;
        QTest::newRow("ten channels") << 40000 << 8000 << 10 << 40000;
        QTest::newRow("short decode") << 250 * 2000 << 22050 << 2 << 250 * 700 + 5;
    }

    void streamedEqualsWhole()
    {
        QFETCH(int, frames);
        QFETCH(int, rate);
        QFETCH(int, channels);
        QFETCH(int, decoded);
        std::mt19937 random(99);
        std::uniform_real_distribution<float> noise(-1.2f, 1.2f);
        std::vector<std::vector<float>> planes(std::size_t(channels),
                                               std::vector<float>(std::size_t(frames), 0.0f));
        std::vector<float> interleaved(std::size_t(frames) * std::size_t(channels), 0.0f);
        for (int f = 0; f < decoded; ++f)
            for (int ch = 0; ch < channels; ++ch)
                interleaved[std::size_t(f) * channels + ch] = planes[ch][f] = noise(random);
        std::vector<const float*> pointers;
        for (const auto& p : planes)
            pointers.push_back(p.data());
        std::array<PlotPoint, kPlotPoints> mixed;
        std::array<PlotPoint, kMaxPlotChannels * kPlotPoints> multi;
        ComputeMixedPlot(pointers.data(), channels, frames, rate, mixed.data());
        ComputeMultiPlot(pointers.data(), channels, frames, rate, multi.data());

        FloatPlotBuilder builder(frames, rate, channels, true);
        for (int at = 0, step = 1; at < decoded; at += step, step = step * 7 % 5003 + 1)
            builder.feed(interleaved.data() + std::size_t(at) * channels, at,
                         std::min(step, decoded - at));
        builder.silenceFrom(decoded);
        std::array<PlotPoint, kPlotPoints> streamedMixed;
        std::array<PlotPoint, kMaxPlotChannels * kPlotPoints> streamedMulti;
        streamedMixed.fill({55, 55});
        streamedMulti.fill({55, 55});
        builder.finish(streamedMixed.data(), streamedMulti.data());
        QCOMPARE(std::memcmp(streamedMixed.data(), mixed.data(), sizeof mixed), 0);
        QCOMPARE(std::memcmp(streamedMulti.data(), multi.data(), sizeof multi), 0);
    }
};

QTEST_GUILESS_MAIN(TestWaveformPlot)
#include "tst_waveformplot.moc"
