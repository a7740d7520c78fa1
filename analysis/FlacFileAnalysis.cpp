#include "FlacFileAnalysis.h"

#include "AudioFileInfo.h"
#include "CommentLoop.h"
#include "FlacSoundSource.h"
#include "IntegerFrameAnalysis.h"
#include "PlotBuilder.h"

#include <algorithm>
#include <limits>

void AnalyzeFlacFile(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                     bool loudnessWanted)
{
    FlacSoundSource source;
    if (!source.open(localPath)) {
        info.isValid = 0;
        info.errorText = source.errorText();
        return;
    }
    AnalyzeFlacSource(source, info, multiPlotWanted, loudnessWanted);
}

void AnalyzeFlacSource(FlacSoundSource& source, AudioFileInfo& info, bool multiPlotWanted,
                       bool loudnessWanted)
{
    info.samplingRate = source.samplingRate();
    info.channels = source.channels();
    info.samples = static_cast<std::int32_t>(
        std::clamp<std::int64_t>(source.frames(), 0, std::numeric_limits<std::int32_t>::max()));
    info.bitDepthOrMinKbps = source.bitsPerSample();
    info.bitDepthOrMaxKbps = source.bitsPerSample();
    ShowCommentLoop(source.loopStart(), source.loopEnd(), info);
    info.isHeaderRead = 1;
    info.format = "FLAC";
    info.isValid = 1;

    WavePlotBuilder plot(info.samples, info.samplingRate, info.channels, source.bitsPerSample(),
                         multiPlotWanted);
    if (loudnessWanted && info.samples > 0)
        StreamIntegerFrames(source, info.samples, plot, info);
    else if (plot.active())
        StreamPlottedFrames(source, plot);
    FinishPlots(plot, info, multiPlotWanted);
    if (!source.errorText().empty()) {
        info.isValid = 0;
        info.errorText = source.errorText();
    }
}
