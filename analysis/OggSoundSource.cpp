#include "OggSoundSource.h"

#include "AnalysisErrors.h"
#include "WaveByteSource.h"

#include <vorbis/vorbisfile.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

namespace {

// Cover art can make a comment packet a few megabytes (libogg may hold twice a
// packet while it assembles it); setup headers are a few
// kilobytes in practice. Anything past these is damage or a lie.
constexpr std::int64_t kMaxCommentBytes = 8 * 1024 * 1024;
constexpr std::int64_t kMaxSetupBytes = 4 * 1024 * 1024;
constexpr std::int64_t kMaxHeaderWalk = 32 * 1024 * 1024;

std::uint32_t le32(const unsigned char* p)
{
    return std::uint32_t(p[0]) | (std::uint32_t(p[1]) << 8) | (std::uint32_t(p[2]) << 16) |
           (std::uint32_t(p[3]) << 24);
}

size_t readBytes(void* destination, size_t size, size_t count, void* handle)
{
    auto* r = static_cast<OggSoundSource::Reader*>(handle);
    if (size == 0)
        return 0;
    const std::size_t got = r->bytes->readAt(r->position, destination, size * count);
    r->position += static_cast<std::int64_t>(got);
    return got / size;
}

int seekBytes(void* handle, ogg_int64_t offset, int whence)
{
    auto* r = static_cast<OggSoundSource::Reader*>(handle);
    std::int64_t base = 0;
    if (whence == SEEK_CUR)
        base = r->position;
    else if (whence == SEEK_END)
        base = r->bytes->size();
    else if (whence != SEEK_SET)
        return -1;
    const std::int64_t target = base + offset;
    if (target < 0)
        return -1;
    r->position = target;
    return 0;
}

long tellBytes(void* handle)
{
    return static_cast<long>(static_cast<OggSoundSource::Reader*>(handle)->position);
}

// Each link of a chained file keeps its decoded headers (codebooks and all)
// in libvorbisfile while the file is open for seeking; past this many links
// the file is read as a plain stream instead, one link's headers at a time.
constexpr int kMaxSeekableLinks = 16;

struct LinkSummary
{
    int links = 0;
    // Every page where the previous one ends, in sequence, continuing the
    // packet its predecessor left open, granules not going back. Only then is
    // ov_pcm_seek trusted: on damaged pages libvorbisfile 1.3.7 can drive
    // libogg into a negative memmove.
    bool clean = true;
    // Sum of the last granule positions of the leading links that share the
    // first link's rate and channels: the length when read as a stream.
    std::int64_t frames = 0;
};

// Walks every page header once (a few dozen bytes per 4 KB page).
LinkSummary summarizeLinks(WaveByteSource& bytes)
{
    LinkSummary summary;
    const std::int64_t end = bytes.size();
    std::int64_t pos = 0;
    std::uint32_t serial = 0;
    std::int64_t linkGranule = 0;
    std::int64_t lastGranule = 0;
    std::uint32_t lastSequence = 0;
    bool packetOpen = false;
    bool sameFormat = true;
    unsigned char first[5] = {}; // channels and rate of the first link
    while (pos + 27 <= end) {
        unsigned char page[27 + 255];
        if (!bytes.readExact(pos, page, 27) || std::memcmp(page, "OggS", 4) != 0 || page[4] != 0) {
            summary.clean = false;
            // Damage: carry on at the next capture pattern, as libogg does.
            unsigned char buffer[4096];
            const std::size_t got = bytes.readAt(pos + 1, buffer, sizeof buffer);
            if (got < 4)
                break;
            const void* hit = memmem(buffer, got, "OggS", 4);
            pos = hit ? pos + 1 + (static_cast<const unsigned char*>(hit) - buffer)
                      : pos + 1 + std::int64_t(got) - 3;
            continue;
        }
        const int segments = page[26];
        if (!bytes.readExact(pos + 27, page + 27, std::size_t(segments)))
            break;
        std::int64_t body = 0;
        for (int i = 0; i < segments; ++i)
            body += page[27 + i];
        const std::uint32_t pageSerial = le32(page + 14);
        const std::uint32_t sequence = le32(page + 18);
        std::int64_t granule = 0;
        std::memcpy(&granule, page + 6, 8); // little-endian, as the file
        if (!(page[5] & 0x02)) {
            const bool continued = (page[5] & 0x01) != 0;
            if (pageSerial != serial || sequence != lastSequence + 1 || continued != packetOpen ||
                (granule != -1 && granule < lastGranule))
                summary.clean = false;
        }
        lastSequence = sequence;
        if (granule != -1)
            lastGranule = granule;
        packetOpen = segments > 0 && page[27 + segments - 1] == 255;
        if (page[5] & 0x02) {
            lastGranule = 0;
            if (summary.links > 0 && sameFormat)
                summary.frames += linkGranule;
            ++summary.links;
            serial = pageSerial;
            linkGranule = 0;
            unsigned char id[30];
            if (bytes.readExact(pos + 27 + segments, id, 30)) {
                if (summary.links == 1)
                    std::memcpy(first, id + 11, 5);
                else if (std::memcmp(first, id + 11, 5) != 0)
                    sameFormat = false;
            }
        } else if (pageSerial == serial && granule > 0) {
            linkGranule = granule;
        }
        pos += 27 + segments + body;
    }
    if (pos != end)
        summary.clean = false;
    if (summary.links > 0 && sameFormat)
        summary.frames += linkGranule;
    return summary;
}

} // namespace

