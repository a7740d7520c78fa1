#include "KrokTableSortModel.h"

#include "krokTableModel.h"

#include <QLocale>

namespace {

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
    , collator(QLocale::system())
{
    // The C locale collates by code point and ignores numeric mode; take2
    // must still sort before take10 there, so it collates as English.
    if (QLocale::system().language() == QLocale::C)
        collator.setLocale(QLocale(QLocale::English));
    collator.setNumericMode(true);
}

KrokTableSortModel::~KrokTableSortModel() = default;

void KrokTableSortModel::setSourceModel(QAbstractItemModel* model)
{
    if (sourceModel())
        disconnect(sourceModel(), nullptr, this, nullptr);
    dropKeys();
    table = qobject_cast<const krokTableModel*>(model);
    // Connected before the base class so that the keys are gone by the time the
    // proxy re-sorts in its own handlers.
    if (model) {
        const auto drop = [this] { dropKeys(); };
        connect(model, &QAbstractItemModel::dataChanged, this, drop);
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
    primary = Keys();
    fullPaths = Keys();
    names.reset();
}

const QVector<QVariant>& KrokTableSortModel::sortValues(int column) const
{
    Keys& keys = column == ColumnFullPath ? fullPaths : primary;
    if (keys.column != column) {
        const QAbstractItemModel* model = sourceModel();
        const int rows = model->rowCount();
        keys.column = column;
        keys.values.clear();
        keys.values.reserve(rows);
        for (int row = 0; row < rows; ++row)
            keys.values.append(model->index(row, column).data(sortRole()));
    }
    return keys.values;
}

const QVector<QCollatorSortKey>& KrokTableSortModel::nameKeys() const
{
    if (!names) {
        const QAbstractItemModel* model = sourceModel();
        const int rows = model->rowCount();
        QVector<QCollatorSortKey> keys;
        keys.reserve(rows);
        for (int row = 0; row < rows; ++row)
            keys.append(
                collator.sortKey(model->index(row, ColumnFile).data(sortRole()).toString()));
        names = std::move(keys);
    }
    return *names;
}

int KrokTableSortModel::compareValues(const QVariant& a, const QVariant& b)
{
    if (isNumber(a) && isNumber(b)) {
        if (isInteger(a) && isInteger(b))
            return threeWay(a.toLongLong(), b.toLongLong());
        return threeWay(a.toDouble(), b.toDouble());
    }
    // A blank cell (row not analysed) against a number: blanks first.
    if (!a.isValid() || !b.isValid())
        return threeWay(a.isValid(), b.isValid());
    return a.toString().compare(b.toString());
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
    } else if (column == ColumnFile) {
        const QVector<QCollatorSortKey>& keys = nameKeys();
        const int byName = keys.at(l).compare(keys.at(r));
        if (byName != 0)
            return byName < 0;
    } else {
        // Plot items have no order of their own: every pair ties, and building
        // 100,000 of them only to find that out would cost a second.
        if (column != ColumnPlots) {
            const QVector<QVariant>& values = sortValues(column);
            const int byValue = compareValues(values.at(l), values.at(r));
            if (byValue != 0)
                return byValue < 0;
        }
        const QVector<QCollatorSortKey>& keys = nameKeys();
        const int byName = keys.at(l).compare(keys.at(r));
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
    const QVector<QVariant>& paths = sortValues(ColumnFullPath);
    return compareValues(paths.at(l), paths.at(r));
}
