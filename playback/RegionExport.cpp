#include "RegionExport.h"

#include "FrameSource.h"
#include "SampleConversion.h"

#include <WaveByteSource.h>
#include <WaveHeaderReader.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::int64_t kBlockFrames = 16384;
constexpr std::size_t kMaxMetadataBytes = 1
                                          << 20; // a 'bext' or INFO chunk beyond this is not copied
constexpr std::size_t kBextTimeReference = 338;  // after description, originator, date and time

QString Text(const char* text)
{
    return QCoreApplication::translate("RegionExport", text);
}

void putLe16(Bytes& b, std::uint32_t v)
{
    b.push_back(static_cast<unsigned char>(v & 0xff));
    b.push_back(static_cast<unsigned char>((v >> 8) & 0xff));
}

void putLe32(Bytes& b, std::uint32_t v)
{
    putLe16(b, v & 0xffff);
    putLe16(b, v >> 16);
}

std::uint32_t le32(const unsigned char* p)
{
    return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 |
           std::uint32_t(p[3]) << 24;
}

void appendChunk(Bytes& out, const char* id, const Bytes& body)
{
    out.insert(out.end(), id, id + 4);
    putLe32(out, static_cast<std::uint32_t>(body.size()));
    out.insert(out.end(), body.begin(), body.end());
    if (body.size() & 1)
        out.push_back(0);
}

Bytes fmtBody(int tag, int channels, int rate, int bytesPerSample)
{
    Bytes b;
    const int blockAlign = channels * bytesPerSample;
    putLe16(b, static_cast<std::uint32_t>(tag));
    putLe16(b, static_cast<std::uint32_t>(channels));
    putLe32(b, static_cast<std::uint32_t>(rate));
    putLe32(b, static_cast<std::uint32_t>(rate * blockAlign));
    putLe16(b, static_cast<std::uint32_t>(blockAlign));
    putLe16(b, static_cast<std::uint32_t>(bytesPerSample * 8));
    return b;
}

// The top-level chunks of a RIFF/WAVE file that travel with a region.
struct WaveMetadata
{
    Bytes fmt;
    Bytes bext;
    Bytes info; // the whole LIST body, starting with "INFO"
};

WaveMetadata ReadWaveMetadata(const QString& path)
{
    WaveMetadata m;
    const std::unique_ptr<WaveByteSource> io =
        WaveByteSource::openFile(QFile::encodeName(path).constData());
    if (!io)
        return m;
    unsigned char head[12];
    if (!io->readExact(0, head, 12) || std::memcmp(head, "RIFF", 4) != 0 ||
        std::memcmp(head + 8, "WAVE", 4) != 0)
        return m;
    const std::int64_t end = std::min<std::int64_t>(io->size(), 8 + std::int64_t(le32(head + 4)));
    for (std::int64_t at = 12; at + 8 <= end;) {
        unsigned char chunk[8];
        if (!io->readExact(at, chunk, 8))
            break;
        const std::int64_t size = le32(chunk + 4);
        const std::int64_t body = at + 8;
        if (body + size > io->size())
            break; // a chunk running past the file ends the walk
        Bytes* into = nullptr;
        if (std::memcmp(chunk, "fmt ", 4) == 0)
            into = &m.fmt;
        else if (std::memcmp(chunk, "bext", 4) == 0)
            into = &m.bext;
        else if (std::memcmp(chunk, "LIST", 4) == 0 && size >= 4) {
            unsigned char type[4];
            if (io->readExact(body, type, 4) && std::memcmp(type, "INFO", 4) == 0)
                into = &m.info;
        }
        if (into && into->empty() && static_cast<std::size_t>(size) <= kMaxMetadataBytes) {
            into->resize(static_cast<std::size_t>(size));
            if (!io->readExact(body, into->data(), into->size()))
                into->clear();
        }
        at = body + size + (size & 1);
    }
    return m;
}

struct HeaderCloser
{
    void operator()(WaveHeaderHandle* h) const { CloseWaveHeader(h); }
};

// Rewrites one block of sample values as a WAV holds them (little-endian,
// 8-bit offset binary).
void ToWaveOrder(AudioEngine::SampleEncoding encoding, unsigned char* bytes, std::size_t count)
{
    using E = AudioEngine::SampleEncoding;
    const int width = AudioEngine::BytesPerSample(encoding);
    switch (encoding) {
    case E::Int8:
        for (std::size_t i = 0; i < count; ++i)
            bytes[i] ^= 0x80;
        return;
    case E::Int16Be:
    case E::Int24Be:
    case E::Int32Be:
    case E::Float32Be:
    case E::Float64Be:
        for (std::size_t i = 0; i < count; ++i)
            std::reverse(bytes + i * width, bytes + (i + 1) * width);
        return;
    default:
        return;
    }
}

bool IsFloat(AudioEngine::SampleEncoding e)
{
    using E = AudioEngine::SampleEncoding;
    return e == E::Float32Le || e == E::Float32Be || e == E::Float64Le || e == E::Float64Be;
}

