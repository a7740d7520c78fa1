#include "WidgetDetailView.h"

#include "FrameSource.h"
#include "KrokManager.h"
#include "RegionExport.h"
#include "TeskManager.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDrag>
#include <QFileInfo>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace {

// 50 position updates a second.
constexpr int kTickMs = 20;

QColor mixed(const QColor& a, const QColor& b, double t)
{
    return QColor::fromRgbF(a.redF() * (1 - t) + b.redF() * t,
                            a.greenF() * (1 - t) + b.greenF() * t,
                            a.blueF() * (1 - t) + b.blueF() * t);
}

} // namespace

WidgetDetailView::WidgetDetailView(QWidget* parent)
    : QWidget(parent)
    , timer(new QTimer(this))
{
    setObjectName(QStringLiteral("WidgetDetailView"));
    setMinimumHeight(kMinDetailViewHeight);
    setMouseTracking(false);
    setAttribute(Qt::WA_OpaquePaintEvent);
    pool.setMaxThreadCount(1);
    timer->setInterval(kTickMs);
    connect(timer, &QTimer::timeout, this, &WidgetDetailView::SlotTick);
}

WidgetDetailView::~WidgetDetailView()
{
    cancelJobs();
    pool.waitForDone();
}

QSize WidgetDetailView::sizeHint() const
{
    return {400, kDefaultDetailViewHeight};
}

void WidgetDetailView::ConnectManager(TeskManager* teskManager)
{
    manager = teskManager;
    connect(this, &WidgetDetailView::SigPlayFrom, manager, &TeskManager::SlotPlayFromCalled);
    connect(this, &WidgetDetailView::SigPlayRegion, manager, &TeskManager::SlotPlayRegionCalled);
    connect(this, &WidgetDetailView::SigStatusMessage, manager, &TeskManager::SigSetStatusMessage);
    connect(this, &WidgetDetailView::SigPerChannelChanged, manager,
            &TeskManager::SetDetailViewChannels);
    connect(this, &WidgetDetailView::SigHideRequested, manager,
            [this] { manager->SlotChangeDetailViewVisibleCalled(false); });
    SetPerChannel(manager->IsDetailViewChannels());
    timer->start();
}

void WidgetDetailView::cancelJobs()
{
    if (overviewCancel)
        overviewCancel->store(true);
    if (regionCancel)
        regionCancel->store(true);
}

void WidgetDetailView::SetFile(const QString& file)
{
    if (file == path)
        return;
    cancelJobs();
    path = file;
    overview.reset();
    failed = false;
    loading = false;
    position = -1;
    regionStart = regionEnd = 0;
    regionFile.clear();
    regionReady = false;
    waveform = QImage();
    // A hidden view reads nothing; it catches up when shown.
    if (isVisible())
        startLoading();
    update();
}

void WidgetDetailView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (!overview && !loading && !failed)
        startLoading();
}

void WidgetDetailView::startLoading()
{
    if (path.isEmpty())
        return;
    loading = true;
    const unsigned generation = ++overviewGeneration;
    overviewCancel = std::make_shared<std::atomic<bool>>(false);
    const auto cancel = overviewCancel;
    const QString file = path;
    pool.start([this, generation, cancel, file] {
        auto result = std::make_shared<WaveOverview>();
        const std::unique_ptr<AudioEngine::StreamSource> source =
            OpenFrameSource(file, cancel.get());
        if (!source || !BuildWaveOverview(*source, kOverviewBuckets, *cancel, *result))
            result.reset();
        if (cancel->load())
            return;
        QMetaObject::invokeMethod(
            this, [this, generation, result] { overviewReady(generation, result); },
            Qt::QueuedConnection);
    });
}

void WidgetDetailView::overviewReady(unsigned generation, std::shared_ptr<WaveOverview> result)
{
    if (generation != overviewGeneration)
        return;
    loading = false;
    overview = std::move(result);
    failed = !overview;
    renderWaveform();
    update();
}

void WidgetDetailView::SetPerChannel(bool on)
{
    if (on == perChannel)
        return;
    perChannel = on;
    renderWaveform();
    update();
    emit SigPerChannelChanged(on);
}

std::int64_t WidgetDetailView::FrameAt(int x) const
{
    if (!overview || width() <= 0)
        return 0;
    const double ratio = std::clamp(static_cast<double>(x) / width(), 0.0, 1.0);
    return std::clamp<std::int64_t>(std::llround(ratio * static_cast<double>(overview->frames)), 0,
                                    overview->frames);
}

int WidgetDetailView::XOf(std::int64_t frame) const
{
    if (!overview || overview->frames <= 0)
        return 0;
    return static_cast<int>(
        std::lround(static_cast<double>(frame) * width() / static_cast<double>(overview->frames)));
}

