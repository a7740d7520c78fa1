// libFuzzer target for the CSV sort-specification reader. The first byte picks
// the path and comment columns and whether the first line is skipped; the rest
// is the file.

#include "SortCsvReader.h"

#include <QString>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace {

char g_path[] = "/tmp/tesk-csv-fuzz-XXXXXX";

void removeTemp()
{
    unlink(g_path);
}

std::string tempPath()
{
    const int fd = mkstemp(g_path);
    if (fd < 0)
        std::abort();
    close(fd);
    std::atexit(removeTemp);
    return g_path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string path = tempPath();
    if (size < 1)
        return 0;
    const int pathColumn = (data[0] & 7) - 1;
    const int commentColumn = ((data[0] >> 3) & 7) - 1;
    const bool ignoreFirstLine = (data[0] & 0x40) != 0;
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        std::abort();
    std::fwrite(data + 1, 1, size - 1, file);
    std::fclose(file);
    const SortEntryList entries =
        ReadSortCsv(QString::fromStdString(path), pathColumn, commentColumn, ignoreFirstLine);
    // A list is all or nothing: never more lines than the file has.
    if (entries.size() > int(size))
        std::abort();
    return 0;
}
