#pragma once

// Conversions between the SDK's C records and our message records. Counts and
// texts that come from the SDK are checked before use; texts that go to it
// must fit its buffers whole.

#include "GacSdk.h"
#include "VexGacMessages.h"

#include <string>
#include <vector>

namespace Vexmw {

// The SDK's texts are fixed buffers that need not be terminated at the end.
std::string fromBuffer(const char* text);
// Copies text with its terminating zero; false, and an empty buffer, when it
// does not fit. A path cut short would name another file, so nothing is cut.
bool toBuffer(char* buffer, const std::string& text);
// Whether text fits a buffer of the SDK.
bool fitsBuffer(const std::string& text);

AssetData assetFromSdk(const GacAsset& a);
// False when one of the asset's texts does not fit.
bool assetToSdk(const AssetData& a, GacAsset* out);
// Negative counts read as none, larger ones than the limits of GacSdk.h are cut to them.
SegmentData segmentFromSdk(const GacSegment& s);
// The count of a list from the SDK, made safe to use.
int checkedCount(int count, int limit);

// The first text of an asset or segment that does not fit, or empty.
std::string overlongText(const AssetData& a);
std::string overlongText(const SegmentData& s);

// A GacSegment for a segment record, with the arrays it points into; valid
// while this object lives. Build it only from a segment with no overlong text.
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
