#include "WaveFileAnalysis.h"

#include "LoudnessMeter.h"
#include "WaveHeaderReader.h"
#include "WaveformPlot.h"

#include <memory>

namespace {

struct HandleCloser
{
    void operator()(WaveHeaderHandle* h) const { CloseWaveHeader(h); }
};

} // namespace

void AnalyzeWaveFile(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                     bool loudnessWanted)
{
    std::unique_ptr<WaveHeaderHandle, HandleCloser> handle(OpenWaveHeader(localPath));
    if (!handle)
        return;
    WaveHeaderHandle* h = handle.get();
    info.samplingRate = GetWaveSamplingRate(h);
    info.channels = GetWaveChannels(h);
    info.samples = GetWaveSamples(h);
    info.bitDepthOrMinKbps = GetWaveBitDepth(h);
    info.bitDepthOrMaxKbps = info.bitDepthOrMinKbps;
    const std::int32_t formatIndex = GetWaveFormatIndex(h);
    info.format = WaveFormatName(formatIndex);
    info.isValid = formatIndex > 0 ? 1 : 0;
    info.loopCount = GetWaveLoopCount(h);
    if (info.loopCount >= 1) {
        std::uint32_t start = 0, end = 0;
        GetLoop(h, 0, &start, &end);
        info.loopStart = static_cast<std::int32_t>(start);
        info.loopEnd = static_cast<std::int32_t>(end);
    }
    info.markerCount = GetWaveMarkerCount(h);
    info.isHeaderRead = 1;

    ComputeWaveMixedPlot(h, info.plot.data());
    if (multiPlotWanted) {
        ComputeWaveMultiPlot(h, info.multiPlot.data());
        info.isMultiPlotValid = 1;
    }
    handle.reset();

    if (loudnessWanted) {
        float value = kLoudnessFloor;
        float peak = -1.0f;
        info.loudness = MeasureFileLoudness(localPath, &value, &peak) ? value : kLoudnessFloor;
        info.samplePeak = peak;
    }
}
