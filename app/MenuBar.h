#pragma once

#include "TeskManager.h"

#include <QList>
#include <QMenuBar>

class MainWindow;
class QAction;

// The window's menus. Keeps the checkable entries in step with the manager's
// flags and routes each entry to a main-window slot or a manager slot.
class MenuBar final : public QMenuBar
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MenuBar)

public:
    MenuBar(MainWindow* window, TeskManager* manager);

    // Called once the stored settings are applied.
    void InitState();

    static constexpr int kRecentActionCount = 10;

    // Checks the theme entry of the stored theme.
    void CheckThemeAction(TeskManager::ColorTheme theme);

    // The Nuendo status entry, refreshed by the window every second.
    void SetNuendoStatusText(const QString& text);
    QAction* nuendoStatusAction() const { return actionNuendoStatus; }
    const QList<QAction*>& columnVisibilityActions() const { return columnActions; }
    const QList<QAction*>& recentFolderActions() const { return recentActions; }
    QAction* seekForwardAction() const { return actionSeekForward; }
    QAction* seekBackwardAction() const { return actionSeekBackward; }
    QAction* matchLoudnessAction() const { return actionMatchLoudness; }
    QAction* detailViewAction() const { return actionDetailView; }
    QAction* analysisLibraryAction() const { return actionAnalysisLibrary; }
    QAction* clearLibraryAction() const { return actionClearLibrary; }

signals:
    void SigShowRootPathSelectDialog();
    void SigStartPlayback();
    void SigColumnVisiblityChanged(int state);
    void SigChangeTheme(TeskManager::ColorTheme theme);

public slots:
    void BookMarkStateUpdated(bool bookmarked);
    void ColumnVisibleStateLoaded(int state);

private slots:
    void fileMenuOpening();
    void previewMenuOpening();
    void previewMenuClosing();
    void updateBookmarkMenu();
    void updateColumnVisibility();

private:
    void buildFolderMenu();
    void buildViewMenu();
    void buildToolMenu();
    void buildPreviewMenu();
    void buildBookmarkMenu();
    void buildHelpMenu();
    void connectToWindowSlot(QAction* action, const char* slotSignature);

    MainWindow* window;
    TeskManager* manager;

    QMenu* recentMenu = nullptr;
    QList<QAction*> recentActions;
    QAction* actionRecursive = nullptr;
    QAction* actionLoudness = nullptr;
    QAction* actionVoltMode = nullptr;
    QAction* actionMultiPlot = nullptr;
    QAction* actionShowHidden = nullptr;
    QAction* actionSeekForward = nullptr;
    QAction* actionSeekBackward = nullptr;
    QAction* actionAutoPlayback = nullptr;
    QAction* actionPlaylist = nullptr;
    QAction* actionMatchLoudness = nullptr;
    QAction* actionDetailView = nullptr;
    QAction* actionAnalysisLibrary = nullptr;
    QAction* actionClearLibrary = nullptr;
    QMenu* bookmarkMenu = nullptr;
    QAction* actionBookmarkAdd = nullptr;
    QAction* actionBookmarkDelete = nullptr;
    QAction* bookmarkSeparator = nullptr;
    QList<QAction*> bookmarkActions;
    QList<QAction*> themeActions;
    QList<QAction*> columnActions;
    QAction* actionNuendoStatus = nullptr;
};
