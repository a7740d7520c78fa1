#include "WaveHeaderReader.h"

#include "WaveByteSource.h"
#include "WaveChunkParser.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <mutex>
#include <new>

namespace {

std::atomic<WaveHeaderErrorCallback> g_errorCallback{nullptr};

struct Library
{
    std::mutex mutex;
    int references = 0;
    std::int32_t strict = 0;
};

Library& library()
{
    static Library instance;
    return instance;
}

void report(const char* message)
{
    if (const WaveHeaderErrorCallback callback = g_errorCallback.load())
        callback(message);
}

std::int32_t strictSetting()
{
    Library& lib = library();
    const std::lock_guard<std::mutex> lock(lib.mutex);
    return lib.references > 0 ? lib.strict : 0;
}

std::uint32_t readU32(const unsigned char* p, bool bigEndian)
{
    return bigEndian ? (std::uint32_t(p[0]) << 24) | (std::uint32_t(p[1]) << 16) |
                           (std::uint32_t(p[2]) << 8) | p[3]
                     : std::uint32_t(p[0]) | (std::uint32_t(p[1]) << 8) |
                           (std::uint32_t(p[2]) << 16) | (std::uint32_t(p[3]) << 24);
}

WaveHeaderHandle* fail(WaveHeaderHandle* handle, const char* message)
{
    if (message)
        report(message);
    delete handle;
    return nullptr;
}

void emit(const WaveParseOutcome& outcome)
{
    for (const std::string& message : outcome.messages)
        report(message.c_str());
}

bool usable(WaveParseResult result)
{
    return result == WaveParseResult::Ok || result == WaveParseResult::OkWithJunk;
}

// RIFF and FORM state their size; trust the smallest of that, the file and
// what the chunks add up to.
bool checkStatedSize(WaveHeaderHandle& h, bool bigEndian)
{
    unsigned char head[4];
    const std::int64_t fileSize = h.io->size();
    if (!h.io->readExact(4, head, 4))
        return false;
    const std::int64_t stated = std::int64_t(readU32(head, bigEndian)) + 8;
    h.usableSize = fileSize;
    if (stated == fileSize)
        return true;
    const std::int64_t walked = WalkRiffFormSize(*h.io, bigEndian, fileSize);
    if (std::abs(stated - walked) > 1 && h.strict) {
        report("E2006110801 : The size written in header is not same as actual file size.");
        return false;
    }
    h.usableSize = std::min({fileSize, stated, walked});
    return true;
}

WaveParseOutcome parse(WaveHeaderHandle& h, std::int32_t container)
{
    ResetParsedFields(h);
    switch (container) {
    case 1:
        return ParseRiffChunks(h);
    case 2:
        return ParseFormChunks(h);
    default:
        return ParseCafChunks(h);
    }
}

WaveHeaderHandle* openFrom(std::unique_ptr<WaveByteSource> io)
{
    auto* handle = new (std::nothrow) WaveHeaderHandle{};
    if (!handle) {
        report("E2006110101 : Can not allocate memory.");
        report("E2006110125 : Can not create Hdrx handle.");
        return nullptr;
    }
    if (!io) {
        report("E2006110802 : Can not open file.");
        return fail(handle, "E2006110126 : Can not open file.");
    }
    WaveHeaderHandle& h = *handle;
    h.io = std::move(io);
    h.strict = strictSetting();
    if (h.io->size() <= 12)
        return fail(handle, "E2006110803 : File size is too small.");

    unsigned char id[4];
    if (!h.io->readExact(0, id, 4))
        return fail(handle, "E2006110883 : Can not confirm the file identifier.");
    std::int32_t container = 0;
    if (std::memcmp(id, "RIFF", 4) == 0)
        container = 1;
    else if (std::memcmp(id, "FORM", 4) == 0)
        container = 2;
    else if (std::memcmp(id, "caff", 4) == 0)
        container = 3;
    else
        return fail(handle, "E2006110883 : Can not confirm the file identifier.");

    h.usableSize = h.io->size();
    if (container != 3 && !checkStatedSize(h, container == 2))
        return fail(handle, nullptr);

    WaveParseOutcome outcome = parse(h, container);
    const bool retry =
        outcome.result == WaveParseResult::Broken || outcome.result == WaveParseResult::OkWithJunk;
    if (retry && !h.strict && container != 3) {
        // Some writers leave out the pad byte after odd-sized chunks.
        h.unalignedChunks = 1;
        WaveParseOutcome unaligned = parse(h, container);
        if (unaligned.result == WaveParseResult::Ok ||
            (usable(unaligned.result) && !usable(outcome.result))) {
            outcome = std::move(unaligned);
            outcome.messages.emplace_back(
                "W2020112601 : Invalid format. Chunks should be aligned on 2-byte boundaries.");
        } else {
            h.unalignedChunks = 0;
            if (usable(outcome.result))
                outcome = parse(h, container);
        }
    }
    emit(outcome);
    if (!usable(outcome.result))
        return fail(handle, "E2006110127 : Can not decode file header.");

    const char* invalid = nullptr;
    if (h.container < 1 || h.container > 3)
        invalid = "E2006110889 : Can not confirm the file identifier.";
    else if (h.endian < 1 || h.endian > 2)
        invalid = "E2006110886 : Can not confirm endian type.";
    else if (h.formatIndex < 1 || h.formatIndex > 3)
        invalid = "E2006110887 : Can not confirm the file format.";
    else if (!h.io)
        invalid = "E2006110888 : Can not mount file I/O interface.";
    if (invalid) {
        report(invalid);
        return fail(handle, "E2006110127 : Can not decode file header.");
    }
    h.fileSize = static_cast<std::int32_t>(
        std::min<std::int64_t>(h.usableSize, std::numeric_limits<std::int32_t>::max()));
    h.position = h.dataStart;
    return handle;
}

template<typename Getter>
std::int32_t get(const WaveHeaderHandle* handle, const char* nullMessage, Getter getter)
{
    if (!handle) {
        report(nullMessage);
        return -1;
    }
    return getter(*handle);
}

void setPosition(WaveHeaderHandle& h, std::int64_t position)
{
    h.position = std::clamp(position, h.dataStart, h.dataStart + h.dataBytes);
    h.readPosition = static_cast<std::int32_t>(
        std::min<std::int64_t>(h.position, std::numeric_limits<std::int32_t>::max()));
}

std::int32_t floatToInt(double value)
{
    if (!(value == value)) // NaN
        return 0;
    const double scaled = std::clamp(value * 8388608.0, -8388608.0, 8388607.0);
    return static_cast<std::int32_t>(scaled) * 256;
}

// Converts n values from raw bytes into left-justified 32-bit integers.
void convert(const WaveHeaderHandle& h, const unsigned char* src, std::int32_t* dst, std::size_t n)
{
    const bool be = h.samplesBigEndian;
    if (h.coding == WaveSampleCoding::Float) {
        if (h.bytesPerSample == 4) {
            for (std::size_t i = 0; i < n; ++i) {
                const std::uint32_t bits = readU32(src + 4 * i, be);
                float value;
                std::memcpy(&value, &bits, 4);
                dst[i] = floatToInt(value);
            }
        } else {
            for (std::size_t i = 0; i < n; ++i) {
                const unsigned char* p = src + 8 * i;
                const std::uint64_t bits =
                    be ? (std::uint64_t(readU32(p, true)) << 32) | readU32(p + 4, true)
                       : (std::uint64_t(readU32(p + 4, false)) << 32) | readU32(p, false);
                double value;
                std::memcpy(&value, &bits, 8);
                dst[i] = floatToInt(value);
            }
        }
        return;
    }
    switch (h.bytesPerSample) {
    case 1:
        for (std::size_t i = 0; i < n; ++i) {
            const std::uint32_t v = h.unsigned8 ? std::uint32_t(src[i] ^ 0x80u) : src[i];
            dst[i] = static_cast<std::int32_t>(v << 24);
        }
        break;
    case 2:
        for (std::size_t i = 0; i < n; ++i) {
            const unsigned char* p = src + 2 * i;
            const std::uint32_t v =
                be ? (std::uint32_t(p[0]) << 8) | p[1] : (std::uint32_t(p[1]) << 8) | p[0];
            dst[i] = static_cast<std::int32_t>(v << 16);
        }
        break;
    case 3:
        for (std::size_t i = 0; i < n; ++i) {
            const unsigned char* p = src + 3 * i;
            const std::uint32_t v =
                be ? (std::uint32_t(p[0]) << 16) | (std::uint32_t(p[1]) << 8) | p[2]
                   : (std::uint32_t(p[2]) << 16) | (std::uint32_t(p[1]) << 8) | p[0];
            dst[i] = static_cast<std::int32_t>(v << 8);
        }
        break;
    default:
        for (std::size_t i = 0; i < n; ++i)
            dst[i] = static_cast<std::int32_t>(readU32(src + 4 * i, be));
        break;
    }
}

} // namespace

