#include "WidgetTableBrowser.h"

#include "AudioSuffix.h"
#include "GacManager.h"
#include "KrokTableSortModel.h"
#include "MetadataColumns.h"
#include "SearchRowMatcher.h"
#include "TableColumnWidths.h"
#include "TableFont.h"
#include "TeskManager.h"
#include "UcsCatalogLoader.h"
#include "WaveformStyledItemDelegate.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QStyle>
#include <QVBoxLayout>

#include <cmath>
#include <limits>

namespace {

constexpr float kUnread = std::numeric_limits<float>::quiet_NaN();
// Past this many rows changing at once, the filter is re-run as one layout change.
constexpr int kManyRowsChanged = 1000;

} // namespace

WidgetTableBrowser::WidgetTableBrowser(TeskManager* manager, GacManager* gac, QWidget* parent)
    : WidgetTableBrowser(manager, SubWidgetTableView::ConnectionStateQuery([gac] {
                             return gac ? gac->GetState() : 0;
                         }),
                         parent)
{}

WidgetTableBrowser::WidgetTableBrowser(TeskManager* manager,
                                       SubWidgetTableView::ConnectionStateQuery nuendoState,
                                       QWidget* parent)
    : QWidget(parent)
    , manager(manager)
    , model(new krokTableModel(manager, this))
    , view(new SubWidgetTableView(std::move(nuendoState), this))
    , proxy(new KrokTableSortModel(this))
    , delegate(new WaveformStyledItemDelegate(manager, this))
    , ucsLoader(new UcsCatalogLoader(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(view);

    proxy->setSourceModel(model);
    proxy->setSortRole(TableRoles::SortValue);
    proxy->setSortCaseSensitivity(Qt::CaseInsensitive);

    view->setModel(proxy);
    view->setShowGrid(false);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    view->horizontalHeader()->setHighlightSections(false);
    view->horizontalHeader()->setSectionsMovable(true);
    view->horizontalHeader()->setMinimumSectionSize(20);
    // Until the user sorts otherwise, the finished list is shown in path order.
    view->horizontalHeader()->setSortIndicator(ColumnFullPath, Qt::AscendingOrder);
    view->horizontalHeader()->setContextMenuPolicy(Qt::CustomContextMenu);
    view->verticalHeader()->hide();
    view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    view->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    view->setWordWrap(false);
    view->setItemDelegate(delegate);
    view->setDragEnabled(true);
    view->setDragDropMode(QAbstractItemView::DragOnly);

    model->setHeaderLabels(krokTableModel::columnHeaderLabels());
    // The metadata columns wait until the user asks for them.
    for (int column = kFirstMetadataColumn; column < model->columnCount(); ++column) {
        view->setColumnHidden(column, true);
    }
    setAcceptDrops(true);
    connect(ucsLoader, &UcsCatalogLoader::SigLoaded, this, [this](QString, QString error) {
        model->setUcsCatalog(ucsLoader->catalog());
        model->refreshAll();
        if (!error.isEmpty()) {
            emit SigSendMessage(error);
        }
    });

    connect(view, &QAbstractItemView::clicked, this, &WidgetTableBrowser::SlotTableClicked);
    connect(view, &QAbstractItemView::activated, this,
            &WidgetTableBrowser::SlotSelectedItemPlaybackCalled);
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &WidgetTableBrowser::SlotSelectionChanged);
    connect(view, &SubWidgetTableView::SigShowInExplorer, this,
            &WidgetTableBrowser::SlotOpenByExplorerCalled);
    connect(view, &SubWidgetTableView::SigOpenByUsingExternal, this,
            &WidgetTableBrowser::SlotOpenByExternalCalled);
    connect(view, &SubWidgetTableView::SigOpenByNuendo, this,
            &WidgetTableBrowser::SlotOpenByNuendoCalled);
    connect(view, &SubWidgetTableView::SigPressSpaceKey, this,
            &WidgetTableBrowser::SlotSubSpacePressed);
    connect(view, &SubWidgetTableView::SigPressEscKey, this,
            &WidgetTableBrowser::SlotSubEscPressed);
    connect(view, &SubWidgetTableView::SigUpdateFilesCalled, this,
            &WidgetTableBrowser::forgetSelectedDurations);
    connect(view, &SubWidgetTableView::SigUpdateFilesCalled, this,
            &WidgetTableBrowser::SigUpdateFilesCalled);
    QHeaderView* header = view->horizontalHeader();
    connect(header, &QWidget::customContextMenuRequested, this,
            &WidgetTableBrowser::showHeaderMenu);
    connect(header, &QHeaderView::sectionResized, this, &WidgetTableBrowser::storeHeaderState);
    connect(header, &QHeaderView::sectionMoved, this, &WidgetTableBrowser::storeHeaderState);
    connect(header, &QHeaderView::sortIndicatorChanged, this,
            &WidgetTableBrowser::storeHeaderState);

    if (manager) {
        connectManager();
    }
}

