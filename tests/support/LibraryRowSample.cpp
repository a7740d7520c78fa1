#include "LibraryRowSample.h"

#include "FileMetadata.h"

#include <tuple>
#include <vector>

namespace fixtures {

LibraryRow FullLibraryRow(const LibraryKey& key)
{
    LibraryRow full{key, {5000000000LL, 1700000000123456789LL}, {}};
    AudioFileInfo& i = full.info;
    std::tie(i.isValid, i.isHeaderRead, i.fileSize, i.samplingRate, i.channels, i.samples,
             i.loopCount, i.markerCount, i.bitDepthOrMinKbps, i.bitDepthOrMaxKbps, i.loopStart,
             i.loopEnd, i.loudness, i.samplePeak) =
        std::make_tuple(0, 1, full.stamp.size, 96000, 3, 123456, 2, 5, 32, 320, 10, 2000, -23.25f,
                        0.5f);
    i.modifyTime = ModifyTime::FromText("2024/01/02 03:04:05");
    i.format = "MP3";
    i.errorText = "E2006110803 : File size is too small.";
    std::vector<PlotPoint> lanes(3 * kPlotPoints);
    for (int k = 0; k < 3 * kPlotPoints; ++k) {
        i.plot[std::size_t(k % kPlotPoints)] = {std::int8_t(k % 100), std::int8_t(-(k % 90))};
        lanes[std::size_t(k)] = {std::int8_t(k % 101), std::int8_t(-(k % 7))};
    }
    i.setMultiPlot(lanes.data(), 3);
    i.measuredParts = AnalysisPartLoudness | AnalysisPartMultiPlot;
    FileMetadata m;
    m.setText(MetadataKey::Description, "Old oak door \xE2\x80\x94 slow creak");
    m.setText(MetadataKey::CueNotes, "one\ntwo");
    m.hasAcid = true;
    m.acid.tempo = 98.5f;
    i.metadata = ShareMetadata(std::move(m));
    return full;
}

QStringList LibraryRowFields(const LibraryRow& row)
{
    const AudioFileInfo& i = row.info;
    QStringList fields;
    fields << row.key.root << row.key.path << QString::fromStdString(i.modifyTime.text())
           << QString::fromStdString(i.format.str()) << QString::fromStdString(i.errorText.str())
           << QString::number(double(i.loudness)) << QString::number(double(i.samplePeak));
    for (const std::int64_t value :
         {row.stamp.size, row.stamp.mtimeNs, i.fileSize, std::int64_t(i.isValid),
          std::int64_t(i.isHeaderRead), std::int64_t(i.samplingRate), std::int64_t(i.channels),
          std::int64_t(i.samples), std::int64_t(i.loopCount), std::int64_t(i.markerCount),
          std::int64_t(i.bitDepthOrMinKbps), std::int64_t(i.bitDepthOrMaxKbps),
          std::int64_t(i.loopStart), std::int64_t(i.loopEnd), std::int64_t(i.measuredParts),
          std::int64_t(i.multiPlotLanes())})
        fields << QString::number(value);
    fields
        << QString::fromLatin1(
               QByteArray(reinterpret_cast<const char*>(i.plot.data()), int(sizeof i.plot)).toHex())
        << QString::fromLatin1(QByteArray(reinterpret_cast<const char*>(i.multiPlotLane(0)),
                                          int(i.multiPlotLanes() * kPlotPoints * sizeof(PlotPoint)))
                                   .toHex())
        << QString::fromLatin1(
               QByteArray::fromStdString(StoredMetadataBytes(i.metadata.get())).toHex());
    return fields;
}

} // namespace fixtures
