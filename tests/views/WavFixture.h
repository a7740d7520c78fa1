#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QtEndian>

#include <cmath>
#include <cstdint>
#include <functional>

// Writes small PCM WAV files for the table tests. `sample(frame, channel)`
// returns a value in -1..1.
inline bool WriteTestWav(const QString& path, int rate, int channels, int bits, int frames,
                         const std::function<double(int, int)>& sample = {})
{
    const int bytesPerSample = bits / 8;
    const quint32 dataSize = static_cast<quint32>(frames) * channels * bytesPerSample;
    QByteArray out;
    auto u32 = [&out](quint32 v) {
        char b[4];
        qToLittleEndian(v, b);
        out.append(b, 4);
    };
    auto u16 = [&out](quint16 v) {
        char b[2];
        qToLittleEndian(v, b);
        out.append(b, 2);
    };
    out.append("RIFF", 4);
    u32(36 + dataSize);
    out.append("WAVEfmt ", 8);
    u32(16);
    u16(1);
    u16(static_cast<quint16>(channels));
    u32(static_cast<quint32>(rate));
    u32(static_cast<quint32>(rate * channels * bytesPerSample));
    u16(static_cast<quint16>(channels * bytesPerSample));
    u16(static_cast<quint16>(bits));
    out.append("data", 4);
    u32(dataSize);
    out.reserve(out.size() + static_cast<int>(dataSize));
    for (int f = 0; f < frames; ++f) {
        for (int c = 0; c < channels; ++c) {
            const double v = sample ? sample(f, c) : 0.0;
            if (bits == 8) {
                out.append(static_cast<char>(static_cast<quint8>(std::lround(128 + v * 127))));
            } else {
                u16(static_cast<quint16>(static_cast<qint16>(std::lround(v * 32767))));
            }
        }
    }
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(out) == out.size();
}

// A sine of `peak` (linear, full scale 1) at `hz`.
inline std::function<double(int, int)> TestSine(double peak, double hz, int rate)
{
    return [=](int frame, int) { return peak * std::sin(2.0 * M_PI * hz * frame / rate); };
}
