#include "LumoManager.h"

#include "SoundSource.h"
#include "SoundSourceStream.h"
#include "WaveFileStream.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <thread>

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
}

void LumoManager::Finalize()
{
    if (!initialized)
        return;
    AudioEngine::DestroyPlayer(memoryPlayer);
    memoryPlayer = nullptr;
    for (AudioEngine::VoicePoolHandle* pool : {&standardPool, &wavePool, &aiffPool, &streamPool}) {
        AudioEngine::DestroyVoicePool(*pool);
        *pool = nullptr;
    }
    AudioEngine::Finalize();
    initialized = false;
    currentData.clear();
    retiredData.clear();
}

void LumoManager::Play(const QString& path)
{
    PlayFrom(path, 0);
}

bool LumoManager::StopAndWait()
{
    // A player that failed (or could not be made, when no output opened) plays nothing.
    const auto idle = [this] {
        const AudioEngine::PlayerStatus status = AudioEngine::GetStatus(memoryPlayer);
        return status == AudioEngine::PlayerStatus::Stopped ||
               status == AudioEngine::PlayerStatus::Error;
    };
    if (!memoryPlayer || idle())
        return true;
    AudioEngine::Stop(memoryPlayer);
    // Spin rather than sleep: the stop ramp lasts only a few milliseconds of
    // the output's callbacks. An output that has stopped calling must not hold
    // the window: after a while the caller goes on and leaves the sound's data alone.
    QElapsedTimer waited;
    waited.start();
    while (!idle()) {
        if (waited.elapsed() >= kStopWaitMs)
            return false;
        std::this_thread::yield();
    }
    return true;
}

namespace {

bool IsWaveSuffix(const QString& suffix)
{
    return suffix == QLatin1String("aif") || suffix == QLatin1String("aiff") ||
           suffix == QLatin1String("wav");
}

} // namespace

void LumoManager::PlayFrom(const QString& path, std::int32_t startMs)
{
    if (!initialized)
        return;
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (IsWaveSuffix(suffix))
        return PlayWave(path, startMs, -1, -1);
    PlayDecoded(path, suffix, startMs, -1, -1);
}

void LumoManager::PlayRange(const QString& path, std::int64_t startFrame, std::int64_t endFrame)
{
    if (!initialized)
        return;
    const QString suffix = QFileInfo(path).suffix().toLower();
    startFrame = std::max<std::int64_t>(0, startFrame);
    if (IsWaveSuffix(suffix))
        PlayWave(path, 0, startFrame, endFrame);
    else
        PlayDecoded(path, suffix, 0, startFrame, endFrame);
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
    if (!StopAndWait()) {
        // The sound that did not stop may still read its data: it is kept.
        retiredData = std::move(currentData);
        currentData = QByteArray();
    }
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
    streaming = stream;
}

void LumoManager::PlayDecoded(const QString& path, const QString& suffix, std::int32_t startMs,
                              std::int64_t rangeStart, std::int64_t rangeEnd)
{
    std::unique_ptr<SoundSource> decoder = SoundSource::forSuffix(suffix.toStdString());
    if (!decoder)
        return; // nothing reads this format; the current sound goes on
    // A sound playing from memory must let go of the buffer before another
    // WAVE file may refill it; a streamed one owns its data, and the start
    // below ramps it out without a wait here.
    if (!streaming)
        StopAndWait();
    AudioEngine::SetDataFormat(memoryPlayer, AudioEngine::DataFormat::Stream);
    AudioEngine::SetStreamSource(
        memoryPlayer,
        new SoundSourceStream(std::move(decoder),
                              QFile::encodeName(QFileInfo(path).absoluteFilePath()).toStdString(),
                              SoundSourceStream::OpenMode::Playback));
    AudioEngine::SetStartTimeMs(memoryPlayer, startMs);
    AudioEngine::SetPlayRange(memoryPlayer, rangeStart, rangeEnd);
    ApplyVolume(false);
    AudioEngine::Start(memoryPlayer);
    streaming = true;
}

void LumoManager::Stop()
{
    if (!initialized)
        return;
    AudioEngine::Stop(memoryPlayer);
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
    AudioEngine::SetVolume(memoryPlayer, volume * previewGain);
    if (now)
        AudioEngine::ApplyParameters(memoryPlayer);
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

void LumoManager::SetOutputDevice(const QString& name)
{
    if (initialized)
        AudioEngine::SetOutputDevice(name.toStdString());
}

bool LumoManager::TakeOutputChange(QString* requested, bool* opened)
{
    if (!initialized)
        return false;
    const AudioEngine::OutputChange change = AudioEngine::TakeOutputChange();
    if (!change.finished)
        return false;
    if (requested)
        *requested = QString::fromStdString(change.requested);
    if (opened)
        *opened = change.opened;
    return true;
}

bool LumoManager::CheckOutputDevice(QString* lost)
{
    if (!initialized)
        return false;
    std::string name;
    if (!AudioEngine::RecoverLostOutput(&name))
        return false;
    if (lost)
        *lost = QString::fromStdString(name);
    return true;
}

bool LumoManager::IsPlaying()
{
    return initialized &&
           AudioEngine::GetStatus(memoryPlayer) == AudioEngine::PlayerStatus::Playing;
}

bool LumoManager::IsPreparing()
{
    return initialized &&
           AudioEngine::GetStatus(memoryPlayer) == AudioEngine::PlayerStatus::Preparing;
}

std::int64_t LumoManager::GetPlayedSamples()
{
    if (!IsPlaying())
        return 0;
    const std::int64_t played =
        AudioEngine::GetPlayedSamples(AudioEngine::GetLastPlaybackId(memoryPlayer));
    return played > 0 ? played : 0;
}
