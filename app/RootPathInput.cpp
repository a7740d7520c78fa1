#include "RootPathInput.h"

#include "AudioSuffix.h"

#include <QDir>
#include <QFileInfo>

QString NormalizedRootPath(const QString& path)
{
    if (path.isEmpty())
        return {};
    // cleanPath drops trailing slashes and "." and ".." parts but keeps "/".
    return QDir::cleanPath(QDir::fromNativeSeparators(QFileInfo(path).absoluteFilePath()));
}

RootRequest ResolveRootPath(const QString& path)
{
    RootRequest request;
    if (path.isEmpty()) {
        request.refusal = RootRequest::Empty;
        return request;
    }
    const QString normalized = NormalizedRootPath(path);
    const QFileInfo info(normalized);
    if (info.isDir()) {
        request.folder = normalized;
    } else if (info.isFile()) {
        if (IsSupportedAudioSuffix(info.suffix())) {
            request.folder = NormalizedRootPath(info.absolutePath());
            request.file = normalized;
        } else {
            request.refusal = RootRequest::NotAudio;
        }
    } else {
        request.folder = normalized;
        request.refusal = RootRequest::Missing;
    }
    return request;
}

RootRequest ResolveTypedRoot(const QString& text)
{
    QString path = text.trimmed();
    if (path == QLatin1String("~"))
        path = QDir::homePath();
    else if (path.startsWith(QLatin1String("~/")))
        path = QDir::homePath() + path.midRef(1);
    return ResolveRootPath(path);
}
