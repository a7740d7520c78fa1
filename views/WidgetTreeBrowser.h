#pragma once

#include <QDir>
#include <QWidget>

#include <memory>

class IconProv;
class SubWidgetTreeView;
class TeskManager;
class TreeViewItemModel;

// The left-hand folder tree. Picking a folder asks the manager for a new
// root; a root chosen elsewhere moves the tree's current item to it.
class WidgetTreeBrowser final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WidgetTreeBrowser)
public:
    // Folders only, no "." and "..": the directory-filter value 25601.
    static constexpr QDir::Filters kFolderFilter =
        QDir::Dirs | QDir::AllDirs | QDir::NoDot | QDir::NoDotDot;

    explicit WidgetTreeBrowser(TeskManager* manager, QWidget* parent = nullptr);
    ~WidgetTreeBrowser() override;

    SubWidgetTreeView* treeView() const { return view; }
    TreeViewItemModel* treeModel() const { return model; }

signals:
    void SigChangeRootPathCalled(QString root);
    void SigShowInExplorer(QString path);

public slots:
    void SlotRootPathChanged(QString path);
    void SlotShowHiddenFolderFlagChanged(bool flag);
    void SlotFolderSelected(const QModelIndex& index, const QModelIndex& previousIndex);
    void SlotShowInExplorer(const QModelIndex& index);

private:
    // Centres the folder being followed again: the model loads the folders
    // above it one by one, and each load pushes it further down.
    void revealFollowedFolder();

    std::unique_ptr<IconProv> icons;
    TreeViewItemModel* model;
    SubWidgetTreeView* view;
    // The root shown in the tree until the user scrolls by hand.
    QString followedPath;
    bool revealing = false;
    bool removingRows = false;
};
