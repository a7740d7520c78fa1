#pragma once

#include <QObject>
#include <QString>

#include <cstdint>

// What the analysis registry needs of the preview playback engine. The registry
// owns one and forwards play, stop, seek and volume requests to it; the
// implementation (LumoManager) lives in the playback library, which builds on
// this one, so the registry only sees this interface.
class PreviewPlayer : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~PreviewPlayer() override = default;

    virtual void Initialize() = 0;
    virtual void Finalize() = 0;
    virtual void Play(const QString& path) = 0;
    virtual void PlayFrom(const QString& path, std::int32_t startMs) = 0;
    // Plays frames [startFrame, endFrame) of the file once (a region).
    virtual void PlayRange(const QString& path, std::int64_t startFrame, std::int64_t endFrame) = 0;
    virtual void Stop() = 0;
    virtual void SetVolume(float volume) = 0;
    virtual bool IsPlaying() = 0;
    virtual bool IsPreparing() = 0;
    virtual std::int64_t GetPlayedSamples() = 0;

signals:
    // An engine error text, already converted from the local 8-bit encoding.
    void ErrorOccurred(QString message);
};
