// The scan-time cost of reading metadata. For each corpus it times, file by
// file and on a warm cache, the analysis a scan does without metadata (header,
// plots, optionally loudness: the per-format paths) and the metadata pass that
// the scan now adds (chunk pass for WAV/AIFF, TagLib for MP3/Ogg), and prints
// the ratio; beside it, ffprobe reading the same files' tags. It also prints
// what the metadata records cost in memory.
//
//   bench_metadata [CORPUS_DIR...]
//
// Without arguments: /usr/share/lmms/samples (when installed) and a generated
// commercial-style library in ./metadata-corpus (made once, reused): WAV
// 24-bit with bext, iXML and LIST/INFO and UCS names, AIFF with NAME/AUTH/
// ANNO/(c), MP3 with ID3v2 (LAME) and Ogg Vorbis with comments (oggenc).

#include "AudioFileInfo.h"
#include "AudioFileLister.h"
#include "CompressedFileAnalysis.h"
#include "FileMetadataReader.h"
#include "KrokManager.h"
#include "WaveBuilder.h"
#include "WaveFileAnalysis.h"
#include "WaveHeaderReader.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStringList>

#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <vector>

namespace {

constexpr int kRepetitions = 3;
constexpr int kPeerFiles = 100;

const char* const kCatIds[] = {"DOORWood", "AMBForst", "FOLYCloth", "WATRSplsh", "UIClick",
                               "VEHCar",   "GUNAuto",  "FIREBrst",  "WINDGust",  "MAGCSpel"};

std::string ixmlFor(int i)
{
    char text[2048];
    std::snprintf(
        text, sizeof text,
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<BWFXML>\n<IXML_VERSION>1.61</IXML_VERSION>\n"
        "<PROJECT>Castle Ambiences</PROJECT>\n<SCENE>%d</SCENE>\n<TAKE>%d</TAKE>\n"
        "<TAPE>DAY03</TAPE>\n<NOTE>Recorded with MS pair, wind protection on</NOTE>\n"
        "<SPEED><MASTER_SPEED>25/1</MASTER_SPEED><CURRENT_SPEED>25/1</CURRENT_SPEED>"
        "<TIMECODE_RATE>25/1</TIMECODE_RATE><TIMECODE_FLAG>NDF</TIMECODE_FLAG></SPEED>\n"
        "<TRACK_LIST><TRACK_COUNT>2</TRACK_COUNT><TRACK><CHANNEL_INDEX>1</CHANNEL_INDEX>"
        "<NAME>M</NAME></TRACK><TRACK><CHANNEL_INDEX>2</CHANNEL_INDEX><NAME>S</NAME></TRACK>"
        "</TRACK_LIST>\n<USER>\n<DESCRIPTION>Take %d of a heavy castle door, slow creak and "
        "latch, interior perspective</DESCRIPTION>\n<CATEGORY>DOORS</CATEGORY>\n"
        "<SUBCATEGORY>WOOD</SUBCATEGORY>\n<CATID>%s</CATID>\n<FXNAME>Castle Door %d</FXNAME>\n"
        "<DESIGNER>Jane Doe</DESIGNER>\n<LIBRARY>Field Kit</LIBRARY>\n<KEYWORDS>door, castle, "
        "creak, latch, wood, medieval</KEYWORDS>\n<MICROPHONE>MKH 8040 / 8030</MICROPHONE>\n"
        "<RECTYPE>24/96</RECTYPE>\n<EMBEDDER>Tesk bench</EMBEDDER>\n</USER>\n</BWFXML>\n",
        i % 40 + 1, i % 7 + 1, i, kCatIds[i % 10], i);
    return text;
}

fixtures::Bytes commercialWav(int i, int seconds)
{
    using namespace fixtures;
    const int rate = 48000;
    Bext bext;
    bext.description = "Heavy castle door, slow creak and latch, take " + std::to_string(i);
    bext.originator = "Field Kit";
    bext.originatorReference = "FK" + std::to_string(100000 + i);
    bext.originationDate = "2023-04-01";
    bext.originationTime = "12:30:05";
    bext.timeReference = static_cast<std::uint64_t>(rate) * (3600 + i);
    bext.codingHistory = "A=PCM,F=96000,W=24,M=stereo,T=Field recorder\r\n"
                         "A=PCM,F=48000,W=24,M=stereo,T=Editor\r\n";
    const std::vector<double> samples = sine(rate * seconds, 2, rate, 110.0 + 37.0 * (i % 11), 0.3);
    const Bytes info = infoList({{"INAM", "Castle Door " + std::to_string(i)},
                                 {"IART", "Jane Doe"},
                                 {"ICMT", "Interior, close perspective"},
                                 {"ICOP", "(c) 2023 Field Kit"},
                                 {"ISFT", "Field Editor 4.2"},
                                 {"IGNR", "Foley"},
                                 {"IKEY", "door; castle; creak"},
                                 {"ICRD", "2023-04-01"}});
    return riff({chunk("fmt ", fmtBody(1, 2, rate, 24)), chunk("bext", bextBody(bext)),
                 chunk("iXML", text(ixmlFor(i))), chunk("data", pcm(24, samples)),
                 chunk("LIST", info)});
}

fixtures::Bytes taggedAiff(int i, int seconds)
{
    using namespace fixtures;
    const std::vector<double> samples = sine(44100 * seconds, 2, 44100, 220.0 + i, 0.3);
    return form(
        "AIFF",
        {chunk("COMM", commBody(2, static_cast<std::uint32_t>(44100 * seconds), 16, 44100), true),
         chunk("NAME", text("Thunder roll " + std::to_string(i)), true),
         chunk("AUTH", text("Sky Lab"), true), chunk("ANNO", text("Distant, long tail"), true),
         chunk("(c) ", text("2024 Sky Lab"), true),
         chunk("SSND", ssndBody(pcm(16, samples, true)), true)});
}

bool run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

bool makeCommercialCorpus(const QString& folder)
{
    const QString marker = QDir(folder).filePath(QStringLiteral(".complete"));
    if (QFile::exists(marker))
        return true;
    std::printf("generating the commercial-style corpus in %s ...\n", qPrintable(folder));
    std::fflush(stdout);
    QDir().mkpath(folder);
    const QDir dir(folder);
    for (int i = 0; i < 100; ++i) {
        const QString name = QStringLiteral("%1_Castle Door %2_JD_FKIT.wav")
                                 .arg(QLatin1String(kCatIds[i % 10]))
                                 .arg(i, 3, 10, QLatin1Char('0'));
        if (!fixtures::writeFile(dir.filePath(name), commercialWav(i, 1 + i % 4)))
            return false;
    }
    for (int i = 0; i < 40; ++i) {
        if (!fixtures::writeFile(dir.filePath(QStringLiteral("thunder_%1.aif").arg(i)),
                                 taggedAiff(i, 1 + i % 4)))
            return false;
    }
    for (int i = 0; i < 40; ++i) {
        const QString wav = dir.filePath(QStringLiteral("tmp_%1.wav").arg(i));
        if (!fixtures::writeSineWav(wav, 44100, 2, 44100 * (1 + i % 4), 0.3, 300.0 + i))
            return false;
        const QString title = QStringLiteral("Glass break %1").arg(i);
        const bool ok =
            run(QStringLiteral("lame"),
                {QStringLiteral("--quiet"), QStringLiteral("-V"), QStringLiteral("2"),
                 QStringLiteral("--tt"), title, QStringLiteral("--ta"), QStringLiteral("Shard"),
                 QStringLiteral("--tl"), QStringLiteral("Glass Vol. 1"), QStringLiteral("--ty"),
                 QStringLiteral("2021"), QStringLiteral("--tc"),
                 QStringLiteral("close, bright shards"), wav,
                 dir.filePath(QStringLiteral("glass_%1.mp3").arg(i))}) &&
            run(QStringLiteral("oggenc"),
                {QStringLiteral("--quiet"), QStringLiteral("-q"), QStringLiteral("5"),
                 QStringLiteral("-t"), QStringLiteral("Rain loop %1").arg(i), QStringLiteral("-a"),
                 QStringLiteral("Cloud"), QStringLiteral("-c"),
                 QStringLiteral("DESCRIPTION=Light rain on a tin roof, seamless loop"),
                 QStringLiteral("-c"), QStringLiteral("COMMENT=stereo, AB pair"),
                 QStringLiteral("-d"), QStringLiteral("2020-06-01"), QStringLiteral("-o"),
                 dir.filePath(QStringLiteral("rain_%1.ogg").arg(i)), wav});
        QFile::remove(wav);
        if (!ok) {
            std::printf("lame or oggenc failed (scripts/deps.sh test installs them)\n");
            return false;
        }
    }
    QFile done(marker);
    return done.open(QIODevice::WriteOnly);
}

// The scan's per-file analysis without the metadata pass, as tesk-scan ran it
// before metadata was read.
void analyseWithoutMetadata(const QString& path, bool loudness)
{
    AudioFileInfo info;
    const QFileInfo fileInfo(path);
    info.fileSize = static_cast<std::int32_t>(fileInfo.size());
    info.modifyTime = FileModifyTime(path);
    const QString suffix = fileInfo.suffix().toLower();
    const QByteArray local = QFile::encodeName(path);
    if (suffix == QLatin1String("mp3"))
        AnalyzeMp3File(local.constData(), info, false, loudness);
    else if (suffix == QLatin1String("ogg"))
        AnalyzeVorbisFile(local.constData(), info, false, loudness);
    else
        AnalyzeWaveFile(local.constData(), info, false, loudness);
}

FileMetadataPtr readMetadata(const QString& path)
{
    const QByteArray local = QFile::encodeName(path);
    return ReadFileMetadata(local.constData(), QFileInfo(path).suffix().toLower().toStdString());
}

struct Times
{
    double scanMs = 1e300;
    double metadataMs = 1e300;
};

// Best of a few passes over the whole list; each file's two steps run back to back.
Times timeCorpus(const QStringList& files, bool loudness)
{
    Times best;
    for (int rep = 0; rep < kRepetitions; ++rep) {
        qint64 scanNs = 0;
        qint64 metadataNs = 0;
        QElapsedTimer clock;
        for (const QString& path : files) {
            clock.start();
            analyseWithoutMetadata(path, loudness);
            scanNs += clock.nsecsElapsed();
            clock.start();
            const FileMetadataPtr m = readMetadata(path);
            metadataNs += clock.nsecsElapsed();
        }
        best.scanMs = std::min(best.scanMs, scanNs / 1e6);
        best.metadataMs = std::min(best.metadataMs, metadataNs / 1e6);
    }
    return best;
}

// ffprobe printing the container tags of each file (one process per file, as
// it takes one input), averaged over up to kPeerFiles files; -1 without ffprobe.
double ffprobeMsPerFile(const QStringList& files)
{
    const int count = std::min<int>(files.size(), kPeerFiles);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < count; ++i) {
        if (!run(QStringLiteral("ffprobe"),
                 {QStringLiteral("-v"), QStringLiteral("quiet"), QStringLiteral("-show_entries"),
                  QStringLiteral("format_tags"), QStringLiteral("-of"), QStringLiteral("json"),
                  files.at(i)}))
            return -1.0;
    }
    return count > 0 ? clock.nsecsElapsed() / 1e6 / count : 0.0;
}

