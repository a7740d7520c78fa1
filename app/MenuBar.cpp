#include "MenuBar.h"

#include "KrokManager.h"
#include "MainWindow.h"
#include "TeskManager.h"
#include "krokTableModel.h"

#include <QActionGroup>
#include <QMenu>

MenuBar::MenuBar(MainWindow* parentWindow, TeskManager* teskManager)
    : QMenuBar(parentWindow)
    , window(parentWindow)
    , manager(teskManager)
{
    buildFolderMenu();
    buildViewMenu();
    buildToolMenu();
    buildPreviewMenu();
    buildBookmarkMenu();
    buildHelpMenu();
}

void MenuBar::buildFolderMenu()
{
    QMenu* menu = addMenu(tr("Folder"));
    connect(menu, &QMenu::aboutToShow, this, &MenuBar::fileMenuOpening);
    QAction* select = menu->addAction(tr("Select a folder..."));
    select->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    connect(select, &QAction::triggered, this, &MenuBar::SigShowRootPathSelectDialog);
    recentMenu = menu->addMenu(tr("Recently viewed folders"));
    for (int i = 0; i < kRecentActionCount; ++i) {
        QAction* action = recentMenu->addAction(QString());
        action->setVisible(false);
        connect(action, &QAction::triggered, window, &MainWindow::SlotSelectFromAction);
        recentActions.append(action);
    }
    menu->addSeparator();
#ifdef Q_OS_WIN
    QAction* explorer = menu->addAction(tr("Show in Explorer"));
#else
    QAction* explorer = menu->addAction(tr("Show in File Manager"));
#endif
    explorer->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
    connect(explorer, &QAction::triggered, window, &MainWindow::SlotOpenRootByExplorer);
    menu->addSeparator();
    QAction* exit = menu->addAction(tr("Exit"));
    exit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(exit, &QAction::triggered, window, &MainWindow::SlotMenuQuit);
}

void MenuBar::buildViewMenu()
{
    QMenu* menu = addMenu(tr("View"));
    auto checkable = [menu](const QString& text) {
        QAction* action = menu->addAction(text);
        action->setCheckable(true);
        return action;
    };
    actionRecursive = checkable(tr("Display files in subfolders as well"));
    connect(actionRecursive, &QAction::toggled, manager, &TeskManager::SlotChangeRecursiveCalled);
    connect(manager, &TeskManager::SigRecursiveChanged, actionRecursive, &QAction::setChecked);

    QMenu* rowHeight = menu->addMenu(tr("Row Height"));
    QAction* enlarge = rowHeight->addAction(tr("Enlarge"));
    enlarge->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Plus));
    connect(enlarge, &QAction::triggered, window, &MainWindow::SlotRowHeightEnlarge);
    QAction* shrink = rowHeight->addAction(tr("Shrink"));
    shrink->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Minus));
    connect(shrink, &QAction::triggered, window, &MainWindow::SlotRowHeightShrink);
    QAction* reset = rowHeight->addAction(tr("Reset to Default Settings"));
    reset->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_0));
    connect(reset, &QAction::triggered, window, &MainWindow::SlotRowHeightDefault);

    actionLoudness = checkable(tr("Analyze Loudness values"));
    connect(actionLoudness, &QAction::toggled, manager, &TeskManager::SlotChangeLoudnessCalled);
    connect(manager, &TeskManager::SigLoudnessChanged, actionLoudness, &QAction::setChecked);
    actionVoltMode = checkable(tr("Display Loudness value of mono audio with raising 3dB"));
    connect(actionVoltMode, &QAction::toggled, manager,
            &TeskManager::SlotChangeLoudnessVoltModeCalled);
    connect(manager, &TeskManager::SigLoudnessVoltModeChanged, actionVoltMode,
            &QAction::setChecked);
    actionMultiPlot = checkable(tr("Display multi-channel plots"));
    connect(actionMultiPlot, &QAction::toggled, manager, &TeskManager::SlotChangeMultiPlotCalled);
    connect(manager, &TeskManager::SigMultiPlotChanged, actionMultiPlot, &QAction::setChecked);
    actionShowHidden = checkable(tr("Show hidden files and folders"));
    connect(actionShowHidden, &QAction::toggled, manager,
            &TeskManager::SlotChangeShowHiddensCalled);
    connect(manager, &TeskManager::SigShowHiddensFlagChanged, actionShowHidden,
            &QAction::setChecked);
    QMenu* columns = menu->addMenu(tr("Column"));
    for (const QString& header : krokTableModel::columnHeaderLabels()) {
        QAction* action = columns->addAction(header);
        action->setCheckable(true);
        action->setChecked(true);
        connect(action, &QAction::toggled, this, &MenuBar::updateColumnVisibility);
        columnActions.append(action);
    }
    connect(this, &MenuBar::SigColumnVisiblityChanged, manager,
            &TeskManager::MemorizeColumnVisibleState);
    connect(manager, &TeskManager::SigColumnVisibleLoaded, this,
            &MenuBar::ColumnVisibleStateLoaded);
    actionDetailView = checkable(tr("Show detail view"));
    actionDetailView->setChecked(true);
    connect(actionDetailView, &QAction::toggled, manager,
            &TeskManager::SlotChangeDetailViewVisibleCalled);
    connect(manager, &TeskManager::SigDetailViewVisibleChanged, actionDetailView,
            &QAction::setChecked);
    QAction* sortSettings = menu->addAction(tr("Open Sort Settings"));
    connect(sortSettings, &QAction::triggered, window, &MainWindow::SlotShowSortSettings);
}