void WidgetDetailView::SetRegion(std::int64_t startFrame, std::int64_t endFrame)
{
    if (regionCancel)
        regionCancel->store(true);
    regionReady = false;
    regionFile.clear();
    regionStart = std::max<std::int64_t>(0, startFrame);
    regionEnd = overview ? std::min(endFrame, overview->frames) : endFrame;
    if (regionEnd <= regionStart) {
        regionStart = regionEnd = 0;
        update();
        return;
    }
    const unsigned generation = ++regionGeneration;
    regionCancel = std::make_shared<std::atomic<bool>>(false);
    const auto cancel = regionCancel;
    const QString source = path;
    const QString target = RegionFilePath(regionFolder.Path(), source, regionStart, regionEnd,
                                          overview ? overview->rate : 0);
    const std::int64_t a = regionStart;
    const std::int64_t b = regionEnd;
    pool.start([this, generation, cancel, source, target, a, b] {
        const QString error = ExportRegion(source, a, b, target, cancel.get());
        if (cancel->load())
            return;
        QMetaObject::invokeMethod(
            this, [this, generation, target, error] { regionWritten(generation, target, error); },
            Qt::QueuedConnection);
    });
    update();
}

void WidgetDetailView::regionWritten(unsigned generation, const QString& file, const QString& error)
{
    if (generation != regionGeneration)
        return;
    if (!error.isEmpty()) {
        emit SigStatusMessage(tr("The region could not be written: %1").arg(error));
        return;
    }
    regionFile = file;
    regionReady = true;
}

bool WidgetDetailView::PlayRegion()
{
    if (!HasRegion())
        return false;
    emit SigPlayRegion(path, regionStart, regionEnd);
    return true;
}

void WidgetDetailView::SlotTick()
{
    if (!manager || path.isEmpty() || !isVisible())
        return;
    KrokManager* registry = manager->GetKrokManager();
    const bool playing = registry->IsPlaying() && registry->GetPlayingPath() == path;
    const std::int64_t now = playing ? registry->GetPlaybackPosition() : -1;
    if (now != position) {
        position = now;
        update();
    }
}

void WidgetDetailView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    renderWaveform();
}

void WidgetDetailView::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange) {
        renderWaveform();
        update();
    }
}

void WidgetDetailView::renderWaveform()
{
    if (!overview || width() <= 0 || height() <= 0) {
        waveform = QImage();
        return;
    }
    const qreal dpr = devicePixelRatioF();
    waveform = QImage(size() * dpr, QImage::Format_ARGB32_Premultiplied);
    waveform.setDevicePixelRatio(dpr);
    waveform.fill(Qt::transparent);
    QPainter p(&waveform);
    const QColor ink = palette().color(QPalette::Text);
    const QColor wave =
        mixed(palette().color(QPalette::Base), palette().color(QPalette::Highlight), 0.85);
    const int lanes = perChannel ? overview->channels : 1;
    const double laneHeight = static_cast<double>(height()) / lanes;
    const int w = width();
    for (int lane = 0; lane < lanes; ++lane) {
        const int channel = perChannel ? lane : -1;
        const double top = lane * laneHeight;
        const double mid = top + laneHeight / 2.0;
        const double half = laneHeight / 2.0 - 1.0;
        QColor axis = ink;
        axis.setAlphaF(0.25);
        p.setPen(axis);
        p.drawLine(QPointF(0, mid), QPointF(w, mid));
        if (lane > 0)
            p.drawLine(QPointF(0, top), QPointF(w, top));
        p.setPen(wave);
        for (int x = 0; x < w; ++x) {
            const int b0 = static_cast<int>(std::int64_t(x) * overview->buckets / w);
            const int b1 =
                std::max(b0 + 1, static_cast<int>(std::int64_t(x + 1) * overview->buckets / w));
            float lo = 1.0f;
            float hi = -1.0f;
            for (int b = b0; b < std::min(b1, overview->buckets); ++b) {
                lo = std::min(lo, overview->Low(channel, b));
                hi = std::max(hi, overview->High(channel, b));
            }
            if (hi < lo)
                continue;
            const double y0 = mid - std::clamp(hi, -1.0f, 1.0f) * half;
            const double y1 = mid - std::clamp(lo, -1.0f, 1.0f) * half;
            p.drawLine(QPointF(x + 0.5, y0), QPointF(x + 0.5, std::max(y1, y0 + 1.0)));
        }
    }
}

