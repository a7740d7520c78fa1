#pragma once

#include "AudioFileInfo.h"

#include <QMutex>
#include <QObject>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <string>
#include <unordered_map>

class PreviewPlayer;

// The "Analysis Library": one analysis record per audio file, keyed by full
// path, filled on request by the per-file analysis, plus the preview player
// that plays those files. The detail worker analyses; the table reads copies.
class KrokManager final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(KrokManager)

public:
    // Adopts `player` (may be null: every playback request is then a no-op).
    explicit KrokManager(PreviewPlayer* player = nullptr, QObject* parent = nullptr);
    ~KrokManager() override;

    void Initialize();
    void Finalize();

    // There is no limit on the number of files; fails only before Initialize.
    bool RegisterFiles(QStringList paths);
    bool IsAnalyzed(const QString& path);
    // Runs the analysis without holding the lock, then stores the record.
    void AnalyzeFile(const QString& path);
    void InvalidateFiles(const QStringList& paths);
    // A copy of the record, or the shared default record.
    AudioFileInfo GetFileInfo(const QString& path);
    // False (and `out` untouched) when the registry holds no record for the path.
    bool FindFileInfo(const QString& path, AudioFileInfo& out);
    // The record's metadata alone (no copy of the rest); null when none.
    // `samplingRate`, when given, receives the record's (0 without a record).
    std::shared_ptr<const FileMetadata> FindMetadata(const QString& path,
                                                     std::int32_t* samplingRate = nullptr);

    void SetLoudnessEnabled(bool enabled);
    void SetMultiPlotEnabled(bool enabled);
    bool IsLoudnessEnabled();
    bool IsMultiPlotEnabled();

    void PlayFile(const QString& path);
    void PlayFileWithSeek(const QString& path, std::uint32_t startPosition);
    // Frames [startFrame, endFrame) once; the position then runs straight, unfolded by the loop.
    void PlayFileRange(const QString& path, std::int64_t startFrame, std::int64_t endFrame);
    void StopPlayback();
    void SetVolume(float volume);
    bool IsPlaying();
    bool IsPreparing();
    QString GetPlayingPath() const;
    std::int64_t GetPlaybackPosition();

    // The shared record that stands for a file not analysed.
    static const AudioFileInfo& DefaultFileInfo();

signals:
    void SigErrorReceived(QString message);

private:
    mutable QMutex mutex;
    bool initialized = false;
    QString playingPath;
    bool playingRange = false;
    PreviewPlayer* player = nullptr;
    bool loudnessEnabled = false;
    bool multiPlotEnabled = false;
    std::unordered_map<std::string, AudioFileInfo> records;
};

// The per-file analysis behind AnalyzeFile: file size, modify time, then the
// reader for the lower-cased suffix. Leaves defaults for a missing file.
void AnalyzeAudioFile(const QString& path, AudioFileInfo& info, bool multiPlotWanted,
                      bool loudnessWanted);

// "%04d/%02d/%02d %02d:%02d:%02d" in local time; "0000/00/00 00:00:00" when
// the file's status cannot be read.
std::string FileModifyTimeText(const QString& path);
