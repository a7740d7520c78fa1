#include "AudioFileInfo.h"

#include <algorithm>

void AudioFileInfo::setMultiPlot(const PlotPoint* channelMajor, int lanes)
{
    const auto count = std::size_t(std::clamp(lanes, 0, kMaxPlotChannels)) * kPlotPoints;
    auto points = std::make_shared<std::vector<PlotPoint>>(count);
    if (channelMajor)
        std::copy(channelMajor, channelMajor + count, points->begin());
    m_multiPlot = std::move(points);
}
