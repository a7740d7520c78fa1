#include "KrokManager.h"

#include "AnalysisErrors.h"
#include "AnalysisJournal.h"
#include "AnalysisLibraryThread.h"
#include "AnalysisStop.h"
#include "CompressedFileAnalysis.h"
#include "FileMetadataReader.h"
#include "FlacFileAnalysis.h"
#include "LoudnessMeter.h"
#include "PreviewPlayer.h"
#include "WaveFileAnalysis.h"
#include "WaveHeaderReader.h"
#include "WaveSoundSource.h"

#include <QFileInfo>
#include <QMutexLocker>

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <optional>

KrokManager::KrokManager(PreviewPlayer* previewPlayer, QObject* parent)
    : QObject(parent)
    , player(previewPlayer)
    , journalPath(AnalysisJournal::DefaultPath())
{
    if (player) {
        player->setParent(this);
        connect(player, &PreviewPlayer::ErrorOccurred, this, &KrokManager::SigErrorReceived);
    }
}

KrokManager::~KrokManager()
{
    // Joined here, outside the lock: each writes its last batch first.
    std::vector<std::shared_ptr<AnalysisLibraryThread>> libraries;
    {
        QMutexLocker lock(&mutex);
        libraries.swap(retiredLibraries);
        libraries.push_back(std::move(library));
    }
}

const AudioFileInfo& KrokManager::DefaultFileInfo()
{
    static const AudioFileInfo defaults;
    return defaults;
}

void KrokManager::SetJournalPath(const QString& path)
{
    journalPath = path;
}

void KrokManager::Initialize()
{
    InitializeWaveHeaderLibrary();
    // The reader's messages become the reason a row shows "ERROR".
    RegisterWaveHeaderMessages();
    if (!journalPath.isEmpty()) {
        auto opened = std::make_unique<AnalysisJournal>();
        if (opened->open(journalPath))
            journal = std::move(opened);
    }
    {
        QMutexLocker lock(&mutex);
        initialized = true;
    }
    if (player)
        player->Initialize();
}

void KrokManager::Finalize()
{
    std::vector<std::shared_ptr<AnalysisLibraryThread>> libraries;
    {
        QMutexLocker lock(&mutex);
        if (initialized) {
            initialized = false;
            if (player)
                player->Finalize();
        }
        libraries.swap(retiredLibraries);
        if (library)
            libraries.push_back(std::move(library));
    }
    // Each writes its last batch and closes; a lookup still running elsewhere
    // keeps its library alive until it returns.
    for (const auto& lib : libraries)
        lib->RequestStop();
    libraries.clear();
    // Reference-counted by the reader, so every Initialize needs its Finalize.
    FinalizeWaveHeaderLibrary();
}

bool KrokManager::RegisterFiles(QStringList paths)
{
    Q_UNUSED(paths)
    QMutexLocker lock(&mutex);
    return initialized;
}

std::int32_t KrokManager::wantedParts() const
{
    return (loudnessEnabled ? AnalysisPartLoudness : 0) |
           (multiPlotEnabled ? AnalysisPartMultiPlot : 0);
}

namespace {

bool HoldsParts(const AudioFileInfo& info, std::int32_t parts)
{
    return (parts & ~info.measuredParts) == 0;
}

} // namespace

bool KrokManager::isCurrent(const Entry& entry) const
{
    return !entry.stale && entry.info->isHeaderRead != 0 && HoldsParts(*entry.info, wantedParts());
}

bool KrokManager::IsAnalyzed(const QString& path)
{
    QMutexLocker lock(&mutex);
    if (!initialized)
        return false;
    const auto it = records.find(path);
    return it != records.end() && isCurrent(it->second);
}

std::vector<KrokManager::Record> KrokManager::CurrentRecords(const QStringList& paths)
{
    std::vector<Record> current(std::size_t(paths.size()));
    QMutexLocker lock(&mutex);
    if (!initialized)
        return current;
    for (int i = 0; i < paths.size(); ++i) {
        const auto it = records.find(paths.at(i));
        if (it != records.end() && isCurrent(it->second))
            current[std::size_t(i)] = it->second.info;
    }
    return current;
}

