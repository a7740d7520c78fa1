#pragma once

#include "TeskManager.h"

#include <QMainWindow>

class GacManager;
class MenuBar;
class StatusProgress;
class SystemThemeWatcher;
class SubFormFont;
class WidgetRootPath;
class WidgetSearch;
class WidgetTableBrowser;
class WidgetTreeBrowser;
class subFormSortSettings;
class QLabel;
class QShortcut;
class QSplitter;
class QTimer;
class WidgetDetailView;
class WidgetPlayer;

// The single top-level window: owns the manager, the menu bar and the five
// browser widgets, lays them out and wires them, and carries the slots that
// need a parent window. Saves the settings when destroyed.
class MainWindow final : public QMainWindow
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MainWindow)

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    TeskManager* GetManager() const { return manager; }
    QSplitter* GetSplitter() const { return splitter; }
    MenuBar* GetMenuBar() const { return menuBarWidget; }
    WidgetRootPath* GetRootPathWidget() const { return widgetRootPath; }
    WidgetSearch* GetSearchWidget() const { return widgetSearch; }
    WidgetTreeBrowser* GetTreeBrowser() const { return widgetTreeBrowser; }
    WidgetTableBrowser* GetTableBrowser() const { return widgetTableBrowser; }
    WidgetDetailView* GetDetailView() const { return detailView; }
    QLabel* GetStatusLabel() const { return statusLabel; }
    StatusProgress* GetStatusProgress() const { return statusProgress; }
    // The window width at which the table shows every visible column at its
    // starting width, with the tree beside it at its share.
    int PreferredWidth();

public slots:
    void SlotSetWaitCursor();
    void SlotRestoreCursor();
    void SlotSetStatusMessage(QString msg);
    void SlotShowDialog(QString title, QString msg);
    void SlotSetMainWindowGeometry(int left, int top, int wid, int hgt);
    void SlotOpenParentDirByExplorer(QString filePath);
    void SlotChangeBookmarkCalled(bool flag);
    void SlotSelectFromAction();
    void SlotSelectFromBookmark();
    void SlotOpenRootByExplorer();
    void SlotRowHeightEnlarge();
    void SlotRowHeightShrink();
    void SlotRowHeightDefault();
    void SlotSeekForward();
    void SlotSeekBackward();
    void SlotBookmarkAddMenuSelected();
    void SlotBookmarkDeleteMenuSelected();
    void SlotMenuQuit();
    void SlotMenuAbout();
    void SlotShowSortSettings();
    void SlotOpenSettingsForm();
    void SlotChangeColorTheme(TeskManager::ColorTheme theme);
    void SlotChangeColor(TeskManager::ColorTheme theme);
    void SlotOpenFontForm();
    void SlotOpenBookmarkManager();
    // Asks before removing every stored analysis result.
    void SlotClearAnalysisLibrary();
    void SlotOpenLibrarySettings();
    void SlotSortSettingsApplied();
    void SlotGacOpenSettings();
    void SlotGacToggleConnection();
    // Play (Space, the play button): the region in the detail view when it has
    // one for the current file, else the current row.
    void SlotStartPlaybackRequested();
    // The desktop switched between light and dark while running.
    void SlotSystemDarkChanged(bool dark);

private slots:
    void updateGacMenu();

protected:
    void showEvent(QShowEvent* event) override;
    // Keep the manager's copy of the window rectangle current, so that a save
    // at any moment has it.
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void setupForm();
    void askBookmarkName();
    void setUpDetailView();
    void restoreDetailViewHeight();

    // Constructed first: the menu bar and the widgets connect to it.
    TeskManager* manager;
    GacManager* gacManager = nullptr;
    MenuBar* menuBarWidget = nullptr;
    WidgetRootPath* widgetRootPath = nullptr;
    WidgetPlayer* widgetPlayer = nullptr;
    WidgetSearch* widgetSearch = nullptr;
    WidgetTreeBrowser* widgetTreeBrowser = nullptr;
    WidgetTableBrowser* widgetTableBrowser = nullptr;
    WidgetDetailView* detailView = nullptr;
    QSplitter* splitter = nullptr;
    QSplitter* tableSplitter = nullptr; // the table over the detail view
    QLabel* statusLabel = nullptr;
    StatusProgress* statusProgress = nullptr;
    SystemThemeWatcher* themeWatcher = nullptr;
    QShortcut* searchShortcut = nullptr;
    // Made on first use and kept, so their fields survive closing.
    subFormSortSettings* sortSettings = nullptr;
    SubFormFont* fontForm = nullptr;
    QTimer* gacMenuTimer = nullptr;
    bool splitterSized = false;
    // A stored geometry was applied; otherwise the window opens at its preferred width.
    bool geometryRestored = false;
};
