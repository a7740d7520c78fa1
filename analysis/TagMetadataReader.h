#pragma once

#include "FileMetadata.h"

#include <cstddef>

// The tags of compressed files, read through TagLib: ID3v2 with ID3v1 filling
// the fields it leaves empty (MP3), and Vorbis comments (Ogg Vorbis, FLAC).
// Fields: title, artist, album, comment, description, genre, date,
// copyright, BPM and initial key. Audio properties are not read. Null when
// the file has none of them or cannot be read.
enum class TagContainer
{
    Mpeg,
    OggVorbis,
    Flac,
};

FileMetadataPtr ReadTagMetadataFile(const char* localPath, TagContainer container);
// The same from a caller's buffer (tests and the fuzzer).
FileMetadataPtr ReadTagMetadataFromMemory(const void* data, std::size_t size,
                                          TagContainer container);
