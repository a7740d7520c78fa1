#include "TeskManager.h"

#include "AudioFileInfo.h"
#include "ExternalToolLauncher.h"
#include "FallbackAnalysisLibrary.h"
#include "KrokManager.h"
#include "LoudnessMatch.h"
#include "LumoManager.h"
#include "RootPathInput.h"
#include "SqliteAnalysisLibrary.h"
#include "SubThreadGetDetail.h"
#include "SubThreadGetList.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kPlaylistTickMs = 200;
constexpr int kStatusTickMs = 50;
// The output device is looked at twice a second.
constexpr int kDeviceCheckTicks = 10;
constexpr int kSaveTickMs = 1000;

} // namespace

TeskManager::TeskManager(QObject* parent)
    : QObject(parent)
{
    qRegisterMetaType<QList<QString>>("QList<QString>");
    qRegisterMetaType<SearchCriteriaStruct>("SearchCriteriaStruct");
    qRegisterMetaType<TeskManager::ColorTheme>("TeskManager::ColorTheme");
    qRegisterMetaType<AnalyzedRows>("AnalyzedRows");

    // The registry owns the preview player. Without a sound card the engine runs
    // on SDL's dummy output, so positions and play ends still advance in time.
    lumo = new LumoManager;
    krokManager = new KrokManager(lumo);
    // Connected before the engine starts: a failed output start is reported
    // from Initialize and must reach the status line (and the warning box) once
    // the event loop runs.
    connect(krokManager, &KrokManager::SigErrorReceived, this, &TeskManager::SlotErrorReceived,
            Qt::QueuedConnection);
    connect(krokManager, &KrokManager::SigLibraryCleared, this,
            &TeskManager::SlotAnalysisLibraryCleared, Qt::QueuedConnection);
    connect(krokManager, &KrokManager::SigLibraryProblem, this,
            &TeskManager::SlotAnalysisLibraryProblem, Qt::QueuedConnection);
    krokManager->Initialize();
    threadGetDetail = new SubThreadGetDetail(krokManager);
    threadGetList = new SubThreadGetList();

    timerPlaylist.setInterval(kPlaylistTickMs);
    timerPlaylist.setSingleShot(true);
    connect(&timerPlaylist, &QTimer::timeout, this, &TeskManager::SlotTimerPlaylistTick);
    timerStatus.setInterval(kStatusTickMs);
    connect(&timerStatus, &QTimer::timeout, this, &TeskManager::SlotTimerUpdateStatusTick);
    timerStatus.start();
    timerSave.setInterval(kSaveTickMs);
    connect(&timerSave, &QTimer::timeout, this, &TeskManager::SlotTimerSaveTick);
    connect(&rootWatcher, &QFileSystemWatcher::directoryChanged, this,
            &TeskManager::SlotRootFolderChanged);

    // Batches do not hold the workers up; the end waits until the GUI thread
    // has taken it in, after every batch before it.
    connect(threadGetDetail, &SubThreadGetDetail::SigAnalyzedRowsAcquired, this,
            &TeskManager::SlotAnalyzedRowsAcquired, Qt::QueuedConnection);
    connect(threadGetDetail, &SubThreadGetDetail::SigEndGetDetailInfo, this,
            &TeskManager::SlotEndGetDetailInfo, Qt::BlockingQueuedConnection);
    connect(threadGetList, &SubThreadGetList::SigFileListCreated, this,
            &TeskManager::SlotFileListAcquired, Qt::BlockingQueuedConnection);
    connect(threadGetList, &QThread::finished, this, &TeskManager::SlotThreadGetListFinished,
            Qt::QueuedConnection);
    connect(threadGetDetail, &QThread::finished, this, &TeskManager::SlotThreadGetDetailFinished,
            Qt::QueuedConnection);
}

TeskManager::~TeskManager()
{
    timerPlaylist.stop();
    timerStatus.stop();
    timerSave.stop();
    // A worker may sit in a blocking-queued emit that this thread will never
    // deliver now: cut the connections, ask both to stop, and drop the calls
    // already posted, which releases the waiting worker.
    threadGetList->disconnect(this);
    threadGetDetail->disconnect(this);
    threadGetList->cancel();
    threadGetDetail->cancel();
    while (threadGetList->isRunning() || threadGetDetail->isRunning()) {
        QCoreApplication::removePostedEvents(this, QEvent::MetaCall);
        threadGetList->wait(5);
        threadGetDetail->wait(5);
    }
    delete threadGetList;
    delete threadGetDetail;
    delete krokManager;
}

