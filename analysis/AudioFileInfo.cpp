#include "AudioFileInfo.h"

#include <algorithm>

void AudioFileInfo::setMultiPlot(const PlotPoint* channelMajor, int lanes)
{
    const auto count = std::size_t(std::clamp(lanes, 0, kMaxPlotChannels)) * kPlotPoints;
    auto* plot = new MultiPlot;
    plot->points.resize(count);
    if (channelMajor)
        std::copy(channelMajor, channelMajor + count, plot->points.begin());
    m_multiPlot = QExplicitlySharedDataPointer<MultiPlot>(plot);
}
