#include "CompressedFileAnalysis.h"

#include "AudioFileInfo.h"
#include "LoudnessMeter.h"
#include "Mp3Decoder.h"
#include "VorbisDecoder.h"
#include "WaveformPlot.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <vector>

namespace {

struct FreeDeleter
{
    void operator()(void* p) const { std::free(p); }
};

// One float array per channel; empty when any allocation fails.
std::vector<std::unique_ptr<float[]>> AllocatePlanar(std::int32_t channels, std::int64_t samples)
{
    std::vector<std::unique_ptr<float[]>> planes;
    const auto count = static_cast<std::size_t>(std::max<std::int64_t>(samples, 1));
    for (std::int32_t c = 0; c < channels; ++c) {
        std::unique_ptr<float[]> plane(new (std::nothrow) float[count]);
        if (!plane)
            return {};
        planes.push_back(std::move(plane));
    }
    return planes;
}

std::vector<float*> Pointers(const std::vector<std::unique_ptr<float[]>>& planes)
{
    std::vector<float*> pointers;
    pointers.reserve(planes.size());
    for (const auto& plane : planes)
        pointers.push_back(plane.get());
    return pointers;
}

std::int32_t ClampToInt32(std::int64_t value)
{
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(value, 0, std::numeric_limits<std::int32_t>::max()));
}

} // namespace

void AnalyzePlanarSamples(const float* const* channels, std::int32_t channelCount,
                          std::int32_t samples, std::int32_t samplingRate, AudioFileInfo& info,
                          bool multiPlotWanted, bool loudnessWanted)
{
    if (multiPlotWanted) {
        // The record has room for 8 channels; further ones are not plotted.
        ComputeMultiPlot(channels, std::min(channelCount, kMaxPlotChannels), samples, samplingRate,
                         info.multiPlot.data());
        info.isMultiPlotValid = 1;
    }
    ComputeMixedPlot(channels, channelCount, samples, samplingRate, info.plot.data());

    if (channels && channelCount > 0) {
        float peak = 0.0f;
        for (std::int32_t c = 0; c < channelCount; ++c)
            for (std::int32_t i = 0; i < samples; ++i)
                peak = std::max(peak, std::fabs(channels[c][i]));
        info.samplePeak = peak;
    }

    if (!loudnessWanted)
        return;
    LoudnessConfig config{};
    config.channels = static_cast<std::uint32_t>(channelCount);
    config.samplingRate = static_cast<std::uint32_t>(samplingRate);
    config.samples = static_cast<std::uint32_t>(samples);
    const std::size_t workSize = GetLoudnessWorkSize(config);
    std::unique_ptr<void, FreeDeleter> work(std::malloc(workSize));
    if (!work)
        return;
    const LoudnessResult result = MeasureLoudness(config, work.get(), workSize, channels);
    if (result.valid)
        info.loudness = result.value;
}

void AnalyzeMp3File(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                    bool loudnessWanted)
{
    Mp3Decoder decoder;
    if (!decoder.Open(localPath) || !decoder.CountFrames()) {
        info.isValid = 0;
        return;
    }
    info.samplingRate = decoder.SamplingRate();
    info.channels = decoder.Channels();
    info.samples = ClampToInt32(decoder.Samples());
    info.bitDepthOrMinKbps = decoder.MinKbps();
    info.bitDepthOrMaxKbps = decoder.MaxKbps();
    info.isHeaderRead = 1;
    info.format = "MP3";
    info.isValid = 1;

    const auto planes = AllocatePlanar(info.channels, info.samples);
    if (planes.empty())
        return;
    const std::vector<float*> pointers = Pointers(planes);

    constexpr std::int64_t kChunkFrames = 1024;
    // MPEG audio has at most two channels.
    static float chunk[kChunkFrames * 2];
    const std::int32_t channels = std::min(info.channels, 2);
    std::int64_t position = 0;
    while (position < info.samples) {
        const std::int64_t wanted = std::min<std::int64_t>(kChunkFrames, info.samples - position);
        const std::int64_t got = decoder.ReadInterleaved(chunk, wanted);
        if (got <= 0)
            break;
        for (std::int64_t i = 0; i < got; ++i)
            for (std::int32_t c = 0; c < channels; ++c)
                pointers[static_cast<std::size_t>(c)][position + i] = chunk[i * channels + c];
        position += got;
    }
    // A file shorter than its frame count promised: the rest stays silent.
    for (float* plane : pointers)
        std::fill(plane + position, plane + info.samples, 0.0f);

    AnalyzePlanarSamples(pointers.data(), info.channels, info.samples, info.samplingRate, info,
                         multiPlotWanted, loudnessWanted);
}

void AnalyzeVorbisFile(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                       bool loudnessWanted)
{
    VorbisDecoder decoder;
    if (!decoder.Open(localPath)) {
        info.isValid = 0;
        return;
    }
    info.samplingRate = decoder.SamplingRate();
    info.channels = decoder.Channels();
    info.samples = ClampToInt32(decoder.Samples());
    VorbisHeaderBitRates rates;
    if (ReadVorbisHeaderBitRates(localPath, rates))
        VorbisKbps(rates, info.bitDepthOrMinKbps, info.bitDepthOrMaxKbps);
    info.isHeaderRead = 1;
    info.format = "Vorbis";
    info.isValid = 1;

    const auto planes = AllocatePlanar(info.channels, info.samples);
    if (planes.empty())
        return;
    const std::vector<float*> pointers = Pointers(planes);
    const std::int64_t got = decoder.ReadPlanar(pointers.data(), info.samples);
    for (float* plane : pointers)
        std::fill(plane + std::max<std::int64_t>(got, 0), plane + info.samples, 0.0f);

    AnalyzePlanarSamples(pointers.data(), info.channels, info.samples, info.samplingRate, info,
                         multiPlotWanted, loudnessWanted);
}
