#include "Mp3Decoder.h"
#include "TestSettings.h"
#include "VorbisDecoder.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <cstring>
#include <vector>

namespace {

QString Fixture(const char* name)
{
    return QStringLiteral(TESK_FIXTURE_DIR "/") + QLatin1String(name);
}

// 16-bit PCM of a canonical 44-byte-header WAV written by tesk-signalgen.
std::vector<float> ReadWavFloat(const QString& path, int& channels)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return {};
    const QByteArray all = f.readAll();
    channels = static_cast<unsigned char>(all[22]);
    std::vector<float> out;
    for (int i = 44; i + 1 < all.size(); i += 2) {
        const auto s = static_cast<std::int16_t>(static_cast<unsigned char>(all[i]) |
                                                 (static_cast<unsigned char>(all[i + 1]) << 8));
        out.push_back(s / 32768.0f);
    }
    return out;
}

// Ratio of error energy to signal energy in dB, over the common length.
double ErrorDb(const std::vector<float>& reference, const float* decoded, std::size_t count)
{
    double signal = 0, error = 0;
    for (std::size_t i = 0; i < count && i < reference.size(); ++i) {
        signal += double(reference[i]) * reference[i];
        const double d = double(reference[i]) - decoded[i];
        error += d * d;
    }
    return 10.0 * std::log10(error / signal);
}

std::uint32_t OggCrc(const unsigned char* data, int size)
{
    std::uint32_t crc = 0;
    for (int i = 0; i < size; ++i) {
        crc ^= std::uint32_t(data[i]) << 24;
        for (int k = 0; k < 8; ++k)
            crc = (crc & 0x80000000u) ? (crc << 1) ^ 0x04c11db7u : crc << 1;
    }
    return crc;
}

void PutLe32(QByteArray& b, int at, std::uint32_t v)
{
    for (int k = 0; k < 4; ++k)
        b[at + k] = static_cast<char>((v >> (8 * k)) & 0xff);
}

} // namespace

class TestCompressedDecoders final : public QObject
{
    Q_OBJECT

private slots:
    void mp3GaplessDecodeMatchesSource()
    {
        int channels = 0;
        const std::vector<float> source = ReadWavFloat(Fixture("tones-stereo.wav"), channels);
        QCOMPARE(channels, 2);
        Mp3Decoder decoder;
        QVERIFY(decoder.Open(Fixture("cbr128.mp3").toLocal8Bit().constData()));
        QVERIFY(decoder.CountFrames());
        // Encoder delay and padding are trimmed: exactly the 5 s that were encoded.
        QCOMPARE(decoder.Samples(), std::int64_t(5 * 44100));

        std::vector<float> pcm(std::size_t(decoder.Samples()) * 2);
        QCOMPARE(decoder.ReadInterleaved(pcm.data(), decoder.Samples()), decoder.Samples());
        // Aligned with the source sample for sample (a misaligned decode of these
        // partials would be near 0 dB).
        QVERIFY2(ErrorDb(source, pcm.data(), pcm.size()) < -20.0,
                 qPrintable(QString::number(ErrorDb(source, pcm.data(), pcm.size()))));

        std::int32_t rate = 0, ch = 0;
        const QByteArray whole = DecodeMp3ToPcm(Fixture("cbr128.mp3"), rate, ch);
        QCOMPARE(rate, 44100);
        QCOMPARE(ch, 2);
        QCOMPARE(whole.size(), int(pcm.size() * sizeof(float)));
        QCOMPARE(std::memcmp(whole.constData(), pcm.data(), std::size_t(whole.size())), 0);
    }

