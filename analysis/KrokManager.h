#pragma once

#include "AudioFileInfo.h"

#include <QMutex>
#include <QObject>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

class AnalysisJournal;
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

    // Where the crash journal lives (AnalysisJournal::DefaultPath() unless set
    // before Initialize; empty: no journal).
    void SetJournalPath(const QString& path);
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

    void SetLoudnessEnabled(bool enabled);
    void SetMultiPlotEnabled(bool enabled);
    bool IsLoudnessEnabled();
    bool IsMultiPlotEnabled();

    void PlayFile(const QString& path);
    void PlayFileWithSeek(const QString& path, std::uint32_t startPosition);
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
    PreviewPlayer* player = nullptr;
    bool loudnessEnabled = false;
    bool multiPlotEnabled = false;
    std::unordered_map<std::string, AudioFileInfo> records;
    QString journalPath;
    std::unique_ptr<AnalysisJournal> journal;
};

// The per-file analysis behind AnalyzeFile: file size, modify time, then the
// reader for the lower-cased suffix. A file that cannot be read gets `isValid`
// 0 and the reason in `errorText`. With a journal, the file is entered before
// it is read (and one that crashed an analysis before is not read again until
// it changes). A file that changes while it is read is read again.
void AnalyzeAudioFile(const QString& path, AudioFileInfo& info, bool multiPlotWanted,
                      bool loudnessWanted, AnalysisJournal* journal = nullptr);

// "%04d/%02d/%02d %02d:%02d:%02d" in local time; "0000/00/00 00:00:00" when
// the file's status cannot be read.
std::string FileModifyTimeText(const QString& path);
