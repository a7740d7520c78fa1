#include "MainWindow.h"

#include "AnalysisPass.h"
#include "BookmarkNameDialog.h"
#include "CommandLineRoot.h"
#include "DefaultWindowGeometry.h"
#include "FileManagerReveal.h"
#include "FitWindowGeometry.h"
#include "GacManager.h"
#include "MenuBar.h"
#include "SortSettingsApplication.h"
#include "StatusProgress.h"
#include "SubFormFont.h"
#include "SystemThemeWatcher.h"
#include "TableRoles.h"
#include "TeskStyle.h"
#include "WidgetDetailView.h"
#include "WidgetPlayer.h"
#include "WidgetRootPath.h"
#include "WidgetSearch.h"
#include "WidgetTableBrowser.h"
#include "WidgetTreeBrowser.h"
#include "subFormBookmark.h"
#include "subFormGAC.h"
#include "subFormLibrarySettings.h"
#include "subFormSortSettings.h"
#include "subFormToolSettings.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QScreen>
#include <QShortcut>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QTimer>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kRowHeightStep = 2;
// Room for the folder tree beside a table that shows all its columns.
constexpr int kComfortableTreeWidth = 260;
constexpr int kNarrowestTreeWidth = 200;

// The folder tree's part of the splitter's width `w`: a quarter, or less when
// that lets the table show every column, though never below a usable width.
int TreeShare(int w, int tableWidth)
{
    const int quarter = w / 4;
    return qBound(qMin(kNarrowestTreeWidth, quarter), w - tableWidth, quarter);
}

} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
    , manager(new TeskManager(this))
{
    gacManager = new GacManager(this);
    menuBarWidget = new MenuBar(this, manager);
    setupForm();

    auto* outer = new QVBoxLayout(centralWidget());
    auto* top = new QHBoxLayout();
    widgetRootPath = new WidgetRootPath(centralWidget());
    widgetPlayer = new WidgetPlayer(centralWidget());
    widgetSearch = new WidgetSearch(centralWidget());
    top->addWidget(widgetRootPath, 7);
    top->addWidget(widgetPlayer, 3);
    top->addWidget(widgetSearch, 2);
    outer->addLayout(top);

    splitter = new QSplitter(Qt::Horizontal, centralWidget());
    widgetTreeBrowser = new WidgetTreeBrowser(manager, splitter);
    tableSplitter = new QSplitter(Qt::Vertical, splitter);
    widgetTableBrowser = new WidgetTableBrowser(manager, gacManager, tableSplitter);
    detailView = new WidgetDetailView(tableSplitter);
    tableSplitter->addWidget(widgetTableBrowser);
    tableSplitter->addWidget(detailView);
    tableSplitter->setStretchFactor(0, 1);
    tableSplitter->setStretchFactor(1, 0);
    tableSplitter->setCollapsible(0, false);
    tableSplitter->setCollapsible(1, false);
    splitter->addWidget(widgetTreeBrowser);
    splitter->addWidget(tableSplitter);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 3);
    outer->addWidget(splitter, 1);
    const int w = splitter->width();
    splitter->setSizes({w / 4, 3 * w / 4});

    setMenuBar(menuBarWidget);

    statusLabel = new QLabel(QString(), this);
    statusLabel->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    statusBar()->addWidget(statusLabel, 1);
    statusProgress = new StatusProgress(this);
    statusBar()->addPermanentWidget(statusProgress);
    statusProgress->ConnectManager(manager);

    if (const QScreen* screen = QGuiApplication::primaryScreen())
        setGeometry(DefaultWindowGeometry(screen->geometry()));

    connect(manager, &TeskManager::SigSetWaitCursor, this, &MainWindow::SlotSetWaitCursor,
            Qt::DirectConnection);
    connect(manager, &TeskManager::SigRestoreCursor, this, &MainWindow::SlotRestoreCursor,
            Qt::DirectConnection);
    connect(manager, &TeskManager::SigSetStatusMessage, this, &MainWindow::SlotSetStatusMessage);
    connect(manager, &TeskManager::SigShowDialog, this, &MainWindow::SlotShowDialog);
    connect(manager, &TeskManager::SigSetMainWindowGeometry, this,
            &MainWindow::SlotSetMainWindowGeometry);
    connect(manager, &TeskManager::SigChangeColorTheme, this, &MainWindow::SlotChangeColorTheme);
    connect(menuBarWidget, &MenuBar::SigChangeTheme, this, &MainWindow::SlotChangeColor);

    connect(widgetTableBrowser, &WidgetTableBrowser::SigOpenByExplorerCalled, this,
            &MainWindow::SlotOpenParentDirByExplorer);
    connect(widgetPlayer, &WidgetPlayer::SigStartCalled, this,
            &MainWindow::SlotStartPlaybackRequested);
    connect(widgetTableBrowser, &WidgetTableBrowser::SigSendMessage, this,
            &MainWindow::SlotSetStatusMessage);
    // Columns shown or hidden from the table's header go the menu's way.
    connect(widgetTableBrowser, &WidgetTableBrowser::SigColumnVisiblityChanged, menuBarWidget,
            &MenuBar::ColumnVisibleStateLoaded);
    connect(widgetTableBrowser, &WidgetTableBrowser::SigColumnVisiblityChanged, manager,
            &TeskManager::MemorizeColumnVisibleState);
    connect(widgetRootPath, &WidgetRootPath::SigStatusMessage, this,
            &MainWindow::SlotSetStatusMessage);
    connect(widgetTreeBrowser, &WidgetTreeBrowser::SigShowInExplorer, this,
            &MainWindow::SlotOpenParentDirByExplorer);
    connect(widgetRootPath, &WidgetRootPath::SigBookmarkFlagChangeRequired, this,
            &MainWindow::SlotChangeBookmarkCalled);
    connect(menuBarWidget, &MenuBar::SigShowRootPathSelectDialog, widgetRootPath,
            &WidgetRootPath::SlotShowRootPathSelectDialog);
    connect(menuBarWidget, &MenuBar::SigColumnVisiblityChanged, widgetTableBrowser,
            &WidgetTableBrowser::SlotColumnVisibleChanged);
    connect(menuBarWidget, &MenuBar::SigStartPlayback, this,
            &MainWindow::SlotStartPlaybackRequested);
    widgetRootPath->SetManager(manager);
    widgetSearch->SetManager(manager);
    widgetPlayer->ConnectManager(manager);
    connect(widgetTableBrowser, &WidgetTableBrowser::SigOpenByNuendoCalled, gacManager,
            &GacManager::OpenByNuendo);
    connect(gacManager, &GacManager::SigOpenByNuendoFinished, this,
            [this](bool, const QString& message) { SlotSetStatusMessage(message); });

    searchShortcut = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_F), this);
    searchShortcut->setContext(Qt::WindowShortcut);
    connect(searchShortcut, &QShortcut::activated, widgetSearch,
            &WidgetSearch::SlotFocusSearchTextbox);
    // The installed icon at every size where there is one; the built-in one otherwise.
    setWindowIcon(QIcon::fromTheme(QStringLiteral("works.orvane.Tesk"),
                                   QIcon(QStringLiteral(":/images/tesk.png"))));

    manager->GetFontSettings()->SetDefaultFont(QApplication::font().family(),
                                               QApplication::font().pointSize());
    setUpDetailView();
    manager->ApplyStoredSettings();
    if (!geometryRestored) {
        if (const QScreen* screen = QGuiApplication::primaryScreen())
            setGeometry(DefaultWindowGeometry(screen->availableGeometry(), PreferredWidth()));
    }
    themeWatcher = new SystemThemeWatcher(this);
    connect(themeWatcher, &SystemThemeWatcher::SigSystemDarkChanged, this,
            &MainWindow::SlotSystemDarkChanged);
    gacManager->SetServer(manager->GetGacAddress(), manager->GetGacPort());
    menuBarWidget->InitState();
    gacMenuTimer = new QTimer(this);
    gacMenuTimer->setInterval(1000);
    connect(gacMenuTimer, &QTimer::timeout, this, &MainWindow::updateGacMenu);
    gacMenuTimer->start();

    const QString root = CommandLineRoot(QCoreApplication::arguments());
    if (!root.isEmpty())
        manager->SlotChangeRootPathCalled(root);
}