void SetWaveHeaderErrorCallback(WaveHeaderErrorCallback callback)
{
    g_errorCallback.store(callback);
}

WaveHeaderErrorCallback GetWaveHeaderErrorCallback()
{
    return g_errorCallback.load();
}

void InitializeWaveHeaderLibrary(const WaveHeaderLibraryParams* params)
{
    Library& lib = library();
    const std::lock_guard<std::mutex> lock(lib.mutex);
    if (lib.references++ == 0)
        lib.strict = params ? params->strict : 0;
}

void FinalizeWaveHeaderLibrary()
{
    Library& lib = library();
    const std::lock_guard<std::mutex> lock(lib.mutex);
    if (lib.references > 0 && --lib.references == 0)
        lib.strict = 0;
}

WaveHeaderHandle* OpenWaveHeader(const char* localPath)
{
    return openFrom(WaveByteSource::openFile(localPath));
}

WaveHeaderHandle* OpenWaveHeaderFromMemory(const void* data, std::size_t size)
{
    return openFrom(WaveByteSource::fromMemory(data, size));
}

void CloseWaveHeader(WaveHeaderHandle* handle)
{
    delete handle;
}

std::int32_t GetWaveSamplingRate(const WaveHeaderHandle* handle)
{
    return get(handle, "E2006110138 : NULL pointer is passed.",
               [](const WaveHeaderHandle& h) { return h.samplingRate; });
}

