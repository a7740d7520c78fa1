#include "WaveFileAnalysis.h"

#include "IntegerFrameAnalysis.h"
#include "PlotBuilder.h"
#include "WaveSoundSource.h"

namespace {

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
        StreamIntegerFrames(source, h.samples, plot, info);
    else if (plot.active())
        StreamPlottedFrames(source, plot);
    FinishPlots(plot, info, multiPlotWanted);
}
