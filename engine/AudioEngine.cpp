#include "AudioEngine.h"

#include "DeviceOutput.h"
#include "EngineErrors.h"
#include "EngineMemory.h"
#include "EngineObjects.h"
#include "Mixer.h"
#include "Stream.h"
#include "StreamSource.h"
#include "Streamer.h"
#include "VoiceBuilder.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace AudioEngine {

namespace {

struct EngineState
{
    std::mutex control; // control-thread bookkeeping; the device callback never takes it
    bool initialized = false;
    InitConfig config;
    Mixer* mixer = nullptr;
    Streamer* streamer = nullptr;
    DeviceOutput output;
    std::int32_t outputRate = 48000;
    std::vector<VoicePool*> pools;
    std::vector<Player*> players;
    std::vector<Voice*> voices;
    PlaybackId nextId = 1;

    // Moving the output to another device. While `changing` is set, only the
    // switcher thread touches `output` (without the control lock: SDL may take
    // long), and the engine behaves as if a device ran.
    std::thread switcher;
    std::atomic<bool> changing{false};
    std::string wantedDevice;             // control lock
    OutputChange change;                  // control lock
    std::vector<std::string> deviceNames; // the last list, for while the output moves
};

EngineState g_engine;

bool DeviceRunning()
{
    return g_engine.changing.load(std::memory_order_acquire) || g_engine.output.IsOpen();
}

// The switcher thread: moves the output, then moves it again while newer
// requests came in meanwhile.
void RunOutputChange(std::string name)
{
    for (;;) {
        const bool opened = g_engine.output.Switch(name);
        std::lock_guard lock(g_engine.control);
        if (g_engine.wantedDevice != name && g_engine.output.IsOpen()) {
            name = g_engine.wantedDevice;
            continue;
        }
        g_engine.change = {true, name, opened};
        if (!g_engine.output.IsOpen())
            g_engine.streamer
                ->StopThread(); // nothing pulls the mix any more; Stop is immediate now
        DeviceOutput::ReleaseThreadState();
        g_engine.changing.store(false, std::memory_order_release);
        return;
    }
}

// Under the control lock, with no move under way.
void StartOutputChange(const std::string& name)
{
    if (g_engine.switcher.joinable())
        g_engine.switcher.join(); // the last move has finished; its thread is past the lock
    g_engine.wantedDevice = name;
    g_engine.changing.store(true, std::memory_order_release);
    g_engine.switcher = std::thread(RunOutputChange, name);
}

bool IsCurrentOfSomePlayer(const Voice* voice)
{
    return std::any_of(g_engine.players.begin(), g_engine.players.end(),
                       [voice](const Player* p) { return p->current == voice; });
}

bool WorkerLetGo(const Voice* voice)
{
    return !voice->stream || voice->stream->workerDone.load(std::memory_order_acquire);
}

// Frees voices the mixer (and for a stream, the worker) has let go of and no
// player reports on any more.
void CollectVoices()
{
    if (!DeviceRunning())
        g_engine.streamer->ServiceAll(); // offline, the worker's pass runs here
    auto& voices = g_engine.voices;
    for (std::size_t i = 0; i < voices.size();) {
        Voice* v = voices[i];
        if (v->released.load(std::memory_order_acquire) && WorkerLetGo(v) &&
            !IsCurrentOfSomePlayer(v)) {
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
    const PoolKind kind = format == DataFormat::Wave     ? PoolKind::Wave
                          : format == DataFormat::Aiff   ? PoolKind::Aiff
                          : format == DataFormat::Stream ? PoolKind::Stream
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
    const bool hasData = player->format == DataFormat::Stream ? player->stream != nullptr
                                                              : player->data && player->size > 0;
    if (!hasData) {
        ReportError(kErrNoData, "Data is not set.");
        return nullptr;
    }
    if (LiveVoicesIn(pool, player) >= pool->numVoices) {
        ReportError(kErrNoFreeVoice, "No free voice in the voice pool.");
        return nullptr;
    }

    return BuildVoice(*player, *pool, g_engine.outputRate);
}

// A stream's format is known (and stays put) once its worker has opened it.
bool Opened(const Voice* voice)
{
    return !voice->stream ||
           static_cast<StreamPhase>(voice->stream->phase.load(std::memory_order_acquire)) ==
               StreamPhase::Ready;
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

void SetAllocationFunctions(AllocFunction alloc, FreeFunction free)
{
    std::lock_guard lock(g_engine.control);
    if (g_engine.initialized)
        return; // memory already handed out must go back to the same allocator
    SetAllocators(alloc, free);
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
    if (config.output == OutputMode::Device) {
        if (!g_engine.output.Open(config.outputRate, config.deviceBufferFrames,
                                  config.outputDevice))
            return false; // the reason went to the error callback
        g_engine.outputRate = g_engine.output.Rate();
    }
    g_engine.mixer = Create<Mixer>(g_engine.outputRate, config.maxVoices);
    g_engine.streamer = Create<Streamer>(g_engine.outputRate);
    if (!g_engine.mixer || !g_engine.streamer) {
        g_engine.output.Close();
        Destroy(g_engine.mixer);
        Destroy(g_engine.streamer);
        g_engine.mixer = nullptr;
        g_engine.streamer = nullptr;
        ReportError(kErrNoMemory, "Can not allocate memory.");
        return false;
    }
    g_engine.initialized = true;
    if (DeviceRunning())
        g_engine.streamer->StartThread();
    g_engine.output.Run(g_engine.mixer);
    return true;
}

void Finalize()
{
    // A move under way ends first: it takes the control lock at its end.
    std::thread switcher;
    {
        std::lock_guard lock(g_engine.control);
        switcher = std::move(g_engine.switcher);
    }
    if (switcher.joinable())
        switcher.join();
    std::lock_guard lock(g_engine.control);
    if (!g_engine.initialized)
        return;
    g_engine.output.Close(); // waits for a running callback
    g_engine.streamer->StopThread();
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
    Destroy(g_engine.mixer);
    g_engine.mixer = nullptr;
    Destroy(g_engine.streamer);
    g_engine.streamer = nullptr;
    g_engine.change = {};
    g_engine.deviceNames.clear();
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

std::vector<std::string> ListOutputDevices()
{
    std::lock_guard lock(g_engine.control);
    if (!DeviceRunning())
        return {};
    // SDL's device list must not be read while another thread opens devices.
    if (!g_engine.changing.load(std::memory_order_acquire))
        g_engine.deviceNames = DeviceOutput::ListDevices();
    return g_engine.deviceNames;
}

std::string GetOutputDevice()
{
    std::lock_guard lock(g_engine.control);
    return g_engine.changing.load(std::memory_order_acquire) ? g_engine.wantedDevice
                                                             : g_engine.output.Device();
}

void SetOutputDevice(const std::string& name)
{
    std::lock_guard lock(g_engine.control);
    if (!g_engine.initialized || !DeviceRunning())
        return;
    if (g_engine.changing.load(std::memory_order_acquire)) {
        g_engine.wantedDevice = name; // the move under way goes on there
        return;
    }
    if (name == g_engine.output.Device() && !g_engine.output.IsLost()) {
        g_engine.change = {true, name, true};
        return;
    }
    StartOutputChange(name);
}

bool RecoverLostOutput(std::string* lost)
{
    std::lock_guard lock(g_engine.control);
    if (!g_engine.initialized || g_engine.changing.load(std::memory_order_acquire) ||
        !g_engine.output.IsOpen() || !g_engine.output.IsLost())
        return false;
    if (lost)
        *lost = g_engine.output.Device();
    StartOutputChange(std::string());
    return true;
}

OutputChange TakeOutputChange()
{
    std::lock_guard lock(g_engine.control);
    return std::exchange(g_engine.change, OutputChange{});
}

bool IsOutputChanging()
{
    return g_engine.changing.load(std::memory_order_acquire);
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

VoicePoolHandle CreateStreamVoicePool(const VoicePoolConfig& config)
{
    return AddPool(PoolKind::Stream, config, SampleFormat::Float32);
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
    delete player->stream;
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

void SetStreamSource(PlayerHandle handle, StreamSource* source)
{
    std::lock_guard lock(g_engine.control);
    Player* p = Checked(handle);
    if (!p) {
        delete source;
        return;
    }
    delete p->stream;
    p->stream = source;
}

void SetPlayRange(PlayerHandle handle, std::int64_t startFrame, std::int64_t endFrame)
{
    std::lock_guard lock(g_engine.control);
    if (Player* p = Checked(handle)) {
        p->rangeStart = startFrame < 0 ? -1 : startFrame;
        p->rangeEnd = startFrame < 0 || endFrame <= startFrame ? -1 : endFrame;
    }
}

void SetFadeIn(PlayerHandle handle, bool enabled)
{
    std::lock_guard lock(g_engine.control);
    if (Player* p = Checked(handle))
        p->fadeIn = enabled;
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
    if (voice->stream)
        g_engine.streamer->Add(voice);
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
    if (!Opened(v))
        return 0;
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
    return v && Opened(v) ? v->rate : 0;
}

void RenderOffline(float* out, std::size_t frames)
{
    std::lock_guard lock(g_engine.control);
    if (!g_engine.initialized || DeviceRunning()) {
        std::fill(out, out + frames * 2, 0.0f);
        return;
    }
    g_engine.streamer->ServiceAll();
    g_engine.mixer->Render(out, frames);
}

CallbackStats GetCallbackStats()
{
    std::lock_guard lock(g_engine.control);
    CallbackStats stats = g_engine.output.Stats();
    stats.streamUnderruns = g_engine.mixer ? g_engine.mixer->Underruns() : 0;
    return stats;
}

} // namespace AudioEngine