WidgetTableBrowser::~WidgetTableBrowser() = default;

void WidgetTableBrowser::connectManager()
{
    connect(this, &WidgetTableBrowser::SigChangeRootPathCalled, manager,
            &TeskManager::SlotChangeRootPathCalled);
    connect(this, &WidgetTableBrowser::SigStartPlaybackCalled, manager,
            &TeskManager::SlotStartPlaybackCalled);
    connect(this, &WidgetTableBrowser::SigStartPlaybackWithSeekCalled, manager,
            &TeskManager::SlotStartPlaybackWithSeekCalled);
    connect(this, &WidgetTableBrowser::SigStopPlaybackCalled, manager,
            &TeskManager::SlotStopPlaybackCalled);
    connect(this, &WidgetTableBrowser::SigUpdateFilesCalled, manager,
            &TeskManager::SlotSelectedFileUpdateCalled);
    connect(this, &WidgetTableBrowser::SigOpenByExternalCalled, manager,
            &TeskManager::SlotOpenByExternalCalled);

    connect(manager, &TeskManager::SigRootPathChanged, this,
            &WidgetTableBrowser::SlotRootPathChanged);
    connect(manager, &TeskManager::SigFilePathListAcquired, this,
            &WidgetTableBrowser::SlotFilePathListAcquired);
    connect(manager, &TeskManager::SigAnalyzedRowsAcquired, this,
            &WidgetTableBrowser::SlotAnalyzedRowsAcquired);
    // The rows in sight are analysed first.
    connect(view->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &WidgetTableBrowser::reportWantedRows);
    connect(view->verticalScrollBar(), &QScrollBar::rangeChanged, this,
            &WidgetTableBrowser::reportWantedRows);
    connect(manager, &TeskManager::SigRowHeightChanged, this,
            &WidgetTableBrowser::SlotRowHeightChanged);
    connect(manager, &TeskManager::SigLoudnessVoltModeChanged, this,
            &WidgetTableBrowser::SlotLoudnessVoltModeChanged);
    connect(manager, &TeskManager::SigEndGetDetailInfo, this,
            &WidgetTableBrowser::SlotGetDetailEnded);
    connect(manager, &TeskManager::SigSearchExecute, this, &WidgetTableBrowser::SlotSearchExecute);
    connect(manager, &TeskManager::SigSelectNextItem, this,
            &WidgetTableBrowser::SlotSelectNextItem);
    connect(manager, &TeskManager::SigColumnVisibleLoaded, this,
            &WidgetTableBrowser::SlotColumnVisibleChanged);
    connect(manager, &TeskManager::SigMultiPlotChanged, this,
            &WidgetTableBrowser::SlotMultiPlotFlagChanged);
    connect(manager, &TeskManager::SigResetPlaybackPosition, this,
            &WidgetTableBrowser::SlotResetPlaybackPosition);
    connect(manager, &TeskManager::SigSetPlaybackPosition, this,
            &WidgetTableBrowser::SlotSetPlaybackPosition);
    connect(manager, &TeskManager::SigTableHeaderStateLoaded, this,
            &WidgetTableBrowser::SlotHeaderStateLoaded);
    connect(manager, &TeskManager::SigFileSelectionRequested, this,
            &WidgetTableBrowser::SlotSelectFile);
    connect(manager, &TeskManager::SigUcsCatIdListChanged, this,
            &WidgetTableBrowser::SlotUcsCatIdListChanged);
    // The cells' font follows the row height and the font settings; the
    // header does not hear of either on its own.
    connect(manager, &TeskManager::SigChangeFont, view->viewport(),
            QOverload<>::of(&QWidget::update));

    // Questions answered before the emit returns: same thread, direct.
    connect(this, &WidgetTableBrowser::SigAutoPlaybackFlagRequired, manager,
            &TeskManager::SlotAutoPlaybackFlagRequired, Qt::DirectConnection);
    connect(this, &WidgetTableBrowser::SigPlayListFlagRequired, manager,
            &TeskManager::SlotPlayListFlag, Qt::DirectConnection);
}