std::shared_ptr<AnalysisLibraryThread> KrokManager::currentLibrary()
{
    QMutexLocker lock(&mutex);
    return library;
}

KrokManager::Record KrokManager::AnalyzeFile(const QString& path)
{
    std::int32_t wanted = 0;
    // Finds a record that is still current; a fresh analysis then gives the
    // stamp of what it read, so a file rewritten meanwhile is analysed again.
    FileStamp stamp = ReadFileStamp(path);
    Record current;
    {
        QMutexLocker lock(&mutex);
        wanted = wantedParts();
        const auto it = records.find(path);
        if (it != records.end() && !it->second.stale && stamp.exists() &&
            it->second.stamp == stamp) {
            current = it->second.info;
        }
    }
    AudioFileInfo info;
    if (current) {
        const std::int32_t missing = wanted & ~current->measuredParts;
        if (missing == 0)
            return current;
        info = *current;
        MeasureAudioFileParts(path, info, missing, journal.get());
    } else {
        AnalyzeAudioFile(path, info, (wanted & AnalysisPartMultiPlot) != 0,
                         (wanted & AnalysisPartLoudness) != 0, journal.get(), &stamp);
        info.measuredParts = wanted;
    }
    // A stopped analysis read only part of the file.
    if (AnalysisStopRequested())
        return nullptr;
    Record record = std::make_shared<const AudioFileInfo>(std::move(info));
    std::shared_ptr<AnalysisLibraryThread> lib;
    {
        QMutexLocker lock(&mutex);
        Entry& entry = records[path];
        entry.info = record;
        entry.stamp = stamp;
        entry.stale = false;
        lib = library;
    }
    if (lib && stamp.exists())
        lib->Store(path, stamp, *record);
    return record;
}

void KrokManager::InvalidateFiles(const QStringList& paths)
{
    QMutexLocker lock(&mutex);
    if (!initialized)
        return;
    for (const QString& path : paths) {
        const auto it = records.find(path);
        if (it != records.end())
            it->second.stale = true;
    }
}

void KrokManager::RecallFromLibrary(const QStringList& paths)
{
    const std::unique_ptr<Recall> recall = BeginRecall(paths);
    EndRecall(*recall);
}

std::unique_ptr<KrokManager::Recall> KrokManager::BeginRecall(const QStringList& paths)
{
    auto recall = std::make_unique<Recall>();
    std::vector<FileStamp> stamps;
    stamps.reserve(std::size_t(paths.size()));
    for (const QString& path : paths)
        stamps.push_back(ReadFileStamp(path));

    std::shared_ptr<AnalysisLibraryThread> lib;
    {
        QMutexLocker lock(&mutex);
        if (!initialized)
            return recall;
        const std::int32_t wanted = wantedParts();
        for (int i = 0; i < paths.size(); ++i) {
            const FileStamp& stamp = stamps[std::size_t(i)];
            const auto it = records.find(paths.at(i));
            if (it != records.end()) {
                Entry& entry = it->second;
                if (entry.stamp != stamp)
                    entry.stale = true;
                else if (!entry.stale && HoldsParts(*entry.info, wanted))
                    continue;
            }
            if (stamp.exists()) {
                recall->keys << paths.at(i);
                recall->stamps.push_back(stamp);
            }
        }
        lib = library;
    }
    if (lib && !recall->keys.isEmpty())
        recall->rows = lib->FetchLater(recall->keys);
    return recall;
}

