#pragma once

#include "CommentLoop.h"

#include <cstddef>
#include <cstdint>
#include <vector>

class WaveByteSource;

// STREAMINFO as the file states it.
struct FlacStreamInfo
{
    std::uint32_t minBlockSize = 0;
    std::uint32_t maxBlockSize = 0;
    std::uint32_t sampleRate = 0;
    std::uint32_t channels = 0;
    std::uint32_t bitsPerSample = 0;
    std::uint64_t totalSamples = 0; // 0 when the encoder did not know
};

// Where the parts of a FLAC file lie, found from the metadata block headers
// alone: no block is read whole, however large it claims to be.
struct FlacLayout
{
    FlacStreamInfo info;
    std::int64_t streamInfoBody = 0; // STREAMINFO's 34 bytes
    std::int64_t commentBody = -1;   // the first VORBIS_COMMENT block, -1 when none
    std::uint32_t commentBytes = 0;
    // Block headers the decoder is to see as PADDING, so that it skips them
    // instead of loading them: seek tables past kMaxFlacSeekTableBytes and
    // any STREAMINFO after the first.
    std::vector<std::int64_t> hiddenBlocks;
    std::int64_t framesStart = 0; // the first audio frame
    std::int64_t framesEnd = 0;   // the file's end less a trailing ID3v1 or APE tag
};

// libFLAC always loads a seek table, whatever its metadata filter; 1 MB holds
// a point every 10 s for 16 days of audio.
inline constexpr std::uint32_t kMaxFlacSeekTableBytes = 1u << 20;

// Finds "fLaC" (after one ID3v2 tag, as libFLAC allows), checks STREAMINFO
// and walks the block headers. Null when fine, else the reason (AnalysisErrors.h).
const char* ReadFlacLayout(WaveByteSource& bytes, FlacLayout& layout);

struct FlacFrameHeader
{
    std::uint64_t firstSample = 0;
    std::uint32_t blockSize = 0;
};

// The frame header at `p` (`n` bytes readable), when it is one of this
// stream: sync code, reserved bits and CRC-8 right, channels, depth, rate and
// block size agreeing with STREAMINFO.
bool ParseFlacFrameHeader(const unsigned char* p, std::size_t n, const FlacStreamInfo& info,
                          FlacFrameHeader& header);

// The most bytes a frame of this stream can take (every subframe verbatim).
std::int64_t MaxFlacFrameBytes(const FlacStreamInfo& info);

// The stream's length in frames, read from its last frame header: the one
// nearest the end that directly follows another frame (or is the first).
// STREAMINFO's total may be 0 or may lie; the frames cannot. 0 for a file
// without frames; -1 when no such header lies near the end.
std::int64_t FindFlacStreamLength(WaveByteSource& bytes, const FlacLayout& layout);

// A loop the comment block states as Ogg files do (LOOPSTART and LOOPLENGTH in
// frames); none when either is missing or malformed. Only the first
// kMaxFlacLoopComments comments are looked at, a few bytes of each.
inline constexpr std::uint32_t kMaxFlacLoopComments = 4096;
CommentLoop ReadFlacCommentLoop(WaveByteSource& bytes, const FlacLayout& layout);
