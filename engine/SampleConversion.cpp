#include "SampleConversion.h"

#include <WaveHeaderReader.h>

#include <cmath>
#include <cstring>

namespace AudioEngine {

namespace {

// Values are left-justified into 32 bits first, so 2^31 is full scale for every depth.
constexpr float kIntScale = 1.0f / 2147483648.0f;

inline std::uint32_t Load32(const unsigned char* p, bool bigEndian)
{
    return bigEndian ? std::uint32_t(p[0]) << 24 | std::uint32_t(p[1]) << 16 |
                           std::uint32_t(p[2]) << 8 | p[3]
                     : std::uint32_t(p[3]) << 24 | std::uint32_t(p[2]) << 16 |
                           std::uint32_t(p[1]) << 8 | p[0];
}

inline float FromLeftJustified(std::uint32_t bits)
{
    return static_cast<float>(static_cast<std::int32_t>(bits)) * kIntScale;
}

inline float Finite(float value)
{
    if (std::isfinite(value))
        return value;
    return value > 0.0f ? 1.0f : value < 0.0f ? -1.0f : 0.0f;
}

template<bool BigEndian>
void Int16(const unsigned char* s, float* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; ++i, s += 2) {
        const std::uint32_t v =
            BigEndian ? std::uint32_t(s[0]) << 8 | s[1] : std::uint32_t(s[1]) << 8 | s[0];
        d[i] = FromLeftJustified(v << 16);
    }
}

template<bool BigEndian>
void Int24(const unsigned char* s, float* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; ++i, s += 3) {
        const std::uint32_t v = BigEndian
                                    ? std::uint32_t(s[0]) << 16 | std::uint32_t(s[1]) << 8 | s[2]
                                    : std::uint32_t(s[2]) << 16 | std::uint32_t(s[1]) << 8 | s[0];
        d[i] = FromLeftJustified(v << 8);
    }
}

template<bool BigEndian>
void Int32(const unsigned char* s, float* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; ++i, s += 4)
        d[i] = FromLeftJustified(Load32(s, BigEndian));
}

template<bool BigEndian>
void Float32(const unsigned char* s, float* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; ++i, s += 4) {
        const std::uint32_t bits = Load32(s, BigEndian);
        float value;
        std::memcpy(&value, &bits, sizeof value);
        d[i] = Finite(value);
    }
}

template<bool BigEndian>
void Float64(const unsigned char* s, float* d, std::size_t n)
{
    for (std::size_t i = 0; i < n; ++i, s += 8) {
        const std::uint64_t bits =
            BigEndian ? std::uint64_t(Load32(s, true)) << 32 | Load32(s + 4, true)
                      : std::uint64_t(Load32(s + 4, false)) << 32 | Load32(s, false);
        double value;
        std::memcpy(&value, &bits, sizeof value);
        d[i] = Finite(static_cast<float>(value));
    }
}

} // namespace

SampleEncoding EncodingOf(const WaveHeaderHandle& h)
{
    const bool be = h.samplesBigEndian;
    if (h.coding == WaveSampleCoding::Float) {
        if (h.bytesPerSample == 4)
            return be ? SampleEncoding::Float32Be : SampleEncoding::Float32Le;
        if (h.bytesPerSample == 8)
            return be ? SampleEncoding::Float64Be : SampleEncoding::Float64Le;
        return SampleEncoding::None;
    }
    if (h.coding != WaveSampleCoding::Integer)
        return SampleEncoding::None;
    switch (h.bytesPerSample) {
    case 1:
        return h.unsigned8 ? SampleEncoding::UInt8 : SampleEncoding::Int8;
    case 2:
        return be ? SampleEncoding::Int16Be : SampleEncoding::Int16Le;
    case 3:
        return be ? SampleEncoding::Int24Be : SampleEncoding::Int24Le;
    case 4:
        return be ? SampleEncoding::Int32Be : SampleEncoding::Int32Le;
    default:
        return SampleEncoding::None;
    }
}

std::int32_t BytesPerSample(SampleEncoding encoding)
{
    switch (encoding) {
    case SampleEncoding::None:
        return 0;
    case SampleEncoding::UInt8:
    case SampleEncoding::Int8:
        return 1;
    case SampleEncoding::Int16Le:
    case SampleEncoding::Int16Be:
        return 2;
    case SampleEncoding::Int24Le:
    case SampleEncoding::Int24Be:
        return 3;
    case SampleEncoding::Float32Native:
    case SampleEncoding::Int32Le:
    case SampleEncoding::Int32Be:
    case SampleEncoding::Float32Le:
    case SampleEncoding::Float32Be:
        return 4;
    case SampleEncoding::Float64Le:
    case SampleEncoding::Float64Be:
        return 8;
    }
    return 0;
}

void ConvertSamples(SampleEncoding encoding, const unsigned char* s, float* d, std::size_t n)
{
    switch (encoding) {
    case SampleEncoding::None:
        std::memset(d, 0, n * sizeof(float));
        return;
    case SampleEncoding::Float32Native:
        std::memcpy(d, s, n * sizeof(float));
        return;
    case SampleEncoding::UInt8:
        for (std::size_t i = 0; i < n; ++i)
            d[i] = FromLeftJustified(std::uint32_t(s[i] ^ 0x80u) << 24);
        return;
    case SampleEncoding::Int8:
        for (std::size_t i = 0; i < n; ++i)
            d[i] = FromLeftJustified(std::uint32_t(s[i]) << 24);
        return;
    case SampleEncoding::Int16Le:
        return Int16<false>(s, d, n);
    case SampleEncoding::Int16Be:
        return Int16<true>(s, d, n);
    case SampleEncoding::Int24Le:
        return Int24<false>(s, d, n);
    case SampleEncoding::Int24Be:
        return Int24<true>(s, d, n);
    case SampleEncoding::Int32Le:
        return Int32<false>(s, d, n);
    case SampleEncoding::Int32Be:
        return Int32<true>(s, d, n);
    case SampleEncoding::Float32Le:
        return Float32<false>(s, d, n);
    case SampleEncoding::Float32Be:
        return Float32<true>(s, d, n);
    case SampleEncoding::Float64Le:
        return Float64<false>(s, d, n);
    case SampleEncoding::Float64Be:
        return Float64<true>(s, d, n);
    }
}

} // namespace AudioEngine
