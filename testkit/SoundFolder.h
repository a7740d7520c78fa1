#pragma once

#include <QString>

namespace fixtures {

// A folder of `count` files the size of real sound effects, for the
// benchmarks: WAV 16 and 24 bit, AIFF, MP3 and Ogg Vorbis (through lame and
// oggenc; WAV in their place when those are missing), 1 to 6 s, mono and
// stereo, 44.1 and 48 kHz, a few partials under a re-struck envelope with some
// noise. Past 2,000 files the sounds repeat, as copies under new names. Made
// once: a folder marked complete is taken as it is.
bool MakeRealSizeFolder(const QString& folder, int count);

// Whether the folder was made completely, and the mark that says so.
bool FolderComplete(const QString& folder);
bool MarkFolderComplete(const QString& folder);

} // namespace fixtures
