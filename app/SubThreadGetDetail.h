#pragma once

#include "AnalyzedRows.h"

#include <QStringList>
#include <QThread>

#include <atomic>
#include <cstdint>

class KrokManager;

// Has the registry analyse the listed files on a pool of worker threads
// (AnalysisPass) and hands what is finished to the GUI thread in batches, at
// most one every 100 ms, each once the previous one was taken in. The rows the
// table shows go first. One object, reused for every run.
class SubThreadGetDetail final : public QThread
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SubThreadGetDetail)

public:
    explicit SubThreadGetDetail(KrokManager* registry, QObject* parent = nullptr);
    ~SubThreadGetDetail() override;

    // Clears the cancel flag, keeps a copy of the list and starts the thread.
    // Must not be called while the thread runs.
    void start(const QStringList& list);
    // Every worker stops within one block of audio; the run ends without a
    // further signal.
    void cancel();
    // The next run invalidates its whole list first, so that every file is analysed afresh.
    void requestInvalidate();
    // Worker threads for the next runs; 0 (the default) for one per processor core.
    void setWorkerCount(int count);
    int workerCount() const;
    // The rows of the list the table shows now (first > last: none); they are
    // analysed before the others. Any thread, any time.
    void setWantedRows(int first, int last);
    // The run a batch came from; batches of an earlier run are stale.
    int currentRun() const { return runNumber.load(); }
    // The GUI thread took the last batch in; the next may be sent.
    void rowsTaken();

    static constexpr qint64 kBatchIntervalMs = 100;

signals:
    // Queued: the files finished since the last batch.
    void SigAnalyzedRowsAcquired(AnalyzedRows rows, int run);
    void SigEndGetDetailInfo();

protected:
    void run() override;

private:
    // Analyses fileList and hands the results over in batches; false when cancelled.
    bool analyse(int runId, bool refresh);
    bool takeInvalidateRequest();

    KrokManager* registry;
    std::atomic<bool> stopRequested{false};
    std::atomic<bool> invalidateRequested{false};
    std::atomic<bool> batchInFlight{false};
    std::atomic<int> workers{0};
    std::atomic<int> runNumber{0};
    std::atomic<std::int64_t> wantedRows;
    QStringList fileList;
};