void TeskManager::ApplyStoredSettings()
{
    // Fonts default to the application's start-up font.
    s.fontTreeFamily = s.fontTableFamily = fontSettings.GetDefaultFamily();
    s.fontTreeSize = s.fontTableSize = fontSettings.GetDefaultPointSize();
    const QStringList problems = SettingsStore::Load(s);
    for (const QString& problem : problems)
        std::fprintf(stderr, "Tesk: settings: %s\n", qUtf8Printable(problem));
    // Older sessions stored whatever spelling was typed ("x/", "./x").
    s.rootPath = NormalizedRootPath(s.rootPath);
    for (QString& folder : s.recentDirs)
        folder = NormalizedRootPath(folder);
    s.recentDirs.removeDuplicates();

    if (s.HasValidGeometry())
        emit SigSetMainWindowGeometry(s.left, s.top, s.width, s.height);
    emit SigChangeColorTheme(GetColorTheme());
    fontSettings.SetFont(FontSettings::Tree, s.fontTreeFamily, s.fontTreeSize);
    fontSettings.SetFont(FontSettings::Table, s.fontTableFamily, s.fontTableSize);
    fontSettings.SetFitToCell(s.fontTableIsFit);
    emit SigChangeFont();

    krokManager->SetLoudnessEnabled(s.loudnessFlag);
    krokManager->SetMultiPlotEnabled(s.multiPlotFlag);
    ApplyAnalysisLibrarySetting();
    emit SigAnalysisLibraryChanged(s.analysisLibraryFlag);
    emit SigRowHeightChanged(s.rowHeight);
    emit SigAutoPlaybackFlagChanged(s.autoPlaybackFlag);
    emit SigPlaylistFlagChanged(s.playlistFlag);
    emit SigLoudnessChanged(s.loudnessFlag);
    emit SigLoudnessVoltModeChanged(s.loudnessVoltMode);
    emit SigMultiPlotChanged(s.multiPlotFlag);
    emit SigShowHiddensFlagChanged(s.showHiddenFlag);
    emit SigMatchLoudnessChanged(s.matchLoudnessFlag);
    emit SigDetailViewVisibleChanged(s.detailViewVisible);
    if (!s.outputDevice.isEmpty())
        SetOutputDevice(s.outputDevice);
    if (!s.ucsCatIdListPath.isEmpty())
        emit SigUcsCatIdListChanged(s.ucsCatIdListPath);
    emit SigRecursiveChanged(s.recursiveFlag);
    emit SigTableHeaderStateLoaded(s.tableHeaderState);
    RestartAcquisition();
    emit SigColumnVisibleLoaded(s.columnState);
    lastSavedSettings = lastSeenSettings = CurrentSettings();
    timerSave.start();
}

StoredSettings TeskManager::CurrentSettings() const
{
    StoredSettings now = s;
    now.fontTreeFamily = fontSettings.GetFamily(FontSettings::Tree);
    now.fontTreeSize = fontSettings.GetPointSize(FontSettings::Tree);
    now.fontTableIsFit = fontSettings.IsFitToCell();
    now.fontTableFamily = fontSettings.GetFamily(FontSettings::Table);
    now.fontTableSize = fontSettings.GetPointSize(FontSettings::Table);
    return now;
}

void TeskManager::SetWindowGeometry(int left, int top, int width, int height)
{
    s.left = left;
    s.top = top;
    s.width = width;
    s.height = height;
}

void TeskManager::SlotTimerSaveTick()
{
    const StoredSettings now = CurrentSettings();
    // Written once a change has settled, so that a window being dragged or a
    // key held down does not write the file on every tick.
    if (now != lastSavedSettings && now == lastSeenSettings) {
        saver.Post(now);
        lastSavedSettings = now;
    }
    lastSeenSettings = now;
}

void TeskManager::SaveSettingsNow()
{
    lastSavedSettings = lastSeenSettings = CurrentSettings();
    saver.Post(lastSavedSettings);
    saver.Flush();
}

