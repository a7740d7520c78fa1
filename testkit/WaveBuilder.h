#pragma once

// Builders for the WAV and AIFF files the tests feed to the program. Written
// from the file-format descriptions, independently of the reader.

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace fixtures {

using Bytes = std::vector<unsigned char>;

inline void putLe16(Bytes& b, std::uint32_t v)
{
    b.push_back(v & 0xff);
    b.push_back((v >> 8) & 0xff);
}
inline void putLe32(Bytes& b, std::uint32_t v)
{
    putLe16(b, v & 0xffff);
    putLe16(b, v >> 16);
}
inline void putBe16(Bytes& b, std::uint32_t v)
{
    b.push_back((v >> 8) & 0xff);
    b.push_back(v & 0xff);
}
inline void putBe32(Bytes& b, std::uint32_t v)
{
    putBe16(b, v >> 16);
    putBe16(b, v & 0xffff);
}
inline void putId(Bytes& b, const char* id)
{
    // Byte by byte: GCC 12 at -O3 takes an insert into an empty vector for an overflow.
    for (int i = 0; i < 4; ++i)
        b.push_back(static_cast<unsigned char>(id[i]));
}
inline void append(Bytes& b, const Bytes& more)
{
    b.insert(b.end(), more.begin(), more.end());
}

// One chunk; pad adds the byte that keeps the next chunk on an even offset.
inline Bytes chunk(const char* id, const Bytes& body, bool bigEndian = false, bool pad = true)
{
    Bytes b;
    putId(b, id);
    if (bigEndian)
        putBe32(b, static_cast<std::uint32_t>(body.size()));
    else
        putLe32(b, static_cast<std::uint32_t>(body.size()));
    append(b, body);
    if (pad && (body.size() & 1))
        b.push_back(0);
    return b;
}

inline Bytes fmtBody(int tag, int channels, int rate, int bits)
{
    Bytes b;
    const int blockAlign = channels * ((bits + 7) / 8);
    putLe16(b, tag);
    putLe16(b, channels);
    putLe32(b, rate);
    putLe32(b, rate * blockAlign);
    putLe16(b, blockAlign);
    putLe16(b, bits);
    return b;
}

// WAVE_FORMAT_EXTENSIBLE with the KSDATAFORMAT GUID of the given sub-format.
inline Bytes fmtExtensible(int channels, int rate, int containerBits, int validBits, int subFormat,
                           bool goodGuid = true)
{
    Bytes b;
    const int blockAlign = channels * containerBits / 8;
    putLe16(b, 0xFFFE);
    putLe16(b, channels);
    putLe32(b, rate);
    putLe32(b, rate * blockAlign);
    putLe16(b, blockAlign);
    putLe16(b, containerBits);
    putLe16(b, 22);
    putLe16(b, validBits);
    putLe32(b, channels == 2 ? 3 : 4);
    putLe16(b, subFormat);
    const unsigned char tail[14] = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                    0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};
    b.insert(b.end(), tail, tail + 14);
    if (!goodGuid)
        b.back() ^= 1;
    return b;
}

// RIFF/WAVE around the chunks; sizeDelta shifts the stated RIFF size.
inline Bytes riff(const std::vector<Bytes>& chunks, long sizeDelta = 0)
{
    Bytes body;
    putId(body, "WAVE");
    for (const Bytes& c : chunks)
        append(body, c);
    Bytes b;
    putId(b, "RIFF");
    putLe32(b, static_cast<std::uint32_t>(static_cast<long>(body.size()) + sizeDelta));
    append(b, body);
    return b;
}

inline Bytes pcm16(const std::vector<int>& values)
{
    Bytes b;
    for (const int v : values)
        putLe16(b, static_cast<std::uint16_t>(static_cast<std::int16_t>(v)));
    return b;
}

inline Bytes pcm24(const std::vector<int>& values)
{
    Bytes b;
    for (const int v : values) {
        b.push_back(v & 0xff);
        b.push_back((v >> 8) & 0xff);
        b.push_back((v >> 16) & 0xff);
    }
    return b;
}

inline Bytes wav16(int channels, int rate, const std::vector<int>& interleaved)
{
    return riff({chunk("fmt ", fmtBody(1, channels, rate, 16)), chunk("data", pcm16(interleaved))});
}