void KrokManager::EndRecall(Recall& recall)
{
    if (!recall.rows.valid())
        return;
    LibraryRows rows = recall.rows.get();
    // The records are made before the lock is taken.
    std::vector<Record> made(rows.size());
    for (std::size_t j = 0; j < rows.size(); ++j) {
        if (rows[j] && rows[j]->stamp == recall.stamps[j])
            made[j] = std::make_shared<const AudioFileInfo>(std::move(rows[j]->info));
    }
    QMutexLocker lock(&mutex);
    for (std::size_t j = 0; j < made.size(); ++j) {
        if (!made[j])
            continue;
        const FileStamp& stamp = recall.stamps[j];
        const auto [it, inserted] = records.try_emplace(recall.keys.at(int(j)));
        Entry& entry = it->second;
        // A current record of this session that holds more parts than the row stays.
        if (!inserted && !entry.stale && entry.stamp == stamp &&
            !HoldsParts(*made[j], entry.info->measuredParts))
            continue;
        entry.info = std::move(made[j]);
        entry.stamp = stamp;
        entry.stale = false;
    }
}

void KrokManager::SetLibrary(std::unique_ptr<AnalysisLibrary> backend, LibraryRoots roots)
{
    std::shared_ptr<AnalysisLibraryThread> started;
    if (backend) {
        started = std::make_shared<AnalysisLibraryThread>(
            std::move(backend), [this](const QString& problem) { emit SigLibraryProblem(problem); },
            std::move(roots));
    }
    QMutexLocker lock(&mutex);
    if (library) {
        library->RequestStop();
        retiredLibraries.push_back(std::move(library));
    }
    library = std::move(started);
}

bool KrokManager::HasLibrary()
{
    QMutexLocker lock(&mutex);
    return library != nullptr;
}

void KrokManager::ForgetMissingFiles(const QString& folder, bool recursive,
                                     const QStringList& listed)
{
    if (const auto lib = currentLibrary())
        lib->ForgetMissing(QFileInfo(folder).absoluteFilePath(), recursive, listed);
}

void KrokManager::ClearLibrary()
{
    if (const auto lib = currentLibrary())
        lib->Clear([this](bool cleared) { emit SigLibraryCleared(cleared); });
    else
        emit SigLibraryCleared(false);
}

void KrokManager::FlushLibrary(bool catchUp)
{
    if (const auto lib = currentLibrary())
        lib->Flush(catchUp);
}

KrokManager::Record KrokManager::FindRecord(const QString& path)
{
    QMutexLocker lock(&mutex);
    if (!initialized)
        return nullptr;
    const auto it = records.find(path);
    return it == records.end() ? nullptr : it->second.info;
}

AudioFileInfo KrokManager::GetFileInfo(const QString& path)
{
    const Record record = FindRecord(path);
    return record ? *record : DefaultFileInfo();
}

std::shared_ptr<const FileMetadata> KrokManager::FindMetadata(const QString& path,
                                                              std::int32_t* samplingRate)
{
    if (samplingRate)
        *samplingRate = 0;
    const Record record = FindRecord(path);
    if (!record)
        return nullptr;
    if (samplingRate)
        *samplingRate = record->samplingRate;
    return record->metadata;
}

bool KrokManager::FindFileInfo(const QString& path, AudioFileInfo& out)
{
    const Record record = FindRecord(path);
    if (!record)
        return false;
    out = *record;
    return true;
}

void KrokManager::SetLoudnessEnabled(bool enabled)
{
    QMutexLocker lock(&mutex);
    if (initialized)
        loudnessEnabled = enabled;
}

void KrokManager::SetMultiPlotEnabled(bool enabled)
{
    QMutexLocker lock(&mutex);
    if (initialized)
        multiPlotEnabled = enabled;
}

bool KrokManager::IsLoudnessEnabled()
{
    QMutexLocker lock(&mutex);
    return loudnessEnabled;
}

bool KrokManager::IsMultiPlotEnabled()
{
    QMutexLocker lock(&mutex);
    return multiPlotEnabled;
}

void KrokManager::PlayFile(const QString& path)
{
    QMutexLocker lock(&mutex);
    if (!initialized)
        return;
    if (player)
        player->Play(path);
    playingPath = path;
    playingRange = false;
}

void KrokManager::PlayFileWithSeek(const QString& path, std::uint32_t startPosition)
{
    QMutexLocker lock(&mutex);
    if (!initialized)
        return;
    if (player)
        player->PlayFrom(path, static_cast<std::int32_t>(startPosition));
    playingPath = path;
    playingRange = false;
}

