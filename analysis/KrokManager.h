#pragma once

#include "AnalysisLibrary.h"
#include "AudioFileInfo.h"
#include "FileStamp.h"
#include "LibraryRoots.h"

#include <QMutex>
#include <QObject>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <future>
#include <memory>
#include <unordered_map>
#include <vector>

class AnalysisLibraryThread;
class AnalysisJournal;
class PreviewPlayer;

// The "Analysis Library": one analysis record per audio file, keyed by full
// path, filled on request by the per-file analysis, plus the preview player
// that plays those files. The analysis workers fill it; records are handed out
// shared and never change once stored (a new analysis stores a new one), so
// the table reads them in place. A record is valid while its file's size and
// modification time are unchanged. With a persistent library attached,
// records are looked up there before a file is analysed, and new ones are
// written back; any number of analysis threads may call at once.
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
    // True when the record is current and holds every part now wanted.
    bool IsAnalyzed(const QString& path);
    using Record = std::shared_ptr<const AudioFileInfo>;
    // Runs the analysis without holding the lock, then stores the record and
    // returns it. A current record that lacks a wanted part gets only that
    // part measured; one that holds every part is returned as it is. Null when
    // the analysis was stopped (AnalysisStop.h): nothing is stored then.
    Record AnalyzeFile(const QString& path);
    // The next analysis of these files starts afresh and replaces their rows.
    void InvalidateFiles(const QStringList& paths);
    // Checks the records of `paths` against their files and takes what the
    // persistent library holds for those not current: one lookup for all.
    // Blocks on the library; for analysis threads only.
    void RecallFromLibrary(const QStringList& paths);
    // The same in two steps, so that an analysis thread can look at the next
    // files while the library reads rows for these: BeginRecall checks the
    // files and asks the library, EndRecall takes the answer in.
    struct Recall
    {
        QStringList keys;
        std::vector<FileStamp> stamps;
        std::future<LibraryRows> rows;
    };
    std::unique_ptr<Recall> BeginRecall(const QStringList& paths);
    void EndRecall(Recall& recall);

    // Keeps analysis results in `library` from now on (opened on a thread of
    // its own), keyed under `roots`; null turns the persistent library off.
    // Never waits for it. Its problems come through SigLibraryProblem.
    void SetLibrary(std::unique_ptr<AnalysisLibrary> library, LibraryRoots roots = {});
    bool HasLibrary();
    // Removes the library's rows of files in `folder` that no longer exist;
    // `listed` are the files just listed there. Queued.
    void ForgetMissingFiles(const QString& folder, bool recursive, const QStringList& listed);
    // Removes every row of the library; SigLibraryCleared follows. Queued.
    void ClearLibrary();
    // Returns once every record analysed so far is written to the library
    // (see AnalysisLibraryThread::Flush for `catchUp`). Blocks; not for the
    // GUI thread.
    void FlushLibrary(bool catchUp = false);
    // The stored record, shared; null when there is none.
    Record FindRecord(const QString& path);
    // For each path, its record when it is current and holds every part now
    // wanted (what IsAnalyzed tells), else null. One lock for all.
    std::vector<Record> CurrentRecords(const QStringList& paths);
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
    // Emitted on the library's thread: a problem of the persistent library,
    // each kind once, and the end of a clear.
    void SigLibraryProblem(QString message);
    void SigLibraryCleared(bool cleared);

private:
    struct Entry
    {
        Record info;
        FileStamp stamp;
        // Set when the file changed or a refresh was asked: analysed afresh next.
        bool stale = false;
    };

    std::int32_t wantedParts() const;
    bool isCurrent(const Entry& entry) const;
    std::shared_ptr<AnalysisLibraryThread> currentLibrary();

    mutable QMutex mutex;
    bool initialized = false;
    QString playingPath;
    bool playingRange = false;
    PreviewPlayer* player = nullptr;
    bool loudnessEnabled = false;
    bool multiPlotEnabled = false;
    // Keyed by the path the list gave, whose characters the table's rows share.
    std::unordered_map<QString, Entry> records;
    std::shared_ptr<AnalysisLibraryThread> library;
    // Libraries turned off while a lookup may still use them; joined at Finalize.
    std::vector<std::shared_ptr<AnalysisLibraryThread>> retiredLibraries;
    QString journalPath;
    std::unique_ptr<AnalysisJournal> journal;
};

// The per-file analysis behind AnalyzeFile: file size, modify time, then the
// reader for the lower-cased suffix. A file that cannot be read gets `isValid`
// 0 and the reason in `errorText`. With a journal, the file is entered before
// it is read (and one that crashed an analysis before is not read again until
// it changes). A file that changes while it is read is read again.
// `analysedStamp` receives the size and time of what was read (an invalid
// stamp when the file could not be read as a regular file).
void AnalyzeAudioFile(const QString& path, AudioFileInfo& info, bool multiPlotWanted,
                      bool loudnessWanted, AnalysisJournal* journal = nullptr,
                      FileStamp* analysedStamp = nullptr);

// Measures the optional `parts` (AnalysisPart bits) of a file whose record
// already holds the rest, and adds them to `info`.
void MeasureAudioFileParts(const QString& path, AudioFileInfo& info, std::int32_t parts,
                           AnalysisJournal* journal = nullptr);

// The file's modification time; ModifyTime::Unconverted() ("0000/00/00
// 00:00:00") when its status cannot be read.
ModifyTime FileModifyTime(const QString& path);
