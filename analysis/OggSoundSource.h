#pragma once

#include "CommentLoop.h"
#include "SoundSource.h"

#include <memory>

class WaveByteSource;
struct OggVorbis_File;
struct vorbis_comment;

// The three bit-rate fields of the Vorbis identification header, in header
// order, as the signed 32-bit values the file holds.
struct VorbisHeaderBitRates
{
    std::int32_t maximum = 0;
    std::int32_t nominal = 0;
    std::int32_t minimum = 0;
};

// kbps values for the record: unsigned 32-bit divisions, so -1 ("unset")
// shows as 4294967; a maximum of 0 means only the nominal rate is known.
void VorbisKbps(const VorbisHeaderBitRates& rates, std::int32_t& minKbps, std::int32_t& maxKbps);

// Checks the first Ogg pages before the decoder sees them: an identification
// header that makes sense, and comment and setup packets of sane size, so that
// no lying length makes anyone allocate. Empty when fine, else the reason.
std::string CheckVorbisHeaders(WaveByteSource& bytes);

// The loop a file's comments state (CommentLoop.h).
CommentLoop VorbisCommentLoop(const vorbis_comment* comment);

// Ogg Vorbis through libvorbisfile (the reference decoder). The length is
// ov_pcm_total's, over the links that share the first link's rate and channels.
// A chain of more than 16 links is read as a plain stream (libvorbisfile would
// keep every link's decoded headers): its length comes from the pages'
// granule positions. A stream, or a file with damaged pages, seeks by decoding
// from the start. Opened for playback, the file is read as a stream of
// unknown length until the first seek walks its pages.
class OggSoundSource final : public SoundSource
{
public:
    OggSoundSource();
    ~OggSoundSource() override;

    bool open(const char* localPath) override;
    bool openForPlayback(const char* localPath) override;
    // Reads from the caller's buffer, which must outlive the source; opened as
    // openForPlayback does when `forPlayback` is set.
    bool openMemory(const void* data, std::size_t size, bool forPlayback = false);
    std::int64_t read(float* interleaved, std::int64_t frames) override;
    bool seek(std::int64_t frame) override;
    void close() override;

    // Decodes up to `frames` frames straight into one array per channel.
    std::int64_t readPlanar(float* const* planes, std::int64_t frames);

    const VorbisHeaderBitRates& bitRates() const { return m_bitRates; }

    struct Reader
    {
        WaveByteSource* bytes = nullptr;
        std::int64_t position = 0;
    };

private:
    bool openBytes(std::unique_ptr<WaveByteSource> bytes, bool walkPages);
    // Opens the same bytes afresh, at the first frame.
    bool reopen(bool walkPages);
    // One call of the decoder: up to `frames` frames as planes owned by it.
    std::int64_t decode(float*** planes, std::int64_t frames);

    std::unique_ptr<WaveByteSource> m_bytes;
    Reader m_reader;
    std::unique_ptr<OggVorbis_File> m_file;
    bool m_opened = false;
    bool m_streamed = false; // a chain of many links, read without seeking
    bool m_seekSafe = false; // pages clean enough for ov_pcm_seek
    bool m_walked = false;   // every page was looked at (the length is known)
    int m_link = -1;
    VorbisHeaderBitRates m_bitRates;
};
