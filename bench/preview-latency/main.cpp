// Time from a play request to the first mixed frame of the file, the memory a
// preview takes, and the share of one core the device callback takes while
// playing. WAV files of 3 s, 3 min and 30 min play both the way long files
// played before (the whole file read into memory at the request) and streamed
// from disk (what files above the size limit do now), side by side.
//
// Runs on SDL's dummy driver unless SDL_AUDIODRIVER says otherwise (the dummy
// driver paces the callback like a card, so the wait for the next callback is
// part of the figure). Files come from the page cache, as for a folder the user
// is browsing. Usage: preview-latency [repeats]

#include "AudioEngine.h"
#include "LumoManager.h"
#include "WaveBuilder.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

std::vector<std::int32_t> music(int frames, int channels, int rate)
{
    std::vector<std::int32_t> v(static_cast<std::size_t>(frames) * channels);
    std::uint32_t x = 12345;
    for (int i = 0; i < frames; ++i) {
        const double t = static_cast<double>(i) / rate;
        for (int c = 0; c < channels; ++c) {
            x = x * 1664525u + 1013904223u;
            const double noise = (static_cast<double>(x >> 8) / 16777216.0 - 0.5) * 0.05;
            const double s = 0.3 * std::sin(2 * M_PI * (220.0 + 110.0 * c) * t) +
                             0.2 * std::sin(2 * M_PI * 331.0 * t) * std::sin(2 * M_PI * 0.5 * t) +
                             noise;
            v[static_cast<std::size_t>(i) * channels + c] = static_cast<std::int32_t>(s * 32767.0);
        }
    }
    return v;
}

// One block of the music above for a long file, made where it is written.
void musicBlock(std::int64_t first, std::vector<std::int32_t>& block, int channels, int rate)
{
    std::uint32_t x = static_cast<std::uint32_t>(first) * 2654435761u + 12345u;
    const std::int64_t frames = static_cast<std::int64_t>(block.size()) / channels;
    for (std::int64_t i = 0; i < frames; ++i) {
        const double t = static_cast<double>(first + i) / rate;
        for (int c = 0; c < channels; ++c) {
            x = x * 1664525u + 1013904223u;
            const double noise = (static_cast<double>(x >> 8) / 16777216.0 - 0.5) * 0.05;
            const double s = 0.3 * std::sin(2 * M_PI * (220.0 + 110.0 * c) * t) + noise;
            block[static_cast<std::size_t>(i * channels + c)] =
                static_cast<std::int32_t>(s * 32767.0);
        }
    }
}

// Resident and peak resident memory of this process, in bytes (Linux).
std::int64_t statusBytes(const char* key)
{
    std::ifstream in("/proc/self/status");
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind(key, 0) == 0)
            return std::atoll(line.c_str() + std::strlen(key)) * 1024;
    }
    return -1;
}

// Lets the peak figure start again from the current resident size.
bool resetPeak()
{
    std::ofstream out("/proc/self/clear_refs");
    out << "5";
    return static_cast<bool>(out);
}

struct Latency
{
    double callMs = 0.0;  // inside Play(): read, decode, queue
    double firstMs = 0.0; // until the callback mixed the first frame
};

Latency measure(LumoManager& lumo, const QString& path)
{
    lumo.Stop();
    while (lumo.IsPlaying() || lumo.IsPreparing()) {
    }
    // The stop was seen right after a callback; a fixed sleep here would issue every
    // request at the same point of the device period and round each figure to the
    // callback after it. A spread of phases gives the wait a user really meets.
    static std::uint32_t seed = 1;
    seed = seed * 1664525u + 1013904223u;
    const double periodUs = 1e6 * AudioEngine::InitConfig{}.deviceBufferFrames /
                            std::max(1, AudioEngine::GetOutputRate());
    QThread::usleep(static_cast<unsigned long>((seed >> 8) % 1000 * periodUs / 1000.0));
    QElapsedTimer t;
    t.start();
    lumo.Play(path);
    const qint64 call = t.nsecsElapsed();
    while (!lumo.IsPlaying()) {
    }
    const qint64 first = t.nsecsElapsed();
    return {call / 1e6, first / 1e6};
}

void report(const char* what, std::vector<Latency> runs)
{
    auto stat = [&runs](double Latency::*field, double q) {
        std::vector<double> v;
        for (const Latency& l : runs)
            v.push_back(l.*field);
        std::sort(v.begin(), v.end());
        return v[static_cast<std::size_t>(q * (v.size() - 1))];
    };
    std::printf(
        "%-44s play call %7.2f ms (max %7.2f)   first frame median %7.2f ms, max %7.2f ms\n", what,
        stat(&Latency::callMs, 0.5), stat(&Latency::callMs, 1.0), stat(&Latency::firstMs, 0.5),
        stat(&Latency::firstMs, 1.0));
}

