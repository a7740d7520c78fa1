#include "CompressedFileAnalysis.h"
#include "WaveBuilder.h"
#include "WaveFileAnalysis.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

using namespace fixtures;

class TestWaveFileAnalysis : public QObject
{
    Q_OBJECT
private slots:
    void fillsTheRecordFromTheHeader()
    {
        QTemporaryDir dir;
        std::vector<int> values;
        for (int i = 0; i < 48000; ++i)
            values.push_back(int(10000.0 * std::sin(i * 0.1)));
        const Bytes file =
            riff({chunk("fmt ", fmtBody(1, 1, 44100, 16)), chunk("cue ", cueBody(3, 3)),
                  chunk("smpl", smplBody(1, {{1000, 1999}})), chunk("data", pcm16(values))});
        const std::string path = dir.filePath(QStringLiteral("loop.wav")).toStdString();
        QVERIFY(writeFile(path, file));

        AudioFileInfo info;
        AnalyzeWaveFile(path.c_str(), info, true, true);
        QCOMPARE(info.isHeaderRead, 1);
        QCOMPARE(info.isValid, 1);
        QCOMPARE(info.format.str(), std::string("wav"));
        QCOMPARE(info.samplingRate, 44100);
        QCOMPARE(info.channels, 1);
        QCOMPARE(info.samples, 48000);
        QCOMPARE(info.bitDepthOrMinKbps, 16);
        QCOMPARE(info.bitDepthOrMaxKbps, 16);
        QCOMPARE(info.loopCount, 1);
        QCOMPARE(info.loopStart, 1000);
        QCOMPARE(info.loopEnd, 2000);
        QCOMPARE(info.markerCount, 3);
        QVERIFY(info.hasMultiPlot());
        // High byte of +-10000 is 39 / -40: 30 and -31 percent.
        QCOMPARE(int(info.plot[0].max), 30);
        QCOMPARE(int(info.plot[0].min), -31);
        QCOMPARE(int(info.multiPlotLane(0)[0].max), 30);
        // Mono sine of amplitude 10000/32768: mean square 10 log10(0.305^2 / 2) = -13.3 dB,
        // -0.691, plus a few tenths of K-weighting gain at 702 Hz.
        QVERIFY2(info.loudness > -14.5f && info.loudness < -12.5f,
                 qPrintable(QString::number(info.loudness)));
        QCOMPARE(info.fileSize, 0); // the registry's to fill
    }

    void optionsLeaveDefaults()
    {
        QTemporaryDir dir;
        const std::string path = dir.filePath(QStringLiteral("a.aif")).toStdString();
        QVERIFY(writeFile(path, aiff16(2, 22050, std::vector<int>(1000, 3000))));
        AudioFileInfo info;
        AnalyzeWaveFile(path.c_str(), info, false, false);
        QCOMPARE(info.format.str(), std::string("aiff"));
        QCOMPARE(info.samples, 500);
        QCOMPARE(info.loudness, -96.0f);
        QVERIFY(!info.hasMultiPlot());
        QCOMPARE(int(info.plot[0].max), 11 * 100 / 128);
    }

    void emptyFileStillGetsMultiPlotMark()
    {
        QTemporaryDir dir;
        const std::string path = dir.filePath(QStringLiteral("e.wav")).toStdString();
        QVERIFY(writeFile(path, wav16(2, 48000, {})));
        AudioFileInfo info;
        AnalyzeWaveFile(path.c_str(), info, true, true);
        QCOMPARE(info.isHeaderRead, 1);
        QCOMPARE(info.samples, 0);
        QVERIFY(info.hasMultiPlot());
        QCOMPARE(info.loudness, -96.0f);
    }

    // The largest absolute sample of all channels, found in the loudness pass.
    void samplePeakIsTheLargestSample_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<bool>("loudness");
        QTest::addColumn<float>("peak");
        std::vector<std::int32_t> v(9600);
        for (std::size_t i = 0; i < v.size(); ++i)
            v[i] = static_cast<std::int32_t>(std::lround(12000.0 * std::sin(i * 0.05)));
        std::vector<std::int32_t> negative = v;
        negative[5000] = -32768; // negative full scale counts as full scale
        QTest::newRow("16-bit mono")
            << "a.wav" << toQByteArray(wavInts(1, 48000, 16, v)) << true << 12000.0f / 32768.0f;
        QTest::newRow("negative full scale")
            << "b.wav" << toQByteArray(wavInts(1, 48000, 16, negative)) << true << 1.0f;
        std::vector<std::int32_t> stereo(v.size() * 2);
        for (std::size_t i = 0; i < v.size(); ++i) {
            stereo[2 * i] = v[i] * 256 / 4;
            stereo[2 * i + 1] = v[i] * 256; // the peak lives in the right channel
        }
        QTest::newRow("24-bit AIFF stereo")
            << "c.aif" << toQByteArray(aiffInts(2, 44100, 24, stereo)) << true
            << 12000.0f / 32768.0f;
        QTest::newRow("32-bit float")
            << "d.wav" << toQByteArray(wavFloat(1, 48000, 32, std::vector<double>(4800, -0.25)))
            << true << 0.25f;
        QTest::newRow("loudness off: unknown")
            << "e.wav" << toQByteArray(wavInts(1, 48000, 16, v)) << false << -1.0f;
    }

    void samplePeakIsTheLargestSample()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, file);
        QFETCH(bool, loudness);
        QFETCH(float, peak);
        QTemporaryDir dir;
        const QString path = dir.filePath(name);
        QVERIFY(writeFile(path, Bytes(file.begin(), file.end())));
        AudioFileInfo info;
        AnalyzeWaveFile(QFile::encodeName(path).constData(), info, false, loudness);
        QCOMPARE(info.samplePeak, peak);
    }

    // A file whose header cannot be read fails with the reader's reason and
    // shows no made-up values.
    void unreadableFileShowsReason()
    {
        QTemporaryDir dir;
        const std::string path = dir.filePath(QStringLiteral("bad.wav")).toStdString();
        QVERIFY(writeFile(path, Bytes(100, 'x')));
        AudioFileInfo info;
        AnalyzeWaveFile(path.c_str(), info, true, true);
        QCOMPARE(info.isHeaderRead, 0);
        QCOMPARE(info.isValid, 0);
        QCOMPARE(info.errorText.str(),
                 std::string("E2006110883 : Can not confirm the file identifier."));
        QCOMPARE(info.loudness, -96.0f);
        QVERIFY(!info.hasMultiPlot());
    }
};

QTEST_GUILESS_MAIN(TestWaveFileAnalysis)
#include "tst_wavefileanalysis.moc"
