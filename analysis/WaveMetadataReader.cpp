#include "WaveMetadataReader.h"

#include "WaveByteSource.h"
#include "WaveChunkSupport.h"
#include "WaveMetadataChunks.h"

#include <algorithm>
#include <vector>

using namespace wavechunk;

namespace {

// What is read of each chunk at most. 'bext' beyond its fixed part is the
// coding history, which nothing here shows.
constexpr std::size_t kBextBytes = 602;
constexpr std::size_t kAcidBytes = 24;
constexpr std::size_t kXmlBytes = std::size_t(1) << 20;
constexpr std::size_t kListBytes = std::size_t(1) << 20;
constexpr std::size_t kAiffTextBytes = 64 * 1024;
// A file of nothing but empty chunks must not keep the walk going for long.
constexpr int kMaxChunks = 4096;

// The chunk body as far as the file and `cap` allow; empty when none of it is there.
const std::vector<unsigned char>& readBody(WaveByteSource& io, std::int64_t body, std::int64_t size,
                                           std::size_t cap, std::vector<unsigned char>& buffer)
{
    buffer.clear();
    const std::int64_t available = std::min(size, io.size() - body);
    if (available <= 0)
        return buffer;
    buffer.resize(static_cast<std::size_t>(std::min<std::int64_t>(available, std::int64_t(cap))));
    buffer.resize(io.readAt(body, buffer.data(), buffer.size()));
    return buffer;
}

void readRiffChunk(WaveByteSource& io, const unsigned char* id, std::int64_t body,
                   std::int64_t size, std::vector<unsigned char>& buffer, FileMetadata& out)
{
    if (idIs(id, "bext")) {
        const auto& b = readBody(io, body, size, kBextBytes, buffer);
        wavemeta::ParseBextChunk(b.data(), b.size(), out);
    } else if (idIs(id, "iXML")) {
        const auto& b = readBody(io, body, size, kXmlBytes, buffer);
        wavemeta::ParseIxmlChunk(b.data(), b.size(), out);
    } else if (idIs(id, "acid")) {
        const auto& b = readBody(io, body, size, kAcidBytes, buffer);
        wavemeta::ParseAcidChunk(b.data(), b.size(), out);
    } else if (idIs(id, "LIST") && size >= 4) {
        unsigned char type[4];
        if (!io.readExact(body, type, 4))
            return;
        const bool info = idIs(type, "INFO");
        if (!info && !idIs(type, "adtl"))
            return;
        const auto& b = readBody(io, body + 4, size - 4, kListBytes, buffer);
        if (info)
            wavemeta::ParseInfoList(b.data(), b.size(), out);
        else
            wavemeta::ParseAdtlList(b.data(), b.size(), out);
    }
}

bool isAiffText(const unsigned char* id)
{
    return idIs(id, "NAME") || idIs(id, "AUTH") || idIs(id, "ANNO") || idIs(id, "(c) ");
}

} // namespace

FileMetadataPtr ReadWaveMetadata(WaveByteSource& io)
{
    const std::int64_t limit = io.size();
    unsigned char head[12];
    if (limit < 12 || !io.readExact(0, head, 12))
        return nullptr;
    const bool riff = idIs(head, "RIFF") && idIs(head + 8, "WAVE");
    const bool aiff = idIs(head, "FORM") && (idIs(head + 8, "AIFF") || idIs(head + 8, "AIFC"));
    if (!riff && !aiff)
        return nullptr;

    FileMetadata metadata;
    std::vector<unsigned char> buffer;
    std::int64_t pos = 12;
    for (int n = 0; n < kMaxChunks && pos + 8 <= limit; ++n) {
        unsigned char chunk[8];
        if (!io.readExact(pos, chunk, 8) || !isPrintableId(chunk))
            break;
        const std::int64_t size = riff ? le32(chunk + 4) : be32(chunk + 4);
        const std::int64_t body = pos + 8;
        if (riff)
            readRiffChunk(io, chunk, body, size, buffer, metadata);
        else if (isAiffText(chunk)) {
            const auto& b = readBody(io, body, size, kAiffTextBytes, buffer);
            wavemeta::ParseAiffTextChunk(chunk, b.data(), b.size(), metadata);
        }
        std::int64_t next = body + size;
        if (next >= limit)
            break;
        // The pad byte after an odd size is zero, and no chunk ID starts with
        // one: that tells the writers who leave it out.
        unsigned char pad = 1;
        if ((size & 1) != 0 && io.readExact(next, &pad, 1) && pad == 0)
            ++next;
        pos = next;
    }
    return ShareMetadata(std::move(metadata));
}

FileMetadataPtr ReadWaveMetadataFile(const char* localPath)
{
    const std::unique_ptr<WaveByteSource> io = WaveByteSource::openFile(localPath);
    return io ? ReadWaveMetadata(*io) : nullptr;
}
