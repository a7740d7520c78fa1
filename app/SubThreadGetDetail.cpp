#include "SubThreadGetDetail.h"

#include "AnalysisPass.h"
#include "FreeMemory.h"
#include "KrokManager.h"

#include <QElapsedTimer>

#include <algorithm>
#include <chrono>

namespace {

constexpr qint64 kMinWaitMs = 5;

} // namespace

SubThreadGetDetail::SubThreadGetDetail(KrokManager* registryToDrive, QObject* parent)
    : QThread(parent)
    , registry(registryToDrive)
    , wantedRows(AnalysisPass::kNoWantedRows)
{
    qRegisterMetaType<AnalyzedRows>("AnalyzedRows");
}

SubThreadGetDetail::~SubThreadGetDetail()
{
    cancel();
    wait();
}

void SubThreadGetDetail::start(const QStringList& list)
{
    stopRequested = false;
    batchInFlight = false;
    ++runNumber;
    fileList = list;
    QThread::start(QThread::InheritPriority);
}

void SubThreadGetDetail::cancel()
{
    stopRequested = true;
}

void SubThreadGetDetail::requestInvalidate()
{
    invalidateRequested = true;
}

void SubThreadGetDetail::setWorkerCount(int count)
{
    workers = std::max(count, 0);
}

int SubThreadGetDetail::workerCount() const
{
    const int count = workers.load();
    return count > 0 ? count : AnalysisPass::DefaultWorkerCount();
}

void SubThreadGetDetail::setWantedRows(int first, int last)
{
    wantedRows = first >= 0 && first <= last ? AnalysisPass::WantedRows(first, last)
                                             : AnalysisPass::kNoWantedRows;
}

void SubThreadGetDetail::rowsTaken()
{
    batchInFlight = false;
}

bool SubThreadGetDetail::takeInvalidateRequest()
{
    return invalidateRequested.exchange(false);
}

void SubThreadGetDetail::run()
{
    const int runId = runNumber.load();
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

    // The pass's workers have ended and its memory is free when it returns.
    if (!analyse(runId, refresh))
        return;
    // Blocking-queued: every batch before it has been taken in when it returns,
    // and the end's sort and search have run.
    emit SigEndGetDetailInfo();
    // What the pass and the end's sort held for a while is free now: its pages
    // go back to the system.
    ReleaseFreeMemory();
}

bool SubThreadGetDetail::analyse(int runId, bool refresh)
{
    AnalysisPass pass(*registry, fileList, workerCount(), refresh, stopRequested, wantedRows);
    AnalyzedRows pending;
    QElapsedTimer sinceBatch;
    sinceBatch.start();
    for (;;) {
        // A batch the GUI has not taken yet holds the next back a little longer.
        const qint64 left = std::max<qint64>(kMinWaitMs, kBatchIntervalMs - sinceBatch.elapsed());
        for (AnalysisPass::Finished& done : pass.Collect(std::chrono::milliseconds(left)))
            pending.append({done.index, fileList.at(done.index), std::move(done.record)});
        // Cancelled: the pass stops its workers as it goes out of scope.
        if (stopRequested)
            return false;
        const bool complete = pass.IsComplete();
        // The GUI thread gets one batch at a time, so that it never has a queue of them.
        if (!pending.isEmpty() &&
            (complete || (sinceBatch.elapsed() >= kBatchIntervalMs && !batchInFlight))) {
            std::sort(pending.begin(), pending.end(),
                      [](const AnalyzedRow& a, const AnalyzedRow& b) { return a.row < b.row; });
            batchInFlight = true;
            emit SigAnalyzedRowsAcquired(pending, runId);
            pending = AnalyzedRows();
            sinceBatch.restart();
        }
        if (complete && pending.isEmpty())
            return true;
    }
}
