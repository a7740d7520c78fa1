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
        QCOMPARE(info.format, std::string("wav"));
        QCOMPARE(info.samplingRate, 44100);
        QCOMPARE(info.channels, 1);
        QCOMPARE(info.samples, 48000);
        QCOMPARE(info.bitDepthOrMinKbps, 16);
        QCOMPARE(info.bitDepthOrMaxKbps, 16);
        QCOMPARE(info.loopCount, 1);
        QCOMPARE(info.loopStart, 1000);
        QCOMPARE(info.loopEnd, 2000);
        QCOMPARE(info.markerCount, 3);
        QCOMPARE(info.isMultiPlotValid, 1);
        // High byte of +-10000 is 39 / -40: 30 and -31 percent.
        QCOMPARE(int(info.plot[0].max), 30);
        QCOMPARE(int(info.plot[0].min), -31);
        QCOMPARE(int(info.multiPlot[0].max), 30);
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
        QCOMPARE(info.format, std::string("aiff"));
        QCOMPARE(info.samples, 500);
        QCOMPARE(info.loudness, -96.0f);
        QCOMPARE(info.isMultiPlotValid, 0);
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
        QCOMPARE(info.isMultiPlotValid, 1);
        QCOMPARE(info.loudness, -96.0f);
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
        QCOMPARE(info.errorText, std::string("E2006110883 : Can not confirm the file identifier."));
        QCOMPARE(info.loudness, -96.0f);
        QCOMPARE(info.isMultiPlotValid, 0);
    }
};

QTEST_GUILESS_MAIN(TestWaveFileAnalysis)
#include "tst_wavefileanalysis.moc"
