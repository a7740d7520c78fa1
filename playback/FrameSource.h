#pragma once

#include "StreamSource.h"

#include <QString>

#include <memory>

// Any file the program lists, as float frames through the engine's stream
// interface: WAV, AIFF and CAF read from disk a block at a time; MP3, Ogg
// Vorbis and FLAC decoded whole through the analysis decoders for now, until streaming
// decoders take their place behind the same interface. Null for another suffix.
// Nothing is read before the source's Open.
std::unique_ptr<AudioEngine::StreamSource> OpenFrameSource(const QString& path);

// Whether the file is MP3, Ogg Vorbis or FLAC (decoded whole for now).
bool IsCompressedAudio(const QString& path);
