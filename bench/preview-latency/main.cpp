// Time from a play request to the first mixed frame of the file, the memory a
// preview takes, and the share of one core the device callback takes while
// playing. WAV, MP3, Ogg Vorbis and FLAC files of 3 s, 3 min and 30 min play
// the way they play now (WAV from memory below the size limit and streamed
// from disk above it; the others streamed from their decoders on the engine's
// worker) and, side by side, the way they played before (the whole WAV file
// read at the request; the others decoded whole to float before the first sound).
//
// Runs on SDL's dummy driver unless SDL_AUDIODRIVER says otherwise (the dummy
// driver paces the callback like a card, so the wait for the next callback is
// part of the figure). Files come from the page cache, as for a folder the user
// is browsing. Usage: preview-latency [repeats]

#include "AudioEngine.h"
#include "FlacEncoding.h"
#include "LumoManager.h"
#include "PcmDecoding.h"
#include "SoundSource.h"
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

// Waits out the current sound, then lets a random part of a device period go
// by: the stop was seen right after a callback, and a fixed point of the
// period would round every figure to the callback after it.
void settle(LumoManager& lumo)
{
    lumo.Stop();
    while (lumo.IsPlaying() || lumo.IsPreparing()) {
    }
    static std::uint32_t seed = 1;
    seed = seed * 1664525u + 1013904223u;
    const double periodUs = 1e6 * AudioEngine::InitConfig{}.deviceBufferFrames /
                            std::max(1, AudioEngine::GetOutputRate());
    QThread::usleep(static_cast<unsigned long>((seed >> 8) % 1000 * periodUs / 1000.0));
}

Latency measure(LumoManager& lumo, const QString& path, std::int32_t startMs = 0)
{
    settle(lumo);
    QElapsedTimer t;
    t.start();
    lumo.PlayFrom(path, startMs);
    const qint64 call = t.nsecsElapsed();
    while (!lumo.IsPlaying()) {
        if (!lumo.IsPreparing() && !lumo.IsPlaying())
            return {-1.0, -1.0}; // refused: reported by the engine
    }
    const qint64 first = t.nsecsElapsed();
    return {call / 1e6, first / 1e6};
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
    std::printf("  %-40s callback %6.3f %% of one core (%lld calls, %.1f us each, %lld blocks "
                "waited for the worker)\n",
                what, 100.0 * busy / wall, static_cast<long long>(calls),
                calls ? busy / calls / 1000.0 : 0.0,
                static_cast<long long>(b.streamUnderruns - a.streamUnderruns));
    lumo.Stop();
}

double quantile(std::vector<double> v, double q)
{
    if (v.empty())
        return -1.0;
    std::sort(v.begin(), v.end());
    return v[static_cast<std::size_t>(q * (v.size() - 1))];
}

struct Row
{
    std::vector<double> first; // request to first sound, ms
    std::vector<double> seek;  // a seek to the middle, ms
    double peakMb = 0.0;       // resident growth while starting and playing 300 ms
};

// How files play now: one manager per row, so that no buffer of an earlier
// file is counted (or reused) for the next.
Row nowRow(const QString& path, std::int64_t middleMs, int repeats)
{
    Row row;
    LumoManager lumo;
    lumo.Initialize();
    lumo.Stop();
    QThread::msleep(50);
    const std::int64_t before = statusBytes("VmRSS:");
    const bool peakReset = resetPeak();
    lumo.Play(path);
    while (!lumo.IsPlaying()) {
    }
    QThread::msleep(300);
    row.peakMb = (statusBytes(peakReset ? "VmHWM:" : "VmRSS:") - before) / 1e6;
    for (int i = 0; i < repeats; ++i) {
        row.first.push_back(measure(lumo, path).firstMs);
        row.seek.push_back(measure(lumo, path, static_cast<std::int32_t>(middleMs)).firstMs);
    }
    lumo.Finalize();
    return row;
}