void warm(const QStringList& files)
{
    for (const QString& path : files) {
        QFile f(path);
        if (f.open(QIODevice::ReadOnly))
            while (!f.read(1 << 20).isEmpty()) {
            }
    }
}

void report(const QString& name, const QStringList& files)
{
    warm(files);
    qint64 bytes = 0;
    for (const QString& path : files)
        bytes += QFileInfo(path).size();

    // What the records cost: heap in use while every file's metadata is held,
    // per suffix since a BWF file carries far more than an MP3.
    std::map<QString, std::pair<std::size_t, int>> perSuffix; // bytes, files with metadata
    std::vector<FileMetadataPtr> held;
    held.reserve(std::size_t(files.size()));
    int withMetadata = 0;
    for (const QString& path : files) {
        const std::size_t before = mallinfo2().uordblks;
        FileMetadataPtr m = readMetadata(path);
        const std::size_t after = mallinfo2().uordblks;
        if (!m)
            continue;
        ++withMetadata;
        auto& [used, count] = perSuffix[QFileInfo(path).suffix().toLower()];
        used += after - before;
        ++count;
        held.push_back(std::move(m));
    }
    held.clear();

    const Times plain = timeCorpus(files, false);
    const Times loud = timeCorpus(files, true);
    const double peer = ffprobeMsPerFile(files);
    const int n = std::max<int>(files.size(), 1);
    std::printf("\n== %s: %d files, %.1f MB, %d with metadata\n", qPrintable(name),
                int(files.size()), bytes / 1e6, withMetadata);
    for (const auto& [suffix, usage] : perSuffix)
        std::printf("  metadata record in memory (%s):%*s%.0f bytes per file\n", qPrintable(suffix),
                    int(6 - suffix.size()), "", double(usage.first) / usage.second);
    std::printf("  scan without metadata (header, plots): %9.1f ms  (%.3f ms/file)\n", plain.scanMs,
                plain.scanMs / n);
    std::printf("  scan without metadata, with loudness:  %9.1f ms  (%.3f ms/file)\n", loud.scanMs,
                loud.scanMs / n);
    std::printf("  metadata pass (what the scan adds):    %9.1f ms  (%.3f ms/file)\n",
                plain.metadataMs, plain.metadataMs / n);
    std::printf("  cost of metadata: %.1f %% of a scan, %.1f %% of a scan with loudness "
                "(target <= 10 %%)\n",
                100.0 * plain.metadataMs / plain.scanMs, 100.0 * loud.metadataMs / loud.scanMs);
    if (peer >= 0.0)
        std::printf("  peer: ffprobe -show_entries format_tags: %.3f ms/file (process per file, "
                    "first %d files)\n",
                    peer, std::min<int>(files.size(), kPeerFiles));
    else
        std::printf("  peer: ffprobe not found (scripts/deps.sh bench installs ffmpeg)\n");
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    SetWaveHeaderErrorCallback(nullptr);
    InitializeWaveHeaderLibrary();
    QStringList corpora = app.arguments().mid(1);
    if (corpora.isEmpty()) {
        const QString lmms = QStringLiteral("/usr/share/lmms/samples");
        if (QFileInfo(lmms).isDir())
            corpora << lmms;
        const QString generated = QDir::current().filePath(QStringLiteral("metadata-corpus"));
        if (!makeCommercialCorpus(generated))
            return 1;
        corpora << generated;
    }
    for (const QString& corpus : corpora) {
        const QStringList files =
            ListAudioFiles(QFileInfo(corpus).absoluteFilePath(), true, false, [] { return false; });
        report(corpus, files);
    }
    FinalizeWaveHeaderLibrary();
    return 0;
}
