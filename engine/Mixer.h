#pragma once

#include "CommandQueue.h"
#include "Voice.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace AudioEngine {

struct MixerCommand
{
    enum class Type : std::int32_t
    {
        Add,
        Stop,    // ramp out, then Stopped
        StopNow, // no ramp: nobody is listening
        Volume,  // ramp to `value`
    };
    Type type = Type::Add;
    Voice* voice = nullptr;
    float value = 0.0f;
};

// Mixes the active voices into interleaved stereo float. Render() and
// ProcessCommands() run on one thread (the device callback, or the offline
// caller); Post() on the control thread. Nothing in the render path allocates,
// locks or reads a file: a streamed voice plays from the ring its worker fills.
//
// Every start (and so every seek) ramps in from silence, every stop ramps out;
// a resampled sound plays to its true last frame and ramps out over the frames
// before it, and so does a play range, which ends anywhere in a sound.
class Mixer final
{
public:
    static constexpr std::size_t kBlockFrames = 512;
    static constexpr std::size_t kMaxPull = 256;

    Mixer(std::int32_t outputRate, std::int32_t maxVoices);
    Mixer(const Mixer&) = delete;
    Mixer& operator=(const Mixer&) = delete;

    std::int32_t OutputRate() const { return outputRate_; }
    // About 5 ms: short enough to feel instant, long enough not to click.
    std::int32_t RampFrames() const { return rampFrames_; }

    bool Post(const MixerCommand& command) { return queue_.Push(command); }

    void ProcessCommands();
    // Overwrites `out` with the mix, clipped to full scale.
    void Render(float* out, std::size_t frames);

    // Finishes every voice at once (device closed, engine finalised).
    void ReleaseAll();

    // Blocks in which a streamed voice had to wait for its worker.
    std::int64_t Underruns() const { return underruns_.load(std::memory_order_relaxed); }

    // Hands out the sound's next frames as float, jumping at the loop: host floats
    // straight from their memory, other encodings converted into the voice's
    // scratch (at most kMaxPull frames a call), a stream copied out of its ring.
    // The frames stay valid until the next call for the same voice, which the
    // resampler relies on. Returns 0 at the end, -1 when a stream's ring is empty.
    static long PullSource(Voice& voice, const float** data, long maxFrames);

    // The resampler's pull callback: the sound's frames, then silence past its
    // end so that the filter plays out to the true last frame.
    static long FeedResampler(void* voice, float** data);

    // Output frames that `frames` frames of the sound last at the output rate,
    // counting a last partial interval whole.
    static std::int64_t OutputFrames(const Voice& voice, std::int64_t frames);

private:
    static void ConvertBlock(const Voice& voice, std::int64_t frame, long frames);
    static long PullStream(Voice& voice, const float** data, long maxFrames);
    void Apply(const MixerCommand& command);
    void Activate(Voice& voice);
    bool StreamCanFeed(const Voice& voice, long outputFrames) const;
    // Returns false once the voice has finished.
    bool MixVoice(Voice& voice, float* out, std::size_t frames);
    void Finish(Voice& voice, VoiceState state);
    void Drop(Voice& voice, VoiceState state);
    void StartRamp(Voice& voice, float target);

    std::int32_t outputRate_;
    std::int32_t rampFrames_;
    std::size_t capacity_;
    std::vector<Voice*> active_;
    CommandQueue<MixerCommand, 256> queue_;
    std::atomic<std::int64_t> underruns_{0};
};

} // namespace AudioEngine
