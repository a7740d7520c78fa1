#pragma once

#include "WaveHeaderReader.h"

#include <string>
#include <vector>

// The chunk walkers behind OpenWaveHeader. They fill a zeroed handle whose
// io and usableSize are set, collecting their messages instead of sending them
// so that only the attempt that is kept reports.
enum class WaveParseResult
{
    Ok,         // walked to the end
    OkWithJunk, // usable, but the walk stopped at a broken chunk
    Broken,     // essential chunks missing; another alignment may help
    Fatal,      // a value is invalid; a retry cannot help
};

struct WaveParseOutcome
{
    WaveParseResult result = WaveParseResult::Broken;
    std::vector<std::string> messages;
};

// Chunk walk that only sums sizes, for the size check.
std::int64_t WalkRiffFormSize(WaveByteSource& io, bool bigEndian, std::int64_t fileSize);

WaveParseOutcome ParseRiffChunks(WaveHeaderHandle& handle);
WaveParseOutcome ParseFormChunks(WaveHeaderHandle& handle);
WaveParseOutcome ParseCafChunks(WaveHeaderHandle& handle);

// Resets what a parse attempt writes, keeping io, sizes and flags.
void ResetParsedFields(WaveHeaderHandle& handle);
