#include "Mp3SoundSource.h"

#include "AnalysisErrors.h"
#include "WaveByteSource.h"

#include <mpg123.h>

#include <algorithm>
#include <cstdio>
#include <mutex>

namespace {

void initializeLibraryOnce()
{
    // Required once per process by libmpg123 before 1.27; harmless afterwards.
    static std::once_flag once;
    std::call_once(once, [] { mpg123_init(); });
}

ssize_t readBytes(void* handle, void* destination, size_t count)
{
    auto* r = static_cast<Mp3SoundSource::Reader*>(handle);
    const std::size_t got = r->bytes->readAt(r->position, destination, count);
    r->position += static_cast<std::int64_t>(got);
    return static_cast<ssize_t>(got);
}

off_t seekBytes(void* handle, off_t offset, int whence)
{
    auto* r = static_cast<Mp3SoundSource::Reader*>(handle);
    std::int64_t base = 0;
    if (whence == SEEK_CUR)
        base = r->position;
    else if (whence == SEEK_END)
        base = r->bytes->size();
    else if (whence != SEEK_SET)
        return -1;
    const std::int64_t target = base + static_cast<std::int64_t>(offset);
    if (target < 0)
        return -1;
    r->position = target;
    return static_cast<off_t>(target);
}

} // namespace

void Mp3SoundSource::HandleDeleter::operator()(mpg123_handle_struct* h) const
{
    mpg123_close(h);
    mpg123_delete(h);
}

Mp3SoundSource::Mp3SoundSource() = default;

Mp3SoundSource::~Mp3SoundSource()
{
    close();
}

void Mp3SoundSource::close()
{
    m_handle.reset();
    m_bytes.reset();
    m_reader = {};
}

bool Mp3SoundSource::open(const char* localPath)
{
    close();
    return openBytes(WaveByteSource::openFile(localPath), true);
}

bool Mp3SoundSource::openForPlayback(const char* localPath)
{
    // The walk over every frame header reads the whole file (13 ms for half an
    // hour); libmpg123 finds its own way when asked to seek.
    close();
    return openBytes(WaveByteSource::openFile(localPath), false);
}

bool Mp3SoundSource::openMemory(const void* data, std::size_t size, bool forPlayback)
{
    close();
    return openBytes(WaveByteSource::fromMemory(data, size), !forPlayback);
}

bool Mp3SoundSource::openBytes(std::unique_ptr<WaveByteSource> bytes, bool walkFrames)
{
    if (!bytes) {
        setError(kErrorCannotOpen);
        return false;
    }
    m_stream = ScanMp3Stream(*bytes, walkFrames);
    if (!m_stream.accepted) {
        setError(m_stream.errorText);
        return false;
    }
    initializeLibraryOnce();
    int error = MPG123_OK;
    mpg123_handle* h = mpg123_new(nullptr, &error);
    if (!h) {
        setError(kErrorDecodeFailed);
        return false;
    }
    m_handle.reset(h);
    m_bytes = std::move(bytes);
    m_reader.bytes = m_bytes.get();
    m_reader.position = 0;

    // Gapless trimming is libmpg123's default; say so explicitly because the
    // sample count depends on it.
    // ID3v2 tags are skipped, not read: a tag can hold megabytes of pictures.
    mpg123_param(h, MPG123_ADD_FLAGS,
                 MPG123_QUIET | MPG123_GAPLESS | MPG123_FORCE_FLOAT | MPG123_SKIP_ID3V2, 0.0);
    mpg123_format_none(h);
    const long* rates = nullptr;
    std::size_t rateCount = 0;
    mpg123_rates(&rates, &rateCount);
    for (std::size_t i = 0; i < rateCount; ++i)
        mpg123_format(h, rates[i], MPG123_MONO | MPG123_STEREO, MPG123_ENC_FLOAT_32);

    long rate = 0;
    int channelCount = 0;
    int encoding = 0;
    if (mpg123_replace_reader_handle(h, readBytes, seekBytes, nullptr) != MPG123_OK ||
        mpg123_open_handle(h, &m_reader) != MPG123_OK ||
        mpg123_getformat(h, &rate, &channelCount, &encoding) != MPG123_OK || rate <= 0 ||
        channelCount <= 0) {
        close();
        setError(kErrorDecodeFailed);
        return false;
    }
    // Reading the format decoded the first frame on libmpg123's fresh-start
    // path; a seek sets up slightly different synthesis state (output differs
    // in the last bit). Rewinding now puts every read on the path a seek
    // takes, so a later seek (preview) never changes the samples.
    if (mpg123_seek(h, 0, SEEK_SET) < 0) {
        close();
        setError(kErrorDecodeFailed);
        return false;
    }
    // The decoder's view of the first frame is what the output follows.
    setProperties(static_cast<std::int32_t>(rate), channelCount, m_stream.samples);
    return true;
}

std::int64_t Mp3SoundSource::read(float* interleaved, std::int64_t frames)
{
    if (!m_handle || frames <= 0 || channels() <= 0)
        return 0;
    const std::size_t frameBytes = sizeof(float) * static_cast<std::size_t>(channels());
    auto* bytes = reinterpret_cast<unsigned char*>(interleaved);
    const std::size_t wanted = static_cast<std::size_t>(frames) * frameBytes;
    std::size_t filled = 0;
    while (filled < wanted) {
        std::size_t done = 0;
        const int result = mpg123_read(m_handle.get(), bytes + filled, wanted - filled, &done);
        filled += done;
        if (result == MPG123_NEW_FORMAT) {
            long rate = 0;
            int now = 0;
            int encoding = 0;
            // A later stream with another channel count would garble the frames.
            if (mpg123_getformat(m_handle.get(), &rate, &now, &encoding) != MPG123_OK ||
                now != channels())
                break;
            continue;
        }
        if (result != MPG123_OK || done == 0)
            break;
    }
    return static_cast<std::int64_t>(filled / frameBytes);
}

bool Mp3SoundSource::seek(std::int64_t frame)
{
    if (!m_handle)
        return false;
    return mpg123_seek(m_handle.get(), static_cast<off_t>(std::max<std::int64_t>(frame, 0)),
                       SEEK_SET) >= 0;
}
