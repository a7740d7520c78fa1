#include "WaveChunkSupport.h"

#include <algorithm>
#include <limits>

using namespace wavechunk;

namespace {

bool parseFmt(ParseState& s, WaveHeaderHandle& h, const unsigned char* b, std::uint32_t size)
{
    const std::uint16_t tag = le16(b);
    const std::uint16_t channels = le16(b + 2);
    const std::uint32_t rate = le32(b + 4);
    const std::uint32_t byteRate = le32(b + 8);
    const std::uint16_t blockAlign = le16(b + 12);
    const std::uint16_t bits = le16(b + 14);
    std::uint16_t format = tag;
    std::uint32_t validBits = bits;
    std::uint32_t containerBytes = (bits + 7u) / 8u;
    if (tag == 0xFFFE) {
        static const unsigned char kGuidTail[14] = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                                    0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};
        const std::uint16_t subFormat = size >= 40 ? le16(b + 24) : 0;
        if (size < 40 || std::memcmp(b + 26, kGuidTail, 14) != 0 ||
            (subFormat != 1 && subFormat != 3)) {
            s.message("E2022092602 : Unrecognizable subformat.");
            return false;
        }
        format = subFormat;
        validBits = le16(b + 18);
        if (validBits == 0 || validBits > bits)
            validBits = bits;
        containerBytes = bits / 8u;
    }
    if (format != 1 && format != 3) {
        s.message(kFormatUnknown);
        return false;
    }
    const WaveSampleCoding coding =
        format == 3 ? WaveSampleCoding::Float : WaveSampleCoding::Integer;
    if (const char* text = checkValues(kWavTexts, rate, channels, validBits, coding)) {
        s.message(text);
        return false;
    }
    if (!containerFits(coding, containerBytes, validBits)) {
        s.message(kWavTexts.bitsUnavailable);
        return false;
    }
    if (blockAlign == 0) {
        s.message("E2006110766 : Unknown block size.");
        return false;
    }
    if (static_cast<std::uint64_t>(rate) * blockAlign != byteRate) {
        s.message("E2006110727 : Wrong byte rate.");
        return false;
    }
    if (containerBytes == 0 || blockAlign != channels * containerBytes) {
        s.message("E2006110728 : The relations among the block size, the quantization bit "
                  "and the number of channels are not correct.");
        return false;
    }
    h.samplingRate = static_cast<std::int32_t>(rate);
    h.channels = channels;
    h.bitDepth = static_cast<std::int32_t>(validBits);
    h.blockAlign = blockAlign;
    h.bytesPerSample = static_cast<std::int32_t>(containerBytes);
    h.coding = coding;
    h.unsigned8 = coding == WaveSampleCoding::Integer && containerBytes == 1;
    h.samplesBigEndian = false;
    s.haveFormat = true;
    return true;
}

void parseCue(ParseState& s, WaveByteSource& io, std::int64_t body, std::uint32_t size)
{
    unsigned char head[4];
    if (size < 4 || !io.readExact(body, head, 4))
        return;
    const std::uint32_t fit = (size - 4) / 24;
    const std::uint32_t count = std::min({le32(head), fit, std::uint32_t(kWaveMaxMarkers)});
    std::vector<unsigned char> points(static_cast<std::size_t>(count) * 24);
    if (!points.empty() && !io.readExact(body + 4, points.data(), points.size()))
        return;
    s.markers.clear();
    for (std::uint32_t i = 0; i < count; ++i) {
        const unsigned char* p = points.data() + i * 24;
        const std::uint32_t position = le32(p + 4);
        const std::uint32_t sampleOffset = le32(p + 20);
        s.markers.push_back({le32(p), sampleOffset != position ? sampleOffset : position, {}});
    }
}

