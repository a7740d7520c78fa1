#include "WaveformPlot.h"

#include "WaveHeaderReader.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <mutex>
#include <new>

namespace {

constexpr std::size_t kStaticPlotBytes = 23040000; // two minutes of 48 kHz 16-bit stereo

// Reused between files; the lock only guards against a second analysis thread.
std::mutex g_mixedMutex;
std::mutex g_multiMutex;
unsigned char g_mixedBuffer[kStaticPlotBytes];
unsigned char g_multiBuffer[kStaticPlotBytes];

std::int8_t percent(float value)
{
    const float p = std::clamp(value * 100.0f, -100.0f, 100.0f);
    return static_cast<std::int8_t>(p); // truncated toward zero
}

void clearFrom(PlotPoint* out, int from)
{
    std::fill(out + std::max(from, 0), out + kPlotPoints, PlotPoint{});
}

bool isWaveFormat(const WaveHeaderHandle* h)
{
    return h && (h->formatIndex == 1 || h->formatIndex == 2) && h->channels > 0 &&
           h->channels <= kMaxPlotChannels && h->samples >= 0;
}

bool isFastPathData(const WaveHeaderHandle* h)
{
    return h->coding == WaveSampleCoding::Integer && h->bytesPerSample == 2 &&
           h->blockAlign == 2 * h->channels;
}

// The whole 16-bit sample block in one read; nullptr when it cannot be had.
const unsigned char* readBlock(WaveHeaderHandle* h, unsigned char* staticBuffer,
                               std::unique_ptr<unsigned char[]>& own, bool& readFailed)
{
    readFailed = false;
    const std::size_t bytes = std::size_t(h->samples) * std::size_t(h->blockAlign);
    unsigned char* buffer = staticBuffer;
    if (bytes > kStaticPlotBytes) {
        own.reset(new (std::nothrow) unsigned char[bytes]);
        if (!own)
            return nullptr;
        buffer = own.get();
    }
    if (bytes > 0 && ReadWaveBytes(h, h->dataStart, buffer, bytes) != bytes) {
        readFailed = true;
        return nullptr;
    }
    return buffer;
}

// The high byte of each 16-bit sample as a signed 8-bit value.
template<typename Frame>
void scanHighBytes(const unsigned char* block, int stride, const PlotGeometry& g, Frame value,
                   PlotPoint* out)
{
    for (int i = 0; i < g.points; ++i) {
        const unsigned char* frame = block + std::size_t(i) * g.framesPerBucket * stride;
        int max = -128;
        int min = 127;
        for (int f = 0; f < g.scan; ++f, frame += stride) {
            const int v = value(frame);
            max = std::max(max, v);
            min = std::min(min, v);
        }
        out[i] = {static_cast<std::int8_t>(max * 100 / 128),
                  static_cast<std::int8_t>(min * 100 / 128)};
    }
}

void genericMixed(WaveHeaderHandle* h, const PlotGeometry& g, PlotPoint* out)
{
    SeekSample(h, 0, 0);
    for (int i = 0; i < g.points; ++i) {
        int max = -32768;
        int min = 32767;
        for (int f = 0; f < g.scan; ++f) {
            std::int16_t left = 0, right = 0;
            if (ReadStereo16(h, &left, &right) != 0)
                break;
            const int v = (left + right) / 2;
            max = std::max(max, v);
            min = std::min(min, v);
        }
        out[i] = {static_cast<std::int8_t>(max * 100 / 32768),
                  static_cast<std::int8_t>(min * 100 / 32768)};
        SeekSample(h, g.skip, 1);
    }
}

void genericMulti(WaveHeaderHandle* h, const PlotGeometry& g, PlotPoint* out)
{
    const int channels = h->channels;
    SeekSample(h, 0, 0);
    std::int32_t frame[kMaxPlotChannels];
    for (int i = 0; i < g.points; ++i) {
        std::int32_t max[kMaxPlotChannels], min[kMaxPlotChannels];
        std::fill(max, max + channels, std::numeric_limits<std::int32_t>::min());
        std::fill(min, min + channels, std::numeric_limits<std::int32_t>::max());
        for (int f = 0; f < g.scan; ++f) {
            if (DecodeSamples(h, frame, channels) != channels)
                break;
            for (int ch = 0; ch < channels; ++ch) {
                max[ch] = std::max(max[ch], frame[ch]);
                min[ch] = std::min(min[ch], frame[ch]);
            }
        }
        for (int ch = 0; ch < channels; ++ch) {
            out[ch * kPlotPoints + i] = {
                static_cast<std::int8_t>(std::int64_t(max[ch]) * 100 / 2147483647),
                static_cast<std::int8_t>(std::int64_t(min[ch]) * 100 / 2147483647)};
        }
        SeekSample(h, g.skip, 1);
    }
}

} // namespace