void KrokManager::PlayFileRange(const QString& path, std::int64_t startFrame, std::int64_t endFrame)
{
    QMutexLocker lock(&mutex);
    if (!initialized)
        return;
    if (player)
        player->PlayRange(path, startFrame, endFrame);
    playingPath = path;
    playingRange = true;
}

// The playback queries below come from the GUI thread only, which is also the
// only writer of `playingPath` and `initialized`, so they read them unlocked.

void KrokManager::StopPlayback()
{
    playingPath.clear();
    if (initialized && player)
        player->Stop();
}

void KrokManager::SetVolume(float volume)
{
    if (initialized && player)
        player->SetVolume(volume);
}

bool KrokManager::IsPlaying()
{
    return initialized && player && player->IsPlaying();
}

bool KrokManager::IsPreparing()
{
    return initialized && player && player->IsPreparing();
}

QString KrokManager::GetPlayingPath() const
{
    return playingPath;
}

std::int64_t KrokManager::GetPlaybackPosition()
{
    if (!initialized || !player)
        return 0;
    const std::int64_t pos = player->GetPlayedSamples();
    // The detail worker may be inserting a record while we look, and an insert
    // can rehash the map; reading it without the lock would be a data race.
    const Record record = FindRecord(playingPath);
    if (!record || playingRange)
        return pos;
    const AudioFileInfo& info = *record;
    const std::int64_t start = info.loopStart;
    const std::int64_t end = info.loopEnd;
    // Only the first loop counts; a position exactly at the loop end stays.
    if (info.isHeaderRead != 0 && info.loopCount >= 1 && start < end && end < pos)
        return start + (pos - start) % (end - start);
    return pos;
}

namespace {

struct StatResult
{
    bool ok = false;
    bool regular = false;
    int error = 0;
    std::int64_t size = 0;
    std::int64_t modifiedNs = 0;
    std::time_t seconds = 0;

