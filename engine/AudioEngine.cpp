#include "AudioEngine.h"

#include "EngineMemory.h"
#include "MemorySound.h"
#include "Mixer.h"

#include <SDL.h>
#include <samplerate.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <vector>

namespace AudioEngine {

namespace {

// Codes of the engine's own messages.
#ifdef _WIN32
constexpr const char* kErrDeviceStart = "E2009042301";
#else
constexpr const char* kErrDeviceStart = "E2026112201";
#endif
constexpr const char* kErrNotInitialized = "E2026112202";
constexpr const char* kErrNoMemory = "E2026112203";
constexpr const char* kErrNullHandle = "E2026112204";
constexpr const char* kErrNoData = "E2026112205";
constexpr const char* kErrNoPool = "E2026112207";
constexpr const char* kErrTooManyChannels = "E2026112208";
constexpr const char* kErrRateTooHigh = "E2026112209";
constexpr const char* kErrNoFreeVoice = "E2026112210";
constexpr const char* kErrSampleFormat = "E2026112211";
constexpr const char* kErrResampler = "E2026112212";
constexpr const char* kErrQueueFull = "E2026112213";
constexpr const char* kErrBadConfig = "E2026112214";

std::atomic<ErrorCallback> g_errorCallback{nullptr};
AllocFunction g_alloc = nullptr;
FreeFunction g_free = nullptr;

enum class PoolKind
{
    Standard,
    Wave,
    Aiff,
    RawPcm,
};

} // namespace

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
    float volume = 1.0f;
    Voice* current = nullptr;
    PlayerStatus idleStatus = PlayerStatus::Stopped;
    PlaybackId lastId = kInvalidPlaybackId;
};

