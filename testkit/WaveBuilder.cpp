#include "WaveBuilder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace fixtures {

Bytes pcm(int bits, const std::vector<double>& interleaved, bool bigEndian)
{
    const int bytes = bits / 8;
    const double scale = bits == 8 ? 127.0 : double((std::int64_t(1) << (bits - 1)) - 1);
    Bytes b;
    b.reserve(interleaved.size() * std::size_t(bytes));
    for (const double v : interleaved) {
        const auto q = std::lround(std::clamp(v, -1.0, 1.0) * scale);
        const auto u = static_cast<std::uint32_t>(bits == 8 ? q + 128 : q);
        for (int k = 0; k < bytes; ++k) {
            const int shift = 8 * (bigEndian ? bytes - 1 - k : k);
            b.push_back(static_cast<unsigned char>((u >> shift) & 0xff));
        }
    }
    return b;
}

Bytes wav(int channels, int rate, int bits, const std::vector<double>& interleaved)
{
    return riff(
        {chunk("fmt ", fmtBody(1, channels, rate, bits)), chunk("data", pcm(bits, interleaved))});
}

Bytes aiff(int channels, std::uint32_t rate, int bits, const std::vector<double>& interleaved)
{
    const auto frames = static_cast<std::uint32_t>(interleaved.size() / std::size_t(channels));
    return form("AIFF", {chunk("COMM", commBody(channels, frames, bits, rate), true),
                         chunk("SSND", ssndBody(pcm(bits, interleaved, true)), true)});
}

Bytes ints(int bits, const std::vector<std::int32_t>& values, bool bigEndian)
{
    const int bytes = bits / 8;
    Bytes b;
    b.reserve(values.size() * std::size_t(bytes));
    for (const std::int32_t v : values) {
        const auto u = static_cast<std::uint32_t>(v);
        for (int k = 0; k < bytes; ++k) {
            const int shift = 8 * (bigEndian ? bytes - 1 - k : k);
            b.push_back(static_cast<unsigned char>((u >> shift) & 0xff));
        }
    }
    return b;
}

Bytes floats(int bits, const std::vector<double>& values, bool bigEndian)
{
    Bytes b;
    for (const double v : values) {
        if (bits == 32) {
            const float f = static_cast<float>(v);
            std::uint32_t u = 0;
            std::memcpy(&u, &f, 4);
            bigEndian ? putBe32(b, u) : putLe32(b, u);
        } else {
            std::uint64_t u = 0;
            std::memcpy(&u, &v, 8);
            const auto hi = static_cast<std::uint32_t>(u >> 32);
            const auto lo = static_cast<std::uint32_t>(u);
            if (bigEndian) {
                putBe32(b, hi);
                putBe32(b, lo);
            } else {
                putLe32(b, lo);
                putLe32(b, hi);
            }
        }
    }
    return b;
}

Bytes wavInts(int channels, int rate, int bits, const std::vector<std::int32_t>& values,
              const std::vector<Loop>& loops)
{
    std::vector<std::int32_t> stored = values;
    if (bits == 8)
        for (auto& v : stored)
            v += 128;
    std::vector<Bytes> chunks{chunk("fmt ", fmtBody(1, channels, rate, bits))};
    if (!loops.empty())
        chunks.push_back(chunk("smpl", smplBody(static_cast<std::uint32_t>(loops.size()), loops)));
    chunks.push_back(chunk("data", ints(bits, stored)));
    return riff(chunks);
}

Bytes wavFloat(int channels, int rate, int bits, const std::vector<double>& values)
{
    return riff(
        {chunk("fmt ", fmtBody(3, channels, rate, bits)), chunk("data", floats(bits, values))});
}

