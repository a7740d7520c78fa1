#include "WaveformPlot.h"

#include "PlotBuilder.h"
#include "WaveHeaderReader.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

namespace {

std::int8_t percent(float value)
{
    const float p = std::clamp(value * 100.0f, -100.0f, 100.0f);
    return static_cast<std::int8_t>(p); // truncated toward zero
}

void clearFrom(PlotPoint* out, int from)
{
    std::fill(out + std::max(from, 0), out + kPlotPoints, PlotPoint{});
}

// Reads only the frames each bucket looks at, seeking over the rest.
void plotThroughHandle(WaveHeaderHandle* h, PlotPoint* mixed, PlotPoint* multi)
{
    std::vector<PlotPoint> unused(kPlotPoints);
    if (!h) {
        clearFrom(mixed ? mixed : unused.data(), 0);
        return;
    }
    WavePlotBuilder builder(*h, multi != nullptr);
    const PlotGeometry& g = builder.geometry();
    if (builder.active()) {
        std::vector<std::int32_t> frames(std::size_t(g.scan) * std::size_t(h->channels));
        for (int i = 0; i < g.points; ++i) {
            const std::int64_t first = std::int64_t(i) * g.framesPerBucket;
            if (SeekSample(h, first, 0) < 0)
                break;
            const std::int64_t got = DecodeSamples(h, frames.data(), std::int64_t(frames.size()));
            if (got <= 0)
                break;
            builder.feed(frames.data(), first, got / h->channels);
        }
    }
    builder.finish(mixed ? mixed : unused.data(), multi);
}

} // namespace

PlotGeometry ComputePlotGeometry(int samples, int samplingRate)
{
    PlotGeometry g;
    if (samples <= 0)
        return g;
    if (samples < kPlotPoints) {
        g.points = samples;
        g.framesPerBucket = 1;
    } else {
        g.points = kPlotPoints;
        g.framesPerBucket = samples / kPlotPoints;
    }
    const int window = std::max(samplingRate / 50, 1); // 20 ms
    g.scan = std::min(g.framesPerBucket, window);
    g.skip = g.framesPerBucket >= window ? g.framesPerBucket - window : 0;
    return g;
}

void ComputeMixedPlot(const float* const* channels, int channelCount, int samples, int samplingRate,
                      PlotPoint* out)
{
    const PlotGeometry g =
        channels && channelCount > 0 ? ComputePlotGeometry(samples, samplingRate) : PlotGeometry{};
    for (int i = 0; i < g.points; ++i) {
        float max = -1.0f;
        float min = 1.0f;
        const int first = i * g.framesPerBucket;
        for (int f = first; f < first + g.scan; ++f) {
            float sum = 0.0f;
            for (int ch = 0; ch < channelCount; ++ch)
                sum += channels[ch][f];
            const float v = sum / float(channelCount);
            max = std::max(max, v);
            min = std::min(min, v);
        }
        out[i] = {percent(max), percent(min)};
    }
    clearFrom(out, g.points);
}

void ComputeMultiPlot(const float* const* channels, int channelCount, int samples, int samplingRate,
                      PlotPoint* out)
{
    const int used = channels ? std::clamp(channelCount, 0, kMaxPlotChannels) : 0;
    for (int ch = 0; ch < used; ++ch)
        ComputeMixedPlot(channels + ch, 1, samples, samplingRate, out + ch * kPlotPoints);
    for (int ch = used; ch < kMaxPlotChannels; ++ch)
        clearFrom(out + ch * kPlotPoints, 0);
}

void ComputeWaveMixedPlot(WaveHeaderHandle* h, PlotPoint* out)
{
    plotThroughHandle(h, out, nullptr);
}

void ComputeWaveMultiPlot(WaveHeaderHandle* h, PlotPoint* out)
{
    std::fill(out, out + kMaxPlotChannels * kPlotPoints, PlotPoint{});
    plotThroughHandle(h, nullptr, out);
}
