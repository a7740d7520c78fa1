#pragma once

#include "StreamSource.h"

#include <atomic>
#include <memory>
#include <string>

class SoundSource;

// Any file a SoundSource decodes (MP3, Ogg Vorbis, and whatever format joins
// them), as a sound the engine streams: its worker decodes a block at a time
// ahead of the mixer, so a start or a seek never waits for the whole file and
// memory stays the same whatever the length. The waveform and the region
// export read through it too, on their own threads.
class SoundSourceStream final : public AudioEngine::StreamSource
{
public:
    enum class OpenMode
    {
        Playback, // ready at once; the length may stay unknown
        Whole,    // the length known from the open (the decoder may walk the file)
    };

    // `localPath` is in the local 8-bit encoding; nothing is read until Open.
    // A set `cancel` ends a long seek early (the view that wanted it went away).
    SoundSourceStream(std::unique_ptr<SoundSource> source, std::string localPath, OpenMode mode,
                      const std::atomic<bool>* cancel = nullptr);
    ~SoundSourceStream() override;
    SoundSourceStream(const SoundSourceStream&) = delete;
    SoundSourceStream& operator=(const SoundSourceStream&) = delete;

    bool Open(AudioEngine::StreamFormat& format) override;
    bool Seek(std::int64_t frame) override;
    long Read(float* out, long frames) override;

private:
    std::unique_ptr<SoundSource> source_;
    std::string path_;
    OpenMode mode_;
    std::int32_t channels_ = 0;
};
