#pragma once

// Integrated loudness after ITU-R BS.1770: K-weighting, 400 ms blocks every
// 100 ms, absolute gate at -70 LUFS and relative gate 10 LU below. The meter
// works on planar float samples held whole in memory and allocates nothing:
// its state lives in a work area the caller supplies.

#include <cstddef>
#include <cstdint>

struct LoudnessConfig
{
    std::uint32_t channels = 0;
    std::uint32_t samplingRate = 0;
    std::uint32_t samples = 0; // frames per channel
};

// Returned as one 64-bit value; callers test valid.
struct LoudnessResult
{
    std::int32_t valid = 0;
    float value = 0.0f; // LUFS
};

inline constexpr float kLoudnessFloor = -96.0f;

// Bytes of work area MeasureLoudness needs for this input.
std::size_t GetLoudnessWorkSize(const LoudnessConfig& config);

// channels holds config.channels arrays of config.samples floats, full scale
// +-1.0. Up to 8 channels are used; the fourth (LFE) is not measured. The work
// area must be aligned for pointers.
LoudnessResult MeasureLoudness(const LoudnessConfig& config, void* work, std::size_t workSize,
                               const float* const* channels);

// Measures a WAV or AIFF file. Reuses static buffers (60 s of 48 kHz stereo),
// so concurrent callers are serialised. Returns false when the file cannot be
// measured (unreadable, more than 8 channels, no samples). `samplePeak`, when
// given, receives the largest absolute sample of every sample read (full
// scale 1.0), or -1 when the samples could not be read.
bool MeasureFileLoudness(const char* localPath, float* out, float* samplePeak = nullptr);
