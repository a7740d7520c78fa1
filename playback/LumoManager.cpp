#include "LumoManager.h"

#include "PcmDecoding.h"
#include "SoundSource.h"
#include "WaveFileStream.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace {

// The engine's error callback has no user pointer.
std::atomic<LumoManager*> g_instance{nullptr};

void* EngineAlloc(std::size_t size)
{
    return std::malloc(size);
}

void EngineFree(void* pointer)
{
    std::free(pointer);
}

} // namespace

LumoManager::LumoManager(QObject* parent, AudioEngine::OutputMode output)
    : PreviewPlayer(parent)
    , output(output)
{}

LumoManager::~LumoManager()
{
    Finalize();
    LumoManager* self = this;
    g_instance.compare_exchange_strong(self, nullptr);
}

void LumoManager::OnEngineError(const char* text)
{
    std::fputs(text, stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
    // May run on an engine thread; the queued connection carries it to the GUI.
    if (LumoManager* self = g_instance.load())
        emit self->ErrorOccurred(QString::fromLocal8Bit(text));
}

void LumoManager::Initialize()
{
    if (initialized)
        return;
    g_instance.store(this);
    AudioEngine::SetErrorCallback(&LumoManager::OnEngineError);
    AudioEngine::SetAllocationFunctions(EngineAlloc, EngineFree);

    AudioEngine::InitConfig config;
    config.updateFrequency = 60.0f;
    config.output = output;
    if (!AudioEngine::Initialize(config))
        return; // the reason went to the error callback; every request stays a no-op
    initialized = true;

    standardPool = AudioEngine::CreateStandardVoicePool({0, 8, 2, 48000});
    wavePool = AudioEngine::CreateWaveVoicePool({0, 1, 8, 192000});
    aiffPool = AudioEngine::CreateAiffVoicePool({0, 1, 8, 192000});
    streamPool = AudioEngine::CreateStreamVoicePool({0, 1, 8, 192000});

    const AudioEngine::PlayerConfig memoryConfig{1, 1024};
    memoryPlayer = AudioEngine::CreatePlayer(&memoryConfig);
    pcmPlayer = AudioEngine::CreatePlayer();
    AudioEngine::SetDataFormat(pcmPlayer, AudioEngine::DataFormat::RawPcm);
}

void LumoManager::Finalize()
{
    if (!initialized)
        return;
    AudioEngine::DestroyPlayer(memoryPlayer);
    AudioEngine::DestroyPlayer(pcmPlayer);
    memoryPlayer = pcmPlayer = nullptr;
    for (AudioEngine::VoicePoolHandle* pool : {&standardPool, &wavePool, &aiffPool, &streamPool}) {
        AudioEngine::DestroyVoicePool(*pool);
        *pool = nullptr;
    }
    for (const auto& record : pcmPools) {
        if (record->created)
            AudioEngine::DestroyVoicePool(record->pool);
    }
    pcmPools.clear();
    AudioEngine::Finalize();
    initialized = false;
    currentData.clear();
}

void LumoManager::Play(const QString& path)
{
    PlayFrom(path, 0);
}

void LumoManager::StopAndWait()
{
    for (AudioEngine::PlayerHandle player : {memoryPlayer, pcmPlayer}) {
        if (!player || AudioEngine::GetStatus(player) == AudioEngine::PlayerStatus::Stopped)
            continue;
        AudioEngine::Stop(player);
        // Spin rather than sleep: the data buffer is replaced right afterwards and
        // the stop ramp lasts only a few milliseconds.
        while (AudioEngine::GetStatus(player) != AudioEngine::PlayerStatus::Stopped) {
        }
    }
}

void LumoManager::PlayFrom(const QString& path, std::int32_t startMs)
{
    if (!initialized)
        return;
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("aif") || suffix == QLatin1String("aiff") ||
        suffix == QLatin1String("wav"))
        return PlayWave(path, startMs, -1, -1);
    PlayCompressed(path, suffix, startMs);
}

void LumoManager::PlayRange(const QString& path, std::int64_t startFrame, std::int64_t endFrame)
{
    if (!initialized)
        return;
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("aif") || suffix == QLatin1String("aiff") ||
        suffix == QLatin1String("wav"))
        PlayWave(path, 0, std::max<std::int64_t>(0, startFrame), endFrame);
}

void LumoManager::PlayWave(const QString& path, std::int32_t startMs, std::int64_t rangeStart,
                           std::int64_t rangeEnd)
{
    const QFileInfo info(path);
    const QString suffix = info.suffix().toLower();
    const bool aiff = suffix == QLatin1String("aif") || suffix == QLatin1String("aiff");
    const bool stream = info.size() > streamThreshold;
    AudioEngine::SetDataFormat(memoryPlayer, stream ? AudioEngine::DataFormat::Stream
                                             : aiff ? AudioEngine::DataFormat::Aiff
                                                    : AudioEngine::DataFormat::Wave);
    StopAndWait();
    AudioEngine::SetNumChannels(memoryPlayer, 2);
    AudioEngine::SetSamplingRate(memoryPlayer, 48000);

    if (stream) {
        // A long file is read a block at a time on the engine's worker: no wait
        // here, and memory stays the same whatever the length.
        currentData = QByteArray();
        AudioEngine::SetStreamSource(memoryPlayer,
                                     new AudioEngine::WaveFileStream(
                                         QFile::encodeName(info.absoluteFilePath()).toStdString()));
    } else {
        // Not checked: an unreadable file gives empty data and the engine's own error.
        QFile file(info.absoluteFilePath());
        if (file.open(QIODevice::ReadOnly) && file.size() < std::numeric_limits<int>::max()) {
            // Reads into the buffer the previous file used, to spare fresh pages.
            currentData.resize(static_cast<int>(file.size()));
            currentData.resize(static_cast<int>(
                std::max<qint64>(0, file.read(currentData.data(), currentData.size()))));
        } else {
            currentData.clear();
        }
        AudioEngine::SetData(memoryPlayer, currentData.constData(),
                             static_cast<std::size_t>(currentData.size()));
    }
    AudioEngine::SetStartTimeMs(memoryPlayer, startMs);
    AudioEngine::SetPlayRange(memoryPlayer, rangeStart, rangeEnd);
    ApplyVolume(false);
    AudioEngine::Start(memoryPlayer);
    usePcmPlayer = false;
    streaming = stream;
}

