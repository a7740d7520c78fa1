#include "FlacLayout.h"

#include "AnalysisErrors.h"
#include "WaveByteSource.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

constexpr int kBlockStreamInfo = 0;
constexpr int kBlockSeekTable = 3;
constexpr int kBlockComment = 4;
constexpr int kBlockInvalid = 127;
// Real files hold a dozen blocks; tens of thousands are damage, and libFLAC
// would walk them all.
constexpr int kMaxBlocks = 16384;
// Headers that pass every check yet do not follow another frame are tried
// this many times before the end counts as damaged.
constexpr int kMaxEndCandidates = 64;
// Bytes of no known kind after the last frame that are still passed over.
constexpr std::int64_t kTrailingSlack = 64 * 1024;

std::uint32_t be16(const unsigned char* p)
{
    return (std::uint32_t(p[0]) << 8) | p[1];
}

std::uint32_t be24(const unsigned char* p)
{
    return (std::uint32_t(p[0]) << 16) | (std::uint32_t(p[1]) << 8) | p[2];
}

std::uint32_t le32(const unsigned char* p)
{
    return std::uint32_t(p[0]) | (std::uint32_t(p[1]) << 8) | (std::uint32_t(p[2]) << 16) |
           (std::uint32_t(p[3]) << 24);
}

// CRC-8 of frame headers: polynomial x^8 + x^2 + x + 1, initial value 0.
std::uint8_t crc8(const unsigned char* p, std::size_t n)
{
    std::uint8_t crc = 0;
    for (std::size_t i = 0; i < n; ++i) {
        crc ^= p[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = static_cast<std::uint8_t>((crc & 0x80) ? (crc << 1) ^ 0x07 : crc << 1);
    }
    return crc;
}

// ID3v2 tags before "fLaC": ten bytes of header with a synchsafe size.
std::int64_t skipId3v2(WaveByteSource& bytes)
{
    unsigned char h[10];
    if (!bytes.readExact(0, h, sizeof h) || std::memcmp(h, "ID3", 3) != 0)
        return 0;
    std::int64_t size = 0;
    for (int i = 6; i < 10; ++i) {
        if (h[i] & 0x80)
            return 0;
        size = (size << 7) | h[i];
    }
    return 10 + size + ((h[5] & 0x10) ? 10 : 0);
}

bool parseStreamInfo(const unsigned char* p, FlacStreamInfo& info)
{
    info.minBlockSize = be16(p);
    info.maxBlockSize = be16(p + 2);
    info.sampleRate = (std::uint32_t(p[10]) << 12) | (std::uint32_t(p[11]) << 4) | (p[12] >> 4);
    info.channels = ((p[12] >> 1) & 7u) + 1;
    info.bitsPerSample = (((p[12] & 1u) << 4) | (p[13] >> 4)) + 1;
    info.totalSamples = (std::uint64_t(p[13] & 0x0F) << 32) | (std::uint64_t(p[14]) << 24) |
                        (std::uint64_t(p[15]) << 16) | (std::uint64_t(p[16]) << 8) | p[17];
    return info.sampleRate > 0 && info.bitsPerSample >= 4 && info.maxBlockSize >= 16 &&
           info.minBlockSize >= 1 && info.minBlockSize <= info.maxBlockSize;
}

// The end of the frames: an ID3v1 tag and an APEv2 tag may follow them.
std::int64_t framesEnd(WaveByteSource& bytes, std::int64_t framesStart)
{
    std::int64_t end = bytes.size();
    unsigned char tag[32];
    if (end - 128 >= framesStart && bytes.readExact(end - 128, tag, 3) &&
        std::memcmp(tag, "TAG", 3) == 0)
        end -= 128;
    if (end - 32 >= framesStart && bytes.readExact(end - 32, tag, 32) &&
        std::memcmp(tag, "APETAGEX", 8) == 0) {
        // The size counts the items and this footer; a header may precede them.
        const std::int64_t size = le32(tag + 12) + ((le32(tag + 20) & 0x80000000u) ? 32 : 0);
        if (size >= 32 && end - size >= framesStart)
            end -= size;
    }
    return end;
}

// Bytes of a UTF-8-style coded frame or sample number, or 0 when malformed.
int codedNumberLength(unsigned char first)
{
    if (!(first & 0x80))
        return 1;
    for (int length = 2; length <= 7; ++length) {
        const unsigned char lead = static_cast<unsigned char>(0xFF << (8 - length));
        const unsigned char mask = static_cast<unsigned char>(lead | (0x80 >> length));
        if ((first & mask) == lead)
            return length;
    }
    return 0;
}

} // namespace

