#include "KrokManager.h"
#include "Mp3SoundSource.h"
#include "OggSoundSource.h"
#include "PcmDecoding.h"
#include "WaveBuilder.h"
#include "WaveSoundSource.h"
#include "WaveformPlot.h"

#include <QFile>
#include <QTest>

#include <cmath>
#include <vector>

using namespace fixtures;

namespace {

std::string fixture(const QString& name)
{
    return QFile::encodeName(QStringLiteral(TESK_FIXTURE_DIR "/") + name).toStdString();
}

Bytes readAll(const QString& name)
{
    QFile f(QString::fromStdString(fixture(name)));
    const QByteArray b = f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    return Bytes(b.begin(), b.end());
}

void putLe32(Bytes& b, std::size_t at, std::uint32_t v)
{
    for (int k = 0; k < 4; ++k)
        b[at + std::size_t(k)] = static_cast<unsigned char>(v >> (8 * k));
}

std::size_t pageSize(const Bytes& b, std::size_t page)
{
    std::size_t size = 27 + b[page + 26];
    for (std::size_t i = 0; i < b[page + 26]; ++i)
        size += b[page + 27 + i];
    return size;
}

std::vector<float> readFrames(SoundSource& source)
{
    std::vector<float> all, block(std::size_t(333) * std::size_t(source.channels()));
    for (std::int64_t got; (got = source.read(block.data(), 333)) > 0;)
        all.insert(all.end(), block.begin(), block.begin() + got * source.channels());
    return all;
}

std::vector<float> decodeFixture(const QString& name)
{
    const std::unique_ptr<SoundSource> source = SoundSource::forSuffix(name.right(3).toStdString());
    return source->open(fixture(name).c_str()) ? readFrames(*source) : std::vector<float>();
}

double errorDb(const std::vector<float>& reference, const std::vector<float>& decoded)
{
    double signal = 0, error = 0;
    for (std::size_t i = 0; i < decoded.size() && i < reference.size(); ++i) {
        signal += double(reference[i]) * reference[i];
        error += (double(reference[i]) - decoded[i]) * (double(reference[i]) - decoded[i]);
    }
    return 10.0 * std::log10(error / signal);
}

} // namespace

