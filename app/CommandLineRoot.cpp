#include "CommandLineRoot.h"

#include "AudioSuffix.h"

#include <QFileInfo>

QString CommandLineRoot(const QStringList& arguments)
{
    if (arguments.size() < 2)
        return QString();
    const QFileInfo info(arguments.at(1));
    if (info.isDir())
        return info.absoluteFilePath();
    if (info.isFile() && IsSupportedAudioSuffix(info.suffix()))
        return info.absolutePath();
    return QString();
}
