#pragma once

#include "AudioEngine.h"
#include "PreviewPlayer.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>

// Previews one audio file at a time: WAVE and AIFF through the memory player
// from the file's own bytes (or, above a size limit, streamed from disk so that
// memory stays bounded and the start stays instant); every other format
// (MP3, Ogg Vorbis, whatever SoundSource decodes) streamed from its decoder,
// which the engine's worker runs a block at a time ahead of the mixer, so a
// start or a seek never waits for the whole file. Owned by the analysis
// registry.
class LumoManager final : public PreviewPlayer
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LumoManager)

public:
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

    // WAVE and AIFF files larger than this stream from disk instead of being
    // read whole. Reading 8 MB from the page cache takes about 2 ms; a 35 MB
    // file already took up to 24 ms, past the 20 ms a start may take.
    static constexpr qint64 kDefaultStreamThreshold = 8LL * 1024 * 1024;
    // How long a new sound waits for the last one's stop ramp.
    static constexpr qint64 kStopWaitMs = 250;
    void SetStreamThreshold(qint64 bytes) { streamThreshold = bytes; }
    bool IsStreaming() const { return streaming; }

    // Plays frames [startFrame, endFrame) of a file once, ramping out at the
    // end (a region chosen in the detail view).
    void PlayRange(const QString& path, std::int64_t startFrame, std::int64_t endFrame) override;

    // A gain (linear) applied, on top of the volume, to the sounds started from
    // now on: the loudness match of the next file.
    void SetPreviewGain(float gain);
    float PreviewGain() const { return previewGain; }

    // Output devices: the names SDL reports, the one in use ("" for the system
    // default; while the output moves, the one asked for), and a move to
    // another one, which runs on the engine's own thread and returns at once.
    QStringList OutputDevices() const;
    QString OutputDevice() const;
    void SetOutputDevice(const QString& name);
    // Polled: true once for each move that finished since the last call, with
    // the device asked for and whether it opened (else the default plays).
    bool TakeOutputChange(QString* requested, bool* opened);
    // Polled: when the device in use has gone away, starts moving the output
    // to the system default and returns true, with the lost device's name in
    // `lost` (empty when the default itself went).
    bool CheckOutputDevice(QString* lost = nullptr);

private:
    static void OnEngineError(const char* text);
    // Stops the sound and waits for its ramp out; false when the output did
    // not finish it within kStopWaitMs.
    bool StopAndWait();
    void PlayDecoded(const QString& path, const QString& suffix, std::int32_t startMs,
                     std::int64_t rangeStart, std::int64_t rangeEnd);
    void PlayWave(const QString& path, std::int32_t startMs, std::int64_t rangeStart,
                  std::int64_t rangeEnd);
    void ApplyVolume(bool now);

    AudioEngine::OutputMode output;
    bool initialized = false;

    AudioEngine::PlayerHandle memoryPlayer = nullptr;
    AudioEngine::VoicePoolHandle standardPool = nullptr;
    AudioEngine::VoicePoolHandle wavePool = nullptr;
    AudioEngine::VoicePoolHandle aiffPool = nullptr;
    AudioEngine::VoicePoolHandle streamPool = nullptr;
    bool streaming = false;
    qint64 streamThreshold = kDefaultStreamThreshold;
    float volume = 1.0f;
    float previewGain = 1.0f;
    // Must outlive every read of the engine; replaced only after the player stopped.
    QByteArray currentData;
    // The data of a sound that did not stop in time (kept while it may still be read).
    QByteArray retiredData;
};
