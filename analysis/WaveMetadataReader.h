#pragma once

#include "FileMetadata.h"

class WaveByteSource;

// The metadata pass over a WAV (RIFF/WAVE) or AIFF (FORM/AIFF, AIFC) file. It
// walks the top-level chunk list and reads only the metadata chunks ('bext',
// 'iXML', 'LIST' of type 'INFO' or 'adtl', 'acid'; AIFF 'NAME', 'AUTH',
// 'ANNO', '(c) '), each cut to a fixed bound before anything is allocated;
// sample data is never read. Null when the file holds no metadata, cannot be
// opened or is no WAV or AIFF file.
FileMetadataPtr ReadWaveMetadata(WaveByteSource& io);
FileMetadataPtr ReadWaveMetadataFile(const char* localPath);
