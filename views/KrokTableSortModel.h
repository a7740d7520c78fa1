#pragma once

#include <QSortFilterProxyModel>

// The proxy over the file table: hides the rows the model reports not shown
// (search, sort specification) and sorts by the model's sort values.
class KrokTableSortModel final : public QSortFilterProxyModel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(KrokTableSortModel)
public:
    explicit KrokTableSortModel(QObject* parent = nullptr);
    ~KrokTableSortModel() override;

    // Re-runs the row filter after the model's shown flags changed.
    void refilter() { invalidateFilter(); }

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
};
