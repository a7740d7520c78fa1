#pragma once

#include "RegionFolder.h"
#include "WaveOverview.h"

#include <QImage>
#include <QPoint>
#include <QThreadPool>
#include <QWidget>

#include <atomic>
#include <cstdint>
#include <memory>

class QTimer;
class TeskManager;

// The larger waveform of the selected file under the table: mixed or one lane
// per channel, the loop shaded, the play position moving 50 times a second.
// A click plays from there; a drag selects a region, which Space plays and
// which can itself be dragged out (to a DAW or the file manager) as a WAV of
// just that region, written in the background as soon as it is selected.
//
// The waveform is read on a worker of the view's own, a block at a time, so a
// long file never holds up the window; a new file cancels the reading of the
// previous one. Region files live in a folder of the view's own, emptied when
// the view goes (and, after a crash, at the next start).
class WidgetDetailView final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WidgetDetailView)

public:
    explicit WidgetDetailView(QWidget* parent = nullptr);
    // Cancels what its worker does and waits for it (a block at most).
    ~WidgetDetailView() override;

    void ConnectManager(TeskManager* manager);

    // The file to show; an empty path clears the view.
    void SetFile(const QString& path);
    QString File() const { return path; }
    bool IsLoading() const { return loading; }
    const WaveOverview* Overview() const { return overview.get(); }

    bool IsPerChannel() const { return perChannel; }
    void SetPerChannel(bool on);

    // A region in the file's frames; end <= start clears it. Writing its WAV
    // starts at once.
    void SetRegion(std::int64_t startFrame, std::int64_t endFrame);
    bool HasRegion() const { return regionEnd > regionStart; }
    std::int64_t RegionStart() const { return regionStart; }
    std::int64_t RegionEnd() const { return regionEnd; }
    // The region's WAV, once written (empty before).
    QString RegionFile() const { return regionReady ? regionFile : QString(); }
    // Space: plays the region; false when there is none.
    bool PlayRegion();

    // The play position shown, in frames; -1 when the file does not play.
    std::int64_t ShownPosition() const { return position; }
    // The frame under x, and the x of a frame, at the current width.
    std::int64_t FrameAt(int x) const;
    int XOf(std::int64_t frame) const;

    QSize sizeHint() const override;

signals:
    void SigPlayFrom(QString path, int startMs);
    void SigPlayRegion(QString path, qint64 startFrame, qint64 endFrame);
    void SigStatusMessage(QString message);
    void SigPerChannelChanged(bool perChannel);
    void SigHideRequested();

public slots:
    void SlotTick();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void startLoading();
    void overviewReady(unsigned generation, std::shared_ptr<WaveOverview> result);
    void regionWritten(unsigned generation, const QString& file, const QString& error);
    void startDrag();
    void renderWaveform();
    void cancelJobs();

    TeskManager* manager = nullptr;
    QString path;
    std::shared_ptr<WaveOverview> overview;
    bool loading = false;
    bool failed = false;
    bool perChannel = false;
    std::int64_t position = -1;
    std::int64_t regionStart = 0;
    std::int64_t regionEnd = 0;
    QString regionFile;
    bool regionReady = false;

    // Mouse: a press on the region may become a drag out; elsewhere a click or a selection.
    QPoint pressAt;
    bool pressed = false;
    bool pressOnRegion = false;
    bool selecting = false;

    QImage waveform; // the lanes at the current size, redrawn when they change
    QTimer* timer;
    // Declared before the pool: its files go only after the pool's jobs ended.
    RegionFolder regionFolder;
    QThreadPool pool;
    unsigned overviewGeneration = 0;
    unsigned regionGeneration = 0;
    std::shared_ptr<std::atomic<bool>> overviewCancel;
    std::shared_ptr<std::atomic<bool>> regionCancel;
};
