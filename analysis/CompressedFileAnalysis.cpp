#include "CompressedFileAnalysis.h"

#include "AnalysisStop.h"
#include "AudioFileInfo.h"
#include "CommentLoop.h"
#include "LoudnessMeter.h"
#include "Mp3SoundSource.h"
#include "OggSoundSource.h"
#include "PlotBuilder.h"
#include "SamplePeak.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

constexpr std::int64_t kBlockFrames = 4096;

std::int32_t clampToInt32(std::int64_t value)
{
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(value, 0, std::numeric_limits<std::int32_t>::max()));
}

} // namespace

void AnalyzeFloatSource(SoundSource& source, AudioFileInfo& info, bool multiPlotWanted,
                        bool loudnessWanted)
{
    const int channels = source.channels();
    const std::int32_t samples = info.samples;
    FloatPlotBuilder plot(samples, info.samplingRate, channels, multiPlotWanted);
    LoudnessStream meter;
    bool measuring = false;
    if (loudnessWanted) {
        LoudnessConfig config;
        config.channels = static_cast<std::uint32_t>(channels);
        config.samplingRate = static_cast<std::uint32_t>(info.samplingRate);
        config.samples = static_cast<std::uint32_t>(samples);
        measuring = meter.start(config);
    }

    std::vector<float> block(std::size_t(kBlockFrames) * std::size_t(channels));
    float peak = 0.0f;
    std::int64_t done = 0;
    while (done < samples) {
        const std::int64_t want = std::min<std::int64_t>(kBlockFrames, samples - done);
        const std::int64_t got = AnalysisStopRequested() ? 0 : source.read(block.data(), want);
        if (got <= 0)
            break;
        const std::size_t values = std::size_t(got) * std::size_t(channels);
        peak = std::max(peak, LargestMagnitude(block.data(), values));
        plot.feed(block.data(), done, got);
        if (measuring)
            meter.feed(block.data(), static_cast<std::uint32_t>(got));
        done += got;
    }
    // Shorter than stated: the rest is silence, plotted as such but not measured.
    if (done < samples)
        plot.silenceFrom(done);
    FinishPlots(plot, info, multiPlotWanted);
    info.samplePeak = std::isfinite(peak) ? peak : -1.0f;
    if (measuring) {
        const LoudnessResult result = meter.finish();
        if (result.valid)
            info.loudness = result.value;
    }
}

void AnalyzeMp3File(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                    bool loudnessWanted)
{
    Mp3SoundSource source;
    if (!source.open(localPath)) {
        info.isValid = 0;
        info.errorText = source.errorText();
        return;
    }
    info.samplingRate = source.samplingRate();
    info.channels = source.channels();
    info.samples = clampToInt32(source.frames());
    info.bitDepthOrMinKbps = source.stream().minKbps;
    info.bitDepthOrMaxKbps = source.stream().maxKbps;
    info.isHeaderRead = 1;
    info.format = "MP3";
    info.isValid = 1;
    AnalyzeFloatSource(source, info, multiPlotWanted, loudnessWanted);
}

void AnalyzeVorbisFile(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                       bool loudnessWanted)
{
    OggSoundSource source;
    if (!source.open(localPath)) {
        info.isValid = 0;
        info.errorText = source.errorText();
        return;
    }
    info.samplingRate = source.samplingRate();
    info.channels = source.channels();
    info.samples = clampToInt32(source.frames());
    VorbisKbps(source.bitRates(), info.bitDepthOrMinKbps, info.bitDepthOrMaxKbps);
    ShowCommentLoop(source.loopStart(), source.loopEnd(), info);
    info.isHeaderRead = 1;
    info.format = "Vorbis";
    info.isValid = 1;
    AnalyzeFloatSource(source, info, multiPlotWanted, loudnessWanted);
}