const char* ReadFlacLayout(WaveByteSource& bytes, FlacLayout& layout)
{
    layout = FlacLayout{};
    const std::int64_t size = bytes.size();
    const std::int64_t start = skipId3v2(bytes);
    unsigned char marker[4];
    if (!bytes.readExact(start, marker, 4) || std::memcmp(marker, "fLaC", 4) != 0)
        return kErrorNotFlac;
    std::int64_t pos = start + 4;
    for (int block = 0;; ++block) {
        unsigned char h[4];
        if (block >= kMaxBlocks || !bytes.readExact(pos, h, 4))
            return kErrorFlacHeaderDamaged;
        const int type = h[0] & 0x7F;
        const std::int64_t body = pos + 4;
        const std::uint32_t length = be24(h + 1);
        if (type == kBlockInvalid || body + length > size)
            return kErrorFlacHeaderDamaged;
        if (block == 0) {
            unsigned char info[34];
            if (type != kBlockStreamInfo || length < sizeof info ||
                !bytes.readExact(body, info, sizeof info) || !parseStreamInfo(info, layout.info))
                return kErrorFlacHeaderDamaged;
            layout.streamInfoBody = body;
        } else if (type == kBlockStreamInfo ||
                   (type == kBlockSeekTable && length > kMaxFlacSeekTableBytes)) {
            layout.hiddenBlocks.push_back(pos);
        } else if (type == kBlockComment && layout.commentBody < 0) {
            layout.commentBody = body;
            layout.commentBytes = length;
        }
        pos = body + length;
        if (h[0] & 0x80)
            break;
    }
    layout.framesStart = pos;
    layout.framesEnd = framesEnd(bytes, pos);
    return nullptr;
}

bool ParseFlacFrameHeader(const unsigned char* p, std::size_t n, const FlacStreamInfo& info,
                          FlacFrameHeader& header)
{
    if (n < 6 || p[0] != 0xFF || (p[1] & 0xFE) != 0xF8 || (p[3] & 1))
        return false;
    const bool variable = (p[1] & 1) != 0;
    const int blockCode = p[2] >> 4;
    const int rateCode = p[2] & 0x0F;
    const int channelCode = p[3] >> 4;
    const int depthCode = (p[3] >> 1) & 7;
    if (blockCode == 0 || rateCode == 15 || channelCode > 10 || depthCode == 3)
        return false;
    const std::uint32_t channels = channelCode < 8 ? std::uint32_t(channelCode) + 1 : 2;
    static constexpr std::uint32_t kDepths[8] = {0, 8, 12, 0, 16, 20, 24, 32};
    const std::uint32_t depth = depthCode == 0 ? info.bitsPerSample : kDepths[depthCode];
    if (channels != info.channels || depth != info.bitsPerSample)
        return false;

    std::size_t at = 4;
    const int numberBytes = codedNumberLength(p[at]);
    if (numberBytes == 0 || numberBytes > (variable ? 7 : 6) || at + std::size_t(numberBytes) > n)
        return false;
    std::uint64_t number = numberBytes == 1 ? p[at] : (p[at] & (0x7Fu >> numberBytes)) & 0xFFu;
    for (int i = 1; i < numberBytes; ++i) {
        const unsigned char c = p[at + std::size_t(i)];
        if ((c & 0xC0) != 0x80)
            return false;
        number = (number << 6) | (c & 0x3Fu);
    }
    at += std::size_t(numberBytes);

    std::uint32_t blockSize = 0;
    if (blockCode == 1) {
        blockSize = 192;
    } else if (blockCode <= 5) {
        blockSize = 576u << (blockCode - 2);
    } else if (blockCode == 6) {
        if (at + 1 > n)
            return false;
        blockSize = p[at++] + 1u;
    } else if (blockCode == 7) {
        if (at + 2 > n)
            return false;
        blockSize = be16(p + at) + 1u;
        at += 2;
    } else {
        blockSize = 256u << (blockCode - 8);
    }

    static constexpr std::uint32_t kRates[12] = {0,     88200, 176400, 192000, 8000,  16000,
                                                 22050, 24000, 32000,  44100,  48000, 96000};
    std::uint32_t rate = info.sampleRate;
    if (rateCode >= 1 && rateCode <= 11) {
        rate = kRates[rateCode];
    } else if (rateCode == 12) {
        if (at + 1 > n)
            return false;
        rate = p[at++] * 1000u;
    } else if (rateCode >= 13) {
        if (at + 2 > n)
            return false;
        rate = be16(p + at) * (rateCode == 13 ? 1u : 10u);
        at += 2;
    }
    if (rate != info.sampleRate || at + 1 > n || crc8(p, at) != p[at])
        return false;
    if (blockSize > info.maxBlockSize)
        return false;
    if (!variable) {
        // Fixed-size blocks are numbered by frame; only a stream that states
        // one block size says how many samples a frame number stands for.
        if (info.minBlockSize != info.maxBlockSize)
            return false;
        number *= info.maxBlockSize;
    }
    header.firstSample = number;
    header.blockSize = blockSize;
    return true;
}

