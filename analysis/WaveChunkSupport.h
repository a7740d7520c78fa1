#pragma once

// Pieces the RIFF, FORM and CAF chunk walkers share. Private to the reader.

#include "WaveByteSource.h"
#include "WaveChunkParser.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace wavechunk {

inline constexpr std::int64_t kMaxSamplingRate = 1536000;
inline constexpr std::size_t kMaxLabelBytes = 1024;

inline std::uint16_t le16(const unsigned char* p)
{
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}
inline std::uint32_t le32(const unsigned char* p)
{
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}
inline std::uint16_t be16(const unsigned char* p)
{
    return static_cast<std::uint16_t>((p[0] << 8) | p[1]);
}
inline std::uint32_t be32(const unsigned char* p)
{
    return (static_cast<std::uint32_t>(p[0]) << 24) | (static_cast<std::uint32_t>(p[1]) << 16) |
           (static_cast<std::uint32_t>(p[2]) << 8) | static_cast<std::uint32_t>(p[3]);
}
inline std::uint64_t be64(const unsigned char* p)
{
    return (static_cast<std::uint64_t>(be32(p)) << 32) | be32(p + 4);
}

inline bool isPrintableId(const unsigned char* id)
{
    for (int i = 0; i < 4; ++i) {
        if (id[i] < 32 || id[i] > 126)
            return false;
    }
    return true;
}

inline bool idIs(const unsigned char* id, const char* name)
{
    return std::memcmp(id, name, 4) == 0;
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

inline constexpr ValueTexts kWavTexts{
    "E2006110771 : Sampling frequency is wrong.",
    "E2006110772 : This sampling frequency is not available.",
    "E2006110773 : The number of channels is wrong.",
    "E2006110774 : Quantization bits is wrong.",
    "E2006110775 : This quantization bits is not available.",
    "E2006110776 : The number of samples is wrong.",
};
inline constexpr ValueTexts kAiffTexts{
    "E2006110866 : Sampling frequency is wrong.",
    "E2006110867 : This sampling frequency is not available.",
    "E2006110868 : The number of channels is wrong.",
    "E2006110869 : Quantization bits is wrong.",
    "E2006110870 : This quantization bits is not available.",
    "E2006110871 : The number of samples is wrong.",
};

inline constexpr const char* kDataSizeWrong =
    "W2006110765 : The size written in 'data' chunk is wrong.";
inline constexpr const char* kFormatUnknown = "E2006110887 : Can not confirm the file format.";

// 80-bit IEEE extended (the AIFF rate) to double.
double extendedToDouble(const unsigned char* p);
// A rate in Hz, 0 for anything not positive.
std::int32_t clampRate(double rate);
// Checks rate, channels and bits; returns the failing text or nullptr.
const char* checkValues(const ValueTexts& texts, std::int64_t rate, std::int64_t channels,
                        std::int64_t bits, WaveSampleCoding coding);
// The decoder reads integers of 1 to 4 bytes and floats of 4 or 8.
bool containerFits(WaveSampleCoding coding, std::uint32_t containerBytes, std::uint32_t bits);
// Markers, labels and loops into the handle; then samples from the data size.
WaveParseOutcome finish(ParseState& s, WaveHeaderHandle& h, const ValueTexts& texts);

} // namespace wavechunk
