// FLAC through libFLAC behind our own header walk: the samples, length and record of the
// WAV the file was made from, seeks that land on their sample, and damaged files that
// open with their true length or fail with a reason.

#include "AnalysisErrors.h"
#include "FileMetadata.h"
#include "FlacEncoding.h"
#include "FlacFileAnalysis.h"
#include "FlacSoundSource.h"
#include "KrokManager.h"
#include "LibraryRowSample.h"
#include "WaveFileAnalysis.h"
#include "WaveSoundSource.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

using namespace fixtures;

namespace {

// A sine below full scale with a little noise, and both extremes of the depth.
std::vector<std::int32_t> Signal(std::size_t values, int bits)
{
    const double top = std::ldexp(1.0, bits - 1);
    std::vector<std::int32_t> v(values);
    for (std::size_t i = 0; i < v.size(); ++i) {
        const double noise = double(std::uint32_t(i * 2654435761u) >> 22) / 1024.0 - 0.5;
        v[i] = std::int32_t(std::floor((0.8 * std::sin(double(i) * 0.0071) + 0.02 * noise) * top));
    }
    if (v.size() > 20) {
        v[5] = std::int32_t(-top);
        v[6] = std::int32_t(top - 1);
    }
    return v;
}

std::vector<std::int32_t> ReadAll(IntegerFrameSource& source)
{
    std::vector<std::int32_t> all;
    std::vector<std::int32_t> block(std::size_t(333) * std::size_t(source.channels()));
    for (std::int64_t got; (got = source.readLeftJustified(block.data(), 333)) > 0;)
        all.insert(all.end(), block.begin(), block.begin() + got * source.channels());
    return all;
}

// `body` as a metadata block of `type` right after STREAMINFO.
Bytes WithBlock(const Bytes& flac, int type, const Bytes& body)
{
    Bytes out(flac.begin(), flac.begin() + 42);
    const auto n = std::uint32_t(body.size());
    append(out, {std::uint8_t(type), std::uint8_t(n >> 16), std::uint8_t(n >> 8), std::uint8_t(n)});
    append(out, body);
    out.insert(out.end(), flac.begin() + 42, flac.end());
    return out;
}

Bytes Comments(const std::vector<std::string>& comments)
{
    Bytes b(4, 0); // no vendor string
    putLe32(b, std::uint32_t(comments.size()));
    for (const std::string& c : comments) {
        putLe32(b, std::uint32_t(c.size()));
        append(b, text(c));
    }
    return b;
}

} // namespace

class TestFlacDecoding final : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;
    // 3 s of 16-bit stereo at 44.1 kHz in 4096-frame blocks: the base of the damaged files.
    static constexpr int kFrames = 3 * 44100;
    std::vector<std::int32_t> baseValues;
    Bytes base;

    QString path(const char* name) const { return dir.filePath(QLatin1String(name)); }

