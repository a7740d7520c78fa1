// tesk-scan: lists a folder with the file table's rules, analyses every file
// as the table does and prints one row per file (CSV, or JSON with --json).

#include "AnalysisPass.h"
#include "AudioFileInfo.h"
#include "AudioFileLister.h"
#include "FallbackAnalysisLibrary.h"
#include "KrokManager.h"
#include "LibraryRoots.h"
#include "LibraryServer.h"
#include "ScanReport.h"
#include "SqliteAnalysisLibrary.h"
#include "UcsCatalog.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <unistd.h>
#include <vector>

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
    const QString libraryHelp =
        QStringLiteral(
            "Analysis library: results are kept in the SQLite file that Tesk uses, by default\n"
            "%1\n"
            "A file whose size and modification time are unchanged since it was analysed is\n"
            "taken from there without being read; the others are analysed and written back,\n"
            "so a second scan of the same folder is fast. Several tesk-scan processes and Tesk\n"
            "windows can share one library. A damaged library is moved aside and a new one\n"
            "started; a locked, read-only or unusable one is reported on standard error and\n"
            "the scan goes on without it.\n"
            "\n"
            "A studio's shared library: --library postgresql://USER@HOST:PORT/DATABASE keeps\n"
            "the results in a PostgreSQL database that every workstation uses (a server's\n"
            "Unix socket folder can be given as postgresql://USER@/DATABASE?host=/FOLDER).\n"
            "The password is never an option: libpq reads it from PGPASSWORD or from the\n"
            "password file (PGPASSFILE, else ~/.pgpass; lines of\n"
            "HOST:PORT:DATABASE:USER:PASSWORD). The tables are made on first use when USER\n"
            "may create them. Give each shared folder the name every machine knows it by with\n"
            "--root NAME=FOLDER (for example --root SFX=/mnt/sfx here, where Windows\n"
            "workstations map SFX to S:\\): files under a root are kept under its name and\n"
            "their path inside it, so workstations that mount the share in other places find\n"
            "them; other files are kept under their absolute path. When the server cannot be\n"
            "reached, or goes away during the scan, this is said once on standard error,\n"
            "results go to the SQLite library above and to an outbox beside it, and they are\n"
            "sent to the server by the next Tesk or tesk-scan that reaches it.\n")
            .arg(QDir::toNativeSeparators(SqliteAnalysisLibrary::DefaultPath()));
    parser.setApplicationDescription(
        QStringLiteral(
            "Lists the audio files of FOLDER (wav, aif, aiff, mp3, ogg, flac, any letter case)\n"
            "as Tesk's file table does, analyses each one and prints one row per file on\n"
            "standard output.\n"
            "\n"
            "Output: CSV with a header row of the table's 26 columns, cells formatted as the\n"
            "table shows them (the Plots and sort-specification columns are left empty), or with\n"
            "--json one JSON array holding an object per file with \"path\" and every field of\n"
            "the analysis record; \"plot\" is 500 integers (max and min interleaved, percent of\n"
            "full scale) and \"multiPlot\" one such array per channel.\n"
            "\n"
            "Metadata: the CSV columns Description, Title/Name, Artist/Originator, Comment, Date\n"
            "and Tempo/Key show the first field of their group that the file carries (BWF bext,\n"
            "iXML, RIFF INFO, acid, cue labels, AIFF NAME/AUTH/ANNO/(c), ID3 and Vorbis\n"
            "comments), line breaks as spaces. CatID, Category, FX Name, Creator and Source come\n"
            "from a UCS file name (CatID_FXName_CreatorID_SourceID[_...]), else from the iXML\n"
            "USER fields; Category shows CATEGORY-SUBCATEGORY from --ucs-list. In JSON,\n"
            "\"metadata\" holds every text field under its key: description, title, artist,\n"
            "album, comment, date, genre, copyright, software, keywords, bpm, musicalKey,\n"
            "originator, originatorReference, originationDate, originationTime, project, scene,\n"
            "take, tape, note, timecodeRate, timecodeFlag, userDescription, userCategory,\n"
            "userSubCategory, userCatId, userFxName, userCreator, userSource, userKeywords,\n"
            "userText, cueLabels, cueNotes (a key is absent when the file has no such field),\n"
            "and also \"timeReference\" (bext, samples since midnight) with \"timecode\", and\n"
            "\"acid\" {oneShot, rootNote, beats, meterNumerator, meterDenominator, tempo};\n"
            "\"ucs\" holds the blocks of a UCS file name {catId, category, subCategory, fxName,\n"
            "creatorId, sourceId, userCategory, userData} and is empty for any other name.\n"
            "\n"
            "Loudness is integrated loudness in LUFS; -96 (shown as ---) means not measured.\n"
            "Files are analysed on one thread per processor core (--threads to use fewer);\n"
            "rows come out in the listing's order whatever the number of threads, with the\n"
            "same values. A progress bar goes to standard error when it is a terminal.\n"
            "\n"
            "A file that cannot be read gets a row that shows ERROR and no values; JSON gives\n"
            "the reason in \"errorText\". Like Tesk, tesk-scan enters each file in the crash\n"
            "journal of the cache folder before reading it: a file that took a scan down is\n"
            "shown as ERROR, and skipped, until its size or modification time changes.\n"
            "\n") +
        libraryHelp +
        QStringLiteral(
            "\n"
            "Exit status: 0 when the folder was scanned (files that cannot be read do not stop\n"
            "the scan), 2 for a bad option (a --library URL that is not one or holds a\n"
            "password, a --root that is not NAME=FOLDER), a missing or unreadable folder or an\n"
            "unusable --ucs-list, 1 when the output cannot be written.\n"
            "\n"
            "Examples: tesk-scan --recursive --loudness ~/Sounds > sounds.csv\n"
            "  tesk-scan -r -l --library postgresql://tesk@db.studio:5432/sfx \\\n"
            "            --root SFX=/mnt/sfx /mnt/sfx > /dev/null"));
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
    const QCommandLineOption libraryOption(
        QStringLiteral("library"),
        QStringLiteral("Use the analysis library in the SQLite file PATH (created when missing), "
                       "or the shared one at a postgresql:// URL."),
        QStringLiteral("PATH|URL"));
    const QCommandLineOption rootOption(
        QStringLiteral("root"),
        QStringLiteral("A library root: the shared folder FOLDER, known by NAME on every "
                       "machine (may be given more than once)."),
        QStringLiteral("NAME=FOLDER"));
    const QCommandLineOption noLibraryOption(
        QStringLiteral("no-library"),
        QStringLiteral("Analyse every file; neither read nor write the analysis library."));
    const QCommandLineOption ucsListOption(
        QStringLiteral("ucs-list"),
        QStringLiteral("The UCS CatID list (CSV or TSV with CatID, Category and SubCategory "
                       "columns): only its CatIDs count as UCS names, and their category names "
                       "are shown."),
        QStringLiteral("FILE"));
    const QCommandLineOption threadsOption(
        QStringLiteral("threads"),
        QStringLiteral("Analyse N files at once (default: one per processor core, here %1).")
            .arg(AnalysisPass::DefaultWorkerCount()),
        QStringLiteral("N"));
    parser.addOptions({recursiveOption, hiddenOption, loudnessOption, multiPlotOption, voltOption,
                       jsonOption, ucsListOption, libraryOption, noLibraryOption, rootOption,
                       threadsOption});
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
    if (parser.isSet(libraryOption) && parser.isSet(noLibraryOption)) {
        std::fprintf(stderr, "tesk-scan: --library and --no-library exclude each other\n\n%s",
                     qPrintable(parser.helpText()));
        return kUsageError;
    }
    QStringList rootErrors;
    const LibraryRoots roots = LibraryRoots::Parse(parser.values(rootOption), &rootErrors);
    if (!rootErrors.isEmpty()) {
        std::fprintf(stderr, "tesk-scan: %s\n", qPrintable(rootErrors.first()));
        return kUsageError;
    }
    std::optional<LibraryServer> server;
    if (parser.isSet(libraryOption) && LibraryServer::IsUrl(parser.value(libraryOption))) {
        QString error;
        server = LibraryServer::FromUrl(parser.value(libraryOption), &error);
        if (!server) {
            std::fprintf(stderr, "tesk-scan: %s\n", qPrintable(error));
            return kUsageError;
        }
    }
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

    std::shared_ptr<const UcsCatalog> catalog;
    if (parser.isSet(ucsListOption)) {
        QString error;
        catalog = UcsCatalog::load(parser.value(ucsListOption), &error);
        if (!catalog) {
            std::fprintf(stderr, "tesk-scan: %s\n", qPrintable(error));
            return kUsageError;
        }
    }

    int threads = AnalysisPass::DefaultWorkerCount();
    if (parser.isSet(threadsOption)) {
        bool ok = false;
        threads = parser.value(threadsOption).toInt(&ok);
        if (!ok || threads < 1) {
            std::fprintf(stderr, "tesk-scan: --threads takes a number of 1 or more\n\n%s",
                         qPrintable(parser.helpText()));
            return kUsageError;
        }
    }

    const bool json = parser.isSet(jsonOption);
    const bool voltMode = parser.isSet(voltOption);
    const QList<QString> files = ListAudioFiles(
        folder.absoluteFilePath(), parser.isSet(recursiveOption), parser.isSet(hiddenOption), {});

    const bool loudness = parser.isSet(loudnessOption);
    const bool multiPlot = parser.isSet(multiPlotOption);
    KrokManager registry;
    registry.Initialize();
    registry.SetLoudnessEnabled(loudness);
    registry.SetMultiPlotEnabled(multiPlot);
    // Problems of the library are told once each; the scan goes on without it.
    QObject::connect(&registry, &KrokManager::SigLibraryProblem, [](const QString& problem) {
        std::fprintf(stderr, "tesk-scan: %s\n", qPrintable(problem));
    });
    if (server) {
        registry.SetLibrary(FallbackAnalysisLibrary::ForServer(*server), roots);
        registry.ForgetMissingFiles(folder.absoluteFilePath(), parser.isSet(recursiveOption),
                                    files);
    } else if (!parser.isSet(noLibraryOption)) {
        const QString libraryPath = parser.isSet(libraryOption)
                                        ? QFileInfo(parser.value(libraryOption)).absoluteFilePath()
                                        : SqliteAnalysisLibrary::DefaultPath();
        registry.SetLibrary(std::make_unique<SqliteAnalysisLibrary>(libraryPath), roots);
        registry.ForgetMissingFiles(folder.absoluteFilePath(), parser.isSet(recursiveOption),
                                    files);
    }
    registry.RegisterFiles(files);

    // The pass finishes files in any order; rows are printed in the listing's
    // order as soon as every row before them is in.
    std::atomic<bool> stop{false};
    const std::atomic<std::int64_t> noWantedRows{AnalysisPass::kNoWantedRows};
    auto pass = std::make_unique<AnalysisPass>(registry, files, threads, false, stop, noWantedRows);
    std::vector<KrokManager::Record> records(std::size_t(files.size()));
    int finished = 0;

    const bool progress = ::isatty(STDERR_FILENO) != 0;
    QElapsedTimer sinceProgress;
    sinceProgress.start();
    bool ok = Write(json ? QByteArrayLiteral("[") : (ScanReport::CsvHeader() + '\n').toUtf8());
    for (int i = 0; i < files.size() && ok; ++i) {
        while (!records[std::size_t(i)]) {
            for (AnalysisPass::Finished& done : pass->Collect(std::chrono::milliseconds(100))) {
                records[std::size_t(done.index)] = std::move(done.record);
                ++finished;
            }
            if (progress && sinceProgress.elapsed() >= 100) {
                PrintProgress(finished, files.size());
                sinceProgress.restart();
            }
        }
        const QString& path = files.at(i);
        AudioFileInfo info = *records[std::size_t(i)];
        records[std::size_t(i)].reset();
        // The library may know more than was asked for; the output shows what was asked.
        if (!loudness)
            info.loudness = -96.0f;
        if (!multiPlot)
            info.clearMultiPlot();
        const QString shownPath = QDir::toNativeSeparators(path);
        if (json)
            ok = Write((i == 0 ? QByteArrayLiteral("\n") : QByteArrayLiteral(",\n")) +
                       ScanReport::JsonObject(shownPath, info, catalog.get()));
        else
            ok = Write(
                (ScanReport::CsvRow(shownPath, info, voltMode, catalog.get()) + '\n').toUtf8());
        if (progress && i + 1 == files.size())
            PrintProgress(finished, files.size());
    }
    if (ok && json)
        ok = Write(QByteArrayLiteral("\n]\n"));
    if (progress && !files.isEmpty())
        std::fprintf(stderr, "\n");
    // Output that cannot be written ends the scan early.
    stop = true;
    pass.reset();
    // Rows an earlier scan kept for the server go to it now that it is here.
    registry.FlushLibrary(true);
    registry.Finalize();
    if (!ok || std::fflush(stdout) != 0) {
        std::fprintf(stderr, "tesk-scan: cannot write the output\n");
        return 1;
    }
    return 0;
}