PlotGeometry ComputePlotGeometry(int samples, int samplingRate)
{
    PlotGeometry g;
    if (samples <= 0)
        return g;
    if (samples < kPlotPoints) {
        g.points = samples;
        g.framesPerBucket = 1;
    } else {
        g.points = kPlotPoints;
        g.framesPerBucket = samples / kPlotPoints;
    }
    const int window = std::max(samplingRate / 50, 1); // 20 ms
    g.scan = std::min(g.framesPerBucket, window);
    g.skip = g.framesPerBucket >= window ? g.framesPerBucket - window : 0;
    return g;
}

void ComputeMixedPlot(const float* const* channels, int channelCount, int samples, int samplingRate,
                      PlotPoint* out)
{
    const PlotGeometry g =
        channels && channelCount > 0 ? ComputePlotGeometry(samples, samplingRate) : PlotGeometry{};
    for (int i = 0; i < g.points; ++i) {
        float max = -1.0f;
        float min = 1.0f;
        const int first = i * g.framesPerBucket;
        for (int f = first; f < first + g.scan; ++f) {
            float sum = 0.0f;
            for (int ch = 0; ch < channelCount; ++ch)
                sum += channels[ch][f];
            const float v = sum / float(channelCount);
            max = std::max(max, v);
            min = std::min(min, v);
        }
        out[i] = {percent(max), percent(min)};
    }
    clearFrom(out, g.points);
}

void ComputeMultiPlot(const float* const* channels, int channelCount, int samples, int samplingRate,
                      PlotPoint* out)
{
    const int used = channels ? std::clamp(channelCount, 0, kMaxPlotChannels) : 0;
    for (int ch = 0; ch < used; ++ch)
        ComputeMixedPlot(channels + ch, 1, samples, samplingRate, out + ch * kPlotPoints);
    for (int ch = used; ch < kMaxPlotChannels; ++ch)
        clearFrom(out + ch * kPlotPoints, 0);
}

void ComputeWaveMixedPlot(WaveHeaderHandle* h, PlotPoint* out)
{
    clearFrom(out, 0);
    if (!isWaveFormat(h))
        return;
    const PlotGeometry g = ComputePlotGeometry(h->samples, h->samplingRate);
    if (g.points == 0)
        return;
    if (isFastPathData(h) && h->channels <= 2) {
        const std::lock_guard<std::mutex> lock(g_mixedMutex);
        std::unique_ptr<unsigned char[]> own;
        bool readFailed = false;
        const unsigned char* block = readBlock(h, g_mixedBuffer, own, readFailed);
        if (readFailed)
            return;
        if (block) {
            const int high = h->samplesBigEndian ? 0 : 1;
            if (h->channels == 1) {
                scanHighBytes(
                    block, 2, g,
                    [high](const unsigned char* p) { return int(std::int8_t(p[high])); }, out);
            } else {
                scanHighBytes(
                    block, 4, g,
                    [high](const unsigned char* p) {
                        return (int(std::int8_t(p[high])) + int(std::int8_t(p[2 + high]))) / 2;
                    },
                    out);
            }
            return;
        }
    }
    genericMixed(h, g, out);
}

void ComputeWaveMultiPlot(WaveHeaderHandle* h, PlotPoint* out)
{
    std::fill(out, out + kMaxPlotChannels * kPlotPoints, PlotPoint{});
    if (!isWaveFormat(h))
        return;
    const PlotGeometry g = ComputePlotGeometry(h->samples, h->samplingRate);
    if (g.points == 0)
        return;
    if (isFastPathData(h)) {
        const std::lock_guard<std::mutex> lock(g_multiMutex);
        std::unique_ptr<unsigned char[]> own;
        bool readFailed = false;
        if (const unsigned char* block = readBlock(h, g_multiBuffer, own, readFailed)) {
            const int stride = h->blockAlign;
            for (int ch = 0; ch < h->channels; ++ch) {
                const int at = 2 * ch + (h->samplesBigEndian ? 0 : 1);
                scanHighBytes(
                    block, stride, g,
                    [at](const unsigned char* p) { return int(std::int8_t(p[at])); },
                    out + ch * kPlotPoints);
            }
            return;
        }
    }
    genericMulti(h, g, out);
}
