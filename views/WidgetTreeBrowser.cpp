#include "WidgetTreeBrowser.h"

#include "IconProv.h"
#include "SubWidgetTreeView.h"
#include "TeskManager.h"
#include "TreeViewItemModel.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QScrollBar>

static_assert(int(WidgetTreeBrowser::kFolderFilter) == 25601);

WidgetTreeBrowser::WidgetTreeBrowser(TeskManager* manager, QWidget* parent)
    : QWidget(parent)
    , icons(std::make_unique<IconProv>())
    , model(new TreeViewItemModel(manager, this))
    , view(new SubWidgetTreeView(this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(view);

    model->setIconProvider(icons.get());
    // The empty root lists every drive at the top level.
    model->setRootPath(QString());
    model->setFilter(kFolderFilter);

    // When the current folder disappears (deleted, renamed, unmounted, or
    // hidden by the filter) the view moves its current item to a neighbour.
    // That move is not the user's choice and must not change the root, so it
    // is recognised by the removal around it. Connected before the view's
    // selection model, whose handler makes the move, so that it runs first.
    connect(model, &QAbstractItemModel::rowsAboutToBeRemoved, this,
            [this] { removingRows = true; });
    connect(model, &QAbstractItemModel::rowsRemoved, this, [this] { removingRows = false; });

    view->setModel(model);
    view->setUniformRowHeights(true);
    view->header()->hide();
    for (int column = 1; column < model->columnCount(); ++column)
        view->hideColumn(column);

    connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &WidgetTreeBrowser::SlotFolderSelected);
    connect(view, &SubWidgetTreeView::SigShowInExplorer, this,
            &WidgetTreeBrowser::SlotShowInExplorer);
    // Every folder that finishes loading may have moved the followed one.
    connect(model, &QFileSystemModel::directoryLoaded, this,
            &WidgetTreeBrowser::revealFollowedFolder);
    connect(model, &QAbstractItemModel::layoutChanged, this,
            &WidgetTreeBrowser::revealFollowedFolder);
    // A scroll by hand (wheel, bar, keys) ends the following.
    connect(view->verticalScrollBar(), &QAbstractSlider::actionTriggered, this,
            [this] { followedPath.clear(); });
    // So does opening or closing a folder, unless it is the way to the root.
    const auto userExpanded = [this] {
        if (!revealing)
            followedPath.clear();
    };
    connect(view, &QTreeView::expanded, this, userExpanded);
    connect(view, &QTreeView::collapsed, this, userExpanded);

    if (manager) {
        connect(this, &WidgetTreeBrowser::SigChangeRootPathCalled, manager,
                &TeskManager::SlotChangeRootPathCalled);
        connect(manager, &TeskManager::SigRootPathChanged, this,
                &WidgetTreeBrowser::SlotRootPathChanged);
        connect(manager, &TeskManager::SigShowHiddensFlagChanged, this,
                &WidgetTreeBrowser::SlotShowHiddenFolderFlagChanged);
        // Rows take their font and height from the model; lay them out anew.
        connect(manager, &TeskManager::SigChangeFont, view, [this] { view->doItemsLayout(); });
    }
}

WidgetTreeBrowser::~WidgetTreeBrowser()
{
    // The model keeps a raw pointer to the icon provider; it goes first.
    delete view;
    delete model;
}

void WidgetTreeBrowser::SlotRootPathChanged(QString path)
{
    if (model->rootPath() == path)
        return;
    const QModelIndex index = model->index(path, 0);
    if (!index.isValid())
        return;
    view->setCurrentIndex(index);
    followedPath = path;
    revealFollowedFolder();
}

void WidgetTreeBrowser::revealFollowedFolder()
{
    if (followedPath.isEmpty())
        return;
    const QModelIndex index = model->index(followedPath, 0);
    if (!index.isValid())
        return;
    // Rows are inserted above it after this call returns: lay them out first.
    revealing = true;
    view->doItemsLayout();
    // A folder still in sight stays where it is: it may be the one just
    // clicked, and moving it would put another under the mouse.
    if (!view->viewport()->rect().contains(view->visualRect(index)))
        view->scrollTo(index, QAbstractItemView::PositionAtCenter);
    else
        view->scrollTo(index, QAbstractItemView::EnsureVisible);
    revealing = false;
}

void WidgetTreeBrowser::SlotShowHiddenFolderFlagChanged(bool flag)
{
    QDir::Filters filters = model->filter();
    filters.setFlag(QDir::Hidden, flag);
    model->setFilter(filters);
}

void WidgetTreeBrowser::SlotFolderSelected(const QModelIndex& index,
                                           const QModelIndex& previousIndex)
{
    Q_UNUSED(previousIndex)
    if (removingRows)
        return;
    const QString path = model->filePath(index);
    if (!path.isEmpty() && QFileInfo(path).isDir())
        emit SigChangeRootPathCalled(path);
}

void WidgetTreeBrowser::SlotShowInExplorer(const QModelIndex& index)
{
    const QString path = model->filePath(index);
    if (!path.isEmpty() && QFileInfo(path).isDir())
        emit SigShowInExplorer(path);
}
