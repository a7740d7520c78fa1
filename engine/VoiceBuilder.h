#pragma once

#include "EngineObjects.h"
#include "Voice.h"

#include <cstdint>

namespace AudioEngine {

// Makes a voice of the player's data for the pool, playing from that memory:
// WAVE/AIFF converted block by block as it plays, raw PCM read in place, a
// resampler when the rate differs from the output's. Reports and returns null
// when the data does not fit the pool or its header cannot be read.
Voice* BuildVoice(Player& player, VoicePool& pool, std::int32_t outputRate);
void FreeVoice(Voice* voice);

} // namespace AudioEngine
