#include "CommentLoop.h"

#include <algorithm>
#include <cstring>

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
