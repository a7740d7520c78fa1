#pragma once

#include <cstdint>
#include <string>

class WaveByteSource;

// What the frame headers of an MP3 stream say, found without decoding.
struct Mp3StreamInfo
{
    bool accepted = false;
    std::string errorText; // why the data is not MP3, when not accepted
    std::int32_t samplingRate = 0;
    std::int32_t channels = 0;
    std::int32_t layer = 0;
    std::int64_t firstFrameOffset = 0;
    std::int64_t audioFrames = 0; // frames that carry audio (not the Info/Xing/VBRI frame)
    std::int32_t samplesPerFrame = 0;
    std::int64_t samples = 0; // PCM frames the decoder gives, encoder delay and padding trimmed
    std::int32_t minKbps = 0;
    std::int32_t maxKbps = 0;
};

// The acceptance rule and the one walk over the frame headers. Data is MP3
// only when, after an optional ID3v2 tag, a run of consecutive frame headers
// agree on layer, rate and channel mode, each at the offset the previous
// frame's length gives: at least three frames, or an Info/Xing/VBRI frame
// followed by a valid frame. Data that starts with RIFF, RIFX, RF64, FORM,
// OggS or fLaC is never MP3. The walk then counts every frame (resyncing over
// short damage as the decoder does) for the length and the bit-rate range;
// the length follows the decoder's gapless rule (LAME's delay and padding,
// plus its 529-sample decoder delay, trimmed when the Info frame's frame count
// is there). Without `walkFrames` the scan stops once the data is accepted:
// `samples` is then the Info frame's count (-1 without one) and audioFrames 0.
Mp3StreamInfo ScanMp3Stream(WaveByteSource& bytes, bool walkFrames = true);