namespace {

struct EngineState
{
    std::mutex control; // control-thread bookkeeping; the device callback never takes it
    bool initialized = false;
    InitConfig config;
    Mixer* mixer = nullptr;
    SDL_AudioDeviceID device = 0;
    bool sdlSubsystem = false;  // SDL_InitSubSystem succeeded
    bool sdlDirectInit = false; // SDL_AudioInit("dummy") fallback
    std::int32_t outputRate = 48000;
    std::vector<VoicePool*> pools;
    std::vector<Player*> players;
    std::vector<Voice*> voices;
    PlaybackId nextId = 1;
    float* spareSamples = nullptr;
    std::size_t spareCapacity = 0;
    std::atomic<std::int64_t> busyNs{0};
    std::atomic<std::int64_t> calls{0};
    std::atomic<std::int64_t> framesMixed{0};
};

EngineState g_engine;

bool DeviceRunning()
{
    return g_engine.device != 0;
}

void FreeVoice(Voice* voice)
{
    if (voice->resampler)
        src_delete(voice->resampler);
    Release(voice->resampleBuffer);
    ReturnSampleBuffer(voice->ownedFrames, voice->ownedCapacity);
    Destroy(voice);
}

bool IsCurrentOfSomePlayer(const Voice* voice)
{
    return std::any_of(g_engine.players.begin(), g_engine.players.end(),
                       [voice](const Player* p) { return p->current == voice; });
}

// Frees voices the mixer has let go of and no player reports on any more.
void CollectVoices()
{
    auto& voices = g_engine.voices;
    for (std::size_t i = 0; i < voices.size();) {
        Voice* v = voices[i];
        if (v->released.load(std::memory_order_acquire) && !IsCurrentOfSomePlayer(v)) {
            FreeVoice(v);
            voices[i] = voices.back();
            voices.pop_back();
        } else {
            ++i;
        }
    }
}

VoiceState StateOf(const Voice* voice)
{
    return static_cast<VoiceState>(voice->state.load(std::memory_order_acquire));
}

bool IsLive(const Voice* voice)
{
    const VoiceState s = StateOf(voice);
    return s == VoiceState::Queued || s == VoiceState::Playing;
}

void PostStop(Voice* voice)
{
    if (!DeviceRunning()) {
        // Nobody listens, so there is nothing to ramp: let go of the data now.
        g_engine.mixer->Post({MixerCommand::Type::StopNow, voice, 0.0f});
        g_engine.mixer->ProcessCommands();
        return;
    }
    if (!g_engine.mixer->Post({MixerCommand::Type::Stop, voice, 0.0f}))
        ReportError(kErrQueueFull, "Command queue is full.");
}

void ClampToUnit(float* out, std::size_t samples)
{
    for (std::size_t i = 0; i < samples; ++i)
        out[i] = std::clamp(out[i], -1.0f, 1.0f);
}

void SDLCALL DeviceCallback(void*, Uint8* stream, int len)
{
    const auto t0 = std::chrono::steady_clock::now();
    auto* out = reinterpret_cast<float*>(stream);
    const auto frames = static_cast<std::size_t>(len) / (2 * sizeof(float));
    g_engine.mixer->Render(out, frames);
    ClampToUnit(out, frames * 2);
    const auto t1 = std::chrono::steady_clock::now();
    g_engine.busyNs.fetch_add(std::chrono::duration_cast<std::chrono::nanoseconds>(t1 - t0).count(),
                              std::memory_order_relaxed);
    g_engine.calls.fetch_add(1, std::memory_order_relaxed);
    g_engine.framesMixed.fetch_add(static_cast<std::int64_t>(frames), std::memory_order_relaxed);
}

SDL_AudioDeviceID OpenDevice(std::int32_t rate, std::int32_t bufferFrames, std::int32_t* gotRate)
{
    SDL_AudioSpec want{};
    want.freq = rate;
    want.format = AUDIO_F32SYS;
    want.channels = 2;
    want.samples = static_cast<Uint16>(bufferFrames);
    want.callback = DeviceCallback;
    SDL_AudioSpec have{};
    const SDL_AudioDeviceID id =
        SDL_OpenAudioDevice(nullptr, 0, &want, &have, SDL_AUDIO_ALLOW_FREQUENCY_CHANGE);
    if (id != 0)
        *gotRate = have.freq;
    return id;
}

void ReportDeviceError(const char* what)
{
    const std::string message = std::string(what) + " (" + SDL_GetError() + ")";
    ReportError(kErrDeviceStart, message.c_str());
}

// Opens the output; when no real device opens, falls back to SDL's dummy driver
// so that playback status and positions still advance in real time.
bool StartOutput(const InitConfig& config)
{
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    std::int32_t rate = config.outputRate;
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) == 0) {
        g_engine.sdlSubsystem = true;
        g_engine.device = OpenDevice(config.outputRate, config.deviceBufferFrames, &rate);
        if (g_engine.device == 0) {
            ReportDeviceError("Can not start the audio output.");
            SDL_QuitSubSystem(SDL_INIT_AUDIO);
            g_engine.sdlSubsystem = false;
        }
    } else {
        ReportDeviceError("Can not start the audio output.");
    }
    if (g_engine.device == 0) {
        if (SDL_AudioInit("dummy") != 0)
            return false;
        g_engine.sdlDirectInit = true;
        g_engine.device = OpenDevice(config.outputRate, config.deviceBufferFrames, &rate);
        if (g_engine.device == 0) {
            SDL_AudioQuit();
            g_engine.sdlDirectInit = false;
            return false;
        }
    }
    g_engine.outputRate = rate;
    return true;
}

void StopOutput()
{
    if (g_engine.device != 0) {
        SDL_CloseAudioDevice(g_engine.device); // waits for a running callback
        g_engine.device = 0;
    }
    if (g_engine.sdlSubsystem)
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
    if (g_engine.sdlDirectInit)
        SDL_AudioQuit();
    g_engine.sdlSubsystem = g_engine.sdlDirectInit = false;
}

VoicePoolHandle AddPool(PoolKind kind, const VoicePoolConfig& config, SampleFormat format)
{
    std::lock_guard lock(g_engine.control);
    if (!g_engine.initialized) {
        ReportError(kErrNotInitialized, "Engine is not initialized.");
        return nullptr;
    }
    if (config.numVoices < 1 || config.maxChannels < 1 || config.maxSamplingRate < 1) {
        ReportError(kErrBadConfig, "Invalid voice pool configuration.");
        return nullptr;
    }
    auto* pool = Create<VoicePool>();
    if (!pool) {
        ReportError(kErrNoMemory, "Can not allocate memory.");
        return nullptr;
    }
    pool->kind = kind;
    pool->identifier = config.identifier;
    pool->numVoices = config.numVoices;
    pool->maxChannels = config.maxChannels;
    pool->maxSamplingRate = config.maxSamplingRate;
    pool->sampleFormat = format;
    g_engine.pools.push_back(pool);
    return pool;
}