void MenuBar::buildToolMenu()
{
    QMenu* menu = addMenu(tr("Tool"));
    QAction* settings = menu->addAction(tr("Settings..."));
    connect(settings, &QAction::triggered, window, &MainWindow::SlotOpenSettingsForm);
    QAction* font = menu->addAction(tr("Font..."));
    connect(font, &QAction::triggered, window, &MainWindow::SlotOpenFontForm);

    QMenu* theme = menu->addMenu(tr("Theme"));
    auto* group = new QActionGroup(theme);
    group->setExclusive(true);
    const QList<QPair<QString, TeskManager::ColorTheme>> themes{{tr("System"), TeskManager::System},
                                                                {tr("Light"), TeskManager::Light},
                                                                {tr("Dark"), TeskManager::Dark}};
    for (const auto& entry : themes) {
        QAction* action = theme->addAction(entry.first);
        action->setCheckable(true);
        group->addAction(action);
        const TeskManager::ColorTheme value = entry.second;
        connect(action, &QAction::triggered, this, [this, value] { emit SigChangeTheme(value); });
        themeActions.append(action);
    }

    QMenu* library = menu->addMenu(tr("Analysis Library"));
    actionAnalysisLibrary = library->addAction(tr("Keep Analysis Results Between Sessions"));
    actionAnalysisLibrary->setCheckable(true);
    actionAnalysisLibrary->setChecked(manager->IsAnalysisLibraryEnabled());
    connect(actionAnalysisLibrary, &QAction::toggled, manager,
            &TeskManager::SlotChangeAnalysisLibraryCalled);
    actionClearLibrary = library->addAction(tr("Clear Analysis Library..."));
    connect(actionClearLibrary, &QAction::triggered, window, &MainWindow::SlotClearAnalysisLibrary);
    QAction* librarySettings = library->addAction(tr("Analysis Library Settings..."));
    librarySettings->setObjectName(QStringLiteral("actionLibrarySettings"));
    connect(librarySettings, &QAction::triggered, window, &MainWindow::SlotOpenLibrarySettings);
    connect(manager, &TeskManager::SigAnalysisLibraryChanged, this, [this](bool flag) {
        actionAnalysisLibrary->setChecked(flag);
        actionClearLibrary->setEnabled(flag);
    });

    QMenu* nuendo = menu->addMenu(tr("Nuendo Connection"));
    QAction* gacSettings = nuendo->addAction(tr("Open Nuendo Connection Settings..."));
    connectToWindowSlot(gacSettings, "SlotGacOpenSettings()");
    // Not translated: replaced by the connection state within a second.
    actionNuendoStatus = nuendo->addAction(QStringLiteral("(getting status)"));
    connectToWindowSlot(actionNuendoStatus, "SlotGacToggleConnection()");
}

