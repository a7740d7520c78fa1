#pragma once

#include "IntegerFrameSource.h"
#include "WaveHeaderReader.h"

#include <vector>

// WAV, AIFF and CAF through our chunk reader. Besides float frames it hands out
// the reader's left-justified 32-bit values, which the waveform plot of these
// formats is defined on, and the header the record is filled from.
class WaveSoundSource final : public IntegerFrameSource
{
public:
    WaveSoundSource() = default;
    ~WaveSoundSource() override;

    bool open(const char* localPath) override;
    // Reads from the caller's buffer, which must outlive the source.
    bool openMemory(const void* data, std::size_t size);
    std::int64_t read(float* interleaved, std::int64_t frames) override;
    bool seek(std::int64_t frame) override;
    void close() override;

    std::int64_t readLeftJustified(std::int32_t* interleaved, std::int64_t frames) override;
    // Passes over `frames` frames.
    bool skip(std::int64_t frames);

    // Null before a successful open.
    const WaveHeaderHandle* header() const { return m_handle; }

private:
    bool adopt(WaveHeaderHandle* handle, const std::vector<std::string>& messages);

    WaveHeaderHandle* m_handle = nullptr;
    std::vector<std::int32_t> m_scratch;
};

// The reader's messages raised on this thread while the object lives, so that
// each analysis collects its own even when several run at once. Needs the
// analysis error callback (RegisterWaveHeaderMessages) to be the reader's.
class WaveHeaderMessages final
{
public:
    WaveHeaderMessages();
    ~WaveHeaderMessages();
    WaveHeaderMessages(const WaveHeaderMessages&) = delete;
    WaveHeaderMessages& operator=(const WaveHeaderMessages&) = delete;
    const std::vector<std::string>& messages() const { return m_messages; }
    void append(const char* message);

private:
    std::vector<std::string> m_messages;
    WaveHeaderMessages* m_outer;
};

// Makes the analysis' collector the reader's process-wide error callback.
void RegisterWaveHeaderMessages();
