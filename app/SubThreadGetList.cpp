#include "SubThreadGetList.h"

#include "AudioFileLister.h"

#include <QMutexLocker>

SubThreadGetList::SubThreadGetList(QObject* parent)
    : QThread(parent)
{}

SubThreadGetList::~SubThreadGetList()
{
    cancel();
    wait();
}

void SubThreadGetList::start(const QString& root, bool recursiveFlag, bool showHiddenFlag)
{
    {
        QMutexLocker lock(&mutex);
        cancelRequested = false;
    }
    rootPath = root;
    recursive = recursiveFlag;
    showHidden = showHiddenFlag;
    QThread::start(QThread::InheritPriority);
}

void SubThreadGetList::cancel()
{
    QMutexLocker lock(&mutex);
    cancelRequested = true;
}

bool SubThreadGetList::isCancelRequested()
{
    QMutexLocker lock(&mutex);
    return cancelRequested;
}

void SubThreadGetList::run()
{
    bool wasCancelled = false;
    const QList<QString> list = ListAudioFiles(
        rootPath, recursive, showHidden, [this] { return isCancelRequested(); }, &wasCancelled);
    // A cancelled walk hands back a partial list; it must not reach the table.
    if (wasCancelled)
        return;
    emit SigFileListCreated(list);
}