    void mp3RejectsOtherData_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("text") << QByteArray("This is a text file that only has an mp3 suffix.\n");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("zeros") << QByteArray(100000, '\0');
    }

    void mp3RejectsOtherData()
    {
        QFETCH(QByteArray, content);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("x.mp3"));
        QVERIFY(fixtures::WriteBytes(path, content));
        Mp3Decoder decoder;
        QVERIFY(!decoder.Open(path.toLocal8Bit().constData()));
        std::int32_t rate = -1, ch = -1;
        QVERIFY(DecodeMp3ToPcm(path, rate, ch).isEmpty());
        QVERIFY(
            !decoder.Open(dir.filePath(QStringLiteral("missing.mp3")).toLocal8Bit().constData()));
    }

    void mp3TruncatedFileDecodesWhatIsThere()
    {
        QFile full(Fixture("cbr128.mp3"));
        QVERIFY(full.open(QIODevice::ReadOnly));
        const QByteArray all = full.readAll();
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("cut.mp3"));
        QVERIFY(fixtures::WriteBytes(path, all.left(all.size() / 3 + 77))); // ends inside a frame

        Mp3Decoder decoder;
        QVERIFY(decoder.Open(path.toLocal8Bit().constData()));
        QVERIFY(decoder.CountFrames());
        QVERIFY(decoder.Samples() > 0);
        QVERIFY(decoder.Samples() < 5 * 44100);
        std::vector<float> pcm(std::size_t(decoder.Samples() + 4096) * 2);
        const std::int64_t read = decoder.ReadInterleaved(pcm.data(), decoder.Samples() + 4096);
        QVERIFY(read > 0);
        QVERIFY(read <= decoder.Samples());
    }

    void vorbisKbpsRule_data()
    {
        QTest::addColumn<int>("maximum");
        QTest::addColumn<int>("nominal");
        QTest::addColumn<int>("minimum");
        QTest::addColumn<int>("minKbps");
        QTest::addColumn<int>("maxKbps");
        QTest::newRow("only nominal") << 0 << 160000 << 0 << 160 << 160;
        QTest::newRow("managed") << 320000 << 160000 << 96000 << 96 << 320;
        QTest::newRow("unset min is unsigned") << 192000 << 128000 << -1 << 4294967 << 192;
        QTest::newRow("all unset") << -1 << -1 << -1 << 4294967 << 4294967;
        QTest::newRow("truncating division") << 128999 << 0 << 999 << 0 << 128;
    }

    void vorbisKbpsRule()
    {
        QFETCH(int, maximum);
        QFETCH(int, nominal);
        QFETCH(int, minimum);
        QFETCH(int, minKbps);
        QFETCH(int, maxKbps);
        std::int32_t lo = 0, hi = 0;
        VorbisKbps({maximum, nominal, minimum}, lo, hi);
        QCOMPARE(lo, minKbps);
        QCOMPARE(hi, maxKbps);
    }

    void vorbisPatchedHeaderGivesNominal()
    {
        QFile source(Fixture("tones-stereo.ogg"));
        QVERIFY(source.open(QIODevice::ReadOnly));
        QByteArray bytes = source.readAll();
        // First page: 27-byte header, lacing table, then the identification packet;
        // its rate fields sit 16, 20 and 24 bytes into the packet.
        const int packet = 27 + static_cast<unsigned char>(bytes[26]);
        PutLe32(bytes, packet + 16, 0);
        PutLe32(bytes, packet + 20, 160000);
        PutLe32(bytes, packet + 24, 0);
        int pageSize = packet;
        for (int i = 0; i < static_cast<unsigned char>(bytes[26]); ++i)
            pageSize += static_cast<unsigned char>(bytes[27 + i]);
        PutLe32(bytes, 22, 0);
        PutLe32(bytes, 22,
                OggCrc(reinterpret_cast<const unsigned char*>(bytes.constData()), pageSize));

        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("nominal.ogg"));
        QVERIFY(fixtures::WriteBytes(path, bytes));

        VorbisHeaderBitRates rates;
        QVERIFY(ReadVorbisHeaderBitRates(path.toLocal8Bit().constData(), rates));
        QCOMPARE(rates.maximum, 0);
        QCOMPARE(rates.nominal, 160000);
        std::int32_t lo = 0, hi = 0;
        VorbisKbps(rates, lo, hi);
        QCOMPARE(lo, 160);
        QCOMPARE(hi, 160);
        // The patched file still decodes.
        VorbisDecoder decoder;
        QVERIFY(decoder.Open(path.toLocal8Bit().constData()));
        QCOMPARE(decoder.Samples(), std::int64_t(5 * 44100));
    }

    void vorbisDecodeMatchesSource()
    {
        int channels = 0;
        const std::vector<float> source = ReadWavFloat(Fixture("tones-stereo.wav"), channels);
        VorbisDecoder decoder;
        QVERIFY(decoder.Open(Fixture("tones-stereo.ogg").toLocal8Bit().constData()));
        QCOMPARE(decoder.SamplingRate(), 44100);
        QCOMPARE(decoder.Channels(), 2);
        QCOMPARE(decoder.Samples(), std::int64_t(5 * 44100));
        const auto frames = std::size_t(decoder.Samples());
        std::vector<float> left(frames), right(frames);
        float* planes[] = {left.data(), right.data()};
        QCOMPARE(decoder.ReadPlanar(planes, decoder.Samples()), decoder.Samples());

        std::int32_t rate = 0, ch = 0;
        const QByteArray whole = DecodeVorbisToPcm(Fixture("tones-stereo.ogg"), rate, ch);
        QCOMPARE(rate, 44100);
        QCOMPARE(ch, 2);
        QCOMPARE(whole.size(), int(frames * 2 * sizeof(float)));
        const auto* interleaved = reinterpret_cast<const float*>(whole.constData());
        // Planar and interleaved reads agree, left stays left.
        for (std::size_t i = 0; i < frames; i += 997) {
            QCOMPARE(interleaved[2 * i], left[i]);
            QCOMPARE(interleaved[2 * i + 1], right[i]);
        }
        QVERIFY(ErrorDb(source, interleaved, frames * 2) < -20.0);
    }

    void vorbisRejectsOtherData()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("x.ogg"));
        QVERIFY(fixtures::WriteBytes(path, "OggS but nothing after it"));
        VorbisDecoder decoder;
        QVERIFY(!decoder.Open(path.toLocal8Bit().constData()));
        VorbisHeaderBitRates rates;
        QVERIFY(!ReadVorbisHeaderBitRates(path.toLocal8Bit().constData(), rates));
        std::int32_t rate = 0, ch = 0;
        QVERIFY(DecodeVorbisToPcm(path, rate, ch).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestCompressedDecoders)
#include "tst_compresseddecoders.moc"
