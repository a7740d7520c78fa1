// tesk-scan: lists a folder with the file table's rules, analyses every file
// as the table does and prints one row per file (CSV, or JSON with --json).

#include "AudioFileInfo.h"
#include "AudioFileLister.h"
#include "KrokManager.h"
#include "ScanReport.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include <cstdio>
#include <unistd.h>

namespace {

constexpr int kUsageError = 2;

void PrintProgress(int done, int total)
{
    constexpr int kWidth = 40;
    const int filled = total > 0 ? done * kWidth / total : kWidth;
    std::fprintf(stderr, "\r[%.*s%*s] %d/%d", filled, "########################################",
                 kWidth - filled, "", done, total);
    std::fflush(stderr);
}

bool Write(const QByteArray& bytes)
{
    return std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stdout) ==
           std::size_t(bytes.size());
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tesk-scan"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.28.00"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Lists the audio files of FOLDER (wav, aif, aiff, mp3, ogg, any letter case) as Tesk's\n"
        "file table does, analyses each one and prints one row per file on standard output.\n"
        "\n"
        "Output: CSV with a header row of the table's 15 columns, cells formatted as the\n"
        "table shows them (the Plots and sort-specification columns are left empty), or with\n"
        "--json one JSON array holding an object per file with \"path\" and every field of\n"
        "the analysis record; \"plot\" is 500 integers (max and min interleaved, percent of\n"
        "full scale) and \"multiPlot\" one such array per channel.\n"
        "Loudness is integrated loudness in LUFS; -96 (shown as ---) means not measured.\n"
        "A progress bar goes to standard error when it is a terminal.\n"
        "\n"
        "A file that cannot be read gets a row that shows ERROR and no values; JSON gives\n"
        "the reason in \"errorText\". Like Tesk, tesk-scan enters each file in the crash\n"
        "journal of the cache folder before reading it: a file that took a scan down is\n"
        "shown as ERROR, and skipped, until its size or modification time changes.\n"
        "\n"
        "Exit status: 0 when the folder was scanned (files that cannot be read do not stop\n"
        "the scan), 2 for a bad option or a missing or unreadable folder, 1 when the\n"
        "output cannot be written.\n"
        "\n"
        "Example: tesk-scan --recursive --loudness ~/Sounds > sounds.csv"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption recursiveOption(
        {QStringLiteral("r"), QStringLiteral("recursive")},
        QStringLiteral("Include files in subfolders as well."));
    const QCommandLineOption hiddenOption(QStringLiteral("hidden"),
                                          QStringLiteral("Include hidden files."));
    const QCommandLineOption loudnessOption(
        {QStringLiteral("l"), QStringLiteral("loudness")},
        QStringLiteral("Measure integrated loudness (otherwise the Loudness column shows ---)."));
    const QCommandLineOption multiPlotOption(
        QStringLiteral("multi-plot"),
        QStringLiteral("Also compute the per-channel waveform plots (JSON \"multiPlot\")."));
    const QCommandLineOption voltOption(
        QStringLiteral("mono-plus-3db"),
        QStringLiteral("Show the loudness of mono files raised by 3.0103 dB (CSV only)."));
    const QCommandLineOption jsonOption(QStringLiteral("json"),
                                        QStringLiteral("Print one JSON array instead of CSV."));
    parser.addOptions(
        {recursiveOption, hiddenOption, loudnessOption, multiPlotOption, voltOption, jsonOption});
    parser.addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("The folder to scan."));

    if (!parser.parse(QCoreApplication::arguments())) {
        std::fprintf(stderr, "tesk-scan: %s\n\n%s", qPrintable(parser.errorText()),
                     qPrintable(parser.helpText()));
        return kUsageError;
    }
    if (parser.isSet(QStringLiteral("help")))
        parser.showHelp(0);
    if (parser.isSet(QStringLiteral("version")))
        parser.showVersion();
    const QStringList positional = parser.positionalArguments();
    if (positional.size() != 1) {
        std::fprintf(stderr, "tesk-scan: %s\n\n%s",
                     positional.isEmpty() ? "no FOLDER given" : "only one FOLDER can be given",
                     qPrintable(parser.helpText()));
        return kUsageError;
    }

    const QFileInfo folder(positional.first());
    if (!folder.exists()) {
        std::fprintf(stderr, "tesk-scan: folder not found: %s\n", qPrintable(folder.filePath()));
        return kUsageError;
    }
    if (!folder.isDir()) {
        std::fprintf(stderr, "tesk-scan: not a folder: %s\n", qPrintable(folder.filePath()));
        return kUsageError;
    }
    if (!folder.isReadable() || !folder.isExecutable()) {
        std::fprintf(stderr, "tesk-scan: cannot read folder: %s\n", qPrintable(folder.filePath()));
        return kUsageError;
    }

    const bool json = parser.isSet(jsonOption);
    const bool voltMode = parser.isSet(voltOption);
    const QList<QString> files = ListAudioFiles(
        folder.absoluteFilePath(), parser.isSet(recursiveOption), parser.isSet(hiddenOption), {});

    KrokManager registry;
    registry.Initialize();
    registry.SetLoudnessEnabled(parser.isSet(loudnessOption));
    registry.SetMultiPlotEnabled(parser.isSet(multiPlotOption));
    registry.RegisterFiles(files);

    const bool progress = ::isatty(STDERR_FILENO) != 0;
    QElapsedTimer sinceProgress;
    sinceProgress.start();
    bool ok = Write(json ? QByteArrayLiteral("[") : (ScanReport::CsvHeader() + '\n').toUtf8());
    for (int i = 0; i < files.size() && ok; ++i) {
        const QString& path = files.at(i);
        registry.AnalyzeFile(path);
        const AudioFileInfo info = registry.GetFileInfo(path);
        const QString shownPath = QDir::toNativeSeparators(path);
        if (json)
            ok = Write((i == 0 ? QByteArrayLiteral("\n") : QByteArrayLiteral(",\n")) +
                       ScanReport::JsonObject(shownPath, info));
        else
            ok = Write((ScanReport::CsvRow(shownPath, info, voltMode) + '\n').toUtf8());
        if (progress && (sinceProgress.elapsed() >= 100 || i + 1 == files.size())) {
            PrintProgress(i + 1, files.size());
            sinceProgress.restart();
        }
    }
    if (ok && json)
        ok = Write(QByteArrayLiteral("\n]\n"));
    if (progress && !files.isEmpty())
        std::fprintf(stderr, "\n");
    registry.Finalize();
    if (!ok || std::fflush(stdout) != 0) {
        std::fprintf(stderr, "tesk-scan: cannot write the output\n");
        return 1;
    }
    return 0;
}
