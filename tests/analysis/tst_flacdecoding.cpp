// FLAC through libFLAC behind our own header walk: every sample as the WAV the
// file was encoded from holds it, the same analysis record as that WAV, seeks
// that land on the right sample, and damaged files that open honestly or fail
// with a reason.

#include "AnalysisErrors.h"
#include "FileMetadata.h"
#include "FlacEncoding.h"
#include "FlacFileAnalysis.h"
#include "FlacLayout.h"
#include "FlacSoundSource.h"
#include "KrokManager.h"
#include "WaveBuilder.h"
#include "WaveFileAnalysis.h"
#include "WaveSoundSource.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <cstring>

using namespace fixtures;

namespace {

// A sine a little below full scale with some noise, and both extremes of the
// depth once, so that sign and scale show.
std::vector<std::int32_t> Signal(int frames, int channels, int bits, std::uint32_t seed)
{
    const double top = std::ldexp(1.0, bits - 1);
    std::vector<std::int32_t> values(std::size_t(frames) * std::size_t(channels));
    for (int f = 0; f < frames; ++f) {
        for (int ch = 0; ch < channels; ++ch) {
            seed = seed * 1664525u + 1013904223u;
            const double noise = (double(seed >> 8) / double(1u << 24) - 0.5) * 0.02;
            const double v = 0.8 * std::sin(f * (0.01 + 0.003 * ch)) + noise;
            values[std::size_t(f) * std::size_t(channels) + std::size_t(ch)] =
                std::int32_t(std::clamp(std::floor(v * top), -top, top - 1));
        }
    }
    if (frames > 10) {
        values[5 * std::size_t(channels)] = std::int32_t(-top);
        values[6 * std::size_t(channels)] = std::int32_t(top - 1);
    }
    return values;
}

// Every frame of a source as left-justified values, read in odd-sized blocks.
std::vector<std::int32_t> ReadAll(IntegerFrameSource& source)
{
    std::vector<std::int32_t> all;
    std::vector<std::int32_t> block(std::size_t(333) * std::size_t(source.channels()));
    for (;;) {
        const std::int64_t got = source.readLeftJustified(block.data(), 333);
        if (got <= 0)
            break;
        all.insert(all.end(), block.begin(), block.begin() + got * source.channels());
    }
    return all;
}

std::vector<std::int32_t> ReadWav(const Bytes& wav)
{
    WaveSoundSource source;
    return source.openMemory(wav.data(), wav.size()) ? ReadAll(source)
                                                     : std::vector<std::int32_t>();
}

void PutBe(Bytes& b, std::size_t at, std::uint64_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        b[at + std::size_t(i)] = static_cast<unsigned char>(value >> (8 * (bytes - 1 - i)));
}

// `block` put right after STREAMINFO.
Bytes WithBlock(const Bytes& flac, int type, const Bytes& body)
{
    Bytes out(flac.begin(), flac.begin() + 42);
    out.push_back(static_cast<unsigned char>(type));
    out.push_back(static_cast<unsigned char>(body.size() >> 16));
    out.push_back(static_cast<unsigned char>(body.size() >> 8));
    out.push_back(static_cast<unsigned char>(body.size()));
    append(out, body);
    out.insert(out.end(), flac.begin() + 42, flac.end());
    return out;
}

// PCM WAV; more than two channels as WAVE_FORMAT_EXTENSIBLE with a speaker
// for each, as the encoder asks.
Bytes Wav(int channels, int rate, int bits, const std::vector<std::int32_t>& values)
{
    if (channels <= 2)
        return wavInts(channels, rate, bits, values);
    Bytes format = fmtExtensible(channels, rate, bits, bits, 1);
    for (int i = 0; i < 4; ++i)
        format[20 + std::size_t(i)] = static_cast<unsigned char>(((1u << channels) - 1) >> (8 * i));
    return riff({chunk("fmt ", format), chunk("data", ints(bits, values))});
}

bool SameAnalysis(const AudioFileInfo& a, const AudioFileInfo& b)
{
    return a.samplingRate == b.samplingRate && a.channels == b.channels && a.samples == b.samples &&
           a.bitDepthOrMinKbps == b.bitDepthOrMinKbps &&
           a.bitDepthOrMaxKbps == b.bitDepthOrMaxKbps && a.loudness == b.loudness &&
           a.samplePeak == b.samplePeak && a.isMultiPlotValid == b.isMultiPlotValid &&
           std::memcmp(a.plot.data(), b.plot.data(), sizeof a.plot) == 0 &&
           std::memcmp(a.multiPlot.data(), b.multiPlot.data(), sizeof a.multiPlot) == 0;
}

} // namespace

