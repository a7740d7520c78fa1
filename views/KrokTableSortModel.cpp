#include "KrokTableSortModel.h"

#include "AudioFileInfo.h"
#include "PathRanking.h"
#include "krokTableModel.h"

namespace {

// Past this many rows changing at once, the keys are taken afresh when next needed.
constexpr int kManyChangedRows = 256;

bool isNumber(const QVariant& v)
{
    switch (static_cast<QMetaType::Type>(v.userType())) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Float:
    case QMetaType::Double:
    case QMetaType::Bool:
        return true;
    default:
        return false;
    }
}

bool isInteger(const QVariant& v)
{
    const int t = v.userType();
    return t != QMetaType::Float && t != QMetaType::Double;
}

template<typename T>
int threeWay(T a, T b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}

} // namespace

KrokTableSortModel::KrokTableSortModel(QObject* parent)
    : QSortFilterProxyModel(parent)
{}

KrokTableSortModel::~KrokTableSortModel() = default;

void KrokTableSortModel::setSourceModel(QAbstractItemModel* model)
{
    if (sourceModel())
        disconnect(sourceModel(), nullptr, this, nullptr);
    dropKeys();
    table = qobject_cast<const krokTableModel*>(model);
    // Connected before the base class so that the keys are current by the time
    // the proxy re-sorts in its own handlers.
    if (model) {
        const auto drop = [this] { dropKeys(); };
        connect(model, &QAbstractItemModel::dataChanged, this,
                &KrokTableSortModel::sourceDataChanged);
        connect(model, &QAbstractItemModel::modelAboutToBeReset, this, drop);
        connect(model, &QAbstractItemModel::modelReset, this, drop);
        connect(model, &QAbstractItemModel::layoutChanged, this, drop);
        connect(model, &QAbstractItemModel::rowsInserted, this, drop);
        connect(model, &QAbstractItemModel::rowsRemoved, this, drop);
        connect(model, &QAbstractItemModel::rowsMoved, this, drop);
    }
    QSortFilterProxyModel::setSourceModel(model);
}

void KrokTableSortModel::sort(int column, Qt::SortOrder order)
{
    dropKeys();
    QSortFilterProxyModel::sort(column, order);
}

void KrokTableSortModel::dropKeys()
{
    keyColumn = -1;
    keys = QVector<SortKey>();
}

void KrokTableSortModel::sourceDataChanged(const QModelIndex& topLeft,
                                           const QModelIndex& bottomRight)
{
    if (keyColumn < 0)
        return;
    const int first = topLeft.row();
    const int last = bottomRight.row();
    if (topLeft.column() > keyColumn || bottomRight.column() < keyColumn)
        return;
    if (last - first >= kManyChangedRows || last >= keys.size() || first < 0) {
        dropKeys();
        return;
    }
    // A row or two (a playing file's position, a refreshed file): read again.
    for (int row = first; row <= last; ++row) {
        if (keyColumn == ColumnModifyTime && table && table->hasRows()) {
            keys[row] = modifyTimeKey(row);
            continue;
        }
        SortKey key = keyOf(table ? table->sortValue(row, keyColumn)
                                  : sourceModel()->index(row, keyColumn).data(sortRole()),
                            keysWithText);
        if (key.kind == SortKey::Text && !keysWithText) {
            dropKeys();
            return;
        }
        keys[row] = std::move(key);
    }
}

KrokTableSortModel::SortKey KrokTableSortModel::keyOf(const QVariant& value, bool withText)
{
    SortKey key;
    if (isNumber(value)) {
        if (isInteger(value)) {
            key.kind = SortKey::Integer;
            key.integer = value.toLongLong();
        } else {
            key.kind = SortKey::Real;
        }
        key.real = value.toDouble();
        if (withText)
            key.text = value.toString();
    } else if (value.isValid()) {
        key.kind = SortKey::Text;
        key.text = value.toString();
    }
    return key;
}

int KrokTableSortModel::compareKeys(const SortKey& a, const SortKey& b)
{
    const bool aNumber = a.kind == SortKey::Integer || a.kind == SortKey::Real;
    const bool bNumber = b.kind == SortKey::Integer || b.kind == SortKey::Real;
    if (aNumber && bNumber) {
        if (a.kind == SortKey::Integer && b.kind == SortKey::Integer)
            return threeWay(a.integer, b.integer);
        return threeWay(a.real, b.real);
    }
    // A blank cell (row not analysed) against a value: blanks first.
    if (a.kind == SortKey::Blank || b.kind == SortKey::Blank)
        return threeWay(a.kind != SortKey::Blank, b.kind != SortKey::Blank);
    return a.text.compare(b.text);
}

