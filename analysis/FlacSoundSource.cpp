#include "FlacSoundSource.h"

#include "AnalysisErrors.h"
#include "WaveByteSource.h"

#include <FLAC/stream_decoder.h>

#include <algorithm>
#include <cstring>

namespace {

// A target at most this many blocks ahead is reached by decoding on: cheaper
// than libFLAC's seek, which searches and decodes a few frames of its own.
constexpr std::int64_t kSkipBlocks = 4;

// The block type byte keeps its last-block flag; PADDING is type 1.
constexpr unsigned char kPaddingType = 1;

} // namespace

struct FlacSoundSource::Decoder
{
    Decoder()
        : handle(FLAC__stream_decoder_new())
    {}
    ~Decoder()
    {
        if (handle)
            FLAC__stream_decoder_delete(handle); // finishes first
    }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    FLAC__StreamDecoder* handle;
};

struct FlacSoundSource::Glue
{
    static FlacSoundSource& self(void* client) { return *static_cast<FlacSoundSource*>(client); }

    static FLAC__StreamDecoderReadStatus read(const FLAC__StreamDecoder*, FLAC__byte buffer[],
                                              size_t* bytes, void* client)
    {
        FlacSoundSource& s = self(client);
        const std::int64_t left = s.m_layout.framesEnd - s.m_bytePosition;
        if (*bytes == 0 || left <= 0) {
            *bytes = 0;
            return FLAC__STREAM_DECODER_READ_STATUS_END_OF_STREAM;
        }
        const std::size_t want = std::size_t(std::min<std::int64_t>(std::int64_t(*bytes), left));
        const std::size_t got = s.m_bytes->readAt(s.m_bytePosition, buffer, want);
        for (const std::int64_t at : s.m_layout.hiddenBlocks) {
            if (at >= s.m_bytePosition && at < s.m_bytePosition + std::int64_t(got)) {
                FLAC__byte& type = buffer[at - s.m_bytePosition];
                type = static_cast<FLAC__byte>((type & 0x80) | kPaddingType);
            }
        }
        s.m_bytePosition += std::int64_t(got);
        *bytes = got;
        return got == 0 ? FLAC__STREAM_DECODER_READ_STATUS_END_OF_STREAM
                        : FLAC__STREAM_DECODER_READ_STATUS_CONTINUE;
    }

    static FLAC__StreamDecoderSeekStatus seek(const FLAC__StreamDecoder*, FLAC__uint64 offset,
                                              void* client)
    {
        FlacSoundSource& s = self(client);
        if (offset > FLAC__uint64(s.m_layout.framesEnd))
            return FLAC__STREAM_DECODER_SEEK_STATUS_ERROR;
        s.m_bytePosition = std::int64_t(offset);
        return FLAC__STREAM_DECODER_SEEK_STATUS_OK;
    }

    static FLAC__StreamDecoderTellStatus tell(const FLAC__StreamDecoder*, FLAC__uint64* offset,
                                              void* client)
    {
        *offset = FLAC__uint64(self(client).m_bytePosition);
        return FLAC__STREAM_DECODER_TELL_STATUS_OK;
    }

    static FLAC__StreamDecoderLengthStatus length(const FLAC__StreamDecoder*, FLAC__uint64* length,
                                                  void* client)
    {
        *length = FLAC__uint64(self(client).m_layout.framesEnd);
        return FLAC__STREAM_DECODER_LENGTH_STATUS_OK;
    }

    static FLAC__bool eof(const FLAC__StreamDecoder*, void* client)
    {
        const FlacSoundSource& s = self(client);
        return s.m_bytePosition >= s.m_layout.framesEnd;
    }

