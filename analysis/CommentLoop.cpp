#include "CommentLoop.h"

#include "AudioFileInfo.h"

#include <algorithm>
#include <cstring>
#include <limits>

bool LoopCommentValue(const char* text, std::size_t length, const char* key, std::int64_t& out)
{
    // Decimal frame counts, as the game engines that use these tags write them.
    const std::size_t keyLength = std::strlen(key);
    if (!text || length <= keyLength || !std::equal(key, key + keyLength, text, [](char a, char b) {
            return a == (b >= 'a' && b <= 'z' ? char(b - 'a' + 'A') : b);
        }))
        return false;
    if (length - keyLength > 15)
        return false;
    std::int64_t v = 0;
    for (std::size_t at = keyLength; at < length; ++at) {
        if (text[at] < '0' || text[at] > '9')
            return false;
        v = v * 10 + (text[at] - '0');
    }
    out = v;
    return true;
}

void ShowCommentLoop(std::int64_t start, std::int64_t end, AudioFileInfo& info)
{
    if (end > start && end <= std::numeric_limits<std::int32_t>::max()) {
        info.loopCount = 1;
        info.loopStart = static_cast<std::int32_t>(start);
        info.loopEnd = static_cast<std::int32_t>(end);
    }
}