void WidgetTableBrowser::resortByPath()
{
    // Sorting again by the column that already holds the indicator does nothing,
    // so step over column 0 first.
    if (view->horizontalHeader()->sortIndicatorSection() == ColumnFullPath) {
        view->sortByColumn(ColumnFile, Qt::AscendingOrder);
    }
    view->sortByColumn(ColumnFullPath, Qt::AscendingOrder);
}

void WidgetTableBrowser::setDefaultColumnWidths()
{
    const QFont cellFont =
        manager ? TableFont(*manager->GetFontSettings(), manager->GetRowHeight()) : view->font();
    const QVector<int> widths = DefaultColumnWidths(view->horizontalHeader(), cellFont);
    for (int column = 0; column < widths.size(); ++column) {
        view->setColumnWidth(column, widths[column]);
    }
}

int WidgetTableBrowser::preferredTableWidth()
{
    const QFont cellFont =
        manager ? TableFont(*manager->GetFontSettings(), manager->GetRowHeight()) : view->font();
    QHeaderView* header = view->horizontalHeader();
    const QVector<int> widths = DefaultColumnWidths(header, cellFont);
    int total = 0;
    for (int column = 0; column < widths.size(); ++column) {
        if (!header->isSectionHidden(column)) {
            total += columnWidthsInitialized ? header->sectionSize(column) : widths[column];
        }
    }
    const int scrollBar = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, view);
    return total + scrollBar + 2 * view->frameWidth();
}

QByteArray WidgetTableBrowser::headerState() const
{
    return view->horizontalHeader()->saveState();
}

void WidgetTableBrowser::storeHeaderState()
{
    if (headerTracked && manager) {
        manager->SetTableHeaderState(headerState());
    }
}

int WidgetTableBrowser::visibleColumnMask() const
{
    int state = 0;
    for (int column = 0; column < model->columnCount(); ++column) {
        if (!view->isColumnHidden(column)) {
            state |= 1 << column;
        }
    }
    return state;
}

void WidgetTableBrowser::showHeaderMenu(const QPoint& position)
{
    QMenu menu(this);
    const int visible = visibleColumnMask();
    for (int column = 0; column < model->columnCount(); ++column) {
        QAction* action =
            menu.addAction(model->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString());
        action->setCheckable(true);
        action->setChecked(((visible >> column) & 1) != 0);
        // The last visible column stays: a table without columns offers no header to click.
        action->setEnabled(!action->isChecked() || (visible & ~(1 << column)) != 0);
        connect(action, &QAction::triggered, this, [this, column](bool shown) {
            view->setColumnHidden(column, !shown);
            if (shown && view->columnWidth(column) < view->horizontalHeader()->minimumSectionSize())
                view->setColumnWidth(column, view->horizontalHeader()->defaultSectionSize());
            emit SigColumnVisiblityChanged(visibleColumnMask());
        });
    }
    menu.exec(view->horizontalHeader()->mapToGlobal(position));
}

void WidgetTableBrowser::SlotHeaderStateLoaded(QByteArray state)
{
    QHeaderView* header = view->horizontalHeader();
    if (!state.isEmpty() && header->restoreState(state) &&
        header->count() == model->columnCount()) {
        columnWidthsInitialized = true;
    }
    // Sorting follows the header only once a list has been analysed.
    header->setSortIndicatorShown(view->isSortingEnabled());
    headerTracked = true;
}

void WidgetTableBrowser::SlotSelectFile(QString filePath)
{
    if (!model->hasRows()) {
        return;
    }
    for (int row = 0; row < model->rowCount(); ++row) {
        if (model->filePathRef(row) != filePath) {
            continue;
        }
        const QModelIndex index = proxy->mapFromSource(model->index(row, ColumnFile));
        if (!index.isValid()) {
            return;
        }
        selectingForUser = true;
        view->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                                           QItemSelectionModel::Rows);
        selectingForUser = false;
        view->scrollTo(index, QAbstractItemView::PositionAtCenter);
        revealCurrentAfterSort = true;
        return;
    }
}

