// What the detail view draws and hands over: the whole-file waveform and the
// WAV written for a region, checked against the source files' own frames.

#include "FlacEncoding.h"
#include "FrameSource.h"
#include "PcmDecoding.h"
#include "RegionExport.h"
#include "RegionFolder.h"
#include "WaveBuilder.h"
#include "WaveByteSource.h"
#include "WaveHeaderReader.h"
#include "WaveOverview.h"

#include <QFile>
#include <QLockFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <memory>
#include <vector>

using namespace fixtures;

namespace {

// Every frame of a file as floats, through the same reader the preview uses.
std::vector<float> framesOf(const QString& path, AudioEngine::StreamFormat& format)
{
    const auto source = OpenFrameSource(path);
    if (!source || !source->Open(format) || format.frameCount < 0)
        return {};
    std::vector<float> all(static_cast<std::size_t>(format.frameCount * format.channels));
    std::int64_t at = 0;
    while (at < format.frameCount) {
        const long n = source->Read(all.data() + at * format.channels,
                                    static_cast<long>(format.frameCount - at));
        if (n <= 0)
            break;
        at += n;
    }
    return all;
}

// The body of the first top-level chunk `id` of a RIFF file; empty when absent.
QByteArray chunkOf(const QString& path, const char* id)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    const QByteArray all = f.readAll();
    for (int at = 12; at + 8 <= all.size();) {
        const auto* p = reinterpret_cast<const unsigned char*>(all.constData() + at);
        const int size = int(p[4] | p[5] << 8 | p[6] << 16 | p[7] << 24);
        if (std::memcmp(p, id, 4) == 0)
            return all.mid(at + 8, size);
        at += 8 + size + (size & 1);
    }
    return {};
}

std::vector<std::int32_t> ramp(std::size_t count, int bits)
{
    const std::int64_t full = std::int64_t(1) << (bits - 1);
    std::vector<std::int32_t> v(count);
    for (std::size_t i = 0; i < count; ++i)
        v[i] = static_cast<std::int32_t>((static_cast<std::int64_t>(i) * 7919 % (2 * full - 1)) -
                                         (full - 1));
    return v;
}

} // namespace

class TestDetailData : public QObject
{
    Q_OBJECT

    QTemporaryDir dir_;

    QString path(const QString& name) const { return dir_.filePath(name); }

private slots:
    // Each stretch keeps its lowest and highest sample, per channel and for the
    // mix (the mean of the channels, so opposite channels cancel there).
    void overviewKeepsEachStretchsExtremes()
    {
        const int frames = 100000;
        std::vector<double> v(frames * 2, 0.0);
        v[2 * 12345] = 0.8;
        v[2 * 12345 + 1] = -0.8;
        v[2 * 67890] = -0.6;
        v[2 * 67890 + 1] = 0.2;
        QVERIFY(writeFile(path(QStringLiteral("spikes.wav")), wavFloat(2, 44100, 32, v)));
        const auto source = OpenFrameSource(path(QStringLiteral("spikes.wav")));
        const std::atomic<bool> go{false};
        WaveOverview o;
        QVERIFY(BuildWaveOverview(*source, 1000, go, o));
        QCOMPARE(o.frames, std::int64_t(frames));
        QCOMPARE(o.rate, 44100);
        QCOMPARE(o.buckets, 1000);
        for (int b = 0; b < 1000; ++b) {
            const bool first = b == 123; // 12345 * 1000 / 100000
            const bool second = b == 678;
            QCOMPARE(o.High(0, b), first ? 0.8f : 0.0f);
            QCOMPARE(o.Low(0, b), second ? -0.6f : 0.0f);
            QCOMPARE(o.Low(1, b), first ? -0.8f : 0.0f);
            QCOMPARE(o.High(1, b), second ? 0.2f : 0.0f);
            QCOMPARE(o.Low(-1, b), second ? -0.2f : 0.0f);
            QCOMPARE(o.High(-1, b), 0.0f);
        }
    }

    void overviewOfAShortFileHasABucketPerFrame()
    {
        const std::vector<double> v = {0.5, -0.25, 0.125};
        QVERIFY(writeFile(path(QStringLiteral("three.wav")), wavFloat(1, 48000, 32, v)));
        const auto source = OpenFrameSource(path(QStringLiteral("three.wav")));
        const std::atomic<bool> go{false};
        WaveOverview o;
        QVERIFY(BuildWaveOverview(*source, kOverviewBuckets, go, o));
        QCOMPARE(o.buckets, 3);
        for (int b = 0; b < 3; ++b) {
            QCOMPARE(o.Low(0, b), static_cast<float>(v[std::size_t(b)]));
            QCOMPARE(o.High(-1, b), static_cast<float>(v[std::size_t(b)]));
        }
        const auto again = OpenFrameSource(path(QStringLiteral("three.wav")));
        const std::atomic<bool> stop{true};
        QVERIFY(!BuildWaveOverview(*again, 100, stop, o));
    }

