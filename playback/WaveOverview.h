#pragma once

#include "StreamSource.h"

#include <atomic>
#include <cstdint>
#include <vector>

// A waveform of a whole file at a fixed resolution: the lowest and highest
// sample of each of `buckets` stretches, per channel and for the mix (the
// channels' mean), full scale +-1.0. A few hundred kilobytes whatever the
// file's length; a view draws it at its own width.
struct WaveOverview
{
    std::int32_t channels = 0;
    std::int32_t rate = 0;
    std::int64_t frames = 0;
    std::int64_t loopStart = 0;
    std::int64_t loopEnd = 0; // exclusive; looped when loopEnd > loopStart
    int buckets = 0;
    // Channel-major, `buckets` values per lane: channel 0, 1, ..., then the mix.
    std::vector<float> low;
    std::vector<float> high;

    int Lane(int channel) const { return channel < 0 ? channels : channel; }
    float Low(int channel, int bucket) const
    {
        return low[std::size_t(Lane(channel)) * buckets + bucket];
    }
    float High(int channel, int bucket) const
    {
        return high[std::size_t(Lane(channel)) * buckets + bucket];
    }
};

inline constexpr int kOverviewBuckets = 4096;

// Opens `source` and reads it through once. A file shorter than `buckets`
// frames gets one bucket per frame. False when the source does not open, has
// no frames or no known length, or `cancel` turns true (checked every block).
bool BuildWaveOverview(AudioEngine::StreamSource& source, int buckets,
                       const std::atomic<bool>& cancel, WaveOverview& out);
