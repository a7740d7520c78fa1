#pragma once

#include "StreamSource.h"

#include <QString>

#include <atomic>
#include <memory>

// Any file the program lists, as float frames through the engine's stream
// interface, its length known at the open: WAV, AIFF and CAF read from disk a
// block at a time; every other format decoded a block at a time through its
// SoundSource. Null for a suffix nothing reads. Nothing is read before the
// source's Open; a set `cancel` cuts a long seek short.
std::unique_ptr<AudioEngine::StreamSource>
OpenFrameSource(const QString& path, const std::atomic<bool>* cancel = nullptr);

// Whether the file is decoded (MP3, Ogg Vorbis...), with no bit depth of its own.
bool IsCompressedAudio(const QString& path);
