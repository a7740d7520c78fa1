#include "GacSdkRecords.h"

#include <algorithm>
#include <cstring>

namespace Vexmw {

std::string fromBuffer(const char* text)
{
    return text ? std::string(text, strnlen(text, GacSdk::kTextSize)) : std::string();
}

bool fitsBuffer(const std::string& text)
{
    return text.size() < static_cast<size_t>(GacSdk::kTextSize);
}

bool toBuffer(char* buffer, const std::string& text)
{
    if (!fitsBuffer(text)) {
        buffer[0] = '\0';
        return false;
    }
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return true;
}

int checkedCount(int count, int limit)
{
    return std::clamp(count, 0, limit);
}

AssetData assetFromSdk(const GacAsset& a)
{
    AssetData out;
    out.filePath = fromBuffer(a.filePath);
    out.additionalMetaDataFilePath = fromBuffer(a.additionalMetaDataFilePath);
    out.metaData.projectPath = fromBuffer(a.metaData.projectPath);
    out.metaData.repositoryUrl = fromBuffer(a.metaData.repositoryUrl);
    out.metaData.startTime = a.metaData.startTime;
    out.metaData.length = a.metaData.length;
    return out;
}

bool assetToSdk(const AssetData& a, GacAsset* out)
{
    std::memset(out, 0, sizeof(GacAsset));
    out->metaData.startTime = a.metaData.startTime;
    out->metaData.length = a.metaData.length;
    return toBuffer(out->filePath, a.filePath) &&
           toBuffer(out->additionalMetaDataFilePath, a.additionalMetaDataFilePath) &&
           toBuffer(out->metaData.projectPath, a.metaData.projectPath) &&
           toBuffer(out->metaData.repositoryUrl, a.metaData.repositoryUrl);
}

std::string overlongText(const AssetData& a)
{
    for (const std::string* text : {&a.filePath, &a.additionalMetaDataFilePath,
                                    &a.metaData.projectPath, &a.metaData.repositoryUrl}) {
        if (!fitsBuffer(*text))
            return *text;
    }
    return {};
}

std::string overlongText(const SegmentData& s)
{
    for (const TrackData& t : s.tracks) {
        for (const TrackEvent& e : t.events) {
            std::string text = overlongText(e.asset);
            if (!text.empty())
                return text;
        }
    }
    return {};
}

SegmentData segmentFromSdk(const GacSegment& s)
{
    SegmentData out;
    const int trackCount = s.tracks ? checkedCount(s.numberOfTracks, GacSdk::kMaxTracks) : 0;
    int eventBudget = GacSdk::kMaxEvents;
    for (int i = 0; i < trackCount; ++i) {
        const GacTrack& t = s.tracks[i];
        TrackData track;
        if (t.name)
            track.name = std::string(t.name, strnlen(t.name, GacSdk::kMaxNameLength));
        const int eventCount = t.eventData ? checkedCount(t.numberOfEvents, eventBudget) : 0;
        eventBudget -= eventCount;
        for (int e = 0; e < eventCount; ++e) {
            TrackEvent event;
            event.asset = assetFromSdk(t.eventData[e]);
            event.startPosition = t.eventStartPositions ? t.eventStartPositions[e] : 0.0;
            event.length = t.eventLength ? t.eventLength[e] : 0.0;
            event.dataOffset = t.eventDataOffset ? t.eventDataOffset[e] : 0.0;
            track.events.push_back(std::move(event));
        }
        out.tracks.push_back(std::move(track));
    }
    const int markerCount = s.markers ? checkedCount(s.numberOfMarkers, GacSdk::kMaxMarkers) : 0;
    for (int i = 0; i < markerCount; ++i)
        out.markers.push_back(
            {s.markers[i].id, s.markers[i].startPosition, s.markers[i].endPosition});
    out.tempo = s.tempo;
    out.timeSignatureNumerator = s.timeSignatureNumerator;
    out.timeSignatureDenominator = s.timeSignatureDenominator;
    return out;
}

SdkSegment::SdkSegment(const SegmentData& s)
{
    tracks.resize(s.tracks.size());
    events.resize(s.tracks.size());
    for (size_t i = 0; i < s.tracks.size(); ++i) {
        const TrackData& t = s.tracks[i];
        TrackArrays& a = events[i];
        a.assets.resize(t.events.size());
        for (size_t e = 0; e < t.events.size(); ++e) {
            assetToSdk(t.events[e].asset, &a.assets[e]);
            a.starts.push_back(t.events[e].startPosition);
            a.lengths.push_back(t.events[e].length);
            a.offsets.push_back(t.events[e].dataOffset);
        }
        tracks[i] = {a.assets.data(),
                     a.starts.data(),
                     a.lengths.data(),
                     a.offsets.data(),
                     static_cast<int>(t.events.size()),
                     t.name.c_str()};
    }
    for (const MarkerData& m : s.markers)
        markers.push_back({m.id, m.startPosition, m.endPosition});
    segment = {tracks.data(),
               static_cast<int>(tracks.size()),
               markers.data(),
               static_cast<int>(markers.size()),
               s.tempo,
               s.timeSignatureNumerator,
               s.timeSignatureDenominator};
}

} // namespace Vexmw
