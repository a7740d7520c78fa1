#include "LibraryRowCodec.h"

#include "FileMetadata.h"

#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <array>
#include <cstring>

namespace {

enum Column
{
    Root,
    Path,
    Size,
    MtimeNs,
    AnalysisVersion,
    Measured,
    IsValid,
    HeaderRead,
    ModifyTimeText,
    SamplingRate,
    Channels,
    Samples,
    LoopCount,
    MarkerCount,
    BitsMin,
    BitsMax,
    LoopStart,
    LoopEnd,
    Loudness,
    Format,
    Plot,
    MultiPlot,
    ErrorText,
    SamplePeak,
    Metadata,
};

static_assert(sizeof(PlotPoint) == 2, "plots are stored as max/min byte pairs");

QByteArray PlotBytes(const PlotPoint* points, int count)
{
    return QByteArray(reinterpret_cast<const char*>(points), count * int(sizeof(PlotPoint)));
}

// A blob of another length (a damaged or foreign row) fills what it can.
void CopyPlot(const QByteArray& bytes, PlotPoint* points, int count)
{
    const auto n = std::min<std::size_t>(std::size_t(bytes.size()), count * sizeof(PlotPoint));
    std::memcpy(points, bytes.constData(), n);
}

QString Text(const std::string& s)
{
    return QString::fromStdString(s);
}

SharedText Shared(const QVariant& value)
{
    return SharedText(value.toString().toStdString());
}

} // namespace

const QStringList& LibraryRowCodec::Columns()
{
    static const QStringList columns{
        QStringLiteral("root"),
        QStringLiteral("path"),
        QStringLiteral("size"),
        QStringLiteral("mtime_ns"),
        QStringLiteral("analysis_version"),
        QStringLiteral("measured"),
        QStringLiteral("is_valid"),
        QStringLiteral("header_read"),
        QStringLiteral("modify_time"),
        QStringLiteral("sampling_rate"),
        QStringLiteral("channels"),
        QStringLiteral("samples"),
        QStringLiteral("loop_count"),
        QStringLiteral("marker_count"),
        QStringLiteral("bits_min"),
        QStringLiteral("bits_max"),
        QStringLiteral("loop_start"),
        QStringLiteral("loop_end"),
        QStringLiteral("loudness"),
        QStringLiteral("format"),
        QStringLiteral("plot"),
        QStringLiteral("multi_plot"),
        QStringLiteral("error_text"),
        QStringLiteral("sample_peak"),
        QStringLiteral("metadata"),
    };
    return columns;
}

void LibraryRowCodec::Bind(QSqlQuery& q, const LibraryRow& row, int analysisVersion)
{
    const AudioFileInfo& i = row.info;
    q.addBindValue(KeyValue(row.key.root));
    q.addBindValue(KeyValue(row.key.path));
    q.addBindValue(qint64(row.stamp.size));
    q.addBindValue(qint64(row.stamp.mtimeNs));
    q.addBindValue(analysisVersion);
    q.addBindValue(i.measuredParts);
    q.addBindValue(i.isValid);
    q.addBindValue(i.isHeaderRead);
    q.addBindValue(Text(i.modifyTime.text()));
    q.addBindValue(i.samplingRate);
    q.addBindValue(i.channels);
    q.addBindValue(i.samples);
    q.addBindValue(i.loopCount);
    q.addBindValue(i.markerCount);
    q.addBindValue(i.bitDepthOrMinKbps);
    q.addBindValue(i.bitDepthOrMaxKbps);
    q.addBindValue(i.loopStart);
    q.addBindValue(i.loopEnd);
    q.addBindValue(double(i.loudness));
    q.addBindValue(Text(i.format.str()));
    q.addBindValue(PlotBytes(i.plot.data(), kPlotPoints));
    // Only the channels the file has, and only when they were plotted.
    const int lanes = std::min(std::clamp(i.channels, 0, kMaxPlotChannels), i.multiPlotLanes());
    q.addBindValue(i.hasMultiPlot() ? QVariant(PlotBytes(i.multiPlotLane(0), lanes * kPlotPoints))
                                    : QVariant());
    q.addBindValue(Text(i.errorText.str()));
    q.addBindValue(double(i.samplePeak));
    const std::string metadata = StoredMetadataBytes(i.metadata.get());
    q.addBindValue(metadata.empty() ? QVariant()
                                    : QVariant(QByteArray(metadata.data(), int(metadata.size()))));
}

QVariant LibraryRowCodec::KeyValue(const QString& part)
{
    return part.isNull() ? QVariant(QStringLiteral("")) : QVariant(part);
}

LibraryKey LibraryRowCodec::ReadKey(const QSqlQuery& q)
{
    return {q.value(Root).toString(), q.value(Path).toString()};
}

void LibraryRowCodec::Read(const QSqlQuery& q, LibraryRow& row)
{
    AudioFileInfo& i = row.info;
    row.key = ReadKey(q);
    row.stamp.size = q.value(Size).toLongLong();
    row.stamp.mtimeNs = q.value(MtimeNs).toLongLong();
    i.measuredParts = q.value(Measured).toInt();
    i.isValid = q.value(IsValid).toInt();
    i.isHeaderRead = q.value(HeaderRead).toInt();
    i.fileSize = row.stamp.size;
    i.modifyTime = ModifyTime::FromText(q.value(ModifyTimeText).toString().toStdString());
    i.samplingRate = q.value(SamplingRate).toInt();
    i.channels = q.value(Channels).toInt();
    i.samples = q.value(Samples).toInt();
    i.loopCount = q.value(LoopCount).toInt();
    i.markerCount = q.value(MarkerCount).toInt();
    i.bitDepthOrMinKbps = q.value(BitsMin).toInt();
    i.bitDepthOrMaxKbps = q.value(BitsMax).toInt();
    i.loopStart = q.value(LoopStart).toInt();
    i.loopEnd = q.value(LoopEnd).toInt();
    i.loudness = q.value(Loudness).toFloat();
    i.format = Shared(q.value(Format));
    CopyPlot(q.value(Plot).toByteArray(), i.plot.data(), kPlotPoints);
    const QVariant multi = q.value(MultiPlot);
    if (!multi.isNull()) {
        std::array<PlotPoint, kMaxPlotChannels * kPlotPoints> lanes{};
        CopyPlot(multi.toByteArray(), lanes.data(), kMaxPlotChannels * kPlotPoints);
        i.setMultiPlot(lanes.data(), std::clamp(i.channels, 0, kMaxPlotChannels));
    }
    i.errorText = Shared(q.value(ErrorText));
    i.samplePeak = q.value(SamplePeak).toFloat();
    const QByteArray metadata = q.value(Metadata).toByteArray();
    i.metadata = metadata.isEmpty() ? nullptr
                                    : MetadataFromStoredBytes(std::string_view(
                                          metadata.constData(), std::size_t(metadata.size())));
}