Bytes aiffInts(int channels, std::uint32_t rate, int bits, const std::vector<std::int32_t>& values,
               std::uint32_t loopStart, std::uint32_t loopEnd)
{
    const auto frames = static_cast<std::uint32_t>(values.size() / std::size_t(channels));
    std::vector<Bytes> chunks{chunk("COMM", commBody(channels, frames, bits, rate), true)};
    if (loopEnd > loopStart) {
        Bytes mark;
        putBe16(mark, 2);
        const std::uint32_t positions[2] = {loopStart, loopEnd};
        for (int id = 1; id <= 2; ++id) {
            putBe16(mark, id);
            putBe32(mark, positions[id - 1]);
            mark.push_back(1); // one-character name, no pad needed
            mark.push_back(id == 1 ? 'A' : 'B');
        }
        chunks.push_back(chunk("MARK", mark, true));
        Bytes inst{0x3c, 0x00, 0x00, 0x7f, 0x01, 0x7f}; // note, detune, key and velocity ranges
        putBe16(inst, 0);                               // gain
        for (const int v : {1, 1, 2, 0, 0, 0})          // sustain forward 1..2, release none
            putBe16(inst, v);
        chunks.push_back(chunk("INST", inst, true));
    }
    chunks.push_back(chunk("SSND", ssndBody(ints(bits, values, true)), true));
    return form("AIFF", chunks);
}

Bytes aifc(int channels, std::uint32_t rate, int bits, const char* compression, const Bytes& data)
{
    Bytes fver;
    putBe32(fver, 0xA2805140u);
    Bytes comm =
        commBody(channels,
                 static_cast<std::uint32_t>(data.size() / std::size_t(channels * ((bits + 7) / 8))),
                 bits, rate);
    putId(comm, compression);
    comm.push_back(0); // empty compression name, padded
    comm.push_back(0);
    return form("AIFC", {chunk("FVER", fver, true), chunk("COMM", comm, true),
                         chunk("SSND", ssndBody(data), true)});
}

Bytes bextBody(const Bext& bext)
{
    Bytes b(602, 0);
    const auto put = [&b](std::size_t offset, std::size_t length, const std::string& s) {
        std::copy_n(s.begin(), std::min(length, s.size()), b.begin() + long(offset));
    };
    put(0, 256, bext.description);
    put(256, 32, bext.originator);
    put(288, 32, bext.originatorReference);
    put(320, 10, bext.originationDate);
    put(330, 8, bext.originationTime);
    for (int i = 0; i < 8; ++i)
        b[338 + std::size_t(i)] = static_cast<unsigned char>(bext.timeReference >> (8 * i));
    b[346] = 1; // version
    append(b, text(bext.codingHistory));
    return b;
}

Bytes infoList(const std::vector<std::pair<std::string, std::string>>& items, bool pad)
{
    Bytes b;
    putId(b, "INFO");
    for (const auto& [id, value] : items) {
        Bytes body = text(value);
        body.push_back(0);
        append(b, chunk(id.c_str(), body, false, pad));
    }
    return b;
}

Bytes adtlList(const std::vector<std::string>& labels, const std::vector<std::string>& notes)
{
    Bytes b;
    putId(b, "adtl");
    const auto add = [&b](const char* id, std::size_t index, const std::string& value) {
        Bytes body;
        putLe32(body, static_cast<std::uint32_t>(index + 1));
        append(body, text(value));
        body.push_back(0);
        append(b, chunk(id, body));
    };
    for (std::size_t i = 0; i < labels.size(); ++i)
        add("labl", i, labels[i]);
    for (std::size_t i = 0; i < notes.size(); ++i)
        add("note", i, notes[i]);
    return b;
}

Bytes acidBody(std::uint32_t flags, int rootNote, std::uint32_t beats, int meterNumerator,
               int meterDenominator, float tempo)
{
    Bytes b;
    putLe32(b, flags);
    putLe16(b, static_cast<std::uint32_t>(rootNote));
    putLe16(b, 0x8000);
    putLe32(b, 0);
    putLe32(b, beats);
    putLe16(b, static_cast<std::uint32_t>(meterDenominator));
    putLe16(b, static_cast<std::uint32_t>(meterNumerator));
    std::uint32_t bits = 0;
    std::memcpy(&bits, &tempo, sizeof bits);
    putLe32(b, bits);
    return b;
}

Bytes wavWith(const std::vector<Bytes>& chunks)
{
    std::vector<Bytes> all = {chunk("fmt ", fmtBody(1, 1, 48000, 16))};
    all.insert(all.end(), chunks.begin(), chunks.end());
    all.push_back(chunk("data", pcm16({0, 1000, -1000, 0})));
    return riff(all);
}