void MenuBar::buildPreviewMenu()
{
    QMenu* menu = addMenu(tr("Preview"));
    connect(menu, &QMenu::aboutToShow, this, &MenuBar::previewMenuOpening);
    connect(menu, &QMenu::aboutToHide, this, &MenuBar::previewMenuClosing);
    // Single keys without modifier, on purpose: the preview keys sit under the left hand.
    QAction* playback = menu->addAction(tr("Playback"));
    playback->setShortcut(QKeySequence(Qt::Key_Space));
    connect(playback, &QAction::triggered, this, &MenuBar::SigStartPlayback);
    QAction* stop = menu->addAction(tr("Stop"));
    stop->setShortcut(QKeySequence(Qt::Key_Escape));
    connect(stop, &QAction::triggered, manager, &TeskManager::SlotStopPlaybackCalled);
    actionSeekForward = menu->addAction(tr("Seek forward"));
    actionSeekForward->setShortcut(QKeySequence(Qt::Key_T));
    connect(actionSeekForward, &QAction::triggered, window, &MainWindow::SlotSeekForward);
    actionSeekBackward = menu->addAction(tr("Seek backward"));
    actionSeekBackward->setShortcut(QKeySequence(Qt::Key_R));
    connect(actionSeekBackward, &QAction::triggered, window, &MainWindow::SlotSeekBackward);
    actionAutoPlayback = menu->addAction(tr("Play selected tracks"));
    actionAutoPlayback->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_S));
    actionAutoPlayback->setCheckable(true);
    actionAutoPlayback->setChecked(true);
    connect(actionAutoPlayback, &QAction::toggled, manager,
            &TeskManager::SlotChangeAutoPlaybackFlagCalled);
    connect(manager, &TeskManager::SigAutoPlaybackFlagChanged, actionAutoPlayback,
            &QAction::setChecked);
    actionPlaylist = menu->addAction(tr("Enable Playlist Playback"));
    actionPlaylist->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_P));
    actionPlaylist->setCheckable(true);
    connect(actionPlaylist, &QAction::toggled, manager, &TeskManager::SlotChangePlaylistFlagCalled);
    connect(manager, &TeskManager::SigPlaylistFlagChanged, actionPlaylist, &QAction::setChecked);
    menu->addSeparator();
    actionMatchLoudness = menu->addAction(tr("Match loudness"));
    actionMatchLoudness->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_L));
    actionMatchLoudness->setCheckable(true);
    connect(actionMatchLoudness, &QAction::toggled, manager,
            &TeskManager::SlotChangeMatchLoudnessCalled);
    connect(manager, &TeskManager::SigMatchLoudnessChanged, actionMatchLoudness,
            &QAction::setChecked);
}

void MenuBar::buildBookmarkMenu()
{
    bookmarkMenu = addMenu(tr("Bookmark"));
    connect(bookmarkMenu, &QMenu::aboutToShow, this, &MenuBar::updateBookmarkMenu);
    QAction* manage = bookmarkMenu->addAction(tr("Manage Bookmarks..."));
    connect(manage, &QAction::triggered, window, &MainWindow::SlotOpenBookmarkManager);
    bookmarkMenu->addSeparator();
    actionBookmarkAdd = bookmarkMenu->addAction(tr("Add to Bookmarks"));
    actionBookmarkAdd->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_D));
    actionBookmarkAdd->setEnabled(false);
    connect(actionBookmarkAdd, &QAction::triggered, window,
            &MainWindow::SlotBookmarkAddMenuSelected);
    actionBookmarkDelete = bookmarkMenu->addAction(tr("Delete Bookmarks"));
    actionBookmarkDelete->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D));
    actionBookmarkDelete->setEnabled(false);
    connect(actionBookmarkDelete, &QAction::triggered, window,
            &MainWindow::SlotBookmarkDeleteMenuSelected);
    bookmarkSeparator = bookmarkMenu->addSeparator();
    bookmarkSeparator->setVisible(false);
    connect(manager, &TeskManager::SigCurrentDirBookmarkChanged, this,
            &MenuBar::BookMarkStateUpdated);
}

