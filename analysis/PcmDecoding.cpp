#include "PcmDecoding.h"

#include "Mp3SoundSource.h"
#include "OggSoundSource.h"

#include <QString>

#include <limits>

QByteArray DecodeToPcm(SoundSource& source, std::int32_t& samplingRate, std::int32_t& channels)
{
    samplingRate = source.samplingRate();
    channels = source.channels();
    if (channels <= 0)
        return {};
    constexpr std::int64_t kBlockFrames = 16384;
    const std::int64_t frameBytes = std::int64_t(channels) * std::int64_t(sizeof(float));
    const std::int64_t limit = std::numeric_limits<int>::max() - kBlockFrames * frameBytes;
    QByteArray pcm;
    std::int64_t used = 0;
    while (used + kBlockFrames * frameBytes <= limit) {
        pcm.resize(static_cast<int>(used + kBlockFrames * frameBytes));
        const std::int64_t got =
            source.read(reinterpret_cast<float*>(pcm.data() + used), kBlockFrames);
        if (got <= 0)
            break;
        used += got * frameBytes;
    }
    pcm.resize(static_cast<int>(used));
    pcm.squeeze();
    return pcm;
}

QByteArray DecodeMp3ToPcm(const QString& path, std::int32_t& samplingRate, std::int32_t& channels)
{
    Mp3SoundSource source;
    if (!source.open(path.toLocal8Bit().constData()))
        return {};
    return DecodeToPcm(source, samplingRate, channels);
}

QByteArray DecodeVorbisToPcm(const QString& path, std::int32_t& samplingRate,
                             std::int32_t& channels)
{
    OggSoundSource source;
    if (!source.open(path.toLocal8Bit().constData()))
        return {};
    return DecodeToPcm(source, samplingRate, channels);
}
