#pragma once

#include <QCollator>
#include <QCollatorSortKey>
#include <QSortFilterProxyModel>
#include <QVariant>
#include <QVector>

#include <optional>

class krokTableModel;

// The proxy over the file table: hides the rows the model reports not shown
// (search, sort specification) and sorts by the model's sort values, names
// naturally (take2 before take10), ties by file name and then full path.
class KrokTableSortModel final : public QSortFilterProxyModel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(KrokTableSortModel)
public:
    explicit KrokTableSortModel(QObject* parent = nullptr);
    ~KrokTableSortModel() override;

    void setSourceModel(QAbstractItemModel* model) override;
    // Every requested sort takes fresh keys: the model changes some values
    // (sort specification, loudness display) without telling its views.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    // Re-runs the row filter after the model's shown flags changed. When many
    // rows change, the filter pass would report every hidden or shown stretch
    // on its own, and the view redoes work across the whole table for each
    // report (seconds for tens of thousands of scattered rows); one layout
    // change, which also sorts again in the same order, is far cheaper then.
    void refilter(bool manyRowsChanged = false)
    {
        if (manyRowsChanged)
            invalidate();
        else
            invalidateFilter();
    }

    // Three-way comparison of two sort values of one column, each by its own type.
    static int compareValues(const QVariant& a, const QVariant& b);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    // A sort over 100,000 rows makes a couple of million comparisons; each
    // would otherwise fetch two records from the registry and build two
    // collation keys. The keys are taken once per column and dropped whenever
    // the source model changes.
    struct Keys
    {
        int column = -1;
        QVector<QVariant> values;
    };
    const QVector<QVariant>& sortValues(int column) const;
    const QVector<QCollatorSortKey>& nameKeys() const;
    void dropKeys();
    int comparePaths(int leftRow, int rightRow) const;

    const krokTableModel* table = nullptr;
    QCollator collator;
    mutable Keys primary;
    mutable Keys fullPaths;
    mutable std::optional<QVector<QCollatorSortKey>> names;
};
