#include "KrokTableSortModel.h"

#include "krokTableModel.h"

KrokTableSortModel::KrokTableSortModel(QObject* parent)
    : QSortFilterProxyModel(parent)
{}

KrokTableSortModel::~KrokTableSortModel() = default;

void KrokTableSortModel::setSourceModel(QAbstractItemModel* model)
{
    table = qobject_cast<const krokTableModel*>(model);
    QSortFilterProxyModel::setSourceModel(model);
}

bool KrokTableSortModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    Q_UNUSED(sourceParent)
    if (!table || sourceRow < 0 || sourceRow >= table->rowCount()) {
        return false;
    }
    return table->isRowShown(sourceRow);
}

bool KrokTableSortModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    // Names and paths compare straight from the row list and case-sensitively: a
    // list's end sorts every row by path at once, and going through QVariant or
    // case folding there stalls the table.
    const krokTableModel* model = table;
    if (model && model->hasRows() && left.column() == right.column()) {
        if (left.column() == ColumnFullPath) {
            const QString& a = model->filePathRef(left.row());
            const QString& b = model->filePathRef(right.row());
            const int skip = model->commonPathPrefixLength();
            return a.midRef(skip) < b.midRef(skip);
        }
        if (left.column() == ColumnFile) {
            return model->fileNameRef(left.row()) < model->fileNameRef(right.row());
        }
    }
    return QSortFilterProxyModel::lessThan(left, right);
}
