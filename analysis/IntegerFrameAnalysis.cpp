#include "IntegerFrameAnalysis.h"

#include "AnalysisStop.h"
#include "AudioFileInfo.h"
#include "IntegerFrameSource.h"
#include "LoudnessMeter.h"
#include "PlotBuilder.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr std::int64_t kBlockFrames = 4096;
// 2^-31: a left-justified 32-bit value to +-1.0.
constexpr float kFullScale = 1.0f / 2147483648.0f;

} // namespace

void StreamIntegerFrames(IntegerFrameSource& source, std::int64_t frames, WavePlotBuilder& plot,
                         AudioFileInfo& info)
{
    const int channels = source.channels();
    LoudnessStream meter;
    LoudnessConfig config;
    config.channels = static_cast<std::uint32_t>(channels);
    config.samplingRate = static_cast<std::uint32_t>(std::max(source.samplingRate(), 0));
    config.samples = static_cast<std::uint32_t>(std::max<std::int64_t>(frames, 0));
    const bool measuring = channels <= 8 && meter.start(config);

    std::vector<std::int32_t> ints(std::size_t(kBlockFrames) * std::size_t(channels));
    std::vector<float> floats(ints.size());
    // The largest and smallest value: the peak is taken from the integers, which
    // gives the same float as from the converted samples (rounding to float is
    // symmetric, and the scale a power of two) and keeps the loop free of a
    // float dependency chain.
    std::int32_t highest = 0;
    std::int32_t lowest = 0;
    std::int64_t done = 0;
    bool complete = true;
    while (done < frames) {
        const std::int64_t want = std::min<std::int64_t>(kBlockFrames, frames - done);
        const std::int64_t got =
            AnalysisStopRequested() ? 0 : source.readLeftJustified(ints.data(), want);
        if (got <= 0) {
            complete = false;
            break;
        }
        const std::size_t n = std::size_t(got) * std::size_t(channels);
        const std::int32_t* in = ints.data();
        float* out = floats.data();
        for (std::size_t i = 0; i < n; ++i) {
            // Left-justified 32-bit values to +-1.0.
            out[i] = static_cast<float>(in[i]) * kFullScale;
            highest = std::max(highest, in[i]);
            lowest = std::min(lowest, in[i]);
        }
        plot.feed(ints.data(), done, got);
        if (measuring)
            meter.feed(floats.data(), static_cast<std::uint32_t>(got));
        done += got;
    }
    if (!complete)
        return; // a short read measures nothing, as a whole-file read would not
    info.samplePeak =
        static_cast<float>(std::max<std::int64_t>(highest, -std::int64_t(lowest))) * kFullScale;
    const LoudnessResult result = measuring ? meter.finish() : LoudnessResult{};
    info.loudness = result.valid ? result.value : kLoudnessFloor;
}

void StreamPlottedFrames(IntegerFrameSource& source, WavePlotBuilder& plot)
{
    const PlotGeometry& g = plot.geometry();
    const int channels = source.channels();
    std::vector<std::int32_t> ints(std::size_t(std::min<std::int64_t>(g.scan, kBlockFrames)) *
                                   std::size_t(channels));
    for (int i = 0; i < g.points; ++i) {
        const std::int64_t first = std::int64_t(i) * g.framesPerBucket;
        if (AnalysisStopRequested() || !source.seek(first))
            return;
        for (std::int64_t done = 0; done < g.scan;) {
            const std::int64_t want = std::min<std::int64_t>(kBlockFrames, g.scan - done);
            const std::int64_t got = source.readLeftJustified(ints.data(), want);
            if (got <= 0)
                return;
            plot.feed(ints.data(), first + done, got);
            done += got;
        }
    }
}
