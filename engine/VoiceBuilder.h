#pragma once

#include "EngineObjects.h"
#include "Voice.h"

#include <cstdint>

namespace AudioEngine {

// Makes a voice of the player's data for the pool, playing from that memory:
// WAVE/AIFF converted block by block as it plays, raw PCM read in place, a
// resampler when the rate differs from the output's. Reports and returns null
// when the data does not fit the pool or its header cannot be read.
//
// For a stream the voice is only a shell that takes over the player's source:
// the streaming worker opens it (OpenStreamVoice) after the voice is queued.
Voice* BuildVoice(Player& player, VoicePool& pool, std::int32_t outputRate);
void FreeVoice(Voice* voice);

// Fold gains, the conversion scratch and the resampler for a voice whose
// format block is set. Reports and returns false when memory runs out.
bool SetUpVoiceBuffers(Voice& voice, bool needsScratch);

// The play position from the player's start time or range, once the format is known.
void PlaceVoice(Voice& voice, std::int32_t startMs, std::int64_t rangeStart, std::int64_t rangeEnd);

} // namespace AudioEngine
