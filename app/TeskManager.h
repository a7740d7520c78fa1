#pragma once

#include "Bookmark.h"
#include "FontSettings.h"
#include "SearchCriteriaStruct.h"
#include "SettingsSaver.h"
#include "SettingsStore.h"

#include <QFileSystemWatcher>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

class KrokManager;
class LumoManager;
class SubThreadGetDetail;
class SubThreadGetList;

// The hub of the program: holds the user's state, owns the analysis registry
// and the two workers, runs root folder -> file list -> registration ->
// analysis in ranges, drives preview playback through the registry and
// announces every change through its signals. Lives on the GUI thread.
class TeskManager final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TeskManager)

public:
    enum ColorTheme
    {
        System = 0,
        Light = 1,
        Dark = 2,
    };
    Q_ENUM(ColorTheme)

    explicit TeskManager(QObject* parent = nullptr);
    ~TeskManager() override;

    // Loads the settings store, reports on stderr what it could not take as
    // stored, announces every stored value and starts the first acquisition.
    // Called once by the main window after wiring. From then on every change
    // is written about a second after it settles.
    void ApplyStoredSettings();
    // Saves every setting with the given window geometry, then stops the
    // playlist timer and finalises the registry.
    void SaveSettings(int left, int top, int width, int height);
    // Writes the settings as they are now and returns once they are on disk:
    // for a termination signal or the end of the desktop session.
    void SaveSettingsNow();
    // The window's rectangle as it is now, saved with the rest.
    void SetWindowGeometry(int left, int top, int width, int height);
    // What would be written to the file now.
    StoredSettings CurrentSettings() const;

    QString GetVersion() const { return QStringLiteral("1.28.00"); }
    QString GetRootPath() const { return s.rootPath; }
    bool IsRecursive() const { return s.recursiveFlag; }
    int GetRowHeight() const { return s.rowHeight; }
    bool IsLoudnessEnabled() const { return s.loudnessFlag; }
    bool IsLoudnessVoltMode() const { return s.loudnessVoltMode; }
    bool IsMultiPlotEnabled() const { return s.multiPlotFlag; }
    bool IsShowHiddens() const { return s.showHiddenFlag; }
    bool IsAutoPlayback() const { return s.autoPlaybackFlag; }
    bool IsPlaylist() const { return s.playlistFlag; }
    bool IsAnalysisLibraryEnabled() const { return s.analysisLibraryFlag; }
    int GetColumnVisibleState() const { return s.columnState; }
    QStringList GetRecentFolders() const { return s.recentDirs; }
    BookmarkList GetBookmarks() const { return s.bookmarks; }
    QStringList GetLegacyBookmarks() const { return s.legacyBookmarkDirs; }
    QString GetExternalToolPath() const { return s.externalExecutePath; }
    QString GetExternalToolArgs() const { return s.externalExecuteArgs; }
    int GetSeekTimeMs() const { return s.seekTimeMs; }
    QString GetUcsCatIdListPath() const { return s.ucsCatIdListPath; }
    QString GetGacAddress() const { return s.gacAddress; }
    int GetGacPort() const { return s.gacPortNumber; }
    ColorTheme GetColorTheme() const { return static_cast<ColorTheme>(s.colorTheme); }
    QString GetLastPlayingPath() const { return lastPlayingPath; }
    SearchCriteriaStruct GetSearchCriteria() const { return searchCriteria; }
    int GetTotalFileCount() const { return totalFileCount; }
    bool IsListCancelPending() const { return listCancelPending; }
    bool IsDetailCancelPending() const { return detailCancelPending; }
    // Whether the current root is being announced or listed, or a restart is pending.
    bool IsListingRoot() const;
    QStringList GetPendingUpdateFiles() const { return pendingUpdateFiles; }
    KrokManager* GetKrokManager() const { return krokManager; }
    FontSettings* GetFontSettings() { return &fontSettings; }
    const QTimer* GetPlaylistTimer() const { return &timerPlaylist; }
    LumoManager* GetPreviewPlayer() const { return lumo; }

    bool IsMatchLoudness() const { return s.matchLoudnessFlag; }
    double GetMatchLoudnessTarget() const { return s.matchLoudnessTarget; }
    double GetMatchLoudnessMaxBoost() const { return s.matchLoudnessMaxBoost; }
    // Kept within the bounds the settings store accepts.
    void SetMatchLoudnessLimits(double targetLufs, double maxBoostDb);
    // The chosen output device ("" for the system default) and those SDL reports now.
    QString GetOutputDevice() const { return s.outputDevice; }
    QStringList GetOutputDevices() const;
    // Remembers the choice and moves the output there; a device that does not
    // open leaves the system default playing, with a status message.
    void SetOutputDevice(const QString& name);
    bool IsDetailViewVisible() const { return s.detailViewVisible; }
    int GetDetailViewHeight() const { return s.detailViewHeight; }
    bool IsDetailViewChannels() const { return s.detailViewChannels; }
    void SetDetailViewHeight(int height);
    void SetDetailViewChannels(bool perChannel) { s.detailViewChannels = perChannel; }
    QByteArray GetTableHeaderState() const { return s.tableHeaderState; }
    // The audio file to select once the current list is in; empty for none.
    QString GetPendingSelection() const { return pendingSelection; }

    void SetRowHeight(int height);
    void SetColorTheme(ColorTheme theme);
    void SetGacAddress(const QString& address) { s.gacAddress = address; }
    // A port outside 1 to 65535 is refused.
    void SetGacPort(int port);
    void SetExternalTool(const QString& path, const QString& args);
    // Announces a changed path through SigUcsCatIdListChanged.
    void SetUcsCatIdListPath(const QString& path);
    // Kept for the next save; the table hands its header over before saving.
    void SetTableHeaderState(const QByteArray& state) { s.tableHeaderState = state; }
    void SetSeekTimeMs(int ms);
    // Moves the playing file one seek step forward or backward.
    void SeekPlayback(bool backward);

    // Bookmark operations on the current root.
    void AddBookmark(const QString& name);
    void RemoveBookmark();
    void SetBookmarks(const BookmarkList& list);
    bool IsRootBookmarked() const;

