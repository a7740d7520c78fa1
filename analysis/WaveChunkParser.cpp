#include "WaveChunkParser.h"

#include "WaveByteSource.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr std::int64_t kMaxSamplingRate = 1536000;
constexpr std::size_t kMaxLabelBytes = 1024;

std::uint16_t le16(const unsigned char* p)
{
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}
std::uint32_t le32(const unsigned char* p)
{
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}
std::uint16_t be16(const unsigned char* p)
{
    return static_cast<std::uint16_t>((p[0] << 8) | p[1]);
}
std::uint32_t be32(const unsigned char* p)
{
    return (static_cast<std::uint32_t>(p[0]) << 24) | (static_cast<std::uint32_t>(p[1]) << 16) |
           (static_cast<std::uint32_t>(p[2]) << 8) | static_cast<std::uint32_t>(p[3]);
}
std::uint64_t be64(const unsigned char* p)
{
    return (static_cast<std::uint64_t>(be32(p)) << 32) | be32(p + 4);
}

bool isPrintableId(const unsigned char* id)
{
    for (int i = 0; i < 4; ++i) {
        if (id[i] < 32 || id[i] > 126)
            return false;
    }
    return true;
}

bool idIs(const unsigned char* id, const char* name)
{
    return std::memcmp(id, name, 4) == 0;
}

// AIFF stores the rate as an 80-bit IEEE extended value.
double extendedToDouble(const unsigned char* p)
{
    const int exponent = ((p[0] & 0x7f) << 8) | p[1];
    std::uint64_t mantissa = 0;
    for (int i = 0; i < 8; ++i)
        mantissa = (mantissa << 8) | p[2 + i];
    if (exponent == 0 && mantissa == 0)
        return 0.0;
    if (exponent == 0x7fff)
        return std::numeric_limits<double>::infinity();
    const double value = std::ldexp(static_cast<double>(mantissa), exponent - 16383 - 63);
    return (p[0] & 0x80) ? -value : value;
}

std::int32_t clampRate(double rate)
{
    if (!(rate > 0.0))
        return 0;
    if (rate > static_cast<double>(std::numeric_limits<std::int32_t>::max()))
        return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::lround(rate));
}

struct Marker
{
    std::uint32_t id;
    std::uint32_t position;
    std::string label;
};

// Everything a walk collects before the handle is filled.
struct ParseState
{
    WaveParseOutcome outcome;
    bool unaligned = false;
    bool haveFormat = false;
    bool haveData = false;
    std::int64_t dataPos = 0;
    std::int64_t dataSize = 0;
    std::uint64_t frames = 0; // AIFF 'COMM' frame count
    std::vector<Marker> markers;
    std::vector<std::pair<std::uint32_t, std::string>> labels;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> loops;
    // AIFF loops refer to marker IDs.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> loopMarkerIds;

    void message(const char* text) { outcome.messages.emplace_back(text); }
    WaveParseOutcome fatal(const char* text)
    {
        if (text)
            message(text);
        outcome.result = WaveParseResult::Fatal;
        return std::move(outcome);
    }
};

// The texts of the header-value checks; AIFF has its own codes.
struct ValueTexts
{
    const char* rateWrong;
    const char* rateUnavailable;
    const char* channelsWrong;
    const char* bitsWrong;
    const char* bitsUnavailable;
    const char* samplesWrong;
};

constexpr ValueTexts kWavTexts{
    "E2006110771 : Sampling frequency is wrong.",
    "E2006110772 : This sampling frequency is not available.",
    "E2006110773 : The number of channels is wrong.",
    "E2006110774 : Quantization bits is wrong.",
    "E2006110775 : This quantization bits is not available.",
    "E2006110776 : The number of samples is wrong.",
};
constexpr ValueTexts kAiffTexts{
    "E2006110866 : Sampling frequency is wrong.",
    "E2006110867 : This sampling frequency is not available.",
    "E2006110868 : The number of channels is wrong.",
    "E2006110869 : Quantization bits is wrong.",
    "E2006110870 : This quantization bits is not available.",
    "E2006110871 : The number of samples is wrong.",
};

constexpr const char* kDataSizeWrong = "W2006110765 : The size written in 'data' chunk is wrong.";
constexpr const char* kFormatUnknown = "E2006110887 : Can not confirm the file format.";

