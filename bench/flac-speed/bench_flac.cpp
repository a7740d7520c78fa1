// FLAC analysis speed beside the reference decoder's test mode (`flac -t`)
// and ffmpeg's decoder (`ffmpeg -f null`), on the same files in one run, on a
// warm cache, best of three, in CPU time (ours in this process, the peers' as
// their processes' user + system time), so that other work on the machine
// does not count:
//   - decode: FlacSoundSource reading every frame as floats;
//   - analysis: what the detail worker does for a file (header, plots,
//     metadata) with loudness (every frame decoded) and without (only the
//     frames the plot looks at, reached by seeking);
//   - flac -t and ffmpeg, one process per file.
// Before timing, every file's samples are checked against `flac -d`'s output.
//
//   bench_flac [FILE...]
//
// Without arguments: the FLAC files of /usr/share/lmms/samples (when
// installed) and, made once in ./flac-corpus, real-size files: three minutes
// of the lmms samples played one after another (16-bit, and 24-bit at -8),
// half an hour of generated 24-bit 48 kHz stereo, ten minutes of 96 kHz 24-bit
// 6-channel material.

#include "AudioFileInfo.h"
#include "FlacEncoding.h"
#include "FlacSoundSource.h"
#include "KrokManager.h"
#include "SoundSource.h"
#include "WaveBuilder.h"
#include "WaveSoundSource.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

using namespace fixtures;

