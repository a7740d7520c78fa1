#include "WaveChunkSupport.h"

#include <algorithm>
#include <limits>

using namespace wavechunk;

namespace {

bool parseComm(ParseState& s, WaveHeaderHandle& h, const unsigned char* b, std::int64_t size,
               bool aifc)
{
    const std::int16_t channels = static_cast<std::int16_t>(be16(b));
    s.frames = be32(b + 2);
    std::int16_t bits = static_cast<std::int16_t>(be16(b + 6));
    const std::int32_t rate = clampRate(extendedToDouble(b + 8));
    WaveSampleCoding coding = WaveSampleCoding::Integer;
    bool bigEndian = true;
    if (aifc) {
        if (size < 22) {
            s.message(kFormatUnknown);
            return false;
        }
        const unsigned char* c = b + 18;
        if (idIs(c, "NONE") || idIs(c, "twos")) {
        } else if (idIs(c, "sowt")) {
            bigEndian = false;
        } else if (idIs(c, "in24")) {
            bits = 24;
        } else if (idIs(c, "in32")) {
            bits = 32;
        } else if (idIs(c, "fl32") || idIs(c, "FL32")) {
            coding = WaveSampleCoding::Float;
            bits = 32;
        } else if (idIs(c, "fl64") || idIs(c, "FL64")) {
            coding = WaveSampleCoding::Float;
            bits = 64;
        } else {
            s.message(kFormatUnknown);
            return false;
        }
    }
    if (const char* text = checkValues(kAiffTexts, rate, channels, bits, coding)) {
        s.message(text);
        return false;
    }
    h.samplingRate = rate;
    h.channels = channels;
    h.bitDepth = bits;
    h.bytesPerSample = (bits + 7) / 8;
    h.blockAlign = channels * h.bytesPerSample;
    h.coding = coding;
    h.samplesBigEndian = bigEndian;
    h.unsigned8 = false;
    s.haveFormat = true;
    return true;
}

void parseMark(ParseState& s, WaveByteSource& io, std::int64_t body, std::int64_t size)
{
    unsigned char head[2];
    if (size < 2 || !io.readExact(body, head, 2))
        return;
    const std::uint16_t count = be16(head);
    std::int64_t pos = body + 2;
    const std::int64_t end = body + size;
    s.markers.clear();
    for (std::uint16_t i = 0; i < count && s.markers.size() < kWaveMaxMarkers; ++i) {
        unsigned char m[7];
        if (pos + 7 > end || !io.readExact(pos, m, 7))
            break;
        const std::int64_t nameBytes = m[6];
        std::string name(static_cast<std::size_t>(nameBytes), '\0');
        if (pos + 7 + nameBytes > end ||
            (nameBytes > 0 && !io.readExact(pos + 7, name.data(), name.size())))
            break;
        name.resize(strnlen(name.c_str(), name.size()));
        s.markers.push_back({be16(m), be32(m + 2), std::move(name)});
        // The name is a Pascal string padded to an even total length.
        pos += 6 + ((1 + nameBytes + 1) & ~std::int64_t(1));
    }
}

} // namespace

