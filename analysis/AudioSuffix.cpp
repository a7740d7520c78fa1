#include "AudioSuffix.h"

#include <QFileInfo>
#include <QString>

bool IsSupportedAudioSuffix(const QString& suffix)
{
    const QString s = suffix.toLower();
    return s == QLatin1String("wav") || s == QLatin1String("aif") || s == QLatin1String("aiff") ||
           s == QLatin1String("mp3") || s == QLatin1String("ogg") || s == QLatin1String("flac");
}

bool IsSupportedAudioFile(const QString& path)
{
    return IsSupportedAudioSuffix(QFileInfo(path).suffix());
}
