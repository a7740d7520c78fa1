#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

// Where the wave header reader takes its bytes from: a file or a caller's
// buffer. Both opens share every parsing path through this.
class WaveByteSource
{
public:
    virtual ~WaveByteSource() = default;
    virtual std::int64_t size() const = 0;
    // Reads up to n bytes at pos; returns how many were read.
    virtual std::size_t readAt(std::int64_t pos, void* destination, std::size_t n) = 0;

    bool readExact(std::int64_t pos, void* destination, std::size_t n)
    {
        return readAt(pos, destination, n) == n;
    }

    // nullptr when the file cannot be opened or its size cannot be read.
    static std::unique_ptr<WaveByteSource> openFile(const char* localPath);
    static std::unique_ptr<WaveByteSource> fromMemory(const void* data, std::size_t size);
};