signals:
    void SigRootPathChanged(QString path);
    void SigRecursiveChanged(bool flag);
    void SigRowHeightChanged(int height);
    void SigLoudnessChanged(bool flag);
    void SigLoudnessVoltModeChanged(bool flag);
    void SigMultiPlotChanged(bool flag);
    void SigShowHiddensFlagChanged(bool flag);
    void SigAutoPlaybackFlagChanged(bool flag);
    void SigPlaylistFlagChanged(bool flag);
    void SigAnalysisLibraryChanged(bool flag);
    void SigFilePathListAcquired(QList<QString> pathList);
    void SigAnalyzedInfoAcquired(int i_from, int i_to);
    void SigEndGetDetailInfo();
    void SigSetWaitCursor();
    void SigRestoreCursor();
    void SigSetStatusMessage(QString msg);
    void SigShowDialog(QString title, QString msg);
    void SigSetMainWindowGeometry(int left, int top, int wid, int hgt);
    void SigSearchExecute(SearchCriteriaStruct criteria);
    void SigSelectNextItem();
    void SigColumnVisibleLoaded(int state);
    void SigCurrentDirBookmarkChanged(bool flag);
    void SigResetPlaybackPosition(QString filePath);
    void SigSetPlaybackPosition(QString filePath, double positionRatio);
    void SigChangeColorTheme(TeskManager::ColorTheme theme);
    void SigChangeFont();
    void SigMatchLoudnessChanged(bool flag);
    // The gain the file just started plays with, and why (LoudnessMatch::Basis).
    void SigPreviewGainChanged(double gainDb, int basis);
    void SigDetailViewVisibleChanged(bool visible);
    void SigUcsCatIdListChanged(QString path);
    // The stored header of the file table, announced before the first list.
    void SigTableHeaderStateLoaded(QByteArray state);
    // A file was named as the root: select it once its folder's list is in.
    void SigFileSelectionRequested(QString filePath);
    // Work on the current list: total 0 while the folder is being listed
    // (how many files there are is not known yet), then `done` of `total`
    // files analysed.
    void SigProgressChanged(int done, int total);
    // The work ended, was cancelled for good, or there is none.
    void SigProgressEnded();

