#include "FileMetadataReader.h"

#include "TagMetadataReader.h"
#include "WaveMetadataReader.h"

FileMetadataPtr ReadFileMetadata(const char* localPath, std::string_view lowerSuffix)
{
    if (lowerSuffix == "wav" || lowerSuffix == "aif" || lowerSuffix == "aiff")
        return ReadWaveMetadataFile(localPath);
    if (lowerSuffix == "mp3")
        return ReadTagMetadataFile(localPath, TagContainer::Mpeg);
    if (lowerSuffix == "ogg")
        return ReadTagMetadataFile(localPath, TagContainer::OggVorbis);
    if (lowerSuffix == "flac")
        return ReadTagMetadataFile(localPath, TagContainer::Flac);
    return nullptr;
}
