#include "SubThreadGetList.h"

#include "AudioFileLister.h"
#include "FreeMemory.h"
#include "PathRanking.h"

#include <algorithm>
#include <numeric>

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
    cancelRequested = false;
    rootPath = root;
    recursive = recursiveFlag;
    showHidden = showHiddenFlag;
    QThread::start(QThread::InheritPriority);
}

void SubThreadGetList::cancel()
{
    cancelRequested = true;
}

void SubThreadGetList::run()
{
    bool wasCancelled = false;
    const QList<QString> list = ListAudioFiles(
        rootPath, recursive, showHidden, [this] { return cancelRequested.load(); }, &wasCancelled);
    // A cancelled walk hands back a partial list; it must not reach the table.
    if (wasCancelled)
        return;
    // Sorted here, so that the GUI thread shows the list as it comes.
    const QVector<int> ranks =
        PathRanking::rank(list, PathRanking::sharedFolderLength(list), &cancelRequested);
    if (cancelRequested || ranks.size() != list.size())
        return;
    QVector<int> order(list.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&ranks](int a, int b) { return ranks[a] < ranks[b]; });
    QList<QString> sorted;
    sorted.reserve(list.size());
    for (const int i : qAsConst(order))
        sorted.append(list.at(i));
    ReleaseFreeMemory();
    emit SigFileListCreated(sorted);
}
