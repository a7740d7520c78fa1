#include "MemorySound.h"

#include "EngineErrors.h"
#include "EngineMemory.h"

#include <WaveHeaderReader.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace AudioEngine {

namespace {

constexpr std::int64_t kChunkValues = 16384;

struct HandleCloser
{
    void operator()(WaveHeaderHandle* h) const { CloseWaveHeader(h); }
};

// Little-endian 16-bit, 24-bit and float data (nearly every WAV) converted straight
// from the file's bytes: one pass instead of decode-then-scale. Returns the values
// written, or -1 when the format needs the reader's general decoder.
std::int64_t ConvertDirect(const WaveHeaderHandle& h, const void* data, std::size_t size,
                           float* out, std::int64_t values)
{
    if (h.samplesBigEndian || h.dataStart < 0 || static_cast<std::uint64_t>(h.dataStart) > size)
        return -1;
    const bool int16 = h.coding == WaveSampleCoding::Integer && h.bytesPerSample == 2;
    const bool int24 = h.coding == WaveSampleCoding::Integer && h.bytesPerSample == 3;
    const bool float32 = h.coding == WaveSampleCoding::Float && h.bytesPerSample == 4;
    if (!int16 && !int24 && !float32)
        return -1;
    const auto* p = static_cast<const unsigned char*>(data) + h.dataStart;
    const std::int64_t inFile =
        static_cast<std::int64_t>(size - static_cast<std::size_t>(h.dataStart)) / h.bytesPerSample;
    const std::int64_t n = std::min(values, std::min(inFile, h.dataBytes / h.bytesPerSample));
    if (int16) {
        for (std::int64_t i = 0; i < n; ++i) {
            const auto v = static_cast<std::int16_t>(p[2 * i] | (p[2 * i + 1] << 8));
            out[i] = static_cast<float>(v) * (1.0f / 32768.0f);
        }
    } else if (int24) {
        for (std::int64_t i = 0; i < n; ++i) {
            const unsigned char* b = p + 3 * i;
            const auto v = static_cast<std::int32_t>(static_cast<std::uint32_t>(b[0]) << 8 |
                                                     static_cast<std::uint32_t>(b[1]) << 16 |
                                                     static_cast<std::uint32_t>(b[2]) << 24);
            out[i] = static_cast<float>(v) * (1.0f / 2147483648.0f);
        }
    } else {
        // The reader's decoder clamps float data to 24 bits; playing the file's own
        // floats keeps their full precision.
        std::memcpy(out, p, static_cast<std::size_t>(n) * sizeof(float));
    }
    return n;
}

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
    const std::int64_t stated = static_cast<std::int64_t>(frames) * channels;
    std::int64_t values = stated;
    std::size_t capacity = 0;
    float* samples =
        AcquireSampleBuffer(static_cast<std::size_t>(std::max<std::int64_t>(values, 1)), &capacity);
    auto* chunk = static_cast<std::int32_t*>(Allocate(kChunkValues * sizeof(std::int32_t)));
    if (!samples || !chunk) {
        ReturnSampleBuffer(samples, capacity);
        Release(chunk);
        ReportError(kErrNoMemory, "Can not allocate memory.");
        return false;
    }

    // Left-justified 32-bit values: 2^31 is full scale whatever the bit depth.
    constexpr float kScale = 1.0f / 2147483648.0f;
    SeekSample(handle.get(), 0, 0);
    std::int64_t done = ConvertDirect(*handle, data, size, samples, values);
    if (done < 0)
        done = 0;
    else
        values = done; // what the file holds; the rest is silence below
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
    std::fill(samples + done, samples + stated, 0.0f);

    out.frames = samples;
    out.capacity = capacity;
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