void VorbisKbps(const VorbisHeaderBitRates& rates, std::int32_t& minKbps, std::int32_t& maxKbps)
{
    const auto kbps = [](std::int32_t bps) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(bps) / 1000u);
    };
    if (rates.maximum == 0) {
        minKbps = maxKbps = kbps(rates.nominal);
        return;
    }
    minKbps = kbps(rates.minimum);
    maxKbps = kbps(rates.maximum);
}

std::string CheckVorbisHeaders(WaveByteSource& bytes)
{
    std::int64_t pos = 0;
    std::uint32_t serial = 0;
    int packet = 0; // index of the packet being assembled
    std::int64_t packetBytes = 0;
    while (packet < 3) {
        unsigned char page[27 + 255];
        if (pos > kMaxHeaderWalk || !bytes.readExact(pos, page, 27) ||
            std::memcmp(page, "OggS", 4) != 0 || page[4] != 0)
            return kErrorNotVorbis;
        const int segments = page[26];
        if (!bytes.readExact(pos + 27, page + 27, std::size_t(segments)))
            return kErrorNotVorbis;
        const std::int64_t body = pos + 27 + segments;
        if (pos == 0) {
            // The identification header: alone on the first page, 30 bytes.
            unsigned char id[30];
            if ((page[5] & 0x02) == 0 || segments < 1 || page[27] != 30 ||
                !bytes.readExact(body, id, 30) || id[0] != 1 ||
                std::memcmp(id + 1, "vorbis", 6) != 0 || le32(id + 7) != 0 || id[11] == 0 ||
                le32(id + 12) == 0 || le32(id + 12) > INT_MAX || (id[29] & 1) == 0)
                return kErrorNotVorbis;
            const int small = id[28] & 0x0F;
            const int large = id[28] >> 4;
            if (small < 6 || large > 13 || small > large)
                return kErrorNotVorbis;
            serial = le32(page + 14);
            packet = 1;
            std::int64_t size = body + 30;
            for (int i = 1; i < segments; ++i) {
                packetBytes += page[27 + i];
                if (page[27 + i] < 255) {
                    if (packetBytes > (packet == 1 ? kMaxCommentBytes : kMaxSetupBytes))
                        return kErrorVorbisHeaderDamaged;
                    ++packet;
                    packetBytes = 0;
                    if (packet == 3)
                        break;
                }
            }
            pos = size;
            for (int i = 1; i < segments; ++i)
                pos += page[27 + i];
            continue;
        }
        if (le32(page + 14) == serial) {
            for (int i = 0; i < segments && packet < 3; ++i) {
                packetBytes += page[27 + i];
                if (packetBytes > (packet == 1 ? kMaxCommentBytes : kMaxSetupBytes))
                    return kErrorVorbisHeaderDamaged;
                if (page[27 + i] < 255) {
                    ++packet;
                    packetBytes = 0;
                }
            }
        }
        pos = body;
        for (int i = 0; i < segments; ++i)
            pos += page[27 + i];
    }
    return {};
}

