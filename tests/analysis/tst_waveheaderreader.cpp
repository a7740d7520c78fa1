#include "WaveBuilder.h"
#include "WaveHeaderReader.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace fixtures;

namespace {

std::vector<std::string> g_messages;

void collect(const char* message)
{
    g_messages.emplace_back(message);
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

bool heard(const char* message)
{
    return std::find(g_messages.begin(), g_messages.end(), message) != g_messages.end();
}

std::vector<std::int32_t> decodeAll(WaveHeaderHandle* h)
{
    std::vector<std::int32_t> values(static_cast<std::size_t>(h->samples) * h->channels);
    const std::int64_t got = DecodeSamples(h, values.data(), std::int64_t(values.size()));
    values.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    return values;
}

const char* kUnaligned =
    "W2020112601 : Invalid format. Chunks should be aligned on 2-byte boundaries.";

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

    void rejectsTinyAndForeignFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("message");
        QTest::newRow("12 bytes") << QByteArray("RIFF\x04\0\0\0WAVE", 12)
                                  << "E2006110803 : File size is too small.";
        QTest::newRow("empty") << QByteArray() << "E2006110803 : File size is too small.";
        QTest::newRow("not audio") << QByteArray("ID3\x04 some mp3 data here")
                                   << "E2006110883 : Can not confirm the file identifier.";
        QTest::newRow("RIFF but AVI") << QByteArray("RIFF\x10\0\0\0AVI LIST\x04\0\0\0abcd", 24)
                                      << "E2006110887 : Can not confirm the file format.";
    }
    void rejectsTinyAndForeignFiles()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, message);
        QVERIFY(!OpenWaveHeaderFromMemory(bytes.constData(), std::size_t(bytes.size())));
        QVERIFY(heard(message.toUtf8().constData()));

        // The file path goes through the same checks.
        QTemporaryDir dir;
        const std::string path = dir.filePath(QStringLiteral("x.wav")).toStdString();
        QVERIFY(writeFile(path, Bytes(bytes.begin(), bytes.end())));
        g_messages.clear();
        QVERIFY(!OpenWaveHeader(path.c_str()));
        QVERIFY(heard(message.toUtf8().constData()));
    }

    void missingFileReportsOpenFailure()
    {
        QVERIFY(!OpenWaveHeader("/nonexistent/dir/file.wav"));
        QCOMPARE(g_messages, (std::vector<std::string>{"E2006110802 : Can not open file.",
                                                       "E2006110126 : Can not open file."}));
    }

    void readsPlainWaveFromFileAndMemoryAlike()
    {
        const Bytes bytes = wav16(2, 44100, {1, -1, 256, -256, 32767, -32768});
        QTemporaryDir dir;
        const std::string path = dir.filePath(QStringLiteral("a.wav")).toStdString();
        QVERIFY(writeFile(path, bytes));
        Handle fromFile(OpenWaveHeader(path.c_str()));
        Handle fromMemory = openBytes(bytes);
        QVERIFY(fromFile && fromMemory);
        for (WaveHeaderHandle* h : {fromFile.get(), fromMemory.get()}) {
            QCOMPARE(h->container, 1);
            QCOMPARE(h->endian, 1);
            QCOMPARE(GetWaveFormatIndex(h), 1);
            QCOMPARE(GetWaveSamplingRate(h), 44100);
            QCOMPARE(GetWaveChannels(h), 2);
            QCOMPARE(GetWaveBitDepth(h), 16);
            QCOMPARE(GetWaveSamples(h), 3);
            QCOMPARE(h->dataOffset, 44); // 12 + 8 + 16 + 8
            QCOMPARE(h->fileSize, int(bytes.size()));
            QCOMPARE(h->readPosition, 44);
            QCOMPARE(decodeAll(h),
                     (std::vector<std::int32_t>{65536, -65536, 256 << 16, -(256 << 16), 32767 << 16,
                                                INT32_MIN}));
        }
        QVERIFY(g_messages.empty());
    }

    void statedSizeOneByteLargerIsAccepted()
    {
        const Bytes bytes =
            riff({chunk("fmt ", fmtBody(1, 1, 48000, 16)), chunk("data", pcm16({1, 2, 3}))}, 1);
        Handle h = openBytes(bytes);
        QVERIFY(h);
        QCOMPARE(GetWaveSamples(h.get()), 3);
        QVERIFY(g_messages.empty());
    }

    void strictLibraryRejectsWrongStatedSize()
    {
        const Bytes bytes =
            riff({chunk("fmt ", fmtBody(1, 1, 48000, 16)), chunk("data", pcm16({1, 2, 3}))}, 100);
        WaveHeaderLibraryParams strict;
        strict.strict = 1;
        InitializeWaveHeaderLibrary(&strict);
        InitializeWaveHeaderLibrary(); // a second user does not change the first's choice
        QVERIFY(!openBytes(bytes));
        QVERIFY(heard("E2006110801 : The size written in header is not same as actual file size."));
        FinalizeWaveHeaderLibrary();
        QVERIFY(!openBytes(bytes)); // still held by the first user
        FinalizeWaveHeaderLibrary();
        g_messages.clear();
        Handle lenient = openBytes(bytes);
        QVERIFY(lenient);
        QCOMPARE(GetWaveSamples(lenient.get()), 3);
        QVERIFY(g_messages.empty());
    }

    void oddChunksWithoutPaddingOpenWithWarning()
    {
        // A 3-byte 'junk' chunk without its pad byte pushes 'data' to an odd offset.
        const Bytes bytes =
            riff({chunk("fmt ", fmtBody(1, 1, 48000, 16)),
                  chunk("junk", Bytes{1, 2, 3}, false, false), chunk("data", pcm16({100, -100}))});
        Handle h = openBytes(bytes);
        QVERIFY(h);
        QCOMPARE(h->unalignedChunks, 1);
        QCOMPARE(GetWaveSamples(h.get()), 2);
        QCOMPARE(h->dataOffset, 12 + 24 + 11 + 8);
        QCOMPARE(decodeAll(h.get()), (std::vector<std::int32_t>{100 << 16, -(100 << 16)}));
        QVERIFY(heard(kUnaligned));
    }

    void unpaddedChunkAfterDataStillFindsLoops()
    {
        // The aligned walk finds 'fmt ' and 'data' but loses its step after the odd
        // chunk; only the unaligned walk reaches the 'smpl' behind it.
        const Bytes bytes =
            riff({chunk("fmt ", fmtBody(1, 1, 48000, 16)), chunk("data", pcm16({1, 2, 3, 4})),
                  chunk("note", Bytes{'o', 'd', 'd'}, false, false),
                  chunk("smpl", smplBody(1, {{0, 3}}))});
        Handle h = openBytes(bytes);
        QVERIFY(h);
        QCOMPARE(h->unalignedChunks, 1);
        QCOMPARE(GetWaveLoopCount(h.get()), 1);
        QCOMPARE(h->loopEnds[0], 4u);
        QVERIFY(heard(kUnaligned));
    }

    void paddedOddChunksOpenWithoutWarning()
    {
        const Bytes bytes =
            riff({chunk("fmt ", fmtBody(1, 1, 48000, 16)), chunk("junk", Bytes{1, 2, 3}),
                  chunk("data", pcm16({100, -100}))});
        Handle h = openBytes(bytes);
        QVERIFY(h);
        QCOMPARE(h->unalignedChunks, 0);
        QVERIFY(g_messages.empty());
    }

    void smplLoopEndIsStoredExclusive()
    {
        const Bytes bytes = riff({chunk("fmt ", fmtBody(1, 1, 48000, 16)),
                                  chunk("smpl", smplBody(2, {{100, 199}, {5, 9}})),
                                  chunk("data", pcm16(std::vector<int>(300, 0)))});
        Handle h = openBytes(bytes);
        QVERIFY(h);
        QCOMPARE(GetWaveLoopCount(h.get()), 2);
        std::uint32_t start = 0, end = 0;
        QCOMPARE(GetLoop(h.get(), 0, &start, &end), 0);
        QCOMPARE(start, 100u);
        QCOMPARE(end, 200u);
        QCOMPARE(GetLoop(h.get(), 1, &start, &end), 0);
        QCOMPARE(end, 10u);
        QCOMPARE(GetLoop(h.get(), 2, &start, &end), -1);
        QVERIFY(heard("E2006110810 : Specified loop ID is out of range."));
    }

    void cuePointsAreCappedAt256()
    {
        const Bytes bytes = riff({chunk("fmt ", fmtBody(1, 1, 48000, 16)),
                                  chunk("cue ", cueBody(300, 300)), chunk("data", pcm16({0, 0}))});
        Handle h = openBytes(bytes);
        QVERIFY(h);
        QCOMPARE(GetWaveMarkerCount(h.get()), 256);
        QCOMPARE(FindMarkerIndex(h.get(), 1), 0);
        QCOMPARE(FindMarkerIndex(h.get(), 256), 255);
        QCOMPARE(FindMarkerIndex(h.get(), 257), -1);
        QCOMPARE(h->markerPositions[255], 2550u);
    }

    void cuePositionPrefersSampleOffset()
    {
        const Bytes bytes =
            riff({chunk("fmt ", fmtBody(1, 1, 48000, 16)), chunk("cue ", cueBody(2, 2, 0, 1000)),
                  chunk("data", pcm16({0, 0}))});
        Handle h = openBytes(bytes);
        QVERIFY(h);
        QCOMPARE(h->markerPositions[0], 1000u);
        QCOMPARE(h->markerPositions[1], 1010u);
    }

    void labelsAttachToMarkers()
    {
        Bytes adtl;
        putId(adtl, "adtl");
        Bytes label;
        putLe32(label, 2);
        label.insert(label.end(), {'h', 'i', 't', 0});
        append(adtl, chunk("labl", label));
        Bytes orphan;
        putLe32(orphan, 99);
        orphan.insert(orphan.end(), {'x', 0});
        append(adtl, chunk("labl", orphan));
        const Bytes bytes = riff({chunk("fmt ", fmtBody(1, 1, 48000, 16)), chunk("LIST", adtl),
                                  chunk("cue ", cueBody(2, 2)), chunk("data", pcm16({0, 0}))});
        Handle h = openBytes(bytes);
        QVERIFY(h);
        QCOMPARE(GetMarkerLabel(h.get(), 1), std::string("hit"));
        QCOMPARE(GetMarkerLabel(h.get(), 0), std::string());
        QVERIFY(heard("W2018051502 : A label is not associated with any marker."));
    }

    void hostileCountsAreClamped()
    {
        // Counts of 2^32-1 in chunks that hold only a few entries.
        const Bytes bytes =
            riff({chunk("fmt ", fmtBody(1, 1, 48000, 16)), chunk("cue ", cueBody(0xFFFFFFFFu, 3)),
                  chunk("smpl", smplBody(0xFFFFFFFFu, {{1, 2}})), chunk("data", pcm16({0, 0}))});
        Handle h = openBytes(bytes);
        QVERIFY(h);
        QCOMPARE(GetWaveMarkerCount(h.get()), 3);
        QCOMPARE(GetWaveLoopCount(h.get()), 1);
    }

    void truncatedDataChunkKeepsWhatIsThere()
    {
        Bytes bytes = wav16(2, 48000, std::vector<int>(100, 7));
        bytes.resize(bytes.size() - 41); // 10 whole frames and one byte gone
        Handle h = openBytes(bytes);
        QVERIFY(h);
        QVERIFY(heard("W2006110765 : The size written in 'data' chunk is wrong."));
        QCOMPARE(GetWaveSamples(h.get()), 39);
        QCOMPARE(h->fileSize, int(bytes.size()));
        const std::vector<std::int32_t> values = decodeAll(h.get());
        QCOMPARE(values.size(), std::size_t(78));
        QCOMPARE(values.back(), 7 << 16);
        std::int32_t extra[4];
        QCOMPARE(DecodeSamples(h.get(), extra, 4), std::int64_t(0));
    }

    void invalidFormatValues_data()
    {
        QTest::addColumn<QByteArray>("fmt");
        QTest::addColumn<QString>("message");
        auto add = [](const char* name, Bytes fmt, const char* message) {
            QTest::newRow(name) << QByteArray(reinterpret_cast<const char*>(fmt.data()),
                                              int(fmt.size()))
                                << message;
        };
        add("zero channels", fmtBody(1, 0, 48000, 16),
            "E2006110773 : The number of channels is wrong.");
        add("zero rate", fmtBody(1, 2, 0, 16), "E2006110771 : Sampling frequency is wrong.");
        add("absurd rate", fmtBody(1, 2, 90000000, 16),
            "E2006110772 : This sampling frequency is not available.");
        add("zero bits", fmtBody(1, 2, 48000, 0), "E2006110774 : Quantization bits is wrong.");
        add("48 bits", fmtBody(1, 2, 48000, 48),
            "E2006110775 : This quantization bits is not available.");
        add("16-bit float", fmtBody(3, 2, 48000, 16),
            "E2006110775 : This quantization bits is not available.");
        Bytes badRate = fmtBody(1, 2, 48000, 16);
        badRate[8] ^= 1;
        add("byte rate", badRate, "E2006110727 : Wrong byte rate.");
        Bytes zeroAlign = fmtBody(1, 2, 48000, 16);
        zeroAlign[8] = zeroAlign[9] = zeroAlign[10] = zeroAlign[11] = 0;
        zeroAlign[12] = zeroAlign[13] = 0;
        add("zero block align", zeroAlign, "E2006110766 : Unknown block size.");
        add("unknown GUID", fmtExtensible(2, 48000, 24, 24, 1, false),
            "E2022092602 : Unrecognizable subformat.");
        add("ADPCM", fmtBody(2, 1, 48000, 16), "E2006110887 : Can not confirm the file format.");
    }
    void invalidFormatValues()
    {
        QFETCH(QByteArray, fmt);
        QFETCH(QString, message);
        const Bytes body(fmt.begin(), fmt.end());
        const Bytes bytes = riff({chunk("fmt ", body), chunk("data", pcm16({0, 0, 0, 0}))});
        QVERIFY(!openBytes(bytes));
        QVERIFY2(heard(message.toUtf8().constData()), qPrintable(message));
        QCOMPARE(g_messages.back(), std::string("E2006110127 : Can not decode file header."));
    }

    void dataWithoutFormatHasNoBlockSize()
    {
        const Bytes bytes = riff({chunk("data", pcm16({0, 0}))});
        QVERIFY(!openBytes(bytes));
        QVERIFY(heard("E2006110766 : Unknown block size."));
    }

    void decodesEveryEncoding_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QVector<int>>("expected");
        QTest::addColumn<int>("bits");
        auto add = [](const char* name, const Bytes& b, QVector<int> expected, int bits) {
            QTest::newRow(name) << QByteArray(reinterpret_cast<const char*>(b.data()),
                                              int(b.size()))
                                << expected << bits;
        };
        // 8-bit WAV is offset binary: 0x80 is silence.
        add("wav 8",
            riff({chunk("fmt ", fmtBody(1, 1, 8000, 8)),
                  chunk("data", Bytes{0x80, 0xFF, 0x00, 0x81})}),
            {0, 127 << 24, INT32_MIN, 1 << 24}, 8);
        add("wav 24",
            riff({chunk("fmt ", fmtBody(1, 1, 48000, 24)),
                  chunk("data", Bytes{0x01, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x80})}),
            {256, -256, INT32_MIN}, 24);
        add("wav 32",
            riff({chunk("fmt ", fmtBody(1, 1, 48000, 32)),
                  chunk("data", Bytes{0x78, 0x56, 0x34, 0x12})}),
            {0x12345678}, 32);
        add("extensible 24 in 24",
            riff({chunk("fmt ", fmtExtensible(2, 96000, 24, 24, 1)),
                  chunk("data", Bytes{0, 0, 0x40, 0, 0, 0xC0})}),
            {0x40000000, -0x40000000}, 24);
        add("extensible 20 in 24",
            riff({chunk("fmt ", fmtExtensible(1, 96000, 24, 20, 1)),
                  chunk("data", Bytes{0x10, 0, 0x40})}),
            {0x40001000}, 20);
        // 0.5, -1.0, 1.5 (clamped), -2.0 (clamped): value x 8388608, clamped, x 256.
        Bytes floats;
        for (const float f : {0.5f, -1.0f, 1.5f, -2.0f}) {
            std::uint32_t bits;
            std::memcpy(&bits, &f, 4);
            putLe32(floats, bits);
        }
        add("wav float", riff({chunk("fmt ", fmtBody(3, 2, 48000, 32)), chunk("data", floats)}),
            {0x40000000, INT32_MIN, 8388607 * 256, INT32_MIN}, 32);
        add("extensible float",
            riff({chunk("fmt ", fmtExtensible(2, 48000, 32, 32, 3)), chunk("data", floats)}),
            {0x40000000, INT32_MIN, 8388607 * 256, INT32_MIN}, 32);
        Bytes doubles;
        for (const double d : {0.25, -0.25}) {
            std::uint64_t bits;
            std::memcpy(&bits, &d, 8);
            putLe32(doubles, std::uint32_t(bits));
            putLe32(doubles, std::uint32_t(bits >> 32));
        }
        add("wav double", riff({chunk("fmt ", fmtBody(3, 1, 48000, 64)), chunk("data", doubles)}),
            {0x20000000, -0x20000000}, 64);
        add("aiff 16", aiff16(1, 44100, {1, -2}), {1 << 16, -(2 << 16)}, 16);
        add("aiff 8 is signed",
            form("AIFF", {chunk("COMM", commBody(1, 2, 8, 22050), true),
                          chunk("SSND", ssndBody(Bytes{0x7F, 0x80}), true)}),
            {127 << 24, INT32_MIN}, 8);
        add("aiff 24",
            form("AIFF", {chunk("COMM", commBody(1, 1, 24, 48000), true),
                          chunk("SSND", ssndBody(Bytes{0xFF, 0xFF, 0xFE}), true)}),
            {-512}, 24);
        Bytes sowtComm = commBody(1, 1, 16, 48000);
        putId(sowtComm, "sowt");
        sowtComm.push_back(0);
        sowtComm.push_back(0);
        add("aifc sowt",
            form("AIFC",
                 {chunk("COMM", sowtComm, true), chunk("SSND", ssndBody(Bytes{0x02, 0x01}), true)}),
            {0x0102 << 16}, 16);
    }
    void decodesEveryEncoding()
    {
        QFETCH(QByteArray, file);
        QFETCH(QVector<int>, expected);
        QFETCH(int, bits);
        Handle h(OpenWaveHeaderFromMemory(file.constData(), std::size_t(file.size())));
        QVERIFY(h);
        QCOMPARE(GetWaveBitDepth(h.get()), bits);
        const std::vector<std::int32_t> got = decodeAll(h.get());
        QCOMPARE(QVector<int>(got.begin(), got.end()), expected);
    }

    void aiffMarkersAndLoops()
    {
        Bytes mark;
        putBe16(mark, 2);
        putBe16(mark, 1);
        putBe32(mark, 100);
        mark.insert(mark.end(), {3, 'b', 'e', 'g'}); // count + 3 chars: even, no pad
        putBe16(mark, 2);
        putBe32(mark, 300);
        mark.insert(mark.end(), {2, 'e', 'n', 0}); // count + 2 chars: padded
        Bytes inst(8, 0);
        putBe16(inst, 1); // sustain loop: forward
        putBe16(inst, 1);
        putBe16(inst, 2);
        putBe16(inst, 0); // release loop: none
        putBe16(inst, 0);
        putBe16(inst, 0);
        Bytes data(2 * 400, 0);
        const Bytes bytes = form("AIFF", {chunk("COMM", commBody(1, 400, 16, 44100), true),
                                          chunk("INST", inst, true), chunk("MARK", mark, true),
                                          chunk("SSND", ssndBody(data), true)});
        Handle h = openBytes(bytes);
        QVERIFY(h);
        QCOMPARE(h->container, 2);
        QCOMPARE(h->endian, 2);
        QCOMPARE(GetWaveFormatIndex(h.get()), 2);
        QCOMPARE(GetWaveSamplingRate(h.get()), 44100);
        QCOMPARE(GetWaveSamples(h.get()), 400);
        QCOMPARE(GetWaveMarkerCount(h.get()), 2);
        QCOMPARE(GetMarkerLabel(h.get(), 0), std::string("beg"));
        QCOMPARE(GetMarkerLabel(h.get(), 1), std::string("en"));
        QCOMPARE(GetWaveLoopCount(h.get()), 1);
        std::uint32_t start = 0, end = 0;
        QCOMPARE(GetLoop(h.get(), 0, &start, &end), 0);
        QCOMPARE(start, 100u);
        QCOMPARE(end, 300u);
    }

    void aiffOddRatesComeThroughTheExtendedFormat_data()
    {
        QTest::addColumn<int>("rate");
        for (const int rate : {8000, 11025, 22050, 44100, 48000, 88200, 192000})
            QTest::newRow(QByteArray::number(rate).constData()) << rate;
    }
    void aiffOddRatesComeThroughTheExtendedFormat()
    {
        QFETCH(int, rate);
        const Bytes bytes = aiff16(2, std::uint32_t(rate), {0, 0});
        Handle h = openBytes(bytes);
        QVERIFY(h);
        QCOMPARE(GetWaveSamplingRate(h.get()), rate);
    }

    void aiffSampleCountIsClampedToTheData()
    {
        const Bytes bytes = form("AIFF", {chunk("COMM", commBody(2, 0xFFFFFFFFu, 16, 48000), true),
                                          chunk("SSND", ssndBody(Bytes(40, 1)), true)});
        Handle h = openBytes(bytes);
        QVERIFY(h);
        QCOMPARE(GetWaveSamples(h.get()), 10);
    }

    void seekAndStereoFrames()
    {
        const Bytes bytes = wav16(2, 48000, {1, 2, 3, 4, 5, 6, 7, 8});
        Handle h = openBytes(bytes);
        QVERIFY(h);
        std::int16_t l = 0, r = 0;
        QCOMPARE(SeekSample(h.get(), 2, 0), std::int64_t(2));
        QCOMPARE(ReadStereo16(h.get(), &l, &r), 0);
        QCOMPARE(l, std::int16_t(5));
        QCOMPARE(r, std::int16_t(6));
        QCOMPARE(SeekSample(h.get(), -2, 1), std::int64_t(1));
        QCOMPARE(ReadStereo16(h.get(), &l, &r), 0);
        QCOMPARE(l, std::int16_t(3));
        QCOMPARE(SeekSample(h.get(), -1, 2), std::int64_t(3));
        QCOMPARE(ReadStereo16(h.get(), &l, &r), 0);
        QCOMPARE(r, std::int16_t(8));
        QCOMPARE(ReadStereo16(h.get(), &l, &r), -1);             // end of data
        QCOMPARE(SeekSample(h.get(), 1000, 0), std::int64_t(4)); // clamped
        QCOMPARE(SeekSample(h.get(), -1000, 0), std::int64_t(0));
        QCOMPARE(SeekSample(h.get(), 0, 3), std::int64_t(-1));

        // Mono repeats its channel; more channels give the first two.
        const Bytes monoBytes = wav16(1, 48000, {-9});
        Handle mono = openBytes(monoBytes);
        QCOMPARE(ReadStereo16(mono.get(), &l, &r), 0);
        QCOMPARE(l, std::int16_t(-9));
        QCOMPARE(r, std::int16_t(-9));
        const Bytes quadBytes = riff({chunk("fmt ", fmtBody(1, 4, 48000, 24)),
                                      chunk("data", Bytes{0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0,
                                                          0, 5, 0, 0, 6, 0, 0, 7, 0, 0, 8, 0})});
        Handle quad = openBytes(quadBytes);
        QVERIFY(quad);
        QCOMPARE(ReadStereo16(quad.get(), &l, &r), 0);
        QCOMPARE(l, std::int16_t(1));
        QCOMPARE(r, std::int16_t(2));
        QCOMPARE(ReadStereo16(quad.get(), &l, &r), 0);
        QCOMPARE(l, std::int16_t(5));
        QCOMPARE(r, std::int16_t(6));
    }

    void nullHandleMessages()
    {
        QCOMPARE(GetWaveSamplingRate(nullptr), -1);
        QCOMPARE(GetWaveChannels(nullptr), -1);
        QCOMPARE(GetWaveBitDepth(nullptr), -1);
        QCOMPARE(GetWaveSamples(nullptr), -1);
        QCOMPARE(GetWaveFormatIndex(nullptr), -1);
        QCOMPARE(GetWaveMarkerCount(nullptr), -1);
        QCOMPARE(GetWaveLoopCount(nullptr), -1);
        QCOMPARE(g_messages, (std::vector<std::string>{
                                 "E2006110138 : NULL pointer is passed.",
                                 "E2006110139 : NULL pointer is passed.",
                                 "E2006110140 : NULL pointer is passed.",
                                 "E2006110141 : NULL pointer is passed.",
                                 "E2006110143 : NULL pointer is passed.",
                                 "E2006110145 : NULL pointer is passed.",
                                 "E2006110149 : NULL pointer is passed.",
                             }));
        QCOMPARE(FindMarkerIndex(nullptr, 1), -1);
        QCOMPARE(SeekSample(nullptr, 0, 0), std::int64_t(-1));
        std::int16_t l, r;
        QCOMPARE(ReadStereo16(nullptr, &l, &r), -1);
        SetWaveHeaderErrorCallback(nullptr);
        QCOMPARE(GetWaveChannels(nullptr), -1); // silenced, and still no crash
    }

    void cafIsRecognised()
    {
        Bytes b;
        putId(b, "caff");
        putBe16(b, 1);
        putBe16(b, 0);
        putId(b, "desc");
        putBe32(b, 0);
        putBe32(b, 32);
        const double rate = 48000.0;
        std::uint64_t rateBits;
        std::memcpy(&rateBits, &rate, 8);
        putBe32(b, std::uint32_t(rateBits >> 32));
        putBe32(b, std::uint32_t(rateBits));
        putId(b, "lpcm");
        putBe32(b, 0); // big-endian integer
        putBe32(b, 4); // bytes per packet
        putBe32(b, 1);
        putBe32(b, 2); // channels
        putBe32(b, 16);
        putId(b, "data");
        putBe32(b, 0xFFFFFFFFu); // -1: to the end of the file
        putBe32(b, 0xFFFFFFFFu);
        putBe32(b, 0); // edit count
        putBe16(b, 0x0102);
        putBe16(b, 0xFFFF);
        Handle h = openBytes(b);
        QVERIFY(h);
        QCOMPARE(h->container, 3);
        QCOMPARE(GetWaveFormatIndex(h.get()), 3);
        QCOMPARE(GetWaveSamples(h.get()), 1);
        QCOMPARE(decodeAll(h.get()), (std::vector<std::int32_t>{0x0102 << 16, -65536}));
        QCOMPARE(std::string(WaveFormatName(3)), std::string("Unknown"));
    }
};

QTEST_GUILESS_MAIN(TestWaveHeaderReader)
#include "tst_waveheaderreader.moc"
