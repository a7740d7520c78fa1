// An analysis pass on several threads gives every file the record one thread gives it,
// to the byte (real recordings when installed, every format of the fixtures, odd WAV and
// AIFF layouts, a damaged file), and takes the rows the table shows first.

#include "AnalysisPass.h"
#include "KrokManager.h"
#include "LibraryRowSample.h"
#include "PreviewPlayer.h"
#include "TestSettings.h"
#include "WaveBuilder.h"
#include "WaveFileAnalysis.h"

#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <cmath>

namespace {

QString Fixture(const char* name)
{
    return QStringLiteral(TESK_FIXTURE_DIR "/") + QLatin1String(name);
}

// Every field of a record, floats to the bit.
QStringList Fields(const AudioFileInfo& info)
{
    LibraryRow row;
    row.info = info;
    QStringList fields = fixtures::LibraryRowFields(row);
    for (const float f : {info.loudness, info.samplePeak})
        fields << QString::fromLatin1(QByteArray(reinterpret_cast<const char*>(&f), 4).toHex());
    return fields;
}

// Stands in for the audio engine: the registry folds the position it reports.
class FakePlayer final : public PreviewPlayer
{
    Q_OBJECT
public:
    std::int64_t playedSamples = 0;

    void Initialize() override {}
    void Finalize() override {}
    void Play(const QString&) override {}
    void PlayFrom(const QString&, std::int32_t) override {}
    void PlayRange(const QString&, std::int64_t, std::int64_t) override {}
    void Stop() override {}
    void SetVolume(float) override {}
    bool IsPlaying() override { return true; }
    bool IsPreparing() override { return false; }
    std::int64_t GetPlayedSamples() override { return playedSamples; }
};

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

    static std::vector<KrokManager::Record>
    pass(const QStringList& files, int workers, std::vector<int>* order = nullptr,
         std::int64_t wantedRows = AnalysisPass::kNoWantedRows)
    {
        KrokManager registry;
        registry.SetJournalPath(QString());
        registry.Initialize();
        registry.SetLoudnessEnabled(true);
        registry.SetMultiPlotEnabled(true);
        std::vector<KrokManager::Record> records(std::size_t(files.size()));
        std::atomic<bool> stop{false};
        const std::atomic<std::int64_t> wanted{wantedRows};
        {
            AnalysisPass run(registry, files, workers, false, stop, wanted);
            while (!run.IsComplete()) {
                for (AnalysisPass::Finished& done : run.Collect(std::chrono::milliseconds(20))) {
                    if (order)
                        order->push_back(done.index);
                    records[std::size_t(done.index)] = std::move(done.record);
                }
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
                QCOMPARE(Fields(*records[std::size_t(i)]), Fields(alone[std::size_t(i)]));
            }
        }
        // Loudness, then per-channel plots, switched on later: only they are measured then.
        KrokManager later;
        later.SetJournalPath(QString());
        later.Initialize();
        for (const int parts : {0, 1, 2}) {
            later.SetLoudnessEnabled(parts > 0);
            later.SetMultiPlotEnabled(parts > 1);
            for (const QString& file : files)
                later.AnalyzeFile(file);
        }
        for (int i = 0; i < files.size(); ++i)
            QCOMPARE(Fields(later.GetFileInfo(files.at(i))), Fields(alone[std::size_t(i)]));
        later.Finalize();
    }

    void wantedRowsGoFirst()
    {
        QStringList files;
        for (int i = 0; i < 40; ++i) {
            files << dir.filePath(QStringLiteral("row%1.wav").arg(i));
            QVERIFY(fixtures::writeSineWav(files.last(), 8000, 1, 80));
        }
        std::vector<int> order;
        pass(files, 1, &order, AnalysisPass::WantedRows(30, 35));
        QCOMPARE(int(order.size()), 40);
        QCOMPARE(std::vector<int>(order.begin(), order.begin() + 6),
                 (std::vector<int>{30, 31, 32, 33, 34, 35}));
        QCOMPARE(order.at(6), 0);
    }

