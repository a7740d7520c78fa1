#pragma once

// What the MP3 and Ogg fuzzers do with an input their source accepted: read
// it all in odd blocks, seek about, and run the whole analysis over it; then
// open it as the preview does (no walk over the whole file), read a little and
// seek.

#include "AudioFileInfo.h"
#include "CompressedFileAnalysis.h"
#include "SoundSource.h"

#include <cstdint>
#include <vector>

template<typename Source>
void ExerciseCompressed(const std::uint8_t* data, std::size_t size)
{
    Source source;
    if (!source.openMemory(data, size))
        return;
    const int channels = source.channels();
    std::vector<float> block(std::size_t(777) * std::size_t(channels));
    std::int64_t total = 0;
    // A decoder may run past the stated length; it may not run forever.
    while (total <= source.frames() + (std::int64_t(1) << 20)) {
        const std::int64_t got = source.read(block.data(), 777);
        if (got <= 0)
            break;
        total += got;
    }
    source.seek(source.frames() / 2);
    source.read(block.data(), 100);
    source.seek(0);
    source.read(block.data(), 100);

    Source again;
    if (!again.openMemory(data, size))
        return;
    AudioFileInfo info;
    info.samplingRate = again.samplingRate();
    info.channels = again.channels();
    info.samples = static_cast<std::int32_t>(std::min<std::int64_t>(again.frames(), INT32_MAX));
    AnalyzeFloatSource(again, info, true, true);

    Source preview;
    if (!preview.openMemory(data, size, true))
        return;
    for (int i = 0; i < 4 && preview.read(block.data(), 777) > 0; ++i) {
    }
    preview.seek(1000);
    preview.read(block.data(), 100);
    preview.seek(0);
    preview.read(block.data(), 100);
}
