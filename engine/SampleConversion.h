#pragma once

#include <cstddef>
#include <cstdint>

struct WaveHeaderHandle;

namespace AudioEngine {

// How one sample value is stored in a sound's memory.
enum class SampleEncoding : std::int32_t
{
    None = 0,
    Float32Native, // host floats, read in place (decoded MP3/Ogg PCM)
    UInt8,         // WAV 8-bit: offset binary
    Int8,          // AIFF 8-bit: two's complement
    Int16Le,
    Int16Be,
    Int24Le,
    Int24Be,
    Int32Le,
    Int32Be,
    Float32Le,
    Float32Be,
    Float64Le,
    Float64Be,
};

// The encoding of the data block the reader found; None when it cannot be played.
SampleEncoding EncodingOf(const WaveHeaderHandle& header);
std::int32_t BytesPerSample(SampleEncoding encoding);

// Converts `count` values to float: integers scaled so that full scale is 1.0
// whatever the bit depth, floats as stored, except that NaN becomes silence and
// infinity full scale (one bad value would otherwise ring through the resampler).
// No allocation: safe in the device callback.
void ConvertSamples(SampleEncoding encoding, const unsigned char* source, float* destination,
                    std::size_t count);

} // namespace AudioEngine
