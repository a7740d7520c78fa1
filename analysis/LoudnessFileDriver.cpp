#include "AnalysisStop.h"
#include "LoudnessMeter.h"
#include "SamplePeak.h"
#include "WaveSoundSource.h"

#include <algorithm>
#include <vector>

bool MeasureFileLoudness(const char* localPath, float* out, float* samplePeak)
{
    if (samplePeak)
        *samplePeak = -1.0f;
    WaveSoundSource source;
    if (!source.open(localPath))
        return false;
    const std::int32_t channels = source.channels();
    const std::int64_t samples = source.frames();
    if (channels <= 0 || source.samplingRate() <= 0 || samples <= 0)
        return false;
    // More than 8 channels are not measured, but their peak is found as the
    // whole-file analysis finds it.
    const bool metered = channels <= 8;
    LoudnessConfig config;
    config.channels = std::uint32_t(channels);
    config.samplingRate = std::uint32_t(source.samplingRate());
    config.samples = std::uint32_t(samples);
    LoudnessStream meter;
    if (metered && !meter.start(config))
        return false;
    constexpr std::int64_t kBlockFrames = 4096;
    std::vector<float> block(std::size_t(kBlockFrames) * std::size_t(channels));
    float peak = 0.0f;
    for (std::int64_t done = 0; done < samples;) {
        const std::int64_t want = std::min(kBlockFrames, samples - done);
        if (AnalysisStopRequested() || source.read(block.data(), want) != want)
            return false;
        peak = std::max(peak,
                        LargestMagnitude(block.data(), std::size_t(want) * std::size_t(channels)));
        if (metered)
            meter.feed(block.data(), std::uint32_t(want));
        done += want;
    }
    if (samplePeak)
        *samplePeak = peak;
    const LoudnessResult result = metered ? meter.finish() : LoudnessResult{};
    if (out)
        *out = result.valid ? result.value : kLoudnessFloor;
    return result.valid != 0;
}
