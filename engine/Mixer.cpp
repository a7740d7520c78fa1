#include "Mixer.h"

#include "Stream.h"

#include <samplerate.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace AudioEngine {

namespace {

// Fed to the resampler past a sound's end (and through a stream's rare underrun).
const float kSilence[Mixer::kMaxPull * kMaxVoiceChannels] = {};

enum Role
{
    FrontLeft,
    FrontRight,
    Centre,
    Lfe,
    SurroundLeft,
    SurroundRight,
    SurroundCentre,
};

// Channel roles in the WAVE order for 3 to 8 channels: L R C; quad; 5.0; 5.1;
// 6.1 (back centre); 7.1 (back pair, then side pair).
const Role kLayouts[6][8] = {
    {FrontLeft, FrontRight, Centre},
    {FrontLeft, FrontRight, SurroundLeft, SurroundRight},
    {FrontLeft, FrontRight, Centre, SurroundLeft, SurroundRight},
    {FrontLeft, FrontRight, Centre, Lfe, SurroundLeft, SurroundRight},
    {FrontLeft, FrontRight, Centre, Lfe, SurroundCentre, SurroundLeft, SurroundRight},
    {FrontLeft, FrontRight, Centre, Lfe, SurroundLeft, SurroundRight, SurroundLeft, SurroundRight},
};

} // namespace

namespace {

// Left and right weights of each channel of an n-channel sound (3..8), unscaled.
void FoldWeights(int n, float* left, float* right)
{
    constexpr float kMinus3dB = 0.70710678f;
    for (int c = 0; c < n; ++c) {
        float l = 0.0f;
        float r = 0.0f;
        switch (kLayouts[n - 3][c]) {
        case FrontLeft:
            l = 1.0f;
            break;
        case FrontRight:
            r = 1.0f;
            break;
        case Centre:
        case SurroundCentre:
            l = r = kMinus3dB;
            break;
        case Lfe:
            break;
        case SurroundLeft:
            l = kMinus3dB;
            break;
        case SurroundRight:
            r = kMinus3dB;
            break;
        }
        left[c] = l;
        right[c] = r;
    }
}

} // namespace

float StereoFoldScale(std::int32_t channels)
{
    const int n = std::min(channels, kMaxVoiceChannels);
    if (n <= 2)
        return 1.0f;
    float left[kMaxVoiceChannels];
    float right[kMaxVoiceChannels];
    FoldWeights(n, left, right);
    float leftSum = 0.0f;
    float rightSum = 0.0f;
    for (int c = 0; c < n; ++c) {
        leftSum += left[c];
        rightSum += right[c];
    }
    // Each side's weights then sum to 1, so no mix of full-scale channels clips.
    return 1.0f / std::max(leftSum, rightSum);
}

void SetStereoFold(Voice& voice)
{
    const int n = std::min(voice.channels, kMaxVoiceChannels);
    for (int c = 0; c < kMaxVoiceChannels; ++c) {
        voice.leftGain[c] = 0.0f;
        voice.rightGain[c] = 0.0f;
    }
    if (n <= 2) {
        voice.leftGain[0] = 1.0f;
        voice.rightGain[n - 1] = 1.0f;
        return;
    }
    FoldWeights(n, voice.leftGain, voice.rightGain);
    const float scale = StereoFoldScale(n);
    for (int c = 0; c < n; ++c) {
        voice.leftGain[c] *= scale;
        voice.rightGain[c] *= scale;
    }
}

Mixer::Mixer(std::int32_t outputRate, std::int32_t maxVoices)
    : outputRate_(outputRate)
    , rampFrames_(std::max(1, outputRate / 200))
    , capacity_(static_cast<std::size_t>(std::max(1, maxVoices)))
{
    active_.reserve(capacity_);
}

std::int64_t Mixer::OutputFrames(const Voice& voice, std::int64_t frames)
{
    if (!voice.resampler || voice.rate <= 0)
        return frames;
    return (frames * voice.outputRate + voice.rate - 1) / voice.rate;
}

