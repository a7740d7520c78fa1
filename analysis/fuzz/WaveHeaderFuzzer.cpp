// libFuzzer target for the wave header reader, its sample decoder and the
// plot and loudness paths that read through it. Every input is opened from
// memory and again from a temporary file, so both byte sources are covered.

#include "LoudnessMeter.h"
#include "WaveFileAnalysis.h"
#include "WaveHeaderReader.h"
#include "WaveformPlot.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

void ignore(const char*) {}

void exercise(WaveHeaderHandle* h)
{
    if (!h)
        return;
    GetWaveSamplingRate(h);
    GetWaveBitDepth(h);
    GetWaveFormatIndex(h);
    GetWaveChannels(h);
    const std::int32_t samples = GetWaveSamples(h);
    for (std::int32_t i = 0; i <= GetWaveLoopCount(h); ++i) {
        std::uint32_t start, end;
        GetLoop(h, i, &start, &end);
    }
    for (std::int32_t i = 0; i < GetWaveMarkerCount(h); ++i) {
        FindMarkerIndex(h, h->markerIds[i]);
        GetMarkerLabel(h, i);
    }

    // Decode everything, in odd-sized pieces, then from odd places.
    std::vector<std::int32_t> values(4099);
    while (DecodeSamples(h, values.data(), std::int64_t(values.size())) > 0) {
    }
    SeekSample(h, -3, 2);
    DecodeSamples(h, values.data(), 7);
    SeekSample(h, samples / 2, 0);
    SeekSample(h, -1, 1);
    std::int16_t l, r;
    for (int i = 0; i < 16 && ReadStereo16(h, &l, &r) == 0; ++i) {
    }
    SeekSample(h, INT64_MAX, 1);
    SeekSample(h, INT64_MIN, 1);

    std::vector<PlotPoint> plot(kPlotPoints * kMaxPlotChannels);
    ComputeWaveMixedPlot(h, plot.data());
    ComputeWaveMultiPlot(h, plot.data());
}

char g_path[] = "/tmp/tesk-fuzz-XXXXXX";

void removeTemp()
{
    unlink(g_path);
}

std::string tempPath()
{
    const int fd = mkstemp(g_path);
    if (fd < 0)
        std::abort();
    close(fd);
    std::atexit(removeTemp);
    return g_path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string path = tempPath();
    SetWaveHeaderErrorCallback(ignore);

    WaveHeaderHandle* fromMemory = OpenWaveHeaderFromMemory(data, size);
    exercise(fromMemory);
    CloseWaveHeader(fromMemory);

    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        std::abort();
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    WaveHeaderHandle* fromFile = OpenWaveHeader(path.c_str());
    exercise(fromFile);
    CloseWaveHeader(fromFile);

    AudioFileInfo info;
    AnalyzeWaveFile(path.c_str(), info, true, true);
    return 0;
}