std::int64_t MaxFlacFrameBytes(const FlacStreamInfo& info)
{
    // A side channel carries one bit more; each subframe adds its header
    // and a unary wasted-bits count.
    const std::int64_t samples =
        (std::int64_t(info.maxBlockSize) * (info.bitsPerSample + 1) + 7) / 8;
    return 20 + std::int64_t(info.channels) * (samples + 2 + info.bitsPerSample / 8 + 1);
}

std::int64_t FindFlacStreamLength(WaveByteSource& bytes, const FlacLayout& layout)
{
    const std::int64_t span = layout.framesEnd - layout.framesStart;
    if (span <= 0)
        return 0;
    const std::int64_t frameBytes = MaxFlacFrameBytes(layout.info);
    // The last frame, the one before it and what may trail them.
    const std::int64_t window = std::min(span, 2 * frameBytes + kTrailingSlack);
    const std::int64_t from = layout.framesEnd - window;
    std::vector<unsigned char> tail(static_cast<std::size_t>(window));
    if (!bytes.readExact(from, tail.data(), tail.size()))
        return -1;
    const unsigned char* data = tail.data();
    const std::size_t size = tail.size();
    const auto headerAt = [&](std::size_t at, FlacFrameHeader& h) {
        return data[at] == 0xFF && ParseFlacFrameHeader(data + at, size - at, layout.info, h);
    };
    // A frame is at most this many samples long per byte it takes.
    const std::int64_t limit = (span / 8 + 1) * std::int64_t(layout.info.maxBlockSize);

    int candidates = 0;
    for (std::size_t at = size - 1; at-- > 0;) {
        FlacFrameHeader last;
        if (!headerAt(at, last))
            continue;
        if (++candidates > kMaxEndCandidates)
            return -1;
        bool confirmed = from + std::int64_t(at) == layout.framesStart;
        const std::size_t reach = std::size_t(std::min<std::int64_t>(frameBytes, std::int64_t(at)));
        for (std::size_t back = at - reach; !confirmed && back < at; ++back) {
            FlacFrameHeader before;
            confirmed =
                headerAt(back, before) && before.firstSample + before.blockSize == last.firstSample;
        }
        if (!confirmed)
            continue;
        const std::uint64_t end = last.firstSample + last.blockSize;
        return end <= std::uint64_t(limit) ? std::int64_t(end) : -1;
    }
    return -1;
}

CommentLoop ReadFlacCommentLoop(WaveByteSource& bytes, const FlacLayout& layout)
{
    CommentLoop loop;
    if (layout.commentBody < 0)
        return loop;
    const std::int64_t end = layout.commentBody + layout.commentBytes;
    unsigned char word[4];
    // Comments are little-endian length-prefixed strings after the vendor string.
    std::int64_t pos = layout.commentBody;
    if (!bytes.readExact(pos, word, 4))
        return loop;
    pos += 4 + std::int64_t(le32(word));
    if (pos + 4 > end || !bytes.readExact(pos, word, 4))
        return loop;
    const std::uint32_t count = std::min(le32(word), kMaxFlacLoopComments);
    pos += 4;
    std::int64_t start = -1;
    std::int64_t length = 0;
    for (std::uint32_t i = 0; i < count && pos + 4 <= end; ++i) {
        if (!bytes.readExact(pos, word, 4))
            break;
        const std::uint32_t n = le32(word);
        pos += 4;
        if (n > std::uint64_t(end - pos))
            break;
        // Only a comment short enough to be a key and its digits can be a loop.
        char text[32];
        if (n <= sizeof text && bytes.readExact(pos, text, n)) {
            if (start < 0)
                LoopCommentValue(text, n, "LOOPSTART=", start);
            if (length <= 0)
                LoopCommentValue(text, n, "LOOPLENGTH=", length);
        }
        pos += n;
    }
    if (start >= 0 && length > 0) {
        loop.start = start;
        loop.end = start + length;
    }
    return loop;
}