VoicePool* FindPool(DataFormat format, std::uint32_t identifier)
{
    const PoolKind kind = format == DataFormat::Wave   ? PoolKind::Wave
                          : format == DataFormat::Aiff ? PoolKind::Aiff
                                                       : PoolKind::RawPcm;
    for (VoicePool* pool : g_engine.pools) {
        if (pool->kind == kind && pool->identifier == identifier)
            return pool;
    }
    return nullptr;
}

int LiveVoicesIn(const VoicePool* pool, const Player* except)
{
    int n = 0;
    for (const Voice* v : g_engine.voices) {
        if (v->pool == pool && v->player != except && IsLive(v))
            ++n;
    }
    return n;
}

// Builds the voice for the player's current data; reports and returns null on failure.
Voice* PrepareVoice(Player* player)
{
    VoicePool* pool = FindPool(player->format, player->poolId);
    if (!pool) {
        ReportError(kErrNoPool, "Voice pool is not found.");
        return nullptr;
    }
    if (!player->data || player->size == 0) {
        ReportError(kErrNoData, "Data is not set.");
        return nullptr;
    }
    if (LiveVoicesIn(pool, player) >= pool->numVoices) {
        ReportError(kErrNoFreeVoice, "No free voice in the voice pool.");
        return nullptr;
    }

    MemorySound sound;
    if (player->format == DataFormat::RawPcm) {
        if (pool->sampleFormat != SampleFormat::Float32) {
            ReportError(kErrSampleFormat, "Unsupported sample format.");
            return nullptr;
        }
        if (player->channels < 1 || player->rate < 1) {
            ReportError(kErrBadConfig, "Invalid channel count or sampling rate.");
            return nullptr;
        }
        sound.channels = player->channels;
        sound.rate = player->rate;
        sound.frameCount = static_cast<std::int64_t>(
            player->size / (sizeof(float) * static_cast<std::size_t>(player->channels)));
    } else if (!DecodeMemorySound(player->data, player->size, sound)) {
        return nullptr;
    }

    auto fail = [&sound](const char* code, const char* text) -> Voice* {
        ReturnSampleBuffer(sound.frames, sound.capacity);
        ReportError(code, text);
        return nullptr;
    };
    if (sound.channels > pool->maxChannels || sound.channels > kMaxVoiceChannels)
        return fail(kErrTooManyChannels, "The number of channels exceeds the voice pool's limit.");
    if (sound.rate > pool->maxSamplingRate)
        return fail(kErrRateTooHigh, "The sampling rate exceeds the voice pool's limit.");

    Voice* voice = Create<Voice>();
    if (!voice)
        return fail(kErrNoMemory, "Can not allocate memory.");
    voice->ownedFrames = sound.frames;
    voice->ownedCapacity = sound.capacity;
    voice->frames = sound.frames ? sound.frames : static_cast<const float*>(player->data);
    voice->frameCount = sound.frameCount;
    voice->channels = sound.channels;
    voice->rate = sound.rate;
    voice->loopEnd = std::min(sound.loopEnd, sound.frameCount);
    voice->loopStart = std::min(sound.loopStart, voice->loopEnd);
    voice->startFrame = std::clamp<std::int64_t>(
        static_cast<std::int64_t>(player->startMs) * sound.rate / 1000, 0, sound.frameCount);
    voice->initialVolume = player->volume;
    voice->pool = pool;
    voice->player = player;
    SetStereoFold(*voice);

    if (sound.rate != g_engine.outputRate) {
        int err = 0;
        voice->resampleRatio = static_cast<double>(g_engine.outputRate) / sound.rate;
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
        voice->resampleBuffer = static_cast<float*>(Allocate(
            Mixer::kBlockFrames * static_cast<std::size_t>(sound.channels) * sizeof(float)));
        if (!voice->resampler || !voice->resampleBuffer) {
            FreeVoice(voice);
            ReportError(kErrResampler, "Can not create the resampler.");
            return nullptr;
        }
    }
    return voice;
}