void MainWindow::setUpDetailView()
{
    detailView->ConnectManager(manager);
    connect(manager, &TeskManager::SigDetailViewVisibleChanged, this, [this](bool visible) {
        detailView->setVisible(visible);
        if (visible && splitterSized)
            restoreDetailViewHeight();
    });
    // The view follows the table's current row.
    connect(widgetTableBrowser->tableView()->selectionModel(),
            &QItemSelectionModel::currentRowChanged, detailView,
            [this](const QModelIndex& current) {
                detailView->SetFile(
                    current.isValid() ? current.data(TableRoles::FullPath).toString() : QString());
            });
    connect(tableSplitter, &QSplitter::splitterMoved, this, [this] {
        if (detailView->isVisible())
            manager->SetDetailViewHeight(detailView->height());
    });
}

void MainWindow::SlotStartPlaybackRequested()
{
    const QModelIndex current = widgetTableBrowser->tableView()->currentIndex();
    const QString path =
        current.isValid() ? current.data(TableRoles::FullPath).toString() : QString();
    if (detailView->isVisible() && !path.isEmpty() && detailView->File() == path &&
        detailView->PlayRegion())
        return;
    widgetTableBrowser->SlotSelectedItemPlaybackCalled();
}

void MainWindow::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    // Before the first show the splitter has only its default width, so the
    // tree's share is worked out again once the layout has given it its own.
    if (!splitterSized) {
        splitterSized = true;
        const int w = splitter->width() - splitter->handleWidth();
        const int tree = TreeShare(w, widgetTableBrowser->preferredTableWidth());
        splitter->setSizes({tree, w - tree});
        restoreDetailViewHeight();
    }
}

