#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

// One shape for every decoder: open reports the sampling rate, the channel
// count and the length in frames; read hands out interleaved float frames
// (full scale +-1.0) into the caller's buffer; seek moves to a frame; close
// lets the file go. Analysis and preview read every format through it.
//
// An object holds its own state only (no static buffers), so separate objects
// may be used from separate threads at once. Every implementation checks the
// lengths a file states against the file's size and sane limits before it
// allocates anything.
class SoundSource
{
public:
    SoundSource() = default;
    virtual ~SoundSource() = default;
    SoundSource(const SoundSource&) = delete;
    SoundSource& operator=(const SoundSource&) = delete;

    // False, with errorText() saying why, when the file cannot be read as this
    // format. localPath is in the local 8-bit encoding.
    virtual bool open(const char* localPath) = 0;
    // Opens for a player that starts at once: reading from the first frame is
    // ready without any walk over the whole file, so frames() may read -1
    // (unknown) where only such a walk tells it; a later seek does what the
    // walk would have (and may take as long). The same as open() where that
    // costs nothing extra.
    virtual bool openForPlayback(const char* localPath) { return open(localPath); }
    // Reads up to `frames` frames; returns how many were read (0 at the end or
    // on an error, which errorText() then names).
    virtual std::int64_t read(float* interleaved, std::int64_t frames) = 0;
    // Moves to `frame` (clamped to the length); false when the format or the
    // file cannot seek there.
    virtual bool seek(std::int64_t frame) = 0;
    virtual void close() = 0;

    std::int32_t samplingRate() const { return m_samplingRate; }
    std::int32_t channels() const { return m_channels; }
    std::int64_t frames() const { return m_frames; }
    const std::string& errorText() const { return m_errorText; }
    // A loop the file states (exclusive end); none when loopEnd() <= loopStart().
    std::int64_t loopStart() const { return m_loopStart; }
    std::int64_t loopEnd() const { return m_loopEnd; }

    // A flag that, once true, ends any long step of this source (a seek that
    // has to decode from the start) early, as a failure. Null for none; it
    // must outlive the source.
    void setCancelFlag(const std::atomic<bool>* cancel) { m_cancel = cancel; }

    // The source for a lower-cased suffix ("wav", "aif", "aiff", "mp3", "ogg", "flac");
    // nullptr for any other.
    static std::unique_ptr<SoundSource> forSuffix(const std::string& suffix);

protected:
    void setProperties(std::int32_t samplingRate, std::int32_t channels, std::int64_t frames)
    {
        m_samplingRate = samplingRate;
        m_channels = channels;
        m_frames = frames;
    }
    void setError(std::string text) { m_errorText = std::move(text); }
    void setLoop(std::int64_t start, std::int64_t end)
    {
        m_loopStart = start;
        m_loopEnd = end;
    }
    bool cancelled() const { return m_cancel && m_cancel->load(std::memory_order_relaxed); }

private:
    std::int32_t m_samplingRate = 0;
    std::int32_t m_channels = 0;
    std::int64_t m_frames = 0;
    std::string m_errorText;
    std::int64_t m_loopStart = 0;
    std::int64_t m_loopEnd = 0;
    const std::atomic<bool>* m_cancel = nullptr;
};
