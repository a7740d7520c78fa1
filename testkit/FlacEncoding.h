#pragma once

// FLAC files for the tests, the fuzz seeds and the benchmarks, made by Debian's
// reference encoder (the `flac` tool) from WAV files the builders wrote.

#include "WaveBuilder.h"

#include <QStringList>

namespace fixtures {

// Encodes `wav` into `flac` with the encoder's options (e.g. "-b", "192" or
// "--no-seektable"). `toPipe` writes through standard output, as a stream
// encoder does: STREAMINFO then states no length and holds no checksum.
// False, with the encoder's complaint on standard error, when it fails.
bool encodeFlac(const QString& wav, const QString& flac, const QStringList& options = {},
                bool toPipe = false);

// The same from WAV bytes; the bytes of the FLAC file, empty on failure.
// `workFolder` holds the temporary WAV.
Bytes flacFromWav(const Bytes& wav, const QString& workFolder, const QStringList& options = {},
                  bool toPipe = false);

// Where the first audio frame of a FLAC file begins: after "fLaC" and every
// metadata block; 0 when the blocks do not end inside the file.
std::size_t flacFramesStart(const Bytes& flac);

} // namespace fixtures