bool WriteAll(QSaveFile& file, const Bytes& bytes)
{
    return file.write(reinterpret_cast<const char*>(bytes.data()),
                      static_cast<qint64>(bytes.size())) == static_cast<qint64>(bytes.size());
}

// RIFF/WAVE with the given chunks before 'data', whose header ends `head`.
Bytes WaveHead(const std::vector<std::pair<const char*, Bytes>>& chunks, std::int64_t dataBytes)
{
    Bytes head = {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E'};
    for (const auto& c : chunks)
        appendChunk(head, c.first, c.second);
    head.insert(head.end(), {'d', 'a', 't', 'a'});
    putLe32(head, static_cast<std::uint32_t>(dataBytes));
    const auto riff = static_cast<std::uint32_t>(head.size() - 8 + dataBytes + (dataBytes & 1));
    for (int i = 0; i < 4; ++i)
        head[static_cast<std::size_t>(4 + i)] = static_cast<unsigned char>(riff >> (8 * i));
    return head;
}

QString ExportWave(const QString& source, std::int64_t first, std::int64_t last, QSaveFile& out,
                   const std::atomic<bool>* cancel)
{
    std::unique_ptr<WaveHeaderHandle, HeaderCloser> h(
        OpenWaveHeader(QFile::encodeName(source).constData()));
    const AudioEngine::SampleEncoding encoding =
        h ? AudioEngine::EncodingOf(*h) : AudioEngine::SampleEncoding::None;
    if (!h || encoding == AudioEngine::SampleEncoding::None || h->channels < 1)
        return Text(QT_TRANSLATE_NOOP("RegionExport", "The file cannot be read."));
    const std::int64_t frames = GetWaveSamples(h.get());
    first = std::clamp<std::int64_t>(first, 0, frames);
    last = std::clamp<std::int64_t>(last, first, frames);
    if (last <= first)
        return Text(QT_TRANSLATE_NOOP("RegionExport", "The region is empty."));
    const int width = AudioEngine::BytesPerSample(encoding);
    const std::int64_t frameBytes = std::int64_t(h->channels) * width;
    const std::int64_t dataBytes = (last - first) * frameBytes;
    if (dataBytes > 0xffffff00LL)
        return Text(QT_TRANSLATE_NOOP("RegionExport", "The region is too long for a WAV file."));

    std::vector<std::pair<const char*, Bytes>> chunks;
    WaveMetadata meta;
    if (h->container == 1)
        meta = ReadWaveMetadata(source);
    // A WAV's own 'fmt ' keeps what the header values do not (extensible layout,
    // channel mask), as long as it describes the same frames.
    const bool ownFmt = meta.fmt.size() >= 16 &&
                        le32(meta.fmt.data() + 4) == static_cast<std::uint32_t>(h->samplingRate) &&
                        (meta.fmt[12] | meta.fmt[13] << 8) == frameBytes;
    chunks.emplace_back(
        "fmt ", ownFmt ? meta.fmt
                       : fmtBody(IsFloat(encoding) ? 3 : 1, h->channels, h->samplingRate, width));
    if (!meta.bext.empty()) {
        if (meta.bext.size() >= kBextTimeReference + 8) {
            unsigned char* p = meta.bext.data() + kBextTimeReference;
            std::uint64_t t = 0;
            for (int i = 7; i >= 0; --i)
                t = t << 8 | p[i];
            t += static_cast<std::uint64_t>(first);
            for (int i = 0; i < 8; ++i)
                p[i] = static_cast<unsigned char>(t >> (8 * i));
        }
        chunks.emplace_back("bext", meta.bext);
    }
    if (!meta.info.empty())
        chunks.emplace_back("LIST", meta.info);
    if (!WriteAll(out, WaveHead(chunks, dataBytes)))
        return Text(QT_TRANSLATE_NOOP("RegionExport", "The region file cannot be written."));

    const Bytes silence(static_cast<std::size_t>(width),
                        encoding == AudioEngine::SampleEncoding::UInt8 ? 0x80 : 0x00);
    Bytes block(static_cast<std::size_t>(kBlockFrames * frameBytes));
    for (std::int64_t at = first; at < last; at += kBlockFrames) {
        if (cancel && cancel->load())
            return Text(QT_TRANSLATE_NOOP("RegionExport", "Cancelled."));
        const std::int64_t n = std::min(kBlockFrames, last - at);
        const auto bytes = static_cast<std::size_t>(n * frameBytes);
        std::size_t got =
            ReadWaveBytes(h.get(), h->dataStart + at * frameBytes, block.data(), bytes);
        got -= got % static_cast<std::size_t>(width);
        ToWaveOrder(encoding, block.data(), got / static_cast<std::size_t>(width));
        // Frames the header states but a cut-off file lacks are written as silence.
        for (std::size_t i = got; i < bytes; i += static_cast<std::size_t>(width))
            std::copy(silence.begin(), silence.end(),
                      block.begin() + static_cast<std::ptrdiff_t>(i));
        if (out.write(reinterpret_cast<const char*>(block.data()), static_cast<qint64>(bytes)) !=
            static_cast<qint64>(bytes))
            return Text(QT_TRANSLATE_NOOP("RegionExport", "The region file cannot be written."));
    }
    if (dataBytes & 1)
        out.write("\0", 1);
    return QString();
}

QString ExportDecoded(const QString& source, std::int64_t first, std::int64_t last, QSaveFile& out,
                      const std::atomic<bool>* cancel)
{
    const std::unique_ptr<AudioEngine::StreamSource> in = OpenFrameSource(source, cancel);
    AudioEngine::StreamFormat format;
    if (!in || !in->Open(format) || format.channels < 1 || format.frameCount < 0)
        return Text(QT_TRANSLATE_NOOP("RegionExport", "The file cannot be read."));
    first = std::clamp<std::int64_t>(first, 0, format.frameCount);
    last = std::clamp<std::int64_t>(last, first, format.frameCount);
    if (last <= first)
        return Text(QT_TRANSLATE_NOOP("RegionExport", "The region is empty."));
    const std::int64_t frameBytes = std::int64_t(format.channels) * 3;
    const std::int64_t dataBytes = (last - first) * frameBytes;
    if (dataBytes > 0xffffff00LL)
        return Text(QT_TRANSLATE_NOOP("RegionExport", "The region is too long for a WAV file."));
    if (!WriteAll(out,
                  WaveHead({{"fmt ", fmtBody(1, format.channels, format.rate, 3)}}, dataBytes)) ||
        !in->Seek(first))
        return Text(QT_TRANSLATE_NOOP("RegionExport", "The region file cannot be written."));
    const auto channels = static_cast<std::size_t>(format.channels);
    std::vector<float> frames(static_cast<std::size_t>(kBlockFrames) * channels);
    Bytes pcm;
    for (std::int64_t at = first; at < last;) {
        if (cancel && cancel->load())
            return Text(QT_TRANSLATE_NOOP("RegionExport", "Cancelled."));
        const long want = static_cast<long>(std::min(kBlockFrames, last - at));
        const long n = std::max(0L, in->Read(frames.data(), want));
        // Past what the decoder gives, silence keeps the stated length.
        std::fill(frames.begin() + static_cast<std::ptrdiff_t>(n * channels),
                  frames.begin() + static_cast<std::ptrdiff_t>(want * channels), 0.0f);
        pcm.clear();
        for (std::size_t i = 0; i < static_cast<std::size_t>(want) * channels; ++i) {
            const double v = std::clamp(static_cast<double>(frames[i]), -1.0, 1.0);
            const auto q = static_cast<std::int32_t>(std::lround(v * 8388607.0));
            const auto u = static_cast<std::uint32_t>(q);
            pcm.push_back(static_cast<unsigned char>(u & 0xff));
            pcm.push_back(static_cast<unsigned char>((u >> 8) & 0xff));
            pcm.push_back(static_cast<unsigned char>((u >> 16) & 0xff));
        }
        if (!WriteAll(out, pcm))
            return Text(QT_TRANSLATE_NOOP("RegionExport", "The region file cannot be written."));
        at += want;
    }
    if (dataBytes & 1)
        out.write("\0", 1);
    return QString();
}

} // namespace

