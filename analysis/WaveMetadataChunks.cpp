#include "WaveMetadataChunks.h"

#include "FileMetadata.h"
#include "MetadataText.h"
#include "WaveChunkSupport.h"

#include <algorithm>
#include <cmath>

using namespace wavechunk;

namespace wavemeta {

namespace {

constexpr std::size_t kMaxCueTexts = kWaveMaxMarkers;

void setDecoded(FileMetadata& out, MetadataKey key, const unsigned char* data, std::size_t size)
{
    out.setText(key, DecodeMetadataText(data, size));
}

// The next sub-chunk after one whose body ends at `next`: after the pad byte
// of an odd size when there is one, else right there. A pad byte is zero and
// no chunk ID starts with one, which tells writers that leave it out.
std::size_t nextSubChunk(const unsigned char* data, std::size_t size, std::size_t next,
                         std::uint32_t bodySize)
{
    if ((bodySize & 1u) != 0 && next < size && data[next] == 0)
        return next + 1;
    return next;
}

// Calls visit(id, body, available bytes) for each sub-chunk of a LIST body.
template<typename Visit>
void walkSubChunks(const unsigned char* data, std::size_t size, Visit visit)
{
    std::size_t pos = 0;
    while (pos + 8 <= size) {
        const unsigned char* head = data + pos;
        if (!isPrintableId(head))
            return;
        const std::uint32_t bodySize = le32(head + 4);
        const std::size_t body = pos + 8;
        const std::size_t available = std::min<std::size_t>(bodySize, size - body);
        visit(head, data + body, available);
        if (available < bodySize)
            return;
        pos = nextSubChunk(data, size, body + available, bodySize);
    }
}

} // namespace

void ParseBextChunk(const unsigned char* data, std::size_t size, FileMetadata& out)
{
    struct Field
    {
        std::size_t offset;
        std::size_t length;
        MetadataKey key;
    };
    static constexpr Field kFields[] = {
        {0, 256, MetadataKey::Description},          {256, 32, MetadataKey::Originator},
        {288, 32, MetadataKey::OriginatorReference}, {320, 10, MetadataKey::OriginationDate},
        {330, 8, MetadataKey::OriginationTime},
    };
    for (const Field& field : kFields) {
        if (field.offset + field.length <= size)
            setDecoded(out, field.key, data + field.offset, field.length);
    }
    if (size >= 346) {
        out.timeReference = static_cast<std::uint64_t>(le32(data + 338)) |
                            (static_cast<std::uint64_t>(le32(data + 342)) << 32);
        out.hasTimeReference = true;
    }
}

void ParseInfoList(const unsigned char* data, std::size_t size, FileMetadata& out)
{
    struct Item
    {
        const char* id;
        MetadataKey key;
    };
    static constexpr Item kItems[] = {
        {"INAM", MetadataKey::Title},    {"IART", MetadataKey::Artist},
        {"ICMT", MetadataKey::Comment},  {"ICOP", MetadataKey::Copyright},
        {"ISFT", MetadataKey::Software}, {"IGNR", MetadataKey::Genre},
        {"IKEY", MetadataKey::Keywords}, {"ICRD", MetadataKey::Date},
    };
    walkSubChunks(data, size,
                  [&out](const unsigned char* id, const unsigned char* body, std::size_t length) {
                      for (const Item& item : kItems) {
                          if (idIs(id, item.id)) {
                              setDecoded(out, item.key, body, length);
                              return;
                          }
                      }
                  });
}

void ParseAdtlList(const unsigned char* data, std::size_t size, FileMetadata& out)
{
    std::size_t count = 0;
    walkSubChunks(data, size,
                  [&](const unsigned char* id, const unsigned char* body, std::size_t length) {
                      const bool label = idIs(id, "labl");
                      if ((!label && !idIs(id, "note")) || length < 4 || count >= kMaxCueTexts)
                          return;
                      ++count;
                      out.appendLine(label ? MetadataKey::CueLabels : MetadataKey::CueNotes,
                                     DecodeMetadataText(body + 4, length - 4));
                  });
}

void ParseAcidChunk(const unsigned char* data, std::size_t size, FileMetadata& out)
{
    if (size < 24)
        return;
    AcidInfo acid;
    acid.flags = le32(data);
    acid.rootNote = le16(data + 4);
    acid.beats = le32(data + 12);
    acid.meterDenominator = le16(data + 16);
    acid.meterNumerator = le16(data + 18);
    float tempo = 0.0f;
    const std::uint32_t bits = le32(data + 20);
    std::memcpy(&tempo, &bits, sizeof tempo);
    // A tempo no music has is a field left unset, not a fact about the file.
    acid.tempo = std::isfinite(tempo) && tempo > 0.0f && tempo < 1000.0f ? tempo : 0.0f;
    if (acid.rootNote > 127)
        acid.flags &= ~2u;
    out.acid = acid;
    out.hasAcid = true;
}

bool ParseAiffTextChunk(const unsigned char* id, const unsigned char* data, std::size_t size,
                        FileMetadata& out)
{
    if (idIs(id, "NAME"))
        setDecoded(out, MetadataKey::Title, data, size);
    else if (idIs(id, "AUTH"))
        setDecoded(out, MetadataKey::Artist, data, size);
    else if (idIs(id, "(c) "))
        setDecoded(out, MetadataKey::Copyright, data, size);
    else if (idIs(id, "ANNO"))
        out.appendLine(MetadataKey::Comment, DecodeMetadataText(data, size));
    else
        return false;
    return true;
}

} // namespace wavemeta
