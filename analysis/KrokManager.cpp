#include "KrokManager.h"

#include "AnalysisErrors.h"
#include "AnalysisJournal.h"
#include "CompressedFileAnalysis.h"
#include "PreviewPlayer.h"
#include "WaveFileAnalysis.h"
#include "WaveHeaderReader.h"
#include "WaveSoundSource.h"

#include <QFile>
#include <QFileInfo>
#include <QMutexLocker>

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <ctime>

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

KrokManager::~KrokManager() = default;

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
    {
        QMutexLocker lock(&mutex);
        if (initialized) {
            initialized = false;
            if (player)
                player->Finalize();
        }
    }
    // Reference-counted by the reader, so every Initialize needs its Finalize.
    FinalizeWaveHeaderLibrary();
}

bool KrokManager::RegisterFiles(QStringList paths)
{
    Q_UNUSED(paths)
    QMutexLocker lock(&mutex);
    return initialized;
}

bool KrokManager::IsAnalyzed(const QString& path)
{
    QMutexLocker lock(&mutex);
    if (!initialized)
        return false;
    const auto it = records.find(path.toStdString());
    return it != records.end() && it->second.isHeaderRead != 0;
}

void KrokManager::AnalyzeFile(const QString& path)
{
    bool multiPlotWanted = false;
    bool loudnessWanted = false;
    {
        QMutexLocker lock(&mutex);
        multiPlotWanted = multiPlotEnabled;
        loudnessWanted = loudnessEnabled;
    }
    AudioFileInfo info;
    AnalyzeAudioFile(path, info, multiPlotWanted, loudnessWanted, journal.get());
    QMutexLocker lock(&mutex);
    records[path.toStdString()] = info;
}

void KrokManager::InvalidateFiles(const QStringList& paths)
{
    QMutexLocker lock(&mutex);
    if (!initialized)
        return;
    for (const QString& path : paths) {
        const auto it = records.find(path.toStdString());
        if (it != records.end())
            it->second.isHeaderRead = 0;
    }
}

AudioFileInfo KrokManager::GetFileInfo(const QString& path)
{
    QMutexLocker lock(&mutex);
    if (!initialized)
        return DefaultFileInfo();
    const auto it = records.find(path.toStdString());
    return it == records.end() ? DefaultFileInfo() : it->second;
}

bool KrokManager::FindFileInfo(const QString& path, AudioFileInfo& out)
{
    QMutexLocker lock(&mutex);
    if (!initialized)
        return false;
    const auto it = records.find(path.toStdString());
    if (it == records.end())
        return false;
    out = it->second;
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
}

void KrokManager::PlayFileWithSeek(const QString& path, std::uint32_t startPosition)
{
    QMutexLocker lock(&mutex);
    if (!initialized)
        return;
    if (player)
        player->PlayFrom(path, static_cast<std::int32_t>(startPosition));
    playingPath = path;
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
    QMutexLocker lock(&mutex);
    const auto it = records.find(playingPath.toStdString());
    if (it == records.end())
        return pos;
    const AudioFileInfo& info = it->second;
    const std::int64_t start = info.loopStart;
    const std::int64_t end = info.loopEnd;
    // Only the first loop counts; a position exactly at the loop end stays.
    if (info.isHeaderRead != 0 && info.loopCount >= 1 && start < end && end < pos)
        return start + (pos - start) % (end - start);
    return pos;
}

namespace {

std::string modifyTimeText(std::time_t seconds)
{
    std::tm local{};
    if (!localtime_r(&seconds, &local))
        return "0000/00/00 00:00:00";
    char text[80];
    std::snprintf(text, sizeof text, "%04d/%02d/%02d %02d:%02d:%02d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    return text;
}

struct FileStamp
{
    bool ok = false;
    bool regular = false;
    int error = 0;
    std::int64_t size = 0;
    std::int64_t modifiedNs = 0;
    std::time_t seconds = 0;

    bool operator==(const FileStamp& o) const
    {
        return ok == o.ok && size == o.size && modifiedNs == o.modifiedNs;
    }
};

FileStamp stampOf(const QByteArray& localPath)
{
    FileStamp stamp;
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

void failWith(AudioFileInfo& info, const char* reason)
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

std::string FileModifyTimeText(const QString& path)
{
    const FileStamp stamp = stampOf(path.toLocal8Bit());
    return stamp.ok ? modifyTimeText(stamp.seconds) : "0000/00/00 00:00:00";
}

void AnalyzeAudioFile(const QString& path, AudioFileInfo& info, bool multiPlotWanted,
                      bool loudnessWanted, AnalysisJournal* journal)
{
    const QByteArray localPath = QFile::encodeName(path);
    FileStamp stamp = stampOf(localPath);
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

    const std::string key = path.toStdString();
    for (int attempt = 0; attempt < kAnalysisAttempts; ++attempt) {
        AudioFileInfo fresh;
        fresh.fileSize = stamp.size;
        fresh.modifyTime = modifyTimeText(stamp.seconds);
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
            const std::uint64_t token =
                journal ? journal->begin(key, stamp.size, stamp.modifiedNs) : 0;
            analyze(localPath.constData(), fresh, multiPlotWanted, loudnessWanted);
            if (journal)
                journal->end(token);
        }
        info = std::move(fresh);
        const FileStamp after = stampOf(localPath);
        if (after == stamp)
            return;
        stamp = after;
        if (!stamp.ok) {
            info.fileSize = 0;
            info.modifyTime.clear();
            failWith(info, stamp.error == ENOENT ? kErrorNotFound : kErrorCannotOpen);
            return;
        }
    }
    failWith(info, kErrorKeptChanging);
}
