#pragma once

#include <cstddef>
#include <cstdint>

// Tesk's preview engine: voice pools, players, a float mixer with sample-exact
// loops and click-free volume and stop ramps, output through SDL2.
//
// All functions are meant for one control thread (the GUI thread). Every sound
// plays from the memory its player was given: WAVE/AIFF samples are converted
// to float a block at a time inside the mixer, so starting a sound costs the
// same whatever its length; the device callback takes no lock, allocates nothing
// and reads no file.
//
// Device rate: the engine asks SDL for 48000 Hz float stereo (most game audio is
// authored at 48 kHz, so the common file plays unresampled) and accepts the
// rate the device prefers instead; sounds at any other rate are resampled to it
// with libsamplerate inside the mixer, so a loop seam stays sample-exact in the
// sound's own rate. When no device opens at all, the failure is reported through
// the error callback and the engine runs on SDL's "dummy" driver, which paces the
// mixer like a real card. SDL_AUDIODRIVER picks the driver (e.g. "dummy", "disk").
namespace AudioEngine {

// Errors are texts "E" + 10 digits + " : " + message, in the local 8-bit encoding.
using ErrorCallback = void (*)(const char* text);
using AllocFunction = void* (*)(std::size_t size);
using FreeFunction = void (*)(void* pointer);

enum class DataFormat : std::int32_t
{
    Wave = 0,
    Aiff = 1,
    RawPcm = 2,
};

enum class SampleFormat : std::int32_t
{
    Int16 = 0,
    Int32 = 1,
    Float32 = 2,
};

enum class PlayerStatus : std::int32_t
{
    Stopped = 0,
    Preparing = 1,
    Playing = 2,
    PlayEnd = 3,
    Error = 4,
};

enum class OutputMode : std::int32_t
{
    Device = 0,  // SDL2 audio device
    Offline = 1, // no device; RenderOffline pulls the mix
};

struct InitConfig
{
    float updateFrequency = 60.0f; // how often control commands are expected, in Hz
    OutputMode output = OutputMode::Device;
    std::int32_t outputRate = 48000;       // requested device rate, or the offline rate
    std::int32_t deviceBufferFrames = 256; // 5.3 ms at 48 kHz
    std::int32_t maxVoices = 32;
};

struct VoicePoolConfig
{
    std::uint32_t identifier = 0;
    std::int32_t numVoices = 1;
    std::int32_t maxChannels = 2;
    std::int32_t maxSamplingRate = 48000;
};

struct RawPcmVoicePoolConfig
{
    std::uint32_t identifier = 0;
    std::int32_t numVoices = 1;
    std::int32_t maxChannels = 2;
    std::int32_t maxSamplingRate = 48000;
    SampleFormat sampleFormat = SampleFormat::Float32;
};

struct PlayerConfig
{
    std::int32_t maxPathStrings = 0;
    std::int32_t maxPathLength = 0;
};

struct VoicePool;
struct Player;
using VoicePoolHandle = VoicePool*;
using PlayerHandle = Player*;
using PlaybackId = std::uint32_t;
constexpr PlaybackId kInvalidPlaybackId = 0;

void SetErrorCallback(ErrorCallback callback);
// Must be called before Initialize; null restores malloc/free.
void SetAllocationFunctions(AllocFunction alloc, FreeFunction free);

bool Initialize(const InitConfig& config);
void Finalize();
bool IsInitialized();
std::int32_t GetOutputRate();
std::int32_t GetOutputChannels();
// True while an SDL device (real, dummy or disk) consumes the mix.
bool IsDeviceRunning();

VoicePoolHandle CreateStandardVoicePool(const VoicePoolConfig& config);
VoicePoolHandle CreateWaveVoicePool(const VoicePoolConfig& config);
VoicePoolHandle CreateAiffVoicePool(const VoicePoolConfig& config);
VoicePoolHandle CreateRawPcmVoicePool(const RawPcmVoicePoolConfig& config);
void DestroyVoicePool(VoicePoolHandle pool);

PlayerHandle CreatePlayer(const PlayerConfig* config = nullptr);
void DestroyPlayer(PlayerHandle player);

void SetDataFormat(PlayerHandle player, DataFormat format);
void SetNumChannels(PlayerHandle player, std::int32_t channels);
void SetSamplingRate(PlayerHandle player, std::int32_t rate);
void SetVoicePoolId(PlayerHandle player, std::uint32_t identifier);
// The memory must stay valid and unchanged until the player's status reads
// Stopped or PlayEnd: every format plays straight from it.
void SetData(PlayerHandle player, const void* data, std::size_t size);
void SetStartTimeMs(PlayerHandle player, std::int32_t milliseconds);
void Start(PlayerHandle player);
// Ramps the sound out over a few milliseconds; the status reads Stopped once the
// mixer has let go of the data. With no device running the stop is immediate.
void Stop(PlayerHandle player);
PlayerStatus GetStatus(PlayerHandle player);
void SetVolume(PlayerHandle player, float volume);
// Applies the player's parameters (volume) to the sound it is playing now.
void ApplyParameters(PlayerHandle player);
PlaybackId GetLastPlaybackId(PlayerHandle player);

// Position of a playback in the sound's own sample frames: the start frame plus
// every frame played since, counting loop repetitions (so it runs past the loop
// end). -1 for an unknown playback.
std::int64_t GetPlayedSamples(PlaybackId id);
std::int32_t GetPlaybackSamplingRate(PlaybackId id);

// Offline mode only: mixes `frames` interleaved stereo float frames into `out`.
void RenderOffline(float* out, std::size_t frames);

// Time spent inside the device callback since Initialize, and how many calls.
struct CallbackStats
{
    std::int64_t busyNanoseconds = 0;
    std::int64_t calls = 0;
    std::int64_t framesMixed = 0;
};
CallbackStats GetCallbackStats();

} // namespace AudioEngine