void MenuBar::buildHelpMenu()
{
    QMenu* menu = addMenu(tr("Help"));
    QAction* about = menu->addAction(tr("About Tesk"));
    connect(about, &QAction::triggered, window, &MainWindow::SlotMenuAbout);
}

void MenuBar::InitState()
{
    BookMarkStateUpdated(manager->IsRootBookmarked());
    CheckThemeAction(manager->GetColorTheme());
}

void MenuBar::CheckThemeAction(TeskManager::ColorTheme theme)
{
    const int index = int(theme);
    if (index >= 0 && index < themeActions.size())
        themeActions.at(index)->setChecked(true);
}

void MenuBar::BookMarkStateUpdated(bool bookmarked)
{
    actionBookmarkAdd->setEnabled(!bookmarked);
    actionBookmarkDelete->setEnabled(bookmarked);
}

void MenuBar::fileMenuOpening()
{
    const QStringList recent = manager->GetRecentFolders();
    recentMenu->setEnabled(!recent.isEmpty());
    for (int i = 0; i < recentActions.size(); ++i) {
        QAction* action = recentActions.at(i);
        if (i < recent.size()) {
            action->setText(recent.at(i));
            action->setVisible(true);
        } else {
            action->setVisible(false);
        }
    }
}

void MenuBar::previewMenuOpening()
{
    const bool playing = manager->GetKrokManager()->IsPlaying();
    actionSeekForward->setEnabled(playing);
    actionSeekBackward->setEnabled(playing);
}

void MenuBar::previewMenuClosing()
{
    // T and R keep seeking while the menu is closed.
    actionSeekForward->setEnabled(true);
    actionSeekBackward->setEnabled(true);
}

void MenuBar::updateBookmarkMenu()
{
    const BookmarkList bookmarks = manager->GetBookmarks();
    bookmarkSeparator->setVisible(!bookmarks.isEmpty());
    for (int i = 0; i < bookmarks.size(); ++i) {
        if (i >= bookmarkActions.size()) {
            QAction* action = bookmarkMenu->addAction(QString());
            connect(action, &QAction::triggered, window, &MainWindow::SlotSelectFromBookmark);
            bookmarkActions.append(action);
        }
        QAction* action = bookmarkActions.at(i);
        action->setText(bookmarks.at(i).name);
        action->setData(bookmarks.at(i).path);
        action->setVisible(true);
    }
    for (int i = bookmarks.size(); i < bookmarkActions.size(); ++i)
        bookmarkActions.at(i)->setVisible(false);
}

void MenuBar::connectToWindowSlot(QAction* action, const char* slotSignature)
{
    // The Nuendo connection slots come with the connection manager; until the
    // window has them, their entries stay disabled rather than do nothing.
    const QByteArray normalized = QMetaObject::normalizedSignature(slotSignature);
    if (window->metaObject()->indexOfSlot(normalized.constData()) < 0) {
        action->setEnabled(false);
        return;
    }
    connect(action, SIGNAL(triggered()), window, QByteArray("1" + normalized).constData());
}

void MenuBar::SetNuendoStatusText(const QString& text)
{
    actionNuendoStatus->setText(text);
}

void MenuBar::updateColumnVisibility()
{
    int state = 0;
    for (int i = 0; i < columnActions.size(); ++i) {
        if (columnActions.at(i)->isChecked())
            state |= 1 << i;
    }
    emit SigColumnVisiblityChanged(state);
}

void MenuBar::ColumnVisibleStateLoaded(int state)
{
    // Reflecting the stored mask is no user change: nothing is emitted per action.
    for (int i = 0; i < columnActions.size(); ++i) {
        const QSignalBlocker blocker(columnActions.at(i));
        columnActions.at(i)->setChecked((state & (1 << i)) != 0);
    }
}
