#include "MemorySound.h"

#include "EngineMemory.h"

#include <WaveHeaderReader.h>

#include <algorithm>
#include <memory>

namespace AudioEngine {

namespace {

constexpr const char* kErrDecode = "E2026112206";
constexpr const char* kErrNoMemory = "E2026112203";
constexpr std::int64_t kChunkValues = 16384;

struct HandleCloser
{
    void operator()(WaveHeaderHandle* h) const { CloseWaveHeader(h); }
};

} // namespace

bool DecodeMemorySound(const void* data, std::size_t size, MemorySound& out)
{
    std::unique_ptr<WaveHeaderHandle, HandleCloser> handle(OpenWaveHeaderFromMemory(data, size));
    if (!handle) {
        ReportError(kErrDecode, "Can not decode the wave data.");
        return false;
    }
    const std::int32_t channels = GetWaveChannels(handle.get());
    const std::int32_t rate = GetWaveSamplingRate(handle.get());
    const std::int32_t frames = GetWaveSamples(handle.get());
    if (channels < 1 || rate < 1 || frames < 0) {
        ReportError(kErrDecode, "Can not decode the wave data.");
        return false;
    }
    const std::int64_t values = static_cast<std::int64_t>(frames) * channels;
    auto* samples = static_cast<float*>(
        Allocate(static_cast<std::size_t>(std::max<std::int64_t>(values, 1)) * sizeof(float)));
    auto* chunk = static_cast<std::int32_t*>(Allocate(kChunkValues * sizeof(std::int32_t)));
    if (!samples || !chunk) {
        Release(samples);
        Release(chunk);
        ReportError(kErrNoMemory, "Can not allocate memory.");
        return false;
    }

    // Left-justified 32-bit values: 2^31 is full scale whatever the bit depth.
    constexpr float kScale = 1.0f / 2147483648.0f;
    SeekSample(handle.get(), 0, 0);
    std::int64_t done = 0;
    while (done < values) {
        const std::int64_t want = std::min(kChunkValues - kChunkValues % channels, values - done);
        const std::int64_t got = DecodeSamples(handle.get(), chunk, want);
        if (got <= 0)
            break;
        for (std::int64_t i = 0; i < got; ++i)
            samples[done + i] = static_cast<float>(chunk[i]) * kScale;
        done += got;
    }
    Release(chunk);
    // A truncated data block plays what is there, then silence to the stated length.
    std::fill(samples + done, samples + values, 0.0f);

    out.frames = samples;
    out.frameCount = frames;
    out.channels = channels;
    out.rate = rate;
    out.loopStart = out.loopEnd = 0;
    std::uint32_t start = 0;
    std::uint32_t end = 0;
    if (GetWaveLoopCount(handle.get()) >= 1 && GetLoop(handle.get(), 0, &start, &end) == 0 &&
        start < end) {
        out.loopStart = start;
        out.loopEnd = end;
    }
    return true;
}

} // namespace AudioEngine