namespace {

constexpr int kRepetitions = 3;

struct Group
{
    QString name;
    QStringList files;
};

// CPU time of this process and of the children it waited for, in ms.
double cpuMs()
{
    timespec own{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &own);
    rusage children{};
    getrusage(RUSAGE_CHILDREN, &children);
    const auto ms = [](const timeval& t) { return t.tv_sec * 1e3 + t.tv_usec / 1e3; };
    return own.tv_sec * 1e3 + own.tv_nsec / 1e6 + ms(children.ru_utime) + ms(children.ru_stime);
}

double bestMs(const std::function<bool()>& run)
{
    double best = 1e300;
    for (int i = 0; i < kRepetitions; ++i) {
        const double before = cpuMs();
        if (!run())
            return -1.0;
        best = std::min(best, cpuMs() - before);
    }
    return best;
}

bool runQuietly(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(program, arguments);
    return process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

std::vector<float> decodeAll(const QString& path, int& channels)
{
    std::vector<float> out;
    const auto source = SoundSource::forSuffix(QFileInfo(path).suffix().toLower().toStdString());
    if (!source || !source->open(QFile::encodeName(path).constData()))
        return out;
    channels = source->channels();
    std::vector<float> block(std::size_t(4096) * std::size_t(channels));
    for (std::int64_t got; (got = source->read(block.data(), 4096)) > 0;)
        out.insert(out.end(), block.begin(), block.begin() + got * channels);
    return out;
}

// The lmms samples one after another as stereo, for `seconds` at 44.1 kHz.
bool writeLmmsMix(const QString& path, int bits, int seconds)
{
    std::vector<float> mix;
    const std::size_t wanted = std::size_t(seconds) * 44100 * 2;
    QStringList sources;
    QDirIterator it(QStringLiteral("/usr/share/lmms/samples"), QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        sources << it.next();
    sources.sort();
    for (int round = 0; mix.size() < wanted && round < 100; ++round) {
        for (const QString& file : sources) {
            int channels = 0;
            const std::vector<float> pcm = decodeAll(file, channels);
            for (std::size_t i = 0; channels > 0 && i + std::size_t(channels) <= pcm.size();
                 i += std::size_t(channels)) {
                mix.push_back(pcm[i]);
                mix.push_back(pcm[i + (channels > 1 ? 1 : 0)]);
            }
            if (mix.size() >= wanted)
                break;
        }
    }
    if (mix.size() < wanted)
        return false;
    const double scale = std::ldexp(1.0, bits - 1) - 1.0;
    return writeLongWav(path, 2, 44100, bits, std::int64_t(wanted / 2),
                        [&](std::int64_t first, std::vector<std::int32_t>& block) {
                            for (std::size_t i = 0; i < block.size(); ++i) {
                                const double v =
                                    std::clamp(double(mix[std::size_t(first) * 2 + i]), -1.0, 1.0);
                                block[i] = std::int32_t(std::lround(v * scale));
                            }
                        });
}

// Partials that come and go over noise, different on every channel.
bool writeGenerated(const QString& path, int channels, int rate, std::int64_t frames)
{
    std::uint32_t seed = 12345;
    return writeLongWav(
        path, channels, rate, 24, frames, [&](std::int64_t first, std::vector<std::int32_t>& b) {
            for (std::size_t i = 0; i < b.size(); ++i) {
                const std::int64_t f = first + std::int64_t(i) / channels;
                const int ch = int(i % std::size_t(channels));
                const double t = double(f) / rate;
                const double envelope = 0.5 + 0.5 * std::sin(t * 0.7 + ch);
                seed = seed * 1664525u + 1013904223u;
                const double noise = (double(seed >> 8) / double(1u << 24) - 0.5) * 0.05;
                const double v = envelope * (0.3 * std::sin(2 * M_PI * (110 + 55 * ch) * t) +
                                             0.2 * std::sin(2 * M_PI * 1234.5 * t + ch)) +
                                 noise;
                b[i] = std::int32_t(std::lround(v * 8388607.0));
            }
        });
}

bool make(const QString& folder, const QString& name,
          const std::function<bool(const QString&)>& wav, const QStringList& options)
{
    const QString flac = QDir(folder).filePath(name);
    if (QFileInfo::exists(flac))
        return true;
    const QString source = QDir(folder).filePath(QStringLiteral("source.wav"));
    std::printf("making %s ...\n", qPrintable(flac));
    std::fflush(stdout);
    const bool ok = wav(source) && encodeFlac(source, flac, options);
    QFile::remove(source);
    return ok;
}

// Our samples against the reference decoder's, block by block.
bool sameAsReference(const QString& flac, const QString& scratch)
{
    const QString wav = QDir(scratch).filePath(QStringLiteral("reference.wav"));
    if (!runQuietly(QStringLiteral("flac"),
                    {QStringLiteral("-d"), QStringLiteral("-s"), QStringLiteral("-f"),
                     QStringLiteral("-o"), wav, flac}))
        return false;
    FlacSoundSource ours;
    WaveSoundSource reference;
    bool same = ours.open(QFile::encodeName(flac).constData()) &&
                reference.open(QFile::encodeName(wav).constData()) &&
                ours.frames() == reference.frames() && ours.channels() == reference.channels();
    std::vector<std::int32_t> a(std::size_t(65536) * std::size_t(std::max(ours.channels(), 1)));
    std::vector<std::int32_t> b(a.size());
    while (same) {
        const std::int64_t got = ours.readLeftJustified(a.data(), 65536);
        same = reference.readLeftJustified(b.data(), 65536) == got &&
               std::equal(a.begin(), a.begin() + got * ours.channels(), b.begin());
        if (got == 0)
            break;
    }
    QFile::remove(wav);
    return same;
}

struct Figures
{
    double seconds = 0; // audio
    double megabytes = 0;
    double decode = 0, analysis = 0, plotOnly = 0, flacTest = 0, ffmpeg = 0;
    int identical = 0;
};

void addTimed(double& total, double ms)
{
    total = (total < 0 || ms < 0) ? -1.0 : total + ms;
}

Figures measure(const QStringList& files, const QString& scratch)
{
    Figures f;
    for (const QString& path : files) {
        const QByteArray local = QFile::encodeName(path);
        FlacSoundSource probe;
        if (!probe.open(local.constData())) {
            std::printf("  cannot open %s: %s\n", qPrintable(path), probe.errorText().c_str());
            continue;
        }
        f.seconds += double(probe.frames()) / probe.samplingRate();
        f.megabytes += double(QFileInfo(path).size()) / 1e6;
        f.identical += sameAsReference(path, scratch) ? 1 : 0;
        addTimed(f.decode, bestMs([&] {
                     FlacSoundSource source;
                     if (!source.open(local.constData()))
                         return false;
                     std::vector<float> block(std::size_t(4096) * std::size_t(source.channels()));
                     while (source.read(block.data(), 4096) > 0) {
                     }
                     return source.errorText().empty();
                 }));
        addTimed(f.analysis, bestMs([&] {
                     AudioFileInfo info;
                     AnalyzeAudioFile(path, info, true, true, nullptr);
                     return info.isValid == 1;
                 }));
        addTimed(f.plotOnly, bestMs([&] {
                     AudioFileInfo info;
                     AnalyzeAudioFile(path, info, false, false, nullptr);
                     return info.isValid == 1;
                 }));
        addTimed(f.flacTest, bestMs([&] {
                     return runQuietly(QStringLiteral("flac"),
                                       {QStringLiteral("-t"), QStringLiteral("-s"), path});
                 }));
        addTimed(f.ffmpeg, bestMs([&] {
                     return runQuietly(QStringLiteral("ffmpeg"),
                                       {QStringLiteral("-v"), QStringLiteral("error"),
                                        QStringLiteral("-nostdin"), QStringLiteral("-i"), path,
                                        QStringLiteral("-f"), QStringLiteral("null"),
                                        QStringLiteral("-")});
                 }));
    }
    return f;
}

QString cell(double ms, double seconds)
{
    if (ms < 0)
        return QStringLiteral("failed");
    return QStringLiteral("%1 ms %2x").arg(ms, 9, 'f', 1).arg(seconds * 1000.0 / ms, 6, 'f', 0);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QList<Group> groups;
    const QStringList args = app.arguments().mid(1);
    const QString folder = QDir::current().filePath(QStringLiteral("flac-corpus"));
    QDir().mkpath(folder);
    if (!args.isEmpty()) {
        for (const QString& file : args)
            groups.append({QFileInfo(file).fileName(), {file}});
    } else {
        QStringList lmms;
        QDirIterator it(QStringLiteral("/usr/share/lmms/samples"), {QStringLiteral("*.flac")},
                        QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            lmms << it.next();
        lmms.sort();
        if (!lmms.isEmpty())
            groups.append({QStringLiteral("lmms's own FLACs (%1 files)").arg(lmms.size()), lmms});
        const bool haveLmms = QFileInfo(QStringLiteral("/usr/share/lmms/samples")).isDir();
        struct Made
        {
            const char* name;
            std::function<bool(const QString&)> wav;
            QStringList options;
        };
        const QList<Made> made = {
            {"lmms-mix-3min-16bit.flac",
             [](const QString& p) { return writeLmmsMix(p, 16, 180); },
             {}},
            {"lmms-mix-3min-24bit-8.flac",
             [](const QString& p) { return writeLmmsMix(p, 24, 180); },
             {QStringLiteral("-8")}},
            {"generated-30min-48k-24bit.flac",
             [](const QString& p) { return writeGenerated(p, 2, 48000, 30LL * 60 * 48000); },
             {}},
            {"generated-10min-96k-24bit-6ch.flac",
             [](const QString& p) { return writeGenerated(p, 6, 96000, 10LL * 60 * 96000); },
             {QStringLiteral("--channel-map=none")}},
        };
        for (const Made& m : made) {
            if (!haveLmms && QByteArray(m.name).startsWith("lmms"))
                continue;
            if (!make(folder, QLatin1String(m.name), m.wav, m.options)) {
                std::fprintf(stderr, "cannot make %s\n", m.name);
                return 1;
            }
            groups.append({QLatin1String(m.name), {QDir(folder).filePath(QLatin1String(m.name))}});
        }
    }

    std::printf("FLAC: CPU time, best of %d, warm cache; x = times real time. Analysis = header, "
                "plots, metadata, per-channel plots and loudness; plot only = header, plot, "
                "metadata.\n",
                kRepetitions);
    std::printf("%-38s %8s %7s %5s | %-17s %-17s %-17s | %-17s %-17s\n", "file", "audio s", "MB",
                "same", "Tesk decode", "Tesk analysis", "Tesk plot only", "flac -t", "ffmpeg");
    for (const Group& g : groups) {
        for (const QString& file : g.files) { // a warm cache for every tool
            QFile f(file);
            if (f.open(QIODevice::ReadOnly))
                while (!f.read(1 << 20).isEmpty()) {
                }
        }
        const Figures f = measure(g.files, folder);
        std::printf("%-38s %8.1f %7.1f %2d/%-2d | %-17s %-17s %-17s | %-17s %-17s\n",
                    qPrintable(g.name), f.seconds, f.megabytes, f.identical, int(g.files.size()),
                    qPrintable(cell(f.decode, f.seconds)), qPrintable(cell(f.analysis, f.seconds)),
                    qPrintable(cell(f.plotOnly, f.seconds)),
                    qPrintable(cell(f.flacTest, f.seconds)), qPrintable(cell(f.ffmpeg, f.seconds)));
        std::fflush(stdout);
    }
    std::printf("same: files whose every sample equals `flac -d`'s. flac -t and ffmpeg run one "
                "process per file (their start-up counts on small files).\n");
    return 0;
}
