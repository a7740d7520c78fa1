#include "WaveFileStream.h"

#include "EngineErrors.h"
#include "EngineMemory.h"

#include <WaveByteSource.h>
#include <WaveHeaderReader.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace AudioEngine {

namespace {

// One read from disk: 8192 frames is 32 KB of 16-bit stereo, a few ms of work.
constexpr long kReadFrames = 8192;

} // namespace

void WaveFileStream::HandleCloser::operator()(WaveHeaderHandle* handle) const
{
    CloseWaveHeader(handle);
}

WaveFileStream::WaveFileStream(std::string localPath)
    : path_(std::move(localPath))
{}

WaveFileStream::~WaveFileStream() = default;

bool WaveFileStream::Open(StreamFormat& format)
{
    header_.reset(OpenWaveHeader(path_.c_str()));
    if (!header_) {
        ReportError(kErrDecode, "Can not decode the wave data.");
        return false;
    }
    const WaveHeaderHandle& h = *header_;
    channels_ = GetWaveChannels(&h);
    const std::int32_t rate = GetWaveSamplingRate(&h);
    frameCount_ = GetWaveSamples(&h);
    encoding_ = EncodingOf(h);
    if (channels_ < 1 || rate < 1 || frameCount_ < 0 || encoding_ == SampleEncoding::None ||
        h.dataStart < 0 || !h.io) {
        ReportError(kErrDecode, "Can not decode the wave data.");
        return false;
    }
    bytesPerFrame_ = channels_ * BytesPerSample(encoding_);
    const std::int64_t inFile = std::max<std::int64_t>(0, h.io->size() - h.dataStart);
    valuesInFile_ = std::min(frameCount_ * channels_, inFile / BytesPerSample(encoding_));
    try {
        bytes_.resize(static_cast<std::size_t>(kReadFrames) *
                      static_cast<std::size_t>(bytesPerFrame_));
    } catch (const std::bad_alloc&) {
        ReportError(kErrNoMemory, "Can not allocate memory.");
        return false;
    }
    format.channels = channels_;
    format.rate = rate;
    format.frameCount = frameCount_;
    format.loopStart = format.loopEnd = 0;
    std::uint32_t start = 0;
    std::uint32_t end = 0;
    if (GetWaveLoopCount(&h) >= 1 && GetLoop(&h, 0, &start, &end) == 0 && start < end) {
        format.loopEnd = std::min<std::int64_t>(end, frameCount_);
        format.loopStart = std::min<std::int64_t>(start, format.loopEnd);
    }
    position_ = 0;
    return true;
}

bool WaveFileStream::Seek(std::int64_t frame)
{
    if (!header_ || frame < 0)
        return false;
    position_ = std::min(frame, frameCount_);
    return true;
}

long WaveFileStream::Read(float* out, long frames)
{
    if (!header_)
        return -1;
    const long n = static_cast<long>(std::min<std::int64_t>(
        {static_cast<std::int64_t>(frames), kReadFrames, frameCount_ - position_}));
    if (n <= 0)
        return 0;
    const auto values = static_cast<std::size_t>(n) * static_cast<std::size_t>(channels_);
    const std::int32_t bytesPerValue = BytesPerSample(encoding_);
    const auto present = static_cast<std::size_t>(std::clamp<std::int64_t>(
        valuesInFile_ - position_ * channels_, 0, static_cast<std::int64_t>(values)));
    std::size_t converted = 0;
    if (present > 0) {
        const std::size_t got =
            ReadWaveBytes(header_.get(), header_->dataStart + position_ * bytesPerFrame_,
                          bytes_.data(), present * static_cast<std::size_t>(bytesPerValue));
        converted = got / static_cast<std::size_t>(bytesPerValue);
        ConvertSamples(encoding_, bytes_.data(), out, converted);
    }
    // Past what the file holds (a cut-off copy), the stated frames play as silence.
    std::fill(out + converted, out + values, 0.0f);
    position_ += n;
    return n;
}

} // namespace AudioEngine
