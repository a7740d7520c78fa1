#include "TagMetadataReader.h"

#include "FlacLayout.h"
#include "MetadataText.h"
#include "WaveByteSource.h"

#include <flacfile.h>
#include <id3v1tag.h>
#include <id3v2tag.h>
#include <mpegfile.h>
#include <tbytevectorstream.h>
#include <tdebuglistener.h>
#include <tfilestream.h>
#include <tpropertymap.h>
#include <vorbisfile.h>
#include <xiphcomment.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>

namespace {

// An ID3v2 tag this large holds pictures, not descriptions: it is passed
// over (its ID3v1 tag is still read) so that memory stays bounded.
constexpr unsigned long kMaxId3v2Bytes = 16ul << 20;

// As for Ogg Vorbis: a comment block past this holds no descriptions.
constexpr std::uint32_t kMaxFlacCommentBytes = 8u << 20;

struct Mapping
{
    const char* property;
    MetadataKey key;
};

constexpr Mapping kMappings[] = {
    {"TITLE", MetadataKey::Title},
    {"ARTIST", MetadataKey::Artist},
    {"ALBUM", MetadataKey::Album},
    {"COMMENT", MetadataKey::Comment},
    {"DESCRIPTION", MetadataKey::Description},
    {"GENRE", MetadataKey::Genre},
    {"DATE", MetadataKey::Date},
    {"COPYRIGHT", MetadataKey::Copyright},
    {"BPM", MetadataKey::Bpm},
    {"INITIALKEY", MetadataKey::MusicalKey},
};

// TagLib reports malformed tags on standard error in some builds; the
// analysis reports nothing.
class SilentListener final : public TagLib::DebugListener
{
public:
    void printMessage(const TagLib::String&) override {}
};

void silenceTagLib()
{
    static std::once_flag once;
    std::call_once(once, [] {
        static SilentListener listener;
        TagLib::setDebugListener(&listener);
    });
}

std::string joined(const TagLib::StringList& values)
{
    const std::string utf8 = values.toString("; ").to8Bit(true);
    return DecodeMetadataText(utf8.data(), utf8.size());
}

void fill(const TagLib::PropertyMap& properties, FileMetadata& out)
{
    for (const Mapping& m : kMappings) {
        const auto it = properties.find(m.property);
        if (it != properties.end())
            out.setTextIfEmpty(m.key, joined(it->second));
    }
}

unsigned long id3v2Size(TagLib::IOStream& stream)
{
    stream.seek(0);
    const TagLib::ByteVector head = stream.readBlock(10);
    if (head.size() < 10 || !head.startsWith("ID3"))
        return 0;
    // Four 7-bit bytes, then the 10-byte header (and a footer we need not count).
    unsigned long size = 0;
    for (int i = 6; i < 10; ++i)
        size = (size << 7) | (static_cast<unsigned char>(head[i]) & 0x7F);
    return size + 10;
}

void readMpegTags(TagLib::IOStream& stream, FileMetadata& out)
{
    TagLib::MPEG::File file(&stream, TagLib::ID3v2::FrameFactory::instance(), false);
    if (!file.isValid())
        return;
    if (file.hasID3v2Tag())
        fill(file.ID3v2Tag()->properties(), out);
    if (file.hasID3v1Tag())
        fill(file.ID3v1Tag()->properties(), out);
}

void readMpeg(TagLib::IOStream& stream, FileMetadata& out)
{
    if (id3v2Size(stream) <= kMaxId3v2Bytes) {
        readMpegTags(stream, out);
        return;
    }
    // Only the last 128 bytes, where an ID3v1 tag sits.
    const long length = stream.length();
    if (length < 128)
        return;
    stream.seek(length - 128);
    TagLib::ByteVectorStream tail(stream.readBlock(128));
    readMpegTags(tail, out);
}

FileMetadataPtr read(TagLib::IOStream& stream, TagContainer container)
{
    silenceTagLib();
    FileMetadata metadata;
    try {
        switch (container) {
        case TagContainer::Mpeg:
            readMpeg(stream, metadata);
            break;
        case TagContainer::OggVorbis: {
            TagLib::Ogg::Vorbis::File file(&stream, false);
            if (file.isValid() && file.tag())
                fill(file.tag()->properties(), metadata);
            break;
        }
        case TagContainer::Flac: {
            TagLib::FLAC::File file(&stream, TagLib::ID3v2::FrameFactory::instance(), false);
            if (file.isValid() && file.hasXiphComment())
                fill(file.xiphComment()->properties(), metadata);
            break;
        }
        }
    } catch (...) {
        // Out of memory inside TagLib: the file simply shows no tags.
        return nullptr;
    }
    return ShareMetadata(std::move(metadata));
}

// TagLib reads every metadata block of a FLAC file whole, pictures and all;
// it is handed a copy of the file's head holding only STREAMINFO and the
// comment block. Null when the file has no comments or is not FLAC.
std::unique_ptr<TagLib::ByteVectorStream> flacComments(WaveByteSource* bytes)
{
    FlacLayout layout;
    if (!bytes || ReadFlacLayout(*bytes, layout) || layout.commentBody < 0 ||
        layout.commentBytes > kMaxFlacCommentBytes)
        return nullptr;
    // "fLaC", STREAMINFO (not last), the comment block (last).
    const std::uint32_t length = layout.commentBytes;
    TagLib::ByteVector head(4 + 4 + 34 + 4 + length, 0);
    char* p = head.data();
    std::memcpy(p, "fLaC", 4);
    p[7] = 34;
    p[42] = char(0x84);
    p[43] = char(length >> 16);
    p[44] = char(length >> 8);
    p[45] = char(length);
    if (!bytes->readExact(layout.streamInfoBody, p + 8, 34) ||
        !bytes->readExact(layout.commentBody, p + 46, length))
        return nullptr;
    return std::make_unique<TagLib::ByteVectorStream>(head);
}

FileMetadataPtr readFlac(std::unique_ptr<WaveByteSource> bytes)
{
    const std::unique_ptr<TagLib::ByteVectorStream> stream = flacComments(bytes.get());
    return stream ? read(*stream, TagContainer::Flac) : nullptr;
}

} // namespace

FileMetadataPtr ReadTagMetadataFile(const char* localPath, TagContainer container)
{
    if (!localPath)
        return nullptr;
    if (container == TagContainer::Flac)
        return readFlac(WaveByteSource::openFile(localPath));
    TagLib::FileStream stream(localPath, true);
    if (!stream.isOpen())
        return nullptr;
    return read(stream, container);
}

FileMetadataPtr ReadTagMetadataFromMemory(const void* data, std::size_t size,
                                          TagContainer container)
{
    if (!data || size == 0 || size > 0x7FFFFFFFu)
        return nullptr;
    if (container == TagContainer::Flac)
        return readFlac(WaveByteSource::fromMemory(data, size));
    TagLib::ByteVectorStream stream(
        TagLib::ByteVector(static_cast<const char*>(data), static_cast<unsigned int>(size)));
    return read(stream, container);
}
