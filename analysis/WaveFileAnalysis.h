#pragma once

#include "AudioFileInfo.h"

// The per-file analysis of a WAV or AIFF file: header fields, first loop,
// marker count, format name, plots and, when asked, loudness. File size and
// modification time are the caller's. A file whose header cannot be read
// leaves the record untouched (isHeaderRead stays 0).
void AnalyzeWaveFile(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                     bool loudnessWanted);
