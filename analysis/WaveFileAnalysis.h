#pragma once

#include "AudioFileInfo.h"

// The per-file analysis of a WAV or AIFF file, streamed in blocks: header
// fields, first loop, marker count, format name, plots and, when asked,
// loudness and the sample peak (both need every frame; without loudness only
// the frames the plot looks at are read). File size and modification time are
// the caller's. A file whose header cannot be read gets `isValid` 0 and the
// reader's message in `errorText`; its other fields keep their defaults.
void AnalyzeWaveFile(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                     bool loudnessWanted);