Voice* FindVoice(PlaybackId id)
{
    for (Voice* v : g_engine.voices) {
        if (v->id == id)
            return v;
    }
    return nullptr;
}

} // namespace

void* Allocate(std::size_t size)
{
    return g_alloc ? g_alloc(size) : std::malloc(size);
}

void Release(void* pointer)
{
    if (!pointer)
        return;
    if (g_free)
        g_free(pointer);
    else
        std::free(pointer);
}

float* AcquireSampleBuffer(std::size_t count, std::size_t* capacity)
{
    if (g_engine.spareSamples && g_engine.spareCapacity >= count) {
        float* buffer = g_engine.spareSamples;
        *capacity = g_engine.spareCapacity;
        g_engine.spareSamples = nullptr;
        g_engine.spareCapacity = 0;
        return buffer;
    }
    *capacity = count;
    return static_cast<float*>(Allocate(count * sizeof(float)));
}

void ReturnSampleBuffer(float* buffer, std::size_t capacity)
{
    if (!buffer)
        return;
    ReleaseSpareSampleBuffer();
    g_engine.spareSamples = buffer;
    g_engine.spareCapacity = capacity;
}

void ReleaseSpareSampleBuffer()
{
    Release(g_engine.spareSamples);
    g_engine.spareSamples = nullptr;
    g_engine.spareCapacity = 0;
}

void ReportError(const char* code, const char* message)
{
    const ErrorCallback callback = g_errorCallback.load();
    if (!callback)
        return;
    const std::string text = std::string(code) + " : " + message;
    callback(text.c_str());
}

void SetErrorCallback(ErrorCallback callback)
{
    g_errorCallback.store(callback);
}

void SetAllocationFunctions(AllocFunction alloc, FreeFunction free)
{
    std::lock_guard lock(g_engine.control);
    if (g_engine.initialized)
        return; // memory already handed out must go back to the same allocator
    if (alloc && free) {
        g_alloc = alloc;
        g_free = free;
    } else {
        g_alloc = nullptr;
        g_free = nullptr;
    }
}

bool Initialize(const InitConfig& config)
{
    std::lock_guard lock(g_engine.control);
    if (g_engine.initialized)
        return true;
    if (config.outputRate < 8000 || config.outputRate > 384000 || config.maxVoices < 1 ||
        config.deviceBufferFrames < 16 || config.deviceBufferFrames > 32768) {
        ReportError(kErrBadConfig, "Invalid engine configuration.");
        return false;
    }
    g_engine.config = config;
    g_engine.outputRate = config.outputRate;
    if (config.output == OutputMode::Device && !StartOutput(config))
        return false; // the reason went to the error callback
    g_engine.mixer = Create<Mixer>(g_engine.outputRate, config.maxVoices);
    if (!g_engine.mixer) {
        StopOutput();
        ReportError(kErrNoMemory, "Can not allocate memory.");
        return false;
    }
    g_engine.busyNs = 0;
    g_engine.calls = 0;
    g_engine.framesMixed = 0;
    g_engine.initialized = true;
    if (g_engine.device != 0)
        SDL_PauseAudioDevice(g_engine.device, 0);
    return true;
}

void Finalize()
{
    std::lock_guard lock(g_engine.control);
    if (!g_engine.initialized)
        return;
    StopOutput();
    g_engine.mixer->ReleaseAll();
    for (Player* p : g_engine.players)
        Destroy(p);
    g_engine.players.clear();
    for (Voice* v : g_engine.voices)
        FreeVoice(v);
    g_engine.voices.clear();
    for (VoicePool* pool : g_engine.pools)
        Destroy(pool);
    g_engine.pools.clear();
    ReleaseSpareSampleBuffer();
    Destroy(g_engine.mixer);
    g_engine.mixer = nullptr;
    g_engine.initialized = false;
}

bool IsInitialized()
{
    std::lock_guard lock(g_engine.control);
    return g_engine.initialized;
}

std::int32_t GetOutputRate()
{
    std::lock_guard lock(g_engine.control);
    return g_engine.outputRate;
}