// Checks rate, channels and bits; returns the failing text or nullptr.
const char* checkValues(const ValueTexts& texts, std::int64_t rate, std::int64_t channels,
                        std::int64_t bits, WaveSampleCoding coding)
{
    if (rate <= 0)
        return texts.rateWrong;
    if (rate > kMaxSamplingRate)
        return texts.rateUnavailable;
    if (channels <= 0)
        return texts.channelsWrong;
    if (bits <= 0)
        return texts.bitsWrong;
    if (coding == WaveSampleCoding::Float ? (bits != 32 && bits != 64) : bits > 32)
        return texts.bitsUnavailable;
    return nullptr;
}

// The decoder reads integers of 1 to 4 bytes and floats of 4 or 8.
bool containerFits(WaveSampleCoding coding, std::uint32_t containerBytes, std::uint32_t bits)
{
    if (coding == WaveSampleCoding::Float)
        return containerBytes * 8 == bits;
    return containerBytes >= 1 && containerBytes <= 4 && containerBytes * 8 >= bits;
}

// Markers, labels and loops into the handle; then samples from the data size.
WaveParseOutcome finish(ParseState& s, WaveHeaderHandle& h, const ValueTexts& texts)
{
    if (h.blockAlign <= 0)
        return s.fatal("E2006110766 : Unknown block size.");
    std::uint64_t frames = static_cast<std::uint64_t>(s.dataSize) / h.blockAlign;
    if (h.formatIndex == 2)
        frames = std::min(frames, s.frames); // 'COMM' states the count; the data may be short
    if (frames > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max()))
        return s.fatal(texts.samplesWrong);
    h.samples = static_cast<std::int32_t>(frames);
    h.dataStart = s.dataPos;
    h.dataOffset = static_cast<std::int32_t>(
        std::min<std::int64_t>(s.dataPos, std::numeric_limits<std::int32_t>::max()));
    h.dataBytes = static_cast<std::int64_t>(frames) * h.blockAlign;

    const std::size_t markerCount = std::min<std::size_t>(s.markers.size(), kWaveMaxMarkers);
    h.markerCount = static_cast<std::int32_t>(markerCount);
    h.markerLabels.assign(markerCount, std::string());
    for (std::size_t i = 0; i < markerCount; ++i) {
        h.markerIds[i] = s.markers[i].id;
        h.markerPositions[i] = s.markers[i].position;
        h.markerLabels[i] = s.markers[i].label;
    }
    for (const auto& [id, text] : s.labels) {
        const std::int32_t index = FindMarkerIndex(&h, id);
        if (index < 0)
            s.message("W2018051502 : A label is not associated with any marker.");
        else
            h.markerLabels[index] = text;
    }
    for (const auto& [beginId, endId] : s.loopMarkerIds) {
        const std::int32_t begin = FindMarkerIndex(&h, beginId);
        const std::int32_t end = FindMarkerIndex(&h, endId);
        if (begin >= 0 && end >= 0 && h.markerPositions[begin] < h.markerPositions[end])
            s.loops.emplace_back(h.markerPositions[begin], h.markerPositions[end]);
    }
    const std::size_t loopCount = std::min<std::size_t>(s.loops.size(), kWaveMaxLoops);
    h.loopCount = static_cast<std::int32_t>(loopCount);
    for (std::size_t i = 0; i < loopCount; ++i) {
        h.loopStarts[i] = s.loops[i].first;
        h.loopEnds[i] = s.loops[i].second;
    }
    h.position = h.dataStart;
    h.readPosition = h.dataOffset;
    return std::move(s.outcome);
}

// ---- RIFF/WAVE ----

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

void ResetParsedFields(WaveHeaderHandle& h)
{
    h.container = h.endian = h.formatIndex = 0;
    h.samplingRate = h.channels = h.bitDepth = h.samples = h.dataOffset = 0;
    h.markerCount = h.loopCount = 0;
    h.markerIds.fill(0);
    h.markerPositions.fill(0);
    h.loopStarts.fill(0);
    h.loopEnds.fill(0);
    h.readPosition = 0;
    h.dataStart = h.dataBytes = h.position = 0;
    h.blockAlign = h.bytesPerSample = 0;
    h.coding = WaveSampleCoding::None;
    h.samplesBigEndian = h.unsigned8 = false;
    h.markerLabels.clear();
}

std::int64_t WalkRiffFormSize(WaveByteSource& io, bool bigEndian, std::int64_t fileSize)
{
    std::int64_t pos = 12;
    while (pos + 8 <= fileSize) {
        unsigned char head[8];
        if (!io.readExact(pos, head, 8) || !isPrintableId(head))
            break;
        pos += 8 + static_cast<std::int64_t>(bigEndian ? be32(head + 4) : le32(head + 4));
        if (pos & 1)
            ++pos;
    }
    return pos;
}

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

// ---- FORM/AIFF ----

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

// ---- CAF ----

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