private slots:
    void initTestCase()
    {
        baseValues = Signal(2 * kFrames, 16);
        base = flacFromWav(wavInts(2, 44100, 16, baseValues), dir.path());
        for (auto& v : baseValues)
            v *= 65536; // left-justified, as the decoder hands them out
        QVERIFY(base.size() > 10000);
    }

    void decodesAsTheWav()
    {
        const struct
        {
            int channels, bits, rate, frames;
            QStringList options;
            bool toPipe; // STREAMINFO then states no length
        } cases[] = {
            {2, 16, 48000, 100000, {}, false},
            {1, 24, 96000, 150000, {QStringLiteral("--no-seektable")}, false},
            {2, 8, 22050, 30000, {}, false},
            {6, 24, 48000, 50000, {}, false},
            {2, 16, 44100, 5000, {QStringLiteral("-b"), QStringLiteral("192")}, true},
            {1, 16, 8000, 10, {}, false},          // shorter than a block
            {2, 16, 44100, 60 * 44100, {}, false}, // plot buckets over 20 ms: read by seeking
        };
        for (const auto& c : cases) {
            const std::vector<std::int32_t> values =
                Signal(std::size_t(c.frames) * std::size_t(c.channels), c.bits);
            Bytes format = fmtExtensible(c.channels, c.rate, c.bits, c.bits, 1);
            format[20] = std::uint8_t((1u << c.channels) - 1); // a speaker each, as flac asks
            const Bytes wav =
                c.channels > 2 ? riff({chunk("fmt ", format), chunk("data", ints(c.bits, values))})
                               : wavInts(c.channels, c.rate, c.bits, values);
            QVERIFY(writeFile(path("same.wav"), wav));
            QVERIFY(encodeFlac(path("same.wav"), path("same.flac"), c.options, c.toPipe));
            WaveSoundSource source;
            QVERIFY(source.openMemory(wav.data(), wav.size()));
            const std::vector<std::int32_t> reference = ReadAll(source);

            FlacSoundSource flac;
            QVERIFY(flac.open(QFile::encodeName(path("same.flac")).constData()));
            QCOMPARE(QStringLiteral("%1x%2 %3")
                         .arg(flac.samplingRate())
                         .arg(flac.channels())
                         .arg(flac.frames()),
                     QStringLiteral("%1x%2 %3").arg(c.rate).arg(c.channels).arg(c.frames));
            QVERIFY(ReadAll(flac) == reference);
            for (const int want : {c.frames / 2, c.frames / 2 + 3000, c.frames - 1, 0, c.frames}) {
                const int at = std::min(want, c.frames);
                std::vector<std::int32_t> got(std::size_t(100) * std::size_t(c.channels));
                const std::int64_t n = flac.seek(at) ? flac.readLeftJustified(got.data(), 100) : -1;
                QCOMPARE(n, std::min<std::int64_t>(100, c.frames - at));
                QVERIFY(std::equal(got.begin(), got.begin() + n * c.channels,
                                   reference.begin() + at * c.channels));
            }
            // The record is the WAV's, down to plots, loudness and peak, reading
            // every frame (loudness) or only the plotted ones.
            for (const bool loudness : {true, false}) {
                AudioFileInfo a;
                AudioFileInfo b;
                AnalyzeWaveFile(QFile::encodeName(path("same.wav")).constData(), a, true, loudness);
                AnalyzeFlacFile(QFile::encodeName(path("same.flac")).constData(), b, true,
                                loudness);
                a.format = "FLAC";
                QCOMPARE(LibraryRowFields({{}, {}, b}), LibraryRowFields({{}, {}, a}));
            }
        }
    }

    void damagedFilesOpenHonestly_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("error");
        QTest::addColumn<qint64>("frames"); // when it opens; -1: fewer than the whole
        // Each frame decodes as encoded or, at most this many, as silence in place.
        QTest::addColumn<qint64>("silent");
        const qint64 all = kFrames;
        const auto start = std::ptrdiff_t(flacFramesStart(base));
        const auto size = std::ptrdiff_t(base.size());
        const auto row = [](const QString& name, const Bytes& b, const char* error, qint64 frames,
                            qint64 silent) {
            QTest::newRow(qPrintable(name))
                << toQByteArray(b) << QString::fromLatin1(error) << frames << silent;
        };
        row("STREAMINFO cut short", Bytes(base.begin(), base.begin() + 20), kErrorFlacHeaderDamaged,
            0, 0);
        row("cut inside the last frame", Bytes(base.begin(), base.end() - 40), "", all, 4096);
        Bytes b = base;
        b.resize(b.size() + 300000, 0x5A);
        row("300 KB of junk at the end", b, kErrorFlacFramesDamaged, 0, 0);
        b = base; // bytes inside one frame, then a later frame's header, broken
        for (std::ptrdiff_t i = 0; i < 40; ++i)
            b[std::size_t(start + (size - start) / 3 + i)] ^= 0xA5;
        auto sync = std::size_t(start + (size - start) * 2 / 3);
        while (!(b[sync] == 0xFF && b[sync + 1] == 0xF8))
            ++sync;
        b[sync + 1] = 0;
        // Each costs at most two blocks while libFLAC finds the next frame.
        row("a frame and a header broken", b, "", all, 4 * 4096);
        b = {'I', 'D', '3', 3, 0, 0, 0, 0, 0, 20};
        b.resize(30, 0);
        append(b, base);
        append(b, text("TAG"));
        b.resize(b.size() + 125, ' ');
        row("ID3v2 before, ID3v1 after", b, "", all, 0);
        // A seek table libFLAC would load whole (16 MB) and a second STREAMINFO
        // claiming other channels: both hidden from the decoder.
        row("huge seek table", WithBlock(base, 3, Bytes(0xFFFFFF / 18 * 18, 0xFF)), "", all, 0);
        Bytes otherInfo(base.begin() + 8, base.begin() + 42);
        otherInfo[12] ^= 0x0E;
        row("second STREAMINFO", WithBlock(base, 0, otherInfo), "", all, 0);
    }

    void damagedFilesOpenHonestly()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, error);
        QFETCH(qint64, frames);
        QFETCH(qint64, silent);
        FlacSoundSource source;
        const bool opened = source.openMemory(file.constData(), std::size_t(file.size()));
        QCOMPARE(QString::fromStdString(source.errorText()), error);
        if (!opened)
            return;
        QVERIFY(frames >= 0 ? source.frames() == frames
                            : source.frames() > 0 && source.frames() < kFrames);
        const std::vector<std::int32_t> decoded = ReadAll(source);
        QCOMPARE(std::int64_t(decoded.size()), source.frames() * 2);
        QVERIFY(source.errorText().empty());
        qint64 silenced = 0;
        for (std::size_t i = 0; i < decoded.size(); i += 2) {
            if (decoded[i] != baseValues[i] || decoded[i + 1] != baseValues[i + 1]) {
                QVERIFY2(decoded[i] == 0 && decoded[i + 1] == 0, qPrintable(QString::number(i)));
                ++silenced;
            }
        }
        QVERIFY2(silenced <= silent, qPrintable(QString::number(silenced)));
    }

    void commentsBehindAHugeBlock()
    {
        // TagLib would have loaded the 16 MB block in front of the comments.
        const Bytes comments =
            Comments({"TITLE=Door Creak", "loopstart=1000", "LOOPLENGTH=5000", "LOOPSTART=7"});
        QVERIFY(writeFile(path("Door.FLAC"),
                          WithBlock(WithBlock(base, 4, comments), 2, Bytes(0xFFFFFF, 0))));
        AudioFileInfo info;
        AnalyzeAudioFile(path("Door.FLAC"), info, false, false, nullptr);
        QCOMPARE(info.format, std::string("FLAC"));
        QCOMPARE(info.samples, kFrames);
        QVERIFY(info.metadata);
        QCOMPARE(info.metadata->text(MetadataKey::Title), std::string_view("Door Creak"));
        // The loop as Ogg files state it, in frames: the first of each key.
        QCOMPARE(info.loopCount, 1);
        QCOMPARE(info.loopStart, 1000);
        QCOMPARE(info.loopEnd, 6000);
    }
};

QTEST_GUILESS_MAIN(TestFlacDecoding)
#include "tst_flacdecoding.moc"