WaveParseOutcome ParseFormChunks(WaveHeaderHandle& h)
{
    ParseState s;
    s.unaligned = h.unalignedChunks != 0;
    WaveByteSource& io = *h.io;
    unsigned char form[4];
    if (!io.readExact(8, form, 4) || !(idIs(form, "AIFF") || idIs(form, "AIFC")))
        return s.fatal(kFormatUnknown);
    const bool aifc = idIs(form, "AIFC");
    h.container = 2;
    h.endian = 2;
    h.formatIndex = 2;

    bool clean = true;
    std::int64_t pos = 12;
    const std::int64_t limit = h.usableSize;
    while (pos + 8 <= limit) {
        unsigned char head[8];
        if (!io.readExact(pos, head, 8) || !isPrintableId(head)) {
            clean = false;
            break;
        }
        std::int64_t size = be32(head + 4);
        const std::int64_t body = pos + 8;
        if (idIs(head, "SSND")) {
            if (body + size > limit) {
                s.message(kDataSizeWrong);
                size = limit - body;
            }
            unsigned char ssnd[4];
            if (size < 8 || !io.readExact(body, ssnd, 4)) {
                clean = false;
                break;
            }
            const std::int64_t offset = std::min<std::int64_t>(be32(ssnd), size - 8);
            s.haveData = true;
            s.dataPos = body + 8 + offset;
            s.dataSize = size - 8 - offset;
        } else if (body + size > limit) {
            clean = false;
            break;
        } else if (idIs(head, "COMM")) {
            unsigned char comm[22] = {};
            const auto want = static_cast<std::size_t>(std::min<std::int64_t>(size, 22));
            if (size < 18 || !io.readExact(body, comm, want)) {
                clean = false;
                break;
            }
            if (!parseComm(s, h, comm, size, aifc))
                return s.fatal(nullptr);
        } else if (idIs(head, "MARK")) {
            parseMark(s, io, body, size);
        } else if (idIs(head, "INST")) {
            unsigned char inst[20];
            if (size >= 20 && io.readExact(body, inst, 20)) {
                s.loopMarkerIds.clear();
                for (const int at : {8, 14}) { // sustain loop, then release loop
                    if (be16(inst + at) != 0)  // play mode 0: no looping
                        s.loopMarkerIds.emplace_back(be16(inst + at + 2), be16(inst + at + 4));
                }
            }
        }
        // 'FVER', 'MIDI', 'AESD', 'APPL', 'COMT', 'NAME' and the text chunks: size only.
        pos = body + size + (s.unaligned ? 0 : (size & 1));
    }
    if (s.haveFormat && !s.haveData && s.frames == 0 && clean) {
        s.haveData = true; // an empty AIFF may leave out 'SSND'
        s.dataPos = limit;
    }
    if (!s.haveFormat || !s.haveData) {
        s.outcome.result = WaveParseResult::Broken;
        return std::move(s.outcome);
    }
    s.outcome.result = clean ? WaveParseResult::Ok : WaveParseResult::OkWithJunk;
    return finish(s, h, kAiffTexts);
}

// CAF: 64-bit chunk sizes, no stated file size, no padding.

WaveParseOutcome ParseCafChunks(WaveHeaderHandle& h)
{
    ParseState s;
    WaveByteSource& io = *h.io;
    h.container = 3;
    h.endian = 2;
    h.formatIndex = 3;
    std::int64_t pos = 8;
    const std::int64_t limit = h.usableSize;
    while (pos + 12 <= limit) {
        unsigned char head[12];
        if (!io.readExact(pos, head, 12) || !isPrintableId(head))
            break;
        std::int64_t size = static_cast<std::int64_t>(be64(head + 4));
        const std::int64_t body = pos + 12;
        if (idIs(head, "data")) {
            // -1 (or anything past the end) means the data runs to the end of the file.
            if (size < 4 || size > limit - body)
                size = limit - body;
            if (size < 4)
                break;
            s.haveData = true;
            s.dataPos = body + 4; // after the edit count
            s.dataSize = size - 4;
        } else if (size < 0 || size > limit - body) {
            break;
        } else if (idIs(head, "desc") && size >= 32) {
            unsigned char d[32];
            if (!io.readExact(body, d, 32))
                break;
            double rate = 0.0;
            const std::uint64_t rateBits = be64(d);
            std::memcpy(&rate, &rateBits, sizeof rate);
            if (!idIs(d + 8, "lpcm"))
                return s.fatal(kFormatUnknown);
            const std::uint32_t flags = be32(d + 12);
            const std::uint32_t bytesPerPacket = be32(d + 16);
            const std::uint32_t channels = be32(d + 24);
            const std::uint32_t bits = be32(d + 28);
            const WaveSampleCoding coding =
                (flags & 1) ? WaveSampleCoding::Float : WaveSampleCoding::Integer;
            if (const char* text =
                    checkValues(kWavTexts, clampRate(rate),
                                std::min<std::uint32_t>(channels, 65535), bits, coding))
                return s.fatal(text);
            const std::uint32_t containerBytes = channels ? bytesPerPacket / channels : 0;
            if (!containerFits(coding, containerBytes, bits) ||
                bytesPerPacket != channels * containerBytes)
                return s.fatal("E2006110728 : The relations among the block size, the "
                               "quantization bit and the number of channels are not correct.");
            h.samplingRate = clampRate(rate);
            h.channels = static_cast<std::int32_t>(channels);
            h.bitDepth = static_cast<std::int32_t>(bits);
            h.bytesPerSample = static_cast<std::int32_t>(containerBytes);
            h.blockAlign = static_cast<std::int32_t>(bytesPerPacket);
            h.coding = coding;
            h.samplesBigEndian = (flags & 2) == 0;
            s.haveFormat = true;
        }
        pos = body + size;
    }
    if (!s.haveFormat || !s.haveData) {
        s.outcome.result = WaveParseResult::Broken;
        return std::move(s.outcome);
    }
    s.outcome.result = WaveParseResult::Ok;
    return finish(s, h, kWavTexts);
}
