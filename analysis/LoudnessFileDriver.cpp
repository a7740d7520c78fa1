#include "LoudnessMeter.h"
#include "WaveHeaderReader.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

namespace {

constexpr std::size_t kStaticWorkBytes = 150000;
constexpr std::uint32_t kPoolFrames = 2880000; // 60 s at 48 kHz
constexpr std::uint32_t kMaxChannels = 8;
constexpr std::uint32_t kDecodeFrames = 4096;

// Reused between files: a minute of 48 kHz stereo is measured without
// allocating. Only the detail worker analyses, so the lock is never contended.
std::mutex g_staticMutex;
alignas(16) unsigned char g_work[kStaticWorkBytes];
float g_pool[2][kPoolFrames];

struct HandleCloser
{
    void operator()(WaveHeaderHandle* h) const { CloseWaveHeader(h); }
};

} // namespace

bool MeasureFileLoudness(const char* localPath, float* out, float* samplePeak)
{
    if (samplePeak)
        *samplePeak = -1.0f;
    std::unique_ptr<WaveHeaderHandle, HandleCloser> handle(OpenWaveHeader(localPath));
    if (!handle)
        return false;
    WaveHeaderHandle* h = handle.get();
    const std::int32_t channels = GetWaveChannels(h);
    const std::int32_t rate = GetWaveSamplingRate(h);
    const std::int32_t samples = GetWaveSamples(h);
    if (channels <= 0 || std::uint32_t(channels) > kMaxChannels || rate <= 0 || samples <= 0)
        return false;
    LoudnessConfig config;
    config.channels = std::uint32_t(channels);
    config.samplingRate = std::uint32_t(rate);
    config.samples = std::uint32_t(samples);

    const std::lock_guard<std::mutex> lock(g_staticMutex);
    const std::size_t workSize = GetLoudnessWorkSize(config);
    std::unique_ptr<unsigned char[]> ownWork;
    void* work = g_work;
    if (workSize > kStaticWorkBytes) {
        ownWork.reset(new (std::nothrow) unsigned char[workSize]);
        if (!ownWork)
            return false;
        work = ownWork.get();
    }

    std::vector<std::unique_ptr<float[]>> ownSamples;
    float* planes[kMaxChannels] = {};
    if (config.samples <= kPoolFrames && config.channels <= 2) {
        planes[0] = g_pool[0];
        planes[1] = g_pool[1];
    } else {
        for (std::uint32_t ch = 0; ch < config.channels; ++ch) {
            ownSamples.emplace_back(new (std::nothrow) float[config.samples]);
            if (!ownSamples.back())
                return false;
            planes[ch] = ownSamples.back().get();
        }
    }

    // Left-justified 32-bit values to +-1.0: x 2^-15 x 2^-16.
    std::vector<std::int32_t> decoded(std::size_t(kDecodeFrames) * config.channels);
    std::int64_t largest = 0;
    for (std::uint32_t frame = 0; frame < config.samples;) {
        const std::uint32_t frames = std::min(kDecodeFrames, config.samples - frame);
        const std::int64_t values = std::int64_t(frames) * config.channels;
        if (DecodeSamples(h, decoded.data(), values) != values)
            return false;
        for (std::int64_t i = 0; i < values; ++i)
            largest = std::max(largest, std::abs(std::int64_t(decoded[std::size_t(i)])));
        for (std::uint32_t ch = 0; ch < config.channels; ++ch) {
            float* plane = planes[ch] + frame;
            const std::int32_t* src = decoded.data() + ch;
            for (std::uint32_t i = 0; i < frames; ++i)
                plane[i] =
                    static_cast<float>(src[i * config.channels]) * 3.0517578e-5f * 1.5258789e-5f;
        }
        frame += frames;
    }
    if (samplePeak)
        *samplePeak = static_cast<float>(static_cast<double>(largest) / 2147483648.0);

    const LoudnessResult result = MeasureLoudness(config, work, workSize, planes);
    if (out)
        *out = result.valid ? result.value : kLoudnessFloor;
    return result.valid != 0;
}
