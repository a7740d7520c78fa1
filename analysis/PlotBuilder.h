#pragma once

#include "AudioFileInfo.h"
#include "WaveformPlot.h"

#include <cstdint>
#include <vector>

struct WaveHeaderHandle;

// The waveform overviews built from frames as they stream past, in file order
// and in blocks of any size. Only the first 20 ms of each bucket is looked at,
// so a reader that can seek may hand over just those frames (wantedRanges).
// The result equals the whole-file computation byte for byte.

// Float frames (MP3, Ogg Vorbis), full scale +-1.0.
class FloatPlotBuilder final
{
public:
    FloatPlotBuilder(int samples, int samplingRate, int channels, bool multi);
    // `frames` interleaved frames starting at frame index `first`.
    void feed(const float* interleaved, std::int64_t first, std::int64_t frames);
    // Every frame from `first` on is silence: the same as feeding zeros, in
    // constant time.
    void silenceFrom(std::int64_t first);
    // Mixed plot (250 points) and, when asked for, 8 x 250 per-channel points.
    void finish(PlotPoint* mixed, PlotPoint* multi) const;

private:
    PlotGeometry m_g;
    int m_channels;
    int m_multiChannels;
    std::vector<float> m_max; // per bucket: mixed, then each plotted channel
    std::vector<float> m_min;
};

// WAV/AIFF (and FLAC) frames as left-justified 32-bit values. 16-bit data
// is plotted from the high byte of each sample; other depths from 16-bit
// values (mixed: the first two channels averaged) or the full 32 bits (per
// channel). Files that are not WAV or AIFF, or have more than 8 channels, plot
// as zeros.
class WavePlotBuilder final
{
public:
    WavePlotBuilder(const WaveHeaderHandle& header, bool multi);
    // Integer PCM of `bitsPerSample` (FLAC), plotted as the same samples in a
    // WAV file of the smallest whole-byte container would be.
    WavePlotBuilder(int samples, int samplingRate, int channels, int bitsPerSample, bool multi);
    bool active() const { return m_g.points > 0; }
    void feed(const std::int32_t* interleaved, std::int64_t first, std::int64_t frames);
    void finish(PlotPoint* mixed, PlotPoint* multi) const;
    const PlotGeometry& geometry() const { return m_g; }

private:
    void setUp(int samples, int samplingRate, int channels, bool highByte);

    PlotGeometry m_g;
    int m_channels = 0;
    bool m_multi = false;
    bool m_highByte = false; // 16-bit data
    bool m_highByteMixed = false;
    std::vector<int> m_mixedMax, m_mixedMin;
    std::vector<std::int32_t> m_max, m_min; // per channel x bucket
};

// Writes the builder's plots into the record: the mixed plot, and, when
// `multi`, the per-channel plot of the record's first eight channels.
void FinishPlots(const FloatPlotBuilder& builder, AudioFileInfo& info, bool multi);
void FinishPlots(const WavePlotBuilder& builder, AudioFileInfo& info, bool multi);
