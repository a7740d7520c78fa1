#pragma once

#include "SoundSource.h"

// A source of integer PCM (WAV, AIFF, FLAC) that also hands out its samples as
// left-justified signed 32-bit values: the waveform plot of these formats is
// defined on them, and the float frames are these values x 2^-31.
class IntegerFrameSource : public SoundSource
{
public:
    // Channels x frames values; returns the frames read (0 at the end or on an
    // error, which errorText() then names).
    virtual std::int64_t readLeftJustified(std::int32_t* interleaved, std::int64_t frames) = 0;
};
