#include "LibraryRoots.h"

#include <QDir>

#include <algorithm>
#include <optional>

namespace {

// Windows file systems ignore the letter case of names; the others do not.
#ifdef Q_OS_WIN
constexpr Qt::CaseSensitivity kCase = Qt::CaseInsensitive;
#else
constexpr Qt::CaseSensitivity kCase = Qt::CaseSensitive;
#endif

QString NormalFolder(const QString& folder)
{
    return QDir::cleanPath(QDir::fromNativeSeparators(folder.trimmed()));
}

// The part of `path` below `folder`, nothing when `path` is not inside it;
// empty when `path` is the folder itself.
std::optional<QString> Below(const QString& path, const QString& folder)
{
    if (path.compare(folder, kCase) == 0)
        return QString();
    const QString prefix = folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
    if (!path.startsWith(prefix, kCase))
        return std::nullopt;
    return path.mid(prefix.size());
}

} // namespace

LibraryRoots LibraryRoots::Parse(const QStringList& entries, QStringList* errors)
{
    LibraryRoots parsed;
    for (const QString& entry : entries) {
        const int split = entry.indexOf(QLatin1Char('='));
        const QString name = split < 0 ? QString() : entry.left(split).trimmed();
        const QString folder = split < 0 ? QString() : NormalFolder(entry.mid(split + 1));
        QString error;
        if (name.isEmpty())
            error = tr("the library root \"%1\" has no name (NAME=FOLDER)").arg(entry);
        else if (folder.isEmpty() || QDir::isRelativePath(folder))
            error = tr("the folder of the library root %1 is not an absolute path").arg(name);
        else if (std::any_of(parsed.roots.cbegin(), parsed.roots.cend(),
                             [&](const Root& r) { return r.name == name; }))
            error = tr("the library root %1 is given twice").arg(name);
        if (!error.isEmpty()) {
            if (errors)
                *errors << error;
            continue;
        }
        parsed.roots.push_back({name, folder});
    }
    std::stable_sort(parsed.roots.begin(), parsed.roots.end(), [](const Root& a, const Root& b) {
        return a.folder.size() > b.folder.size();
    });
    return parsed;
}

QStringList LibraryRoots::Entries() const
{
    QStringList entries;
    for (const Root& root : roots)
        entries << root.name + QLatin1Char('=') + QDir::toNativeSeparators(root.folder);
    return entries;
}

LibraryKey LibraryRoots::KeyOf(const QString& absolutePath) const
{
    for (const Root& root : roots) {
        if (const std::optional<QString> relative = Below(absolutePath, root.folder))
            return {root.name, *relative};
    }
    return LibraryKey::Absolute(absolutePath);
}

QString LibraryRoots::PathOf(const LibraryKey& key) const
{
    if (key.root.isEmpty())
        return key.path;
    for (const Root& root : roots) {
        if (root.name != key.root)
            continue;
        if (key.path.isEmpty())
            return root.folder;
        if (root.folder.endsWith(QLatin1Char('/')))
            return root.folder + key.path;
        return root.folder + QLatin1Char('/') + key.path;
    }
    return {};
}

LibraryKeys LibraryRoots::FolderKeys(const QString& folder, bool recursive) const
{
    const QString normal = NormalFolder(folder);
    LibraryKeys keys{KeyOf(normal)};
    if (recursive) {
        for (const Root& root : roots) {
            // Rows under a root inside the folder are keyed by that root.
            const std::optional<QString> relative = Below(root.folder, normal);
            if (relative && !relative->isEmpty())
                keys.push_back({root.name, QString()});
        }
    }
    return keys;
}
