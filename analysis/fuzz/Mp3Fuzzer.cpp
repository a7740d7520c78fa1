// libFuzzer target for the MP3 path: the acceptance scan of the frame
// headers, libmpg123 decoding behind it, seeking and the streamed analysis.

#include "CompressedFuzzing.h"
#include "Mp3SoundSource.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ExerciseCompressed<Mp3SoundSource>(data, size);
    return 0;
}