    // The largest absolute sample of all channels, found in the loudness pass; an empty file
    // still says its per-channel plot was made.
    void samplePeakIsTheLargestSample()
    {
        std::vector<std::int32_t> v(9600);
        for (std::size_t i = 0; i < v.size(); ++i)
            v[i] = static_cast<std::int32_t>(std::lround(12000.0 * std::sin(double(i) * 0.05)));
        std::vector<std::int32_t> negative = v;
        negative[5000] = -32768; // negative full scale counts as full scale
        const float sine = 12000.0f / 32768.0f;
        for (const auto& [name, bytes, loudness, peak] :
             {std::tuple<const char*, fixtures::Bytes, bool, float>{
                  "a.wav", fixtures::wavInts(1, 48000, 16, v), true, sine},
              {"b.wav", fixtures::wavInts(1, 48000, 16, negative), true, 1.0f},
              {"d.wav", fixtures::wavFloat(1, 48000, 32, std::vector<double>(4800, -0.25)), true,
               0.25f},
              {"e.wav", fixtures::wavInts(1, 48000, 16, v), false, -1.0f},
              {"f.wav", fixtures::wav16(2, 48000, {}), true, -1.0f}}) {
            const QString path = dir.filePath(QLatin1String(name));
            QVERIFY(fixtures::writeFile(path, bytes));
            AudioFileInfo info;
            AnalyzeWaveFile(QFile::encodeName(path).constData(), info, true, loudness);
            QCOMPARE(info.samplePeak, peak);
            QVERIFY(info.hasMultiPlot());
        }
    }

    // The position shown folds back into the loop the engine repeats.
    void loopFolding()
    {
        const QString looped = dir.filePath(QStringLiteral("looped.wav"));
        const QString plain = Fixture("cbr128.mp3");
        // Loop over samples 1000..1999: start 1000, end 2000 one past the last.
        QVERIFY(fixtures::writeFile(
            looped,
            fixtures::riff({fixtures::chunk("fmt ", fixtures::fmtBody(1, 1, 48000, 16)),
                            fixtures::chunk("data", fixtures::Bytes(96000, 0)),
                            fixtures::chunk("smpl", fixtures::smplBody(1, {{1000, 1999}}))})));
        auto* player = new FakePlayer;
        KrokManager registry(player);
        registry.Initialize();
        registry.AnalyzeFile(looped);
        registry.AnalyzeFile(plain);
        const AudioFileInfo info = registry.GetFileInfo(looped);
        QCOMPARE(
            QStringLiteral("%1 %2-%3").arg(info.loopCount).arg(info.loopStart).arg(info.loopEnd),
            QStringLiteral("1 1000-2000"));
        for (const auto& [played, shown] : {std::pair<int, int>{500, 500},
                                            {1999, 1999},
                                            {2000, 2000},
                                            {2001, 1001},
                                            {2500, 1500},
                                            {1000 + 7 * 1000 + 250, 1250}}) {
            player->playedSamples = played;
            registry.PlayFile(looped);
            QCOMPARE(registry.GetPlaybackPosition(), std::int64_t(shown));
            // A file without loops, and an unknown file, are not folded.
            registry.PlayFile(plain);
            QCOMPARE(registry.GetPlaybackPosition(), std::int64_t(played));
            registry.PlayFile(dir.filePath(QStringLiteral("unknown.wav")));
            QCOMPARE(registry.GetPlaybackPosition(), std::int64_t(played));
            // A region plays straight through the loop: its position runs on.
            registry.PlayFileRange(looped, 100, 40000);
            QCOMPARE(registry.GetPlaybackPosition(), std::int64_t(played));
        }
        registry.Finalize();
    }
};

QTEST_GUILESS_MAIN(TestAnalysisPass)
#include "tst_analysispass.moc"