void TeskManager::SaveSettings(int left, int top, int width, int height)
{
    emit SigSetStatusMessage(tr("Saving Settings..."));
    timerSave.stop();
    SetWindowGeometry(left, top, width, height);
    SaveSettingsNow();
    timerPlaylist.stop();
    krokManager->Finalize();
}

void TeskManager::SetGacPort(int port)
{
    if (port >= kMinPortNumber && port <= kMaxPortNumber)
        s.gacPortNumber = port;
}

void TeskManager::SetRowHeight(int height)
{
    s.rowHeight = qBound(kMinRowHeight, height, kMaxRowHeight);
    emit SigRowHeightChanged(s.rowHeight);
}

void TeskManager::SetColorTheme(ColorTheme theme)
{
    if (theme == GetColorTheme())
        return;
    s.colorTheme = theme;
    emit SigChangeColorTheme(theme);
}

void TeskManager::SetSeekTimeMs(int ms)
{
    s.seekTimeMs = qBound(kMinSeekTimeMs, ms, kMaxSeekTimeMs);
}

void TeskManager::SetExternalTool(const QString& path, const QString& args)
{
    s.externalExecutePath = path;
    s.externalExecuteArgs = args;
}

void TeskManager::SetUcsCatIdListPath(const QString& path)
{
    if (path == s.ucsCatIdListPath)
        return;
    s.ucsCatIdListPath = path;
    emit SigUcsCatIdListChanged(path);
}

void TeskManager::StartPlaylistTimerIfWanted()
{
    if (s.playlistFlag)
        timerPlaylist.start();
}

void TeskManager::SetMatchLoudnessLimits(double targetLufs, double maxBoostDb)
{
    s.matchLoudnessTarget = std::clamp(targetLufs, kMatchTargetMin, kMatchTargetMax);
    s.matchLoudnessMaxBoost = std::clamp(maxBoostDb, 0.0, kMatchBoostMax);
}

QStringList TeskManager::GetOutputDevices() const
{
    return lumo->OutputDevices();
}

void TeskManager::SetOutputDevice(const QString& name)
{
    s.outputDevice = name;
    if (lumo->OutputDevice() == name)
        return;
    // The move runs on the engine's thread; the status tick reports how it went.
    lumo->SetOutputDevice(name);
}

void TeskManager::SetDetailViewHeight(int height)
{
    s.detailViewHeight = std::clamp(height, kMinDetailViewHeight, kMaxDetailViewHeight);
}

void TeskManager::CheckOutputDevice()
{
    QString requested;
    bool opened = true;
    if (lumo->TakeOutputChange(&requested, &opened) && !opened && !requested.isEmpty())
        emit SigSetStatusMessage(
            tr("The output device \"%1\" is not available. Playing through the system default.")
                .arg(requested));
    if (++deviceCheckTicks < kDeviceCheckTicks)
        return;
    deviceCheckTicks = 0;
    QString lost;
    if (!lumo->CheckOutputDevice(&lost))
        return;
    emit SigSetStatusMessage(
        tr("The output device \"%1\" stopped. Playing through the system default.")
            .arg(lost.isEmpty() ? tr("System default") : lost));
}

void TeskManager::PreparePreview(const QString& path)
{
    AudioFileInfo info;
    if (!krokManager->FindFileInfo(path, info))
        info.isHeaderRead = 0;
    const LoudnessMatch m = ComputeLoudnessMatch(
        info, {s.matchLoudnessFlag, s.matchLoudnessTarget, s.matchLoudnessMaxBoost});
    lumo->SetPreviewGain(static_cast<float>(DecibelsToGain(m.gainDb)));
    emit SigPreviewGainChanged(m.gainDb, static_cast<int>(m.basis));
}

void TeskManager::SlotChangeMatchLoudnessCalled(bool flag)
{
    if (flag == s.matchLoudnessFlag)
        return;
    s.matchLoudnessFlag = flag;
    emit SigMatchLoudnessChanged(flag);
    // Matching needs the loudness of each file.
    if (flag && !s.loudnessFlag)
        SlotChangeLoudnessCalled(true);
}

void TeskManager::SlotChangeDetailViewVisibleCalled(bool visible)
{
    if (visible == s.detailViewVisible)
        return;
    s.detailViewVisible = visible;
    emit SigDetailViewVisibleChanged(visible);
}

