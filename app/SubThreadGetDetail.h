#pragma once

#include <QMutex>
#include <QStringList>
#include <QThread>

class KrokManager;

// Has the registry analyse the listed files one by one and reports what is
// done in ranges of about 250 ms of work. One object, reused for every run.
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
    void cancel();
    // The next run invalidates its whole list first, so that every file is analysed afresh.
    void requestInvalidate();

    static constexpr qint64 kRangeBudgetMs = 250;
    // Files checked against the persistent library in one lookup.
    static constexpr int kRecallChunk = 512;

signals:
    void SigAnalyzedInfoAcquired(int i_from, int i_to);
    void SigEndGetDetailInfo();

protected:
    void run() override;

private:
    // Reads and clears the cancel flag.
    bool takeCancelRequest();
    bool takeInvalidateRequest();

    QMutex cancelMutex;
    QMutex invalidateMutex;
    KrokManager* registry;
    bool cancelRequested = false;
    bool invalidateRequested = false;
    QStringList fileList;
};
