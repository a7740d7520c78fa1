#include "WaveformStyledItem.h"

#include <QImage>
#include <QPainter>
#include <QtTest>

namespace {

// 500 values: a repeating ramp that reaches both full-scale ends, so that the
// max/min reduction and the y mapping are both visible.
QVector<std::int8_t> rampPlot()
{
    QVector<std::int8_t> v(500);
    for (int k = 0; k < v.size(); ++k) {
        v[k] = static_cast<std::int8_t>((k * 7) % 201 - 100);
    }
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

QImage render(WaveformStyledItem& item, QSize size, QRect cell)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    item.paint(&painter, cell);
    return image;
}

} // namespace

class TestWaveformItem : public QObject
{
    Q_OBJECT
private slots:
    void oneValuePerColumnAt500();
    void maxAndMinPerColumnAt250();
    void widerCellRepeatsValuesAt800();
    void fixedStepStopsAndRunsAlongTheMiddle();
    void laneMapping();
    void markerAtHalfOf120();
    void noMarkerAtTheEnds_data();
    void noMarkerAtTheEnds();
    void markerFollowsCellOffset();
    void metatypeRoundTrip();
    void denseScreenDrawsInDevicePixels();
};

void TestWaveformItem::oneValuePerColumnAt500()
{
    const QVector<std::int8_t> v = rampPlot();
    const int h = 40;
    const QPolygon line = WaveformStyledItem::buildPolyline(v, 500, h, 0);
    QCOMPARE(line.size(), 502);
    QCOMPARE(line.first(), QPoint(0, 20));
    for (int x = 0; x < 500; ++x) {
        QCOMPARE(line[1 + x], QPoint(x, yOf(v[x], h)));
    }
    QCOMPARE(line.last(), QPoint(500, 20));
    // Full scale reaches the edges exactly.
    QVector<std::int8_t> edges(500, 0);
    edges[0] = 100;
    edges[1] = -100;
    const QPolygon e = WaveformStyledItem::buildPolyline(edges, 500, h, 0);
    QCOMPARE(e[1].y(), 0);
    QCOMPARE(e[2].y(), h);
}

void TestWaveformItem::maxAndMinPerColumnAt250()
{
    const QVector<std::int8_t> v = rampPlot();
    const int h = 30;
    const QPolygon line = WaveformStyledItem::buildPolyline(v, 250, h, 0);
    QCOMPARE(line.size(), 1 + 2 * 250 + 1);
    for (int x = 0; x < 250; ++x) {
        const int a = v[2 * x];
        const int b = v[2 * x + 1];
        QCOMPARE(line[1 + 2 * x], QPoint(x, yOf(qMax(a, b), h)));
        QCOMPARE(line[2 + 2 * x], QPoint(x, yOf(qMin(a, b), h)));
    }
    QCOMPARE(line.last(), QPoint(250, 15));
}

void TestWaveformItem::widerCellRepeatsValuesAt800()
{
    const QVector<std::int8_t> v = rampPlot();
    const int h = 22;
    const QPolygon line = WaveformStyledItem::buildPolyline(v, 800, h, 0);
    // 500/800 = 0.625 is exact in binary, so column x shows value floor(5x/8).
    QCOMPARE(line.size(), 1 + 800 + 1);
    for (int x = 0; x < 800; ++x) {
        QCOMPARE(line[1 + x], QPoint(x, yOf(v[x * 5 / 8], h)));
    }
    QCOMPARE(line.last(), QPoint(800, 11));
}

void TestWaveformItem::fixedStepStopsAndRunsAlongTheMiddle()
{
    const QVector<std::int8_t> v = rampPlot();
    const QPolygon line = WaveformStyledItem::buildPolyline(v, 800, 40, 1);
    QCOMPARE(line.size(), 1 + 500 + 2);
    QCOMPARE(line[500], QPoint(499, yOf(v[499], 40)));
    QCOMPARE(line[501], QPoint(500, 20));
    QCOMPARE(line[502], QPoint(800, 20));
}

void TestWaveformItem::laneMapping()
{
    QVector<std::int8_t> top(500, 0);
    QVector<std::int8_t> bottom(500, 0);
    bottom[0] = 100;
    bottom[1] = -100;
    WaveformStyledItem item(QVector<QVector<std::int8_t>>{top, bottom}, 0.0);
    QImage image(500, 40, QImage::Format_ARGB32);
    QPainter painter(&image);
    item.paint(&painter, QRect(0, 0, 500, 40));
    const QVector<QPolygonF>& lanes = item.cachedChannelPolylines();
    QCOMPARE(lanes.size(), 2);
    QCOMPARE(lanes[0].first(), QPointF(0, 10));
    QCOMPARE(lanes[0][1], QPointF(0, 10));
    QCOMPARE(lanes[1].first(), QPointF(0, 30));
    QCOMPARE(lanes[1][1], QPointF(0, 20)); // +100: top of the second lane
    QCOMPARE(lanes[1][2], QPointF(1, 40)); // -100: bottom of the cell
    QCOMPARE(lanes[1].last(), QPointF(500, 30));
}