OggSoundSource::OggSoundSource() = default;

OggSoundSource::~OggSoundSource()
{
    close();
}

void OggSoundSource::close()
{
    if (m_opened)
        ov_clear(m_file.get());
    m_opened = false;
    m_file.reset();
    m_bytes.reset();
    m_reader = {};
    m_link = -1;
}

bool OggSoundSource::open(const char* localPath)
{
    close();
    return openBytes(WaveByteSource::openFile(localPath), true);
}

bool OggSoundSource::openForPlayback(const char* localPath)
{
    close();
    return openBytes(WaveByteSource::openFile(localPath), false);
}

bool OggSoundSource::openMemory(const void* data, std::size_t size, bool forPlayback)
{
    close();
    return openBytes(WaveByteSource::fromMemory(data, size), !forPlayback);
}

bool OggSoundSource::openBytes(std::unique_ptr<WaveByteSource> bytes, bool walkPages)
{
    if (!bytes) {
        setError(kErrorCannotOpen);
        return false;
    }
    const std::string problem = CheckVorbisHeaders(*bytes);
    if (!problem.empty()) {
        setError(problem);
        return false;
    }
    // Without the walk over every page the file is read as a stream from its
    // start, which needs nothing past the first link; a seek walks it first.
    const LinkSummary summary = walkPages ? summarizeLinks(*bytes) : LinkSummary{};
    m_walked = walkPages;
    m_streamed = !walkPages || summary.links > kMaxSeekableLinks;
    m_seekSafe = summary.clean && !m_streamed;
    m_bytes = std::move(bytes);
    m_reader.bytes = m_bytes.get();
    m_file = std::make_unique<OggVorbis_File>();
    const ov_callbacks callbacks{readBytes, m_streamed ? nullptr : seekBytes, nullptr,
                                 m_streamed ? nullptr : tellBytes};
    const int opened = ov_open_callbacks(&m_reader, m_file.get(), nullptr, 0, callbacks);
    if (opened != 0) {
        // ov_open_callbacks has cleaned up after itself.
        m_file.reset();
        m_bytes.reset();
        setError(opened == OV_EBADHEADER ? kErrorVorbisHeaderDamaged : kErrorNotVorbis);
        return false;
    }
    m_opened = true;
    const vorbis_info* info = ov_info(m_file.get(), 0);
    if (!info || info->channels <= 0 || info->rate <= 0 || info->rate > INT_MAX) {
        close();
        setError(kErrorNotVorbis);
        return false;
    }
    m_bitRates.maximum = static_cast<std::int32_t>(info->bitrate_upper);
    m_bitRates.nominal = static_cast<std::int32_t>(info->bitrate_nominal);
    m_bitRates.minimum = static_cast<std::int32_t>(info->bitrate_lower);

    // A chain of links that all share the first one's format is one sound;
    // otherwise only the first link counts.
    bool uniform = true;
    const long links = ov_streams(m_file.get());
    for (long i = 1; i < links && uniform; ++i) {
        const vorbis_info* other = ov_info(m_file.get(), int(i));
        uniform = other && other->channels == info->channels && other->rate == info->rate;
    }
    const ogg_int64_t total =
        m_streamed ? summary.frames : ov_pcm_total(m_file.get(), uniform ? -1 : 0);
    setProperties(static_cast<std::int32_t>(info->rate), info->channels,
                  !walkPages  ? -1
                  : total > 0 ? static_cast<std::int64_t>(total)
                              : 0);
    const CommentLoop loop = VorbisCommentLoop(ov_comment(m_file.get(), 0));
    const std::int64_t loopEnd = walkPages ? std::min(loop.end, frames()) : loop.end;
    if (loop.start < loopEnd)
        setLoop(loop.start, loopEnd);
    else
        setLoop(0, 0);
    m_link = 0;
    return true;
}

