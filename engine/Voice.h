#pragma once

#include "AudioEngine.h"
#include "SampleConversion.h"

#include <atomic>
#include <cstdint>

typedef struct SRC_STATE_tag SRC_STATE;

namespace AudioEngine {

struct Stream;

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
// voice once `released` is set (and, for a stream, once the worker let go).
//
// A streamed voice is queued with only its control fields: the streaming worker
// opens the sound and fills in the format block and its buffers, then marks the
// stream ready; the mixer reads them only after it has seen that mark.
struct Voice
{
    // Format block: control thread (streaming worker for a stream), read-only
    // once playing. The sound's samples, interleaved, `channels` per frame, in
    // the memory the player was given: host floats are read in place, anything
    // else is converted block by block into `scratch` as the mixer reaches it.
    const void* samples = nullptr;
    SampleEncoding encoding = SampleEncoding::Float32Native;
    std::int64_t valuesInMemory = 0; // values past it (a truncated file) play as silence
    float* scratch = nullptr;        // Mixer::kMaxPull frames, filled by the mixer
    std::int64_t frameCount = -1;    // -1: a stream of unknown length
    std::int32_t channels = 0;
    std::int32_t rate = 0;
    std::int32_t outputRate = 0;
    std::int64_t loopStart = 0;
    std::int64_t loopEnd = 0; // exclusive; looped when loopEnd > loopStart
    std::int64_t startFrame = 0;
    std::int64_t endFrame = -1; // exclusive end of a play range; -1: the sound's end
    SRC_STATE* resampler = nullptr;
    double resampleRatio = 1.0; // output rate / sound rate
    float* resampleBuffer = nullptr;
    float leftGain[kMaxVoiceChannels] = {};
    float rightGain[kMaxVoiceChannels] = {};

    // Control block, set before queuing.
    PlaybackId id = kInvalidPlaybackId;
    float initialVolume = 1.0f;
    bool fadeIn = true;
    Stream* stream = nullptr;
    VoicePool* pool = nullptr;
    Player* player = nullptr;

    // Mixer thread only.
    std::int64_t readPos = 0;
    std::int64_t pulled = 0;  // timeline frames taken from the sound since the start
    std::int64_t mixed = 0;   // output frames mixed since the start
    std::int64_t outEnd = -1; // output frames to the natural end; -1 while unknown or looping
    bool loopActive = false;  // jump back at loopEnd
    bool sourceDone = false;  // the sound gave its last frame
    bool endFade = false;     // ramp out over the last frames before outEnd
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
    // The frame after the last one a linear (unlooped) playback reaches.
    std::int64_t LinearEnd() const
    {
        return endFrame >= 0 && (frameCount < 0 || endFrame < frameCount) ? endFrame : frameCount;
    }
};

// Per-channel gains that fold 1..8 channels into stereo: mono to both sides,
// stereo as it is; more channels with the usual downmix weights (centre and
// surrounds at -3 dB, LFE dropped) scaled so that full scale on every channel
// still cannot clip.
void SetStereoFold(Voice& voice);

} // namespace AudioEngine
