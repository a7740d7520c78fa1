#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

class FileMetadata;

// One point of a waveform overview: the highest and lowest sample of a bucket
// in percent of full scale (-100..100).
struct PlotPoint
{
    std::int8_t max = 0;
    std::int8_t min = 0;
};

inline constexpr int kPlotPoints = 250;
inline constexpr int kMaxPlotChannels = 8;

// Everything the analysis learns about one file. A plain value, copied whole
// between the registry, the detail worker and the table model; strings are UTF-8.
// A default record stands for a file that has not been analysed.
struct AudioFileInfo
{
    std::int32_t isValid = 1;
    std::string reserved;
    std::int32_t isHeaderRead = 0;
    std::int64_t fileSize = 0;
    std::string modifyTime;
    std::int32_t samplingRate = 48000;
    std::int32_t channels = 1;
    std::int32_t samples = 0;
    std::int32_t loopCount = 0;
    std::int32_t markerCount = 0;
    std::int32_t bitDepthOrMinKbps = 16;
    std::int32_t bitDepthOrMaxKbps = 16;
    std::int32_t loopStart = 0;
    std::int32_t loopEnd = 0;
    float loudness = -96.0f;
    // Largest absolute sample over all channels, linear (1.0 = full scale; a
    // decoded MP3 or Ogg may go above); -1 while unknown. For WAV and AIFF it is
    // found in the loudness pass, so it stays unknown while loudness is off.
    float samplePeak = -1.0f;
    std::string format;
    std::array<PlotPoint, kPlotPoints> plot{};
    std::int32_t isMultiPlotValid = 0;
    // Channel-major: the 250 points of channel 0, then channel 1, ...
    std::array<PlotPoint, kMaxPlotChannels * kPlotPoints> multiPlot{};
    // Descriptions, tags and the like (FileMetadata.h), shared between copies;
    // null when the file carries none.
    std::shared_ptr<const FileMetadata> metadata;
    // Why the row shows "ERROR" (English; shown translated); empty when fine.
    std::string errorText;
    // The optional parts the analysis was asked for (AnalysisPart bits), so that a
    // stored record tells what is still to be measured when more is wanted later.
    std::int32_t measuredParts = 0;
};

// Optional parts of the analysis; the header fields and the mixed plot are always read.
enum AnalysisPart : std::int32_t
{
    AnalysisPartLoudness = 1,
    AnalysisPartMultiPlot = 2,
};
