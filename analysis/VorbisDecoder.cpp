#include "VorbisDecoder.h"

#include <QFile>
#include <QString>

#include <algorithm>
#include <climits>
#include <cstring>
#include <limits>
#include <vector>

#define STB_VORBIS_HEADER_ONLY
#include <stb_vorbis.h>

namespace {

std::int32_t ReadLe32(const unsigned char* p)
{
    const std::uint32_t v = std::uint32_t(p[0]) | (std::uint32_t(p[1]) << 8) |
                            (std::uint32_t(p[2]) << 16) | (std::uint32_t(p[3]) << 24);
    return static_cast<std::int32_t>(v);
}

} // namespace

bool ReadVorbisHeaderBitRates(const char* localPath, VorbisHeaderBitRates& out)
{
    QFile file(QString::fromLocal8Bit(localPath));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    // Page header (27 bytes), up to 255 lacing values, then the 30-byte packet.
    const QByteArray head = file.read(27 + 255 + 30);
    const auto* p = reinterpret_cast<const unsigned char*>(head.constData());
    const int size = head.size();
    if (size < 27 || std::memcmp(p, "OggS", 4) != 0)
        return false;
    const int packet = 27 + p[26];
    if (size < packet + 28)
        return false;
    const unsigned char* id = p + packet;
    if (id[0] != 1 || std::memcmp(id + 1, "vorbis", 6) != 0)
        return false;
    // type(1) "vorbis"(6) version(4) channels(1) rate(4), then the three rates.
    out.maximum = ReadLe32(id + 16);
    out.nominal = ReadLe32(id + 20);
    out.minimum = ReadLe32(id + 24);
    return true;
}

void VorbisKbps(const VorbisHeaderBitRates& rates, std::int32_t& minKbps, std::int32_t& maxKbps)
{
    const auto kbps = [](std::int32_t bps) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(bps) / 1000u);
    };
    if (rates.maximum == 0) {
        minKbps = maxKbps = kbps(rates.nominal);
        return;
    }
    minKbps = kbps(rates.minimum);
    maxKbps = kbps(rates.maximum);
}

VorbisDecoder::~VorbisDecoder()
{
    if (vorbis)
        stb_vorbis_close(vorbis);
}

bool VorbisDecoder::Open(const char* localPath)
{
    if (vorbis) {
        stb_vorbis_close(vorbis);
        vorbis = nullptr;
    }
    int error = 0;
    vorbis = stb_vorbis_open_filename(localPath, &error, nullptr);
    if (!vorbis)
        return false;
    const stb_vorbis_info info = stb_vorbis_get_info(vorbis);
    if (info.channels <= 0 || info.sample_rate == 0 ||
        info.sample_rate > static_cast<unsigned>(INT_MAX)) {
        stb_vorbis_close(vorbis);
        vorbis = nullptr;
        return false;
    }
    samplingRate = static_cast<std::int32_t>(info.sample_rate);
    channels = info.channels;
    samples = stb_vorbis_stream_length_in_samples(vorbis);
    return true;
}

std::int64_t VorbisDecoder::ReadPlanar(float* const* out, std::int64_t frames)
{
    if (!vorbis || frames <= 0)
        return 0;
    // stb_vorbis takes an int count and a non-const pointer array.
    std::int64_t total = 0;
    const int maxChunk = INT_MAX / 2;
    std::vector<float*> cursors(out, out + channels);
    while (total < frames) {
        const int want = static_cast<int>(std::min<std::int64_t>(frames - total, maxChunk));
        for (int c = 0; c < channels; ++c)
            cursors[static_cast<std::size_t>(c)] = out[c] + total;
        const int got = stb_vorbis_get_samples_float(vorbis, channels, cursors.data(), want);
        if (got <= 0)
            break;
        total += got;
    }
    return total;
}

std::int64_t VorbisDecoder::ReadInterleaved(float* out, std::int64_t frames)
{
    if (!vorbis || frames <= 0)
        return 0;
    std::int64_t total = 0;
    const std::int64_t maxChunk = (INT_MAX / 2) / channels;
    while (total < frames) {
        const auto want = std::min<std::int64_t>(frames - total, maxChunk);
        const int got = stb_vorbis_get_samples_float_interleaved(
            vorbis, channels, out + total * channels, static_cast<int>(want * channels));
        if (got <= 0)
            break;
        total += got;
    }
    return total;
}

QByteArray DecodeVorbisToPcm(const QString& path, std::int32_t& samplingRate,
                             std::int32_t& channels)
{
    VorbisDecoder decoder;
    if (!decoder.Open(path.toLocal8Bit().constData()))
        return {};
    samplingRate = decoder.SamplingRate();
    channels = decoder.Channels();
    const std::int64_t bytes =
        decoder.Samples() * decoder.Channels() * static_cast<std::int64_t>(sizeof(float));
    if (bytes <= 0 || bytes > std::numeric_limits<int>::max())
        return {};
    QByteArray pcm(static_cast<int>(bytes), Qt::Uninitialized);
    const std::int64_t read =
        decoder.ReadInterleaved(reinterpret_cast<float*>(pcm.data()), decoder.Samples());
    pcm.truncate(
        static_cast<int>(read * decoder.Channels() * static_cast<std::int64_t>(sizeof(float))));
    return pcm;
}
