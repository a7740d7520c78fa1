#pragma once

#include <QString>

#include <cstdint>

// What tells that a file is still the one that was analysed: its size and its
// modification time, in nanoseconds where the file system keeps them.
struct FileStamp
{
    std::int64_t size = -1; // -1: the file's status cannot be read
    std::int64_t mtimeNs = 0;

    bool exists() const { return size >= 0; }
    bool operator==(const FileStamp& o) const { return size == o.size && mtimeNs == o.mtimeNs; }
    bool operator!=(const FileStamp& o) const { return !(*this == o); }
};

FileStamp ReadFileStamp(const QString& path);
