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
    float peak = 0.0f;
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
        for (std::size_t i = 0; i < n; ++i) {
            // Left-justified 32-bit values to +-1.0: x 2^-15 x 2^-16.
            floats[i] = static_cast<float>(ints[i]) * 3.0517578e-5f * 1.5258789e-5f;
            peak = std::max(peak, std::fabs(floats[i]));
        }
        plot.feed(ints.data(), done, got);
        if (measuring)
            meter.feed(floats.data(), static_cast<std::uint32_t>(got));
        done += got;
    }
    if (!complete)
        return; // a short read measures nothing, as a whole-file read would not
    info.samplePeak = peak;
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
