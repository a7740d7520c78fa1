// libFuzzer target for the metadata readers: every input goes through the
// chunk walk as a whole file, through each chunk payload parser on its own,
// through TagLib as MP3, Ogg Vorbis and FLAC, and through the UCS name and
// CatID list readers; what they return is then formatted for every metadata
// column, so that the cells' code sees whatever the parsers can produce.

#include "FileMetadata.h"
#include "MetadataColumns.h"
#include "MetadataText.h"
#include "TagMetadataReader.h"
#include "UcsCatalog.h"
#include "UcsName.h"
#include "WaveByteSource.h"
#include "WaveMetadataChunks.h"
#include "WaveMetadataReader.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <cstring>
#include <memory>

namespace {

constexpr int kFirstColumn = 15; // Description
constexpr int kLastColumn = 25;  // Source

void format(const FileMetadata* m, const UcsName& ucs, std::int32_t rate)
{
    for (int column = kFirstColumn; column <= kLastColumn; ++column) {
        MetadataCellValue(column, m, rate, ucs, false);
        MetadataCellValue(column, m, rate, ucs, true);
        MetadataToolTip(column, m, rate, ucs);
    }
    MetadataContains(m, ucs, QStringLiteral("door"));
    MetadataContains(m, ucs, QString::fromUtf8("\xc3\xa9t\xc3\xa9"));
}

void format(const FileMetadataPtr& m, const UcsName& ucs)
{
    format(m.get(), ucs, 48000);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const UcsName none;
    std::unique_ptr<WaveByteSource> io = WaveByteSource::fromMemory(data, size);
    format(ReadWaveMetadata(*io), none);

    FileMetadata parsed;
    wavemeta::ParseBextChunk(data, size, parsed);
    wavemeta::ParseIxmlChunk(data, size, parsed);
    wavemeta::ParseInfoList(data, size, parsed);
    wavemeta::ParseAdtlList(data, size, parsed);
    wavemeta::ParseAcidChunk(data, size, parsed);
    if (size >= 4)
        wavemeta::ParseAiffTextChunk(data, data + 4, size - 4, parsed);
    DecodeMetadataText(data, size);

    // Texts from the input also feed the timecode fields and the UCS readers.
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const int half = bytes.size() / 2;
    parsed.setText(MetadataKey::TimecodeRate, bytes.left(half).toStdString());
    parsed.setText(MetadataKey::TimecodeFlag, size % 2 ? "DF" : "NDF");
    parsed.timeReference = size >= 8 ? [&] {
        std::uint64_t v = 0;
        std::memcpy(&v, data, 8);
        return v;
    }()
                                     : size;
    parsed.hasTimeReference = true;
    const std::shared_ptr<const UcsCatalog> catalog = UcsCatalog::parse(bytes, nullptr);
    const QString name = QString::fromUtf8(bytes.left(256));
    const UcsName fromName = ParseUcsName(name, nullptr);
    const UcsName fromList = ParseUcsName(name, catalog.get());
    const std::int32_t rates[] = {0, 1, 44100, 2147483647};
    format(&parsed, fromName, rates[size % 4]);
    format(&parsed, fromList, 48000);

    for (const TagContainer container :
         {TagContainer::Mpeg, TagContainer::OggVorbis, TagContainer::Flac})
        format(ReadTagMetadataFromMemory(data, size, container), fromName);
    return 0;
}
