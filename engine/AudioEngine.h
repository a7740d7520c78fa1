#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Tesk's preview engine: voice pools, players, a float mixer with sample-exact
// loops and click-free starts, stops and volume changes, output through SDL2.
//
// All functions are meant for one control thread (the GUI thread). A sound
// plays from the memory its player was given (WAVE/AIFF samples are converted
// to float a block at a time inside the mixer, so starting a sound costs the
// same whatever its length), or streams from a StreamSource that the engine's
// streaming worker reads ahead into a bounded ring (long files, decoders). The
// device callback takes no lock, allocates nothing, decodes nothing and reads
// no file.
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
    Stream = 3, // frames from the StreamSource handed over with SetStreamSource
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
    std::string outputDevice; // an SDL device name; empty for the system default
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

class StreamSource;
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

// Output device names SDL reports (UTF-8), without the system default; while
// the output moves, the names found before.
std::vector<std::string> ListOutputDevices();
// The device the output runs on (while it moves, the one asked for); empty
// for the system default. After Initialize this differs from
// InitConfig::outputDevice when that device did not open and the default
// took its place.
std::string GetOutputDevice();
// Moves the running output to another device (empty: the system default) on
// a thread of the engine's own, so that the caller never waits while SDL
// closes one device and opens another (that can take a second with a sound
// server); what plays goes on there after a short gap. Returns at once: the
// outcome is read with TakeOutputChange. Meanwhile every other call works as
// usual (commands wait in the queue for the new device).
void SetOutputDevice(const std::string& name);
// Polled by the control thread: when the output device has gone away, starts
// moving the output to the system default (as SetOutputDevice does), so that
// nothing hangs, and returns true with the lost device's name in `lost`.
bool RecoverLostOutput(std::string* lost = nullptr);

struct OutputChange
{
    bool finished = false; // false: no move finished since the last call
    std::string requested; // the device asked for; empty for the system default
    bool opened = false;   // it opened; else the default (or the dummy driver) plays
};
// The last move that finished since the previous call.
OutputChange TakeOutputChange();
// True from SetOutputDevice (or a recovery) until the new device runs.
bool IsOutputChanging();

VoicePoolHandle CreateStandardVoicePool(const VoicePoolConfig& config);
VoicePoolHandle CreateWaveVoicePool(const VoicePoolConfig& config);
VoicePoolHandle CreateAiffVoicePool(const VoicePoolConfig& config);
VoicePoolHandle CreateRawPcmVoicePool(const RawPcmVoicePoolConfig& config);
VoicePoolHandle CreateStreamVoicePool(const VoicePoolConfig& config);
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
// Hands a Stream-format player the sound for its next Start; the engine owns
// it from here on and deletes it (with delete) once played or refused.
void SetStreamSource(PlayerHandle player, StreamSource* source);
// Plays frames [startFrame, endFrame) of the sound straight through, ignoring
// its loop, and ramps out just before the end. endFrame <= startFrame plays to
// the sound's end; startFrame < 0 returns to the start time and the loop.
void SetPlayRange(PlayerHandle player, std::int64_t startFrame, std::int64_t endFrame);
// On by default: each start ramps in over a few ms, so a seek into the middle
// of a sound does not click.
void SetFadeIn(PlayerHandle player, bool enabled);
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

// The scale the stereo fold puts on a sound of `channels` channels (1 for mono
// and stereo): what keeps a full-scale 5.1 file from clipping, and what a
// level match has to allow for.
float StereoFoldScale(std::int32_t channels);

// Offline mode only: mixes `frames` interleaved stereo float frames into `out`.
void RenderOffline(float* out, std::size_t frames);

// Time spent inside the device callback since Initialize, and how many calls.
struct CallbackStats
{
    std::int64_t busyNanoseconds = 0;
    std::int64_t calls = 0;
    std::int64_t framesMixed = 0;
    std::int64_t streamUnderruns = 0; // blocks a streamed sound waited for its worker
};
CallbackStats GetCallbackStats();

} // namespace AudioEngine
