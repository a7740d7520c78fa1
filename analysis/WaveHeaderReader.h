#pragma once

// Reader for uncompressed audio files: WAV (RIFF), AIFF/AIFC (FORM) and CAF.
// It decodes the header into a handle and then reads sample data from it.
// Problems are reported only as coded texts ("E2006110803 : File size is too
// small.") to one process-wide callback; functions return -1 or null.
// GUI-free and Qt-free, so that it can be fuzzed on its own.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class WaveByteSource;

inline constexpr int kWaveMaxMarkers = 256;
inline constexpr int kWaveMaxLoops = 256;

enum class WaveSampleCoding : std::int32_t
{
    None = 0,
    Integer = 1, // two's complement, except 8-bit WAV which is offset binary
    Float = 2,
};

struct WaveHeaderHandle
{
    std::int32_t container = 0;   // 1 RIFF, 2 FORM, 3 CAF
    std::int32_t endian = 0;      // 1 little-endian, 2 big-endian
    std::int32_t formatIndex = 0; // 1 WAV, 2 AIFF, 3 CAF
    std::int32_t samplingRate = 0;
    std::int32_t channels = 0;
    std::int32_t bitDepth = 0;
    std::int32_t samples = 0; // frames
    std::int32_t dataOffset = 0;
    std::int32_t markerCount = 0;
    std::array<std::uint32_t, kWaveMaxMarkers> markerIds{};
    std::array<std::uint32_t, kWaveMaxMarkers> markerPositions{};
    std::int32_t loopCount = 0;
    std::array<std::uint32_t, kWaveMaxLoops> loopStarts{};
    std::array<std::uint32_t, kWaveMaxLoops> loopEnds{}; // exclusive
    std::int32_t fileSize = 0;
    std::int32_t readPosition = 0;
    std::int32_t strict = 0;
    std::int32_t unalignedChunks = 0;

    // Reader state beyond what callers read.
    std::unique_ptr<WaveByteSource> io;
    std::int64_t usableSize = 0;
    std::int64_t dataStart = 0; // 64-bit twin of dataOffset
    std::int64_t dataBytes = 0; // samples x blockAlign
    std::int64_t position = 0;  // 64-bit twin of readPosition
    std::int32_t blockAlign = 0;
    std::int32_t bytesPerSample = 0; // container size of one sample value
    WaveSampleCoding coding = WaveSampleCoding::None;
    bool samplesBigEndian = false;
    bool unsigned8 = false;
    std::vector<std::string> markerLabels; // parallel to markerIds, may be empty
};

struct WaveHeaderLibraryParams
{
    std::int32_t strict = 0;
};

using WaveHeaderErrorCallback = void (*)(const char* message);

// The callback is process-wide; nullptr silences the reader.
void SetWaveHeaderErrorCallback(WaveHeaderErrorCallback callback);
WaveHeaderErrorCallback GetWaveHeaderErrorCallback();

// Reference-counted: only the first call takes its parameters, only the last
// finalisation releases.
void InitializeWaveHeaderLibrary(const WaveHeaderLibraryParams* params = nullptr);
void FinalizeWaveHeaderLibrary();

// localPath is in the local 8-bit encoding.
WaveHeaderHandle* OpenWaveHeader(const char* localPath);
// The handle reads from the caller's buffer and must not outlive it.
WaveHeaderHandle* OpenWaveHeaderFromMemory(const void* data, std::size_t size);
void CloseWaveHeader(WaveHeaderHandle* handle);

std::int32_t GetWaveSamplingRate(const WaveHeaderHandle* handle);
std::int32_t GetWaveChannels(const WaveHeaderHandle* handle);
std::int32_t GetWaveBitDepth(const WaveHeaderHandle* handle);
std::int32_t GetWaveSamples(const WaveHeaderHandle* handle);
std::int32_t GetWaveFormatIndex(const WaveHeaderHandle* handle);
std::int32_t GetWaveMarkerCount(const WaveHeaderHandle* handle);
std::int32_t GetWaveLoopCount(const WaveHeaderHandle* handle);

// 0 on success, -1 on a null handle or an index out of range.
std::int32_t GetLoop(const WaveHeaderHandle* handle, std::int32_t loopIndex, std::uint32_t* start,
                     std::uint32_t* end);
// The marker's index, -1 when absent.
std::int32_t FindMarkerIndex(const WaveHeaderHandle* handle, std::uint32_t markerId);
// The marker's label text from 'labl' or the AIFF marker name; empty when none.
std::string GetMarkerLabel(const WaveHeaderHandle* handle, std::int32_t markerIndex);

// origin 0: from the first sample, 1: from the current position, 2: from the
// end of the data. The position is clamped to the data. Returns the new frame
// index, or -1.
std::int64_t SeekSample(WaveHeaderHandle* handle, std::int64_t count, std::int32_t origin);

// Decodes count sample values (channels x frames) at the current position into
// left-justified signed 32-bit values. Returns the number of values decoded;
// values past the end of the data are not written. -1 on error.
std::int64_t DecodeSamples(WaveHeaderHandle* handle, std::int32_t* destination, std::int64_t count);

// One frame as two 16-bit values: the first two channels, or the one channel
// twice for mono. 0 on success, -1 at the end of the data or on error.
std::int32_t ReadStereo16(WaveHeaderHandle* handle, std::int16_t* left, std::int16_t* right);

// Raw bytes from the file (for readers that take the sample block whole).
// Returns the number of bytes read.
std::size_t ReadWaveBytes(WaveHeaderHandle* handle, std::int64_t offset, void* destination,
                          std::size_t size);

// The format name shown to the user: "Unknown", "wav" or "aiff".
const char* WaveFormatName(std::int32_t formatIndex);
