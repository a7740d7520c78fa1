#pragma once

#include <cstdint>

class SoundSource;
struct AudioFileInfo;

// The analysis paths for MP3 and Ogg Vorbis, decoded once and streamed in
// blocks into the plots, the loudness meter and the sample peak. Exactly the
// length the source states is measured: a decoder that runs short is padded
// with silence, one that runs long is cut. A file that cannot be opened gets
// `isValid` 0 and the reason in `errorText`; everything else keeps its defaults.
void AnalyzeMp3File(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                    bool loudnessWanted);
void AnalyzeVorbisFile(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                       bool loudnessWanted);

// The streaming part both share, for an open source.
void AnalyzeFloatSource(SoundSource& source, AudioFileInfo& info, bool multiPlotWanted,
                        bool loudnessWanted);
