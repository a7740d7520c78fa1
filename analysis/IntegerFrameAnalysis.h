#pragma once

#include <cstdint>

class IntegerFrameSource;
class WavePlotBuilder;
struct AudioFileInfo;

// The streamed analysis of integer PCM (WAV, AIFF, FLAC) from an open source.

// Every one of `frames` frames once, in blocks: plots, loudness and the sample
// peak together. A source that runs short measures nothing, as a whole-file
// read would not. Files of more than 8 channels are not measured.
void StreamIntegerFrames(IntegerFrameSource& source, std::int64_t frames, WavePlotBuilder& plot,
                         AudioFileInfo& info);

// Only the frames the plot looks at: the first 20 ms of each bucket.
void StreamPlottedFrames(IntegerFrameSource& source, WavePlotBuilder& plot);
