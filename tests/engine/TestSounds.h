#pragma once

// Builds small WAVE and AIFF files in memory for the engine and playback tests.

#include <QByteArray>
#include <QFile>
#include <QString>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace TestSounds {

struct Loop
{
    std::uint32_t start = 0;
    std::uint32_t endInclusive = 0; // 'smpl' stores the last looped sample
};

inline void putLe(QByteArray& b, std::uint32_t v, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        b.append(static_cast<char>((v >> (8 * i)) & 0xff));
}

inline void putBe(QByteArray& b, std::uint32_t v, int bytes)
{
    for (int i = bytes - 1; i >= 0; --i)
        b.append(static_cast<char>((v >> (8 * i)) & 0xff));
}

// values: interleaved integers in the range of `bits` (8-bit given signed, written
// offset as WAV requires).
inline QByteArray wavPcm(int channels, int rate, int bits, const std::vector<std::int32_t>& values,
                         const std::vector<Loop>& loops = {})
{
    const int bytes = (bits + 7) / 8;
    QByteArray data;
    for (std::int32_t v : values)
        putLe(data, static_cast<std::uint32_t>(bits == 8 ? v + 128 : v), bytes);
    QByteArray body("WAVE");
    body.append("fmt ");
    putLe(body, 16, 4);
    putLe(body, 1, 2);
    putLe(body, static_cast<std::uint32_t>(channels), 2);
    putLe(body, static_cast<std::uint32_t>(rate), 4);
    putLe(body, static_cast<std::uint32_t>(rate * channels * bytes), 4);
    putLe(body, static_cast<std::uint32_t>(channels * bytes), 2);
    putLe(body, static_cast<std::uint32_t>(bits), 2);
    if (!loops.empty()) {
        body.append("smpl");
        putLe(body, static_cast<std::uint32_t>(36 + 24 * loops.size()), 4);
        putLe(body, 0, 4);                                             // manufacturer
        putLe(body, 0, 4);                                             // product
        putLe(body, static_cast<std::uint32_t>(1000000000 / rate), 4); // sample period
        putLe(body, 60, 4);                                            // unity note
        putLe(body, 0, 4);                                             // pitch fraction
        putLe(body, 0, 4);                                             // SMPTE format
        putLe(body, 0, 4);                                             // SMPTE offset
        putLe(body, static_cast<std::uint32_t>(loops.size()), 4);
        putLe(body, 0, 4); // sampler data
        for (const Loop& l : loops) {
            putLe(body, 0, 4); // cue id
            putLe(body, 0, 4); // forward
            putLe(body, l.start, 4);
            putLe(body, l.endInclusive, 4);
            putLe(body, 0, 4); // fraction
            putLe(body, 0, 4); // play count: infinite
        }
    }
    body.append("data");
    putLe(body, static_cast<std::uint32_t>(data.size()), 4);
    body.append(data);
    if (data.size() & 1)
        body.append('\0');
    QByteArray file("RIFF");
    putLe(file, static_cast<std::uint32_t>(body.size()), 4);
    file.append(body);
    return file;
}

inline QByteArray wavFloat(int channels, int rate, const std::vector<float>& values)
{
    QByteArray data;
    for (float v : values) {
        std::uint32_t bits = 0;
        std::memcpy(&bits, &v, 4);
        putLe(data, bits, 4);
    }
    QByteArray body("WAVE");
    body.append("fmt ");
    putLe(body, 16, 4);
    putLe(body, 3, 2);
    putLe(body, static_cast<std::uint32_t>(channels), 2);
    putLe(body, static_cast<std::uint32_t>(rate), 4);
    putLe(body, static_cast<std::uint32_t>(rate * channels * 4), 4);
    putLe(body, static_cast<std::uint32_t>(channels * 4), 2);
    putLe(body, 32, 2);
    body.append("data");
    putLe(body, static_cast<std::uint32_t>(data.size()), 4);
    body.append(data);
    QByteArray file("RIFF");
    putLe(file, static_cast<std::uint32_t>(body.size()), 4);
    file.append(body);
    return file;
}

// A WAVE file of 64-bit floats.
inline QByteArray wavFloat64(int channels, int rate, const std::vector<double>& values)
{
    QByteArray data;
    for (double v : values) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &v, 8);
        putLe(data, static_cast<std::uint32_t>(bits), 4);
        putLe(data, static_cast<std::uint32_t>(bits >> 32), 4);
    }
    QByteArray body("WAVE");
    body.append("fmt ");
    putLe(body, 16, 4);
    putLe(body, 3, 2);
    putLe(body, static_cast<std::uint32_t>(channels), 2);
    putLe(body, static_cast<std::uint32_t>(rate), 4);
    putLe(body, static_cast<std::uint32_t>(rate * channels * 8), 4);
    putLe(body, static_cast<std::uint32_t>(channels * 8), 2);
    putLe(body, 64, 2);
    body.append("data");
    putLe(body, static_cast<std::uint32_t>(data.size()), 4);
    body.append(data);
    QByteArray file("RIFF");
    putLe(file, static_cast<std::uint32_t>(body.size()), 4);
    file.append(body);
    return file;
}

