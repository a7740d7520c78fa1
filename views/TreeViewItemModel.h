#pragma once

#include <QFileSystemModel>

class TeskManager;

// The folder tree's file-system model; rows take the tree font of the
// appearance settings and its line height, so they follow the chosen font.
class TreeViewItemModel final : public QFileSystemModel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TreeViewItemModel)
public:
    explicit TreeViewItemModel(TeskManager* manager, QObject* parent = nullptr);
    ~TreeViewItemModel() override;

    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    QFont treeFont() const;

private:
    TeskManager* manager;
};
