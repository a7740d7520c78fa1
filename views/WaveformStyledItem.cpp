#include "WaveformStyledItem.h"

#include <QPaintDevice>
#include <QPainter>
#include <QPen>
#include <QRect>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// Walks the pixel columns of a cell and reduces the values falling into each
// column to one point, or to a max and a min point when several do. Both plot
// forms share the walk; they differ in how a value maps to a point.
template<typename Line, typename ValuePoint, typename MiddlePoint>
Line walkColumns(const QVector<std::int8_t>& values, int width, std::uint32_t stepSetting,
                 ValuePoint valuePoint, MiddlePoint middlePoint)
{
    const int n = values.size();
    const float step = stepSetting < 1 ? static_cast<float>(n) / static_cast<float>(width)
                                       : static_cast<float>(stepSetting);
    Line line;
    line.reserve(2 * std::max(width, 0) + 3);
    line.append(middlePoint(0));
    float p = 0.0f;
    int x = 0;
    for (; x < width; ++x) {
        const int i = static_cast<int>(std::floor(p));
        if (i >= n) {
            break;
        }
        p += step;
        const int j = static_cast<int>(std::floor(p));
        if (j - i >= 2) {
            int hi = -100;
            int lo = 100;
            for (int k = i; k < std::min(n, j); ++k) {
                hi = std::max<int>(hi, values[k]);
                lo = std::min<int>(lo, values[k]);
            }
            line.append(valuePoint(x, hi));
            line.append(valuePoint(x, lo));
        } else {
            line.append(valuePoint(x, values[i]));
        }
    }
    // A cell wider than the data ends in a flat line along the middle.
    if (x < width) {
        line.append(middlePoint(x));
    }
    line.append(middlePoint(width));
    return line;
}

} // namespace

int RegisterWaveformStyledItemMetaType()
{
    static const int id =
        qRegisterMetaType<QSharedPointer<WaveformStyledItem>>("QSharedPointer<WaveformStyledItem>");
    return id;
}

WaveformStyledItem::WaveformStyledItem(QVector<std::int8_t> plot, double position,
                                       std::uint32_t step)
    : plotData(std::move(plot))
    , style(step)
    , playPosition(position)
{}

WaveformStyledItem::WaveformStyledItem(QVector<QVector<std::int8_t>> channelPlots, double position,
                                       std::uint32_t step)
    : isMultiChannel(true)
    , channelPlotData(std::move(channelPlots))
    , style(step)
    , playPosition(position)
{}

QPolygon WaveformStyledItem::buildPolyline(const QVector<std::int8_t>& values, int width,
                                           int height, std::uint32_t step)
{
    // Integer quotients truncated toward zero: +100 is the top edge, -100 the bottom.
    return walkColumns<QPolygon>(
        values, width, step, [height](int x, int v) { return QPoint(x, (100 - v) * height / 200); },
        [height](int x) { return QPoint(x, height * 100 / 200); });
}

QPolygonF WaveformStyledItem::buildLanePolyline(const QVector<std::int8_t>& values, int width,
                                                float laneTop, float laneHeight, std::uint32_t step)
{
    const qreal middle = laneTop + laneHeight * 100.0f / 200.0f;
    return walkColumns<QPolygonF>(
        values, width, step,
        [laneTop, laneHeight](int x, int v) {
            return QPointF(x, laneTop + static_cast<float>(100 - v) * laneHeight / 200.0f);
        },
        [middle](int x) { return QPointF(x, middle); });
}

void WaveformStyledItem::rebuild(int width, int height)
{
    if (!isMultiChannel) {
        polyline = buildPolyline(plotData, width, height, style);
        return;
    }
    channelPolylines.clear();
    const int count = channelPlotData.size();
    if (count == 0) {
        return;
    }
    const float lane = static_cast<float>(height) / static_cast<float>(count);
    channelPolylines.reserve(count);
    for (int k = 0; k < count; ++k) {
        channelPolylines.append(buildLanePolyline(channelPlotData[k], width,
                                                  static_cast<float>(k) * lane, lane, style));
    }
}

void WaveformStyledItem::paint(QPainter* painter, const QRect& rect)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, true);
    painter->translate(rect.topLeft());
    // On a high-density screen the lines are built and drawn in device pixels,
    // so the plot shows as much detail as the screen has, at the usual weight.
    const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
    const int width = qRound(rect.width() * ratio);
    const int height = qRound(rect.height() * ratio);
    if (ratio != 1.0) {
        painter->scale(1.0 / ratio, 1.0 / ratio);
    }
    painter->setPen(QPen(QColor(32, 168, 32), ratio));

    if (width != cachedWidth) {
        rebuild(width, height);
        cachedWidth = width;
    }
    if (isMultiChannel) {
        for (const QPolygonF& line : qAsConst(channelPolylines)) {
            painter->drawPolyline(line);
        }
    } else {
        painter->drawPolyline(polyline);
    }

    if (playPosition > 0.0 && playPosition < 1.0) {
        painter->setPen(QPen(QColor(Qt::blue), ratio));
        const int x = static_cast<int>(width * playPosition);
        painter->drawLine(x, 0, x, height);
    }
    painter->restore();
}
