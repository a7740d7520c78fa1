#include "FrameSource.h"

#include "PcmDecoding.h"
#include "SoundSource.h"
#include "WaveFileStream.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstring>

namespace {

// A decoded file held whole as interleaved floats.
class DecodedSource final : public AudioEngine::StreamSource
{
public:
    explicit DecodedSource(QString path)
        : path_(std::move(path))
    {}

    bool Open(AudioEngine::StreamFormat& format) override
    {
        std::int32_t rate = 0;
        const auto source =
            SoundSource::forSuffix(QFileInfo(path_).suffix().toLower().toStdString());
        if (source && source->open(QFile::encodeName(path_).constData()))
            pcm_ = DecodeToPcm(*source, rate, channels_);
        if (pcm_.isEmpty() || rate < 1 || channels_ < 1)
            return false;
        frames_ = pcm_.size() / static_cast<int>(sizeof(float)) / channels_;
        format.channels = channels_;
        format.rate = rate;
        format.frameCount = frames_;
        format.loopStart = format.loopEnd = 0;
        return true;
    }

    bool Seek(std::int64_t frame) override
    {
        if (frame < 0)
            return false;
        position_ = std::min(frame, frames_);
        return true;
    }

    long Read(float* out, long frames) override
    {
        const auto n = static_cast<long>(std::min<std::int64_t>(frames, frames_ - position_));
        if (n <= 0)
            return 0;
        std::memcpy(out, pcm_.constData() + position_ * channels_ * std::int64_t(sizeof(float)),
                    static_cast<std::size_t>(n) * static_cast<std::size_t>(channels_) *
                        sizeof(float));
        position_ += n;
        return n;
    }

private:
    QString path_;
    QByteArray pcm_;
    std::int32_t channels_ = 0;
    std::int64_t frames_ = 0;
    std::int64_t position_ = 0;
};

} // namespace

bool IsCompressedAudio(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    return suffix == QLatin1String("mp3") || suffix == QLatin1String("ogg") ||
           suffix == QLatin1String("flac");
}

std::unique_ptr<AudioEngine::StreamSource> OpenFrameSource(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("wav") || suffix == QLatin1String("aif") ||
        suffix == QLatin1String("aiff"))
        return std::make_unique<AudioEngine::WaveFileStream>(QFile::encodeName(path).toStdString());
    if (IsCompressedAudio(path))
        return std::make_unique<DecodedSource>(path);
    return nullptr;
}
