#include "TreeViewItemModel.h"

#include "TeskManager.h"

#include <QApplication>
#include <QFont>
#include <QFontMetrics>
#include <QSize>

TreeViewItemModel::TreeViewItemModel(TeskManager* teskManager, QObject* parent)
    : QFileSystemModel(parent)
    , manager(teskManager)
{}

TreeViewItemModel::~TreeViewItemModel() = default;

QFont TreeViewItemModel::treeFont() const
{
    QFont font = QApplication::font();
    if (!manager)
        return font;
    const FontSettings* settings = manager->GetFontSettings();
    const QString family = settings->GetFamily(FontSettings::Tree);
    const int size = settings->GetPointSize(FontSettings::Tree);
    if (!family.isEmpty())
        font.setFamily(family);
    if (size > 0)
        font.setPointSize(size);
    return font;
}

QVariant TreeViewItemModel::data(const QModelIndex& index, int role) const
{
    if (role == Qt::FontRole)
        return treeFont();
    if (role == Qt::SizeHintRole)
        return QSize(-1, QFontMetrics(treeFont()).height());
    return QFileSystemModel::data(index, role);
}
