#include "AudioFileLister.h"

#include "AudioSuffix.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <dirent.h>

namespace {

// Names whose bytes are not valid in the local encoding (UTF-8) come out of
// QDirIterator mangled, so it cannot stat them and drops them without a word.
// They are found here with readdir and listed under their decoded name, whose
// replacement characters later tell the analysis why the file cannot be read.
void appendUndecodableNames(const QString& folder, bool showHidden, QSet<QString>& seen,
                            QList<QString>& files)
{
    const QByteArray local = QFile::encodeName(folder);
    DIR* dir = ::opendir(local.constData());
    if (!dir)
        return;
    while (const dirent* entry = ::readdir(dir)) {
        const QByteArray name(entry->d_name);
        bool ascii = true;
        for (const char c : name)
            ascii = ascii && static_cast<unsigned char>(c) < 0x80;
        if (ascii || (!showHidden && name.startsWith('.')))
            continue;
        const QString decoded = QFile::decodeName(name);
        if (QFile::encodeName(decoded) == name || !IsSupportedAudioFile(decoded))
            continue;
        if (entry->d_type == DT_DIR)
            continue;
        const QString path = folder + QLatin1Char('/') + decoded;
        if (!seen.contains(path)) {
            seen.insert(path);
            files.append(path);
        }
    }
    ::closedir(dir);
}

} // namespace

QList<QString> ListAudioFiles(const QString& root, bool recursive, bool showHidden,
                              const std::function<bool()>& cancelled, bool* wasCancelled)
{
    if (wasCancelled)
        *wasCancelled = false;
    // System: FIFOs, sockets and dangling links get a row too (the analysis
    // says what is wrong with them) instead of vanishing.
    QDir::Filters filters = QDir::Files | QDir::System | QDir::Dirs | QDir::NoDotAndDotDot;
    if (showHidden)
        filters |= QDir::Hidden;
    QDirIterator it(root, filters,
                    recursive ? QDirIterator::Subdirectories : QDirIterator::NoIteratorFlags);
    QList<QString> files;
    QSet<QString> undecodable;
    appendUndecodableNames(QDir(root).absolutePath(), showHidden, undecodable, files);
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
        if (info.isDir()) {
            if (recursive)
                appendUndecodableNames(info.absoluteFilePath(), showHidden, undecodable, files);
            continue;
        }
        if (IsSupportedAudioSuffix(info.suffix())) {
            const QString path = info.absoluteFilePath();
            if (!undecodable.contains(path))
                files.append(path);
        }
    }
    return files;
}
