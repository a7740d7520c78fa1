#pragma once

class QString;

// The one test of which files Tesk lists and opens: "wav", "aif", "aiff", "mp3",
// "ogg" and "flac", compared lower-cased. Used by the list worker, the command line
// and every drop target.
bool IsSupportedAudioSuffix(const QString& suffix);

// The same test applied to the suffix of a file name or path.
bool IsSupportedAudioFile(const QString& path);
