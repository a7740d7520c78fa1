#pragma once

#include "AudioEngine.h"
#include "SampleConversion.h"

#include <atomic>
#include <cstdint>

typedef struct SRC_STATE_tag SRC_STATE;

namespace AudioEngine {

enum class VoiceState : std::int32_t
{
    Queued = 0,
    Playing = 1,
    Ended = 2,
    Stopped = 3,
    Error = 4,
};

constexpr int kMaxVoiceChannels = 8;

// One playback of one sound. The control thread fills the first block and then
// hands the voice to the mixer; from then on only the mixer touches the mixer
// block, and the control thread reads the atomics. The control thread frees the
// voice once `released` is set.
struct Voice
{
    // Control thread, read-only once queued.
    // The sound's samples, interleaved, `channels` per frame, in the memory the
    // player was given: host floats are read in place, anything else is
    // converted block by block into `scratch` as the mixer reaches it.
    const void* samples = nullptr;
    SampleEncoding encoding = SampleEncoding::Float32Native;
    std::int64_t valuesInMemory = 0; // values past it (a truncated file) play as silence
    float* scratch = nullptr;        // Mixer::kMaxPull frames, filled by the mixer
    std::int64_t frameCount = 0;
    std::int32_t channels = 0;
    std::int32_t rate = 0;
    std::int64_t loopStart = 0;
    std::int64_t loopEnd = 0; // exclusive; looped when loopEnd > loopStart
    std::int64_t startFrame = 0;
    PlaybackId id = kInvalidPlaybackId;
    SRC_STATE* resampler = nullptr;
    double resampleRatio = 1.0; // output rate / sound rate
    float* resampleBuffer = nullptr;
    float leftGain[kMaxVoiceChannels] = {};
    float rightGain[kMaxVoiceChannels] = {};
    float initialVolume = 1.0f;
    VoicePool* pool = nullptr;
    Player* player = nullptr;

    // Mixer thread only.
    std::int64_t readPos = 0;
    bool loopActive = false; // jump back at loopEnd
    float gain = 1.0f;
    float gainTarget = 1.0f;
    float gainStep = 0.0f;
    std::int32_t rampLeft = 0;
    bool stopping = false;

    // Shared.
    std::atomic<std::int32_t> state{static_cast<std::int32_t>(VoiceState::Queued)};
    std::atomic<std::int64_t> outFrames{0};
    std::atomic<bool> released{false};

    bool IsLooped() const { return loopEnd > loopStart; }
};

// Per-channel gains that fold 1..8 channels into stereo (mono to both sides,
// centre at -3 dB to both, LFE dropped, the rest alternating left and right).
void SetStereoFold(Voice& voice);

} // namespace AudioEngine
