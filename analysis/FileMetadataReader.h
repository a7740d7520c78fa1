#pragma once

#include "FileMetadata.h"

#include <string_view>

// The metadata of one file, by its lower-case suffix: the chunk pass for
// "wav", "aif" and "aiff", TagLib for "mp3", "ogg" and "flac". Null for a
// file without metadata, one that cannot be read and any other suffix.
FileMetadataPtr ReadFileMetadata(const char* localPath, std::string_view lowerSuffix);
