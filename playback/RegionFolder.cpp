#include "RegionFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QLockFile>
#include <QRegularExpression>

#include <atomic>

namespace {

QString DefaultBase()
{
    const QString temp = QDir::tempPath().isEmpty() ? QDir::homePath() : QDir::tempPath();
    return QDir(temp).filePath(QStringLiteral("tesk-regions"));
}

QString LockPath(const QString& runFolder)
{
    return runFolder + QStringLiteral(".lock");
}

} // namespace

bool RegionFolder::IsRegionFileName(const QString& name)
{
    // "<name>_<start>-<end>ms.wav", or that with the six characters QSaveFile
    // adds while it writes.
    static const QRegularExpression pattern(
        QStringLiteral("^.+_\\d+-\\d+ms\\.wav(\\.[A-Za-z0-9]{6})?$"));
    return pattern.match(name).hasMatch();
}

RegionFolder::RegionFolder(const QString& base)
{
    const QString root = base.isEmpty() ? DefaultBase() : base;
    RemoveStaleRuns(root);
    // Several views (and tests) in one process each get their own folder.
    static std::atomic<int> counter{0};
    path = QDir(root).filePath(QStringLiteral("run-%1-%2")
                                   .arg(QCoreApplication::applicationPid())
                                   .arg(counter.fetch_add(1)));
    QDir().mkpath(root);
    lock = std::make_unique<QLockFile>(LockPath(path));
    lock->setStaleLockTime(0);
    if (!lock->tryLock(0))
        lock.reset(); // then a later start may empty the folder while this run uses it
}

RegionFolder::~RegionFolder()
{
    Empty(path);
    if (lock)
        lock->unlock();
}

void RegionFolder::Empty(const QString& dir)
{
    QDir folder(dir);
    if (!folder.exists())
        return;
    const QFileInfoList entries = folder.entryInfoList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QFileInfo& entry : entries) {
        if (!entry.isSymLink() && IsRegionFileName(entry.fileName()))
            QFile::remove(entry.filePath());
    }
    // rmdir only removes an empty folder: whatever else is there keeps it.
    QDir().rmdir(dir);
}

void RegionFolder::RemoveStaleRuns(const QString& base)
{
    const QDir root(base);
    if (!root.exists())
        return;
    // Region files the first versions wrote straight into the folder.
    for (const QFileInfo& entry : root.entryInfoList(QDir::Files)) {
        if (!entry.isSymLink() && IsRegionFileName(entry.fileName()))
            QFile::remove(entry.filePath());
    }
    for (const QFileInfo& entry :
         root.entryInfoList({QStringLiteral("run-*")}, QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (entry.isSymLink())
            continue;
        // A run that still holds its lock is alive (the lock file names a
        // running process and flock says so); a lock of a run that is gone is
        // taken over here.
        QLockFile stale(LockPath(entry.filePath()));
        stale.setStaleLockTime(0);
        if (!stale.tryLock(0))
            continue;
        Empty(entry.filePath());
        stale.unlock();
    }
}