std::int32_t GetOutputChannels()
{
    return 2;
}

bool IsDeviceRunning()
{
    std::lock_guard lock(g_engine.control);
    return DeviceRunning();
}

VoicePoolHandle CreateStandardVoicePool(const VoicePoolConfig& config)
{
    return AddPool(PoolKind::Standard, config, SampleFormat::Int16);
}

VoicePoolHandle CreateWaveVoicePool(const VoicePoolConfig& config)
{
    return AddPool(PoolKind::Wave, config, SampleFormat::Int16);
}

VoicePoolHandle CreateAiffVoicePool(const VoicePoolConfig& config)
{
    return AddPool(PoolKind::Aiff, config, SampleFormat::Int16);
}

VoicePoolHandle CreateRawPcmVoicePool(const RawPcmVoicePoolConfig& config)
{
    if (config.sampleFormat != SampleFormat::Float32) {
        ReportError(kErrSampleFormat, "Unsupported sample format.");
        return nullptr;
    }
    const VoicePoolConfig base{config.identifier, config.numVoices, config.maxChannels,
                               config.maxSamplingRate};
    return AddPool(PoolKind::RawPcm, base, config.sampleFormat);
}

void DestroyVoicePool(VoicePoolHandle pool)
{
    std::lock_guard lock(g_engine.control);
    auto& pools = g_engine.pools;
    const auto it = std::find(pools.begin(), pools.end(), pool);
    if (it == pools.end())
        return;
    for (Voice* v : g_engine.voices) {
        if (v->pool == pool) {
            if (IsLive(v))
                PostStop(v);
            v->pool = nullptr;
        }
    }
    pools.erase(it);
    Destroy(pool);
}

PlayerHandle CreatePlayer(const PlayerConfig*)
{
    std::lock_guard lock(g_engine.control);
    if (!g_engine.initialized) {
        ReportError(kErrNotInitialized, "Engine is not initialized.");
        return nullptr;
    }
    auto* player = Create<Player>();
    if (!player) {
        ReportError(kErrNoMemory, "Can not allocate memory.");
        return nullptr;
    }
    g_engine.players.push_back(player);
    return player;
}

namespace {

// Looks the handle up under the control lock; reports a stale or null handle.
Player* Checked(PlayerHandle player)
{
    auto& players = g_engine.players;
    if (player && std::find(players.begin(), players.end(), player) != players.end())
        return player;
    ReportError(kErrNullHandle, "Invalid player handle.");
    return nullptr;
}

} // namespace

void DestroyPlayer(PlayerHandle handle)
{
    std::lock_guard lock(g_engine.control);
    Player* player = Checked(handle);
    if (!player)
        return;
    for (Voice* v : g_engine.voices) {
        if (v->player == player) {
            if (IsLive(v))
                PostStop(v);
            v->player = nullptr;
        }
    }
    auto& players = g_engine.players;
    players.erase(std::find(players.begin(), players.end(), player));
    Destroy(player);
    CollectVoices();
}

void SetDataFormat(PlayerHandle handle, DataFormat format)
{
    std::lock_guard lock(g_engine.control);
    if (Player* p = Checked(handle))
        p->format = format;
}

void SetNumChannels(PlayerHandle handle, std::int32_t channels)
{
    std::lock_guard lock(g_engine.control);
    if (Player* p = Checked(handle))
        p->channels = channels;
}

void SetSamplingRate(PlayerHandle handle, std::int32_t rate)
{
    std::lock_guard lock(g_engine.control);
    if (Player* p = Checked(handle))
        p->rate = rate;
}

void SetVoicePoolId(PlayerHandle handle, std::uint32_t identifier)
{
    std::lock_guard lock(g_engine.control);
    if (Player* p = Checked(handle))
        p->poolId = identifier;
}

void SetData(PlayerHandle handle, const void* data, std::size_t size)
{
    std::lock_guard lock(g_engine.control);
    if (Player* p = Checked(handle)) {
        p->data = data;
        p->size = size;
    }
}

void SetStartTimeMs(PlayerHandle handle, std::int32_t milliseconds)
{
    std::lock_guard lock(g_engine.control);
    if (Player* p = Checked(handle))
        p->startMs = std::max(0, milliseconds);
}