// 80-bit IEEE extended, as AIFF stores its sampling rate.
inline void putExtended(QByteArray& b, double value)
{
    int exponent = 0;
    const double mantissa = std::frexp(value, &exponent); // value = m * 2^e, 0.5 <= m < 1
    putBe(b, static_cast<std::uint32_t>(exponent - 1 + 16383), 2);
    const auto m = static_cast<std::uint64_t>(std::ldexp(mantissa, 64));
    putBe(b, static_cast<std::uint32_t>(m >> 32), 4);
    putBe(b, static_cast<std::uint32_t>(m & 0xffffffffu), 4);
}

// AIFF with an optional sustain loop from marker `loopStart` to marker `loopEnd`
// (marker positions sit between frames, so the end is exclusive).
inline QByteArray aiffPcm(int channels, int rate, int bits, const std::vector<std::int32_t>& values,
                          std::uint32_t loopStart = 0, std::uint32_t loopEnd = 0)
{
    const int bytes = (bits + 7) / 8;
    const auto frames =
        static_cast<std::uint32_t>(values.size() / static_cast<std::size_t>(channels));
    QByteArray body("AIFF");
    body.append("COMM");
    putBe(body, 18, 4);
    putBe(body, static_cast<std::uint32_t>(channels), 2);
    putBe(body, frames, 4);
    putBe(body, static_cast<std::uint32_t>(bits), 2);
    putExtended(body, rate);
    if (loopEnd > loopStart) {
        body.append("MARK");
        putBe(body, 2 + 2 * (2 + 4 + 2), 4); // two markers with 1-character names
        putBe(body, 2, 2);
        putBe(body, 1, 2);
        putBe(body, loopStart, 4);
        body.append('\x01');
        body.append('A');
        putBe(body, 2, 2);
        putBe(body, loopEnd, 4);
        body.append('\x01');
        body.append('B');
        body.append("INST");
        putBe(body, 20, 4);
        body.append(QByteArray("\x3c\x00\x00\x7f\x01\x7f", 6)); // note, detune, ranges
        putBe(body, 0, 2);                                      // gain
        putBe(body, 1, 2);                                      // sustain: forward
        putBe(body, 1, 2);
        putBe(body, 2, 2);
        putBe(body, 0, 2); // release: none
        putBe(body, 0, 2);
        putBe(body, 0, 2);
    }
    QByteArray data;
    for (std::int32_t v : values)
        putBe(data, static_cast<std::uint32_t>(v), bytes);
    body.append("SSND");
    putBe(body, static_cast<std::uint32_t>(8 + data.size()), 4);
    putBe(body, 0, 4);
    putBe(body, 0, 4);
    body.append(data);
    if (data.size() & 1)
        body.append('\0');
    QByteArray file("FORM");
    putBe(file, static_cast<std::uint32_t>(body.size()), 4);
    file.append(body);
    return file;
}

// AIFF-C with the given compression type ("fl32", "fl64", "sowt", ...) around
// sample bytes already in that encoding.
inline QByteArray aifc(int channels, int rate, int bits, const char* compression,
                       const QByteArray& data)
{
    const int bytes = (bits + 7) / 8;
    QByteArray body("AIFC");
    body.append("FVER");
    putBe(body, 4, 4);
    putBe(body, 0xA2805140u, 4);
    body.append("COMM");
    putBe(body, 24, 4);
    putBe(body, static_cast<std::uint32_t>(channels), 2);
    putBe(body, static_cast<std::uint32_t>(data.size() / (channels * bytes)), 4);
    putBe(body, static_cast<std::uint32_t>(bits), 2);
    putExtended(body, rate);
    body.append(compression, 4);
    body.append('\0'); // empty compression name, padded
    body.append('\0');
    body.append("SSND");
    putBe(body, static_cast<std::uint32_t>(8 + data.size()), 4);
    putBe(body, 0, 4);
    putBe(body, 0, 4);
    body.append(data);
    if (data.size() & 1)
        body.append('\0');
    QByteArray file("FORM");
    putBe(file, static_cast<std::uint32_t>(body.size()), 4);
    file.append(body);
    return file;
}

// Distinct, full-range 16-bit values so that any misplaced frame shows.
inline std::vector<std::int32_t> distinct16(std::size_t count, std::uint32_t seed = 1)
{
    std::vector<std::int32_t> v(count);
    std::uint32_t x = seed;
    for (auto& s : v) {
        x = x * 1664525u + 1013904223u;
        s = static_cast<std::int32_t>(x >> 16) - 32768;
    }
    return v;
}

inline bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

} // namespace TestSounds
