#include "WaveByteSource.h"

#include <cstring>
#include <new>

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
        // Sequential reads are the common case; skip the seek so stdio keeps its buffer.
        if (pos != m_position) {
            if (fseeko(m_file, static_cast<off_t>(pos), SEEK_SET) != 0) {
                m_position = -1;
                return 0;
            }
            m_position = pos;
        }
        const std::size_t got = std::fread(destination, 1, n, m_file);
        m_position = got == n ? pos + static_cast<std::int64_t>(got) : -1;
        if (got != n)
            std::clearerr(m_file);
        return got;
    }

private:
    std::FILE* m_file;
    std::int64_t m_size;
    std::int64_t m_position = 0;
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
    std::FILE* file = std::fopen(localPath, "rb");
    if (!file)
        return nullptr;
    if (fseeko(file, 0, SEEK_END) != 0) {
        std::fclose(file);
        return nullptr;
    }
    const off_t size = ftello(file);
    if (size < 0 || fseeko(file, 0, SEEK_SET) != 0) {
        std::fclose(file);
        return nullptr;
    }
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
