#include "ScanReport.h"

#include "AudioFileInfo.h"
#include "CellFormat.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>

namespace {

QJsonArray PlotArray(const PlotPoint* points)
{
    QJsonArray values;
    for (int i = 0; i < kPlotPoints; ++i) {
        values.append(points[i].max);
        values.append(points[i].min);
    }
    return values;
}

} // namespace

QString ScanReport::CsvField(const QString& text)
{
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) &&
        !text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1String("\""), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString ScanReport::CsvHeader()
{
    QStringList fields;
    for (const QString& label : TableColumnHeaderLabels())
        fields << CsvField(label);
    return fields.join(QLatin1Char(','));
}

QString ScanReport::CsvRow(const QString& path, const AudioFileInfo& info, bool loudnessVoltMode)
{
    QStringList fields;
    for (int column = 0; column < TableColumnCount; ++column) {
        QString cell;
        if (column == ColumnFile)
            cell = QFileInfo(path).fileName();
        else if (column == ColumnFullPath)
            cell = path;
        else
            cell = RecordCellValue(column, info, false, loudnessVoltMode).toString();
        fields << CsvField(cell);
    }
    return fields.join(QLatin1Char(','));
}

QByteArray ScanReport::JsonObject(const QString& path, const AudioFileInfo& info)
{
    QJsonObject o;
    o.insert(QStringLiteral("path"), path);
    o.insert(QStringLiteral("isValid"), info.isValid);
    o.insert(QStringLiteral("isHeaderRead"), info.isHeaderRead);
    o.insert(QStringLiteral("fileSize"), static_cast<qint64>(info.fileSize));
    o.insert(QStringLiteral("modifyTime"), QString::fromStdString(info.modifyTime));
    o.insert(QStringLiteral("samplingRate"), info.samplingRate);
    o.insert(QStringLiteral("channels"), info.channels);
    o.insert(QStringLiteral("samples"), info.samples);
    o.insert(QStringLiteral("loopCount"), info.loopCount);
    o.insert(QStringLiteral("markerCount"), info.markerCount);
    o.insert(QStringLiteral("bitDepthOrMinKbps"), info.bitDepthOrMinKbps);
    o.insert(QStringLiteral("bitDepthOrMaxKbps"), info.bitDepthOrMaxKbps);
    o.insert(QStringLiteral("loopStart"), info.loopStart);
    o.insert(QStringLiteral("loopEnd"), info.loopEnd);
    o.insert(QStringLiteral("loudness"), double(info.loudness));
    o.insert(QStringLiteral("format"), QString::fromStdString(info.format));
    o.insert(QStringLiteral("plot"), PlotArray(info.plot.data()));
    o.insert(QStringLiteral("isMultiPlotValid"), info.isMultiPlotValid);
    QJsonArray multi;
    const int channels = std::clamp(info.channels, 0, kMaxPlotChannels);
    for (int c = 0; c < channels; ++c)
        multi.append(PlotArray(info.multiPlot.data() + c * kPlotPoints));
    o.insert(QStringLiteral("multiPlot"), multi);
    o.insert(QStringLiteral("errorText"), QString::fromStdString(info.errorText));
    o.insert(QStringLiteral("samplePeak"), double(info.samplePeak));
    return QJsonDocument(o).toJson(QJsonDocument::Compact);
}
