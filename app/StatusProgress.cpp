#include "StatusProgress.h"

#include "TeskManager.h"

#include <QHBoxLayout>
#include <QProgressBar>

namespace {

// Before this much work the rate says little about what is left.
constexpr qint64 kFirstEstimateMs = 1000;

} // namespace

StatusProgress::StatusProgress(QWidget* parent)
    : QWidget(parent)
    , progressBar(new QProgressBar(this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(progressBar);
    progressBar->setTextVisible(true);
    progressBar->setMinimumWidth(fontMetrics().horizontalAdvance(QLatin1Char('0')) * 36);
    hide();
}

StatusProgress::~StatusProgress() = default;

void StatusProgress::ConnectManager(TeskManager* manager)
{
    connect(manager, &TeskManager::SigProgressChanged, this, &StatusProgress::SlotProgressChanged);
    connect(manager, &TeskManager::SigProgressEnded, this, &StatusProgress::SlotProgressEnded);
}

qint64 StatusProgress::RemainingMs(int done, int total, qint64 elapsedMs)
{
    if (done <= 0 || total <= 0 || elapsedMs < kFirstEstimateMs)
        return -1;
    if (done >= total)
        return 0;
    return elapsedMs * (total - done) / done;
}

QString StatusProgress::DurationText(qint64 ms)
{
    const qint64 seconds = (ms + 999) / 1000;
    const qint64 hours = seconds / 3600;
    const qint64 minutes = seconds / 60 % 60;
    const QString rest = QStringLiteral("%1").arg(seconds % 60, 2, 10, QLatin1Char('0'));
    if (hours > 0)
        return QStringLiteral("%1:%2:%3")
            .arg(hours)
            .arg(minutes, 2, 10, QLatin1Char('0'))
            .arg(rest);
    return QStringLiteral("%1:%2").arg(minutes).arg(rest);
}

void StatusProgress::SlotProgressChanged(int done, int total)
{
    if (total <= 0) {
        // Listing: how many files there are is not known yet.
        runningTotal = 0;
        progressBar->setRange(0, 0);
        progressBar->setFormat(tr("Listing files..."));
        show();
        return;
    }
    if (total != runningTotal || done == 0) {
        runningTotal = total;
        clock.start();
    }
    progressBar->setRange(0, total);
    progressBar->setValue(qBound(0, done, total));
    const qint64 left = RemainingMs(done, total, clock.elapsed());
    const QString text =
        left < 0 ? tr("%1 of %2 files").arg(done).arg(total)
                 : tr("%1 of %2 files, %3 left").arg(done).arg(total).arg(DurationText(left));
    progressBar->setFormat(text);
    show();
}

void StatusProgress::SlotProgressEnded()
{
    runningTotal = -1;
    hide();
}
