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

} // namespace fixtures
