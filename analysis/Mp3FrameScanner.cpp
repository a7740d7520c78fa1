#include "Mp3FrameScanner.h"

#include "AnalysisErrors.h"
#include "WaveByteSource.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::int64_t kResyncWindow = 64 * 1024;
constexpr std::int64_t kMaxLeadingZeros = 64 * 1024;
constexpr int kDecoderDelay = 529; // the decoder's own delay, which the gapless trim adds

struct FrameHeader
{
    int version = 0; // 1 MPEG-1, 2 MPEG-2, 3 MPEG-2.5
    int layer = 0;   // 1, 2, 3
    int kbps = 0;
    int rate = 0;
    int mode = 0; // 3 = mono
    int length = 0;
    int samplesPerFrame = 0;
    bool crc = false;

    int channels() const { return mode == 3 ? 1 : 2; }
    bool sameStream(const FrameHeader& o) const
    {
        return version == o.version && layer == o.layer && rate == o.rate &&
               channels() == o.channels();
    }
};

bool parseHeader(const unsigned char* h, FrameHeader& out)
{
    if (h[0] != 0xFF || (h[1] & 0xE0) != 0xE0)
        return false;
    static const int kVersion[4] = {3, 0, 2, 1};
    static const int kLayer[4] = {0, 3, 2, 1};
    const int version = kVersion[(h[1] >> 3) & 3];
    const int layer = kLayer[(h[1] >> 1) & 3];
    const int bitrateIndex = h[2] >> 4;
    const int rateIndex = (h[2] >> 2) & 3;
    if (version == 0 || layer == 0 || bitrateIndex == 0 || bitrateIndex == 15 || rateIndex == 3)
        return false;
    static const int kKbps[5][15] = {
        {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
        {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
        {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
        {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
        {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
    };
    static const int kRates[3][3] = {
        {44100, 48000, 32000}, {22050, 24000, 16000}, {11025, 12000, 8000}};
    const int table = version == 1 ? layer - 1 : (layer == 1 ? 3 : 4);
    out.version = version;
    out.layer = layer;
    out.kbps = kKbps[table][bitrateIndex];
    out.rate = kRates[version - 1][rateIndex];
    out.mode = h[3] >> 6;
    out.crc = (h[1] & 1) == 0;
    const int padding = (h[2] >> 1) & 1;
    const int bps = out.kbps * 1000;
    if (layer == 1) {
        out.length = (12 * bps / out.rate + padding) * 4;
        out.samplesPerFrame = 384;
    } else if (layer == 3 && version != 1) {
        out.length = 72 * bps / out.rate + padding;
        out.samplesPerFrame = 576;
    } else {
        out.length = 144 * bps / out.rate + padding;
        out.samplesPerFrame = 1152;
    }
    return out.length >= 4;
}

bool headerAt(WaveByteSource& bytes, std::int64_t pos, FrameHeader& out)
{
    unsigned char h[4];
    return bytes.readExact(pos, h, 4) && parseHeader(h, out);
}

struct InfoFrame
{
    bool present = false;
    std::int64_t frames = -1; // -1: not stated
    int delay = -1;
    int padding = -1;
};

std::uint32_t be32(const unsigned char* p)
{
    return (std::uint32_t(p[0]) << 24) | (std::uint32_t(p[1]) << 16) | (std::uint32_t(p[2]) << 8) |
           p[3];
}

// An Info/Xing frame (with LAME's delay and padding when it has them) or a VBRI frame.
InfoFrame readInfoFrame(WaveByteSource& bytes, std::int64_t pos, const FrameHeader& f)
{
    InfoFrame info;
    if (f.layer != 3)
        return info;
    unsigned char frame[2048] = {};
    const auto size = static_cast<std::size_t>(std::min(f.length, int(sizeof frame)));
    if (!bytes.readExact(pos, frame, size))
        return info;
    const int sideInfo = f.version == 1 ? (f.mode == 3 ? 17 : 32) : (f.mode == 3 ? 9 : 17);
    const std::size_t xing = std::size_t(4 + sideInfo);
    if (xing + 8 <= size &&
        (std::memcmp(frame + xing, "Xing", 4) == 0 || std::memcmp(frame + xing, "Info", 4) == 0)) {
        info.present = true;
        const std::uint32_t flags = be32(frame + xing + 4);
        std::size_t at = xing + 8;
        if (flags & 1) {
            if (at + 4 > size)
                return info;
            info.frames = be32(frame + at);
            at += 4;
        }
        at += (flags & 2) ? 4 : 0;
        at += (flags & 4) ? 100 : 0;
        at += (flags & 8) ? 4 : 0;
        // LAME's tag: 9 bytes of encoder name, then delay and padding at +21.
        if (at + 24 <= size &&
            (std::memcmp(frame + at, "LAME", 4) == 0 || std::memcmp(frame + at, "Lavf", 4) == 0 ||
             std::memcmp(frame + at, "Lavc", 4) == 0)) {
            const unsigned char* p = frame + at + 21;
            info.delay = (p[0] << 4) | (p[1] >> 4);
            info.padding = ((p[1] & 0x0F) << 8) | p[2];
        }
        return info;
    }
    if (36 + 18 <= size && std::memcmp(frame + 36, "VBRI", 4) == 0) {
        info.present = true;
        info.frames = be32(frame + 36 + 14);
    }
    return info;
}

std::int64_t skipId3v2(WaveByteSource& bytes, std::int64_t pos)
{
    // Some files carry more than one tag in a row.
    for (int tags = 0; tags < 8; ++tags) {
        unsigned char h[10];
        if (!bytes.readExact(pos, h, 10) || std::memcmp(h, "ID3", 3) != 0 || h[3] == 0xFF ||
            h[4] == 0xFF || ((h[6] | h[7] | h[8] | h[9]) & 0x80) != 0)
            return pos;
        const std::int64_t size = (std::int64_t(h[6]) << 21) | (h[7] << 14) | (h[8] << 7) | h[9];
        pos += 10 + size + ((h[5] & 0x10) ? 10 : 0);
    }
    return pos;
}

bool startsWithOtherFormat(const unsigned char* head)
{
    for (const char* id : {"RIFF", "RIFX", "RF64", "FORM", "OggS", "fLaC"}) {
        if (std::memcmp(head, id, 4) == 0)
            return true;
    }
    return false;
}

// A header that agrees with the stream, confirmed by a second one right after it.
std::int64_t resync(WaveByteSource& bytes, std::int64_t from, const FrameHeader& stream,
                    std::int64_t end)
{
    const std::int64_t limit = std::min(end, from + kResyncWindow);
    unsigned char buffer[4096 + 3];
    for (std::int64_t base = from; base < limit; base += 4096) {
        const std::size_t got = bytes.readAt(base, buffer, sizeof buffer);
        if (got < 4)
            return -1;
        for (std::size_t i = 0; i + 4 <= got && i < 4096; ++i) {
            FrameHeader a, b;
            if (buffer[i] != 0xFF || !parseHeader(buffer + i, a) || !a.sameStream(stream))
                continue;
            const std::int64_t pos = base + std::int64_t(i);
            if (headerAt(bytes, pos + a.length, b) && b.sameStream(stream))
                return pos;
        }
    }
    return -1;
}

} // namespace

Mp3StreamInfo ScanMp3Stream(WaveByteSource& bytes, bool walkFrames)
{
    Mp3StreamInfo out;
    const std::int64_t end = bytes.size();
    unsigned char head[4] = {};
    if (end < 4 || !bytes.readExact(0, head, 4)) {
        out.errorText = kErrorNotMp3;
        return out;
    }
    std::int64_t pos = skipId3v2(bytes, 0);
    unsigned char first[4] = {};
    if (startsWithOtherFormat(head) ||
        (bytes.readExact(pos, first, 4) && startsWithOtherFormat(first))) {
        out.errorText = kErrorOtherFormatAsMp3;
        return out;
    }
    // Zero padding after a tag is common and cannot hold a frame sync.
    for (std::int64_t zeros = 0; zeros < kMaxLeadingZeros && pos < end; ++zeros, ++pos) {
        unsigned char b = 0;
        if (!bytes.readExact(pos, &b, 1) || b != 0)
            break;
    }

    FrameHeader stream;
    if (!headerAt(bytes, pos, stream)) {
        out.errorText = kErrorNotMp3;
        return out;
    }
    const InfoFrame info = readInfoFrame(bytes, pos, stream);
    // The run: each header where the previous frame's length puts it, agreeing
    // exactly (channel mode included) with the first.
    {
        const int needed = info.present ? 1 : 2;
        std::int64_t at = pos;
        FrameHeader previous = stream;
        for (int i = 0; i < needed; ++i) {
            at += previous.length;
            FrameHeader next;
            if (!headerAt(bytes, at, next) || !next.sameStream(stream) ||
                next.mode != stream.mode) {
                out.errorText = kErrorNotMp3;
                return out;
            }
            previous = next;
        }
    }

    out.accepted = true;
    out.samplingRate = stream.rate;
    out.channels = stream.channels();
    out.layer = stream.layer;
    out.samplesPerFrame = stream.samplesPerFrame;
    out.firstFrameOffset = pos;
    if (!walkFrames) {
        // The Info frame's count, when there is one, is the length the walk would find.
        out.samples = -1;
        out.minKbps = out.maxKbps = stream.kbps;
        if (info.frames > 0 && info.delay >= 0 && info.padding >= 0)
            out.samples = std::max<std::int64_t>(0, info.frames * stream.samplesPerFrame -
                                                        info.padding - info.delay);
        else if (info.frames > 0)
            out.samples = info.frames * stream.samplesPerFrame;
        return out;
    }

    bool firstKbps = true;
    std::int64_t at = pos;
    if (info.present)
        at += stream.length; // the Info frame carries no audio
    while (at + 4 <= end) {
        FrameHeader f;
        if (!headerAt(bytes, at, f) || !f.sameStream(stream)) {
            const std::int64_t found = resync(bytes, at + 1, stream, end);
            if (found < 0)
                break;
            at = found;
            continue;
        }
        // A frame cut short by the end of the file is not decoded.
        if (at + f.length > end)
            break;
        ++out.audioFrames;
        if (firstKbps) {
            out.minKbps = out.maxKbps = f.kbps;
            firstKbps = false;
        } else {
            out.minKbps = std::min(out.minKbps, f.kbps);
            out.maxKbps = std::max(out.maxKbps, f.kbps);
        }
        at += f.length;
    }

    const std::int64_t decoded = out.audioFrames * stream.samplesPerFrame;
    if (info.frames > 0 && info.delay >= 0 && info.padding >= 0) {
        const std::int64_t begin = info.delay + kDecoderDelay;
        const std::int64_t stop =
            info.frames * stream.samplesPerFrame - info.padding + kDecoderDelay;
        out.samples = std::max<std::int64_t>(0, std::min(decoded, stop) - begin);
    } else {
        out.samples = decoded;
    }
    return out;
}
