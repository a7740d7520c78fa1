#include "Mixer.h"

#include <samplerate.h>

#include <algorithm>
#include <cstring>

namespace AudioEngine {

void SetStereoFold(Voice& voice)
{
    constexpr float kCentre = 0.70710678f;
    const int n = std::min(voice.channels, kMaxVoiceChannels);
    for (int c = 0; c < kMaxVoiceChannels; ++c) {
        voice.leftGain[c] = 0.0f;
        voice.rightGain[c] = 0.0f;
    }
    if (n == 1) {
        voice.leftGain[0] = voice.rightGain[0] = 1.0f;
        return;
    }
    const bool hasCentre = n == 3 || n >= 5;
    const bool hasLfe = n >= 6;
    bool left = true;
    for (int c = 0; c < n; ++c) {
        if (hasCentre && c == 2) {
            voice.leftGain[c] = voice.rightGain[c] = kCentre;
            continue;
        }
        if (hasLfe && c == 3)
            continue;
        (left ? voice.leftGain : voice.rightGain)[c] = 1.0f;
        left = !left;
    }
}

Mixer::Mixer(std::int32_t outputRate, std::int32_t maxVoices)
    : outputRate_(outputRate)
    , rampFrames_(std::max(1, outputRate / 200))
    , capacity_(static_cast<std::size_t>(std::max(1, maxVoices)))
{
    active_.reserve(capacity_);
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

long Mixer::PullSource(Voice& voice, const float** data, long maxFrames)
{
    const bool inPlace = voice.encoding == SampleEncoding::Float32Native;
    if (!inPlace)
        maxFrames = std::min(maxFrames, static_cast<long>(kMaxPull));
    for (;;) {
        const bool inLoop = voice.loopActive;
        const std::int64_t boundary = inLoop ? voice.loopEnd : voice.frameCount;
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
            return n;
        }
        if (!inLoop)
            return 0;
        voice.readPos = voice.loopStart;
    }
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
        voice.readPos = voice.startFrame;
        // A start past the loop plays the release tail to the end.
        voice.loopActive = voice.IsLooped() && voice.startFrame < voice.loopEnd;
        voice.gain = voice.gainTarget = voice.initialVolume;
        voice.rampLeft = 0;
        voice.stopping = false;
        if (voice.resampler)
            src_reset(voice.resampler);
        active_.push_back(&voice);
        voice.state.store(static_cast<std::int32_t>(VoiceState::Playing),
                          std::memory_order_release);
        return;
    case MixerCommand::Type::Stop:
        if (state != VoiceState::Playing || voice.stopping)
            return;
        voice.stopping = true;
        if (voice.gain == 0.0f) {
            voice.rampLeft = 0;
            voice.gainTarget = 0.0f;
        } else {
            StartRamp(voice, 0.0f);
        }
        return;
    case MixerCommand::Type::StopNow:
        if (state != VoiceState::Playing)
            return;
        active_.erase(std::find(active_.begin(), active_.end(), &voice));
        Finish(voice, VoiceState::Stopped);
        return;
    case MixerCommand::Type::Volume:
        if (state == VoiceState::Playing && !voice.stopping)
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

bool Mixer::MixVoice(Voice& voice, float* out, std::size_t frames)
{
    std::size_t done = 0;
    bool sourceEnded = false;
    while (done < frames && !sourceEnded) {
        const float* src = nullptr;
        long n = 0;
        if (voice.resampler) {
            const long want = static_cast<long>(std::min(frames - done, kBlockFrames));
            n = src_callback_read(voice.resampler, voice.resampleRatio, want, voice.resampleBuffer);
            src = voice.resampleBuffer;
            sourceEnded = n < want;
        } else {
            n = PullSource(voice, &src, static_cast<long>(frames - done));
            sourceEnded = n == 0;
        }
        const int channels = voice.channels;
        float* o = out + done * 2;
        for (long i = 0; i < n; ++i) {
            float g = voice.gain;
            if (voice.rampLeft > 0) {
                voice.gain += voice.gainStep;
                if (--voice.rampLeft == 0)
                    voice.gain = voice.gainTarget;
                g = voice.gain;
            }
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
                n = i + 1;
                done += static_cast<std::size_t>(n);
                voice.outFrames.fetch_add(n, std::memory_order_relaxed);
                Finish(voice, VoiceState::Stopped);
                return false;
            }
        }
        done += static_cast<std::size_t>(n);
        voice.outFrames.fetch_add(n, std::memory_order_relaxed);
        if (voice.stopping && voice.rampLeft == 0) {
            Finish(voice, VoiceState::Stopped);
            return false;
        }
    }
    if (sourceEnded) {
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
