#include "VoiceBuilder.h"

#include "EngineErrors.h"
#include "EngineMemory.h"
#include "MemorySound.h"
#include "Mixer.h"
#include "Stream.h"
#include "StreamSource.h"
#include "Streamer.h"

#include <samplerate.h>

#include <algorithm>

namespace AudioEngine {

namespace {

// Ring length: a power of two of at least a second, so that a slow disk or a
// busy core has time to catch up.
std::size_t RingFrames(std::int32_t rate)
{
    std::size_t frames = 16384;
    while (frames < static_cast<std::size_t>(rate))
        frames *= 2;
    return frames;
}

bool FitsPool(std::int32_t channels, std::int32_t rate, std::int32_t maxChannels,
              std::int32_t maxRate)
{
    if (channels > maxChannels || channels > kMaxVoiceChannels) {
        ReportError(kErrTooManyChannels, "The number of channels exceeds the voice pool's limit.");
        return false;
    }
    if (rate > maxRate) {
        ReportError(kErrRateTooHigh, "The sampling rate exceeds the voice pool's limit.");
        return false;
    }
    return true;
}

Voice* BuildStreamShell(Player& player, const VoicePool& pool, std::int32_t outputRate)
{
    Voice* voice = Create<Voice>();
    Stream* stream = voice ? Create<Stream>() : nullptr;
    if (!stream) {
        Destroy(voice);
        ReportError(kErrNoMemory, "Can not allocate memory.");
        return nullptr;
    }
    stream->source = player.stream;
    player.stream = nullptr; // each source plays once
    stream->startMs = player.startMs;
    stream->rangeStart = player.rangeStart;
    stream->rangeEnd = player.rangeEnd;
    stream->maxChannels = pool.maxChannels;
    stream->maxRate = pool.maxSamplingRate;
    voice->stream = stream;
    voice->outputRate = outputRate;
    return voice;
}

} // namespace

void FreeVoice(Voice* voice)
{
    if (voice->resampler)
        src_delete(voice->resampler);
    Release(voice->resampleBuffer);
    Release(voice->scratch);
    if (Stream* s = voice->stream) {
        delete s->source; // the host made it with new
        Release(s->ring);
        Destroy(s);
    }
    Destroy(voice);
}

void PlaceVoice(Voice& voice, std::int32_t startMs, std::int64_t rangeStart, std::int64_t rangeEnd)
{
    const std::int64_t last = voice.frameCount >= 0 ? voice.frameCount : INT64_MAX;
    voice.endFrame = -1;
    if (rangeStart >= 0) {
        // A range plays straight through, whatever loop the sound has.
        voice.loopStart = voice.loopEnd = 0;
        voice.startFrame = std::min(rangeStart, last);
        if (rangeEnd > rangeStart)
            voice.endFrame = std::min(rangeEnd, last);
        return;
    }
    voice.startFrame =
        std::clamp<std::int64_t>(static_cast<std::int64_t>(startMs) * voice.rate / 1000, 0, last);
}

bool SetUpVoiceBuffers(Voice& voice, bool needsScratch)
{
    SetStereoFold(voice);
    const auto channels = static_cast<std::size_t>(voice.channels);
    if (needsScratch) {
        voice.scratch = static_cast<float*>(Allocate(Mixer::kMaxPull * channels * sizeof(float)));
        if (!voice.scratch) {
            ReportError(kErrNoMemory, "Can not allocate memory.");
            return false;
        }
    }
    if (voice.rate != voice.outputRate) {
        int err = 0;
        voice.resampleRatio = static_cast<double>(voice.outputRate) / voice.rate;
        voice.resampler =
            src_callback_new(&Mixer::FeedResampler, SRC_SINC_FASTEST, voice.channels, &err, &voice);
        voice.resampleBuffer =
            static_cast<float*>(Allocate(Mixer::kBlockFrames * channels * sizeof(float)));
        if (!voice.resampler || !voice.resampleBuffer) {
            ReportError(kErrResampler, "Can not create the resampler.");
            return false;
        }
    }
    return true;
}

Voice* BuildVoice(Player& player, VoicePool& pool, std::int32_t outputRate)
{
    if (player.format == DataFormat::Stream) {
        Voice* voice = BuildStreamShell(player, pool, outputRate);
        if (voice) {
            voice->initialVolume = player.volume;
            voice->fadeIn = player.fadeIn;
            voice->pool = &pool;
            voice->player = &player;
        }
        return voice;
    }

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

    if (!FitsPool(sound.channels, sound.rate, pool.maxChannels, pool.maxSamplingRate))
        return nullptr;

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
    voice->outputRate = outputRate;
    voice->loopEnd = std::min(sound.loopEnd, sound.frameCount);
    voice->loopStart = std::min(sound.loopStart, voice->loopEnd);
    PlaceVoice(*voice, player.startMs, player.rangeStart, player.rangeEnd);
    voice->initialVolume = player.volume;
    voice->fadeIn = player.fadeIn;
    voice->pool = &pool;
    voice->player = &player;
    if (!SetUpVoiceBuffers(*voice, sound.encoding != SampleEncoding::Float32Native)) {
        FreeVoice(voice);
        return nullptr;
    }
    return voice;
}

bool OpenStreamVoice(Voice& voice, std::int32_t outputRate)
{
    Stream& s = *voice.stream;
    StreamFormat format;
    if (!s.source || !s.source->Open(format))
        return false;
    if (format.channels < 1 || format.rate < 1) {
        ReportError(kErrDecode, "Can not decode the wave data.");
        return false;
    }
    if (!FitsPool(format.channels, format.rate, s.maxChannels, s.maxRate))
        return false;
    voice.encoding = SampleEncoding::Float32Native;
    voice.channels = format.channels;
    voice.rate = format.rate;
    voice.outputRate = outputRate;
    voice.frameCount = format.frameCount;
    const std::int64_t last = format.frameCount >= 0 ? format.frameCount : INT64_MAX;
    voice.loopEnd = std::min(format.loopEnd, last);
    voice.loopStart = std::clamp<std::int64_t>(format.loopStart, 0, voice.loopEnd);
    PlaceVoice(voice, s.startMs, s.rangeStart, s.rangeEnd);
    // The mixer reads a stream through the scratch, a pull at a time.
    if (!SetUpVoiceBuffers(voice, true))
        return false;
    s.channels = format.channels;
    s.capacity = RingFrames(format.rate);
    s.ring = static_cast<float*>(
        Allocate(s.capacity * static_cast<std::size_t>(s.channels) * sizeof(float)));
    if (!s.ring) {
        ReportError(kErrNoMemory, "Can not allocate memory.");
        return false;
    }
    s.looping = voice.IsLooped() && voice.startFrame < voice.loopEnd;
    s.loopStart = voice.loopStart;
    s.loopEnd = voice.loopEnd;
    s.stopAt = voice.LinearEnd();
    if (voice.startFrame > 0 && !s.source->Seek(voice.startFrame)) {
        ReportError(kErrDecode, "Can not decode the wave data.");
        return false;
    }
    s.position = voice.startFrame;
    return true;
}

} // namespace AudioEngine