void MainWindow::restoreDetailViewHeight()
{
    // The table keeps at least a few rows whatever height was stored.
    const int h = tableSplitter->height();
    const int detail = std::clamp(manager->GetDetailViewHeight(), kMinDetailViewHeight,
                                  std::max(kMinDetailViewHeight, h - 120));
    tableSplitter->setSizes({h - detail, detail});
}

MainWindow::~MainWindow()
{
    if (manager) {
        const QRect g = geometry();
        manager->SaveSettings(g.left(), g.top(), g.width(), g.height());
    }
}

void MainWindow::setupForm()
{
    setObjectName(QStringLiteral("MainWindow"));
    resize(800, 500);
    setWindowTitle(QStringLiteral("Vex Tesk"));
    // A tool button shows its frame only under the mouse.
    setStyleSheet(QStringLiteral("QToolButton{border: none;}"
                                 "QToolButton:hover{border: 1px solid argb(255,0,0,40%); "
                                 "border-radius: 2px;}"));
    auto* central = new QWidget(this);
    central->setObjectName(QStringLiteral("centralWidget"));
    setCentralWidget(central);
    auto* toolBar = new QToolBar(this);
    toolBar->setObjectName(QStringLiteral("mainToolBar"));
    addToolBar(Qt::TopToolBarArea, toolBar);
    // It holds nothing: an empty strip under the menus only takes room.
    toolBar->hide();
    toolBar->toggleViewAction()->setVisible(false);
    auto* bar = new QStatusBar(this);
    bar->setObjectName(QStringLiteral("statusBar"));
    setStatusBar(bar);
}

void MainWindow::SlotSetWaitCursor()
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QCoreApplication::processEvents();
}

void MainWindow::SlotRestoreCursor()
{
    QApplication::restoreOverrideCursor();
}

void MainWindow::SlotSetStatusMessage(QString msg)
{
    statusLabel->setText(msg);
    // Lets the text show while the GUI thread is busy with long work.
    QCoreApplication::processEvents();
}

void MainWindow::SlotShowDialog(QString title, QString msg)
{
    QMessageBox::information(this, title, msg, QMessageBox::Ok);
}

void MainWindow::SlotClearAnalysisLibrary()
{
    const AnalysisLibrarySettings library = manager->GetAnalysisLibrarySettings();
    const QString question =
        library.onServer
            ? tr("Remove every analysis result from the shared library %1? Every workstation "
                 "that uses it reads and analyses its files again.")
                  .arg(library.server.Describe())
            : tr("Remove every stored analysis result? Files are read and analysed again the next "
                 "time their folder is opened.");
    const auto answer = QMessageBox::question(this, tr("Clear Analysis Library"), question,
                                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer == QMessageBox::Yes)
        manager->SlotClearAnalysisLibraryCalled();
}

void MainWindow::SlotOpenLibrarySettings()
{
    subFormLibrarySettings form(manager->GetAnalysisLibrarySettings(), this);
    if (form.exec() == QDialog::Accepted)
        manager->SetAnalysisLibrarySettings(form.settings());
}