inline Bytes cueBody(std::uint32_t statedCount, std::uint32_t writtenCount,
                     std::uint32_t positionBase = 0, std::uint32_t offsetBase = 0)
{
    Bytes b;
    putLe32(b, statedCount);
    for (std::uint32_t i = 0; i < writtenCount; ++i) {
        putLe32(b, i + 1);                 // ID
        putLe32(b, positionBase + i * 10); // play-order position
        putId(b, "data");
        putLe32(b, 0);
        putLe32(b, 0);
        putLe32(b, offsetBase + i * 10); // sample offset
    }
    return b;
}

struct Loop
{
    std::uint32_t start;
    std::uint32_t endInclusive;
};

inline Bytes smplBody(std::uint32_t statedCount, const std::vector<Loop>& loops)
{
    Bytes b;
    for (int i = 0; i < 3; ++i)
        putLe32(b, 0); // manufacturer, product, sample period
    putLe32(b, 60);    // MIDI unity note
    for (int i = 0; i < 3; ++i)
        putLe32(b, 0); // pitch fraction, SMPTE format, SMPTE offset
    putLe32(b, statedCount);
    putLe32(b, 0); // sampler data
    for (std::size_t i = 0; i < loops.size(); ++i) {
        putLe32(b, static_cast<std::uint32_t>(i));
        putLe32(b, 0);
        putLe32(b, loops[i].start);
        putLe32(b, loops[i].endInclusive);
        putLe32(b, 0);
        putLe32(b, 0);
    }
    return b;
}

// A broadcast-wave 'bext' body (version 1, 602 bytes): the description, then
// zeros except the time reference (samples since midnight).
inline Bytes bextBody(const std::string& description, std::uint64_t timeReference)
{
    Bytes b(602, 0);
    std::memcpy(b.data(), description.data(), std::min<std::size_t>(description.size(), 256));
    for (int i = 0; i < 8; ++i)
        b[static_cast<std::size_t>(338 + i)] = static_cast<unsigned char>(timeReference >> (8 * i));
    b[346] = 1; // version
    return b;
}

// A LIST body of type INFO with one text item per (id, text) pair, each
// zero-terminated and padded to an even length.
inline Bytes listInfoBody(const std::vector<std::pair<const char*, std::string>>& items)
{
    Bytes b;
    putId(b, "INFO");
    for (const auto& item : items) {
        Bytes text(item.second.begin(), item.second.end());
        text.push_back(0);
        append(b, chunk(item.first, text));
    }
    return b;
}

// 80-bit IEEE extended encoding of a positive integer rate.
inline Bytes extended(std::uint32_t rate)
{
    Bytes b;
    int top = 31;
    while (top > 0 && !(rate & (1u << top)))
        --top;
    putBe16(b, rate ? 16383 + top : 0);
    const std::uint64_t mantissa = static_cast<std::uint64_t>(rate) << (63 - top);
    putBe32(b, static_cast<std::uint32_t>(mantissa >> 32));
    putBe32(b, static_cast<std::uint32_t>(mantissa));
    return b;
}

inline Bytes commBody(int channels, std::uint32_t frames, int bits, std::uint32_t rate)
{
    Bytes b;
    putBe16(b, channels);
    putBe32(b, frames);
    putBe16(b, bits);
    append(b, extended(rate));
    return b;
}

inline Bytes ssndBody(const Bytes& data)
{
    Bytes b;
    putBe32(b, 0);
    putBe32(b, 0);
    append(b, data);
    return b;
}

inline Bytes form(const char* type, const std::vector<Bytes>& chunks)
{
    Bytes body;
    putId(body, type);
    for (const Bytes& c : chunks)
        append(body, c);
    Bytes b;
    putId(b, "FORM");
    putBe32(b, static_cast<std::uint32_t>(body.size()));
    append(b, body);
    return b;
}

inline Bytes aiff16(int channels, std::uint32_t rate, const std::vector<int>& interleaved)
{
    Bytes data;
    for (const int v : interleaved)
        putBe16(data, static_cast<std::uint16_t>(static_cast<std::int16_t>(v)));
    return form("AIFF",
                {chunk("COMM",
                       commBody(channels, static_cast<std::uint32_t>(interleaved.size() / channels),
                                16, rate),
                       true),
                 chunk("SSND", ssndBody(data), true)});
}

// Interleaved samples in -1..1 quantised to `bits`: 8 is unsigned, 16, 24 and
// 32 are two's complement, in the byte order the container asks for.
Bytes pcm(int bits, const std::vector<double>& interleaved, bool bigEndian = false);

// A plain PCM file around `interleaved`.
Bytes wav(int channels, int rate, int bits, const std::vector<double>& interleaved);
Bytes aiff(int channels, std::uint32_t rate, int bits, const std::vector<double>& interleaved);