void TeskManager::SlotPlayFromCalled(QString path, int startMs)
{
    timerPlaylist.stop();
    if (path.isEmpty())
        return;
    PreparePreview(path);
    if (startMs <= 0)
        krokManager->PlayFile(path);
    else
        krokManager->PlayFileWithSeek(path, static_cast<quint32>(startMs));
    StartPlaylistTimerIfWanted();
}

void TeskManager::SlotPlayRegionCalled(QString path, qint64 startFrame, qint64 endFrame)
{
    timerPlaylist.stop();
    if (path.isEmpty())
        return;
    PreparePreview(path);
    krokManager->PlayFileRange(path, startFrame, endFrame);
    StartPlaylistTimerIfWanted();
}

void TeskManager::SeekPlayback(bool backward)
{
    const QString path = krokManager->GetPlayingPath();
    if (path.isEmpty() || !krokManager->IsPlaying())
        return;
    const AudioFileInfo info = krokManager->GetFileInfo(path);
    if (info.isHeaderRead == 0 || info.samplingRate <= 0)
        return;
    const qint64 posMs = static_cast<qint64>(
        static_cast<double>(krokManager->GetPlaybackPosition()) / info.samplingRate * 1000.0);
    if (backward) {
        timerPlaylist.stop();
        const qint64 t = posMs - s.seekTimeMs;
        PreparePreview(path);
        if (t < 0)
            krokManager->PlayFile(path);
        else
            krokManager->PlayFileWithSeek(path, static_cast<quint32>(t));
    } else {
        const qint64 t = posMs + s.seekTimeMs;
        const double lengthMs = static_cast<double>(info.samples) * 1000.0 / info.samplingRate;
        if (lengthMs < static_cast<double>(t - 1))
            return;
        timerPlaylist.stop();
        PreparePreview(path);
        krokManager->PlayFileWithSeek(path, static_cast<quint32>(t));
    }
    StartPlaylistTimerIfWanted();
}

bool TeskManager::IsRootBookmarked() const
{
    for (const Bookmark& b : s.bookmarks) {
        if (NormalizedRootPath(b.path) == s.rootPath)
            return true;
    }
    return false;
}

void TeskManager::AddBookmark(const QString& name)
{
    if (s.rootPath.isEmpty())
        return;
    bool renamed = false;
    for (Bookmark& b : s.bookmarks) {
        if (NormalizedRootPath(b.path) == s.rootPath) {
            b.name = name;
            renamed = true;
            break;
        }
    }
    if (!renamed)
        s.bookmarks.append({s.rootPath, name});
    emit SigCurrentDirBookmarkChanged(true);
}

void TeskManager::RemoveBookmark()
{
    if (s.rootPath.isEmpty())
        return;
    for (int i = s.bookmarks.size() - 1; i >= 0; --i) {
        if (NormalizedRootPath(s.bookmarks.at(i).path) == s.rootPath)
            s.bookmarks.removeAt(i);
    }
    emit SigCurrentDirBookmarkChanged(false);
}

void TeskManager::SetBookmarks(const BookmarkList& list)
{
    if (list != s.bookmarks)
        s.bookmarks = list;
    emit SigCurrentDirBookmarkChanged(IsRootBookmarked());
}

void TeskManager::SlotChangeRootPathCalled(QString path)
{
    // One spelling per folder; an audio file stands for its folder, with the
    // file selected once listed. A missing folder is still taken (and lists
    // nothing), as a stored root on an absent disk is.
    const RootRequest request = ResolveRootPath(path);
    if (request.folder.isEmpty())
        return;
    // The tree echoes every root change with the bare folder; that must not
    // drop the file waiting to be selected there.
    if (!request.file.isEmpty())
        pendingSelection = request.file;
    else if (request.folder != s.rootPath)
        pendingSelection.clear();
    path = request.folder;
    // The folder tree follows every root change by selecting that folder, and
    // its selection asks for that root again, while the announcement is still
    // under way or the work has just begun. Restarting then would cancel the
    // listing that was started for this very folder, so the repeat is dropped:
    // the list on its way is the one asked for. Once the list is out and only
    // analysis runs, the same root is listed again, so that whoever asked
    // (the sort settings' Apply waits for it) gets a fresh list.
    if (IsListingRoot() && path == s.rootPath)
        return;
    timerPlaylist.stop();
    s.rootPath = path;
    SettingsStore::PushRecentFolder(s.recentDirs, path);
    RestartAcquisition();
}