QString RegionFilePath(const QString& folder, const QString& source, std::int64_t startFrame,
                       std::int64_t endFrame, std::int32_t rate)
{
    const auto ms = [rate](std::int64_t frame) { return rate > 0 ? frame * 1000 / rate : frame; };
    return QDir(folder).filePath(QStringLiteral("%1_%2-%3ms.wav")
                                     .arg(QFileInfo(source).completeBaseName())
                                     .arg(ms(startFrame))
                                     .arg(ms(endFrame)));
}

QString ExportRegion(const QString& source, std::int64_t startFrame, std::int64_t endFrame,
                     const QString& target, const std::atomic<bool>* cancel)
{
    if (!QDir().mkpath(QFileInfo(target).absolutePath()))
        return Text(QT_TRANSLATE_NOOP("RegionExport", "The region file cannot be written."));
    QSaveFile out(target);
    if (!out.open(QIODevice::WriteOnly))
        return Text(QT_TRANSLATE_NOOP("RegionExport", "The region file cannot be written."));
    const QString error = IsCompressedAudio(source)
                              ? ExportDecoded(source, startFrame, endFrame, out, cancel)
                              : ExportWave(source, startFrame, endFrame, out, cancel);
    if (!error.isEmpty()) {
        out.cancelWriting();
        return error;
    }
    return out.commit()
               ? QString()
               : Text(QT_TRANSLATE_NOOP("RegionExport", "The region file cannot be written."));
}
