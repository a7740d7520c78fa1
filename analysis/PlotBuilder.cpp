#include "PlotBuilder.h"

#include "WaveHeaderReader.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

std::int8_t percent(float value)
{
    const float p = std::clamp(value * 100.0f, -100.0f, 100.0f);
    return static_cast<std::int8_t>(p); // truncated toward zero
}

// Calls use(bucket, from, to) for each run of frames [from, to) of the block
// (offsets in it) that a bucket looks at.
template<typename Use>
void forScannedRuns(const PlotGeometry& g, std::int64_t first, std::int64_t frames, Use use)
{
    if (g.points <= 0 || g.framesPerBucket <= 0)
        return;
    std::int64_t f = first;
    const std::int64_t end = first + frames;
    while (f < end) {
        const std::int64_t bucket = f / g.framesPerBucket;
        if (bucket >= g.points)
            return;
        const std::int64_t bucketStart = bucket * g.framesPerBucket;
        const std::int64_t scanEnd = bucketStart + g.scan;
        if (f >= scanEnd) {
            f = bucketStart + g.framesPerBucket;
            continue;
        }
        const std::int64_t stop = std::min(scanEnd, end);
        use(static_cast<int>(bucket), f - first, stop - first);
        f = stop;
    }
}

template<typename Builder>
void finishInto(const Builder& builder, AudioFileInfo& info, bool multi)
{
    if (!multi) {
        builder.finish(info.plot.data(), nullptr);
        return;
    }
    std::array<PlotPoint, kMaxPlotChannels * kPlotPoints> lanes{};
    builder.finish(info.plot.data(), lanes.data());
    info.setMultiPlot(lanes.data(), std::clamp(info.channels, 0, kMaxPlotChannels));
}

} // namespace

void FinishPlots(const FloatPlotBuilder& builder, AudioFileInfo& info, bool multi)
{
    finishInto(builder, info, multi);
}

void FinishPlots(const WavePlotBuilder& builder, AudioFileInfo& info, bool multi)
{
    finishInto(builder, info, multi);
}

FloatPlotBuilder::FloatPlotBuilder(int samples, int samplingRate, int channels, bool multi)
    : m_g(channels > 0 ? ComputePlotGeometry(samples, samplingRate) : PlotGeometry{})
    , m_channels(std::max(channels, 0))
    , m_multiChannels(multi ? std::clamp(channels, 0, kMaxPlotChannels) : 0)
{
    const std::size_t lanes = std::size_t(1 + m_multiChannels) * std::size_t(m_g.points);
    m_max.assign(lanes, -1.0f);
    m_min.assign(lanes, 1.0f);
}

void FloatPlotBuilder::feed(const float* interleaved, std::int64_t first, std::int64_t frames)
{
    const int n = m_channels;
    const float divisor = float(n);
    forScannedRuns(m_g, first, frames, [&](int bucket, std::int64_t from, std::int64_t to) {
        // The run's extremes gathered in registers, then stored once.
        float high = m_max[bucket];
        float low = m_min[bucket];
        for (std::int64_t at = from; at < to; ++at) {
            const float* frame = interleaved + at * n;
            float sum = 0.0f;
            for (int ch = 0; ch < n; ++ch)
                sum += frame[ch];
            const float v = sum / divisor;
            high = std::max(high, v);
            low = std::min(low, v);
        }
        m_max[bucket] = high;
        m_min[bucket] = low;
        for (int ch = 0; ch < m_multiChannels; ++ch) {
            const std::size_t lane = std::size_t(1 + ch) * std::size_t(m_g.points) + bucket;
            for (std::int64_t at = from; at < to; ++at) {
                const float value = interleaved[at * n + ch];
                m_max[lane] = std::max(m_max[lane], value);
                m_min[lane] = std::min(m_min[lane], value);
            }
        }
    });
}

void FloatPlotBuilder::silenceFrom(std::int64_t first)
{
    const int lanes = 1 + m_multiChannels;
    for (int i = 0; i < m_g.points; ++i) {
        // Bucket i looks at frames [i x framesPerBucket, + scan).
        if (std::int64_t(i) * m_g.framesPerBucket + m_g.scan <= first)
            continue;
        for (int lane = 0; lane < lanes; ++lane) {
            const std::size_t at = std::size_t(lane) * std::size_t(m_g.points) + i;
            m_max[at] = std::max(m_max[at], 0.0f);
            m_min[at] = std::min(m_min[at], 0.0f);
        }
    }
}

void FloatPlotBuilder::finish(PlotPoint* mixed, PlotPoint* multi) const
{
    std::fill(mixed, mixed + kPlotPoints, PlotPoint{});
    for (int i = 0; i < m_g.points; ++i)
        mixed[i] = {percent(m_max[i]), percent(m_min[i])};
    if (!multi)
        return;
    std::fill(multi, multi + kMaxPlotChannels * kPlotPoints, PlotPoint{});
    for (int ch = 0; ch < m_multiChannels; ++ch) {
        for (int i = 0; i < m_g.points; ++i) {
            const std::size_t lane = std::size_t(1 + ch) * std::size_t(m_g.points) + i;
            multi[ch * kPlotPoints + i] = {percent(m_max[lane]), percent(m_min[lane])};
        }
    }
}

