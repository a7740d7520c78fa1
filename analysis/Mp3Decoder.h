#pragma once

#include <QByteArray>

#include <cstdint>
#include <memory>

class QString;
struct mpg123_handle_struct;

// Whole-file MP3 decoding to float through libmpg123, for analysis and for
// preview playback (the engine plays only uncompressed data).
//
// Gapless handling stays on: the encoder delay and padding that LAME records in
// its info frame are trimmed, so they do not count as samples, and the sample
// count matches the PCM that went into the encoder.
class Mp3Decoder final
{
public:
    Mp3Decoder();
    ~Mp3Decoder();
    Mp3Decoder(const Mp3Decoder&) = delete;
    Mp3Decoder& operator=(const Mp3Decoder&) = delete;

    // False when the file cannot be opened or holds no MP3 frame.
    bool Open(const char* localPath);

    std::int32_t SamplingRate() const { return samplingRate; }
    std::int32_t Channels() const { return channels; }

    // Walks every frame of the file without decoding it, recording the PCM
    // frame count and the lowest and highest frame bit rate, then rewinds.
    bool CountFrames();
    std::int64_t Samples() const { return samples; }
    std::int32_t MinKbps() const { return minKbps; }
    std::int32_t MaxKbps() const { return maxKbps; }

    // Reads up to `frames` interleaved float frames; 0 at the end of the file.
    std::int64_t ReadInterleaved(float* out, std::int64_t frames);

private:
    struct HandleDeleter
    {
        void operator()(mpg123_handle_struct* handle) const;
    };
    std::unique_ptr<mpg123_handle_struct, HandleDeleter> handle;
    std::int32_t samplingRate = 0;
    std::int32_t channels = 0;
    std::int64_t samples = 0;
    std::int32_t minKbps = 0;
    std::int32_t maxKbps = 0;
};

// The whole file as interleaved float32 (frames x channels x 4 bytes); empty
// when the file cannot be opened.
QByteArray DecodeMp3ToPcm(const QString& path, std::int32_t& samplingRate, std::int32_t& channels);
