#pragma once

#include <cstddef>
#include <string>

// Metadata texts as writers leave them: UTF-8, or an 8-bit Western text for
// bytes that are not valid UTF-8 (Latin-1, with the Windows-1252 letters in
// 0x80..0x9F where Latin-1 has control codes), or UTF-16 behind a byte-order
// mark. The text ends at the first NUL; line breaks become '\n', tabs spaces,
// other control characters are dropped; surrounding white space is trimmed.
// A field where control characters are more than a few and over a tenth of
// the characters holds binary data and yields an empty text.
// The result is valid UTF-8 of at most kMaxMetadataTextBytes.
std::string DecodeMetadataText(const void* data, std::size_t size);

bool IsValidUtf8(const unsigned char* data, std::size_t size);

// The same 8-bit Western reading as above, byte for byte, with nothing
// dropped or trimmed (for whole documents such as iXML).
std::string WesternToUtf8(const unsigned char* data, std::size_t size);
