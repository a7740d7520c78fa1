// The playback core without a sound card: the manager over the engine's
// offline render path (which player a file gets, where a start, a seek or a
// region begins in the file's frames), the gain that matches loudness, the
// detail view's waveform and region files.

#include "AudioEngine.h"
#include "AudioFileInfo.h"
#include "FlacEncoding.h"
#include "FrameSource.h"
#include "LoudnessMatch.h"
#include "LumoManager.h"
#include "RegionExport.h"
#include "RegionFolder.h"
#include "WaveBuilder.h"
#include "WaveHeaderReader.h"
#include "WaveOverview.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

using namespace fixtures;

namespace {

// Every start ramps in over 5 ms; from then on the file's own samples play.
constexpr int kRamp = 48000 / 200;

std::vector<float> render(std::size_t frames)
{
    std::vector<float> out(frames * 2);
    AudioEngine::RenderOffline(out.data(), frames);
    return out;
}

bool silent(const std::vector<float>& v)
{
    return std::all_of(v.begin(), v.end(), [](float x) { return x == 0.0f; });
}

using B = LoudnessMatch::Basis;

struct Case
{
    const char* name;
    bool enabled, analysed;
    float loudness;
    int channels;
    float peak; // -1: unknown
    double target, boost, gainDb;
    B basis;
};

const Case kCases[] = {
    {"off", false, true, -30, 2, 0.1f, -23, 12, 0, B::Off},
    {"loudness not measured", true, true, -96, 2, 0.1f, -23, 12, 0, B::Unknown},
    {"header not read", true, false, -30, 2, 0.1f, -23, 12, 0, B::Unknown},
    {"quiet stereo raised", true, true, -30, 2, 0.1f, -23, 12, 7, B::Matched},
    {"loud stereo lowered, even at full scale", true, true, -14, 2, 1.0f, -23, 12, -9, B::Matched},
    {"boost stops at its limit", true, true, -40, 2, 0.01f, -23, 12, 12, B::BoostLimited},
    // Peak 0.5 is -6.0206 dBFS: at most +5.0206 dB before -1 dBFS.
    {"boost stops below -1 dBFS", true, true, -30, 2, 0.5f, -23, 12, 5.0206, B::PeakLimited},
    {"peak already above -1 dBFS: no boost", true, true, -30, 2, 0.95f, -23, 12, 0, B::PeakLimited},
    {"peak unknown: no boost", true, true, -30, 2, -1.0f, -23, 12, 0, B::PeakUnknown},
    {"peak unknown, lowering is fine", true, true, -20, 2, -1.0f, -23, 12, -3, B::Matched},
    // Mono plays on both speakers: the mono correction adds 3.0103 dB, so
    // -26 LUFS sounds at -22.9897.
    {"mono counts twice", true, true, -26, 1, 0.1f, -23, 12, -0.0103, B::Matched},
    // 5.1 folds at 1 / (1 + 2 x 0.7071) = -7.6555 dB: -30 plays at -37.6555.
    {"5.1 allows for the fold", true, true, -30, 6, 0.05f, -23, 20, 14.6555, B::Matched},
    {"another target", true, true, -20, 2, 0.1f, -16, 12, 4, B::Matched},
};

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

class TestPlaybackCore : public QObject
{
    Q_OBJECT

    QTemporaryDir dir_;
    LumoManager lumo_{nullptr, AudioEngine::OutputMode::Offline};
    const std::vector<std::int32_t> mono_ = fixtures::distinct16(48000 * 2, 3);

    QString path(const QString& name) const
    {
        return name.contains('/') ? name : dir_.filePath(name);
    }
private slots:
    void initTestCase()
    {
        QVERIFY(fixtures::writeFile(path("long.wav"), fixtures::wavInts(1, 48000, 16, mono_)));
        QVERIFY(fixtures::encodeFlac(path("long.wav"), path("long.FLAC")));
        lumo_.Initialize();
    }

    void cleanupTestCase() { lumo_.Finalize(); }

    // Decoded files stream whatever their rate and channels, and a seek (or a
    // region) starts where it was asked, in the file's own frames.
    void decodedFilesStartWhereAsked_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("startMs");
        QTest::addColumn<qint64>("rangeEnd"); // a region when above 0
        QTest::addColumn<qint64>("firstFrame");
        const QString fixtures = QStringLiteral(TESK_FIXTURE_DIR "/");
        QTest::newRow("44.1 kHz stereo MP3 at 500 ms")
            << fixtures + "cbr128.mp3" << 500 << qint64(0) << qint64(22050);
        QTest::newRow("44.1 kHz mono MP3 at 250 ms")
            << fixtures + "mono-cbr128.mp3" << 250 << qint64(0) << qint64(11025);
        QTest::newRow("Ogg at 100 ms")
            << fixtures + "tones-mono.ogg" << 100 << qint64(0) << qint64(4410);
        QTest::newRow("Ogg region")
            << fixtures + "tones-mono.ogg" << 0 << qint64(16000) << qint64(6000);
        QTest::newRow("FLAC at 250 ms") << "long.FLAC" << 250 << qint64(0) << qint64(12000);
        QTest::newRow("FLAC region") << "long.FLAC" << 0 << qint64(16000) << qint64(6000);
    }