QString WidgetTableBrowser::currentPath() const
{
    const QModelIndex current = proxy->mapToSource(view->currentIndex());
    return current.isValid() ? model->data(current, TableRoles::FullPath).toString() : QString();
}

bool WidgetTableBrowser::askAutoPlayback()
{
    bool flag = false;
    emit SigAutoPlaybackFlagRequired(&flag);
    return flag;
}

QList<SortSpecEntry> WidgetTableBrowser::applySortSpecification(const QList<SortSpecEntry>& entries)
{
    const QList<SortSpecEntry> unmatched = model->applySortSpecification(entries);
    resortByPath();
    model->refreshAll();
    view->sortByColumn(ColumnSortSpecification, Qt::AscendingOrder);
    proxy->refilter();
    return unmatched;
}

void WidgetTableBrowser::resetSortSpecification()
{
    model->resetSortSpecification();
    proxy->refilter();
    resortByPath();
    model->refreshAll();
}

bool WidgetTableBrowser::statusMessage(int count, float totalSeconds, QString* message)
{
    float total = totalSeconds;
    const int hours = static_cast<int>(total / 3600.0f);
    total -= static_cast<float>(hours) * 3600.0f;
    const int minutes = static_cast<int>(total / 60.0f);
    total -= static_cast<float>(minutes) * 60.0f;
    const QString time = tr("%1hr%2min%3sec")
                             .arg(hours)
                             .arg(minutes, 2, 10, QLatin1Char('0'))
                             .arg(static_cast<double>(total), 6, 'f', 3, QLatin1Char('0'));
    *message = tr("Number of audio files displayed: %1 Total time: %2").arg(count).arg(time);
    return total > 0.0f;
}

float WidgetTableBrowser::rowDuration(int row)
{
    if (row < rowDurations.size() && !std::isnan(rowDurations[row])) {
        return rowDurations[row];
    }
    const QVariant value = model->data(model->index(row, ColumnDuration), TableRoles::SortValue);
    if (!value.isValid()) {
        return 0.0f; // not analysed yet
    }
    const float seconds = value.toFloat();
    if (row < rowDurations.size()) {
        rowDurations[row] = seconds;
    }
    return seconds;
}

void WidgetTableBrowser::forgetSelectedDurations()
{
    const QModelIndexList selected = view->selectionModel()->selectedRows();
    for (const QModelIndex& index : selected) {
        const int row = proxy->mapToSource(index).row();
        if (row >= 0 && row < rowDurations.size()) {
            rowDurations[row] = kUnread;
        }
    }
}

void WidgetTableBrowser::updateStatusLine()
{
    int count = 0;
    float total = 0.0f;
    const int rows = model->hasRows() ? model->rowCount() : 0;
    for (int row = 0; row < rows; ++row) {
        if (!model->isRowShown(row)) {
            continue;
        }
        total += rowDuration(row);
        ++count;
    }
    QString message;
    if (statusMessage(count, total, &message)) {
        emit SigSendMessage(message);
    }
}

double WidgetTableBrowser::seekRatio(int x, int width)
{
    return width >= 1 && x >= 1 ? static_cast<double>(x) / width : 0.0;
}

void WidgetTableBrowser::SlotRootPathChanged()
{
    view->setUpdateInformationEnabled(false);
    model->clearRows();
    rowDurations.clear();
    pathRows.clear();
    revealCurrentAfterSort = false;
    if (!columnWidthsInitialized) {
        setDefaultColumnWidths();
        columnWidthsInitialized = true;
    }
    headerTracked = true;
    // While the list is analysed it stays in list order (which is path
    // order); the header keeps the user's sort column, which sorts the list
    // once it is analysed.
    proxy->setDynamicSortFilter(false);
    view->setSortingEnabled(false);
    proxy->sort(-1);
}

void WidgetTableBrowser::SlotRowHeightChanged(int height)
{
    view->verticalHeader()->setDefaultSectionSize(height);
    view->viewport()->update();
}