std::int32_t GetWaveChannels(const WaveHeaderHandle* handle)
{
    return get(handle, "E2006110139 : NULL pointer is passed.",
               [](const WaveHeaderHandle& h) { return h.channels; });
}

std::int32_t GetWaveBitDepth(const WaveHeaderHandle* handle)
{
    return get(handle, "E2006110140 : NULL pointer is passed.",
               [](const WaveHeaderHandle& h) { return h.bitDepth; });
}

std::int32_t GetWaveSamples(const WaveHeaderHandle* handle)
{
    return get(handle, "E2006110141 : NULL pointer is passed.",
               [](const WaveHeaderHandle& h) { return h.samples; });
}

std::int32_t GetWaveFormatIndex(const WaveHeaderHandle* handle)
{
    return get(handle, "E2006110143 : NULL pointer is passed.",
               [](const WaveHeaderHandle& h) { return h.formatIndex; });
}

std::int32_t GetWaveMarkerCount(const WaveHeaderHandle* handle)
{
    return get(handle, "E2006110145 : NULL pointer is passed.",
               [](const WaveHeaderHandle& h) { return h.markerCount; });
}

std::int32_t GetWaveLoopCount(const WaveHeaderHandle* handle)
{
    return get(handle, "E2006110149 : NULL pointer is passed.",
               [](const WaveHeaderHandle& h) { return h.loopCount; });
}

std::int32_t GetLoop(const WaveHeaderHandle* handle, std::int32_t loopIndex, std::uint32_t* start,
                     std::uint32_t* end)
{
    if (!handle) {
        report("E2006110150 : NULL pointer is passed.");
        return -1;
    }
    if (loopIndex < 0 || loopIndex >= handle->loopCount) {
        report("E2006110810 : Specified loop ID is out of range.");
        return -1;
    }
    if (start)
        *start = handle->loopStarts[loopIndex];
    if (end)
        *end = handle->loopEnds[loopIndex];
    return 0;
}

std::int32_t FindMarkerIndex(const WaveHeaderHandle* handle, std::uint32_t markerId)
{
    if (!handle) {
        report("E2006110151 : NULL pointer is passed.");
        return -1;
    }
    const std::int32_t count = std::clamp(handle->markerCount, 0, kWaveMaxMarkers);
    for (std::int32_t i = 0; i < count; ++i) {
        if (handle->markerIds[i] == markerId)
            return i;
    }
    return -1;
}