public slots:
    void SlotChangeRootPathCalled(QString path);
    void SlotChangeRecursiveCalled(bool flag);
    void SlotUpdateCalled();
    void SlotChangeLoudnessCalled(bool flag);
    void SlotChangeLoudnessVoltModeCalled(bool flag);
    void SlotChangeMultiPlotCalled(bool flag);
    void SlotChangeShowHiddensCalled(bool flag);
    void SlotChangeAutoPlaybackFlagCalled(bool flag);
    void SlotChangePlaylistFlagCalled(bool flag);
    void SlotChangeAnalysisLibraryCalled(bool flag);
    // Removes every stored analysis result (the caller has asked the user).
    void SlotClearAnalysisLibraryCalled();
    void SlotAnalysisLibraryCleared(bool cleared);
    // Shown at once when nothing is being acquired; otherwise after the
    // pass's last status line, which would hide it at once.
    void SlotAnalysisLibraryProblem(QString message);
    void SlotStartPlaybackCalled(QString path);
    void SlotStartPlaybackWithSeekCalled(QString path, int seekMs);
    void SlotStopPlaybackCalled();
    void SlotVolumeChangeCalled(float volume);
    void SlotSearchCriteriaApplied(SearchCriteriaStruct criteriaStruct, bool needRefresh);
    void SlotSelectedFileUpdateCalled(QStringList filePaths);
    void SlotOpenByExternalCalled(QString filePath);
    void MemorizeColumnVisibleState(int state);
    void SlotSearchCriteriaRequired(SearchCriteriaStruct* criteriaStruct);
    void SlotAutoPlaybackFlagRequired(bool* flag);
    void SlotPlayListFlag(bool* flag);
    void SlotRootPathRequired(QString* path);
    void SlotFileListAcquired(QList<QString> fileList);
    void SlotAnalyzedInfoAcquired(int i_from, int i_to);
    void SlotEndGetDetailInfo();
    void SlotThreadGetListFinished();
    void SlotThreadGetDetailFinished();
    void SlotTimerPlaylistTick();
    void SlotTimerUpdateStatusTick();
    void SlotErrorReceived(QString message);
    void SlotChangeMatchLoudnessCalled(bool flag);
    void SlotChangeDetailViewVisibleCalled(bool visible);
    // Plays the file from `startMs` whatever the autoplay flag (a click in the detail view).
    void SlotPlayFromCalled(QString path, int startMs);
    // Plays frames [startFrame, endFrame) of the file once (a region in the detail view).
    void SlotPlayRegionCalled(QString path, qint64 startFrame, qint64 endFrame);
    void SlotTimerSaveTick();
    void SlotRootFolderChanged(const QString& path);

private:
    void RestartAcquisition();
    void StartListWorker();
    void StartDetailWorkerForUpdate();
    void StartPlaylistTimerIfWanted();
    // Sets the loudness-match gain for the file about to start and announces it.
    void PreparePreview(const QString& path);
    // Each status tick: reports a device move that failed; twice a second, looks
    // for a device that went away.
    void CheckOutputDevice();
    // Leaves the root as it is, empties the table and says so; no worker is left running.
    void ReportMissingRoot();
    void WatchRoot();
    void ApplyAnalysisLibrarySetting();

    // The persisted state, with the built-in defaults until the store is read.
    StoredSettings s;
    QString pendingSelection;
    // Files in the analysis under way, for the progress.
    int progressTotal = 0;
    QString lastPlayingPath;
    QTimer timerPlaylist;
    QTimer timerStatus;
    // Compares the settings with what was last written; a change is written
    // once it has stayed the same for one tick.
    QTimer timerSave;
    StoredSettings lastSavedSettings;
    StoredSettings lastSeenSettings;
    SettingsSaver saver;
    // Tells when the root folder itself goes away.
    QFileSystemWatcher rootWatcher;
    bool rootMissing = false;
    KrokManager* krokManager = nullptr;
    LumoManager* lumo = nullptr; // owned by the registry
    int deviceCheckTicks = 0;
    FontSettings fontSettings;
    SearchCriteriaStruct searchCriteria;
    SubThreadGetDetail* threadGetDetail = nullptr;
    SubThreadGetList* threadGetList = nullptr;
    bool listCancelPending = false;
    bool detailCancelPending = false;
    // Set while SigRootPathChanged is out, before any worker is started.
    bool announcingRoot = false;
    QStringList pendingUpdateFiles;
    int totalFileCount = 0;
    QString pendingLibraryProblem;
    // The last folder listed, until its pass ends.
    struct ListedFolder
    {
        QString root;
        bool recursive = false;
        QStringList files;
    } listedFolder;
};

Q_DECLARE_METATYPE(TeskManager::ColorTheme)
