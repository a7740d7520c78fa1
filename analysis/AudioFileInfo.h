#pragma once

#include "ModifyTime.h"
#include "SharedText.h"

#include <QExplicitlySharedDataPointer>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

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

// Everything the analysis learns about one file. A default record stands for
// a file that has not been analysed. Kept small (616 bytes, in an order that
// leaves no padding): a 100,000 file folder holds one per file. Repeated
// texts are shared, the modification time is a number, and the per-channel
// plot takes room only when it was measured. The registry hands finished
// records out shared and immutable (std::shared_ptr<const AudioFileInfo>), so
// the table reads them in place.
struct AudioFileInfo
{
    std::int32_t isValid = 1;
    std::int32_t isHeaderRead = 0;
    std::int64_t fileSize = 0;
    ModifyTime modifyTime;
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
    // The optional parts the analysis was asked for (AnalysisPart bits), so that a
    // stored record tells what is still to be measured when more is wanted later.
    std::int32_t measuredParts = 0;
    // "Unknown", "wav", "aiff", "MP3", "Vorbis".
    SharedText format;
    std::array<PlotPoint, kPlotPoints> plot{};
    // Descriptions, tags and the like (FileMetadata.h), shared between copies;
    // null when the file carries none.
    std::shared_ptr<const FileMetadata> metadata;
    // Why the row shows "ERROR" (English; shown translated); empty when fine.
    SharedText errorText;

    // The per-channel plot: kPlotPoints points for each of the file's first
    // eight channels, channel-major. Absent unless it was measured.
    bool hasMultiPlot() const { return m_multiPlot.constData() != nullptr; }
    // Channels plotted (0 without the plot).
    int multiPlotLanes() const
    {
        return hasMultiPlot() ? int(m_multiPlot->points.size()) / kPlotPoints : 0;
    }
    // The kPlotPoints points of `channel`; null when that channel has none.
    const PlotPoint* multiPlotLane(int channel) const
    {
        return channel >= 0 && channel < multiPlotLanes()
                   ? m_multiPlot->points.data() + std::size_t(channel) * kPlotPoints
                   : nullptr;
    }
    // Keeps `lanes` channels of channel-major points (copies share them).
    void setMultiPlot(const PlotPoint* channelMajor, int lanes);
    void clearMultiPlot() { m_multiPlot.reset(); }

private:
    struct MultiPlot : QSharedData
    {
        std::vector<PlotPoint> points;
    };
    // One pointer (8 bytes, where a shared_ptr takes 16): never changed once set.
    QExplicitlySharedDataPointer<MultiPlot> m_multiPlot;
};

// Optional parts of the analysis; the header fields and the mixed plot are always read.
enum AnalysisPart : std::int32_t
{
    AnalysisPartLoudness = 1,
    AnalysisPartMultiPlot = 2,
};