void LumoManager::PlayCompressed(const QString& path, const QString& suffix, std::int32_t startMs)
{
    // MP3 and Ogg Vorbis start only at their beginning; a seek on them is dropped
    // and the current sound goes on.
    if (startMs > 0)
        return;
    StopAndWait();

    std::int32_t rate = 0;
    std::int32_t channels = 0;
    if (const auto source = SoundSource::forSuffix(suffix.toStdString())) {
        currentData = source->open(QFile::encodeName(path).constData())
                          ? DecodeToPcm(*source, rate, channels)
                          : QByteArray();
        usePcmPlayer = true;
    } else if (!usePcmPlayer) {
        return;
    }

    std::uint32_t identifier = 0;
    bool found = false;
    for (const auto& record : pcmPools) {
        if (record->created && record->samplingRate == rate && record->channels == channels) {
            identifier = record->identifier;
            found = true;
            break;
        }
    }
    if (!found) {
        auto record = std::make_unique<PcmPoolRecord>();
        record->identifier = static_cast<std::uint32_t>(pcmPools.size());
        record->channels = channels;
        record->samplingRate = rate;
        AudioEngine::RawPcmVoicePoolConfig config;
        config.identifier = record->identifier;
        config.numVoices = record->numVoices;
        config.maxChannels = channels;
        config.maxSamplingRate = rate;
        config.sampleFormat = AudioEngine::SampleFormat::Float32;
        record->pool = AudioEngine::CreateRawPcmVoicePool(config);
        record->created = record->pool != nullptr;
        identifier = record->identifier; // used even when creation failed
        pcmPools.push_back(std::move(record));
    }

    AudioEngine::SetVoicePoolId(pcmPlayer, identifier);
    AudioEngine::SetSamplingRate(pcmPlayer, rate);
    AudioEngine::SetNumChannels(pcmPlayer, channels);
    AudioEngine::SetData(pcmPlayer, currentData.constData(),
                         static_cast<std::size_t>(currentData.size()));
    ApplyVolume(false);
    AudioEngine::Start(pcmPlayer);
    streaming = false;
}

void LumoManager::Stop()
{
    if (!initialized)
        return;
    AudioEngine::Stop(memoryPlayer);
    AudioEngine::Stop(pcmPlayer);
}

void LumoManager::SetVolume(float value)
{
    volume = value;
    if (initialized)
        ApplyVolume(true);
}

void LumoManager::SetPreviewGain(float gain)
{
    previewGain = std::max(0.0f, gain);
}

void LumoManager::ApplyVolume(bool now)
{
    for (AudioEngine::PlayerHandle player : {memoryPlayer, pcmPlayer}) {
        AudioEngine::SetVolume(player, volume * previewGain);
        if (now)
            AudioEngine::ApplyParameters(player);
    }
}

QStringList LumoManager::OutputDevices() const
{
    QStringList names;
    for (const std::string& name : AudioEngine::ListOutputDevices())
        names << QString::fromStdString(name);
    return names;
}

QString LumoManager::OutputDevice() const
{
    return initialized ? QString::fromStdString(AudioEngine::GetOutputDevice()) : QString();
}

bool LumoManager::SetOutputDevice(const QString& name)
{
    return initialized && AudioEngine::SetOutputDevice(name.toStdString());
}

bool LumoManager::CheckOutputDevice(QString* lost)
{
    if (!initialized)
        return false;
    const QString before = OutputDevice();
    if (!AudioEngine::RecoverLostOutput())
        return false;
    if (lost)
        *lost = before;
    return true;
}

AudioEngine::PlayerHandle LumoManager::CurrentPlayer() const
{
    return usePcmPlayer ? pcmPlayer : memoryPlayer;
}

bool LumoManager::IsPlaying()
{
    return initialized &&
           AudioEngine::GetStatus(CurrentPlayer()) == AudioEngine::PlayerStatus::Playing;
}

bool LumoManager::IsPreparing()
{
    return initialized &&
           AudioEngine::GetStatus(CurrentPlayer()) == AudioEngine::PlayerStatus::Preparing;
}

std::int64_t LumoManager::GetPlayedSamples()
{
    if (!IsPlaying())
        return 0;
    const std::int64_t played =
        AudioEngine::GetPlayedSamples(AudioEngine::GetLastPlaybackId(CurrentPlayer()));
    return played > 0 ? played : 0;
}