void WidgetTableBrowser::SlotFilePathListAcquired(QList<QString> pathList)
{
    model->setFilePathList(pathList);
    rowDurations.fill(kUnread, pathList.size());
    pathRows.clear();
    reportWantedRows();
}

void WidgetTableBrowser::SlotAnalyzedInfoAcquired(int i_from, int i_to)
{
    const int rows = model->rowCount();
    const int last = qMin(i_to, rows - 1);
    for (int row = qMax(i_from, 0); row <= last; ++row) {
        model->setDetailAcquired(row, true);
        if (row < rowDurations.size()) {
            rowDurations[row] = kUnread;
            rowDuration(row);
        }
    }
    model->refreshRows(qMax(i_from, 0), last);
}

int WidgetTableBrowser::rowOfPath(const QString& path)
{
    // Made at the first file found by its path: a pass over thousands of
    // selected files must not search the whole list for each.
    if (pathRows.isEmpty()) {
        const int count = model->rowCount();
        pathRows.reserve(count);
        for (int row = 0; row < count; ++row) {
            pathRows.insert(model->filePathRef(row), row);
        }
    }
    return pathRows.value(path, -1);
}

void WidgetTableBrowser::SlotAnalyzedRowsAcquired(AnalyzedRows rows)
{
    if (!model->hasRows()) {
        return;
    }
    const int count = model->rowCount();
    // Only the rows that changed are announced, one notice per run of
    // neighbouring rows.
    int runFirst = -1;
    int runLast = -1;
    for (const AnalyzedRow& analysed : qAsConst(rows)) {
        int row = analysed.row;
        // The rows of a pass over selected files are found by their paths.
        if (row < 0 || row >= count || model->filePathRef(row) != analysed.path) {
            row = rowOfPath(analysed.path);
            if (row < 0) {
                continue;
            }
        }
        model->setRecord(row, analysed.record);
        if (row < rowDurations.size()) {
            rowDurations[row] = kUnread;
            rowDuration(row);
        }
        if (runFirst >= 0 && row == runLast + 1) {
            runLast = row;
            continue;
        }
        if (runFirst >= 0) {
            model->refreshRows(runFirst, runLast);
        }
        runFirst = runLast = row;
    }
    if (runFirst >= 0) {
        model->refreshRows(runFirst, runLast);
    }
}

void WidgetTableBrowser::reportWantedRows()
{
    if (!manager) {
        return;
    }
    if (!model->hasRows() || view->isSortingEnabled()) {
        manager->SetWantedRows(-1, -1);
        return;
    }
    const int top = view->rowAt(0);
    int bottom = view->rowAt(view->viewport()->height() - 1);
    if (top < 0) {
        manager->SetWantedRows(-1, -1);
        return;
    }
    if (bottom < 0) {
        bottom = proxy->rowCount() - 1;
    }
    // While a list is analysed the proxy keeps the list's order.
    const int first = proxy->mapToSource(proxy->index(top, 0)).row();
    const int last = proxy->mapToSource(proxy->index(bottom, 0)).row();
    manager->SetWantedRows(qMin(first, last), qMax(first, last));
}

void WidgetTableBrowser::SlotGetDetailEnded()
{
    proxy->setDynamicSortFilter(true);
    view->setSortingEnabled(true);
    view->setUpdateInformationEnabled(true);
    if (revealCurrentAfterSort && view->currentIndex().isValid()) {
        view->scrollTo(view->currentIndex(), QAbstractItemView::PositionAtCenter);
    }
    revealCurrentAfterSort = false;
}

void WidgetTableBrowser::SlotSearchExecute(SearchCriteriaStruct criteria)
{
    // No row changes while a list is still being analysed.
    if (!view->isSortingEnabled()) {
        return;
    }
    int changed = 0;
    if (model->hasRows()) {
        const int rows = model->rowCount();
        for (int row = 0; row < rows; ++row) {
            const bool matched = SearchRowMatcher::matches(*model, row, criteria);
            if (matched != model->isRowMatched(row)) {
                model->setRowMatched(row, matched);
                ++changed;
            }
        }
    }
    proxy->refilter(changed > kManyRowsChanged);
    updateStatusLine();
}

