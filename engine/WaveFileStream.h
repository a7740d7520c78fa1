#pragma once

#include "SampleConversion.h"
#include "StreamSource.h"

#include <memory>
#include <string>
#include <vector>

struct WaveHeaderHandle;

namespace AudioEngine {

// A WAV, AIFF or CAF file read from disk a block at a time, for sounds too long
// to hold in memory. Frames the header states but the file does not hold play
// as silence, as they do from memory.
class WaveFileStream final : public StreamSource
{
public:
    // `localPath` is in the local 8-bit encoding; nothing is read until Open.
    explicit WaveFileStream(std::string localPath);
    ~WaveFileStream() override;
    WaveFileStream(const WaveFileStream&) = delete;
    WaveFileStream& operator=(const WaveFileStream&) = delete;

    bool Open(StreamFormat& format) override;
    bool Seek(std::int64_t frame) override;
    long Read(float* out, long frames) override;

private:
    struct HandleCloser
    {
        void operator()(WaveHeaderHandle* handle) const;
    };

    std::string path_;
    std::unique_ptr<WaveHeaderHandle, HandleCloser> header_;
    SampleEncoding encoding_ = SampleEncoding::None;
    std::int32_t channels_ = 0;
    std::int32_t bytesPerFrame_ = 0;
    std::int64_t frameCount_ = 0;
    std::int64_t valuesInFile_ = 0; // sample values the file really holds
    std::int64_t position_ = 0;
    std::vector<unsigned char> bytes_;
};

} // namespace AudioEngine
