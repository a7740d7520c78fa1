#include "MetadataText.h"

#include "FileMetadata.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

// Enough input for the longest kept text in any encoding.
constexpr std::size_t kMaxInputBytes = 4 * kMaxMetadataTextBytes;

// Windows-1252 letters where Latin-1 has C1 control codes; 0 where none is defined.
constexpr std::uint16_t kCp1252High[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void appendUtf8(std::string& out, std::uint32_t c)
{
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

// Code points in, cleaned UTF-8 out: line breaks unified, controls dropped.
class TextSink final
{
public:
    void put(std::uint32_t c)
    {
        ++seen;
        if (c == '\r') {
            out.push_back('\n');
            afterCr = true;
            return;
        }
        const bool lineFeedAfterCr = c == '\n' && afterCr;
        afterCr = false;
        if (lineFeedAfterCr)
            return;
        if (c == '\t')
            c = ' ';
        if ((c < 0x20 && c != '\n') || c == 0x7F || (c >= 0x80 && c < 0xA0) || c == 0xFEFF) {
            ++dropped;
            return;
        }
        if ((c >= 0xD800 && c < 0xE000) || c > 0x10FFFF)
            c = 0xFFFD;
        appendUtf8(out, c);
    }

    std::string finish()
    {
        // Control codes in numbers are binary data (an uninitialised field, a
        // struct), not text: nothing is shown rather than the letters among them.
        if (dropped > 2 && dropped * 10 > seen)
            return {};
        const auto isSpace = [](char ch) { return ch == ' ' || ch == '\n'; };
        const auto first = std::find_if_not(out.begin(), out.end(), isSpace);
        const auto last = std::find_if_not(out.rbegin(), out.rend(), isSpace).base();
        std::string trimmed = first < last ? std::string(first, last) : std::string();
        CutUtf8(trimmed, kMaxMetadataTextBytes);
        return trimmed;
    }

private:
    std::string out;
    bool afterCr = false;
    std::size_t seen = 0;
    std::size_t dropped = 0;
};

// Length of the UTF-8 sequence starting at p (at most n bytes), 0 when invalid.
std::size_t utf8Sequence(const unsigned char* p, std::size_t n, std::uint32_t* codePoint)
{
    const unsigned char b = p[0];
    std::size_t length = 0;
    std::uint32_t c = 0;
    std::uint32_t lowest = 0;
    if (b < 0x80) {
        *codePoint = b;
        return 1;
    }
    if (b >= 0xC2 && b <= 0xDF) {
        length = 2;
        c = b & 0x1F;
        lowest = 0x80;
    } else if (b >= 0xE0 && b <= 0xEF) {
        length = 3;
        c = b & 0x0F;
        lowest = 0x800;
    } else if (b >= 0xF0 && b <= 0xF4) {
        length = 4;
        c = b & 0x07;
        lowest = 0x10000;
    } else {
        return 0;
    }
    if (length > n)
        return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((p[i] & 0xC0) != 0x80)
            return 0;
        c = (c << 6) | (p[i] & 0x3F);
    }
    if (c < lowest || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000))
        return 0;
    *codePoint = c;
    return length;
}

std::string decodeUtf16(const unsigned char* p, std::size_t size, bool bigEndian)
{
    TextSink sink;
    const auto unit = [&](std::size_t i) {
        return static_cast<std::uint32_t>(bigEndian ? (p[i] << 8) | p[i + 1]
                                                    : (p[i + 1] << 8) | p[i]);
    };
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        std::uint32_t c = unit(i);
        if (c == 0)
            break;
        if (c >= 0xD800 && c < 0xDC00 && i + 3 < size) {
            const std::uint32_t low = unit(i + 2);
            if (low >= 0xDC00 && low < 0xE000) {
                c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                i += 2;
            }
        }
        sink.put(c);
    }
    return sink.finish();
}

} // namespace

bool IsValidUtf8(const unsigned char* data, std::size_t size)
{
    std::size_t i = 0;
    while (i < size) {
        std::uint32_t c = 0;
        const std::size_t length = utf8Sequence(data + i, size - i, &c);
        if (length == 0)
            return false;
        i += length;
    }
    return true;
}

std::string WesternToUtf8(const unsigned char* data, std::size_t size)
{
    std::string out;
    out.reserve(size + size / 8);
    for (std::size_t i = 0; i < size; ++i) {
        const unsigned char b = data[i];
        const std::uint32_t c = b >= 0x80 && b < 0xA0 ? kCp1252High[b - 0x80] : b;
        appendUtf8(out, c == 0 ? 0xFFFD : c);
    }
    return out;
}

std::string DecodeMetadataText(const void* data, std::size_t size)
{
    if (!data || size == 0)
        return {};
    const auto* p = static_cast<const unsigned char*>(data);
    size = std::min(size, kMaxInputBytes);
    if (size >= 2 && ((p[0] == 0xFF && p[1] == 0xFE) || (p[0] == 0xFE && p[1] == 0xFF)))
        return decodeUtf16(p + 2, size - 2, p[0] == 0xFE);

    const void* nul = std::memchr(p, 0, size);
    if (nul)
        size = static_cast<std::size_t>(static_cast<const unsigned char*>(nul) - p);
    if (size >= 3 && p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF) {
        p += 3;
        size -= 3;
    }
    TextSink sink;
    if (IsValidUtf8(p, size)) {
        std::size_t i = 0;
        while (i < size) {
            std::uint32_t c = 0;
            i += utf8Sequence(p + i, size - i, &c);
            sink.put(c);
        }
    } else {
        for (std::size_t i = 0; i < size; ++i) {
            const unsigned char b = p[i];
            sink.put(b >= 0x80 && b < 0xA0 ? kCp1252High[b - 0x80] : b); // 0 is dropped
        }
    }
    return sink.finish();
}
