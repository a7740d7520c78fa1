#include "MemorySound.h"

#include "EngineErrors.h"
#include "EngineMemory.h"

#include <WaveHeaderReader.h>

#include <algorithm>
#include <memory>

namespace AudioEngine {

namespace {

struct HandleCloser
{
    void operator()(WaveHeaderHandle* h) const { CloseWaveHeader(h); }
};

} // namespace

bool DescribeMemorySound(const void* data, std::size_t size, MemorySound& out)
{
    std::unique_ptr<WaveHeaderHandle, HandleCloser> handle(OpenWaveHeaderFromMemory(data, size));
    if (!handle) {
        ReportError(kErrDecode, "Can not decode the wave data.");
        return false;
    }
    const WaveHeaderHandle& h = *handle;
    const std::int32_t channels = GetWaveChannels(&h);
    const std::int32_t rate = GetWaveSamplingRate(&h);
    const std::int32_t frames = GetWaveSamples(&h);
    const SampleEncoding encoding = EncodingOf(h);
    if (channels < 1 || rate < 1 || frames < 0 || encoding == SampleEncoding::None ||
        h.dataStart < 0 || static_cast<std::uint64_t>(h.dataStart) > size) {
        ReportError(kErrDecode, "Can not decode the wave data.");
        return false;
    }
    const auto inMemory = static_cast<std::int64_t>(size - static_cast<std::size_t>(h.dataStart));
    out.samples = static_cast<const unsigned char*>(data) + h.dataStart;
    out.encoding = encoding;
    out.valuesInMemory = std::min(inMemory, h.dataBytes) / BytesPerSample(encoding);
    out.frameCount = frames;
    out.channels = channels;
    out.rate = rate;
    out.loopStart = out.loopEnd = 0;
    std::uint32_t start = 0;
    std::uint32_t end = 0;
    if (GetWaveLoopCount(&h) >= 1 && GetLoop(&h, 0, &start, &end) == 0 && start < end) {
        out.loopStart = start;
        out.loopEnd = end;
    }
    return true;
}

} // namespace AudioEngine
