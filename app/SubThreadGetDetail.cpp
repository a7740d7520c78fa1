#include "SubThreadGetDetail.h"

#include "KrokManager.h"

#include <QElapsedTimer>
#include <QMutexLocker>

#include <algorithm>
#include <memory>

SubThreadGetDetail::SubThreadGetDetail(KrokManager* registryToDrive, QObject* parent)
    : QThread(parent)
    , registry(registryToDrive)
{}

SubThreadGetDetail::~SubThreadGetDetail()
{
    cancel();
    wait();
}

void SubThreadGetDetail::start(const QStringList& list)
{
    {
        QMutexLocker lock(&cancelMutex);
        cancelRequested = false;
    }
    fileList = list;
    QThread::start(QThread::InheritPriority);
}

void SubThreadGetDetail::cancel()
{
    QMutexLocker lock(&cancelMutex);
    cancelRequested = true;
}

void SubThreadGetDetail::requestInvalidate()
{
    QMutexLocker lock(&invalidateMutex);
    invalidateRequested = true;
}

bool SubThreadGetDetail::takeCancelRequest()
{
    QMutexLocker lock(&cancelMutex);
    const bool requested = cancelRequested;
    cancelRequested = false;
    return requested;
}

bool SubThreadGetDetail::takeInvalidateRequest()
{
    QMutexLocker lock(&invalidateMutex);
    const bool requested = invalidateRequested;
    invalidateRequested = false;
    return requested;
}

void SubThreadGetDetail::run()
{
    const int n = fileList.size();
    if (n < 1) {
        emit SigEndGetDetailInfo();
        return;
    }
    // A refresh analyses every file afresh; otherwise records still current
    // (in memory or in the persistent library) are taken as they are.
    const bool refresh = takeInvalidateRequest();
    if (refresh)
        registry->InvalidateFiles(fileList);

    // The library reads the rows of the next files while this thread takes
    // in the rows of the present ones.
    int recalledTo = 0;
    std::unique_ptr<KrokManager::Recall> nextRecall;
    const auto beginRecall = [&](int at) {
        nextRecall = registry->BeginRecall(fileList.mid(at, kRecallChunk));
    };
    if (!refresh)
        beginRecall(0);
    int from = 0;
    for (;;) {
        QElapsedTimer clock;
        clock.start();
        int last = from - 1;
        for (int i = from; i < n; ++i) {
            if (takeCancelRequest())
                return;
            if (!refresh && i >= recalledTo) {
                const std::unique_ptr<KrokManager::Recall> recall = std::move(nextRecall);
                recalledTo = std::min(n, i + kRecallChunk);
                if (recalledTo < n)
                    beginRecall(recalledTo);
                registry->EndRecall(*recall);
            }
            const QString& path = fileList.at(i);
            if (!registry->IsAnalyzed(path))
                registry->AnalyzeFile(path);
            last = i;
            if (clock.elapsed() > kRangeBudgetMs)
                break;
        }
        if (last >= from) {
            if (takeCancelRequest())
                return;
            // Blocking-queued: returns once the GUI thread has taken the range in.
            emit SigAnalyzedInfoAcquired(from, last);
        }
        if (last >= n - 1) {
            emit SigEndGetDetailInfo();
            return;
        }
        from = last + 1;
    }
}
