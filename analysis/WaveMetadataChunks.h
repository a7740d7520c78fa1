#pragma once

#include <cstddef>

class FileMetadata;

// The payload parsers of the WAV and AIFF metadata chunks: bytes in, fields
// out. Each takes the chunk body (without its 8-byte header) as far as it is
// present in the file, trusts no length inside it beyond `size`, and fills
// what it can read; a broken or foreign payload adds nothing.
namespace wavemeta {

// BWF 'bext': Description, Originator, OriginatorReference, OriginationDate,
// OriginationTime and TimeReference. A body shorter than the 602-byte fixed
// part yields the fields that lie wholly inside it.
void ParseBextChunk(const unsigned char* data, std::size_t size, FileMetadata& out);

// 'iXML': PROJECT, SCENE, TAKE, TAPE, NOTE, SPEED's timecode rate and flag and
// the USER fields. Elements completed before an XML error are kept.
void ParseIxmlChunk(const unsigned char* data, std::size_t size, FileMetadata& out);

// The sub-chunks of a 'LIST' of type 'INFO' (data starts after the type):
// INAM, IART, ICMT, ICOP, ISFT, IGNR, IKEY, ICRD. Odd-sized strings are read
// with or without their pad byte.
void ParseInfoList(const unsigned char* data, std::size_t size, FileMetadata& out);

// The 'labl' and 'note' texts of a 'LIST' of type 'adtl' (data after the type).
void ParseAdtlList(const unsigned char* data, std::size_t size, FileMetadata& out);

// 'acid': one-shot or loop, root note, beats, meter and tempo.
void ParseAcidChunk(const unsigned char* data, std::size_t size, FileMetadata& out);

// AIFF 'NAME', 'AUTH', 'ANNO' and '(c) '; `id` is the 4-byte chunk ID.
// Returns false for any other ID.
bool ParseAiffTextChunk(const unsigned char* id, const unsigned char* data, std::size_t size,
                        FileMetadata& out);

} // namespace wavemeta