void TeskManager::SlotChangeRecursiveCalled(bool flag)
{
    // The menu entry echoes the stored flag back when it is announced at
    // start-up; that is no reason to list the folder twice.
    if (flag == s.recursiveFlag)
        return;
    timerPlaylist.stop();
    s.recursiveFlag = flag;
    emit SigRecursiveChanged(flag);
    RestartAcquisition();
}

void TeskManager::SlotUpdateCalled()
{
    timerPlaylist.stop();
    if (!QFileInfo(s.rootPath).isDir())
        return;
    threadGetDetail->requestInvalidate();
    RestartAcquisition();
}

void TeskManager::SlotChangeLoudnessCalled(bool flag)
{
    // As for the subfolder flag: the menu's echo at start-up lists nothing again.
    if (flag == s.loudnessFlag)
        return;
    s.loudnessFlag = flag;
    krokManager->SetLoudnessEnabled(flag);
    emit SigLoudnessChanged(flag);
    // Records without loudness count as not analysed now: the next pass
    // measures loudness alone and keeps the rest.
    if (flag)
        RestartAcquisition();
}

void TeskManager::SlotChangeLoudnessVoltModeCalled(bool flag)
{
    s.loudnessVoltMode = flag;
    emit SigLoudnessVoltModeChanged(flag);
}

void TeskManager::SlotChangeMultiPlotCalled(bool flag)
{
    if (flag == s.multiPlotFlag)
        return;
    s.multiPlotFlag = flag;
    krokManager->SetMultiPlotEnabled(flag);
    emit SigMultiPlotChanged(flag);
    // As for loudness: only the per-channel plots missing are computed.
    RestartAcquisition();
}

void TeskManager::ApplyAnalysisLibrarySetting()
{
    if (!s.analysisLibraryFlag) {
        krokManager->SetLibrary(nullptr);
        return;
    }
    QStringList rootErrors;
    LibraryRoots roots = LibraryRoots::Parse(s.libraryRoots, &rootErrors);
    for (const QString& error : qAsConst(rootErrors))
        std::fprintf(stderr, "Tesk: settings: %s\n", qPrintable(error));
    // Opened on the library's own thread: a server that does not answer
    // holds up nothing here.
    const AnalysisLibrarySettings chosen = GetAnalysisLibrarySettings();
    if (chosen.onServer)
        krokManager->SetLibrary(FallbackAnalysisLibrary::ForServer(chosen.server),
                                std::move(roots));
    else
        krokManager->SetLibrary(
            std::make_unique<SqliteAnalysisLibrary>(SqliteAnalysisLibrary::DefaultPath()),
            std::move(roots));
}

AnalysisLibrarySettings TeskManager::GetAnalysisLibrarySettings() const
{
    AnalysisLibrarySettings settings;
    settings.onServer = s.libraryServerFlag;
    settings.server.host = s.libraryHost;
    settings.server.port = s.libraryPort;
    settings.server.database = s.libraryDatabase;
    settings.server.user = s.libraryUser;
    settings.roots = s.libraryRoots;
    return settings;
}

void TeskManager::SetAnalysisLibrarySettings(const AnalysisLibrarySettings& settings)
{
    if (settings == GetAnalysisLibrarySettings())
        return;
    s.libraryServerFlag = settings.onServer;
    s.libraryHost = settings.server.host;
    s.libraryPort = settings.server.port;
    s.libraryDatabase = settings.server.database;
    s.libraryUser = settings.server.user;
    s.libraryRoots = settings.roots;
    ApplyAnalysisLibrarySetting();
}

void TeskManager::SlotChangeAnalysisLibraryCalled(bool flag)
{
    if (flag == s.analysisLibraryFlag)
        return;
    s.analysisLibraryFlag = flag;
    ApplyAnalysisLibrarySetting();
    emit SigAnalysisLibraryChanged(flag);
}

void TeskManager::SlotClearAnalysisLibraryCalled()
{
    if (!krokManager->HasLibrary()) {
        emit SigSetStatusMessage(tr("The analysis library is turned off."));
        return;
    }
    krokManager->ClearLibrary();
}

void TeskManager::SlotAnalysisLibraryProblem(QString message)
{
    if (IsListingRoot() || threadGetDetail->isRunning()) {
        pendingLibraryProblem = message;
        return;
    }
    emit SigSetStatusMessage(message);
}

