#pragma once

#include <cstddef>
#include <cstdint>

struct AudioFileInfo;

// The loop that Vorbis comments (in Ogg and FLAC files) state the way game
// engines read them: LOOPSTART (the first frame) and LOOPLENGTH (frames).
struct CommentLoop
{
    std::int64_t start = 0;
    std::int64_t end = 0; // exclusive; none when end <= start
};

// One comment of `length` bytes when it is `key` ("LOOPSTART=", upper case;
// the comment's key in any case) followed by 1 to 15 decimal digits.
bool LoopCommentValue(const char* text, std::size_t length, const char* key, std::int64_t& out);

// A loop from the comments plays and shows like a WAV's: one loop in `info`
// when it is a real range the table's 32-bit columns hold.
void ShowCommentLoop(std::int64_t start, std::int64_t end, AudioFileInfo& info);