// The part of a WAVE/AIFF start that still grows with the file: reading its
// bytes into memory (from the page cache here), which the player keeps.
void readAlone(const QString& path, int repeats)
{
    QByteArray buffer;
    std::vector<double> ms;
    for (int i = 0; i < repeats; ++i) {
        QElapsedTimer t;
        t.start();
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return;
        buffer.resize(static_cast<int>(file.size()));
        file.read(buffer.data(), buffer.size());
        ms.push_back(t.nsecsElapsed() / 1e6);
    }
    std::sort(ms.begin(), ms.end());
    std::printf("%-44s read alone %7.2f ms median (%.1f MB)\n", "  of which reading the 60 s file",
                ms[ms.size() / 2], buffer.size() / 1e6);
}

void callbackLoad(LumoManager& lumo, const QString& path, const char* what)
{
    lumo.Play(path);
    while (!lumo.IsPlaying()) {
    }
    const AudioEngine::CallbackStats a = AudioEngine::GetCallbackStats();
    QElapsedTimer t;
    t.start();
    QThread::msleep(3000);
    const AudioEngine::CallbackStats b = AudioEngine::GetCallbackStats();
    const double wall = static_cast<double>(t.nsecsElapsed());
    const double busy = static_cast<double>(b.busyNanoseconds - a.busyNanoseconds);
    const std::int64_t calls = b.calls - a.calls;
    std::printf("%-44s callback %6.3f %% of one core (%lld calls, %.1f us each)\n", what,
                100.0 * busy / wall, static_cast<long long>(calls),
                calls ? busy / calls / 1000.0 : 0.0);
    lumo.Stop();
}

struct LongRow
{
    std::vector<Latency> runs;
    double peakMb = 0.0; // resident growth while starting and playing 300 ms
    std::int64_t underruns = 0;
};

// The 3 s / 3 min / 30 min WAV rows: one manager per way of playing, so that no
// buffer of an earlier file is counted (or reused) for the next.
LongRow longRow(const QString& path, qint64 threshold, int repeats)
{
    LongRow row;
    LumoManager lumo;
    lumo.SetStreamThreshold(threshold);
    lumo.Initialize();
    lumo.Stop();
    QThread::msleep(50);
    const std::int64_t before = statusBytes("VmRSS:");
    const bool peakReset = resetPeak();
    lumo.Play(path);
    while (!lumo.IsPlaying()) {
    }
    QThread::msleep(300);
    const std::int64_t peak = statusBytes(peakReset ? "VmHWM:" : "VmRSS:");
    row.peakMb = (peak - before) / 1e6;
    row.underruns = AudioEngine::GetCallbackStats().streamUnderruns;
    for (int i = 0; i < repeats; ++i)
        row.runs.push_back(measure(lumo, path));
    lumo.Finalize();
    return row;
}

double quantile(const std::vector<Latency>& runs, double q)
{
    std::vector<double> v;
    for (const Latency& l : runs)
        v.push_back(l.firstMs);
    std::sort(v.begin(), v.end());
    return v[static_cast<std::size_t>(q * (v.size() - 1))];
}

