#include "FrameSource.h"

#include "SoundSource.h"
#include "SoundSourceStream.h"
#include "WaveFileStream.h"

#include <QFile>
#include <QFileInfo>

namespace {

bool IsWaveSuffix(const QString& suffix)
{
    return suffix == QLatin1String("wav") || suffix == QLatin1String("aif") ||
           suffix == QLatin1String("aiff");
}

} // namespace

bool IsCompressedAudio(const QString& path)
{
    return !IsWaveSuffix(QFileInfo(path).suffix().toLower());
}

std::unique_ptr<AudioEngine::StreamSource> OpenFrameSource(const QString& path,
                                                           const std::atomic<bool>* cancel)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    const std::string local = QFile::encodeName(path).toStdString();
    if (IsWaveSuffix(suffix))
        return std::make_unique<AudioEngine::WaveFileStream>(local);
    std::unique_ptr<SoundSource> decoder = SoundSource::forSuffix(suffix.toStdString());
    if (!decoder)
        return nullptr;
    return std::make_unique<SoundSourceStream>(std::move(decoder), local,
                                               SoundSourceStream::OpenMode::Whole, cancel);
}
