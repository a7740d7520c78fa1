#include "Mp3Decoder.h"

#include <QString>

#include <mpg123.h>

#include <limits>
#include <mutex>

namespace {

void InitializeLibraryOnce()
{
    // Required once per process by libmpg123 before 1.27; harmless afterwards.
    static std::once_flag once;
    std::call_once(once, [] { mpg123_init(); });
}

} // namespace

void Mp3Decoder::HandleDeleter::operator()(mpg123_handle_struct* h) const
{
    mpg123_close(h);
    mpg123_delete(h);
}

Mp3Decoder::Mp3Decoder() = default;
Mp3Decoder::~Mp3Decoder() = default;

bool Mp3Decoder::Open(const char* localPath)
{
    InitializeLibraryOnce();
    handle.reset();
    int error = MPG123_OK;
    mpg123_handle* h = mpg123_new(nullptr, &error);
    if (!h)
        return false;
    handle.reset(h);

    // Gapless trimming is libmpg123's default; say so explicitly because the
    // sample count depends on it.
    mpg123_param(h, MPG123_ADD_FLAGS, MPG123_QUIET | MPG123_GAPLESS | MPG123_FORCE_FLOAT, 0.0);
    mpg123_format_none(h);
    const long* rates = nullptr;
    std::size_t rateCount = 0;
    mpg123_rates(&rates, &rateCount);
    for (std::size_t i = 0; i < rateCount; ++i)
        mpg123_format(h, rates[i], MPG123_MONO | MPG123_STEREO, MPG123_ENC_FLOAT_32);

    if (mpg123_open(h, localPath) != MPG123_OK) {
        handle.reset();
        return false;
    }
    long rate = 0;
    int channelCount = 0;
    int encoding = 0;
    // Reading the format parses the first frame; a file that is not MP3 data fails here.
    if (mpg123_getformat(h, &rate, &channelCount, &encoding) != MPG123_OK || rate <= 0 ||
        channelCount <= 0) {
        handle.reset();
        return false;
    }
    samplingRate = static_cast<std::int32_t>(rate);
    channels = channelCount;
    return true;
}

bool Mp3Decoder::CountFrames()
{
    if (!handle)
        return false;
    mpg123_handle* h = handle.get();
    bool first = true;
    for (;;) {
        const int result = mpg123_framebyframe_next(h);
        if (result == MPG123_DONE)
            break;
        if (result != MPG123_OK && result != MPG123_NEW_FORMAT)
            break;
        mpg123_frameinfo frame{};
        if (mpg123_info(h, &frame) != MPG123_OK || frame.bitrate <= 0)
            continue;
        const auto kbps = static_cast<std::int32_t>(frame.bitrate);
        if (first) {
            minKbps = maxKbps = kbps;
            first = false;
        } else {
            minKbps = std::min(minKbps, kbps);
            maxKbps = std::max(maxKbps, kbps);
        }
    }
    // Every frame has been parsed now, so the length is exact (gapless-trimmed).
    const off_t length = mpg123_length(h);
    samples = length > 0 ? static_cast<std::int64_t>(length) : 0;
    return mpg123_seek(h, 0, SEEK_SET) >= 0;
}

std::int64_t Mp3Decoder::ReadInterleaved(float* out, std::int64_t frames)
{
    if (!handle || frames <= 0 || channels <= 0)
        return 0;
    const std::size_t frameBytes = sizeof(float) * static_cast<std::size_t>(channels);
    auto* bytes = reinterpret_cast<unsigned char*>(out);
    const std::size_t wanted = static_cast<std::size_t>(frames) * frameBytes;
    std::size_t filled = 0;
    while (filled < wanted) {
        std::size_t done = 0;
        const int result = mpg123_read(handle.get(), bytes + filled, wanted - filled, &done);
        filled += done;
        if (result == MPG123_NEW_FORMAT)
            continue;
        if (result != MPG123_OK)
            break;
        if (done == 0)
            break;
    }
    return static_cast<std::int64_t>(filled / frameBytes);
}

QByteArray DecodeMp3ToPcm(const QString& path, std::int32_t& samplingRate, std::int32_t& channels)
{
    Mp3Decoder decoder;
    if (!decoder.Open(path.toLocal8Bit().constData()))
        return {};
    samplingRate = decoder.SamplingRate();
    channels = decoder.Channels();
    if (!decoder.CountFrames())
        return {};
    const std::int64_t bytes =
        decoder.Samples() * decoder.Channels() * static_cast<std::int64_t>(sizeof(float));
    if (bytes <= 0 || bytes > std::numeric_limits<int>::max())
        return {};
    QByteArray pcm(static_cast<int>(bytes), Qt::Uninitialized);
    const std::int64_t read =
        decoder.ReadInterleaved(reinterpret_cast<float*>(pcm.data()), decoder.Samples());
    pcm.truncate(
        static_cast<int>(read * decoder.Channels() * static_cast<std::int64_t>(sizeof(float))));
    return pcm;
}