std::int64_t OggSoundSource::decode(float*** planes, std::int64_t frames)
{
    for (;;) {
        int link = 0;
        const long got = ov_read_float(
            m_file.get(), planes, static_cast<int>(std::min<std::int64_t>(frames, 1 << 20)), &link);
        if (got == OV_HOLE)
            continue; // a gap in the data: the decoder carries on after it
        if (got <= 0)
            return 0;
        if (link != m_link || m_streamed) {
            // A stream shows one link at a time, always as link 0.
            const vorbis_info* info = ov_info(m_file.get(), m_streamed ? -1 : link);
            if (!info || info->channels != channels() || info->rate != samplingRate())
                return 0;
            m_link = link;
        }
        return got;
    }
}

std::int64_t OggSoundSource::readPlanar(float* const* out, std::int64_t frames)
{
    if (!m_opened || frames <= 0)
        return 0;
    std::int64_t total = 0;
    while (total < frames) {
        float** planes = nullptr;
        const std::int64_t got = decode(&planes, frames - total);
        if (got <= 0)
            break;
        for (int c = 0; c < channels(); ++c)
            std::memcpy(out[c] + total, planes[c], std::size_t(got) * sizeof(float));
        total += got;
    }
    return total;
}

std::int64_t OggSoundSource::read(float* interleaved, std::int64_t frames)
{
    if (!m_opened || frames <= 0)
        return 0;
    const int n = channels();
    std::int64_t total = 0;
    while (total < frames) {
        float** planes = nullptr;
        const std::int64_t got = decode(&planes, frames - total);
        if (got <= 0)
            break;
        float* out = interleaved + total * n;
        for (std::int64_t i = 0; i < got; ++i)
            for (int c = 0; c < n; ++c)
                out[i * n + c] = planes[c][i];
        total += got;
    }
    return total;
}

bool OggSoundSource::seek(std::int64_t frame)
{
    if (!m_opened)
        return false;
    if (!m_walked && !reopen(true))
        return false;
    if (frame >= frames() && frame > 0)
        return false;
    if (frame > 0 && m_seekSafe)
        return ov_pcm_seek(m_file.get(), frame) == 0;
    // Back to the start by opening afresh (ov_pcm_seek cannot be trusted on
    // damaged pages, see LinkSummary), then decode up to the frame.
    if (!reopen(true))
        return false;
    for (std::int64_t skipped = 0; skipped < frame;) {
        if (cancelled())
            return false;
        float** planes = nullptr;
        const std::int64_t got = decode(&planes, frame - skipped);
        if (got <= 0)
            return false;
        skipped += got;
    }
    return true;
}

bool OggSoundSource::reopen(bool walkPages)
{
    std::unique_ptr<WaveByteSource> bytes = std::move(m_bytes);
    ov_clear(m_file.get());
    m_opened = false;
    m_reader = {};
    return bytes && openBytes(std::move(bytes), walkPages);
}

CommentLoop VorbisCommentLoop(const vorbis_comment* comment)
{
    CommentLoop loop;
    if (!comment || comment->comments <= 0 || !comment->user_comments || !comment->comment_lengths)
        return loop;
    std::int64_t start = -1;
    std::int64_t length = 0;
    for (int i = 0; i < comment->comments; ++i) {
        const char* text = comment->user_comments[i];
        const auto n = static_cast<std::size_t>(std::max(comment->comment_lengths[i], 0));
        if (start < 0)
            LoopCommentValue(text, n, "LOOPSTART=", start);
        if (length <= 0)
            LoopCommentValue(text, n, "LOOPLENGTH=", length);
    }
    if (start >= 0 && length > 0) {
        loop.start = start;
        loop.end = start + length;
    }
    return loop;
}
