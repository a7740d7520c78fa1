#include "WaveBuilder.h"
#include "WaveHeaderReader.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace fixtures;

namespace {

QStringList g_messages;

void collect(const char* message)
{
    g_messages << QString::fromUtf8(message);
}

struct HandleCloser
{
    void operator()(WaveHeaderHandle* h) const { CloseWaveHeader(h); }
};
using Handle = std::unique_ptr<WaveHeaderHandle, HandleCloser>;

// The handle reads from the caller's buffer, so a temporary must not be passed.
Handle openBytes(const Bytes& bytes)
{
    return Handle(OpenWaveHeaderFromMemory(bytes.data(), bytes.size()));
}
Handle openBytes(Bytes&&) = delete;

QVector<int> decodeAll(WaveHeaderHandle* h)
{
    std::vector<std::int32_t> values(static_cast<std::size_t>(h->samples) * h->channels + 4);
    const std::int64_t got = DecodeSamples(h, values.data(), std::int64_t(values.size()));
    return QVector<int>(values.begin(), values.begin() + std::max<std::int64_t>(got, 0));
}

// Everything the header gave, on one line: format, container and byte order,
// rate, channels x bits, frames @ data offset, markers, loops, odd chunks.
QString describe(const WaveHeaderHandle* h)
{
    QString s = QStringLiteral("%1:%2%3 %4 %5x%6 %7@%8")
                    .arg(QLatin1String(WaveFormatName(GetWaveFormatIndex(h))))
                    .arg(h->container)
                    .arg(h->endian)
                    .arg(GetWaveSamplingRate(h))
                    .arg(GetWaveChannels(h))
                    .arg(GetWaveBitDepth(h))
                    .arg(GetWaveSamples(h))
                    .arg(h->dataOffset);
    const int markers = GetWaveMarkerCount(h);
    for (int i = 0; i < markers; ++i) {
        if (markers > 3 && i > 0 && i < markers - 1)
            continue; // first and last of long lists
        s += QStringLiteral(" m%1:%2").arg(h->markerIds[i]).arg(h->markerPositions[i]);
        const std::string label = GetMarkerLabel(h, i);
        if (!label.empty())
            s += QLatin1Char('"') + QString::fromStdString(label) + QLatin1Char('"');
    }
    if (markers > 3)
        s += QStringLiteral(" (%1 markers)").arg(markers);
    for (int i = 0; i < GetWaveLoopCount(h); ++i) {
        std::uint32_t start = 0, end = 0;
        GetLoop(h, i, &start, &end);
        s += QStringLiteral(" loop%1-%2").arg(start).arg(end);
    }
    if (h->unalignedChunks)
        s += QStringLiteral(" odd%1").arg(h->unalignedChunks);
    return s;
}

const QString kUnaligned =
    QStringLiteral("W2020112601 : Invalid format. Chunks should be aligned on 2-byte boundaries.");
const QString kHeader = QStringLiteral("E2006110127 : Can not decode file header.");

Bytes plain(const Bytes& fmt, const Bytes& data)
{
    return riff({chunk("fmt ", fmt), chunk("data", data)});
}

// 16-bit mono at 48 kHz with `before` between its 'fmt ' and 'data' and `after` behind.
Bytes mono(std::vector<Bytes> before, const std::vector<int>& samples,
           const std::vector<Bytes>& after = {})
{
    before.insert(before.begin(), chunk("fmt ", fmtBody(1, 1, 48000, 16)));
    before.push_back(chunk("data", pcm16(samples)));
    before.insert(before.end(), after.begin(), after.end());
    return riff(before);
}

// CAF: 'desc' (48 kHz, `codec`, flags 1 float / 2 little-endian) and 'data'
// (edit count, samples) of stated size `dataSize`, by default the true one.
Bytes caf(int flags, int channels, int bits, const Bytes& samples, std::uint64_t dataSize = 0,
          const char* codec = "lpcm")
{
    Bytes b{'c', 'a', 'f', 'f', 0, 1,  0,    0,    'd',  'e', 's', 'c', 0, 0,
            0,   0,   0,   0,   0, 32, 0x40, 0xE7, 0x70, 0,   0,   0,   0, 0}; // 48000.0
    putId(b, codec);
    for (const int v : {flags, channels * ((bits + 7) / 8), 1, channels, bits})
        putBe32(b, std::uint32_t(v));
    putId(b, "data");
    const std::uint64_t size = dataSize ? dataSize : samples.size() + 4;
    for (const std::uint32_t v : {std::uint32_t(size >> 32), std::uint32_t(size), 0u})
        putBe32(b, v);
    append(b, samples);
    return b;
}

} // namespace