void TeskManager::SlotAnalysisLibraryCleared(bool cleared)
{
    emit SigSetStatusMessage(cleared ? tr("Cleared the analysis library.")
                                     : tr("Could not clear the analysis library."));
}

void TeskManager::SlotChangeShowHiddensCalled(bool flag)
{
    if (flag == s.showHiddenFlag)
        return;
    s.showHiddenFlag = flag;
    emit SigShowHiddensFlagChanged(flag);
    timerPlaylist.stop();
    RestartAcquisition();
}

void TeskManager::SlotChangeAutoPlaybackFlagCalled(bool flag)
{
    s.autoPlaybackFlag = flag;
    emit SigAutoPlaybackFlagChanged(flag);
}

void TeskManager::SlotChangePlaylistFlagCalled(bool flag)
{
    s.playlistFlag = flag;
    emit SigPlaylistFlagChanged(flag);
}

void TeskManager::SlotStartPlaybackCalled(QString path)
{
    timerPlaylist.stop();
    if (path.isEmpty())
        return;
    PreparePreview(path);
    krokManager->PlayFile(path);
    StartPlaylistTimerIfWanted();
}

void TeskManager::SlotStartPlaybackWithSeekCalled(QString path, int seekMs)
{
    if (!s.autoPlaybackFlag && !(krokManager->IsPlaying() && krokManager->GetPlayingPath() == path))
        return;
    timerPlaylist.stop();
    PreparePreview(path);
    krokManager->PlayFileWithSeek(path, static_cast<quint32>(qMax(seekMs, 0)));
    StartPlaylistTimerIfWanted();
}

void TeskManager::SlotStopPlaybackCalled()
{
    timerPlaylist.stop();
    krokManager->StopPlayback();
}

void TeskManager::SlotVolumeChangeCalled(float volume)
{
    krokManager->SetVolume(volume);
}

void TeskManager::SlotSearchCriteriaApplied(SearchCriteriaStruct criteriaStruct, bool needRefresh)
{
    searchCriteria = criteriaStruct;
    if (needRefresh)
        emit SigSearchExecute(searchCriteria);
}

void TeskManager::SlotOpenByExternalCalled(QString filePath)
{
    LaunchExternalTool(s.externalExecutePath, s.externalExecuteArgs, filePath);
}

void TeskManager::MemorizeColumnVisibleState(int state)
{
    s.columnState = state;
}

void TeskManager::SlotSearchCriteriaRequired(SearchCriteriaStruct* criteriaStruct)
{
    if (criteriaStruct)
        *criteriaStruct = searchCriteria;
}

void TeskManager::SlotAutoPlaybackFlagRequired(bool* flag)
{
    if (flag)
        *flag = s.autoPlaybackFlag;
}

void TeskManager::SlotPlayListFlag(bool* flag)
{
    if (flag)
        *flag = s.playlistFlag;
}

void TeskManager::SlotRootPathRequired(QString* path)
{
    if (path)
        *path = s.rootPath;
}

void TeskManager::StartListWorker()
{
    emit SigSetStatusMessage(tr("Retrieving file list"));
    emit SigProgressChanged(0, 0);
    threadGetList->start(s.rootPath, s.recursiveFlag, s.showHiddenFlag);
}

void TeskManager::StartDetailWorkerForUpdate()
{
    StartDetailWorker(pendingUpdateFiles);
}

void TeskManager::StartDetailWorker(const QStringList& files)
{
    progressTotal = files.size();
    analysedRows.assign(std::size_t(files.size()), false);
    analysedCount = 0;
    analysedFront = 0;
    emit SigProgressChanged(0, progressTotal);
    threadGetDetail->setWorkerCount(s.analysisThreads);
    threadGetDetail->start(files);
}

void TeskManager::SetAnalysisThreads(int threads)
{
    s.analysisThreads = qBound(0, threads, kMaxAnalysisThreads);
}

void TeskManager::SetWantedRows(int first, int last)
{
    threadGetDetail->setWantedRows(first, last);
}

bool TeskManager::IsListingRoot() const
{
    return announcingRoot || listCancelPending || detailCancelPending || threadGetList->isRunning();
}