// How they played before: the whole WAV file read into memory at the
// request, or the whole MP3/Ogg file decoded to float (what the decode
// function still does) and played from memory.
Row beforeRow(const QString& path, bool wave, int repeats)
{
    Row row;
    LumoManager lumo;
    lumo.SetStreamThreshold(std::numeric_limits<qint64>::max());
    lumo.Initialize();
    AudioEngine::RawPcmVoicePoolConfig config;
    config.identifier = 77;
    config.maxChannels = 8;
    config.maxSamplingRate = 192000;
    AudioEngine::VoicePoolHandle pool = wave ? nullptr : AudioEngine::CreateRawPcmVoicePool(config);
    AudioEngine::PlayerHandle player = wave ? nullptr : AudioEngine::CreatePlayer();
    QByteArray pcm;
    const auto once = [&]() -> double {
        if (wave)
            return measure(lumo, path).firstMs;
        AudioEngine::Stop(player);
        while (AudioEngine::GetStatus(player) == AudioEngine::PlayerStatus::Playing) {
        }
        pcm.clear();
        QElapsedTimer t;
        t.start();
        std::unique_ptr<SoundSource> source =
            SoundSource::forSuffix(QFileInfo(path).suffix().toLower().toStdString());
        std::int32_t rate = 0;
        std::int32_t channels = 0;
        if (source && source->open(QFile::encodeName(path).constData()))
            pcm = DecodeToPcm(*source, rate, channels);
        AudioEngine::SetDataFormat(player, AudioEngine::DataFormat::RawPcm);
        AudioEngine::SetVoicePoolId(player, config.identifier);
        AudioEngine::SetSamplingRate(player, rate);
        AudioEngine::SetNumChannels(player, channels);
        AudioEngine::SetData(player, pcm.constData(), static_cast<std::size_t>(pcm.size()));
        AudioEngine::Start(player);
        for (;;) {
            const AudioEngine::PlayerStatus status = AudioEngine::GetStatus(player);
            if (status == AudioEngine::PlayerStatus::Playing)
                break;
            if (status != AudioEngine::PlayerStatus::Preparing)
                return -1.0;
        }
        return t.nsecsElapsed() / 1e6;
    };
    QThread::msleep(50);
    const std::int64_t before = statusBytes("VmRSS:");
    const bool peakReset = resetPeak();
    row.first.push_back(once());
    QThread::msleep(300);
    row.peakMb = (statusBytes(peakReset ? "VmHWM:" : "VmRSS:") - before) / 1e6;
    for (int i = 1; i < repeats; ++i)
        row.first.push_back(once());
    if (player) {
        AudioEngine::Stop(player);
        while (AudioEngine::GetStatus(player) == AudioEngine::PlayerStatus::Playing) {
        }
        AudioEngine::DestroyPlayer(player);
        AudioEngine::DestroyVoicePool(pool);
    }
    lumo.Finalize();
    return row;
}

bool encode(const QString& wav, const QString& out)
{
    if (out.endsWith(QLatin1String(".flac")))
        return fixtures::encodeFlac(wav, out);
    if (out.endsWith(QLatin1String(".mp3")))
        return QProcess::execute(QStringLiteral("lame"),
                                 {QStringLiteral("--quiet"), QStringLiteral("-b"),
                                  QStringLiteral("192"), wav, out}) == 0;
    return QProcess::execute(QStringLiteral("oggenc"),
                             {QStringLiteral("--quiet"), QStringLiteral("-q"), QStringLiteral("5"),
                              QStringLiteral("-o"), out, wav}) == 0;
}

void warm(const QString& path)
{
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        while (!file.read(1 << 20).isEmpty()) {
        }
}

