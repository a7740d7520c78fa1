#include "TeskManager.h"
#include "WaveformStyledItem.h"
#include "WaveformStyledItemDelegate.h"

#include <QImage>
#include <QPainter>
#include <QStandardItemModel>
#include <QStyleOptionViewItem>
#include <QTableView>
#include <QtTest>

namespace {

using PlotPointer = QSharedPointer<WaveformStyledItem>;

QImage paintCell(WaveformStyledItemDelegate& delegate, const QModelIndex& index, QSize size,
                 bool selected)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    QStyleOptionViewItem option;
    option.rect = QRect(QPoint(0, 0), size);
    option.state = QStyle::State_Enabled;
    if (selected) {
        option.state |= QStyle::State_Selected;
    }
    option.palette.setColor(QPalette::Highlight, QColor(0, 0, 200));
    delegate.paint(&painter, option, index);
    return image;
}

} // namespace

class TestWaveformDelegate : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void selectedPlotCellIsPaleYellow();
    void unselectedPlotCellKeepsBackground();
    void selectedTextCellUsesHighlight();
    void plotIsDrawnThroughItem();
    void sizeHintOfPlotCell();

private:
    QStandardItemModel model{1, 2};
    TeskManager* manager = nullptr;
};

void TestWaveformDelegate::initTestCase()
{
    RegisterWaveformStyledItemMetaType();
    manager = new TeskManager(this);
    QVector<std::int8_t> plot(500, 0);
    // A full-scale spike in the middle column of a 120 px cell.
    plot[250] = 100;
    plot[251] = -100;
    model.setData(model.index(0, 0), QVariant::fromValue(PlotPointer::create(plot, 0.0)));
    model.setData(model.index(0, 1), QStringLiteral("text"));
}

void TestWaveformDelegate::selectedPlotCellIsPaleYellow()
{
    WaveformStyledItemDelegate delegate(manager);
    const QImage image = paintCell(delegate, model.index(0, 0), QSize(120, 30), true);
    QCOMPARE(QColor(image.pixel(5, 3)), QColor(255, 255, 192));
    QCOMPARE(QColor(image.pixel(110, 27)), QColor(255, 255, 192));
}

void TestWaveformDelegate::unselectedPlotCellKeepsBackground()
{
    WaveformStyledItemDelegate delegate(manager);
    const QImage image = paintCell(delegate, model.index(0, 0), QSize(120, 30), false);
    QCOMPARE(QColor(image.pixel(5, 3)), QColor(Qt::white));
}

void TestWaveformDelegate::selectedTextCellUsesHighlight()
{
    WaveformStyledItemDelegate delegate(manager);
    const QImage image = paintCell(delegate, model.index(0, 1), QSize(120, 30), true);
    int highlighted = 0;
    for (int x = 0; x < 120; ++x) {
        const QColor c(image.pixel(x, 1));
        QVERIFY(c != QColor(255, 255, 192));
        highlighted += c == QColor(0, 0, 200) ? 1 : 0;
    }
    QVERIFY(highlighted > 0);
}

void TestWaveformDelegate::plotIsDrawnThroughItem()
{
    WaveformStyledItemDelegate delegate(manager);
    const QImage image = paintCell(delegate, model.index(0, 0), QSize(120, 30), false);
    // 500 values over 120 columns: the spike at values 250/251 lands in column 60,
    // reaching from the top edge to the bottom edge.
    auto greenish = [](QRgb c) { return qGreen(c) > qRed(c) + 40 && qGreen(c) > qBlue(c) + 40; };
    QVERIFY(greenish(image.pixel(60, 2)));
    QVERIFY(greenish(image.pixel(60, 27)));
    QVERIFY(!greenish(image.pixel(20, 2)));
    QVERIFY(greenish(image.pixel(20, 15)) || greenish(image.pixel(20, 14)));
}

void TestWaveformDelegate::sizeHintOfPlotCell()
{
    WaveformStyledItemDelegate delegate(manager);
    QStyleOptionViewItem option;
    QCOMPARE(delegate.sizeHint(option, model.index(0, 0)).width(), 120);
    QCOMPARE(delegate.sizeHint(option, model.index(0, 0)).height(),
             QStyledItemDelegate().sizeHint(option, model.index(0, 0)).height());
    QCOMPARE(delegate.sizeHint(option, model.index(0, 1)),
             QStyledItemDelegate().sizeHint(option, model.index(0, 1)));
}

QTEST_MAIN(TestWaveformDelegate)
#include "tst_waveformdelegate.moc"