// `frames` frames of a sine of linear `peak`, the same on every channel.
std::vector<double> sine(int frames, int channels, int rate, double hz, double peak);

// Integer samples already in the range of `bits`, two's complement.
Bytes ints(int bits, const std::vector<std::int32_t>& values, bool bigEndian = false);
// IEEE floats of 32 or 64 bits.
Bytes floats(int bits, const std::vector<double>& values, bool bigEndian = false);

// PCM WAV of integer samples (8-bit given signed, stored offset by 128), with
// an optional 'smpl' chunk holding `loops`.
Bytes wavInts(int channels, int rate, int bits, const std::vector<std::int32_t>& values,
              const std::vector<Loop>& loops = {});
Bytes wavFloat(int channels, int rate, int bits, const std::vector<double>& values);
// AIFF of integer samples; loopEnd > loopStart adds a forward sustain loop
// between two markers (markers sit between frames, so the end is exclusive).
Bytes aiffInts(int channels, std::uint32_t rate, int bits, const std::vector<std::int32_t>& values,
               std::uint32_t loopStart = 0, std::uint32_t loopEnd = 0);
// AIFF-C with compression type `compression` ("fl32", "sowt", ...) around
// sample bytes already in that encoding.
Bytes aifc(int channels, std::uint32_t rate, int bits, const char* compression, const Bytes& data);

// Distinct, full-range 16-bit values so that any misplaced frame shows.
std::vector<std::int32_t> distinct16(std::size_t count, std::uint32_t seed = 1);

// Metadata chunk bodies, laid out as the BWF, iXML, RIFF INFO and 'acid'
// descriptions have them.

// Text bytes as given (no terminator).
inline Bytes text(const std::string& s)
{
    return Bytes(s.begin(), s.end());
}

// BWF 'bext' with its 602-byte fixed part (version 1, no loudness values)
// and the coding history after it.
struct Bext
{
    std::string description;
    std::string originator;
    std::string originatorReference;
    std::string originationDate; // yyyy-mm-dd
    std::string originationTime; // hh:mm:ss
    std::uint64_t timeReference = 0;
    std::string codingHistory;
};
Bytes bextBody(const Bext& bext);

// 'LIST' of type 'INFO' holding one sub-chunk per item, each text
// NUL-terminated; `pad` adds the byte after odd-sized texts.
Bytes infoList(const std::vector<std::pair<std::string, std::string>>& items, bool pad = true);

// 'LIST' of type 'adtl' with a 'labl' per label and a 'note' per note, for
// cue points 1, 2, ...
Bytes adtlList(const std::vector<std::string>& labels, const std::vector<std::string>& notes = {});

// 'acid': flags (bit 0 one-shot, bit 1 root note set), root note, beats, meter, tempo.
Bytes acidBody(std::uint32_t flags, int rootNote, std::uint32_t beats, int meterNumerator,
               int meterDenominator, float tempo);

// A short PCM WAV (16-bit mono, 48 kHz, a few samples) with `chunks` before its data.
Bytes wavWith(const std::vector<Bytes>& chunks);
// The same as AIFF; the chunks are given with big-endian sizes (chunk(..., true)).
Bytes aiffWith(const std::vector<Bytes>& chunks);

inline QByteArray toQByteArray(const Bytes& b)
{
    return QByteArray(reinterpret_cast<const char*>(b.data()), static_cast<int>(b.size()));
}

// Ogg's page checksum (polynomial 0x04c11db7, no reflection) and a helper that
// rewrites the checksum of the page at `page` after a field was patched.
std::uint32_t oggCrc(const unsigned char* data, std::size_t size);
void fixOggPageCrc(Bytes& bytes, std::size_t page);

bool writeFile(const std::string& path, const Bytes& bytes);
bool writeFile(const QString& path, const Bytes& bytes);

// A 16-bit (or `bits`) PCM WAV of a sine, for tests that need a real file of
// a given length and format rather than particular samples.
bool writeSineWav(const QString& path, int rate, int channels, int frames, double peak = 0.25,
                  double hz = 997.0, int bits = 16);

// A PCM WAV written a block at a time, for files too long to build in memory
// (half an hour of audio and more). `fill` gets the first frame of each block
// and a block to fill with interleaved integer samples in the range of `bits`
// (16, 24 or 32).
using BlockFill = std::function<void(std::int64_t firstFrame, std::vector<std::int32_t>& block)>;
bool writeLongWav(const QString& path, int channels, int rate, int bits, std::int64_t frames,
                  const BlockFill& fill);

} // namespace fixtures