void MainWindow::SlotSetMainWindowGeometry(int left, int top, int wid, int hgt)
{
    geometryRestored = true;
    // The stored rectangle may come from another set of screens, or from a
    // damaged file: the window never comes up larger than a screen or off it.
    // The rectangle is the window's inside; the frame comes around it. Before
    // the first show the frame is not known, so room for a title bar and a
    // thin border is kept.
    QMargins frame(geometry().left() - frameGeometry().left(),
                   geometry().top() - frameGeometry().top(),
                   frameGeometry().right() - geometry().right(),
                   frameGeometry().bottom() - geometry().bottom());
    if (frame.isNull()) {
        const int border = style()->pixelMetric(QStyle::PM_DefaultFrameWidth) + 2;
        frame = QMargins(border, style()->pixelMetric(QStyle::PM_TitleBarHeight) + border, border,
                         border);
    }
    QList<QRect> screens;
    for (const QScreen* screen : QGuiApplication::screens())
        screens << screen->availableGeometry().marginsRemoved(frame);
    const QRect fitted = FitWindowGeometry(left, top, wid, hgt, screens);
    if (fitted.left() != left || fitted.top() != top || fitted.width() != wid ||
        fitted.height() != hgt)
        std::fprintf(stderr,
                     "Tesk: settings: the window rectangle %d,%d %dx%d does not fit the screens; "
                     "using %d,%d %dx%d\n",
                     left, top, wid, hgt, fitted.left(), fitted.top(), fitted.width(),
                     fitted.height());
    setGeometry(fitted);
}

void MainWindow::moveEvent(QMoveEvent* event)
{
    QMainWindow::moveEvent(event);
    const QRect g = geometry();
    manager->SetWindowGeometry(g.left(), g.top(), g.width(), g.height());
}

void MainWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    const QRect g = geometry();
    manager->SetWindowGeometry(g.left(), g.top(), g.width(), g.height());
}

int MainWindow::PreferredWidth()
{
    // The table at its starting widths, the tree beside it, the splitter's
    // handle and the layout's margins.
    const int table = widgetTableBrowser->preferredTableWidth();
    int left = 0;
    int right = 0;
    centralWidget()->layout()->getContentsMargins(&left, nullptr, &right, nullptr);
    return table + kComfortableTreeWidth + splitter->handleWidth() + left + right;
}

void MainWindow::SlotSystemDarkChanged(bool dark)
{
    if (manager->GetColorTheme() == TeskManager::System)
        ApplyTeskStyle(manager, dark ? 1 : 0);
}

void MainWindow::SlotOpenParentDirByExplorer(QString filePath)
{
    RevealInFileManager(filePath, this);
}

void MainWindow::askBookmarkName()
{
    const QString root = manager->GetRootPath();
    if (!QFileInfo(root).isDir())
        return;
    QString name;
    // Cancelling or an empty name also turns the star toggle back off.
    if (AskBookmarkName(this, QDir(root).dirName(), &name) && !name.isEmpty())
        manager->AddBookmark(name);
    else
        manager->RemoveBookmark();
}

void MainWindow::SlotChangeBookmarkCalled(bool flag)
{
    if (flag)
        askBookmarkName();
    else
        manager->RemoveBookmark();
}

void MainWindow::SlotSelectFromAction()
{
    const auto* action = qobject_cast<QAction*>(sender());
    if (!action || action->text().isEmpty())
        return;
    manager->SlotChangeRootPathCalled(action->text());
}

void MainWindow::SlotSelectFromBookmark()
{
    const auto* action = qobject_cast<QAction*>(sender());
    if (!action)
        return;
    const QString path = action->data().toString();
    if (!path.isEmpty())
        manager->SlotChangeRootPathCalled(path);
}

void MainWindow::SlotOpenRootByExplorer()
{
    const QString root = manager->GetRootPath();
    if (root.isEmpty() || !QFileInfo(root).isDir())
        return;
    QDesktopServices::openUrl(QUrl::fromLocalFile(root));
}

void MainWindow::SlotRowHeightEnlarge()
{
    manager->SetRowHeight(qMin(manager->GetRowHeight() + kRowHeightStep, kMaxRowHeight));
}

void MainWindow::SlotRowHeightShrink()
{
    manager->SetRowHeight(qMax(manager->GetRowHeight() - kRowHeightStep, kMinRowHeight));
}

void MainWindow::SlotRowHeightDefault()
{
    manager->SetRowHeight(kDefaultRowHeight);
}

void MainWindow::SlotSeekForward()
{
    manager->SeekPlayback(false);
}

void MainWindow::SlotSeekBackward()
{
    manager->SeekPlayback(true);
}

void MainWindow::SlotBookmarkAddMenuSelected()
{
    askBookmarkName();
}

void MainWindow::SlotBookmarkDeleteMenuSelected()
{
    manager->RemoveBookmark();
}

void MainWindow::SlotMenuQuit()
{
    close();
}

void MainWindow::SlotMenuAbout()
{
    QMessageBox::about(this, QStringLiteral("About"),
                       QStringLiteral("Tesk Ver %1").arg(manager->GetVersion()));
}

