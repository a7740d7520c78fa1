#include "SoundSource.h"

#include "FlacSoundSource.h"
#include "Mp3SoundSource.h"
#include "OggSoundSource.h"
#include "WaveSoundSource.h"

std::unique_ptr<SoundSource> SoundSource::forSuffix(const std::string& suffix)
{
    if (suffix == "wav" || suffix == "aif" || suffix == "aiff")
        return std::make_unique<WaveSoundSource>();
    if (suffix == "mp3")
        return std::make_unique<Mp3SoundSource>();
    if (suffix == "ogg")
        return std::make_unique<OggSoundSource>();
    if (suffix == "flac")
        return std::make_unique<FlacSoundSource>();
    return nullptr;
}