void Mixer::ConvertBlock(const Voice& voice, std::int64_t frame, long frames)
{
    const std::int64_t first = frame * voice.channels;
    const std::int64_t count = static_cast<std::int64_t>(frames) * voice.channels;
    const std::int64_t present = std::clamp<std::int64_t>(voice.valuesInMemory - first, 0, count);
    if (present > 0) {
        const auto* bytes = static_cast<const unsigned char*>(voice.samples) +
                            first * BytesPerSample(voice.encoding);
        ConvertSamples(voice.encoding, bytes, voice.scratch, static_cast<std::size_t>(present));
    }
    std::fill(voice.scratch + present, voice.scratch + count, 0.0f);
}

long Mixer::PullStream(Voice& voice, const float** data, long maxFrames)
{
    Stream& s = *voice.stream;
    // The end mark first: once it is seen, every frame before it is visible too.
    const bool end = s.end.load(std::memory_order_acquire);
    const std::uint64_t written = s.written.load(std::memory_order_acquire);
    const std::uint64_t read = s.read.load(std::memory_order_relaxed);
    if (written == read)
        return end ? 0 : -1;
    const auto n = static_cast<std::size_t>(
        std::min<std::uint64_t>({written - read, static_cast<std::uint64_t>(maxFrames), kMaxPull}));
    const auto channels = static_cast<std::size_t>(s.channels);
    const std::size_t offset = static_cast<std::size_t>(read) & (s.capacity - 1);
    const std::size_t first = std::min(n, s.capacity - offset);
    std::memcpy(voice.scratch, s.ring + offset * channels, first * channels * sizeof(float));
    if (n > first)
        std::memcpy(voice.scratch + first * channels, s.ring,
                    (n - first) * channels * sizeof(float));
    s.read.store(read + n, std::memory_order_release);
    *data = voice.scratch;
    voice.pulled += static_cast<std::int64_t>(n);
    return static_cast<long>(n);
}

long Mixer::PullSource(Voice& voice, const float** data, long maxFrames)
{
    if (voice.stream)
        return PullStream(voice, data, maxFrames);
    const bool inPlace = voice.encoding == SampleEncoding::Float32Native;
    if (!inPlace)
        maxFrames = std::min(maxFrames, static_cast<long>(kMaxPull));
    for (;;) {
        const bool inLoop = voice.loopActive;
        const std::int64_t boundary = inLoop ? voice.loopEnd : voice.LinearEnd();
        if (voice.readPos < boundary) {
            const long n =
                static_cast<long>(std::min<std::int64_t>(maxFrames, boundary - voice.readPos));
            if (inPlace) {
                *data = static_cast<const float*>(voice.samples) + voice.readPos * voice.channels;
            } else {
                ConvertBlock(voice, voice.readPos, n);
                *data = voice.scratch;
            }
            voice.readPos += n;
            voice.pulled += n;
            return n;
        }
        if (!inLoop)
            return 0;
        voice.readPos = voice.loopStart;
    }
}

long Mixer::FeedResampler(void* data, float** out)
{
    Voice& voice = *static_cast<Voice*>(data);
    const float* p = nullptr;
    long n = 0;
    if (!voice.sourceDone) {
        n = PullSource(voice, &p, static_cast<long>(kMaxPull));
        if (n == 0) {
            voice.sourceDone = true;
            if (voice.outEnd < 0)
                voice.outEnd = OutputFrames(voice, voice.pulled);
        }
    }
    if (n <= 0) {
        // Past the end the filter still holds the last frames: silence pushes them
        // out. A dry stream gets a little silence too rather than an early end.
        p = kSilence;
        n = voice.sourceDone ? static_cast<long>(kMaxPull) : 16;
    }
    // libsamplerate only reads the input; its callback type is not const.
    *out = const_cast<float*>(p);
    return n;
}

void Mixer::StartRamp(Voice& voice, float target)
{
    voice.gainTarget = target;
    voice.rampLeft = rampFrames_;
    voice.gainStep = (target - voice.gain) / static_cast<float>(rampFrames_);
}

void Mixer::Finish(Voice& voice, VoiceState state)
{
    voice.state.store(static_cast<std::int32_t>(state), std::memory_order_release);
    voice.released.store(true, std::memory_order_release);
}

