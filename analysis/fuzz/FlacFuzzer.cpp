// libFuzzer target for the FLAC path: our walk of the block headers and the
// search for the last frame, libFLAC behind them, seeking (libFLAC's own and
// the decode-onwards fallback) and both analysis paths.

#include "AudioFileInfo.h"
#include "FlacFileAnalysis.h"
#include "FlacSoundSource.h"

#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FlacSoundSource source;
    if (!source.openMemory(data, size))
        return 0;
    const int channels = source.channels();
    std::vector<std::int32_t> block(std::size_t(777) * std::size_t(channels));
    // Never more than the stated length.
    std::int64_t total = 0;
    for (;;) {
        const std::int64_t got = source.readLeftJustified(block.data(), 777);
        if (got <= 0)
            break;
        total += got;
        if (total > source.frames())
            __builtin_trap();
    }
    for (const std::int64_t at : {source.frames() / 2, std::int64_t(0), source.frames() - 1,
                                  source.frames() / 3, source.frames() + 5}) {
        source.seek(at);
        source.readLeftJustified(block.data(), 100);
    }

    // Every frame (loudness), then only the plotted ones (seeks).
    for (const bool loudness : {true, false}) {
        FlacSoundSource again;
        if (!again.openMemory(data, size))
            __builtin_trap(); // the same bytes opened once already
        AudioFileInfo info;
        AnalyzeFlacSource(again, info, true, loudness);
    }
    return 0;
}