void TestWaveformItem::markerAtHalfOf120()
{
    WaveformStyledItem item(QVector<std::int8_t>(500, 0), 0.5);
    const QImage image = render(item, QSize(120, 30), QRect(0, 0, 120, 30));
    // The flat plot runs along y 15; look above it.
    int blueColumns = 0;
    for (int x = 0; x < 120; ++x) {
        if (isBlueish(image.pixel(x, 4))) {
            ++blueColumns;
            QVERIFY2(x == 59 || x == 60, qPrintable(QString::number(x)));
        }
    }
    QVERIFY(blueColumns >= 1);
    QVERIFY(qGreen(image.pixel(30, 15)) > qRed(image.pixel(30, 15)));
}

void TestWaveformItem::noMarkerAtTheEnds_data()
{
    QTest::addColumn<double>("ratio");
    QTest::newRow("zero") << 0.0;
    QTest::newRow("one") << 1.0;
    QTest::newRow("negative") << -0.2;
}

void TestWaveformItem::noMarkerAtTheEnds()
{
    QFETCH(double, ratio);
    WaveformStyledItem item(QVector<std::int8_t>(500, 0), ratio);
    const QImage image = render(item, QSize(120, 30), QRect(0, 0, 120, 30));
    for (int x = 0; x < 120; ++x) {
        for (int y = 0; y < 30; ++y) {
            QVERIFY(!isBlueish(image.pixel(x, y)));
        }
    }
}

void TestWaveformItem::markerFollowsCellOffset()
{
    WaveformStyledItem item(QVector<std::int8_t>(500, 0), 0.25);
    const QImage image = render(item, QSize(300, 60), QRect(100, 20, 200, 30));
    QVERIFY(isBlueish(image.pixel(149, 24)) || isBlueish(image.pixel(150, 24)));
    QVERIFY(!isBlueish(image.pixel(150, 10))); // above the cell
    QVERIFY(!isBlueish(image.pixel(50, 24)));
}

void TestWaveformItem::denseScreenDrawsInDevicePixels()
{
    // A 250-pixel cell on a screen of twice the density: 500 device columns,
    // one value each, as on a 500-pixel cell of a plain screen.
    QVector<std::int8_t> values(500);
    for (int k = 0; k < 500; ++k)
        values[k] = static_cast<std::int8_t>(k % 2 == 0 ? 80 : -80);
    WaveformStyledItem item(values, 0.5);
    QImage image(600, 60, QImage::Format_ARGB32);
    image.setDevicePixelRatio(2.0);
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        item.paint(&painter, QRect(0, 0, 250, 30));
    }
    QCOMPARE(item.cachedPolyline().size(), 502);
    QCOMPARE(item.cachedPolyline().at(1), QPoint(0, yOf(80, 60)));
    QCOMPARE(item.cachedPolyline().at(2), QPoint(1, yOf(-80, 60)));
    // Still in the cell, at its logical size: nothing right of 500 device pixels.
    for (int y = 0; y < 60; ++y)
        QCOMPARE(image.pixel(520, y), QColor(Qt::white).rgb());
    // The marker at the middle of the cell, one logical pixel wide.
    int blue = 0;
    for (int x = 240; x < 260; ++x)
        blue += isBlueish(image.pixel(x, 5)) ? 1 : 0;
    QVERIFY(blue >= 1 && blue <= 3);
}

void TestWaveformItem::metatypeRoundTrip()
{
    RegisterWaveformStyledItemMetaType();
    QCOMPARE(QByteArray(QMetaType::typeName(RegisterWaveformStyledItemMetaType())),
             QByteArray("QSharedPointer<WaveformStyledItem>"));
    auto item = QSharedPointer<WaveformStyledItem>::create(QVector<std::int8_t>(500, 3), 0.1);
    const QVariant value = QVariant::fromValue(item);
    QVERIFY(value.canConvert<QSharedPointer<WaveformStyledItem>>());
    QCOMPARE(value.value<QSharedPointer<WaveformStyledItem>>().data(), item.data());
    QVERIFY(!QVariant(QStringLiteral("x")).canConvert<QSharedPointer<WaveformStyledItem>>());
}

QTEST_MAIN(TestWaveformItem)
#include "tst_waveformitem.moc"