    static FLAC__StreamDecoderWriteStatus write(const FLAC__StreamDecoder*,
                                                const FLAC__Frame* frame,
                                                const FLAC__int32* const buffer[], void* client)
    {
        FlacSoundSource& s = self(client);
        const bool damaged = std::exchange(s.m_badFrame, false);
        const FLAC__FrameHeader& h = frame->header;
        const auto channels = static_cast<std::uint32_t>(s.channels());
        // A frame of another shape than STREAMINFO's is left out (silence).
        if (h.channels != channels || h.bits_per_sample != s.m_layout.info.bitsPerSample ||
            h.number_type != FLAC__FRAME_NUMBER_TYPE_SAMPLE_NUMBER)
            return FLAC__STREAM_DECODER_WRITE_STATUS_CONTINUE;
        const auto first = static_cast<std::int64_t>(h.number.sample_number);
        // A damaged frame's own number cannot place it.
        if (damaged && first != s.m_next)
            return FLAC__STREAM_DECODER_WRITE_STATUS_CONTINUE;
        const std::int64_t skip = std::max<std::int64_t>(s.m_next - first, 0);
        const std::int64_t count = std::int64_t(h.blocksize) - skip;
        if (count <= 0)
            return FLAC__STREAM_DECODER_WRITE_STATUS_CONTINUE;
        s.m_gap = std::max<std::int64_t>(first - s.m_next, 0);
        s.m_block.resize(std::size_t(count) * channels);
        const unsigned shift = 32 - h.bits_per_sample;
        for (std::uint32_t ch = 0; ch < channels; ++ch) {
            const FLAC__int32* in = buffer[ch] + skip;
            std::int32_t* out = s.m_block.data() + ch;
            for (std::int64_t i = 0; i < count; ++i, out += channels)
                *out = static_cast<std::int32_t>(static_cast<std::uint32_t>(in[i]) << shift);
        }
        s.m_blockFrames = count;
        s.m_blockUsed = 0;
        return FLAC__STREAM_DECODER_WRITE_STATUS_CONTINUE;
    }

    static void error(const FLAC__StreamDecoder*, FLAC__StreamDecoderErrorStatus status,
                      void* client)
    {
        if (status == FLAC__STREAM_DECODER_ERROR_STATUS_FRAME_CRC_MISMATCH)
            self(client).m_badFrame = true;
    }
};

FlacSoundSource::FlacSoundSource() = default;

FlacSoundSource::~FlacSoundSource()
{
    close();
}

void FlacSoundSource::close()
{
    m_decoder.reset();
    m_bytes.reset();
    m_layout = FlacLayout{};
    m_bytePosition = 0;
    dropPending();
    m_next = 0;
    m_block = {};
    m_ended = m_badFrame = m_seekBroken = false;
    setProperties(0, 0, 0);
    setLoop(0, 0);
}

bool FlacSoundSource::fail(const char* reason)
{
    close();
    setError(reason);
    return false;
}

bool FlacSoundSource::open(const char* localPath)
{
    return openBytes(WaveByteSource::openFile(localPath));
}

bool FlacSoundSource::openMemory(const void* data, std::size_t size)
{
    return openBytes(WaveByteSource::fromMemory(data, size));
}

bool FlacSoundSource::openBytes(std::unique_ptr<WaveByteSource> bytes)
{
    close();
    setError({});
    if (!bytes)
        return fail(kErrorCannotOpen);
    if (const char* problem = ReadFlacLayout(*bytes, m_layout))
        return fail(problem);
    const std::int64_t length = FindFlacStreamLength(*bytes, m_layout);
    if (length < 0)
        return fail(kErrorFlacFramesDamaged);
    m_bytes = std::move(bytes);
    m_decoder = std::make_unique<Decoder>();
    FLAC__StreamDecoder* decoder = m_decoder->handle;
    if (!decoder)
        return fail(kErrorDecodeFailed);
    FLAC__stream_decoder_set_md5_checking(decoder, false);
    FLAC__stream_decoder_set_metadata_ignore_all(decoder);
    if (FLAC__stream_decoder_init_stream(decoder, Glue::read, Glue::seek, Glue::tell, Glue::length,
                                         Glue::eof, Glue::write, nullptr, Glue::error,
                                         this) != FLAC__STREAM_DECODER_INIT_STATUS_OK)
        return fail(kErrorDecodeFailed);
    if (!FLAC__stream_decoder_process_until_end_of_metadata(decoder))
        return fail(kErrorFlacHeaderDamaged);
    setProperties(std::int32_t(m_layout.info.sampleRate), std::int32_t(m_layout.info.channels),
                  length);
    const CommentLoop loop = ReadFlacCommentLoop(*m_bytes, m_layout);
    if (loop.start < std::min(loop.end, length))
        setLoop(loop.start, std::min(loop.end, length));
    return true;
}