std::string GetMarkerLabel(const WaveHeaderHandle* handle, std::int32_t markerIndex)
{
    if (!handle || markerIndex < 0 ||
        static_cast<std::size_t>(markerIndex) >= handle->markerLabels.size())
        return {};
    return handle->markerLabels[markerIndex];
}

std::int64_t SeekSample(WaveHeaderHandle* handle, std::int64_t count, std::int32_t origin)
{
    if (!handle) {
        report("E2006110152 : NULL pointer is passed.");
        return -1;
    }
    WaveHeaderHandle& h = *handle;
    if (h.blockAlign <= 0 || origin < 0 || origin > 2)
        return -1;
    const std::int64_t base = origin == 0   ? h.dataStart
                              : origin == 1 ? h.position
                                            : h.dataStart + h.dataBytes;
    // Counts past the data are clamped, so the product cannot overflow.
    constexpr std::int64_t kFrameLimit = std::int64_t(1) << 32;
    const std::int64_t frames = std::clamp<std::int64_t>(count, -kFrameLimit, kFrameLimit);
    setPosition(h, base + frames * h.blockAlign);
    return (h.position - h.dataStart) / h.blockAlign;
}

std::int64_t DecodeSamples(WaveHeaderHandle* handle, std::int32_t* destination, std::int64_t count)
{
    if (!handle || !destination) {
        report("E2006110153 : NULL pointer is passed.");
        return -1;
    }
    WaveHeaderHandle& h = *handle;
    if (count < 0 || h.bytesPerSample <= 0 || h.coding == WaveSampleCoding::None)
        return -1;
    const std::int64_t available = (h.dataStart + h.dataBytes - h.position) / h.bytesPerSample;
    const std::int64_t total = std::min(count, available);
    constexpr std::size_t kChunkBytes = 1 << 15;
    unsigned char buffer[kChunkBytes];
    const std::size_t perChunk = kChunkBytes / static_cast<std::size_t>(h.bytesPerSample);
    std::int64_t done = 0;
    while (done < total) {
        const auto n = static_cast<std::size_t>(std::min<std::int64_t>(total - done, perChunk));
        const std::size_t bytes = n * static_cast<std::size_t>(h.bytesPerSample);
        if (!h.io->readExact(h.position, buffer, bytes)) {
            report("E2006110154 : Can not read sample data.");
            break;
        }
        convert(h, buffer, destination + done, n);
        setPosition(h, h.position + static_cast<std::int64_t>(bytes));
        done += static_cast<std::int64_t>(n);
    }
    return done;
}

std::int32_t ReadStereo16(WaveHeaderHandle* handle, std::int16_t* left, std::int16_t* right)
{
    if (!handle || !left || !right) {
        report("E2006110155 : NULL pointer is passed.");
        return -1;
    }
    WaveHeaderHandle& h = *handle;
    if (h.channels <= 0 || h.bytesPerSample <= 0)
        return -1;
    const std::int64_t frameEnd = h.position + h.blockAlign;
    if (frameEnd > h.dataStart + h.dataBytes)
        return -1;
    if (h.coding == WaveSampleCoding::Integer && h.bytesPerSample == 2 && !h.samplesBigEndian &&
        h.channels == 2) {
        unsigned char raw[4];
        if (!h.io->readExact(h.position, raw, 4))
            return -1;
        *left = static_cast<std::int16_t>(raw[0] | (raw[1] << 8));
        *right = static_cast<std::int16_t>(raw[2] | (raw[3] << 8));
        setPosition(h, frameEnd);
        return 0;
    }
    std::int32_t values[2] = {0, 0};
    const std::int64_t wanted = h.channels == 1 ? 1 : 2;
    if (DecodeSamples(handle, values, wanted) != wanted)
        return -1;
    if (wanted == 1)
        values[1] = values[0];
    *left = static_cast<std::int16_t>(values[0] >> 16);
    *right = static_cast<std::int16_t>(values[1] >> 16);
    setPosition(h, frameEnd);
    return 0;
}

std::size_t ReadWaveBytes(WaveHeaderHandle* handle, std::int64_t offset, void* destination,
                          std::size_t size)
{
    if (!handle || !handle->io || !destination)
        return 0;
    return handle->io->readAt(offset, destination, size);
}

const char* WaveFormatName(std::int32_t formatIndex)
{
    switch (formatIndex) {
    case 1:
        return "wav";
    case 2:
        return "aiff";
    default:
        return "Unknown";
    }
}
