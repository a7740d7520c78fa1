#pragma once

#include "AnalyzedRows.h"
#include "SearchCriteriaStruct.h"
#include "SubWidgetTableView.h"
#include "krokTableModel.h"

#include <QHash>
#include <QItemSelection>
#include <QVector>
#include <QWidget>

class GacManager;
class KrokTableSortModel;
class TeskManager;
class UcsCatalogLoader;
class WaveformStyledItemDelegate;

// The right-hand pane: the file table under its proxy and waveform delegate.
// Turns the manager's signals into model updates, and the user's clicks, keys,
// drags and drops into requests to the manager.
class WidgetTableBrowser final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WidgetTableBrowser)
public:
    WidgetTableBrowser(TeskManager* manager, GacManager* gac, QWidget* parent = nullptr);
    // `nuendoState` answers the Nuendo connection state (2 = connected).
    WidgetTableBrowser(TeskManager* manager, SubWidgetTableView::ConnectionStateQuery nuendoState,
                       QWidget* parent = nullptr);
    ~WidgetTableBrowser() override;

    QList<SortSpecEntry> applySortSpecification(const QList<SortSpecEntry>& entries);
    void resetSortSpecification();
    void updateStatusLine();

    // The header as QHeaderView::saveState gives it (order, widths, hidden
    // columns, sort column and order).
    QByteArray headerState() const;
    // The width the table needs to show every visible column at its starting
    // width without a horizontal scroll bar.
    int preferredTableWidth();

    // The status text for `count` shown files lasting `totalSeconds`; false when
    // no message is to be sent (a total of whole minutes, kept on purpose).
    static bool statusMessage(int count, float totalSeconds, QString* message);
    // The position within a plot cell as a ratio; 0 at or left of its edge.
    static double seekRatio(int x, int width);

    SubWidgetTableView* tableView() const { return view; }
    krokTableModel* tableModel() const { return model; }
    KrokTableSortModel* sortModel() const { return proxy; }

signals:
    void SigStartPlaybackCalled(QString path);
    void SigStartPlaybackWithSeekCalled(QString path, int seekMs);
    void SigStopPlaybackCalled();
    void SigChangeRootPathCalled(QString root);
    void SigOpenByExplorerCalled(QString path);
    void SigOpenByExternalCalled(QString path);
    void SigOpenByNuendoCalled(QString path);
    void SigUpdateFilesCalled(QStringList filePaths);
    void SigSendMessage(QString message);
    // The user showed or hid a column from the header's menu: the full mask, bit i = column i.
    void SigColumnVisiblityChanged(int state);
    void SigAutoPlaybackFlagRequired(bool* flag);
    void SigPlayListFlagRequired(bool* flag);

public slots:
    void SlotRootPathChanged();
    void SlotRowHeightChanged(int height);
    void SlotFilePathListAcquired(QList<QString> pathList);
    // Rows from..to analysed: their records are taken from the registry.
    void SlotAnalyzedInfoAcquired(int i_from, int i_to);
    // Finished files as the workers hand them over, records included.
    void SlotAnalyzedRowsAcquired(AnalyzedRows rows);
    void SlotGetDetailEnded();
    void SlotSearchExecute(SearchCriteriaStruct criteria);
    void SlotSelectNextItem();
    void SlotLoudnessVoltModeChanged(bool flag);
    void SlotColumnVisibleChanged(int state);
    void SlotMultiPlotFlagChanged(bool flag);
    void SlotResetPlaybackPosition(QString filePath);
    void SlotSetPlaybackPosition(QString filePath, double positionRatio);
    void SlotSelectionChanged(const QItemSelection& selected, const QItemSelection& deselected);
    void SlotOpenByExplorerCalled();
    void SlotOpenByExternalCalled();
    void SlotOpenByNuendoCalled();
    void SlotSubSpacePressed();
    void SlotSubEscPressed();
    void SlotTableClicked(const QModelIndex& index);
    void SlotSelectedItemPlaybackCalled();
    // Reads the UCS CatID list (off the GUI thread) and shows its categories;
    // an empty path goes back to UCS names without a list.
    void SlotUcsCatIdListChanged(QString path);
    // Restores a saved header; an empty or unusable state leaves the measured defaults.
    void SlotHeaderStateLoaded(QByteArray state);
    // Selects the row of `filePath` (when listed) and scrolls it to the middle,
    // without starting playback.
    void SlotSelectFile(QString filePath);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void connectManager();
    // Tells the manager which rows of the list the view shows, to be analysed first.
    void reportWantedRows();
    int rowOfPath(const QString& path);
    void resortByPath();
    void setDefaultColumnWidths();
    QString currentPath() const;
    bool askAutoPlayback();
    float rowDuration(int row);
    void forgetSelectedDurations();
    void showHeaderMenu(const QPoint& position);
    void storeHeaderState();
    int visibleColumnMask() const;

    TeskManager* manager;
    krokTableModel* model;
    SubWidgetTableView* view;
    KrokTableSortModel* proxy;
    WaveformStyledItemDelegate* delegate;
    UcsCatalogLoader* ucsLoader;
    bool columnWidthsInitialized = false;
    // The header is reported to the manager once the stored one has been
    // taken in; before that it holds only the built-in layout.
    bool headerTracked = false;
    // A selection made for the user (a file named as the root) starts no playback.
    bool selectingForUser = false;
    // Scroll the current row into view again once the list is sorted.
    bool revealCurrentAfterSort = false;
    // Seconds per model row for the status line, read as each analysed range
    // arrives so that totalling a whole list never copies every record at
    // once; NaN until read.
    QVector<float> rowDurations;
    // Model row by path, for results of a pass over selected files; empty
    // until needed, cleared with the list.
    QHash<QString, int> pathRows;
};
