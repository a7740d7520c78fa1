#pragma once

#include <QByteArray>

#include <cstdint>

class QString;
class SoundSource;

// A whole file as interleaved float32 (frames x channels x 4 bytes): how MP3
// and Ogg previews started before they streamed, kept for the latency
// benchmark's comparison and as the decoders' straight-through reference in
// tests. Empty when the file cannot be opened or holds no frame. The buffer grows with what is decoded,
// never with what a header claims, and stops short of 2 GiB.
QByteArray DecodeToPcm(SoundSource& source, std::int32_t& samplingRate, std::int32_t& channels);
QByteArray DecodeMp3ToPcm(const QString& path, std::int32_t& samplingRate, std::int32_t& channels);
QByteArray DecodeVorbisToPcm(const QString& path, std::int32_t& samplingRate,
                             std::int32_t& channels);
