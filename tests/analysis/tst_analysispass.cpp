// An analysis pass on several threads gives every file the record one thread
// gives it, to the byte (real recordings when installed, every format the
// fixtures have, odd WAV and AIFF layouts, a damaged file), and it takes the
// rows the table shows before the others.

#include "AnalysisPass.h"
#include "FileMetadata.h"
#include "KrokManager.h"
#include "WaveBuilder.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <cstring>
#include <map>

namespace {

QString Fixture(const char* name)
{
    return QStringLiteral(TESK_FIXTURE_DIR "/") + QLatin1String(name);
}

// What differs between two records, or nothing.
QString Difference(const AudioFileInfo& a, const AudioFileInfo& b)
{
    const auto bits = [](float f) {
        std::uint32_t u = 0;
        std::memcpy(&u, &f, sizeof u);
        return u;
    };
    const std::pair<const char*, bool> same[] = {
        {"isValid", a.isValid == b.isValid},
        {"isHeaderRead", a.isHeaderRead == b.isHeaderRead},
        {"fileSize", a.fileSize == b.fileSize},
        {"modifyTime", a.modifyTime == b.modifyTime},
        {"samplingRate", a.samplingRate == b.samplingRate},
        {"channels", a.channels == b.channels},
        {"samples", a.samples == b.samples},
        {"loops", a.loopCount == b.loopCount && a.loopStart == b.loopStart &&
                      a.loopEnd == b.loopEnd && a.markerCount == b.markerCount},
        {"bits",
         a.bitDepthOrMinKbps == b.bitDepthOrMinKbps && a.bitDepthOrMaxKbps == b.bitDepthOrMaxKbps},
        {"loudness", bits(a.loudness) == bits(b.loudness)},
        {"samplePeak", bits(a.samplePeak) == bits(b.samplePeak)},
        {"format", a.format == b.format},
        {"errorText", a.errorText == b.errorText},
        {"plot", std::memcmp(a.plot.data(), b.plot.data(), sizeof a.plot) == 0},
        {"multiPlot",
         a.multiPlotLanes() == b.multiPlotLanes() &&
             (a.multiPlotLanes() == 0 ||
              std::memcmp(a.multiPlotLane(0), b.multiPlotLane(0),
                          std::size_t(a.multiPlotLanes()) * kPlotPoints * sizeof(PlotPoint)) == 0)},
        {"metadata",
         StoredMetadataBytes(a.metadata.get()) == StoredMetadataBytes(b.metadata.get())},
    };
    for (const auto& [field, equal] : same) {
        if (!equal)
            return QLatin1String(field);
    }
    return {};
}

} // namespace

class TestAnalysisPass final : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;

    QStringList corpus()
    {
        QStringList files;
        QDirIterator real(QStringLiteral("/usr/share/lmms/samples"), {"*.wav", "*.ogg"},
                          QDir::Files, QDirIterator::Subdirectories);
        while (real.hasNext())
            files << real.next();
        for (const char* name :
             {"tones-stereo.wav", "music-stereo.wav", "cbr128.mp3", "mono-cbr128.mp3",
              "music-vbr.mp3", "tones-vbr.mp3", "vbr-96-320.mp3", "tones-stereo.ogg",
              "tones-mono.ogg", "music-stereo.ogg"})
            files << Fixture(name);
        const auto add = [&](const char* name, const fixtures::Bytes& bytes) {
            const QString path = dir.filePath(QLatin1String(name));
            if (fixtures::writeFile(path, bytes))
                files << path;
        };
        const std::vector<std::int32_t> values = fixtures::distinct16(6 * 24000, 7);
        add("six.wav", fixtures::wavInts(6, 48000, 16, values));
        add("ten.wav", fixtures::wavInts(10, 44100, 24, values));
        add("byte.wav",
            fixtures::wavInts(2, 22050, 8, std::vector<std::int32_t>(values.size(), 17)));
        add("float.wav",
            fixtures::wavFloat(2, 96000, 32, fixtures::sine(30000, 2, 96000, 440.0, 0.5)));
        add("looped.aif", fixtures::aiffInts(1, 32000, 16, values, 1000, 9000));
        add("damaged.wav", fixtures::Bytes(300, 'x'));
        return files;
    }

    // Every record of `files` from a pass on `workers` threads.
    static std::vector<KrokManager::Record> pass(const QStringList& files, int workers)
    {
        KrokManager registry;
        registry.SetJournalPath(QString());
        registry.Initialize();
        registry.SetLoudnessEnabled(true);
        registry.SetMultiPlotEnabled(true);
        std::vector<KrokManager::Record> records(std::size_t(files.size()));
        std::atomic<bool> stop{false};
        const std::atomic<std::int64_t> wanted{AnalysisPass::kNoWantedRows};
        {
            AnalysisPass run(registry, files, workers, false, stop, wanted);
            while (!run.IsComplete()) {
                for (AnalysisPass::Finished& done : run.Collect(std::chrono::milliseconds(50)))
                    records[std::size_t(done.index)] = std::move(done.record);
            }
        }
        registry.Finalize();
        return records;
    }

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    void sameRecordsOnEveryThreadCount()
    {
        const QStringList files = corpus();
        // One thread, the file at a time, as before there were workers.
        std::vector<AudioFileInfo> alone;
        for (const QString& file : files) {
            AudioFileInfo info;
            AnalyzeAudioFile(file, info, true, true);
            info.measuredParts = AnalysisPartLoudness | AnalysisPartMultiPlot;
            alone.push_back(std::move(info));
        }
        for (const int workers : {2, 5}) {
            const std::vector<KrokManager::Record> records = pass(files, workers);
            for (int i = 0; i < files.size(); ++i) {
                QVERIFY2(records[std::size_t(i)], qPrintable(files.at(i)));
                const QString why = Difference(*records[std::size_t(i)], alone[std::size_t(i)]);
                QVERIFY2(
                    why.isEmpty(),
                    qPrintable(
                        QStringLiteral("%1 threads, %2: %3").arg(workers).arg(files.at(i), why)));
            }
        }
    }

    void wantedRowsGoFirst()
    {
        QStringList files;
        for (int i = 0; i < 40; ++i) {
            files << dir.filePath(QStringLiteral("row%1.wav").arg(i));
            QVERIFY(fixtures::writeSineWav(files.last(), 8000, 1, 80));
        }
        KrokManager registry;
        registry.SetJournalPath(QString());
        registry.Initialize();
        std::atomic<bool> stop{false};
        const std::atomic<std::int64_t> wanted{AnalysisPass::WantedRows(30, 35)};
        std::vector<int> order;
        {
            AnalysisPass run(registry, files, 1, false, stop, wanted);
            while (!run.IsComplete()) {
                for (const AnalysisPass::Finished& done :
                     run.Collect(std::chrono::milliseconds(20)))
                    order.push_back(done.index);
            }
        }
        registry.Finalize();
        QCOMPARE(int(order.size()), 40);
        QCOMPARE(std::vector<int>(order.begin(), order.begin() + 6),
                 (std::vector<int>{30, 31, 32, 33, 34, 35}));
        QCOMPARE(order.at(6), 0);
    }
};

QTEST_GUILESS_MAIN(TestAnalysisPass)
#include "tst_analysispass.moc"
