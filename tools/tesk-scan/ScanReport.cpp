#include "ScanReport.h"

#include "AudioFileInfo.h"
#include "CellFormat.h"
#include "FileMetadata.h"
#include "MetadataColumns.h"
#include "UcsName.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>
#include <array>

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

QJsonObject MetadataObject(const AudioFileInfo& info)
{
    QJsonObject o;
    const FileMetadata* m = info.metadata.get();
    if (!m)
        return o;
    for (const FileMetadata::Entry& entry : m->entries())
        o.insert(QLatin1String(MetadataKeyName(entry.key)),
                 QString::fromUtf8(entry.text.data(), static_cast<int>(entry.text.size())));
    if (m->hasTimeReference) {
        o.insert(QStringLiteral("timeReference"), static_cast<qint64>(m->timeReference));
        o.insert(QStringLiteral("timecode"), FormatTimecode(m->timeReference, info.samplingRate,
                                                            m->text(MetadataKey::TimecodeRate),
                                                            m->text(MetadataKey::TimecodeFlag)));
    }
    if (m->hasAcid) {
        QJsonObject acid;
        acid.insert(QStringLiteral("oneShot"), m->acid.isOneShot());
        if (m->acid.hasRootNote())
            acid.insert(QStringLiteral("rootNote"), m->acid.rootNote);
        acid.insert(QStringLiteral("beats"), static_cast<qint64>(m->acid.beats));
        acid.insert(QStringLiteral("meterNumerator"), m->acid.meterNumerator);
        acid.insert(QStringLiteral("meterDenominator"), m->acid.meterDenominator);
        acid.insert(QStringLiteral("tempo"), double(m->acid.tempo));
        o.insert(QStringLiteral("acid"), acid);
    }
    return o;
}

QJsonObject UcsObject(const UcsName& ucs)
{
    QJsonObject o;
    if (!ucs.isValid())
        return o;
    const std::pair<const char*, const QString*> fields[] = {
        {"catId", &ucs.catId},
        {"category", &ucs.category},
        {"subCategory", &ucs.subCategory},
        {"fxName", &ucs.fxName},
        {"creatorId", &ucs.creatorId},
        {"sourceId", &ucs.sourceId},
        {"userCategory", &ucs.userCategory},
        {"userData", &ucs.userData},
    };
    for (const auto& [key, value] : fields) {
        if (!value->isEmpty())
            o.insert(QLatin1String(key), *value);
    }
    return o;
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
    for (const QString& label : TableColumnHeaderLabels() + MetadataColumnHeaderLabels())
        fields << CsvField(label);
    return fields.join(QLatin1Char(','));
}

QString ScanReport::CsvRow(const QString& path, const AudioFileInfo& info, bool loudnessVoltMode,
                           const UcsCatalog* catalog)
{
    const UcsName ucs = ParseUcsName(QFileInfo(path).fileName(), catalog);
    QStringList fields;
    for (int column = 0; column < TableColumnCount; ++column) {
        QString cell;
        if (column == ColumnFile)
            cell = QFileInfo(path).fileName();
        else if (column == ColumnFullPath)
            cell = path;
        else if (IsMetadataColumn(column))
            cell = MetadataCellValue(column, info.metadata.get(), info.samplingRate, ucs, false)
                       .toString();
        else
            cell = RecordCellValue(column, info, false, loudnessVoltMode).toString();
        fields << CsvField(cell);
    }
    return fields.join(QLatin1Char(','));
}

QByteArray ScanReport::JsonObject(const QString& path, const AudioFileInfo& info,
                                  const UcsCatalog* catalog)
{
    QJsonObject o;
    o.insert(QStringLiteral("path"), path);
    o.insert(QStringLiteral("isValid"), info.isValid);
    o.insert(QStringLiteral("isHeaderRead"), info.isHeaderRead);
    o.insert(QStringLiteral("fileSize"), static_cast<qint64>(info.fileSize));
    o.insert(QStringLiteral("modifyTime"), QString::fromStdString(info.modifyTime.text()));
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
    o.insert(QStringLiteral("format"), QString::fromStdString(info.format.str()));
    o.insert(QStringLiteral("plot"), PlotArray(info.plot.data()));
    o.insert(QStringLiteral("isMultiPlotValid"), info.hasMultiPlot() ? 1 : 0);
    // One array per channel (the first eight), zeros where none was plotted.
    static const std::array<PlotPoint, kPlotPoints> kFlat{};
    QJsonArray multi;
    const int channels = std::clamp(info.channels, 0, kMaxPlotChannels);
    for (int c = 0; c < channels; ++c) {
        const PlotPoint* lane = info.multiPlotLane(c);
        multi.append(PlotArray(lane ? lane : kFlat.data()));
    }
    o.insert(QStringLiteral("multiPlot"), multi);
    o.insert(QStringLiteral("metadata"), MetadataObject(info));
    o.insert(QStringLiteral("ucs"), UcsObject(ParseUcsName(QFileInfo(path).fileName(), catalog)));
    o.insert(QStringLiteral("errorText"), QString::fromStdString(info.errorText.str()));
    o.insert(QStringLiteral("samplePeak"), double(info.samplePeak));
    return QJsonDocument(o).toJson(QJsonDocument::Compact);
}