class TestFlacDecoding final : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;
    // 3 s of 16-bit stereo at 44.1 kHz, 4096-frame blocks: the base of the damaged files.
    std::vector<std::int32_t> baseValues;
    std::vector<std::int32_t> baseLeftJustified;
    Bytes baseFlac;
    static constexpr int kBaseFrames = 3 * 44100;

private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        baseValues = Signal(kBaseFrames, 2, 16, 7);
        const Bytes wav = wavInts(2, 44100, 16, baseValues);
        baseLeftJustified = ReadWav(wav);
        baseFlac = flacFromWav(wav, dir.path());
        QVERIFY(baseFlac.size() > 10000);
    }

    void decodesAsTheWav_data()
    {
        QTest::addColumn<int>("channels");
        QTest::addColumn<int>("bits");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("frames");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<bool>("toPipe");
        QTest::newRow("16-bit stereo") << 2 << 16 << 48000 << 100000 << QStringList() << false;
        QTest::newRow("24-bit mono, no seek table")
            << 1 << 24 << 96000 << 150000 << QStringList{QStringLiteral("--no-seektable")} << false;
        QTest::newRow("8-bit stereo") << 2 << 8 << 22050 << 30000 << QStringList() << false;
        QTest::newRow("32-bit stereo") << 2 << 32 << 44100 << 20000 << QStringList() << false;
        QTest::newRow("6 channels, 24-bit") << 6 << 24 << 48000 << 50000 << QStringList() << false;
        // Through a pipe: STREAMINFO states no length, the frames tell it.
        QTest::newRow("192-frame blocks through a pipe")
            << 2 << 16 << 44100 << 5000 << QStringList{QStringLiteral("-b"), QStringLiteral("192")}
            << true;
        QTest::newRow("shorter than a block") << 1 << 16 << 8000 << 10 << QStringList() << false;
        // Buckets longer than 20 ms: the plot reads by seeking.
        QTest::newRow("a minute, seeking for the plot")
            << 2 << 16 << 44100 << 60 * 44100 << QStringList() << false;
    }

    void decodesAsTheWav()
    {
        QFETCH(int, channels);
        QFETCH(int, bits);
        QFETCH(int, rate);
        QFETCH(int, frames);
        QFETCH(QStringList, options);
        QFETCH(bool, toPipe);
        const Bytes wav = Wav(channels, rate, bits, Signal(frames, channels, bits, 3));
        const QString wavPath = dir.filePath(QStringLiteral("same.wav"));
        const QString flacPath = dir.filePath(QStringLiteral("same.flac"));
        QVERIFY(writeFile(wavPath, wav));
        QVERIFY(encodeFlac(wavPath, flacPath, options, toPipe));
        const std::vector<std::int32_t> reference = ReadWav(wav);

        FlacSoundSource flac;
        QVERIFY2(flac.open(QFile::encodeName(flacPath).constData()), flac.errorText().c_str());
        QCOMPARE(flac.samplingRate(), rate);
        QCOMPARE(flac.channels(), channels);
        QCOMPARE(flac.frames(), std::int64_t(frames));
        QCOMPARE(flac.bitsPerSample(), bits);
        QVERIFY(ReadAll(flac) == reference);

        // Seeks forward, back, near and far, each followed by a read.
        const std::int64_t length = frames;
        for (std::int64_t at : {length / 2, length / 3, length - 1, std::int64_t(0), length * 3 / 4,
                                length * 3 / 4 + 50}) {
            at = std::min(at, length);
            QVERIFY(flac.seek(at));
            std::vector<std::int32_t> got(std::size_t(100) * std::size_t(channels));
            const std::int64_t n = flac.readLeftJustified(got.data(), 100);
            QCOMPARE(n, std::min<std::int64_t>(100, frames - at));
            QVERIFY2(std::equal(got.begin(), got.begin() + n * channels,
                                reference.begin() + at * channels),
                     qPrintable(QStringLiteral("after a seek to %1").arg(at)));
        }
        // Float frames are the same values scaled as WAV's.
        QVERIFY(flac.seek(0));
        std::vector<float> floats(std::size_t(channels) * 10);
        QCOMPARE(flac.read(floats.data(), 10), std::int64_t(std::min(frames, 10)));
        QCOMPARE(floats[0], float(reference[0]) / 2147483648.0f);

        // The record: the WAV's, down to the plots, loudness and peak, with
        // loudness (every frame) and without (only the plotted frames).
        for (const bool loudness : {true, false}) {
            AudioFileInfo fromWav;
            AudioFileInfo fromFlac;
            AnalyzeWaveFile(QFile::encodeName(wavPath).constData(), fromWav, true, loudness);
            AnalyzeFlacFile(QFile::encodeName(flacPath).constData(), fromFlac, true, loudness);
            QCOMPARE(fromFlac.isValid, 1);
            QCOMPARE(fromFlac.format, std::string("FLAC"));
            QVERIFY2(SameAnalysis(fromFlac, fromWav),
                     qPrintable(QStringLiteral("loudness %1: %2 vs %3 LUFS, plot[1] %4/%5 vs %6/%7")
                                    .arg(loudness)
                                    .arg(double(fromFlac.loudness))
                                    .arg(double(fromWav.loudness))
                                    .arg(fromFlac.plot[1].max)
                                    .arg(fromFlac.plot[1].min)
                                    .arg(fromWav.plot[1].max)
                                    .arg(fromWav.plot[1].min)));
        }
    }

    void damagedFilesOpenHonestly_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("error");
        // When it opens: its length (-1: shorter than the whole), and how many
        // leading frames decode as encoded, the rest being silence (-1: all
        // but the last block).
        QTest::addColumn<qint64>("frames");
        QTest::addColumn<qint64>("intact");

        const Bytes& good = baseFlac;
        const qint64 all = kBaseFrames;
        const QString notFlac = QLatin1String(kErrorNotFlac);
        const QString header = QLatin1String(kErrorFlacHeaderDamaged);
        const QString frames = QLatin1String(kErrorFlacFramesDamaged);
        const std::size_t start = flacFramesStart(good);

        QTest::newRow("intact") << toQByteArray(good) << QString() << all << all;
        QTest::newRow("empty") << QByteArray() << notFlac << qint64(0) << qint64(0);
        QTest::newRow("WAV bytes")
            << toQByteArray(wavInts(1, 8000, 16, {1, 2, 3})) << notFlac << qint64(0) << qint64(0);
        QTest::newRow("STREAMINFO cut short")
            << toQByteArray(Bytes(good.begin(), good.begin() + 20)) << header << qint64(0)
            << qint64(0);
        Bytes b = good;
        b[4] = 3; // the first block is not STREAMINFO
        QTest::newRow("no STREAMINFO first") << toQByteArray(b) << header << qint64(0) << qint64(0);
        b = good;
        PutBe(b, 18, 0, 2);
        b[20] &= 0x0F; // sampling rate 0
        QTest::newRow("rate 0") << toQByteArray(b) << header << qint64(0) << qint64(0);
        b = good;
        PutBe(b, 43, 0xFFFFFF, 3); // the seek table's length runs past the end
        QTest::newRow("block past the end") << toQByteArray(b) << header << qint64(0) << qint64(0);

        // STREAMINFO's total: 36 bits from byte 21's low nibble on.
        for (const auto& [name, total] :
             {std::pair<const char*, std::uint64_t>{"total lies high", 0xFFFFFFFFFull},
              {"total lies low", 1},
              {"total unknown", 0}}) {
            b = good;
            b[21] = static_cast<unsigned char>((b[21] & 0xF0) | (total >> 32));
            PutBe(b, 22, total & 0xFFFFFFFFu, 4);
            QTest::newRow(name) << toQByteArray(b) << QString() << all << all;
        }

        // Cut inside the last frame: that frame is silence, the rest intact.
        const qint64 lastBlock = all - all % 4096;
        QTest::newRow("cut inside the last frame")
            << toQByteArray(Bytes(good.begin(), good.end() - 40)) << QString() << all << lastBlock;
        // Cut halfway: the frames that are there, as long as they are.
        const std::size_t half = start + (good.size() - start) / 2;
        QTest::newRow("cut halfway")
            << toQByteArray(Bytes(good.begin(), good.begin() + std::ptrdiff_t(half))) << QString()
            << qint64(-1) << qint64(-1);
        // Nothing but metadata.
        QTest::newRow("cut after the metadata")
            << toQByteArray(Bytes(good.begin(), good.begin() + std::ptrdiff_t(start))) << QString()
            << qint64(0) << qint64(0);
        // Noise after the last frame, too much to pass over.
        b = good;
        b.resize(b.size() + 300000, 0x5A);
        QTest::newRow("300 KB of junk at the end")
            << toQByteArray(b) << frames << qint64(0) << qint64(0);
        // An ID3v1 tag after the frames and an ID3v2 tag before "fLaC".
        b = good;
        append(b, text("TAG"));
        b.resize(b.size() + 125, ' ');
        Bytes tagged{'I', 'D', '3', 3, 0, 0, 0, 0, 0, 20};
        tagged.resize(30, 0);
        append(tagged, b);
        QTest::newRow("ID3 tags around") << toQByteArray(tagged) << QString() << all << all;
        // A seek table of a million points (libFLAC would load all 18 MB) and
        // a second STREAMINFO that claims other channels: both hidden.
        Bytes points;
        for (int i = 0; i < 0xFFFFFF / 18; ++i) {
            const unsigned char point[18] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
            points.insert(points.end(), point, point + 18);
        }
        QTest::newRow("huge seek table")
            << toQByteArray(WithBlock(good, 3, points)) << QString() << all << all;
        Bytes otherInfo(good.begin() + 8, good.begin() + 42);
        otherInfo[12] ^= 0x0E;
        QTest::newRow("second STREAMINFO")
            << toQByteArray(WithBlock(good, 0, otherInfo)) << QString() << all << all;
    }

    void damagedFilesOpenHonestly()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, error);
        QFETCH(qint64, frames);
        QFETCH(qint64, intact);
        FlacSoundSource source;
        const bool opened = source.openMemory(file.constData(), std::size_t(file.size()));
        QCOMPARE(QString::fromStdString(source.errorText()), opened ? QString() : error);
        QCOMPARE(opened, error.isEmpty());
        if (!opened)
            return;
        if (frames >= 0)
            QCOMPARE(source.frames(), frames);
        else
            QVERIFY(source.frames() > 0 && source.frames() < kBaseFrames);
        const std::vector<std::int32_t> decoded = ReadAll(source);
        QCOMPARE(std::int64_t(decoded.size()), source.frames() * 2);
        QVERIFY(source.errorText().empty());
        const std::size_t same =
            std::size_t(intact >= 0 ? intact : (source.frames() - 1) / 4096 * 4096) * 2;
        QVERIFY(std::equal(decoded.begin(), decoded.begin() + std::ptrdiff_t(same),
                           baseLeftJustified.begin()));
        QVERIFY(std::all_of(decoded.begin() + std::ptrdiff_t(same), decoded.end(),
                            [](std::int32_t v) { return v == 0; }));
    }

    void damagedFramesStayInPlace()
    {
        // Bytes inside one frame, then a whole frame's header, broken: each
        // becomes silence of its length and every later frame keeps its place.
        const std::size_t start = flacFramesStart(baseFlac);
        Bytes b = baseFlac;
        const std::size_t third = start + (b.size() - start) / 3;
        for (std::size_t i = 0; i < 40; ++i)
            b[third + i] ^= 0xA5;
        std::size_t header = start + (b.size() - start) * 2 / 3;
        while (!(b[header] == 0xFF && b[header + 1] == 0xF8))
            ++header;
        b[header + 1] = 0;
        FlacSoundSource source;
        QVERIFY(source.openMemory(b.data(), b.size()));
        QCOMPARE(source.frames(), std::int64_t(kBaseFrames));
        const std::vector<std::int32_t> decoded = ReadAll(source);
        QCOMPARE(decoded.size(), baseLeftJustified.size());
        std::size_t differing = 0;
        for (std::size_t i = 0; i < decoded.size(); ++i) {
            if (decoded[i] != baseLeftJustified[i]) {
                QCOMPARE(decoded[i], 0);
                ++differing;
            }
        }
        QVERIFY(differing > 0 && differing <= 2 * 2 * 2 * 4096);
        // The tail is intact.
        QVERIFY(std::equal(decoded.end() - 2000, decoded.end(), baseLeftJustified.end() - 2000));

        // The analysis of such a file is valid, and a file whose frames stop
        // long before its last header gets a reason instead.
        AudioFileInfo info;
        AnalyzeFlacSource(source, info, false, true);
        QCOMPARE(info.isValid, 1);
        Bytes hole = baseFlac;
        std::fill(hole.begin() + std::ptrdiff_t(start), hole.end() - 20000, 0);
        FlacSoundSource holed;
        QVERIFY(holed.openMemory(hole.data(), hole.size()));
        AudioFileInfo damaged;
        AnalyzeFlacSource(holed, damaged, true, true);
        QCOMPARE(damaged.isValid, 1); // libFLAC fills the lost frames with silence
        QCOMPARE(damaged.samples, kBaseFrames);
    }

    void tagsAndRowLikeOtherFiles()
    {
        // Vorbis comments behind a 16 MB block that TagLib would have loaded.
        Bytes comment;
        const std::string vendor = "test";
        putLe32(comment, std::uint32_t(vendor.size()));
        append(comment, text(vendor));
        putLe32(comment, 1);
        const std::string title = "TITLE=Door Creak";
        putLe32(comment, std::uint32_t(title.size()));
        append(comment, text(title));
        const Bytes file = WithBlock(WithBlock(baseFlac, 4, comment), 2, Bytes(0xFFFFFF, 0));
        const QString path = dir.filePath(QStringLiteral("Door.FLAC"));
        QVERIFY(writeFile(path, file));
        AudioFileInfo info;
        AnalyzeAudioFile(path, info, false, false, nullptr);
        QCOMPARE(info.format, std::string("FLAC"));
        QCOMPARE(info.samples, kBaseFrames);
        QCOMPARE(info.bitDepthOrMinKbps, 16);
        QVERIFY(info.metadata);
        QCOMPARE(info.metadata->text(MetadataKey::Title), std::string_view("Door Creak"));
    }
};

QTEST_GUILESS_MAIN(TestFlacDecoding)
#include "tst_flacdecoding.moc"
