#include "MainWindow.h"

#include "BookmarkNameDialog.h"
#include "CommandLineRoot.h"
#include "DefaultWindowGeometry.h"
#include "FileManagerReveal.h"
#include "GacManager.h"
#include "MenuBar.h"
#include "SortSettingsApplication.h"
#include "SubFormFont.h"
#include "TeskStyle.h"
#include "WidgetPlayer.h"
#include "WidgetRootPath.h"
#include "WidgetSearch.h"
#include "WidgetTableBrowser.h"
#include "WidgetTreeBrowser.h"
#include "subFormBookmark.h"
#include "subFormGAC.h"
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
#include <QTimer>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>

namespace {

constexpr int kRowHeightStep = 2;
constexpr int kMinRowHeight = 10;

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
    widgetTableBrowser = new WidgetTableBrowser(manager, gacManager, splitter);
    splitter->addWidget(widgetTreeBrowser);
    splitter->addWidget(widgetTableBrowser);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 3);
    outer->addWidget(splitter, 1);
    const int w = splitter->width();
    splitter->setSizes({w / 4, 3 * w / 4});

    setMenuBar(menuBarWidget);

    statusLabel = new QLabel(QString(), this);
    statusLabel->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    statusBar()->addWidget(statusLabel, 1);

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
    connect(widgetPlayer, &WidgetPlayer::SigStartCalled, widgetTableBrowser,
            &WidgetTableBrowser::SlotSelectedItemPlaybackCalled);
    connect(widgetTreeBrowser, &WidgetTreeBrowser::SigShowInExplorer, this,
            &MainWindow::SlotOpenParentDirByExplorer);
    connect(widgetRootPath, &WidgetRootPath::SigBookmarkFlagChangeRequired, this,
            &MainWindow::SlotChangeBookmarkCalled);
    connect(menuBarWidget, &MenuBar::SigShowRootPathSelectDialog, widgetRootPath,
            &WidgetRootPath::SlotShowRootPathSelectDialog);
    connect(menuBarWidget, &MenuBar::SigColumnVisiblityChanged, widgetTableBrowser,
            &WidgetTableBrowser::SlotColumnVisibleChanged);
    connect(menuBarWidget, &MenuBar::SigStartPlayback, widgetTableBrowser,
            &WidgetTableBrowser::SlotSelectedItemPlaybackCalled);
    widgetRootPath->SetManager(manager);
    widgetSearch->SetManager(manager);
    widgetPlayer->ConnectManager(manager);
    connect(widgetTableBrowser, &WidgetTableBrowser::SigOpenByNuendoCalled, gacManager,
            &GacManager::OpenByNuendo);

    searchShortcut = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_F), this);
    searchShortcut->setContext(Qt::WindowShortcut);
    connect(searchShortcut, &QShortcut::activated, widgetSearch,
            &WidgetSearch::SlotFocusSearchTextbox);
    setWindowIcon(QIcon(QStringLiteral(":/images/tesk.png")));

    manager->GetFontSettings()->SetDefaultFont(QApplication::font().family(),
                                               QApplication::font().pointSize());
    manager->ApplyStoredSettings();
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

void MainWindow::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    // Before the first show the splitter has only its default width, so the
    // quarter for the tree is taken again once the layout has given it its own.
    if (!splitterSized) {
        splitterSized = true;
        const int w = splitter->width();
        splitter->setSizes({w / 4, 3 * w / 4});
    }
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
    const auto answer = QMessageBox::question(
        this, tr("Clear Analysis Library"),
        tr("Remove every stored analysis result? Files are read and analysed again the next time "
           "their folder is opened."),
        QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer == QMessageBox::Yes)
        manager->SlotClearAnalysisLibraryCalled();
}

void MainWindow::SlotSetMainWindowGeometry(int left, int top, int wid, int hgt)
{
    setGeometry(left, top, wid, hgt);
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
    manager->SetRowHeight(manager->GetRowHeight() + kRowHeightStep);
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
    if (form.exec() != QDialog::Accepted)
        return;
    manager->SetExternalTool(form.toolPath(), form.toolArgs());
    manager->SetSeekTimeMs(form.seekTimeMs());
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
        SlotSetWaitCursor();
        gacManager->StopConnecting();
        SlotRestoreCursor();
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