void printRow(const char* format, const char* length, const QString& path, const Row& now,
              const Row& before)
{
    std::printf("  %-4s %-6s %7.1f MB | %6.2f / %6.2f | %6.2f / %6.2f | %7.1f MB | %8.1f / %8.1f "
                "| %7.1f MB\n",
                format, length, QFileInfo(path).size() / 1e6, quantile(now.first, 0.5),
                quantile(now.first, 1.0), quantile(now.seek, 0.5), quantile(now.seek, 1.0),
                now.peakMb, quantile(before.first, 0.5), quantile(before.first, 1.0),
                before.peakMb);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int repeats = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
    if (qEnvironmentVariableIsEmpty("SDL_AUDIODRIVER"))
        qputenv("SDL_AUDIODRIVER", "dummy");
    const bool encoders = !QStandardPaths::findExecutable(QStringLiteral("lame")).isEmpty() &&
                          !QStandardPaths::findExecutable(QStringLiteral("oggenc")).isEmpty();

    QTemporaryDir dir;
    std::printf(
        "Tesk preview latency, SDL driver \"%s\", %d repeats (the whole-file decode of\n"
        "a 30 min file: 2), 44.1 kHz stereo music (MP3 192 kbps, Ogg quality 5, FLAC -5), page\n"
        "cache warm. Request to first sound in ms (median / max); peak memory added\n"
        "while starting and playing 300 ms.\n\n",
        qgetenv("SDL_AUDIODRIVER").constData(), repeats);
    std::printf("  %-4s %-6s %10s | %-15s | %-15s | %10s | %-19s | %s\n", "", "length", "size",
                "now: start", "seek to middle", "now: peak", "before: whole file", "before: peak");

    struct Length
    {
        const char* label;
        int seconds;
        int beforeRepeats;
    };
    const Length lengths[] = {{"3 s", 3, repeats}, {"3 min", 180, 5}, {"30 min", 1800, 2}};
    QString mp3Three;
    QString oggThree;
    for (const Length& l : lengths) {
        const QString wav = dir.filePath(QStringLiteral("music-%1s.wav").arg(l.seconds));
        const std::int64_t frames = std::int64_t(44100) * l.seconds;
        if (!fixtures::writeLongWav(wav, 2, 44100, 16, frames,
                                    [](std::int64_t first, std::vector<std::int32_t>& block) {
                                        musicBlock(first, block, 2, 44100);
                                    })) {
            std::printf("  %s: the WAV file could not be written\n", l.label);
            continue;
        }
        const std::int64_t middleMs = std::int64_t(l.seconds) * 500;
        warm(wav);
        printRow("WAV", l.label, wav, nowRow(wav, middleMs, repeats),
                 beforeRow(wav, true, l.beforeRepeats));
        if (!encoders) {
            QFile::remove(wav);
            continue;
        }
        for (const char* suffix : {"mp3", "ogg", "flac"}) {
            const QString coded = dir.filePath(
                QStringLiteral("music-%1s.%2").arg(l.seconds).arg(QLatin1String(suffix)));
            if (!encode(wav, coded)) {
                std::printf("  %s %s: could not be encoded\n", suffix, l.label);
                continue;
            }
            warm(coded);
            printRow(suffix[0] == 'm'   ? "MP3"
                     : suffix[0] == 'o' ? "Ogg"
                                        : "FLAC",
                     l.label, coded, nowRow(coded, middleMs, repeats),
                     beforeRow(coded, false, l.beforeRepeats));
            if (l.seconds == 180)
                (suffix[0] == 'm' ? mp3Three : oggThree) = coded;
        }
        QFile::remove(wav);
    }
    if (!encoders)
        std::printf("  MP3 and Ogg: lame or oggenc is not installed, skipped\n");

    std::printf("\nThe device callback while playing (3 s of it):\n");
    LumoManager lumo;
    lumo.Initialize();
    const QString shortWav = dir.filePath(QStringLiteral("short.wav"));
    fixtures::writeFile(shortWav, fixtures::wavInts(2, 48000, 16, music(48000 * 4, 2, 48000)));
    callbackLoad(lumo, shortWav, "48 kHz WAV from memory (no resampling)");
    if (!mp3Three.isEmpty())
        callbackLoad(lumo, mp3Three, "44.1 kHz MP3 streamed (resampled)");
    if (!oggThree.isEmpty())
        callbackLoad(lumo, oggThree, "44.1 kHz Ogg streamed (resampled)");
    lumo.Finalize();
    std::printf("Peer tools: none comparable in Debian (aplay/paplay start-up includes opening\n"
                "a device and is not a preview request on a running output), so only ours.\n");
    return 0;
}