void FlacSoundSource::dropPending()
{
    m_gap = 0;
    m_blockFrames = m_blockUsed = 0;
}

bool FlacSoundSource::refill()
{
    while (m_gap == 0 && m_blockUsed >= m_blockFrames) {
        if (m_ended)
            return false;
        m_badFrame = false;
        const bool ok = FLAC__stream_decoder_process_single(m_decoder->handle);
        if (m_gap > 0 || m_blockUsed < m_blockFrames)
            return true;
        if (ok &&
            FLAC__stream_decoder_get_state(m_decoder->handle) < FLAC__STREAM_DECODER_END_OF_STREAM)
            continue;
        m_ended = true;
        const std::int64_t missing = frames() - m_next;
        // The last frame cut off: its samples are silence. More is damage.
        if (missing > std::int64_t(m_layout.info.maxBlockSize))
            setError(kErrorFlacFramesDamaged);
        else
            m_gap = std::max<std::int64_t>(missing, 0);
    }
    return true;
}

template<typename Out, typename Convert>
std::int64_t FlacSoundSource::take(Out* interleaved, std::int64_t frames, Convert convert)
{
    if (!m_decoder || frames <= 0)
        return 0;
    const int channels = this->channels();
    const std::int64_t want = std::min(frames, this->frames() - m_next);
    std::int64_t done = 0;
    while (done < want && refill()) {
        Out* out = interleaved + done * channels;
        std::int64_t n;
        if (m_gap > 0) {
            n = std::min(m_gap, want - done);
            std::fill(out, out + n * channels, Out{});
            m_gap -= n;
        } else {
            n = std::min(m_blockFrames - m_blockUsed, want - done);
            const std::int32_t* in = m_block.data() + m_blockUsed * channels;
            for (std::int64_t i = 0; i < n * channels; ++i)
                out[i] = convert(in[i]);
            m_blockUsed += n;
        }
        done += n;
        m_next += n;
    }
    return done;
}

std::int64_t FlacSoundSource::readLeftJustified(std::int32_t* interleaved, std::int64_t frames)
{
    return take(interleaved, frames, [](std::int32_t v) { return v; });
}

std::int64_t FlacSoundSource::read(float* interleaved, std::int64_t frames)
{
    // Left-justified 32-bit values to +-1.0 as for WAV: x 2^-15 x 2^-16.
    return take(interleaved, frames, [](std::int32_t v) {
        return static_cast<float>(v) * 3.0517578e-5f * 1.5258789e-5f;
    });
}

bool FlacSoundSource::restart()
{
    dropPending();
    m_next = 0;
    m_ended = m_badFrame = false;
    if (FLAC__stream_decoder_reset(m_decoder->handle))
        return true;
    m_ended = true;
    return false;
}

bool FlacSoundSource::skipTo(std::int64_t frame)
{
    while (m_next < frame && refill()) {
        if (cancelled())
            return false;
        std::int64_t n;
        if (m_gap > 0) {
            n = std::min(m_gap, frame - m_next);
            m_gap -= n;
        } else {
            n = std::min(m_blockFrames - m_blockUsed, frame - m_next);
            m_blockUsed += n;
        }
        m_next += n;
    }
    return m_next == frame;
}

bool FlacSoundSource::seek(std::int64_t frame)
{
    if (!m_decoder)
        return false;
    frame = std::clamp<std::int64_t>(frame, 0, frames());
    const std::int64_t block = m_layout.info.maxBlockSize;
    if (frame >= m_next && frame - m_next <= kSkipBlocks * block)
        return skipTo(frame);
    if (frame == frames()) {
        dropPending();
        m_next = frame;
        return true;
    }
    if (!m_seekBroken) {
        dropPending();
        m_next = frame;
        m_ended = m_badFrame = false;
        if (FLAC__stream_decoder_seek_absolute(m_decoder->handle, FLAC__uint64(frame)))
            return true;
        // Damaged, or STREAMINFO's total lies: from now on decode to get there.
        m_seekBroken = true;
        if (!restart())
            return false;
    } else if (frame < m_next || m_ended) {
        if (!restart())
            return false;
    }
    return skipTo(frame);
}
