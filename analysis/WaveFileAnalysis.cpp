#include "WaveFileAnalysis.h"

#include "AnalysisStop.h"
#include "LoudnessMeter.h"
#include "PlotBuilder.h"
#include "WaveSoundSource.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr std::int64_t kBlockFrames = 4096;

void fillHeaderFields(const WaveHeaderHandle& h, AudioFileInfo& info)
{
    info.samplingRate = GetWaveSamplingRate(&h);
    info.channels = GetWaveChannels(&h);
    info.samples = GetWaveSamples(&h);
    info.bitDepthOrMinKbps = GetWaveBitDepth(&h);
    info.bitDepthOrMaxKbps = info.bitDepthOrMinKbps;
    const std::int32_t formatIndex = GetWaveFormatIndex(&h);
    info.format = WaveFormatName(formatIndex);
    info.isValid = formatIndex > 0 ? 1 : 0;
    info.loopCount = GetWaveLoopCount(&h);
    if (info.loopCount >= 1) {
        std::uint32_t start = 0, end = 0;
        GetLoop(&h, 0, &start, &end);
        info.loopStart = static_cast<std::int32_t>(start);
        info.loopEnd = static_cast<std::int32_t>(end);
    }
    info.markerCount = GetWaveMarkerCount(&h);
    info.isHeaderRead = 1;
}

// Every frame once, in blocks: plots, loudness and peak together.
void streamWhole(WaveSoundSource& source, WavePlotBuilder& plot, AudioFileInfo& info)
{
    const WaveHeaderHandle& h = *source.header();
    const int channels = h.channels;
    LoudnessStream meter;
    LoudnessConfig config;
    config.channels = static_cast<std::uint32_t>(channels);
    config.samplingRate = static_cast<std::uint32_t>(std::max(h.samplingRate, 0));
    config.samples = static_cast<std::uint32_t>(std::max(h.samples, 0));
    // Files of more than 8 channels are not measured.
    const bool measuring = channels <= 8 && meter.start(config);

    std::vector<std::int32_t> ints(std::size_t(kBlockFrames) * std::size_t(channels));
    std::vector<float> floats(ints.size());
    float peak = 0.0f;
    std::int64_t done = 0;
    bool complete = true;
    while (done < h.samples) {
        const std::int64_t want = std::min<std::int64_t>(kBlockFrames, h.samples - done);
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

// Only the frames the plot looks at: the first 20 ms of each bucket.
void streamPlotFrames(WaveSoundSource& source, WavePlotBuilder& plot)
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

} // namespace

void AnalyzeWaveFile(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                     bool loudnessWanted)
{
    WaveSoundSource source;
    if (!source.open(localPath)) {
        info.isValid = 0;
        info.errorText = source.errorText();
        return;
    }
    const WaveHeaderHandle& h = *source.header();
    fillHeaderFields(h, info);

    WavePlotBuilder plot(h, multiPlotWanted);
    const bool streamable = h.channels > 0 && h.samples > 0 && h.blockAlign > 0;
    if (loudnessWanted && streamable)
        streamWhole(source, plot, info);
    else if (plot.active())
        streamPlotFrames(source, plot);
    FinishPlots(plot, info, multiPlotWanted);
}
