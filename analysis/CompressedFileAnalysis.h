#pragma once

#include <cstdint>

struct AudioFileInfo;

// The analysis paths for MP3 and Ogg Vorbis: the whole file is decoded to
// planar float for the plots and the loudness meter. A file that cannot be
// opened leaves `isValid` 0 and everything else at its defaults; when the
// sample arrays cannot be allocated the header fields stay and the plots and
// loudness keep their defaults. Called on the detail worker only: the MP3
// path reuses one static read buffer.
void AnalyzeMp3File(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                    bool loudnessWanted);
void AnalyzeVorbisFile(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                       bool loudnessWanted);

// Plots (the multi-channel one first, when wanted) and, when wanted, the
// integrated loudness of planar float samples.
void AnalyzePlanarSamples(const float* const* channels, std::int32_t channelCount,
                          std::int32_t samples, std::int32_t samplingRate, AudioFileInfo& info,
                          bool multiPlotWanted, bool loudnessWanted);
