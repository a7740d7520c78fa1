#pragma once

#include <cstddef>
#include <cstdint>

namespace AudioEngine {

// A WAVE or AIFF file held in memory, decoded to interleaved float.
struct MemorySound
{
    float* frames = nullptr;  // from AcquireSampleBuffer
    std::size_t capacity = 0; // of `frames`, in floats
    std::int64_t frameCount = 0;
    std::int32_t channels = 0;
    std::int32_t rate = 0;
    std::int64_t loopStart = 0;
    std::int64_t loopEnd = 0; // exclusive; 0 when the file has no loop
};

// Decodes the whole file through the wave header reader (any bit depth it
// reads). Reports its own error text and returns false on failure.
bool DecodeMemorySound(const void* data, std::size_t size, MemorySound& out);

} // namespace AudioEngine
