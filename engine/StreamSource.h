#pragma once

#include <cstdint>

namespace AudioEngine {

// What a streamed sound reports when it opens.
struct StreamFormat
{
    std::int32_t channels = 0;
    std::int32_t rate = 0;
    std::int64_t frameCount = -1; // -1 while unknown: the sound ends where Read returns 0
    std::int64_t loopStart = 0;
    std::int64_t loopEnd = 0; // exclusive; looped when loopEnd > loopStart
};

// A sound the engine reads a block at a time on its streaming worker, into a
// bounded ring the mixer plays from: a WAV or AIFF file on disk
// (WaveFileStream), or any decoder that can hand out float frames and seek.
// Every call comes from the worker thread; none from the device callback.
class StreamSource
{
public:
    virtual ~StreamSource() = default;

    // Called once, before any other call. False when the sound cannot be played;
    // the source reports why through the engine's error callback or not at all.
    virtual bool Open(StreamFormat& format) = 0;
    // Moves the next Read to `frame` (0 = the first frame). False when it cannot.
    virtual bool Seek(std::int64_t frame) = 0;
    // Up to `frames` interleaved float frames, full scale +-1.0, NaN-free.
    // Returns the count, 0 at the end, -1 on a read error (the sound then ends).
    virtual long Read(float* out, long frames) = 0;
};

} // namespace AudioEngine
