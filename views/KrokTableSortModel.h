#pragma once

#include <QSortFilterProxyModel>
#include <QString>
#include <QVariant>
#include <QVector>

#include <cstdint>

class krokTableModel;

// The proxy over the file table: hides the rows the model reports not shown
// (search, sort specification) and sorts by the model's sort values, names
// naturally (take2 before take10), ties by file name and then full path.
//
// Sorting 100,000 rows makes a couple of million comparisons, so none of them
// touches a record or a string it has to build: the sort column's values are
// taken once into plain keys (numbers as numbers, texts as texts), and names
// and paths compare by ranks the model works out off the GUI thread when the
// list arrives. Keys follow the model: a few changed rows are read again, a
// larger change drops them.
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
    // A sort value as compareValues sees it.
    struct SortKey
    {
        enum Kind : std::uint8_t
        {
            Blank,
            Integer,
            Real,
            Text,
        };
        Kind kind = Blank;
        qint64 integer = 0;
        double real = 0.0;
        // A text; in a column that holds texts beside numbers, also a number's
        // text, which is what a number is compared to a text by.
        QString text;
    };
    static SortKey keyOf(const QVariant& value, bool withText);
    static int compareKeys(const SortKey& a, const SortKey& b);
    const QVector<SortKey>& sortKeys(int column) const;
    SortKey modifyTimeKey(int row) const;
    void sourceDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight);
    void dropKeys();
    int compareNames(int left, int right) const;
    int comparePaths(int left, int right) const;

    const krokTableModel* table = nullptr;
    mutable int keyColumn = -1;
    mutable bool keysWithText = false;
    mutable QVector<SortKey> keys;
};
