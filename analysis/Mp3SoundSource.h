#pragma once

#include "Mp3FrameScanner.h"
#include "SoundSource.h"

#include <memory>

class WaveByteSource;
struct mpg123_handle_struct;

// MP3 through libmpg123, after our own acceptance scan of the frame headers
// (which also gives the length and the bit-rate range, so the file is decoded
// once). Gapless trimming stays on: LAME's encoder delay and padding do not
// count as samples.
class Mp3SoundSource final : public SoundSource
{
public:
    Mp3SoundSource();
    ~Mp3SoundSource() override;

    bool open(const char* localPath) override;
    // Accepts the data on its first frames only: frames() is the Info frame's
    // count, or -1 without one.
    bool openForPlayback(const char* localPath) override;
    // Reads from the caller's buffer, which must outlive the source; opened as
    // openForPlayback does when `forPlayback` is set.
    bool openMemory(const void* data, std::size_t size, bool forPlayback = false);
    std::int64_t read(float* interleaved, std::int64_t frames) override;
    bool seek(std::int64_t frame) override;
    void close() override;

    const Mp3StreamInfo& stream() const { return m_stream; }

    // Position of the libmpg123 reader in the byte source; public for its callbacks.
    struct Reader
    {
        WaveByteSource* bytes = nullptr;
        std::int64_t position = 0;
    };

private:
    bool openBytes(std::unique_ptr<WaveByteSource> bytes, bool walkFrames);

    struct HandleDeleter
    {
        void operator()(mpg123_handle_struct* handle) const;
    };
    std::unique_ptr<WaveByteSource> m_bytes;
    Reader m_reader;
    std::unique_ptr<mpg123_handle_struct, HandleDeleter> m_handle;
    Mp3StreamInfo m_stream;
};
