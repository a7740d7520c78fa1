#pragma once

#include "Bookmark.h"
#include "FontSettings.h"
#include "SearchCriteriaStruct.h"
#include "SettingsStore.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

class KrokManager;
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

    // Loads the settings store, announces every stored value and starts the
    // first acquisition. Called once by the main window after wiring.
    void ApplyStoredSettings();
    // Saves every setting with the given window geometry, then stops the
    // playlist timer and finalises the registry.
    void SaveSettings(int left, int top, int width, int height);

    QString GetVersion() const { return QStringLiteral("1.28.00"); }
    QString GetRootPath() const { return s.rootPath; }
    bool IsRecursive() const { return recursiveFlag; }
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

    void SetRowHeight(int height);
    void SetColorTheme(ColorTheme theme);
    void SetGacAddress(const QString& address) { s.gacAddress = address; }
    void SetGacPort(int port) { s.gacPortNumber = port; }
    void SetExternalTool(const QString& path, const QString& args);
    void SetSeekTimeMs(int ms) { s.seekTimeMs = ms; }
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

private:
    void RestartAcquisition();
    void StartListWorker();
    void StartDetailWorkerForUpdate();
    void StartPlaylistTimerIfWanted();
    void ApplyAnalysisLibrarySetting();

    // The persisted state, with the built-in defaults until the store is read.
    StoredSettings s;
    // "Display all files from subfolders as well" is not persisted: every session starts flat.
    bool recursiveFlag = false;
    QString lastPlayingPath;
    QTimer timerPlaylist;
    QTimer timerStatus;
    KrokManager* krokManager = nullptr;
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
