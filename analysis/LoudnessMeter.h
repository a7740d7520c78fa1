#pragma once

// Integrated loudness after ITU-R BS.1770: K-weighting, 400 ms blocks every
// 100 ms, absolute gate at -70 LUFS and relative gate 10 LU below.
// MeasureLoudness works on planar float samples held whole in memory and
// allocates nothing (its state lives in a work area the caller supplies);
// LoudnessStream is the same meter fed block by block.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

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
// +-1.0. Rates outside 8 to 384 kHz, where the K-weighting filters do not hold,
// and results that are not finite give an invalid result. Up to 8 channels are used; the fourth
// (LFE) is not measured. The work area must be aligned for pointers.
LoudnessResult MeasureLoudness(const LoudnessConfig& config, void* work, std::size_t workSize,
                               const float* const* channels);

// The same meter fed block by block: frames arrive interleaved in any block
// sizes and are measured in the same 100 ms steps, so the result is bit for
// bit that of MeasureLoudness over the whole input. Memory: the block history
// (8 bytes per 100 ms) and one 100 ms buffer per channel.
class LoudnessStream final
{
public:
    LoudnessStream();
    ~LoudnessStream();
    LoudnessStream(const LoudnessStream&) = delete;
    LoudnessStream& operator=(const LoudnessStream&) = delete;

    // False when the input cannot be measured (no samples, a rate outside
    // 8 to 384 kHz, no channels) or the state cannot be had.
    bool start(const LoudnessConfig& config);
    // `frames` frames of config.channels interleaved floats.
    void feed(const float* interleaved, std::uint32_t frames);
    // Invalid when not started or the value is not finite.
    LoudnessResult finish();

private:
    void flush();

    std::unique_ptr<std::max_align_t[]> m_work;
    std::vector<float> m_staging;
    void* m_meter = nullptr;
    std::uint32_t m_channels = 0;
    std::uint32_t m_staged = 0;
    std::uint32_t m_fed = 0;
};

// Measures a WAV or AIFF file, streamed in blocks. Returns false when the file cannot be
// measured (unreadable, more than 8 channels, no samples). `samplePeak`, when
// given, receives the largest absolute sample (full scale 1.0), or -1 when the
// samples could not all be read.
bool MeasureFileLoudness(const char* localPath, float* out, float* samplePeak = nullptr);
