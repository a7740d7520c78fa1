#include "VoiceBuilder.h"

#include "EngineErrors.h"
#include "EngineMemory.h"
#include "MemorySound.h"
#include "Mixer.h"

#include <samplerate.h>

#include <algorithm>

namespace AudioEngine {

void FreeVoice(Voice* voice)
{
    if (voice->resampler)
        src_delete(voice->resampler);
    Release(voice->resampleBuffer);
    Release(voice->scratch);
    Destroy(voice);
}

Voice* BuildVoice(Player& player, VoicePool& pool, std::int32_t outputRate)
{
    MemorySound sound;
    if (player.format == DataFormat::RawPcm) {
        if (pool.sampleFormat != SampleFormat::Float32) {
            ReportError(kErrSampleFormat, "Unsupported sample format.");
            return nullptr;
        }
        if (player.channels < 1 || player.rate < 1) {
            ReportError(kErrBadConfig, "Invalid channel count or sampling rate.");
            return nullptr;
        }
        sound.encoding = SampleEncoding::Float32Native;
        sound.channels = player.channels;
        sound.rate = player.rate;
        sound.frameCount = static_cast<std::int64_t>(
            player.size / (sizeof(float) * static_cast<std::size_t>(player.channels)));
        sound.valuesInMemory = sound.frameCount * sound.channels;
        sound.samples = static_cast<const unsigned char*>(player.data);
    } else if (!DescribeMemorySound(player.data, player.size, sound)) {
        return nullptr;
    }

    if (sound.channels > pool.maxChannels || sound.channels > kMaxVoiceChannels) {
        ReportError(kErrTooManyChannels, "The number of channels exceeds the voice pool's limit.");
        return nullptr;
    }
    if (sound.rate > pool.maxSamplingRate) {
        ReportError(kErrRateTooHigh, "The sampling rate exceeds the voice pool's limit.");
        return nullptr;
    }

    Voice* voice = Create<Voice>();
    if (!voice) {
        ReportError(kErrNoMemory, "Can not allocate memory.");
        return nullptr;
    }
    voice->samples = sound.samples;
    voice->encoding = sound.encoding;
    voice->valuesInMemory = sound.valuesInMemory;
    voice->frameCount = sound.frameCount;
    voice->channels = sound.channels;
    voice->rate = sound.rate;
    voice->loopEnd = std::min(sound.loopEnd, sound.frameCount);
    voice->loopStart = std::min(sound.loopStart, voice->loopEnd);
    voice->startFrame = std::clamp<std::int64_t>(
        static_cast<std::int64_t>(player.startMs) * sound.rate / 1000, 0, sound.frameCount);
    voice->initialVolume = player.volume;
    voice->pool = &pool;
    voice->player = &player;
    SetStereoFold(*voice);

    const auto channels = static_cast<std::size_t>(sound.channels);
    if (sound.encoding != SampleEncoding::Float32Native) {
        voice->scratch = static_cast<float*>(Allocate(Mixer::kMaxPull * channels * sizeof(float)));
        if (!voice->scratch) {
            FreeVoice(voice);
            ReportError(kErrNoMemory, "Can not allocate memory.");
            return nullptr;
        }
    }

    if (sound.rate != outputRate) {
        int err = 0;
        voice->resampleRatio = static_cast<double>(outputRate) / sound.rate;
        voice->resampler = src_callback_new(
            [](void* data, float** out) -> long {
                const float* p = nullptr;
                const long n = Mixer::PullSource(*static_cast<Voice*>(data), &p,
                                                 static_cast<long>(Mixer::kMaxPull));
                // libsamplerate only reads the input; its callback type is not const.
                *out = const_cast<float*>(p);
                return n;
            },
            SRC_SINC_FASTEST, sound.channels, &err, voice);
        voice->resampleBuffer =
            static_cast<float*>(Allocate(Mixer::kBlockFrames * channels * sizeof(float)));
        if (!voice->resampler || !voice->resampleBuffer) {
            FreeVoice(voice);
            ReportError(kErrResampler, "Can not create the resampler.");
            return nullptr;
        }
    }
    return voice;
}

} // namespace AudioEngine