class TestCompressedDecoders final : public QObject
{
    Q_OBJECT

private slots:
    // Encoder delay and padding are trimmed: exactly the 5 s that were
    // encoded, aligned with the source sample for sample (a misaligned decode
    // of these partials would be near 0 dB).
    void decodeMatchesSource_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("mp3") << QStringLiteral("cbr128.mp3");
        QTest::newRow("ogg") << QStringLiteral("tones-stereo.ogg");
    }
    void decodeMatchesSource()
    {
        QFETCH(QString, name);
        const std::vector<float> source = decodeFixture(QStringLiteral("tones-stereo.wav"));
        const std::vector<float> pcm = decodeFixture(name);
        QCOMPARE(pcm.size(), std::size_t(5 * 44100 * 2));
        QVERIFY2(errorDb(source, pcm) < -20.0, qPrintable(QString::number(errorDb(source, pcm))));

        // The whole file at once gives the same samples, and the plots computed
        // from them are the ones the streaming analysis shows, to the byte.
        const QString path = QString::fromStdString(fixture(name));
        std::int32_t rate = 0, channels = 0;
        const QByteArray whole = name.endsWith(QLatin1String("mp3"))
                                     ? DecodeMp3ToPcm(path, rate, channels)
                                     : DecodeVorbisToPcm(path, rate, channels);
        QCOMPARE(whole, QByteArray(reinterpret_cast<const char*>(pcm.data()), int(pcm.size() * 4)));
        std::vector<float> planar[2];
        for (std::size_t i = 0; i < pcm.size(); ++i)
            planar[i % 2].push_back(pcm[i]);
        const float* lanes[] = {planar[0].data(), planar[1].data()};
        std::vector<PlotPoint> plots((1 + kMaxPlotChannels) * kPlotPoints, PlotPoint{55, 55});
        ComputeMixedPlot(lanes, channels, int(planar[0].size()), rate, plots.data());
        ComputeMultiPlot(lanes, channels, int(planar[0].size()), rate, plots.data() + kPlotPoints);
        AudioFileInfo info;
        AnalyzeAudioFile(path, info, true, false);
        float peak = 0.0f;
        for (const float v : pcm)
            peak = std::max(peak, std::abs(v));
        QCOMPARE(info.samplePeak, peak);
        QCOMPARE(QByteArray(reinterpret_cast<const char*>(plots.data()), int(plots.size()) * 2),
                 QByteArray(reinterpret_cast<const char*>(info.plot.data()), kPlotPoints * 2) +
                     QByteArray(reinterpret_cast<const char*>(info.multiPlotLane(0)),
                                2 * kPlotPoints * 2) +
                     QByteArray(6 * kPlotPoints * 2, '\0')); // lanes of absent channels
        const QString gone = path + QLatin1String(".gone");
        QVERIFY(DecodeMp3ToPcm(gone, rate, channels).isEmpty() &&
                DecodeVorbisToPcm(gone, rate, channels).isEmpty());
    }

    // Only a run of agreeing frame headers is MP3; PCM that happens to hold a
    // frame sync, or another container with MP3 inside, is not. The length
    // counts the frames found, over junk between them.
    void mp3Acceptance_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<qint64>("frames"); // -1: refused
        const qint64 no = -1;
        const QByteArray mp3 = toQByteArray(readAll(QStringLiteral("cbr128.mp3")));
        std::vector<double> noise;
        std::uint32_t seed = 12345;
        for (int i = 0; i < 2 * 44100; ++i) {
            seed = seed * 1664525u + 1013904223u;
            noise.push_back((double(seed >> 8) / double(1 << 24)) * 1.8 - 0.9);
        }
        for (int bits : {8, 24}) {
            QTest::addRow("noise WAV %d-bit", bits)
                << toQByteArray(wav(2, 44100, bits, noise)) << no;
            QTest::addRow("raw noise %d-bit", bits) << toQByteArray(pcm(bits, noise)) << no;
        }
        for (const char* id : {"RIFF", "RIFX", "RF64", "FORM", "OggS", "fLaC"})
            QTest::newRow(id) << QByteArray(id) + mp3 << no;
        QTest::newRow("text") << QByteArray("This is a text file that only has an mp3 suffix.\n")
                              << no;
        QTest::newRow("empty") << QByteArray() << no;
        QTest::newRow("zeros") << QByteArray(100000, '\0') << no;
        QTest::newRow("mp3") << mp3 << qint64(5 * 44100);
        const QByteArray id3 = QByteArray("ID3\x04\x00\x00\x00\x00\x01\x00", 10) +
                               QByteArray(128, 'x') + QByteArray(64, '\0');
        QTest::newRow("ID3v2 tag and padding") << id3 + mp3 << qint64(5 * 44100);
        QTest::newRow("ID3v2 tag then WAV") << id3 + toQByteArray(wav(2, 44100, 16, noise)) << no;
        // LAME's Info frame (417 bytes at 128 kbps) and one audio frame.
        QTest::newRow("Info frame and one frame") << mp3.left(417 + 418) << qint64(47);
        QTest::newRow("Info frame alone") << mp3.left(417 + 100) << no;
        QTest::newRow("junk between frames")
            << mp3.left(834) + QByteArray(3000, '\xff') + mp3.mid(834) << qint64(5 * 44100);
        QByteArray modes = mp3; // joint stereo, then plain stereo
        modes[417 + 3] = char(modes[417 + 3] & 0x3F);
        QTest::newRow("channel mode changes") << modes << no;
    }
    void mp3Acceptance()
    {
        QFETCH(QByteArray, content);
        QFETCH(qint64, frames);
        Mp3SoundSource decoder;
        QCOMPARE(decoder.openMemory(content.constData(), std::size_t(content.size())), frames >= 0);
        QCOMPARE(decoder.errorText().empty(), frames >= 0);
        if (frames >= 0)
            QCOMPARE(decoder.frames(), frames);
    }

    // A long chain of links plays as one sound, read as a stream so that
    // libvorbisfile does not hold every link's headers.
    void vorbisChains()
    {
        const int links = 40;
        const Bytes one = readAll(QStringLiteral("tones-mono.ogg"));
        OggSoundSource single;
        QVERIFY(single.openMemory(one.data(), one.size()));
        Bytes chain;
        for (int k = 0; k < links; ++k) {
            Bytes link = one;
            for (std::size_t page = 0; page + 27 < link.size(); page += pageSize(link, page)) {
                putLe32(link, page + 14, 0x1000u + std::uint32_t(k)); // a serial of its own
                fixOggPageCrc(link, page);
            }
            append(chain, link);
        }
        OggSoundSource decoder;
        QVERIFY(decoder.openMemory(chain.data(), chain.size()));
        QCOMPARE(decoder.frames(), single.frames() * links);
        QCOMPARE(std::int64_t(readFrames(decoder).size()), decoder.frames());
        QVERIFY(decoder.seek(0));
        std::vector<float> block(100);
        QCOMPARE(decoder.read(block.data(), 100), std::int64_t(100));
    }
};

QTEST_GUILESS_MAIN(TestCompressedDecoders)
#include "tst_compresseddecoders.moc"