    // The region's WAV holds exactly the region's frames, in the source's rate,
    // channels, bit depth and sample format, with its broadcast and INFO data.
    void regionKeepsTheSourceFormat_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("bits");
        QTest::addColumn<qint64>("start");
        QTest::addColumn<qint64>("end");
        QTest::addColumn<qint64>("frames"); // what the region file holds
        const auto values16 = ramp(20000 * 2, 16);
        const Bytes bext = bextBody("Door slam, take 3", 123456789);
        const Bytes info = listInfoBody({{"INAM", "Door slam"}, {"ICMT", "close mic"}});
        QTest::newRow("WAV 16-bit with bext and INFO")
            << "slam.wav"
            << toQByteArray(riff({chunk("fmt ", fmtBody(1, 2, 48000, 16)), chunk("bext", bext),
                                  chunk("LIST", info), chunk("data", ints(16, values16)),
                                  chunk("smpl", smplBody(1, {{100, 199}}))}))
            << 16 << qint64(1000) << qint64(5000) << qint64(4000);
        const auto values24 = ramp(3000 * 6, 24);
        QTest::newRow("WAV 24-bit extensible 5.1")
            << "surround.wav"
            << toQByteArray(riff({chunk("fmt ", fmtExtensible(6, 96000, 24, 24, 1)),
                                  chunk("data", ints(24, values24))}))
            << 24 << qint64(17) << qint64(2017) << qint64(2000);
        QTest::newRow("AIFF 24-bit big-endian")
            << "take.aiff" << toQByteArray(aiffInts(2, 44100, 24, ramp(5000 * 2, 24))) << 24
            << qint64(333) << qint64(4444) << qint64(4111);
        QTest::newRow("AIFF 8-bit signed")
            << "tick.aif" << toQByteArray(aiffInts(1, 22050, 8, ramp(900, 8))) << 8 << qint64(0)
            << qint64(900) << qint64(900);
        std::vector<double> floats(4000);
        for (std::size_t i = 0; i < floats.size(); ++i)
            floats[i] = std::sin(double(i) * 0.01) * 1.2; // over full scale, as floats may be
        QTest::newRow("AIFC 32-bit float big-endian")
            << "air.aif"
            << toQByteArray(aifc(2, 48000, 32, "fl32", fixtures::floats(32, floats, true))) << 32
            << qint64(10) << qint64(1900) << qint64(1890);
        QTest::newRow("WAV 64-bit float")
            << "fine.wav" << toQByteArray(wavFloat(1, 48000, 64, floats)) << 64 << qint64(5)
            << qint64(3000) << qint64(2995);
        QTest::newRow("region past the end is cut to the file")
            << "short.wav" << toQByteArray(wavInts(2, 48000, 16, ramp(1000 * 2, 16))) << 16
            << qint64(600) << qint64(5000) << qint64(400);
    }

    void regionKeepsTheSourceFormat()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, file);
        QFETCH(int, bits);
        QFETCH(qint64, start);
        QFETCH(qint64, end);
        QFETCH(qint64, frames);
        const QString source = path(name);
        QVERIFY(writeFile(source, Bytes(file.begin(), file.end())));
        const QString target = path(QStringLiteral("region-") + name + QStringLiteral(".wav"));
        QCOMPARE(ExportRegion(source, start, end, target), QString());

        std::unique_ptr<WaveHeaderHandle, void (*)(WaveHeaderHandle*)> out(
            OpenWaveHeader(QFile::encodeName(target).constData()), CloseWaveHeader);
        std::unique_ptr<WaveHeaderHandle, void (*)(WaveHeaderHandle*)> in(
            OpenWaveHeader(QFile::encodeName(source).constData()), CloseWaveHeader);
        QVERIFY(out && in);
        QCOMPARE(GetWaveFormatIndex(out.get()), 1);
        QCOMPARE(GetWaveBitDepth(out.get()), bits);
        QCOMPARE(out->coding, in->coding);
        QCOMPARE(std::int64_t(GetWaveSamples(out.get())), std::int64_t(frames));
        QCOMPARE(GetWaveLoopCount(out.get()), 0);

        AudioEngine::StreamFormat a;
        AudioEngine::StreamFormat b;
        const auto whole = framesOf(source, a);
        const auto region = framesOf(target, b);
        QCOMPARE(b.rate * 10 + b.channels, a.rate * 10 + a.channels);
        QCOMPARE(region.size(), static_cast<std::size_t>(frames * a.channels));
        for (std::size_t i = 0; i < region.size(); ++i)
            QCOMPARE(region[i], whole[static_cast<std::size_t>(start * a.channels) + i]);

        if (name == QLatin1String("slam.wav")) {
            const QByteArray bext = chunkOf(target, "bext");
            QCOMPARE(bext.size(), 602);
            QVERIFY(bext.startsWith("Door slam, take 3"));
            std::uint64_t t = 0;
            for (int i = 7; i >= 0; --i)
                t = t << 8 | static_cast<unsigned char>(bext[338 + i]);
            QCOMPARE(t, std::uint64_t(123456789 + start)); // the region's first sample
            QCOMPARE(chunkOf(target, "LIST"), chunkOf(source, "LIST"));
        }
        if (name == QLatin1String("surround.wav")) // the channel layout travels along
            QCOMPARE(chunkOf(target, "fmt "), chunkOf(source, "fmt "));
    }

    // A decoded source becomes 24-bit PCM of the decoded frames; a FLAC
    // file reads as the WAV it was made from.
    void decodedRegionIs24BitPcm_data()
    {
        QTest::addColumn<QString>("source");
        QTest::newRow("MP3") << QStringLiteral(TESK_FIXTURE_DIR "/cbr128.mp3");
        QTest::newRow("FLAC") << path(QStringLiteral("same.flac"));
    }

    void decodedRegionIs24BitPcm()
    {
        QFETCH(QString, source);
        AudioEngine::StreamFormat a;
        AudioEngine::StreamFormat b;
        if (source.endsWith(QLatin1String(".flac"))) {
            const QString wav = path(QStringLiteral("flac-source.wav"));
            QVERIFY(writeFile(wav, wavInts(2, 44100, 24, ramp(2 * 30000, 24))));
            QVERIFY(encodeFlac(wav, source));
            QCOMPARE(framesOf(source, b), framesOf(wav, a));
        }
        const auto decoded = framesOf(source, a);
        const QString target = path(QStringLiteral("decoded-region.wav"));
        QCOMPARE(ExportRegion(source, 4410, 8820, target), QString());
        const auto region = framesOf(target, b);
        QCOMPARE(b.rate, 44100);
        QCOMPARE(region.size(), std::size_t(4410 * 2));
        for (std::size_t i = 0; i < region.size(); ++i)
            QVERIFY(std::fabs(region[i] - decoded[4410 * 2 + i]) <= 1.0f / 8388607.0f);
        std::unique_ptr<WaveHeaderHandle, void (*)(WaveHeaderHandle*)> out(
            OpenWaveHeader(QFile::encodeName(target).constData()), CloseWaveHeader);
        QVERIFY(out);
        QCOMPARE(GetWaveBitDepth(out.get()), 24);
    }

    void unreadableSourceSaysSo()
    {
        QVERIFY(writeFile(path(QStringLiteral("junk.wav")), Bytes(200, 'x')));
        const QString target = path(QStringLiteral("junk-region.wav"));
        QVERIFY(!ExportRegion(path(QStringLiteral("junk.wav")), 0, 10, target).isEmpty());
        QVERIFY(!QFile::exists(target));
    }

    // Region files go at the end of the run that made them, or at the next
    // start after a crash; a running run's files and anything not a region
    // file stay.
    void regionFilesAreCleanedUp()
    {
        const QDir base(path(QStringLiteral("regions")));
        const auto touch = [](const QString& file) { return writeFile(file, Bytes(8, 'x')); };
        // A run that died: its lock names a process that has ended.
        QProcess ended;
        ended.start(QStringLiteral("true"), QStringList());
        QVERIFY(ended.waitForStarted());
        const qint64 deadPid = ended.processId();
        QVERIFY(ended.waitForFinished());
        const QString stale = base.filePath(QStringLiteral("run-%1-0").arg(deadPid));
        QVERIFY(QDir().mkpath(stale));
        QFile lock(stale + QStringLiteral(".lock"));
        QVERIFY(lock.open(QIODevice::WriteOnly));
        lock.write(QByteArray::number(deadPid) + '\n' +
                   QCoreApplication::applicationName().toUtf8() + '\n' +
                   QSysInfo::machineHostName().toUtf8() + '\n');
        lock.close();
        for (const char* name : {"hit_0-100ms.wav", "hit_0-100ms.wav.AbC123", "notes.txt"})
            QVERIFY(touch(QDir(stale).filePath(QLatin1String(name))));
        QVERIFY(touch(base.filePath(QStringLiteral("old_5-10ms.wav"))));
        QVERIFY(touch(base.filePath(QStringLiteral("keep.wav"))));

        auto running = std::make_unique<RegionFolder>(base.path());
        const QString live = running->Path() + QStringLiteral("/live_1-2ms.wav");
        QVERIFY(QDir().mkpath(running->Path()) && touch(live));
        const auto exists = [&](const QString& relative) {
            return QFile::exists(base.filePath(relative));
        };
        const QString run = QFileInfo(stale).fileName() + '/';
        QVERIFY(!exists(run + "hit_0-100ms.wav") && !exists(run + "hit_0-100ms.wav.AbC123"));
        QVERIFY(exists(run + "notes.txt") && !exists("old_5-10ms.wav") && exists("keep.wav"));
        {
            RegionFolder mine(base.path());
            QVERIFY(QDir().mkpath(mine.Path()) &&
                    touch(mine.Path() + QStringLiteral("/x_1-2ms.wav")));
        }
        QVERIFY(QFile::exists(live));
        const QString runningPath = running->Path();
        running.reset();
        QVERIFY(!QDir(runningPath).exists());
        QCOMPARE(base.entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList({QStringLiteral("keep.wav"), QFileInfo(stale).fileName()}));
    }
};

QTEST_GUILESS_MAIN(TestDetailData)
#include "tst_detaildata.moc"