class TestWaveHeaderReader : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        g_messages.clear();
        SetWaveHeaderErrorCallback(collect);
    }
    void cleanup() { SetWaveHeaderErrorCallback(nullptr); }

    // Each file is opened from memory and from disk, which must agree.
    void opensAndDecodes_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("header");
        QTest::addColumn<QVector<int>>("decoded"); // empty: not checked
        QTest::addColumn<QStringList>("messages");
        const auto add = [](const char* name, const Bytes& b, const char* header,
                            QVector<int> decoded = {}, QStringList messages = {}) {
            QTest::newRow(name) << toQByteArray(b) << QString::fromUtf8(header) << decoded
                                << messages;
        };
        add("plain stereo", wav16(2, 44100, {1, -1, 256, -256, 32767, -32768}),
            "wav:11 44100 2x16 3@44",
            {65536, -65536, 256 << 16, -(256 << 16), 32767 << 16, INT32_MIN});
        // A 3-byte chunk without its pad byte pushes 'data' to an odd offset.
        add("odd chunk without pad",
            mono({chunk("junk", Bytes{1, 2, 3}, false, false)}, {100, -100}),
            "wav:11 48000 1x16 2@55 odd1", {100 << 16, -(100 << 16)}, {kUnaligned});
        add("odd chunk with pad", mono({chunk("junk", Bytes{1, 2, 3})}, {100, -100}),
            "wav:11 48000 1x16 2@56");
        // The aligned walk loses its step after the odd chunk; only the
        // unaligned walk reaches the 'smpl' behind it.
        add("unpadded chunk after data",
            mono({}, {1, 2, 3, 4},
                 {chunk("note", Bytes{'o', 'd', 'd'}, false, false),
                  chunk("smpl", smplBody(1, {{0, 3}}))}),
            "wav:11 48000 1x16 4@44 loop0-4 odd1", {}, {kUnaligned});
        add("smpl loop ends are stored exclusive",
            mono({chunk("smpl", smplBody(2, {{100, 199}, {5, 9}}))}, std::vector<int>(300, 0)),
            "wav:11 48000 1x16 300@136 loop100-200 loop5-10");
        add("cue points capped at 256", mono({chunk("cue ", cueBody(300, 300))}, {0, 0}),
            "wav:11 48000 1x16 2@7256 m1:0 m256:2550 (256 markers)");
        add("counts of 2^32-1 over few entries",
            mono({chunk("cue ", cueBody(0xFFFFFFFFu, 3)),
                  chunk("smpl", smplBody(0xFFFFFFFFu, {{1, 2}}))},
                 {0, 0}),
            "wav:11 48000 1x16 2@196 m1:0 m2:10 m3:20 loop1-3");
        add("labels attach to their markers",
            mono({chunk("LIST", adtlList({"", "hit", "x"})), chunk("cue ", cueBody(2, 2))}, {0, 0}),
            "wav:11 48000 1x16 2@160 m1:0 m2:10\"hit\"", {},
            {QStringLiteral("W2018051502 : A label is not associated with any marker.")});
        Bytes cut = wav16(2, 48000, std::vector<int>(100, 7));
        cut.resize(cut.size() - 41); // 10 whole frames and one byte gone
        add("data chunk cut short", cut, "wav:11 48000 2x16 39@44", QVector<int>(78, 7 << 16),
            {QStringLiteral("W2006110765 : The size written in 'data' chunk is wrong.")});
        // 8-bit WAV is offset binary: 0x80 is silence.
        add("wav 8", plain(fmtBody(1, 1, 8000, 8), Bytes{0x80, 0xFF, 0x00, 0x81}),
            "wav:11 8000 1x8 4@44", {0, 127 << 24, INT32_MIN, 1 << 24});
        add("wav 24", plain(fmtBody(1, 1, 48000, 24), pcm24({1, -1, -0x800000})),
            "wav:11 48000 1x24 3@44", {256, -256, INT32_MIN});
        add("wav 20 in 3 bytes", plain(fmtBody(1, 1, 48000, 20), pcm24({0x400010})),
            "wav:11 48000 1x20 1@44", {0x40001000});
        add("wav 32", plain(fmtBody(1, 1, 48000, 32), ints(32, {0x12345678})),
            "wav:11 48000 1x32 1@44", {0x12345678});
        add("extensible 24",
            plain(fmtExtensible(2, 96000, 24, 24, 1), pcm24({0x400000, -0x400000})),
            "wav:11 96000 2x24 1@68", {0x40000000, -0x40000000});
        // Floats scale by 2^23, clamp, then take the top 24 bits.
        const std::vector<double> f = {0.5, -1.0, 1.5, -2.0};
        const QVector<int> fi = {0x40000000, INT32_MIN, 8388607 * 256, INT32_MIN};
        add("float", wavFloat(2, 48000, 32, f), "wav:11 48000 2x32 2@44", fi);
        add("aiff 16", aiff16(1, 192000, {1, -2}), "aiff:22 192000 1x16 2@54",
            {1 << 16, -(2 << 16)});
        add("aiff 8 is signed", aiffInts(1, 22050, 8, {127, -128}), "aiff:22 22050 1x8 2@54",
            {127 << 24, INT32_MIN});
        add("aifc sowt", aifc(1, 48000, 16, "sowt", Bytes{0x02, 0x01}), "aiff:22 48000 1x16 1@72",
            {0x0102 << 16});
        add("aiff sample count clamped to the data",
            form("AIFF", {chunk("COMM", commBody(2, 0xFFFFFFFFu, 16, 48000), true),
                          chunk("SSND", ssndBody(Bytes(40, 1)), true)}),
            "aiff:22 48000 2x16 10@54");
        Bytes mark; // "en" takes a pad byte, "beg" fills an even length
        putBe16(mark, 2);
        putBe16(mark, 1);
        putBe32(mark, 100);
        append(mark, {2, 'e', 'n', 0});
        putBe16(mark, 2);
        putBe32(mark, 300);
        append(mark, {3, 'b', 'e', 'g'});
        Bytes inst(8, 0);
        for (const int v : {1, 1, 2, 0, 0, 0}) // sustain loop forward 1..2, release none
            putBe16(inst, v);
        add("aiff markers and sustain loop",
            form("AIFF",
                 {chunk("COMM", commBody(1, 400, 16, 44100), true), chunk("INST", inst, true),
                  chunk("MARK", mark, true), chunk("SSND", ssndBody(Bytes(800, 0)), true)}),
            "aiff:22 44100 1x16 400@112 m1:100\"en\" m2:300\"beg\" loop100-300");
        // The compression type sets the sample size whatever 'COMM' says.
        add("aifc in24", aifc(1, 48000, 16, "in24", ints(24, {-2}, true)),
            "aiff:22 48000 1x24 1@72", {-512});
        add("aifc fl64, NaN is silence",
            aifc(1, 44100, 64, "fl64", floats(64, {0.25, std::nan("")}, true)),
            "aiff:22 44100 1x64 2@72", {0x20000000, 0});
        add("empty aiff without SSND",
            form("AIFF", {chunk("COMM", commBody(2, 0, 16, 48000), true)}),
            "aiff:22 48000 2x16 0@38");
        // CAF is read by its content but never listed: no format name of its own.
        add("caf 16 little-endian", caf(2, 2, 16, pcm16({1, -1, 256, -256})),
            "Unknown:32 48000 2x16 2@68", {65536, -65536, 256 << 16, -(256 << 16)});
        for (const std::uint64_t size : {~0ull, 1ull << 20}) // -1 or past the end: to the end
            add(size == ~0ull ? "caf data size -1" : "caf data size past the end",
                caf(1, 1, 32, floats(32, {0.5, -1.0}, true), size), "Unknown:32 48000 1x32 2@68",
                {0x40000000, INT32_MIN});
    }
    void opensAndDecodes()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, header);
        QFETCH(QVector<int>, decoded);
        QFETCH(QStringList, messages);
        QTemporaryDir dir;
        const QByteArray path = QFile::encodeName(dir.filePath(QStringLiteral("x.wav")));
        const Bytes bytes(file.begin(), file.end());
        QVERIFY(writeFile(path.toStdString(), bytes));
        for (const bool fromFile : {false, true}) {
            g_messages.clear();
            const Handle h = fromFile ? Handle(OpenWaveHeader(path.constData())) : openBytes(bytes);
            QVERIFY(h);
            QCOMPARE(h->fileSize, int(file.size()));
            QCOMPARE(describe(h.get()), header);
            if (!decoded.isEmpty())
                QCOMPARE(decodeAll(h.get()), decoded);
            std::int32_t after = 0;
            QCOMPARE(DecodeSamples(h.get(), &after, 1),
                     std::int64_t(decoded.isEmpty() && h->samples ? 1 : 0));
            QCOMPARE(g_messages, messages);
            for (int i = 0; i < h->markerCount; ++i)
                QCOMPARE(FindMarkerIndex(h.get(), h->markerIds[i]), i);
            QCOMPARE(FindMarkerIndex(h.get(), 0xFFFFFFFFu), -1);
        }
    }

    void rejects_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("message");
        const auto add = [](const char* name, const QByteArray& b, const char* message) {
            QTest::newRow(name) << b << QString::fromUtf8(message);
        };
        const auto fmt =
            [](const char* name, const Bytes& body, const char* message) {
                QTest::newRow(name)
                    << toQByteArray(riff({chunk("fmt ", body), chunk("data", pcm16({0, 0, 0, 0}))}))
                    << QString::fromUtf8(message);
            };
        add("empty", {}, "E2006110803 : File size is too small.");
        add("not audio", "ID3\x04 some mp3 data here",
            "E2006110883 : Can not confirm the file identifier.");
        add("RIFF but AVI", QByteArray("RIFF\x10\0\0\0AVI LIST\x04\0\0\0abcd", 24),
            "E2006110887 : Can not confirm the file format.");
        add("data without format", toQByteArray(riff({chunk("data", pcm16({0, 0}))})),
            "E2006110766 : Unknown block size.");
        fmt("zero channels", fmtBody(1, 0, 48000, 16),
            "E2006110773 : The number of channels is wrong.");
        fmt("zero rate", fmtBody(1, 2, 0, 16), "E2006110771 : Sampling frequency is wrong.");
        fmt("48 bits", fmtBody(1, 2, 48000, 48),
            "E2006110775 : This quantization bits is not available.");
        Bytes badRate = fmtBody(1, 2, 48000, 16);
        badRate[8] ^= 1;
        fmt("byte rate", badRate, "E2006110727 : Wrong byte rate.");
        fmt("unknown GUID", fmtExtensible(2, 48000, 24, 24, 1, false),
            "E2022092602 : Unrecognizable subformat.");
        const char* unknown = "E2006110887 : Can not confirm the file format.";
        add("aifc ulaw", toQByteArray(aifc(1, 48000, 16, "ulaw", Bytes{0, 0})), unknown);
        add("aifc COMM without compression",
            toQByteArray(form("AIFC", {chunk("COMM", commBody(1, 1, 16, 48000), true),
                                       chunk("SSND", ssndBody({0, 0}), true)})),
            unknown);
        add("caf not lpcm", toQByteArray(caf(0, 1, 16, {0, 0}, 0, "aac ")), unknown);
        Bytes fifth = caf(2, 2, 16, {0, 0, 0, 0});
        fifth[39] = 5; // bytes per packet, not 2 x 2
        add("caf packet of 5 bytes", toQByteArray(fifth),
            "E2006110728 : The relations among the block size, the quantization bit and the "
            "number of channels are not correct.");
    }
    void rejects()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, message);
        QVERIFY(!OpenWaveHeaderFromMemory(file.constData(), std::size_t(file.size())));
        QVERIFY2(g_messages.contains(message), qPrintable(g_messages.join(QLatin1Char('\n'))));
        QTemporaryDir dir;
        const std::string path = dir.filePath(QStringLiteral("x.wav")).toStdString();
        QVERIFY(writeFile(path, Bytes(file.begin(), file.end())));
        const QStringList fromMemory = g_messages;
        g_messages.clear();
        QVERIFY(!OpenWaveHeader(path.c_str()));
        QCOMPARE(g_messages, fromMemory);
    }
};

QTEST_GUILESS_MAIN(TestWaveHeaderReader)
#include "tst_waveheaderreader.moc"