const QVector<KrokTableSortModel::SortKey>& KrokTableSortModel::sortKeys(int column) const
{
    if (keyColumn == column)
        return keys;
    const QAbstractItemModel* model = sourceModel();
    const int rows = model->rowCount();
    if (column == ColumnModifyTime && table && table->hasRows()) {
        // The time's text orders as its number does: compare the numbers.
        keys.clear();
        keys.reserve(rows);
        for (int row = 0; row < rows; ++row)
            keys.append(modifyTimeKey(row));
        keysWithText = false;
        keyColumn = column;
        return keys;
    }
    QVector<QVariant> values;
    values.reserve(rows);
    bool anyText = false;
    bool anyNumber = false;
    for (int row = 0; row < rows; ++row) {
        values.append(table ? table->sortValue(row, column)
                            : model->index(row, column).data(sortRole()));
        const QVariant& v = values.last();
        anyNumber = anyNumber || isNumber(v);
        anyText = anyText || (v.isValid() && !isNumber(v));
    }
    // Numbers are compared to texts as texts; only such a column keeps them.
    keysWithText = anyText && anyNumber;
    keys.clear();
    keys.reserve(rows);
    for (const QVariant& v : qAsConst(values))
        keys.append(keyOf(v, keysWithText));
    keyColumn = column;
    return keys;
}

KrokTableSortModel::SortKey KrokTableSortModel::modifyTimeKey(int row) const
{
    // Blank where the cell is: a row not analysed, or a file whose status was not read.
    SortKey key;
    const AudioFileInfo* info = table->record(row);
    if (info && !info->modifyTime.empty()) {
        key.kind = SortKey::Integer;
        key.integer = info->modifyTime.number();
    }
    return key;
}

int KrokTableSortModel::compareValues(const QVariant& a, const QVariant& b)
{
    return compareKeys(keyOf(a, true), keyOf(b, true));
}

bool KrokTableSortModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    Q_UNUSED(sourceParent)
    if (!table || sourceRow < 0 || sourceRow >= table->rowCount()) {
        return false;
    }
    return table->isRowShown(sourceRow);
}

int KrokTableSortModel::compareNames(int l, int r) const
{
    if (table && table->hasRows()) {
        const QVector<int>& ranks = table->nameRanks();
        if (ranks.size() == table->rowCount())
            return threeWay(ranks.at(l), ranks.at(r));
    }
    const QAbstractItemModel* model = sourceModel();
    const QCollator collator = FileNameCollator();
    return collator.compare(model->index(l, ColumnFile).data(sortRole()).toString(),
                            model->index(r, ColumnFile).data(sortRole()).toString());
}

bool KrokTableSortModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const int column = left.column();
    const int l = left.row();
    const int r = right.row();
    const int rows = table ? table->rowCount() : sourceModel()->rowCount();
    if (l < 0 || r < 0 || l >= rows || r >= rows)
        return false;

    if (column == ColumnFullPath) {
        const int byPath = comparePaths(l, r);
        if (byPath != 0)
            return byPath < 0;
    } else {
        // Plot items have no order of their own: every pair ties.
        if (column != ColumnFile && column != ColumnPlots) {
            const QVector<SortKey>& values = sortKeys(column);
            const int byValue = compareKeys(values.at(l), values.at(r));
            if (byValue != 0)
                return byValue < 0;
        }
        const int byName = compareNames(l, r);
        if (byName != 0)
            return byName < 0;
    }
    // Same name (or the same path): the full path keeps repeated sorts stable.
    if (column == ColumnFullPath)
        return false;
    return comparePaths(l, r) < 0;
}

int KrokTableSortModel::comparePaths(int l, int r) const
{
    // The end of a list sorts every row by path at once: ranks worked out
    // while the list was analysed make that an integer comparison.
    if (table && table->hasRows()) {
        const QVector<int>& ranks = table->pathRanks();
        if (ranks.size() == table->rowCount())
            return threeWay(ranks.at(l), ranks.at(r));
        // Past the root folder that all paths share.
        const int skip = table->commonPathPrefixLength();
        return table->filePathRef(l).midRef(skip).compare(table->filePathRef(r).midRef(skip));
    }
    const QAbstractItemModel* model = sourceModel();
    return compareValues(model->index(l, ColumnFullPath).data(sortRole()),
                         model->index(r, ColumnFullPath).data(sortRole()));
}
