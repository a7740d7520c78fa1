#pragma once

#include "AudioEngine.h"

#include <cstddef>
#include <cstdint>

namespace AudioEngine {

class StreamSource;
struct Voice;

enum class PoolKind
{
    Standard,
    Wave,
    Aiff,
    RawPcm,
    Stream,
};

struct VoicePool
{
    PoolKind kind = PoolKind::Standard;
    std::uint32_t identifier = 0;
    std::int32_t numVoices = 1;
    std::int32_t maxChannels = 2;
    std::int32_t maxSamplingRate = 48000;
    SampleFormat sampleFormat = SampleFormat::Float32;
};

struct Player
{
    DataFormat format = DataFormat::Wave;
    std::int32_t channels = 2;
    std::int32_t rate = 48000;
    std::uint32_t poolId = 0;
    const void* data = nullptr;
    std::size_t size = 0;
    std::int32_t startMs = 0;
    std::int64_t rangeStart = -1; // frames; -1: from startMs with the sound's loop
    std::int64_t rangeEnd = -1;
    StreamSource* stream = nullptr; // owned until a Start hands it to a voice
    bool fadeIn = true;
    float volume = 1.0f;
    Voice* current = nullptr;
    PlayerStatus idleStatus = PlayerStatus::Stopped;
    PlaybackId lastId = kInvalidPlaybackId;
};

} // namespace AudioEngine