void Mixer::Drop(Voice& voice, VoiceState state)
{
    const auto it = std::find(active_.begin(), active_.end(), &voice);
    if (it != active_.end())
        active_.erase(it);
    Finish(voice, state);
}

void Mixer::Activate(Voice& voice)
{
    voice.readPos = voice.startFrame;
    voice.pulled = 0;
    voice.mixed = 0;
    voice.sourceDone = false;
    // A start past the loop plays the release tail to the end. A stream's worker
    // walks the loop itself.
    voice.loopActive = !voice.stream && voice.IsLooped() && voice.startFrame < voice.loopEnd;
    const bool looping = voice.stream ? voice.stream->looping : voice.loopActive;
    const std::int64_t end = voice.LinearEnd();
    voice.outEnd = !looping && end >= 0
                       ? OutputFrames(voice, std::max<std::int64_t>(0, end - voice.startFrame))
                       : -1;
    voice.endFade = voice.resampler != nullptr || voice.endFrame >= 0;
    voice.stopping = false;
    voice.rampLeft = 0;
    if (voice.fadeIn) {
        voice.gain = 0.0f;
        StartRamp(voice, voice.initialVolume);
    } else {
        voice.gain = voice.gainTarget = voice.initialVolume;
    }
    if (voice.resampler)
        src_reset(voice.resampler);
    voice.state.store(static_cast<std::int32_t>(VoiceState::Playing), std::memory_order_release);
}

void Mixer::Apply(const MixerCommand& command)
{
    Voice& voice = *command.voice;
    const auto state = static_cast<VoiceState>(voice.state.load(std::memory_order_relaxed));
    switch (command.type) {
    case MixerCommand::Type::Add:
        if (active_.size() >= capacity_) {
            Finish(voice, VoiceState::Error);
            return;
        }
        active_.push_back(&voice);
        // A stream waits, queued, until its worker has the first frames.
        if (!voice.stream)
            Activate(voice);
        return;
    case MixerCommand::Type::Stop:
        if (state == VoiceState::Queued) {
            Drop(voice, VoiceState::Stopped); // nothing of it was heard yet
            return;
        }
        if (state != VoiceState::Playing || voice.stopping)
            return;
        voice.stopping = true;
        if (voice.gain == 0.0f && voice.rampLeft == 0) {
            voice.gainTarget = 0.0f;
        } else {
            StartRamp(voice, 0.0f);
        }
        return;
    case MixerCommand::Type::StopNow:
        if (state == VoiceState::Playing || state == VoiceState::Queued)
            Drop(voice, VoiceState::Stopped);
        return;
    case MixerCommand::Type::Volume:
        if (state == VoiceState::Queued)
            voice.initialVolume = command.value;
        else if (state == VoiceState::Playing && !voice.stopping)
            StartRamp(voice, command.value);
        return;
    }
}

void Mixer::ProcessCommands()
{
    MixerCommand command;
    while (queue_.Pop(command))
        Apply(command);
}

bool Mixer::StreamCanFeed(const Voice& voice, long outputFrames) const
{
    const Stream& s = *voice.stream;
    if (voice.sourceDone || s.end.load(std::memory_order_acquire))
        return true;
    const std::uint64_t have =
        s.written.load(std::memory_order_acquire) - s.read.load(std::memory_order_relaxed);
    // The resampler may ask for a pull beyond what this block strictly needs.
    const auto need = static_cast<std::uint64_t>(outputFrames / voice.resampleRatio) + 2 * kMaxPull;
    return have >= need;
}