void TeskManager::WatchRoot()
{
    const QStringList watched = rootWatcher.directories();
    if (!watched.isEmpty())
        rootWatcher.removePaths(watched);
    if (!rootMissing && !s.rootPath.isEmpty())
        rootWatcher.addPath(s.rootPath);
}

void TeskManager::SlotRootFolderChanged(const QString& path)
{
    // Also called for every change inside the folder; only its own end counts.
    if (QDir::cleanPath(path) == QDir::cleanPath(s.rootPath) && !QFileInfo(s.rootPath).isDir())
        RestartAcquisition();
}

void TeskManager::ReportMissingRoot()
{
    // The root stays what the user chose: a folder that is gone now (an
    // unplugged drive, a folder deleted elsewhere) may come back, and nothing
    // else is silently put in its place.
    rootMissing = true;
    listCancelPending = false;
    detailCancelPending = false;
    pendingUpdateFiles.clear();
    if (threadGetList->isRunning())
        threadGetList->cancel();
    if (threadGetDetail->isRunning())
        threadGetDetail->cancel();
    emit SigSetStatusMessage(tr("Folder not found: %1").arg(QDir::toNativeSeparators(s.rootPath)));
}

void TeskManager::RestartAcquisition()
{
    timerPlaylist.stop();
    announcingRoot = true;
    emit SigRootPathChanged(s.rootPath);
    emit SigCurrentDirBookmarkChanged(IsRootBookmarked());
    announcingRoot = false;

    rootMissing = !s.rootPath.isEmpty() && !QFileInfo(s.rootPath).isDir();
    WatchRoot();
    if (rootMissing)
        ReportMissingRoot();
    if (s.rootPath.isEmpty() || rootMissing) {
        emit SigProgressEnded();
        return;
    }
    // The finished handler starts the job that is due with the settings of that moment.
    if (listCancelPending || detailCancelPending)
        return;
    if (threadGetList->isRunning()) {
        listCancelPending = true;
        threadGetList->cancel();
        emit SigSetStatusMessage(tr("Cancel file list acquisition"));
    } else if (threadGetDetail->isRunning()) {
        detailCancelPending = true;
        threadGetDetail->cancel();
        emit SigSetStatusMessage(tr("Cancel to acquire analyzed data"));
    } else {
        StartListWorker();
    }
}

void TeskManager::SlotFileListAcquired(QList<QString> fileList)
{
    // A list walked while the root went away.
    if (rootMissing)
        return;
    totalFileCount = fileList.size();
    emit SigSetStatusMessage(
        tr("Completed file list acquisition. System is registering files to Analysis Library..."));
    emit SigSetWaitCursor();
    // Rows of files gone from this folder leave the persistent library once
    // the pass is over, so that the lookups of the pass come first.
    listedFolder = {s.rootPath, s.recursiveFlag, fileList};
    if (krokManager->RegisterFiles(fileList)) {
        emit SigFilePathListAcquired(fileList);
        if (!pendingSelection.isEmpty()) {
            emit SigFileSelectionRequested(pendingSelection);
            pendingSelection.clear();
        }
        emit SigSetStatusMessage(
            tr("Completed adding files to Analysis Library  Waiting for analyzed data..."));
        emit SigRestoreCursor();
        StartDetailWorker(fileList);
    } else {
        emit SigRestoreCursor();
        emit SigProgressEnded();
        emit SigSetStatusMessage(tr("File registration failed. Max number of files that can be "
                                    "registered has been exceeded."));
    }
}

void TeskManager::SlotAnalyzedRowsAcquired(AnalyzedRows rows, int run)
{
    threadGetDetail->rowsTaken();
    if (listCancelPending || detailCancelPending || rootMissing ||
        run != threadGetDetail->currentRun())
        return;
    emit SigAnalyzedRowsAcquired(rows);
    for (const AnalyzedRow& row : qAsConst(rows)) {
        if (row.row >= 0 && std::size_t(row.row) < analysedRows.size() &&
            !analysedRows[std::size_t(row.row)]) {
            analysedRows[std::size_t(row.row)] = true;
            ++analysedCount;
        }
    }
    emit SigProgressChanged(analysedCount, progressTotal);
    // The status line follows the front of the list, as ranges in order.
    const int from = analysedFront;
    while (std::size_t(analysedFront) < analysedRows.size() &&
           analysedRows[std::size_t(analysedFront)])
        ++analysedFront;
    if (analysedFront == from)
        return;
    emit SigAnalyzedInfoAcquired(from, analysedFront - 1);
    emit SigSetStatusMessage(tr("Completed data analysis from %1 to %2 of %3")
                                 .arg(from + 1)
                                 .arg(analysedFront)
                                 .arg(totalFileCount));
}

