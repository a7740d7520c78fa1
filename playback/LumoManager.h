#pragma once

#include "AudioEngine.h"
#include "PreviewPlayer.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

// Previews one audio file at a time: WAVE and AIFF through the memory player
// from the file's own bytes, MP3 and Ogg Vorbis through the PCM player after
// decoding the whole file to float. Owned by the analysis registry.
class LumoManager final : public PreviewPlayer
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LumoManager)

public:
    // One per distinct pair of sampling rate and channel count met so far; its
    // place in the list is its pool identifier.
    struct PcmPoolRecord
    {
        bool created = false;
        std::uint32_t identifier = 0;
        std::int32_t numVoices = 1;
        std::int32_t channels = 0;
        std::int32_t samplingRate = 0;
        std::int32_t sampleFormat = static_cast<std::int32_t>(AudioEngine::SampleFormat::Float32);
        AudioEngine::VoicePoolHandle pool = nullptr;
    };

    // Offline output is for tests: nothing is heard and RenderOffline pulls the mix.
    explicit LumoManager(QObject* parent = nullptr,
                         AudioEngine::OutputMode output = AudioEngine::OutputMode::Device);
    ~LumoManager() override;

    void Initialize() override;
    void Finalize() override;
    void Play(const QString& path) override;
    void PlayFrom(const QString& path, std::int32_t startMs) override;
    void Stop() override;
    void SetVolume(float volume) override;
    bool IsPlaying() override;
    bool IsPreparing() override;
    std::int64_t GetPlayedSamples() override;

    const std::vector<std::unique_ptr<PcmPoolRecord>>& PcmPools() const { return pcmPools; }
    bool UsesPcmPlayer() const { return usePcmPlayer; }

private:
    static void OnEngineError(const char* text);
    AudioEngine::PlayerHandle CurrentPlayer() const;
    void StopAndWait();
    void PlayCompressed(const QString& path, const QString& suffix, std::int32_t startMs);

    AudioEngine::OutputMode output;
    bool initialized = false;

    AudioEngine::PlayerHandle memoryPlayer = nullptr;
    AudioEngine::VoicePoolHandle standardPool = nullptr;
    AudioEngine::VoicePoolHandle wavePool = nullptr;
    AudioEngine::VoicePoolHandle aiffPool = nullptr;
    std::vector<std::unique_ptr<PcmPoolRecord>> pcmPools;
    AudioEngine::PlayerHandle pcmPlayer = nullptr;
    bool usePcmPlayer = false;
    // Must outlive every read of the engine; replaced only after both players stopped.
    QByteArray currentData;
};