WavePlotBuilder::WavePlotBuilder(const WaveHeaderHandle& h, bool multi)
    : m_multi(multi)
{
    if (h.formatIndex == 1 || h.formatIndex == 2)
        setUp(h.samples, h.samplingRate, h.channels,
              h.coding == WaveSampleCoding::Integer && h.bytesPerSample == 2 &&
                  h.blockAlign == 2 * h.channels);
}

WavePlotBuilder::WavePlotBuilder(int samples, int samplingRate, int channels, int bitsPerSample,
                                 bool multi)
    : m_multi(multi)
{
    setUp(samples, samplingRate, channels, (bitsPerSample + 7) / 8 == 2);
}

void WavePlotBuilder::setUp(int samples, int samplingRate, int channels, bool highByte)
{
    if (channels <= 0 || channels > kMaxPlotChannels || samples < 0)
        return;
    m_g = ComputePlotGeometry(samples, samplingRate);
    m_channels = channels;
    m_highByte = highByte;
    m_highByteMixed = m_highByte && channels <= 2;
    const auto points = std::size_t(std::max(m_g.points, 0));
    m_mixedMax.assign(points, m_highByteMixed ? -128 : -32768);
    m_mixedMin.assign(points, m_highByteMixed ? 127 : 32767);
    if (m_multi) {
        const std::size_t lanes = points * std::size_t(m_channels);
        m_max.assign(lanes, m_highByte ? -128 : std::numeric_limits<std::int32_t>::min());
        m_min.assign(lanes, m_highByte ? 127 : std::numeric_limits<std::int32_t>::max());
    }
}

void WavePlotBuilder::feed(const std::int32_t* interleaved, std::int64_t first, std::int64_t frames)
{
    const int n = m_channels;
    const auto points = std::size_t(m_g.points);
    forScannedRuns(m_g, first, frames, [&](int bucket, std::int64_t from, std::int64_t to) {
        // The run's extremes gathered in registers, then stored once.
        int high = m_mixedMax[bucket];
        int low = m_mixedMin[bucket];
        for (std::int64_t at = from; at < to; ++at) {
            const std::int32_t* frame = interleaved + at * n;
            int v;
            if (m_highByteMixed) {
                const int left = std::int8_t(frame[0] >> 24);
                v = n == 1 ? left : (left + int(std::int8_t(frame[1] >> 24))) / 2;
            } else {
                const int left = std::int16_t(frame[0] >> 16);
                const int right = n == 1 ? left : int(std::int16_t(frame[1] >> 16));
                v = (left + right) / 2;
            }
            high = std::max(high, v);
            low = std::min(low, v);
        }
        m_mixedMax[bucket] = high;
        m_mixedMin[bucket] = low;
        if (!m_multi)
            return;
        for (int ch = 0; ch < n; ++ch) {
            const std::size_t lane = std::size_t(ch) * points + bucket;
            for (std::int64_t at = from; at < to; ++at) {
                const std::int32_t sample = interleaved[at * n + ch];
                const std::int32_t value = m_highByte ? std::int8_t(sample >> 24) : sample;
                m_max[lane] = std::max(m_max[lane], value);
                m_min[lane] = std::min(m_min[lane], value);
            }
        }
    });
}

void WavePlotBuilder::finish(PlotPoint* mixed, PlotPoint* multi) const
{
    std::fill(mixed, mixed + kPlotPoints, PlotPoint{});
    const int scale = m_highByteMixed ? 128 : 32768;
    for (int i = 0; i < m_g.points; ++i)
        mixed[i] = {static_cast<std::int8_t>(m_mixedMax[i] * 100 / scale),
                    static_cast<std::int8_t>(m_mixedMin[i] * 100 / scale)};
    if (!multi || !m_multi)
        return;
    std::fill(multi, multi + kMaxPlotChannels * kPlotPoints, PlotPoint{});
    const auto points = std::size_t(m_g.points);
    for (int ch = 0; ch < m_channels; ++ch) {
        for (int i = 0; i < m_g.points; ++i) {
            const std::size_t lane = std::size_t(ch) * points + i;
            if (m_highByte)
                multi[ch * kPlotPoints + i] = {static_cast<std::int8_t>(m_max[lane] * 100 / 128),
                                               static_cast<std::int8_t>(m_min[lane] * 100 / 128)};
            else
                multi[ch * kPlotPoints + i] = {
                    static_cast<std::int8_t>(std::int64_t(m_max[lane]) * 100 / 2147483647),
                    static_cast<std::int8_t>(std::int64_t(m_min[lane]) * 100 / 2147483647)};
        }
    }
}
