// The waveform cell: plot values to pixel columns, lanes, marker, delegate colours.
#include "TeskManager.h"
#include "WaveformStyledItem.h"
#include "WaveformStyledItemDelegate.h"

#include <QImage>
#include <QPainter>
#include <QStandardItemModel>
#include <QStyleOptionViewItem>
#include <QtTest>

namespace {

using PlotPointer = QSharedPointer<WaveformStyledItem>;

// A repeating ramp that reaches both full-scale ends.
QVector<std::int8_t> rampPlot()
{
    QVector<std::int8_t> v(500);
    for (int k = 0; k < v.size(); ++k)
        v[k] = static_cast<std::int8_t>((k * 7) % 201 - 100);
    return v;
}

int yOf(int value, int height)
{
    return (100 - value) * height / 200;
}

bool isBlueish(QRgb c)
{
    return qBlue(c) > 150 && qRed(c) < 140 && qGreen(c) < 140;
}

bool isGreenish(QRgb c)
{
    return qGreen(c) > qRed(c) + 40 && qGreen(c) > qBlue(c) + 40;
}

QImage render(WaveformStyledItem& item, QSize size, QRect cell, qreal ratio = 1.0)
{
    QImage image(size * ratio, QImage::Format_ARGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::white);
    QPainter painter(&image);
    item.paint(&painter, cell);
    return image;
}

// Columns in [from, to) with a marker pixel at row y.
QList<int> markerColumns(const QImage& image, int y, int from, int to)
{
    QList<int> columns;
    for (int x = from; x < to; ++x) {
        if (isBlueish(image.pixel(x, y)))
            columns << x;
    }
    return columns;
}

} // namespace

class TestWaveformItem : public QObject
{
    Q_OBJECT
private slots:
    void polylineByWidth_data();
    void polylineByWidth();
    void marker_data();
    void marker();
    void delegatePaintsPlotCells();
};

void TestWaveformItem::polylineByWidth_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::newRow("500: one value a column") << 500 << 40;
    QTest::newRow("250: max and min of two") << 250 << 30;
    // 500/800 = 0.625 is exact in binary, so column x shows value floor(5x/8).
    QTest::newRow("800: values repeat") << 800 << 22;
}

void TestWaveformItem::polylineByWidth()
{
    QFETCH(int, width);
    QFETCH(int, height);
    const QVector<std::int8_t> v = rampPlot();
    const QPolygon line = WaveformStyledItem::buildPolyline(v, width, height, 0);
    QPolygon expected;
    expected << QPoint(0, height / 2);
    for (int x = 0; x < width; ++x) {
        if (width < 500) {
            const int a = v[2 * x], b = v[2 * x + 1];
            expected << QPoint(x, yOf(qMax(a, b), height)) << QPoint(x, yOf(qMin(a, b), height));
        } else {
            expected << QPoint(x, yOf(v[x * 500 / width], height));
        }
    }
    expected << QPoint(width, height / 2);
    QCOMPARE(line, expected);
}

void TestWaveformItem::marker_data()
{
    QTest::addColumn<double>("ratio");
    QTest::addColumn<QRect>("cell");
    QTest::addColumn<QList<int>>("columns");
    const QRect plain(0, 0, 120, 30);
    QTest::newRow("half of 120") << 0.5 << plain << QList<int>{59, 60};
    QTest::newRow("at the start") << 0.0 << plain << QList<int>{};
    QTest::newRow("negative") << -0.2 << plain << QList<int>{};
    QTest::newRow("cell moved") << 0.25 << QRect(100, 20, 200, 30) << QList<int>{149, 150};
}

void TestWaveformItem::marker()
{
    QFETCH(double, ratio);
    QFETCH(QRect, cell);
    QFETCH(QList<int>, columns);
    WaveformStyledItem item(QVector<std::int8_t>(500, 0), ratio);
    const QImage image = render(item, QSize(300, 60), cell);
    // Looked for above the flat plot, which runs along the middle.
    const QList<int> found = markerColumns(image, cell.top() + 4, 0, 300);
    QCOMPARE(found.isEmpty(), columns.isEmpty());
    for (int x : found)
        QVERIFY2(columns.contains(x), qPrintable(QString::number(x)));
    if (cell.top() >= 10)
        QVERIFY(markerColumns(image, cell.top() - 10, 0, 300).isEmpty());
}

void TestWaveformItem::delegatePaintsPlotCells()
{
    TeskManager manager;
    WaveformStyledItemDelegate delegate(&manager);
    QStandardItemModel model(1, 2);
    QVector<std::int8_t> plot(500, 0);
    // A full-scale spike in the middle column of a 120 px cell.
    plot[250] = 100;
    plot[251] = -100;
    model.setData(model.index(0, 0), QVariant::fromValue(PlotPointer::create(plot, 0.0)));
    model.setData(model.index(0, 1), QStringLiteral("text"));
    const auto paint = [&delegate](const QModelIndex& index, bool selected) {
        QImage image(120, 30, QImage::Format_ARGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        QStyleOptionViewItem option;
        option.rect = QRect(0, 0, 120, 30);
        option.state =
            QStyle::State_Enabled | (selected ? QStyle::State_Selected : QStyle::State_None);
        option.palette.setColor(QPalette::Highlight, QColor(0, 0, 200));
        delegate.paint(&painter, option, index);
        return image;
    };
    // A selected plot cell is pale yellow, not the highlight; a text cell
    // takes the highlight.
    const QColor pale(255, 255, 192);
    QImage image = paint(model.index(0, 0), true);
    QCOMPARE(QColor(image.pixel(5, 3)), pale);
    QCOMPARE(QColor(image.pixel(110, 27)), pale);
    image = paint(model.index(0, 1), true);
    QVERIFY(QColor(image.pixel(1, 1)) != pale);
    QVERIFY(!markerColumns(image, 1, 0, 120).isEmpty());
    // Unselected, the plot is drawn through the item on the cell's own
    // background: 500 values over 120 columns put the spike in column 60.
    image = paint(model.index(0, 0), false);
    QCOMPARE(QColor(image.pixel(5, 3)), QColor(Qt::white));
    QVERIFY(isGreenish(image.pixel(60, 2)) && isGreenish(image.pixel(60, 27)));
    QVERIFY(!isGreenish(image.pixel(20, 2)));
}

QTEST_MAIN(TestWaveformItem)
#include "tst_waveformitem.moc"
