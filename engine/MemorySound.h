#pragma once

#include "SampleConversion.h"

#include <cstddef>
#include <cstdint>

namespace AudioEngine {

// A WAVE or AIFF file held in memory, described where its samples lie. Nothing is
// decoded up front: the mixer converts each block as it plays, so starting a
// sound costs the same for one second as for one hour.
struct MemorySound
{
    const unsigned char* samples = nullptr; // first byte of the data block, in the caller's memory
    SampleEncoding encoding = SampleEncoding::None;
    std::int64_t valuesInMemory = 0; // a truncated file holds fewer than frameCount * channels
    std::int64_t frameCount = 0;     // as the header states it
    std::int32_t channels = 0;
    std::int32_t rate = 0;
    std::int64_t loopStart = 0;
    std::int64_t loopEnd = 0; // exclusive; 0 when the file has no loop
};

// Reads the header through the wave header reader (any sample format it reads).
// Reports its own error text and returns false on failure.
bool DescribeMemorySound(const void* data, std::size_t size, MemorySound& out);

} // namespace AudioEngine