void parseAdtl(ParseState& s, WaveByteSource& io, std::int64_t pos, std::int64_t end)
{
    while (pos + 8 <= end) {
        unsigned char head[8];
        if (!io.readExact(pos, head, 8) || !isPrintableId(head))
            return;
        const std::uint32_t size = le32(head + 4);
        const std::int64_t body = pos + 8;
        if (body + size > end)
            return;
        if (idIs(head, "labl") && size >= 4) {
            const std::size_t textBytes = std::min<std::size_t>(size - 4, kMaxLabelBytes);
            std::vector<char> text(textBytes + 4);
            if (!io.readExact(body, text.data(), textBytes + 4))
                return;
            const char* chars = text.data() + 4;
            s.labels.emplace_back(le32(reinterpret_cast<unsigned char*>(text.data())),
                                  std::string(chars, strnlen(chars, textBytes)));
        }
        pos = body + size + (s.unaligned ? 0 : (size & 1));
    }
}

void parseSmpl(ParseState& s, WaveByteSource& io, std::int64_t body, std::uint32_t size)
{
    unsigned char head[36];
    if (size < 36 || !io.readExact(body, head, 36))
        return;
    const std::uint32_t fit = (size - 36) / 24;
    const std::uint32_t count = std::min({le32(head + 28), fit, std::uint32_t(kWaveMaxLoops)});
    // The sampler-specific data follows the loops, so its size needs no skipping here.
    std::vector<unsigned char> loops(static_cast<std::size_t>(count) * 24);
    if (!loops.empty() && !io.readExact(body + 36, loops.data(), loops.size()))
        return;
    s.loops.clear();
    for (std::uint32_t i = 0; i < count; ++i) {
        const unsigned char* p = loops.data() + i * 24;
        const std::uint32_t end = le32(p + 12);
        // 'smpl' ends are inclusive; ours are one past the last looped sample.
        s.loops.emplace_back(le32(p + 8), end == 0xFFFFFFFFu ? end : end + 1);
    }
}

} // namespace

WaveParseOutcome ParseRiffChunks(WaveHeaderHandle& h)
{
    ParseState s;
    s.unaligned = h.unalignedChunks != 0;
    WaveByteSource& io = *h.io;
    unsigned char form[4];
    if (!io.readExact(8, form, 4) || !idIs(form, "WAVE"))
        return s.fatal(kFormatUnknown);
    h.container = 1;
    h.endian = 1;
    h.formatIndex = 1;

    bool clean = true;
    std::int64_t pos = 12;
    const std::int64_t limit = h.usableSize;
    while (pos + 8 <= limit) {
        unsigned char head[8];
        if (!io.readExact(pos, head, 8) || !isPrintableId(head)) {
            clean = false;
            break;
        }
        std::int64_t size = le32(head + 4);
        const std::int64_t body = pos + 8;
        if (idIs(head, "data")) {
            if (body + size > limit) {
                s.message(kDataSizeWrong);
                size = limit - body;
            }
            s.haveData = true;
            s.dataPos = body;
            s.dataSize = size;
        } else if (body + size > limit) {
            clean = false;
            break;
        } else if (idIs(head, "fmt ")) {
            unsigned char fmt[40] = {};
            const auto want = static_cast<std::size_t>(std::min<std::int64_t>(size, 40));
            if (size < 16 || !io.readExact(body, fmt, want)) {
                clean = false;
                break;
            }
            if (!parseFmt(s, h, fmt, static_cast<std::uint32_t>(size)))
                return s.fatal(nullptr);
        } else if (idIs(head, "cue ")) {
            parseCue(s, io, body, static_cast<std::uint32_t>(size));
        } else if (idIs(head, "smpl")) {
            parseSmpl(s, io, body, static_cast<std::uint32_t>(size));
        } else if (idIs(head, "LIST") && size >= 4) {
            unsigned char type[4];
            if (io.readExact(body, type, 4) && idIs(type, "adtl"))
                parseAdtl(s, io, body + 4, body + size);
        }
        // Every other chunk ('fact', 'LIST'/'INFO', 'inst', 'bext', ...) is only checked for size.
        pos = body + size + (s.unaligned ? 0 : (size & 1));
    }
    if (!s.haveFormat || !s.haveData) {
        if (s.haveData && clean)
            return finish(s, h, kWavTexts); // no 'fmt ': reported as an unknown block size
        s.outcome.result = WaveParseResult::Broken;
        return std::move(s.outcome);
    }
    s.outcome.result = clean ? WaveParseResult::Ok : WaveParseResult::OkWithJunk;
    return finish(s, h, kWavTexts);
}