Bytes aiffWith(const std::vector<Bytes>& chunks)
{
    Bytes data;
    for (const int v : {0, 1000, -1000, 0})
        putBe16(data, static_cast<std::uint16_t>(static_cast<std::int16_t>(v)));
    std::vector<Bytes> all = {chunk("COMM", commBody(1, 4, 16, 48000), true)};
    all.insert(all.end(), chunks.begin(), chunks.end());
    all.push_back(chunk("SSND", ssndBody(data), true));
    return form("AIFF", all);
}

std::vector<std::int32_t> distinct16(std::size_t count, std::uint32_t seed)
{
    std::vector<std::int32_t> v(count);
    std::uint32_t x = seed;
    for (auto& s : v) {
        x = x * 1664525u + 1013904223u;
        s = static_cast<std::int32_t>(x >> 16) - 32768;
    }
    return v;
}

std::vector<double> sine(int frames, int channels, int rate, double hz, double peak)
{
    std::vector<double> v;
    v.reserve(std::size_t(frames) * std::size_t(channels));
    for (int i = 0; i < frames; ++i) {
        const double s = peak * std::sin(2.0 * M_PI * hz * i / rate);
        v.insert(v.end(), std::size_t(channels), s);
    }
    return v;
}

bool writeFile(const std::string& path, const Bytes& bytes)
{
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f)
        return false;
    const bool ok = bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    return std::fclose(f) == 0 && ok;
}

bool writeFile(const QString& path, const Bytes& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    return writeFile(QFile::encodeName(path).toStdString(), bytes);
}

bool writeSineWav(const QString& path, int rate, int channels, int frames, double peak, double hz,
                  int bits)
{
    return writeFile(path, wav(channels, rate, bits, sine(frames, channels, rate, hz, peak)));
}

bool writeLongWav(const QString& path, int channels, int rate, int bits, std::int64_t frames,
                  const BlockFill& fill)
{
    const std::int64_t blockAlign = channels * (bits / 8);
    const std::int64_t dataBytes = frames * blockAlign;
    if (channels < 1 || bits < 16 || bits % 8 != 0 || dataBytes + 36 > 0xffffffffLL)
        return false;
    Bytes header = riff({chunk("fmt ", fmtBody(1, channels, rate, bits))});
    putId(header, "data");
    putLe32(header, static_cast<std::uint32_t>(dataBytes));
    // The RIFF size covers the data that follows the header.
    const auto riffSize = static_cast<std::uint32_t>(header.size() - 8 + dataBytes);
    for (int i = 0; i < 4; ++i)
        header[static_cast<std::size_t>(4 + i)] = static_cast<unsigned char>(riffSize >> (8 * i));
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    bool ok = file.write(reinterpret_cast<const char*>(header.data()),
                         static_cast<qint64>(header.size())) == static_cast<qint64>(header.size());
    constexpr std::int64_t kBlockFrames = 65536;
    std::vector<std::int32_t> block;
    for (std::int64_t at = 0; ok && at < frames; at += kBlockFrames) {
        const std::int64_t n = std::min(kBlockFrames, frames - at);
        block.assign(static_cast<std::size_t>(n * channels), 0);
        fill(at, block);
        const Bytes bytes = ints(bits, block);
        ok = file.write(reinterpret_cast<const char*>(bytes.data()),
                        static_cast<qint64>(bytes.size())) == static_cast<qint64>(bytes.size());
    }
    return ok;
}

std::uint32_t oggCrc(const unsigned char* data, std::size_t size)
{
    std::uint32_t crc = 0;
    for (std::size_t i = 0; i < size; ++i) {
        crc ^= std::uint32_t(data[i]) << 24;
        for (int k = 0; k < 8; ++k)
            crc = (crc & 0x80000000u) ? (crc << 1) ^ 0x04c11db7u : crc << 1;
    }
    return crc;
}

void fixOggPageCrc(Bytes& b, std::size_t page)
{
    if (page + 27 > b.size())
        return;
    const std::size_t segments = b[page + 26];
    std::size_t size = 27 + segments;
    for (std::size_t i = 0; i < segments && page + 27 + i < b.size(); ++i)
        size += b[page + 27 + i];
    if (page + size > b.size())
        return;
    for (int k = 0; k < 4; ++k)
        b[page + 22 + k] = 0;
    const std::uint32_t crc = oggCrc(b.data() + page, size);
    for (int k = 0; k < 4; ++k)
        b[page + 22 + k] = static_cast<unsigned char>(crc >> (8 * k));
}

} // namespace fixtures
