#pragma once

// Conversions between the SDK's C records and our message records.

#include "GacSdk.h"
#include "VexGacMessages.h"

#include <string>
#include <vector>

namespace Vexmw {

// The SDK's texts are fixed buffers that need not be terminated at the end.
std::string fromBuffer(const char* text);
// Cuts text to what the buffer holds, terminating zero included.
void toBuffer(char* buffer, const std::string& text);

AssetData assetFromSdk(const GacAsset& a);
void assetToSdk(const AssetData& a, GacAsset* out);
SegmentData segmentFromSdk(const GacSegment& s);

// A GacSegment for a segment record, with the arrays it points into; valid
// while this object lives.
struct SdkSegment
{
    explicit SdkSegment(const SegmentData& s);
    SdkSegment(const SdkSegment&) = delete;
    SdkSegment& operator=(const SdkSegment&) = delete;

    struct TrackArrays
    {
        std::vector<GacAsset> assets;
        std::vector<double> starts, lengths, offsets;
    };
    std::vector<TrackArrays> events;
    std::vector<GacTrack> tracks;
    std::vector<GacMarker> markers;
    GacSegment segment{};
};

} // namespace Vexmw
