#include "Mp3SoundSource.h"
#include "OggSoundSource.h"
#include "PcmDecoding.h"
#include "TestSettings.h"
#include "WaveBuilder.h"
#include "WaveSoundSource.h"

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

void PutLe32(QByteArray& b, int at, std::uint32_t v)
{
    for (int k = 0; k < 4; ++k)
        b[at + k] = static_cast<char>((v >> (8 * k)) & 0xff);
}

QByteArray ReadAll(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void PutLe32Bytes(fixtures::Bytes& b, std::size_t at, std::uint32_t v)
{
    for (int k = 0; k < 4; ++k)
        b[at + std::size_t(k)] = static_cast<unsigned char>(v >> (8 * k));
}

// Recomputes the CRC of the Ogg page at `page`, so a patched field is read.
void FixPageCrc(QByteArray& b, int page)
{
    fixtures::Bytes bytes(b.begin(), b.end());
    fixtures::fixOggPageCrc(bytes, std::size_t(page));
    b = fixtures::toQByteArray(bytes);
}

// Every frame of a source, read in odd-sized blocks.
std::vector<float> ReadAllFrames(SoundSource& source)
{
    std::vector<float> all;
    std::vector<float> block(std::size_t(333) * std::size_t(source.channels()));
    for (;;) {
        const std::int64_t got = source.read(block.data(), 333);
        if (got <= 0)
            break;
        all.insert(all.end(), block.begin(), block.begin() + got * source.channels());
    }
    return all;
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
        Mp3SoundSource decoder;
        QVERIFY(decoder.open(Fixture("cbr128.mp3").toLocal8Bit().constData()));
        // Encoder delay and padding are trimmed: exactly the 5 s that were encoded.
        QCOMPARE(decoder.frames(), std::int64_t(5 * 44100));
        const std::vector<float> pcm = ReadAllFrames(decoder);
        QCOMPARE(std::int64_t(pcm.size()), decoder.frames() * 2);
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

    // The frame scan gives the length before decoding; the decoder must agree.
    void mp3ScannedLengthIsDecodedLength_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("minKbps");
        QTest::addColumn<int>("maxKbps");
        for (const char* name :
             {"cbr128.mp3", "mono-cbr128.mp3", "music-vbr.mp3", "tones-vbr.mp3", "mono-vbr.mp3"})
            QTest::newRow(name) << QString::fromLatin1(name) << -1 << -1;
        QTest::newRow("96 and 320 kbps frames") << QStringLiteral("vbr-96-320.mp3") << 96 << 320;
        QTest::newRow("cbr") << QStringLiteral("cbr128.mp3") << 128 << 128;
    }

    void mp3ScannedLengthIsDecodedLength()
    {
        QFETCH(QString, name);
        QFETCH(int, minKbps);
        QFETCH(int, maxKbps);
        Mp3SoundSource decoder;
        QVERIFY(decoder.open(Fixture(name.toLatin1().constData()).toLocal8Bit().constData()));
        QVERIFY(decoder.frames() > 0);
        QCOMPARE(std::int64_t(ReadAllFrames(decoder).size()),
                 decoder.frames() * decoder.channels());
        if (minKbps >= 0) {
            QCOMPARE(decoder.stream().minKbps, minKbps);
            QCOMPARE(decoder.stream().maxKbps, maxKbps);
        }
    }

    // Only a run of agreeing frame headers is MP3; PCM that happens to hold a
    // frame sync, or another container with MP3 inside, is not.
    void mp3Acceptance_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("accepted");
        const QByteArray mp3 = ReadAll(Fixture("cbr128.mp3"));
        QVERIFY(!mp3.isEmpty());
        std::vector<double> noise;
        std::uint32_t seed = 12345;
        for (int i = 0; i < 2 * 44100; ++i) {
            seed = seed * 1664525u + 1013904223u;
            noise.push_back((double(seed >> 8) / double(1 << 24)) * 1.8 - 0.9);
        }
        for (int bits : {8, 16, 24}) {
            QTest::newRow(qPrintable(QStringLiteral("noise WAV %1-bit").arg(bits)))
                << fixtures::toQByteArray(fixtures::wav(2, 44100, bits, noise)) << false;
            // The same samples with the header cut off: raw PCM.
            QTest::newRow(qPrintable(QStringLiteral("raw noise %1-bit").arg(bits)))
                << fixtures::toQByteArray(fixtures::pcm(bits, noise)) << false;
        }
        for (const char* id : {"RIFF", "RIFX", "RF64", "FORM", "OggS", "fLaC"})
            QTest::newRow(id) << QByteArray(id) + mp3 << false;
        QTest::newRow("text") << QByteArray("This is a text file that only has an mp3 suffix.\n")
                              << false;
        QTest::newRow("empty") << QByteArray() << false;
        QTest::newRow("zeros") << QByteArray(100000, '\0') << false;
        QTest::newRow("mp3") << mp3 << true;
        QByteArray id3("ID3\x04\x00\x00\x00\x00\x01\x00", 10);
        id3 += QByteArray(128, 'x') + QByteArray(64, '\0');
        QTest::newRow("ID3v2 tag and padding") << id3 + mp3 << true;
        QTest::newRow("ID3v2 tag then WAV")
            << id3 + fixtures::toQByteArray(fixtures::wav(2, 44100, 16, noise)) << false;
        // LAME's Info frame (417 bytes at 128 kbps) and one audio frame.
        QTest::newRow("Info frame and one frame") << mp3.left(417 + 418) << true;
        QTest::newRow("Info frame alone") << mp3.left(417 + 100) << false;
    }

    void mp3Acceptance()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, accepted);
        Mp3SoundSource decoder;
        QCOMPARE(decoder.openMemory(content.constData(), std::size_t(content.size())), accepted);
        QCOMPARE(decoder.errorText().empty(), accepted);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("x.mp3"));
        QVERIFY(fixtures::WriteBytes(path, content));
        std::int32_t rate = -1, ch = -1;
        QCOMPARE(DecodeMp3ToPcm(path, rate, ch).isEmpty(), !accepted);
    }

    void mp3TruncatedFileDecodesWhatIsThere()
    {
        const QByteArray all = ReadAll(Fixture("cbr128.mp3"));
        const QByteArray cut = all.left(all.size() / 3 + 77); // ends inside a frame
        Mp3SoundSource decoder;
        QVERIFY(decoder.openMemory(cut.constData(), std::size_t(cut.size())));
        QVERIFY(decoder.frames() > 0);
        QVERIFY(decoder.frames() < 5 * 44100);
        const std::int64_t read = std::int64_t(ReadAllFrames(decoder).size()) / 2;
        QVERIFY(read > 0);
        QVERIFY(read <= decoder.frames() + 1152);
    }

    // A seek lands on the same samples a plain read reaches.
    void seekReadsTheSameFrames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("wav") << QStringLiteral("tones-stereo.wav");
        QTest::newRow("mp3") << QStringLiteral("cbr128.mp3");
        QTest::newRow("ogg") << QStringLiteral("tones-stereo.ogg");
    }

    void seekReadsTheSameFrames()
    {
        QFETCH(QString, name);
        const std::unique_ptr<SoundSource> source =
            SoundSource::forSuffix(name.right(3).toStdString());
        QVERIFY(source->open(Fixture(name.toLatin1().constData()).toLocal8Bit().constData()));
        const std::vector<float> all = ReadAllFrames(*source);
        const int ch = source->channels();
        for (const std::int64_t at : {std::int64_t(0), std::int64_t(12345), std::int64_t(100000)}) {
            QVERIFY(source->seek(at));
            std::vector<float> block(std::size_t(1000 * ch));
            QCOMPARE(source->read(block.data(), 1000), std::int64_t(1000));
            for (int i = 0; i < 1000 * ch; ++i)
                QCOMPARE(block[std::size_t(i)], all[std::size_t(at * ch + i)]);
        }
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
        FixPageCrc(bytes, 0);

        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("nominal.ogg"));
        QVERIFY(fixtures::WriteBytes(path, bytes));

        OggSoundSource decoder;
        QVERIFY(decoder.open(path.toLocal8Bit().constData()));
        QCOMPARE(decoder.bitRates().maximum, 0);
        QCOMPARE(decoder.bitRates().nominal, 160000);
        std::int32_t lo = 0, hi = 0;
        VorbisKbps(decoder.bitRates(), lo, hi);
        QCOMPARE(lo, 160);
        QCOMPARE(hi, 160);
        QCOMPARE(decoder.frames(), std::int64_t(5 * 44100));
    }

    void vorbisDecodeMatchesSource()
    {
        int channels = 0;
        const std::vector<float> source = ReadWavFloat(Fixture("tones-stereo.wav"), channels);
        OggSoundSource decoder;
        QVERIFY(decoder.open(Fixture("tones-stereo.ogg").toLocal8Bit().constData()));
        QCOMPARE(decoder.samplingRate(), 44100);
        QCOMPARE(decoder.channels(), 2);
        QCOMPARE(decoder.frames(), std::int64_t(5 * 44100));
        const auto frames = std::size_t(decoder.frames());
        std::vector<float> left(frames), right(frames);
        float* planes[] = {left.data(), right.data()};
        QCOMPARE(decoder.readPlanar(planes, decoder.frames()), decoder.frames());

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
        OggSoundSource decoder;
        QVERIFY(!decoder.open(path.toLocal8Bit().constData()));
        QVERIFY(!decoder.errorText().empty());
        std::int32_t rate = 0, ch = 0;
        QVERIFY(DecodeVorbisToPcm(path, rate, ch).isEmpty());
    }

    // Lying sizes and counts in the comment header: rejected or decoded, never
    // a crash or a large allocation (the sanitizer build watches both).
    void vorbisLyingCommentHeader_data()
    {
        QTest::addColumn<int>("field"); // 0 vendor length, 1 comment count
        QTest::addColumn<quint32>("value");
        for (const quint32 v : {3u, 1000u, 0x40000000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
            QTest::newRow(qPrintable(QStringLiteral("count %1").arg(v))) << 1 << v;
            QTest::newRow(qPrintable(QStringLiteral("vendor %1").arg(v))) << 0 << v;
        }
    }

    void vorbisLyingCommentHeader()
    {
        QFETCH(int, field);
        QFETCH(quint32, value);
        QByteArray bytes = ReadAll(Fixture("tones-stereo.ogg"));
        const auto* p = reinterpret_cast<const unsigned char*>(bytes.constData());
        const int second = 27 + p[26] + 30;
        const int packet = second + 27 + p[second + 26];
        QCOMPARE(bytes.mid(packet, 7), QByteArray("\x03vorbis"));
        const int vendorAt = packet + 7;
        const quint32 vendor = p[vendorAt] | (p[vendorAt + 1] << 8) | (p[vendorAt + 2] << 16) |
                               (quint32(p[vendorAt + 3]) << 24);
        PutLe32(bytes, field == 0 ? vendorAt : vendorAt + 4 + int(vendor), value);
        FixPageCrc(bytes, second);
        OggSoundSource decoder;
        if (decoder.openMemory(bytes.constData(), std::size_t(bytes.size())))
            QVERIFY(std::int64_t(ReadAllFrames(decoder).size()) <= decoder.frames() * 2);
        else
            QVERIFY(!decoder.errorText().empty());
    }

    // A cut file keeps what its complete pages hold.
    void vorbisTruncated()
    {
        const QByteArray all = ReadAll(Fixture("tones-stereo.ogg"));
        for (int cut = 0; cut < all.size(); cut += all.size() / 37 + 1) {
            const QByteArray part = all.left(cut);
            OggSoundSource decoder;
            if (!decoder.openMemory(part.constData(), std::size_t(part.size())))
                continue;
            QVERIFY(decoder.frames() <= 5 * 44100);
            QVERIFY(std::int64_t(ReadAllFrames(decoder).size()) <= decoder.frames() * 2);
        }
    }
    // A chain of links plays as one sound; a long chain is read as a stream so
    // that libvorbisfile does not hold every link's headers, with the same length.
    void vorbisChains_data()
    {
        QTest::addColumn<int>("links");
        QTest::newRow("3 links, seekable") << 3;
        QTest::newRow("40 links, streamed") << 40;
    }

    void vorbisChains()
    {
        QFETCH(int, links);
        const QByteArray one = ReadAll(Fixture("tones-mono.ogg"));
        OggSoundSource single;
        QVERIFY(single.openMemory(one.constData(), std::size_t(one.size())));
        fixtures::Bytes chain;
        for (int k = 0; k < links; ++k) {
            fixtures::Bytes link(one.begin(), one.end());
            for (std::size_t page = 0; page + 27 < link.size();) {
                PutLe32Bytes(link, page + 14, 0x1000u + std::uint32_t(k)); // a serial of its own
                fixtures::fixOggPageCrc(link, page);
                std::size_t size = 27 + link[page + 26];
                for (std::size_t i = 0; i < link[page + 26]; ++i)
                    size += link[page + 27 + i];
                page += size;
            }
            fixtures::append(chain, link);
        }
        OggSoundSource decoder;
        QVERIFY(decoder.openMemory(chain.data(), chain.size()));
        QCOMPARE(decoder.frames(), single.frames() * links);
        QCOMPARE(std::int64_t(ReadAllFrames(decoder).size()), decoder.frames());
        QVERIFY(decoder.seek(0));
        std::vector<float> block(100);
        QCOMPARE(decoder.read(block.data(), 100), std::int64_t(100));
    }
};

QTEST_GUILESS_MAIN(TestCompressedDecoders)
#include "tst_compresseddecoders.moc"