    bool operator==(const StatResult& o) const
    {
        return ok == o.ok && size == o.size && modifiedNs == o.modifiedNs;
    }
};

StatResult stampOf(const QByteArray& localPath)
{
    StatResult stamp;
    struct stat status
    {};
    if (::stat(localPath.constData(), &status) != 0) {
        stamp.error = errno;
        return stamp;
    }
    stamp.ok = true;
    stamp.regular = S_ISREG(status.st_mode);
    stamp.size = static_cast<std::int64_t>(status.st_size);
    stamp.seconds = status.st_mtim.tv_sec;
    stamp.modifiedNs = std::int64_t(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
    return stamp;
}

void failWith(AudioFileInfo& info, SharedText reason)
{
    AudioFileInfo failed;
    failed.fileSize = info.fileSize;
    failed.modifyTime = info.modifyTime;
    failed.isValid = 0;
    failed.errorText = reason;
    info = std::move(failed);
}

// A file rewritten while it is read can mix old and new data; such a record is
// thrown away and the file read again, a few times at most.
constexpr int kAnalysisAttempts = 3;

} // namespace

ModifyTime FileModifyTime(const QString& path)
{
    const StatResult stamp = stampOf(QFile::encodeName(path));
    return stamp.ok ? ModifyTime::FromSeconds(stamp.seconds) : ModifyTime::Unconverted();
}

void AnalyzeAudioFile(const QString& path, AudioFileInfo& info, bool multiPlotWanted,
                      bool loudnessWanted, AnalysisJournal* journal, FileStamp* analysedStamp)
{
    if (analysedStamp)
        *analysedStamp = FileStamp{};
    const QByteArray localPath = QFile::encodeName(path);
    StatResult stamp = stampOf(localPath);
    if (!stamp.ok) {
        // Size and time stay unknown (empty), rather than shown as zeros.
        // Names that are not valid UTF-8 reach us with replacement characters.
        failWith(info, path.contains(QChar::ReplacementCharacter) ? kErrorNameNotUtf8
                       : stamp.error == ENOENT                    ? kErrorNotFound
                                                                  : kErrorCannotOpen);
        return;
    }
    const QString suffix = QFileInfo(path).suffix().toLower();
    void (*analyze)(const char*, AudioFileInfo&, bool, bool) = nullptr;
    if (suffix == QLatin1String("wav") || suffix == QLatin1String("aif") ||
        suffix == QLatin1String("aiff"))
        analyze = AnalyzeWaveFile;
    else if (suffix == QLatin1String("mp3"))
        analyze = AnalyzeMp3File;
    else if (suffix == QLatin1String("ogg"))
        analyze = AnalyzeVorbisFile;
    else if (suffix == QLatin1String("flac"))
        analyze = AnalyzeFlacFile;

    const std::string key = path.toStdString();
    for (int attempt = 0; attempt < kAnalysisAttempts; ++attempt) {
        AudioFileInfo fresh;
        fresh.fileSize = stamp.size;
        fresh.modifyTime = ModifyTime::FromSeconds(stamp.seconds);
        if (!stamp.regular) {
            // A FIFO or a device would block or never end.
            info = std::move(fresh);
            failWith(info, kErrorNotRegularFile);
            return;
        }
        if (journal && journal->isFailed(key, stamp.size, stamp.modifiedNs)) {
            info = std::move(fresh);
            failWith(info, kErrorAnalysisCrashed);
            return;
        }
        if (analyze) {
            // A file that was in flight beside others when an analysis died is
            // read alone, so that it alone is named if it happens again.
            const bool suspect = journal && journal->isSuspect(key, stamp.size, stamp.modifiedNs);
            std::optional<AnalysisJournal::Turn> turn;
            if (journal)
                turn.emplace(*journal, suspect);
            const std::uint64_t token =
                journal ? journal->begin(key, stamp.size, stamp.modifiedNs) : 0;
            analyze(localPath.constData(), fresh, multiPlotWanted, loudnessWanted);
            if (!AnalysisStopRequested())
                fresh.metadata = ReadFileMetadata(localPath.constData(), suffix.toStdString());
            if (journal) {
                journal->end(token);
                if (suspect && !AnalysisStopRequested())
                    journal->clear(key);
            }
        }
        info = std::move(fresh);
        // Stopped half way: the caller throws the record away.
        if (AnalysisStopRequested())
            return;
        const StatResult after = stampOf(localPath);
        if (after == stamp) {
            if (analysedStamp && stamp.regular)
                *analysedStamp = FileStamp{stamp.size, stamp.modifiedNs};
            return;
        }
        stamp = after;
        if (!stamp.ok) {
            info.fileSize = 0;
            info.modifyTime = ModifyTime();
            failWith(info, stamp.error == ENOENT ? kErrorNotFound : kErrorCannotOpen);
            return;
        }
    }
    failWith(info, kErrorKeptChanging);
}

void MeasureAudioFileParts(const QString& path, AudioFileInfo& info, std::int32_t parts,
                           AnalysisJournal* journal)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    const bool wave = suffix == QLatin1String("wav") || suffix == QLatin1String("aif") ||
                      suffix == QLatin1String("aiff");
    if (parts == AnalysisPartLoudness && wave) {
        // The loudness pass alone: the header and plots are known already.
        float value = kLoudnessFloor;
        float peak = -1.0f;
        info.loudness = MeasureFileLoudness(path.toLocal8Bit().constData(), &value, &peak)
                            ? value
                            : kLoudnessFloor;
        info.samplePeak = peak;
    } else {
        AudioFileInfo fresh;
        AnalyzeAudioFile(path, fresh, (parts & AnalysisPartMultiPlot) != 0,
                         (parts & AnalysisPartLoudness) != 0, journal);
        if (parts & AnalysisPartLoudness) {
            info.loudness = fresh.loudness;
            info.samplePeak = fresh.samplePeak;
        }
        if (parts & AnalysisPartMultiPlot) {
            if (fresh.hasMultiPlot())
                info.setMultiPlot(fresh.multiPlotLane(0), fresh.multiPlotLanes());
            else
                info.clearMultiPlot();
        }
    }
    info.measuredParts |= parts;
}