void Start(PlayerHandle handle)
{
    std::lock_guard lock(g_engine.control);
    Player* player = Checked(handle);
    if (!player)
        return;
    if (player->current && IsLive(player->current))
        PostStop(player->current);
    player->current = nullptr;
    CollectVoices();

    Voice* voice = PrepareVoice(player);
    if (!voice) {
        player->idleStatus = PlayerStatus::Error;
        return;
    }
    voice->id = g_engine.nextId++;
    if (g_engine.nextId == kInvalidPlaybackId)
        g_engine.nextId = 1;
    if (!g_engine.mixer->Post({MixerCommand::Type::Add, voice, 0.0f})) {
        FreeVoice(voice);
        player->idleStatus = PlayerStatus::Error;
        ReportError(kErrQueueFull, "Command queue is full.");
        return;
    }
    g_engine.voices.push_back(voice);
    player->current = voice;
    player->lastId = voice->id;
}

void Stop(PlayerHandle handle)
{
    std::lock_guard lock(g_engine.control);
    Player* player = Checked(handle);
    if (!player)
        return;
    if (player->current && IsLive(player->current)) {
        PostStop(player->current);
        return;
    }
    // Ended, failed or never started: the player simply reads stopped now.
    player->current = nullptr;
    player->idleStatus = PlayerStatus::Stopped;
    CollectVoices();
}

PlayerStatus GetStatus(PlayerHandle handle)
{
    std::lock_guard lock(g_engine.control);
    Player* player = Checked(handle);
    if (!player)
        return PlayerStatus::Error;
    if (!player->current)
        return player->idleStatus;
    switch (StateOf(player->current)) {
    case VoiceState::Queued:
        return PlayerStatus::Preparing;
    case VoiceState::Playing:
        return PlayerStatus::Playing;
    case VoiceState::Ended:
        return PlayerStatus::PlayEnd;
    case VoiceState::Stopped:
        return PlayerStatus::Stopped;
    case VoiceState::Error:
        break;
    }
    return PlayerStatus::Error;
}

void SetVolume(PlayerHandle handle, float volume)
{
    std::lock_guard lock(g_engine.control);
    if (Player* p = Checked(handle))
        p->volume = std::max(0.0f, volume);
}

void ApplyParameters(PlayerHandle handle)
{
    std::lock_guard lock(g_engine.control);
    Player* player = Checked(handle);
    if (!player || !player->current || !IsLive(player->current))
        return;
    if (!g_engine.mixer->Post({MixerCommand::Type::Volume, player->current, player->volume}))
        ReportError(kErrQueueFull, "Command queue is full.");
    else if (!DeviceRunning())
        g_engine.mixer->ProcessCommands();
}

PlaybackId GetLastPlaybackId(PlayerHandle handle)
{
    std::lock_guard lock(g_engine.control);
    Player* player = Checked(handle);
    return player ? player->lastId : kInvalidPlaybackId;
}

std::int64_t GetPlayedSamples(PlaybackId id)
{
    std::lock_guard lock(g_engine.control);
    const Voice* v = FindVoice(id);
    if (!v)
        return -1;
    const std::int64_t out = v->outFrames.load(std::memory_order_relaxed);
    if (v->rate == g_engine.outputRate)
        return v->startFrame + out;
    return v->startFrame +
           static_cast<std::int64_t>(static_cast<double>(out) * v->rate / g_engine.outputRate);
}

std::int32_t GetPlaybackSamplingRate(PlaybackId id)
{
    std::lock_guard lock(g_engine.control);
    const Voice* v = FindVoice(id);
    return v ? v->rate : 0;
}

void RenderOffline(float* out, std::size_t frames)
{
    std::lock_guard lock(g_engine.control);
    if (!g_engine.initialized || DeviceRunning()) {
        std::fill(out, out + frames * 2, 0.0f);
        return;
    }
    g_engine.mixer->Render(out, frames);
    ClampToUnit(out, frames * 2);
}

CallbackStats GetCallbackStats()
{
    return {g_engine.busyNs.load(), g_engine.calls.load(), g_engine.framesMixed.load()};
}

} // namespace AudioEngine
