#include "WaveByteSource.h"

#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class FileByteSource final : public WaveByteSource
{
public:
    FileByteSource(std::FILE* file, std::int64_t size)
        : m_file(file)
        , m_size(size)
    {}
    ~FileByteSource() override { std::fclose(m_file); }
    FileByteSource(const FileByteSource&) = delete;
    FileByteSource& operator=(const FileByteSource&) = delete;

    std::int64_t size() const override { return m_size; }

    std::size_t readAt(std::int64_t pos, void* destination, std::size_t n) override
    {
        if (pos < 0 || pos >= m_size || n == 0)
            return 0;
        // The sample decoders read a frame at a time; serving those small reads
        // from our own block keeps stdio's per-call cost out of the inner loop.
        if (pos >= m_bufferStart && pos + static_cast<std::int64_t>(n) <= m_bufferEnd) {
            std::memcpy(destination, m_buffer + (pos - m_bufferStart), n);
            return n;
        }
        if (n >= kBufferSize / 2)
            return readDirect(pos, destination, n);
        m_bufferStart = m_bufferEnd = 0;
        const std::size_t filled = readDirect(pos, m_buffer, kBufferSize);
        if (filled == 0)
            return 0;
        m_bufferStart = pos;
        m_bufferEnd = pos + static_cast<std::int64_t>(filled);
        const std::size_t count = n < filled ? n : filled;
        std::memcpy(destination, m_buffer, count);
        return count;
    }

private:
    static constexpr std::size_t kBufferSize = 64 * 1024;

    std::size_t readDirect(std::int64_t pos, void* destination, std::size_t n)
    {
        if (pos != m_position) {
            if (fseeko(m_file, static_cast<off_t>(pos), SEEK_SET) != 0) {
                m_position = -1;
                return 0;
            }
            m_position = pos;
        }
        const std::size_t got = std::fread(destination, 1, n, m_file);
        m_position = pos + static_cast<std::int64_t>(got);
        if (got != n) {
            std::clearerr(m_file);
            m_position = -1;
        }
        return got;
    }

    std::FILE* m_file;
    std::int64_t m_size;
    std::int64_t m_position = 0;
    std::int64_t m_bufferStart = 0;
    std::int64_t m_bufferEnd = 0;
    unsigned char m_buffer[kBufferSize];
};

class MemoryByteSource final : public WaveByteSource
{
public:
    MemoryByteSource(const void* data, std::size_t size)
        : m_data(static_cast<const unsigned char*>(data))
        , m_size(static_cast<std::int64_t>(size))
    {}

    std::int64_t size() const override { return m_size; }

    std::size_t readAt(std::int64_t pos, void* destination, std::size_t n) override
    {
        if (pos < 0 || pos >= m_size || n == 0)
            return 0;
        const auto available = static_cast<std::size_t>(m_size - pos);
        const std::size_t count = n < available ? n : available;
        std::memcpy(destination, m_data + pos, count);
        return count;
    }

private:
    const unsigned char* m_data;
    std::int64_t m_size;
};

} // namespace

std::unique_ptr<WaveByteSource> WaveByteSource::openFile(const char* localPath)
{
    if (!localPath)
        return nullptr;
    // Non-blocking, so that a FIFO cannot hold the reader; only regular files pass.
    const int fd = ::open(localPath, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return nullptr;
    struct stat status
    {};
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(fd);
        return nullptr;
    }
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    std::FILE* file = ::fdopen(fd, "rb");
    if (!file) {
        ::close(fd);
        return nullptr;
    }
    const auto size = static_cast<std::int64_t>(status.st_size);
    std::unique_ptr<WaveByteSource> source(new (std::nothrow) FileByteSource(file, size));
    if (!source)
        std::fclose(file);
    return source;
}

std::unique_ptr<WaveByteSource> WaveByteSource::fromMemory(const void* data, std::size_t size)
{
    if (!data && size != 0)
        return nullptr;
    return std::unique_ptr<WaveByteSource>(new (std::nothrow) MemoryByteSource(data, size));
}