void WidgetDetailView::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.fillRect(rect(), palette().color(QPalette::Base));
    const QColor ink = palette().color(QPalette::Text);
    if (!overview) {
        QString text;
        if (path.isEmpty())
            text = tr("Select a file to see its waveform");
        else if (loading)
            text = tr("Reading the waveform...");
        else
            text = tr("The waveform of this file cannot be read");
        QColor faint = ink;
        faint.setAlphaF(0.6);
        p.setPen(faint);
        p.drawText(rect(), Qt::AlignCenter, text);
        return;
    }
    if (overview->loopEnd > overview->loopStart) {
        QColor loop = QColor(64, 168, 92);
        loop.setAlphaF(0.18);
        const int x0 = XOf(overview->loopStart);
        const int x1 = XOf(overview->loopEnd);
        p.fillRect(QRect(x0, 0, std::max(1, x1 - x0), height()), loop);
        loop.setAlphaF(0.8);
        p.setPen(loop);
        p.drawLine(x0, 0, x0, height());
        p.drawLine(x1, 0, x1, height());
    }
    if (HasRegion()) {
        QColor region = palette().color(QPalette::Highlight);
        region.setAlphaF(0.3);
        const int x0 = XOf(regionStart);
        const int x1 = XOf(regionEnd);
        p.fillRect(QRect(x0, 0, std::max(1, x1 - x0), height()), region);
    }
    p.drawImage(QPoint(0, 0), waveform);
    if (position >= 0) {
        p.setPen(QPen(QColor(205, 64, 56), 1.0));
        const int x = XOf(std::min(position, overview->frames));
        p.drawLine(x, 0, x, height());
    }
    // What the view shows: the file, and the region's length once there is one.
    QString label = QFileInfo(path).fileName();
    if (HasRegion() && overview->rate > 0)
        label += QStringLiteral("   ") +
                 tr("Region %1 s")
                     .arg(static_cast<double>(regionEnd - regionStart) / overview->rate, 0, 'f', 3);
    // On a veil of the background, so that the waveform under it does not garble it.
    const QRect box = p.fontMetrics()
                          .boundingRect(label)
                          .translated(6, 3 + p.fontMetrics().ascent())
                          .adjusted(-3, -1, 3, 1);
    QColor veil = palette().color(QPalette::Base);
    veil.setAlphaF(0.75);
    p.fillRect(box, veil);
    QColor faint = ink;
    faint.setAlphaF(0.8);
    p.setPen(faint);
    p.drawText(rect().adjusted(6, 3, -6, -3), Qt::AlignLeft | Qt::AlignTop, label);
}

void WidgetDetailView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !overview) {
        QWidget::mousePressEvent(event);
        return;
    }
    pressed = true;
    selecting = false;
    pressAt = event->pos();
    pressOnRegion =
        HasRegion() && event->pos().x() >= XOf(regionStart) && event->pos().x() <= XOf(regionEnd);
}

void WidgetDetailView::mouseMoveEvent(QMouseEvent* event)
{
    if (!pressed || !overview)
        return;
    const int moved = std::abs(event->pos().x() - pressAt.x());
    if (!selecting && moved < QApplication::startDragDistance())
        return;
    if (pressOnRegion) {
        pressed = false;
        startDrag();
        return;
    }
    selecting = true;
    const std::int64_t a = FrameAt(pressAt.x());
    const std::int64_t b = FrameAt(event->pos().x());
    regionStart = std::min(a, b);
    regionEnd = std::max(a, b);
    regionReady = false;
    update();
}

void WidgetDetailView::mouseReleaseEvent(QMouseEvent* event)
{
    if (!pressed || event->button() != Qt::LeftButton) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    pressed = false;
    if (selecting) {
        selecting = false;
        SetRegion(regionStart, regionEnd);
        return;
    }
    // A click: play from there, and forget the region.
    const std::int64_t frame = FrameAt(event->pos().x());
    SetRegion(0, 0);
    if (overview && overview->rate > 0)
        emit SigPlayFrom(path, static_cast<int>(frame * 1000 / overview->rate));
}

void WidgetDetailView::startDrag()
{
    if (!regionReady) {
        emit SigStatusMessage(tr("The region is still being written."));
        return;
    }
    auto* mime = new QMimeData;
    mime->setUrls({QUrl::fromLocalFile(regionFile)});
    auto* drag = new QDrag(this);
    drag->setMimeData(mime);
    drag->exec(Qt::CopyAction);
}

void WidgetDetailView::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu menu(this);
    QAction* channels = menu.addAction(tr("Show each channel"));
    channels->setCheckable(true);
    channels->setChecked(perChannel);
    QAction* clear = menu.addAction(tr("Clear region"));
    clear->setEnabled(HasRegion());
    menu.addSeparator();
    QAction* hide = menu.addAction(tr("Hide detail view"));
    QAction* chosen = menu.exec(event->globalPos());
    if (chosen == channels)
        SetPerChannel(channels->isChecked());
    else if (chosen == clear)
        SetRegion(0, 0);
    else if (chosen == hide)
        emit SigHideRequested();
}
