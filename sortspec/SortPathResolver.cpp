#include "SortPathResolver.h"

#include <QDir>
#include <QFileInfo>
#include <QString>

namespace {

QString ExistingAbsolutePath(const QString& path, const QDir& root)
{
    const QFileInfo info(root, path);
    if (info.isFile())
        return QDir::cleanPath(info.absoluteFilePath());
    return {};
}

} // namespace

QString ResolveSortPath(const QString& csvPath, const QString& rootFolder)
{
    QString path = csvPath;
    const QChar quote = QLatin1Char('"');
    if (path.size() > 1 && path.startsWith(quote) && path.endsWith(quote)) {
        path.chop(1);
        path.remove(0, 1);
    }

    const QDir root(rootFolder);
    QString found = ExistingAbsolutePath(path, root);
    if (!found.isEmpty())
        return found;

    // Spreadsheets often list sound names without extension. Ogg is left out
    // on purpose: the lists this reads were written for these four.
    if (QFileInfo(path).suffix().isEmpty()) {
        for (const char* suffix : {".wav", ".aif", ".aiff", ".mp3"}) {
            found = ExistingAbsolutePath(path + QLatin1String(suffix), root);
            if (!found.isEmpty())
                return found;
        }
    }
    return path;
}
