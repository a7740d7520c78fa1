#include "KrokManager.h"

#include "CompressedFileAnalysis.h"
#include "FileMetadataReader.h"
#include "PreviewPlayer.h"
#include "WaveFileAnalysis.h"
#include "WaveHeaderReader.h"

#include <QFile>
#include <QFileInfo>
#include <QMutexLocker>

#include <sys/stat.h>

#include <cstdio>
#include <ctime>

KrokManager::KrokManager(PreviewPlayer* previewPlayer, QObject* parent)
    : QObject(parent)
    , player(previewPlayer)
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

void KrokManager::Initialize()
{
    InitializeWaveHeaderLibrary();
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
    AnalyzeAudioFile(path, info, multiPlotWanted, loudnessWanted);
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

std::shared_ptr<const FileMetadata> KrokManager::FindMetadata(const QString& path,
                                                              std::int32_t* samplingRate)
{
    if (samplingRate)
        *samplingRate = 0;
    QMutexLocker lock(&mutex);
    if (!initialized)
        return nullptr;
    const auto it = records.find(path.toStdString());
    if (it == records.end())
        return nullptr;
    if (samplingRate)
        *samplingRate = it->second.samplingRate;
    return it->second.metadata;
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
    QMutexLocker lock(&mutex);
    const auto it = records.find(playingPath.toStdString());
    if (it == records.end() || playingRange)
        return pos;
    const AudioFileInfo& info = it->second;
    const std::int64_t start = info.loopStart;
    const std::int64_t end = info.loopEnd;
    // Only the first loop counts; a position exactly at the loop end stays.
    if (info.isHeaderRead != 0 && info.loopCount >= 1 && start < end && end < pos)
        return start + (pos - start) % (end - start);
    return pos;
}

std::string FileModifyTimeText(const QString& path)
{
    struct stat status
    {};
    if (::stat(path.toLocal8Bit().constData(), &status) != 0)
        return "0000/00/00 00:00:00";
    std::tm local{};
    const std::time_t seconds = status.st_mtime;
    if (!localtime_r(&seconds, &local))
        return "0000/00/00 00:00:00";
    char text[80];
    std::snprintf(text, sizeof text, "%04d/%02d/%02d %02d:%02d:%02d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    return text;
}

void AnalyzeAudioFile(const QString& path, AudioFileInfo& info, bool multiPlotWanted,
                      bool loudnessWanted)
{
    if (!QFile::exists(path))
        return;
    const QFileInfo fileInfo(path);
    // Kept in 32 bits on purpose: files of 2 GiB and more wrap.
    info.fileSize = static_cast<std::int32_t>(fileInfo.size());
    info.modifyTime = FileModifyTimeText(path);

    const QString suffix = fileInfo.suffix().toLower();
    const QByteArray localPath = path.toLocal8Bit();
    if (suffix == QLatin1String("wav") || suffix == QLatin1String("aif") ||
        suffix == QLatin1String("aiff"))
        AnalyzeWaveFile(localPath.constData(), info, multiPlotWanted, loudnessWanted);
    else if (suffix == QLatin1String("mp3"))
        AnalyzeMp3File(localPath.constData(), info, multiPlotWanted, loudnessWanted);
    else if (suffix == QLatin1String("ogg"))
        AnalyzeVorbisFile(localPath.constData(), info, multiPlotWanted, loudnessWanted);
    info.metadata = ReadFileMetadata(localPath.constData(), suffix.toStdString());
}
