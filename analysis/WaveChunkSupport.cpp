#include "WaveChunkSupport.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wavechunk {

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

bool containerFits(WaveSampleCoding coding, std::uint32_t containerBytes, std::uint32_t bits)
{
    if (coding == WaveSampleCoding::Float)
        return containerBytes * 8 == bits;
    return containerBytes >= 1 && containerBytes <= 4 && containerBytes * 8 >= bits;
}

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

} // namespace wavechunk

using namespace wavechunk;

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
