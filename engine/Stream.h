#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace AudioEngine {

class StreamSource;

enum class StreamPhase : std::int32_t
{
    Opening = 0,
    Ready = 1,
    Failed = 2,
};

// The bounded ring between the streaming worker (the only writer) and the
// mixer (the only reader) of one streamed voice, with what the worker needs to
// walk the sound's timeline: the head, then the loop body over and over, or
// straight on to the end. Counters are in frames and only grow.
struct Stream
{
    StreamSource* source = nullptr; // owned; deleted with the voice
    std::int32_t startMs = 0;
    std::int64_t rangeStart = -1; // a play range in frames, or -1
    std::int64_t rangeEnd = -1;
    std::int32_t maxChannels = 0; // the pool's limits, copied: the pool may go first
    std::int32_t maxRate = 0;

    // Set by the worker before the phase reads Ready.
    float* ring = nullptr;
    std::size_t capacity = 0; // frames, a power of two
    std::int32_t channels = 0;
    bool looping = false;

    // Shared.
    std::atomic<std::int32_t> phase{static_cast<std::int32_t>(StreamPhase::Opening)};
    std::atomic<std::uint64_t> written{0};
    std::atomic<std::uint64_t> read{0};
    std::atomic<bool> end{false};        // set after the last frame is written
    std::atomic<bool> workerDone{false}; // the worker will not touch the voice again

    // Worker only.
    std::int64_t position = 0; // next frame of the sound to read
    std::int64_t stopAt = -1;  // linear end, -1 when unknown
    std::int64_t loopStart = 0;
    std::int64_t loopEnd = 0;
};

} // namespace AudioEngine
