#pragma once

#include <QMetaType>
#include <QPolygon>
#include <QPolygonF>
#include <QSharedPointer>
#include <QVector>

#include <cstdint>

class QPainter;
class QRect;

// The waveform overview of one table row, handed from the model to the
// delegate inside a QVariant. Values are {max, min} pairs interleaved, in
// percent of full scale. The polylines are cached per cell width, so a row
// repainted at the same width only draws.
class WaveformStyledItem final
{
public:
    WaveformStyledItem() = default;
    WaveformStyledItem(QVector<std::int8_t> plot, double position, std::uint32_t step = 0);
    WaveformStyledItem(QVector<QVector<std::int8_t>> channelPlots, double position,
                       std::uint32_t step = 0);

    void paint(QPainter* painter, const QRect& rect);

    bool multiChannel() const { return isMultiChannel; }
    double position() const { return playPosition; }
    const QVector<std::int8_t>& plot() const { return plotData; }
    const QVector<QVector<std::int8_t>>& channelPlots() const { return channelPlotData; }

    // The points of the last paint; exposed for the pixel-geometry tests.
    const QPolygon& cachedPolyline() const { return polyline; }
    const QVector<QPolygonF>& cachedChannelPolylines() const { return channelPolylines; }

    static QPolygon buildPolyline(const QVector<std::int8_t>& values, int width, int height,
                                  std::uint32_t step);
    static QPolygonF buildLanePolyline(const QVector<std::int8_t>& values, int width, float laneTop,
                                       float laneHeight, std::uint32_t step);

private:
    void rebuild(int width, int height);

    bool isMultiChannel = false;
    QVector<std::int8_t> plotData;
    QVector<QVector<std::int8_t>> channelPlotData;
    std::uint32_t style = 0;
    double playPosition = 0.0;
    QPolygon polyline;
    QVector<QPolygonF> channelPolylines;
    std::int32_t cachedWidth = -1;
};

Q_DECLARE_METATYPE(QSharedPointer<WaveformStyledItem>)

// Registers the plot metatype under its full name; safe to call more than once.
int RegisterWaveformStyledItemMetaType();
