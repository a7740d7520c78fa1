#include "SoundSourceStream.h"

#include "EngineErrors.h"
#include "EngineMemory.h"
#include "SoundSource.h"

#include <cmath>

SoundSourceStream::SoundSourceStream(std::unique_ptr<SoundSource> source, std::string localPath,
                                     OpenMode mode, const std::atomic<bool>* cancel)
    : source_(std::move(source))
    , path_(std::move(localPath))
    , mode_(mode)
{
    if (source_)
        source_->setCancelFlag(cancel);
}

SoundSourceStream::~SoundSourceStream() = default;

bool SoundSourceStream::Open(AudioEngine::StreamFormat& format)
{
    const bool opened =
        source_ && (mode_ == OpenMode::Playback ? source_->openForPlayback(path_.c_str())
                                                : source_->open(path_.c_str()));
    if (!opened || source_->channels() < 1 || source_->samplingRate() < 1) {
        AudioEngine::ReportError(AudioEngine::kErrDecode, "Can not decode the wave data.");
        return false;
    }
    channels_ = source_->channels();
    format.channels = channels_;
    format.rate = source_->samplingRate();
    format.frameCount = source_->frames() >= 0 ? source_->frames() : -1;
    format.loopStart = source_->loopStart();
    format.loopEnd = source_->loopEnd();
    return true;
}

bool SoundSourceStream::Seek(std::int64_t frame)
{
    return source_ && frame >= 0 && source_->seek(frame);
}

long SoundSourceStream::Read(float* out, long frames)
{
    if (!source_ || channels_ < 1)
        return -1;
    const std::int64_t got = source_->read(out, frames);
    // A damaged packet may decode to anything; the mixer must never see a NaN.
    const std::int64_t values = got * channels_;
    for (std::int64_t i = 0; i < values; ++i) {
        if (!std::isfinite(out[i]))
            out[i] = 0.0f;
    }
    return static_cast<long>(got);
}
