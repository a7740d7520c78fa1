#include "FileStamp.h"

#ifdef Q_OS_WIN
#include <QDateTime>
#include <QFileInfo>
#else
#include <QFile>

#include <sys/stat.h>
#endif

FileStamp ReadFileStamp(const QString& path)
{
    FileStamp stamp;
#ifdef Q_OS_WIN
    const QFileInfo info(path);
    if (!info.isFile())
        return stamp;
    stamp.size = info.size();
    // Qt gives milliseconds here; enough to notice a rewrite.
    stamp.mtimeNs = info.lastModified().toMSecsSinceEpoch() * 1000000;
#else
    struct stat status
    {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0 || !S_ISREG(status.st_mode))
        return stamp;
    stamp.size = static_cast<std::int64_t>(status.st_size);
    stamp.mtimeNs = static_cast<std::int64_t>(status.st_mtim.tv_sec) * 1000000000 +
                    static_cast<std::int64_t>(status.st_mtim.tv_nsec);
#endif
    return stamp;
}
