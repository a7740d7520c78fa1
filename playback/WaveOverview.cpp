#include "WaveOverview.h"

#include <algorithm>
#include <limits>

bool BuildWaveOverview(AudioEngine::StreamSource& source, int buckets,
                       const std::atomic<bool>& cancel, WaveOverview& out)
{
    AudioEngine::StreamFormat format;
    if (!source.Open(format) || format.channels < 1 || format.frameCount <= 0 || buckets < 1)
        return false;
    out.channels = format.channels;
    out.rate = format.rate;
    out.frames = format.frameCount;
    out.loopStart = format.loopStart;
    out.loopEnd = format.loopEnd;
    out.buckets = static_cast<int>(std::min<std::int64_t>(buckets, format.frameCount));
    const auto lanes = static_cast<std::size_t>(out.channels) + 1;
    const auto size = lanes * static_cast<std::size_t>(out.buckets);
    out.low.assign(size, std::numeric_limits<float>::max());
    out.high.assign(size, std::numeric_limits<float>::lowest());

    constexpr long kBlock = 8192;
    const auto channels = static_cast<std::size_t>(out.channels);
    std::vector<float> block(static_cast<std::size_t>(kBlock) * channels);
    std::int64_t frame = 0;
    while (frame < out.frames) {
        if (cancel.load(std::memory_order_relaxed))
            return false;
        const long n = source.Read(block.data(), kBlock);
        if (n <= 0)
            break; // a short file: what was read stands
        for (long i = 0; i < n && frame < out.frames; ++i, ++frame) {
            const auto bucket = static_cast<std::size_t>(frame * out.buckets / out.frames);
            const float* x = block.data() + static_cast<std::size_t>(i) * channels;
            float sum = 0.0f;
            for (std::size_t c = 0; c < channels; ++c) {
                const std::size_t at = c * static_cast<std::size_t>(out.buckets) + bucket;
                out.low[at] = std::min(out.low[at], x[c]);
                out.high[at] = std::max(out.high[at], x[c]);
                sum += x[c];
            }
            const float mix = sum / static_cast<float>(channels);
            const std::size_t at = channels * static_cast<std::size_t>(out.buckets) + bucket;
            out.low[at] = std::min(out.low[at], mix);
            out.high[at] = std::max(out.high[at], mix);
        }
    }
    // Buckets nothing reached (a file cut short) draw as silence.
    for (std::size_t i = 0; i < size; ++i) {
        if (out.low[i] > out.high[i])
            out.low[i] = out.high[i] = 0.0f;
    }
    return true;
}
