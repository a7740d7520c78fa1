#include "AudioFileLister.h"

#include "AudioSuffix.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

QList<QString> ListAudioFiles(const QString& root, bool recursive, bool showHidden,
                              const std::function<bool()>& cancelled, bool* wasCancelled)
{
    if (wasCancelled)
        *wasCancelled = false;
    QDir::Filters filters = QDir::Files;
    if (showHidden)
        filters |= QDir::Hidden;
    QDirIterator it(root, filters,
                    recursive ? QDirIterator::Subdirectories : QDirIterator::NoIteratorFlags);
    QList<QString> files;
    for (;;) {
        if (cancelled && cancelled()) {
            if (wasCancelled)
                *wasCancelled = true;
            break;
        }
        if (!it.hasNext())
            break;
        it.next();
        const QFileInfo info = it.fileInfo();
        if (IsSupportedAudioSuffix(info.suffix()))
            files.append(info.absoluteFilePath());
    }
    return files;
}