void WidgetTableBrowser::SlotSelectNextItem()
{
    const int rows = proxy->rowCount();
    int next = view->currentIndex().isValid() ? view->currentIndex().row() + 1 : 0;
    while (next < rows && view->isRowHidden(next)) {
        ++next;
    }
    if (next >= rows) {
        return;
    }
    view->clearSelection();
    view->selectRow(next);
    const bool autoPlayback = askAutoPlayback();
    bool playlist = false;
    emit SigPlayListFlagRequired(&playlist);
    // With auto playback on, the selection change has started the file already.
    if (playlist && !autoPlayback) {
        SlotSelectedItemPlaybackCalled();
    }
}

void WidgetTableBrowser::SlotLoudnessVoltModeChanged(bool flag)
{
    view->setFocus();
    setFocus();
    model->setLoudnessVoltMode(flag);
    model->refreshAll();
}

void WidgetTableBrowser::SlotColumnVisibleChanged(int state)
{
    for (int column = 0; column < model->columnCount(); ++column) {
        view->setColumnHidden(column, ((state >> column) & 1) == 0);
    }
}

void WidgetTableBrowser::SlotMultiPlotFlagChanged(bool flag)
{
    model->setMultiPlot(flag);
}

void WidgetTableBrowser::SlotResetPlaybackPosition(QString filePath)
{
    model->setPlaybackPosition(filePath, 0.0);
}

void WidgetTableBrowser::SlotSetPlaybackPosition(QString filePath, double positionRatio)
{
    model->setPlaybackPosition(filePath, positionRatio);
}

void WidgetTableBrowser::SlotSelectionChanged(const QItemSelection& selected,
                                              const QItemSelection& deselected)
{
    Q_UNUSED(deselected)
    if (selectingForUser || !askAutoPlayback() || selected.isEmpty()) {
        return;
    }
    emit SigStartPlaybackCalled(currentPath());
}

void WidgetTableBrowser::SlotOpenByExplorerCalled()
{
    emit SigOpenByExplorerCalled(currentPath());
}

void WidgetTableBrowser::SlotOpenByExternalCalled()
{
    emit SigOpenByExternalCalled(currentPath());
}

void WidgetTableBrowser::SlotOpenByNuendoCalled()
{
    emit SigOpenByNuendoCalled(currentPath());
}

void WidgetTableBrowser::SlotSubSpacePressed() {}

void WidgetTableBrowser::SlotSubEscPressed() {}

void WidgetTableBrowser::SlotTableClicked(const QModelIndex& index)
{
    if (index.column() != ColumnPlots) {
        return;
    }
    view->selectRow(index.row());
    QHeaderView* header = view->horizontalHeader();
    const int x = view->lastPressPosition().x() - header->sectionViewportPosition(ColumnPlots);
    const double ratio = seekRatio(x, header->sectionSize(ColumnPlots));
    bool ok = false;
    const float duration =
        index.sibling(index.row(), ColumnDuration).data(TableRoles::SortValue).toFloat(&ok);
    if (!ok) {
        return;
    }
    const QString path = index.data(TableRoles::FullPath).toString();
    emit SigStartPlaybackWithSeekCalled(path, static_cast<int>(static_cast<qint64>(
                                                  static_cast<double>(duration) * ratio * 1000.0)));
}

void WidgetTableBrowser::SlotSelectedItemPlaybackCalled()
{
    const QModelIndex current = view->currentIndex();
    if (!current.isValid() || current.row() < 0 || current.column() == ColumnPlots) {
        return;
    }
    emit SigStartPlaybackCalled(currentPath());
}

void WidgetTableBrowser::SlotUcsCatIdListChanged(QString path)
{
    ucsLoader->load(path);
}

void WidgetTableBrowser::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls()) {
        event->acceptProposedAction();
    }
}

void WidgetTableBrowser::dropEvent(QDropEvent* event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty()) {
        return;
    }
    // Only the first dropped item counts; nothing is moved or copied.
    const QFileInfo info(urls.first().toLocalFile());
    if (info.isDir()) {
        emit SigChangeRootPathCalled(info.filePath());
    } else if (info.isFile()) {
        // An audio file is handed on as it is, to be selected in its folder.
        emit SigChangeRootPathCalled(IsSupportedAudioFile(info.fileName()) ? info.absoluteFilePath()
                                                                           : info.absolutePath());
    } else {
        return;
    }
    event->setDropAction(Qt::IgnoreAction);
    event->accept();
}
