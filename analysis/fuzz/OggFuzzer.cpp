// libFuzzer target for the Ogg Vorbis path: our header-size check, libvorbisfile
// behind it, seeking and the streamed analysis.

#include "CompressedFuzzing.h"
#include "OggSoundSource.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ExerciseCompressed<OggSoundSource>(data, size);
    return 0;
}
