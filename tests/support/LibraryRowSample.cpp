#include "LibraryRowSample.h"

#include "FileMetadata.h"

#include <QTest>

#include <cstring>

namespace fixtures {

LibraryRow FullLibraryRow(const LibraryKey& key)
{
    LibraryRow full;
    full.key = key;
    full.stamp = {5000000000LL, 1700000000123456789LL};
    AudioFileInfo& i = full.info;
    i = {};
    i.isValid = 0;
    i.isHeaderRead = 1;
    i.fileSize = full.stamp.size;
    i.modifyTime = "2024/01/02 03:04:05";
    i.samplingRate = 96000;
    i.channels = 3;
    i.samples = 123456;
    i.loopCount = 2;
    i.markerCount = 5;
    i.bitDepthOrMinKbps = 32;
    i.bitDepthOrMaxKbps = 320;
    i.loopStart = 10;
    i.loopEnd = 2000;
    i.loudness = -23.25f;
    i.format = "MP3";
    for (int k = 0; k < kPlotPoints; ++k)
        i.plot[std::size_t(k)] = {std::int8_t(k % 100), std::int8_t(-(k % 90))};
    i.isMultiPlotValid = 1;
    for (int k = 0; k < 3 * kPlotPoints; ++k)
        i.multiPlot[std::size_t(k)] = {std::int8_t(k % 101), std::int8_t(-(k % 7))};
    i.errorText = "E2006110803 : File size is too small.";
    i.samplePeak = 0.5f;
    i.measuredParts = AnalysisPartLoudness | AnalysisPartMultiPlot;
    FileMetadata m;
    m.setText(MetadataKey::Description, "Old oak door \xE2\x80\x94 slow creak");
    m.setText(MetadataKey::CueNotes, "one\ntwo");
    m.hasTimeReference = true;
    m.timeReference = 172800000;
    m.hasAcid = true;
    m.acid.tempo = 98.5f;
    m.acid.beats = 16;
    i.metadata = ShareMetadata(std::move(m));
    return full;
}

void CompareLibraryRows(const LibraryRow& actual, const LibraryRow& expected)
{
    const AudioFileInfo& o = actual.info;
    const AudioFileInfo& i = expected.info;
    QVERIFY(actual.key == expected.key);
    QVERIFY(actual.stamp == expected.stamp);
    QCOMPARE(o.fileSize, i.fileSize);
    QCOMPARE(o.isValid, i.isValid);
    QCOMPARE(o.isHeaderRead, i.isHeaderRead);
    QCOMPARE(o.modifyTime, i.modifyTime);
    QCOMPARE(o.samplingRate, i.samplingRate);
    QCOMPARE(o.channels, i.channels);
    QCOMPARE(o.samples, i.samples);
    QCOMPARE(o.loopCount, i.loopCount);
    QCOMPARE(o.markerCount, i.markerCount);
    QCOMPARE(o.bitDepthOrMinKbps, i.bitDepthOrMinKbps);
    QCOMPARE(o.bitDepthOrMaxKbps, i.bitDepthOrMaxKbps);
    QCOMPARE(o.loopStart, i.loopStart);
    QCOMPARE(o.loopEnd, i.loopEnd);
    QCOMPARE(o.loudness, i.loudness);
    QCOMPARE(o.format, i.format);
    QCOMPARE(o.errorText, i.errorText);
    QCOMPARE(o.samplePeak, i.samplePeak);
    QCOMPARE(o.measuredParts, i.measuredParts);
    QCOMPARE(o.isMultiPlotValid, i.isMultiPlotValid);
    QVERIFY(std::memcmp(o.plot.data(), i.plot.data(), sizeof o.plot) == 0);
    QVERIFY(std::memcmp(o.multiPlot.data(), i.multiPlot.data(), sizeof o.multiPlot) == 0);
    QCOMPARE(bool(o.metadata), bool(i.metadata));
    if (!i.metadata)
        return;
    QCOMPARE(StoredMetadataBytes(o.metadata.get()), StoredMetadataBytes(i.metadata.get()));
    QCOMPARE(o.metadata->text(MetadataKey::CueNotes), i.metadata->text(MetadataKey::CueNotes));
    QCOMPARE(o.metadata->acid.tempo, i.metadata->acid.tempo);
    QCOMPARE(o.metadata->timeReference, i.metadata->timeReference);
}

} // namespace fixtures