void longFiles(const QTemporaryDir& dir, int repeats)
{
    struct File
    {
        const char* label;
        int seconds;
    };
    const File files[] = {{"3 s", 3}, {"3 min", 180}, {"30 min", 1800}};
    std::printf("\nWAV 48 kHz stereo 16-bit, request to first sound (median / max of %d) and peak\n"
                "memory added while starting and playing 300 ms (page cache warm):\n",
                repeats);
    std::printf("  %-7s %9s | %-32s | %-32s | %s\n", "length", "size", "whole file read (before)",
                "streamed from disk", "now plays");
    for (const File& f : files) {
        const QString path = dir.filePath(QStringLiteral("music-%1s.wav").arg(f.seconds));
        const std::int64_t frames = std::int64_t(48000) * f.seconds;
        if (!fixtures::writeLongWav(path, 2, 48000, 16, frames,
                                    [](std::int64_t first, std::vector<std::int32_t>& block) {
                                        musicBlock(first, block, 2, 48000);
                                    })) {
            std::printf("  %-7s could not be written\n", f.label);
            continue;
        }
        const qint64 size = QFileInfo(path).size();
        QFile warm(path); // into the page cache
        if (warm.open(QIODevice::ReadOnly))
            while (!warm.read(1 << 20).isEmpty()) {
            }
        const LongRow whole = longRow(path, std::numeric_limits<qint64>::max(), repeats);
        const LongRow streamed = longRow(path, 0, repeats);
        const bool streamsNow = size > LumoManager::kDefaultStreamThreshold;
        std::printf(
            "  %-7s %6.1f MB | %6.2f / %6.2f ms  %8.1f MB | %6.2f / %6.2f ms  %8.1f MB | %s\n",
            f.label, size / 1e6, quantile(whole.runs, 0.5), quantile(whole.runs, 1.0), whole.peakMb,
            quantile(streamed.runs, 0.5), quantile(streamed.runs, 1.0), streamed.peakMb,
            streamsNow ? "streamed" : "whole file");
        if (streamed.underruns > 0)
            std::printf("  (%lld blocks waited for the streaming worker)\n",
                        static_cast<long long>(streamed.underruns));
        QFile::remove(path);
    }
    std::printf(
        "  Files above %lld MB stream; the figures under \"now plays\" are what a user gets.\n",
        static_cast<long long>(LumoManager::kDefaultStreamThreshold / (1024 * 1024)));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int repeats = argc > 1 ? std::max(1, std::atoi(argv[1])) : 30;
    if (qEnvironmentVariableIsEmpty("SDL_AUDIODRIVER"))
        qputenv("SDL_AUDIODRIVER", "dummy");

    QTemporaryDir dir;
    const QString shortWav = dir.filePath(QStringLiteral("short-48k-stereo-3s.wav"));
    const QString longWav = dir.filePath(QStringLiteral("long-48k-stereo-60s.wav"));
    const QString longAiff = dir.filePath(QStringLiteral("long-44k-stereo-24bit-60s.aiff"));
    const QString mp3Source = dir.filePath(QStringLiteral("music-44k-180s.wav"));
    const QString mp3 = dir.filePath(QStringLiteral("music-44k-180s.mp3"));
    fixtures::writeFile(shortWav, fixtures::wavInts(2, 48000, 16, music(48000 * 3, 2, 48000)));
    fixtures::writeFile(longWav, fixtures::wavInts(2, 48000, 16, music(48000 * 60, 2, 48000)));
    {
        std::vector<std::int32_t> v = music(44100 * 60, 2, 44100);
        for (auto& x : v)
            x = x * 256 + (x & 0xff); // 24-bit, low byte busy
        fixtures::writeFile(longAiff, fixtures::aiffInts(2, 44100, 24, v));
    }
    bool haveMp3 = false;
    if (!QStandardPaths::findExecutable(QStringLiteral("lame")).isEmpty()) {
        fixtures::writeFile(mp3Source,
                            fixtures::wavInts(2, 44100, 16, music(44100 * 180, 2, 44100)));
        haveMp3 = QProcess::execute(QStringLiteral("lame"),
                                    {QStringLiteral("--quiet"), QStringLiteral("-b"),
                                     QStringLiteral("192"), mp3Source, mp3}) == 0;
    }

    std::printf("Tesk preview latency, SDL driver \"%s\", %d repeats\n",
                qgetenv("SDL_AUDIODRIVER").constData(), repeats);
    longFiles(dir, repeats);

    LumoManager lumo;
    lumo.Initialize();
    std::printf("\nOther formats, device %d Hz:\n", AudioEngine::GetOutputRate());

    for (const QString& path : {shortWav, longWav})
        measure(lumo, path); // warm the page cache
    std::vector<Latency> runs;
    for (int i = 0; i < repeats; ++i)
        runs.push_back(measure(lumo, shortWav));
    report("WAV 3 s 48 kHz stereo 16-bit (cached)", runs);
    runs.clear();
    for (int i = 0; i < repeats; ++i)
        runs.push_back(measure(lumo, longWav));
    report("WAV 60 s 48 kHz stereo 16-bit (cached)", runs);
    readAlone(longWav, repeats);
    measure(lumo, longAiff);
    runs.clear();
    for (int i = 0; i < repeats; ++i)
        runs.push_back(measure(lumo, longAiff));
    report("AIFF 60 s 44.1 kHz stereo 24-bit (cached)", runs);
    if (haveMp3) {
        runs.clear();
        for (int i = 0; i < std::min(repeats, 5); ++i)
            runs.push_back(measure(lumo, mp3));
        report("MP3 180 s 44.1 kHz stereo (decode included)", runs);
    } else {
        std::printf("MP3: lame not installed, skipped\n");
    }

    callbackLoad(lumo, longWav, "playing 48 kHz WAV (no resampling)");
    callbackLoad(lumo, longAiff, "playing 44.1 kHz 24-bit AIFF (resampled)");
    if (haveMp3)
        callbackLoad(lumo, mp3, "playing 44.1 kHz MP3 (resampled to 48 kHz)");

    lumo.Finalize();
    std::printf("Peer tools: none comparable in Debian (aplay/paplay start-up includes opening\n"
                "a device and is not a preview request on a running output), so only ours.\n");
    return 0;
}
