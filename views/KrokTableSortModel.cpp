#include "KrokTableSortModel.h"

#include "krokTableModel.h"

KrokTableSortModel::KrokTableSortModel(QObject* parent)
    : QSortFilterProxyModel(parent)
{}

KrokTableSortModel::~KrokTableSortModel() = default;

bool KrokTableSortModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    Q_UNUSED(sourceParent)
    const auto* model = qobject_cast<const krokTableModel*>(sourceModel());
    if (!model || sourceRow < 0 || sourceRow >= model->rowCount()) {
        return false;
    }
    return model->isRowShown(sourceRow);
}
