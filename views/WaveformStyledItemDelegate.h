#pragma once

#include <QBrush>
#include <QStyledItemDelegate>

class TeskManager;

// Paints the "Plots" cells through their WaveformStyledItem and every other
// cell as usual (the model's font role fits the text to the row height).
class WaveformStyledItemDelegate final : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WaveformStyledItemDelegate)
public:
    explicit WaveformStyledItemDelegate(TeskManager* manager, QObject* parent = nullptr);
    ~WaveformStyledItemDelegate() override;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    QBrush selectionBrush;
    TeskManager* manager;
};
