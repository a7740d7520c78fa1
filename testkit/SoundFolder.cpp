#include "SoundFolder.h"

#include "WaveBuilder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <cmath>
#include <cstdio>
#include <random>

namespace fixtures {

namespace {

// A few partials under a decaying, re-struck envelope with some noise: close
// enough to a sound effect for the decoders and the meter.
std::vector<double> MusicLike(int frames, int channels, int rate, std::mt19937& random)
{
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double base = 80.0 + 600.0 * unit(random);
    const double strike = 0.3 + 1.2 * unit(random);
    std::vector<double> out(std::size_t(frames) * std::size_t(channels));
    for (int f = 0; f < frames; ++f) {
        const double t = double(f) / rate;
        const double envelope = std::exp(-3.0 * std::fmod(t, strike));
        double v = 0.0;
        for (int p = 1; p <= 4; ++p)
            v += std::sin(2.0 * M_PI * base * p * t) / p;
        v = 0.35 * envelope * v + 0.02 * (unit(random) - 0.5);
        for (int c = 0; c < channels; ++c)
            out[std::size_t(f) * std::size_t(channels) + std::size_t(c)] = c == 1 ? 0.8 * v : v;
    }
    return out;
}

bool Encode(const QString& program, const QStringList& args)
{
    return QProcess::execute(program, args) == 0;
}

// Encoding is what makes a folder slow to build; past these the sounds repeat.
constexpr int kDistinctSounds = 2000;

} // namespace

bool MakeRealSizeFolder(const QString& folder, int count)
{
    if (FolderComplete(folder))
        return true;
    std::printf("generating %d real-size files in %s ...\n", count, qPrintable(folder));
    std::fflush(stdout);
    if (!QDir().mkpath(folder))
        return false;
    const bool lame = !QStandardPaths::findExecutable(QStringLiteral("lame")).isEmpty();
    const bool oggenc = !QStandardPaths::findExecutable(QStringLiteral("oggenc")).isEmpty();
    if (!lame || !oggenc)
        std::printf(
            "  (lame or oggenc missing: WAV in their place; scripts/deps.sh test installs them)\n");
    std::mt19937 random(15);
    QStringList made;
    for (int i = 0; i < count; ++i) {
        const QString base =
            QDir(folder).filePath(QStringLiteral("sfx_%1").arg(i, 4, 10, QLatin1Char('0')));
        if (i >= kDistinctSounds) {
            // Copies under new names: each is analysed as any other file.
            const QString& source = made.at(i % kDistinctSounds);
            if (!QFile::copy(source, base + QLatin1Char('.') + QFileInfo(source).suffix()))
                return false;
            continue;
        }
        const int channels = i % 4 == 0 ? 1 : 2;
        const int rate = i % 3 == 0 ? 44100 : 48000;
        const double seconds = 1.0 + (i * 37 % 50) / 10.0;
        const int frames = int(seconds * rate);
        const std::vector<double> samples = MusicLike(frames, channels, rate, random);
        const int kind = i % 10; // 4 WAV 16, 1 WAV 24, 1 AIFF, 2 MP3, 2 Ogg
        bool ok = true;
        QString suffix = QStringLiteral(".wav");
        if (kind == 4) {
            ok = fixtures::writeFile(base + QStringLiteral(".wav"),
                                     fixtures::wav(channels, rate, 24, samples));
        } else if (kind == 5) {
            suffix = QStringLiteral(".aif");
            ok = fixtures::writeFile(base + QStringLiteral(".aif"),
                                     fixtures::aiff(channels, std::uint32_t(rate), 16, samples));
        } else if ((kind == 6 || kind == 7) && lame) {
            suffix = QStringLiteral(".mp3");
            const QString wav = base + QStringLiteral(".tmp.wav");
            ok = fixtures::writeFile(wav, fixtures::wav(channels, rate, 16, samples)) &&
                 Encode(QStringLiteral("lame"),
                        {QStringLiteral("--quiet"), QStringLiteral("-V"), QStringLiteral("2"), wav,
                         base + QStringLiteral(".mp3")});
            QFile::remove(wav);
        } else if ((kind == 8 || kind == 9) && oggenc) {
            suffix = QStringLiteral(".ogg");
            const QString wav = base + QStringLiteral(".tmp.wav");
            ok = fixtures::writeFile(wav, fixtures::wav(channels, rate, 16, samples)) &&
                 Encode(QStringLiteral("oggenc"),
                        {QStringLiteral("--quiet"), QStringLiteral("-q"), QStringLiteral("5"),
                         QStringLiteral("-o"), base + QStringLiteral(".ogg"), wav});
            QFile::remove(wav);
        } else {
            ok = fixtures::writeFile(base + QStringLiteral(".wav"),
                                     fixtures::wav(channels, rate, 16, samples));
        }
        if (!ok)
            return false;
        made << base + suffix;
    }
    return MarkFolderComplete(folder);
}

bool FolderComplete(const QString& folder)
{
    return QFile::exists(QDir(folder).filePath(QStringLiteral(".complete")));
}

bool MarkFolderComplete(const QString& folder)
{
    QFile done(QDir(folder).filePath(QStringLiteral(".complete")));
    return done.open(QIODevice::WriteOnly);
}

} // namespace fixtures
