#pragma once

#include <QElapsedTimer>
#include <QWidget>

class QProgressBar;
class TeskManager;

// The progress bar of the status bar: a busy bar while a folder is listed,
// then files analysed of the total with the time left; hidden when no work
// runs. The status messages keep their place beside it.
class StatusProgress final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StatusProgress)

public:
    explicit StatusProgress(QWidget* parent = nullptr);
    ~StatusProgress() override;

    void ConnectManager(TeskManager* manager);
    QProgressBar* bar() const { return progressBar; }

    // Milliseconds still to go when `done` of `total` took `elapsedMs`; -1
    // while too little is done to tell.
    static qint64 RemainingMs(int done, int total, qint64 elapsedMs);
    // "1:05" or "1:02:05".
    static QString DurationText(qint64 ms);

public slots:
    void SlotProgressChanged(int done, int total);
    void SlotProgressEnded();

private:
    QProgressBar* progressBar;
    QElapsedTimer clock;
    int runningTotal = -1;
};
