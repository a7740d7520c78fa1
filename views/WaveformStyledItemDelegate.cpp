#include "WaveformStyledItemDelegate.h"

#include "TeskManager.h"
#include "WaveformStyledItem.h"

#include <QPainter>

namespace {

using PlotPointer = QSharedPointer<WaveformStyledItem>;

bool isPlot(const QVariant& value)
{
    return value.userType() == qMetaTypeId<PlotPointer>();
}

} // namespace

WaveformStyledItemDelegate::WaveformStyledItemDelegate(TeskManager* manager, QObject* parent)
    : QStyledItemDelegate(parent)
    , selectionBrush(QColor(255, 255, 192, 255))
    , manager(manager)
{
    RegisterWaveformStyledItemMetaType();
}

WaveformStyledItemDelegate::~WaveformStyledItemDelegate() = default;

void WaveformStyledItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                       const QModelIndex& index) const
{
    const QVariant value = index.data(Qt::DisplayRole);
    if (isPlot(value)) {
        // A plot stays readable on pale yellow, not on the palette's highlight.
        if (option.state & QStyle::State_Selected) {
            painter->fillRect(option.rect, selectionBrush);
        }
        const PlotPointer item = value.value<PlotPointer>();
        if (item) {
            item->paint(painter, option.rect);
        }
        return;
    }
    QStyledItemDelegate::paint(painter, option, index);
}

QSize WaveformStyledItemDelegate::sizeHint(const QStyleOptionViewItem& option,
                                           const QModelIndex& index) const
{
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    if (isPlot(index.data(Qt::DisplayRole))) {
        size.setWidth(120);
    }
    return size;
}