    void decodedFilesStartWhereAsked()
    {
        QFETCH(QString, name);
        QFETCH(int, startMs);
        QFETCH(qint64, rangeEnd);
        QFETCH(qint64, firstFrame);
        lumo_.Play(path("long.wav"));
        render(10);
        if (rangeEnd > 0)
            lumo_.PlayRange(path(name), firstFrame, rangeEnd);
        else
            lumo_.PlayFrom(path(name), startMs);
        QVERIFY(lumo_.IsStreaming());
        QVERIFY(!silent(render(4800)) && lumo_.IsPlaying());
        const std::int64_t played = lumo_.GetPlayedSamples();
        QVERIFY2(played > firstFrame + 4000 && played <= firstFrame + 4800,
                 qPrintable(QString::number(played)));
        if (rangeEnd > 0) {
            render(9600);
            QVERIFY(!lumo_.IsPlaying()); // the region's 10000 frames are over
        }
        // Back to a WAVE file: the memory player again.
        lumo_.Play(path("long.wav"));
        QVERIFY(!lumo_.IsStreaming());
        const auto out = render(kRamp + 1);
        QCOMPARE(out[2 * kRamp], mono_[kRamp] / 32768.0f);
        lumo_.Stop();
    }

    // A player whose engine went with another manager plays nothing and never
    // spins waiting for a stop (it did, for ever, at the second sound).
    void playerWithoutEngineAnswersAtOnce()
    {
        LumoManager other{nullptr, AudioEngine::OutputMode::Offline};
        other.Initialize();
        lumo_.Finalize();
        QElapsedTimer clock;
        clock.start();
        other.Play(path("long.wav"));
        other.Play(path("long.wav"));
        QVERIFY(clock.elapsed() < 1000 && !other.IsPlaying());
        lumo_.Initialize();
    }

    // The gain "Match loudness" gives a file, against figures worked out by hand.
    void gainMeetsTheTargetWithinItsLimits_data()
    {
        QTest::addColumn<int>("index");
        for (std::size_t i = 0; i < std::size(kCases); ++i)
            QTest::newRow(kCases[i].name) << int(i);
    }
    void gainMeetsTheTargetWithinItsLimits()
    {
        QFETCH(int, index);
        const Case& c = kCases[index];
        AudioFileInfo info;
        info.isHeaderRead = c.analysed ? 1 : 0;
        info.loudness = c.loudness;
        info.channels = c.channels;
        info.samplePeak = c.peak;
        const LoudnessMatch m = ComputeLoudnessMatch(info, {c.enabled, c.target, c.boost});
        QVERIFY2(std::fabs(m.gainDb - c.gainDb) < 1e-3,
                 qPrintable(QString::number(m.gainDb, 'f', 5)));
        QCOMPARE(m.basis, c.basis);
        // Whatever the rule, the loudest sample stays at or under -1 dBFS once raised.
        if (m.gainDb > 0.0 && c.peak > 0.0f)
            QVERIFY(c.peak * DecibelsToGain(m.gainDb) <= DecibelsToGain(-1.0) + 1e-9);
    }

    // What the detail view draws and hands over: the whole-file waveform and
    // the WAV written for a region, checked against the source files' own frames.
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
        const std::atomic<bool> stop{true};
        QVERIFY(
            !BuildWaveOverview(*OpenFrameSource(path(QStringLiteral("spikes.wav"))), 9, stop, o));
    }

    // The region's WAV holds exactly the region's frames (a decoded source's
    // within a 24-bit step), in the source's rate, channels, bit depth and
    // sample format, with its broadcast and INFO data.
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
        QFile mp3(QStringLiteral(TESK_FIXTURE_DIR "/cbr128.mp3"));
        QVERIFY(mp3.open(QIODevice::ReadOnly)); // a decoded source becomes 24-bit PCM
        QTest::newRow("MP3") << "tone.mp3" << mp3.readAll() << 24 << qint64(4410) << qint64(8820)
                             << qint64(4410);
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
        QVERIFY(out);
        QCOMPARE(GetWaveFormatIndex(out.get()), 1);
        QCOMPARE(GetWaveBitDepth(out.get()), bits);
        QCOMPARE(std::int64_t(GetWaveSamples(out.get())), std::int64_t(frames));
        QCOMPARE(GetWaveLoopCount(out.get()), 0);

        AudioEngine::StreamFormat a;
        AudioEngine::StreamFormat b;
        const auto whole = framesOf(source, a);
        const auto region = framesOf(target, b);
        QCOMPARE(b.rate * 10 + b.channels, a.rate * 10 + a.channels);
        QCOMPARE(region.size(), static_cast<std::size_t>(frames * a.channels));
        for (std::size_t i = 0; i < region.size(); ++i)
            QVERIFY(std::fabs(region[i] - whole[std::size_t(start * a.channels) + i]) <= 0x1p-23f);

        if (name == QLatin1String("slam.wav")) {
            const QByteArray bext = chunkOf(target, "bext");
            QCOMPARE(bext.size(), 602);
            QVERIFY(bext.startsWith("Door slam, take 3"));
            // The time reference moves to the region's first sample.
            QCOMPARE(qFromLittleEndian<quint64>(bext.constData() + 338),
                     quint64(123456789 + start));
            QCOMPARE(chunkOf(target, "LIST"), chunkOf(source, "LIST"));
        }
        if (name == QLatin1String("surround.wav")) // the channel layout travels along
            QCOMPARE(chunkOf(target, "fmt "), chunkOf(source, "fmt "));
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

QTEST_GUILESS_MAIN(TestPlaybackCore)
#include "tst_playbackcore.moc"