void MainWindow::SlotShowSortSettings()
{
    if (!sortSettings) {
        sortSettings = new subFormSortSettings(this);
        sortSettings->setWindowFlag(Qt::Window, true);
        connect(sortSettings, &subFormSortSettings::SigSortSettingApplied, this,
                &MainWindow::SlotSortSettingsApplied);
        connect(sortSettings, &subFormSortSettings::SigChangeRootPathCalled, manager,
                &TeskManager::SlotChangeRootPathCalled);
        connect(manager, &TeskManager::SigFilePathListAcquired, sortSettings,
                &subFormSortSettings::SlotFileListAcquired);
    }
    if (sortSettings->isHidden()) {
        sortSettings->setRelativeRoot(manager->GetRootPath());
        sortSettings->show();
    } else {
        sortSettings->activateWindow();
    }
}

void MainWindow::SlotOpenSettingsForm()
{
    subFormToolSettings form(manager->GetExternalToolPath(), manager->GetExternalToolArgs(),
                             manager->GetSeekTimeMs(), this);
    form.setMatchLoudness(manager->IsMatchLoudness(), manager->GetMatchLoudnessTarget(),
                          manager->GetMatchLoudnessMaxBoost());
    form.setOutputDevices(manager->GetOutputDevices(), manager->GetOutputDevice());
    form.setUcsCatIdListPath(manager->GetUcsCatIdListPath());
    form.setAnalysisThreads(manager->GetAnalysisThreads(), AnalysisPass::DefaultWorkerCount());
    if (form.exec() != QDialog::Accepted)
        return;
    manager->SetAnalysisThreads(form.analysisThreads());
    manager->SetExternalTool(form.toolPath(), form.toolArgs());
    manager->SetSeekTimeMs(form.seekTimeMs());
    manager->SetMatchLoudnessLimits(form.matchTargetLufs(), form.matchMaxBoostDb());
    manager->SlotChangeMatchLoudnessCalled(form.matchLoudness());
    manager->SetOutputDevice(form.outputDevice());
    manager->SetUcsCatIdListPath(form.ucsCatIdListPath());
}

void MainWindow::SlotChangeColorTheme(TeskManager::ColorTheme)
{
    // The style reads the theme from the manager; a new style object makes
    // every widget take the new palette.
    ApplyTeskStyle(manager);
}

void MainWindow::SlotChangeColor(TeskManager::ColorTheme theme)
{
    manager->SetColorTheme(theme);
}

void MainWindow::SlotOpenFontForm()
{
    if (!fontForm) {
        fontForm = new SubFormFont(manager->GetFontSettings(), this);
        connect(fontForm, &SubFormFont::SigChangeFont, manager, &TeskManager::SigChangeFont);
    }
    if (!fontForm->isVisible())
        fontForm->show();
    fontForm->raise();
}

void MainWindow::SlotOpenBookmarkManager()
{
    subFormBookmark form(this, manager->GetBookmarks(), manager->GetRootPath());
    if (form.exec() == QDialog::Accepted)
        manager->SetBookmarks(form.bookmarks());
}

void MainWindow::SlotSortSettingsApplied()
{
    // The table's place may still hold a plain placeholder; the order is
    // imposed once the real browser sits there.
    ApplySortSettings(sortSettings, qobject_cast<WidgetTableBrowser*>(widgetTableBrowser));
}

void MainWindow::SlotGacOpenSettings()
{
    subFormGAC dialog(manager->GetGacAddress(), manager->GetGacPort(), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    manager->SetGacAddress(dialog.address());
    manager->SetGacPort(dialog.port());
    gacManager->SetServer(manager->GetGacAddress(), manager->GetGacPort());
}

void MainWindow::SlotGacToggleConnection()
{
    switch (gacManager->GetState()) {
    case GacManager::NotConnected:
        gacManager->StartConnecting();
        break;
    case GacManager::WaitingConnection:
        // Returns at once: an attempt the SDK holds is abandoned.
        gacManager->StopConnecting();
        updateGacMenu();
        break;
    case GacManager::Connected:
        // The program never closes an established connection itself.
        QMessageBox::information(
            this, tr("Game Audio Connect"),
            tr("To close the connection, please disable the network connection of Game Audio "
               "Connect server."));
        break;
    }
}

void MainWindow::updateGacMenu()
{
    switch (gacManager->GetState()) {
    case GacManager::WaitingConnection:
        menuBarWidget->SetNuendoStatusText(tr("[Waiting Connection] Stop connection"));
        break;
    case GacManager::Connected:
        menuBarWidget->SetNuendoStatusText(tr("[Connected]"));
        break;
    default:
        menuBarWidget->SetNuendoStatusText(tr("[Not Connected] Start connection"));
        break;
    }
}
