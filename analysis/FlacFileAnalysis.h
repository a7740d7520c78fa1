#pragma once

class FlacSoundSource;
struct AudioFileInfo;

// The per-file analysis of a FLAC file under the rules of WAV: header fields
// (the BIT column shows the bits per sample), plots built from the same
// integer samples as a WAV file of them would be, and, when asked, loudness
// and the sample peak (without loudness only the frames the plot looks at are
// decoded). A file that cannot be opened, or whose frames turn out damaged,
// gets `isValid` 0 and the reason in `errorText`.
void AnalyzeFlacFile(const char* localPath, AudioFileInfo& info, bool multiPlotWanted,
                     bool loudnessWanted);

// The same for a source already open.
void AnalyzeFlacSource(FlacSoundSource& source, AudioFileInfo& info, bool multiPlotWanted,
                       bool loudnessWanted);