bool Mixer::MixVoice(Voice& voice, float* out, std::size_t frames)
{
    if (voice.stream && static_cast<VoiceState>(voice.state.load(std::memory_order_relaxed)) ==
                            VoiceState::Queued) {
        const auto phase =
            static_cast<StreamPhase>(voice.stream->phase.load(std::memory_order_acquire));
        if (phase == StreamPhase::Opening)
            return true;
        if (phase == StreamPhase::Failed) {
            Finish(voice, VoiceState::Error);
            return false;
        }
        Activate(voice);
    }

    std::size_t done = 0;
    while (done < frames) {
        const float* src = nullptr;
        long n = 0;
        if (voice.resampler) {
            long want = static_cast<long>(std::min(frames - done, kBlockFrames));
            if (voice.outEnd >= 0)
                want = static_cast<long>(std::min<std::int64_t>(want, voice.outEnd - voice.mixed));
            if (want <= 0)
                break;
            if (voice.stream && !StreamCanFeed(voice, want)) {
                underruns_.fetch_add(1, std::memory_order_relaxed);
                break; // silence now; the sound goes on where it was once the worker caught up
            }
            n = src_callback_read(voice.resampler, voice.resampleRatio, want, voice.resampleBuffer);
            if (n <= 0) {
                voice.outEnd = voice.mixed; // the resampler failed: end here
                break;
            }
            // The end may have come to light during this very read.
            if (voice.outEnd >= 0)
                n = static_cast<long>(std::min<std::int64_t>(n, voice.outEnd - voice.mixed));
            src = voice.resampleBuffer;
        } else {
            n = PullSource(voice, &src, static_cast<long>(frames - done));
            if (n < 0) {
                underruns_.fetch_add(1, std::memory_order_relaxed);
                break;
            }
            if (n == 0) {
                voice.outEnd = voice.mixed;
                break;
            }
        }
        const int channels = voice.channels;
        const std::int64_t fadeFrom = voice.endFade && voice.outEnd >= 0
                                          ? voice.outEnd - rampFrames_
                                          : std::numeric_limits<std::int64_t>::max();
        float* o = out + done * 2;
        for (long i = 0; i < n; ++i) {
            float g = voice.gain;
            if (voice.rampLeft > 0) {
                voice.gain += voice.gainStep;
                if (--voice.rampLeft == 0)
                    voice.gain = voice.gainTarget;
                g = voice.gain;
            }
            const std::int64_t at = voice.mixed + i;
            if (at >= fadeFrom)
                g *= static_cast<float>(voice.outEnd - at) / static_cast<float>(rampFrames_);
            const float* x = src + i * channels;
            if (channels == 1) {
                o[0] += g * x[0];
                o[1] += g * x[0];
            } else if (channels == 2) {
                o[0] += g * x[0];
                o[1] += g * x[1];
            } else {
                float l = 0.0f;
                float r = 0.0f;
                for (int c = 0; c < channels; ++c) {
                    l += voice.leftGain[c] * x[c];
                    r += voice.rightGain[c] * x[c];
                }
                o[0] += g * l;
                o[1] += g * r;
            }
            o += 2;
            if (voice.stopping && voice.rampLeft == 0) {
                voice.mixed += i + 1;
                voice.outFrames.fetch_add(i + 1, std::memory_order_relaxed);
                Finish(voice, VoiceState::Stopped);
                return false;
            }
        }
        done += static_cast<std::size_t>(n);
        voice.mixed += n;
        voice.outFrames.fetch_add(n, std::memory_order_relaxed);
        if (voice.stopping && voice.rampLeft == 0) {
            Finish(voice, VoiceState::Stopped);
            return false;
        }
    }
    if (voice.outEnd >= 0 && voice.mixed >= voice.outEnd) {
        Finish(voice, VoiceState::Ended);
        return false;
    }
    return true;
}

void Mixer::Render(float* out, std::size_t frames)
{
    ProcessCommands();
    std::memset(out, 0, frames * 2 * sizeof(float));
    for (std::size_t i = 0; i < active_.size();) {
        if (MixVoice(*active_[i], out, frames)) {
            ++i;
        } else {
            active_[i] = active_.back();
            active_.pop_back();
        }
    }
    // A float file may hold NaN; the device gets silence for it, never a burst.
    for (std::size_t i = 0; i < frames * 2; ++i)
        out[i] = out[i] == out[i] ? std::clamp(out[i], -1.0f, 1.0f) : 0.0f;
}

void Mixer::ReleaseAll()
{
    ProcessCommands();
    for (Voice* voice : active_)
        Finish(*voice, VoiceState::Stopped);
    active_.clear();
}

} // namespace AudioEngine