void TeskManager::SlotEndGetDetailInfo()
{
    if (!rootMissing)
        emit SigSetStatusMessage(tr("Completed acquiring analyzed data"));
    emit SigProgressEnded();
    emit SigEndGetDetailInfo();
    emit SigSearchExecute(searchCriteria);
    pendingUpdateFiles.clear();
    if (!listedFolder.root.isEmpty()) {
        krokManager->ForgetMissingFiles(listedFolder.root, listedFolder.recursive,
                                        listedFolder.files);
        listedFolder = {};
    }
    if (!pendingLibraryProblem.isEmpty()) {
        emit SigSetStatusMessage(pendingLibraryProblem);
        pendingLibraryProblem.clear();
    }
}

void TeskManager::SlotSelectedFileUpdateCalled(QStringList filePaths)
{
    if (filePaths.isEmpty())
        return;
    pendingUpdateFiles = filePaths;
    timerPlaylist.stop();
    if (listCancelPending || detailCancelPending)
        return;
    if (threadGetList->isRunning()) {
        listCancelPending = true;
        threadGetList->cancel();
        emit SigSetStatusMessage(tr("Cancel file list acquisition"));
    } else if (threadGetDetail->isRunning()) {
        detailCancelPending = true;
        threadGetDetail->cancel();
        emit SigSetStatusMessage(tr("Cancel to acquire analyzed data"));
    } else {
        emit SigSetStatusMessage(tr("Updating information"));
        threadGetDetail->requestInvalidate();
        StartDetailWorkerForUpdate();
    }
}

void TeskManager::SlotThreadGetListFinished()
{
    if (!listCancelPending)
        return;
    listCancelPending = false;
    if (threadGetDetail->isRunning()) {
        detailCancelPending = true;
        threadGetDetail->cancel();
        emit SigSetStatusMessage(
            tr("Cancelled file list acquisition. Stopping acquisition of analyzed data..."));
    } else if (pendingUpdateFiles.isEmpty()) {
        StartListWorker();
    } else {
        StartDetailWorkerForUpdate();
    }
}

void TeskManager::SlotThreadGetDetailFinished()
{
    if (!detailCancelPending)
        return;
    detailCancelPending = false;
    if (pendingUpdateFiles.isEmpty())
        StartListWorker();
    else
        StartDetailWorkerForUpdate();
}

void TeskManager::SlotTimerPlaylistTick()
{
    timerPlaylist.stop();
    if (!s.playlistFlag)
        return;
    if (krokManager->IsPlaying() || krokManager->IsPreparing())
        timerPlaylist.start();
    else
        emit SigSelectNextItem();
}

void TeskManager::SlotTimerUpdateStatusTick()
{
    CheckOutputDevice();
    const QString playing = krokManager->IsPlaying() ? krokManager->GetPlayingPath() : QString();
    const AudioFileInfo info =
        playing.isEmpty() ? AudioFileInfo() : krokManager->GetFileInfo(playing);
    if (playing.isEmpty() || info.isHeaderRead == 0) {
        if (!lastPlayingPath.isEmpty()) {
            emit SigResetPlaybackPosition(lastPlayingPath);
            lastPlayingPath.clear();
        }
        return;
    }
    const double ratio = info.samples > 0
                             ? static_cast<double>(krokManager->GetPlaybackPosition()) /
                                   static_cast<double>(info.samples)
                             : 0.0;
    if (playing != lastPlayingPath) {
        if (!lastPlayingPath.isEmpty())
            emit SigResetPlaybackPosition(lastPlayingPath);
        lastPlayingPath = playing;
    }
    emit SigSetPlaybackPosition(playing, ratio);
}

void TeskManager::SlotErrorReceived(QString message)
{
    emit SigSetStatusMessage(message);
    if (message.contains(QStringLiteral("E2009042301"), Qt::CaseSensitive))
        emit SigShowDialog(tr("Warning"),
                           tr("Cannot preview because XAudio2 initialization failed. Please "
                              "ensure that DirectX End-User Runtimes (June 2010) is installed."));
}
