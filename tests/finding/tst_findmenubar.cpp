#include "KrokManager.h"
#include "MainWindow.h"
#include "MenuBar.h"
#include "TeskManager.h"
#include "TestSettings.h"
#include "krokTableModel.h"

#include <QAction>
#include <QMenu>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QMenu* menuTitled(QMenuBar* bar, const QString& title)
{
    for (QAction* action : bar->actions()) {
        if (action->text() == title)
            return action->menu();
    }
    return nullptr;
}

QAction* actionWithShortcut(QWidget* root, const QKeySequence& keys)
{
    for (QAction* action : root->findChildren<QAction*>()) {
        if (action->shortcut() == keys)
            return action;
    }
    return nullptr;
}

QStringList visibleTexts(const QList<QAction*>& actions)
{
    QStringList texts;
    for (QAction* action : actions) {
        if (action->isVisible())
            texts << action->text();
    }
    return texts;
}

} // namespace

class TestFindMenuBar : public QObject
{
    Q_OBJECT

    fixtures::TestSettings config;
    QStringList twelve;

private slots:
    void initTestCase()
    {
        QVERIFY(config.isValid());
        for (int k = 0; k < 12; ++k)
            twelve << QStringLiteral("/library/folder%1").arg(k);
        QSettings store(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Orvane Works"),
                        QStringLiteral("Tesk"));
        store.setValue(QStringLiteral("recentDirs"), twelve);
        store.sync();
    }

    void twelveRecentFoldersShowTen()
    {
        MainWindow window;
        QMenu* folder = menuTitled(window.GetMenuBar(), QStringLiteral("Folder"));
        QVERIFY(folder);
        // The store keeps the ten newest of a longer hand-made list.
        QCOMPARE(window.GetManager()->GetRecentFolders(), twelve.mid(0, 10));
        emit folder->aboutToShow();
        const QList<QAction*>& recent = window.GetMenuBar()->recentFolderActions();
        QCOMPARE(recent.size(), 10);
        QCOMPARE(visibleTexts(recent), twelve.mid(0, 10));

        // Choosing one makes it the root.
        recent.at(3)->trigger();
        QCOMPARE(window.GetManager()->GetRootPath(), twelve.at(3));
    }

    void columnTogglesEmitTheFullMask()
    {
        MainWindow window;
        MenuBar* bar = window.GetMenuBar();
        const QList<QAction*>& columns = bar->columnVisibilityActions();
        QCOMPARE(columns.size(), krokTableModel::columnHeaderLabels().size());
        QCOMPARE(columns.size(), int(TableColumnCount));
        QCOMPARE(columns.at(ColumnLoudness)->text(), QStringLiteral("Loudness"));
        QSignalSpy mask(bar, &MenuBar::SigColumnVisiblityChanged);

        bar->ColumnVisibleStateLoaded(0x7FFF);
        QCOMPARE(mask.count(), 0);
        columns.at(3)->trigger();
        columns.at(3)->trigger();
        QCOMPARE(mask.count(), 2);
        QCOMPARE(mask.at(0).at(0).toInt(), 0x7FFF & ~(1 << 3));
        QCOMPARE(mask.at(1).at(0).toInt(), 0x7FFF);
        QCOMPARE(window.GetManager()->GetColumnVisibleState(), 0x7FFF);

        bar->ColumnVisibleStateLoaded(0b101);
        QCOMPARE(mask.count(), 2);
        QVERIFY(columns.at(0)->isChecked());
        QVERIFY(!columns.at(1)->isChecked());
        QVERIFY(columns.at(2)->isChecked());
        QVERIFY(!columns.at(14)->isChecked());
        columns.at(14)->trigger();
        QCOMPARE(mask.last().at(0).toInt(), 0b101 | (1 << 14));
    }

    void previewMenuSeekEntries()
    {
        MainWindow window;
        MenuBar* bar = window.GetMenuBar();
        QMenu* preview = menuTitled(bar, QStringLiteral("Preview"));
        QVERIFY(preview);
        QVERIFY(!window.GetManager()->GetKrokManager()->IsPlaying());
        emit preview->aboutToShow();
        QVERIFY(!bar->seekForwardAction()->isEnabled());
        QVERIFY(!bar->seekBackwardAction()->isEnabled());
        emit preview->aboutToHide();
        QVERIFY(bar->seekForwardAction()->isEnabled());
        QVERIFY(bar->seekBackwardAction()->isEnabled());
    }

    void bookmarkEntriesAndNuendoStatus()
    {
        MainWindow window;
        MenuBar* bar = window.GetMenuBar();
        QCOMPARE(bar->nuendoStatusAction()->text(), QStringLiteral("(getting status)"));
        bar->SetNuendoStatusText(QStringLiteral("[Connected]"));
        QCOMPARE(bar->nuendoStatusAction()->text(), QStringLiteral("[Connected]"));

        window.GetManager()->SetBookmarks({{QStringLiteral("/sfx/doors"), QStringLiteral("Doors")},
                                           {QStringLiteral("/sfx/rain"), QStringLiteral("Rain")}});
        QMenu* menu = menuTitled(bar, QStringLiteral("Bookmark"));
        QVERIFY(menu);
        emit menu->aboutToShow();
        QAction* rain = nullptr;
        for (QAction* action : menu->actions()) {
            if (action->text() == QStringLiteral("Rain") && action->isVisible())
                rain = action;
        }
        QVERIFY(rain);
        QCOMPARE(rain->data().toString(), QStringLiteral("/sfx/rain"));
        rain->trigger();
        QCOMPARE(window.GetManager()->GetRootPath(), QStringLiteral("/sfx/rain"));

        // One bookmark fewer hides the extra entry.
        window.GetManager()->SetBookmarks(
            {{QStringLiteral("/sfx/doors"), QStringLiteral("Doors")}});
        emit menu->aboutToShow();
        QVERIFY(!rain->isVisible());
    }

    void everyShortcutReachesItsEntry_data()
    {
        QTest::addColumn<QKeySequence>("keys");
        QTest::addColumn<QString>("entry");
        QTest::newRow("Ctrl+O") << QKeySequence(Qt::CTRL | Qt::Key_O)
                                << QStringLiteral("Select a folder...");
        QTest::newRow("Ctrl+Shift+O") << QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O)
                                      << QStringLiteral("Show in File Manager");
        QTest::newRow("Ctrl++") << QKeySequence(Qt::CTRL | Qt::Key_Plus)
                                << QStringLiteral("Enlarge");
        QTest::newRow("Ctrl+-") << QKeySequence(Qt::CTRL | Qt::Key_Minus)
                                << QStringLiteral("Shrink");
        QTest::newRow("Ctrl+0") << QKeySequence(Qt::CTRL | Qt::Key_0)
                                << QStringLiteral("Reset to Default Settings");
        QTest::newRow("Space") << QKeySequence(Qt::Key_Space) << QStringLiteral("Playback");
        QTest::newRow("Esc") << QKeySequence(Qt::Key_Escape) << QStringLiteral("Stop");
        QTest::newRow("T") << QKeySequence(Qt::Key_T) << QStringLiteral("Seek forward");
        QTest::newRow("R") << QKeySequence(Qt::Key_R) << QStringLiteral("Seek backward");
        QTest::newRow("Ctrl+S") << QKeySequence(Qt::CTRL | Qt::Key_S)
                                << QStringLiteral("Play selected tracks");
        QTest::newRow("Ctrl+P") << QKeySequence(Qt::CTRL | Qt::Key_P)
                                << QStringLiteral("Enable Playlist Playback");
        QTest::newRow("Ctrl+D") << QKeySequence(Qt::CTRL | Qt::Key_D)
                                << QStringLiteral("Add to Bookmarks");
        QTest::newRow("Ctrl+Q") << QKeySequence(Qt::CTRL | Qt::Key_Q) << QStringLiteral("Exit");
    }

    void everyShortcutReachesItsEntry()
    {
        QFETCH(QKeySequence, keys);
        QFETCH(QString, entry);
        MainWindow window;
        TeskManager* manager = window.GetManager();
        MenuBar* bar = window.GetMenuBar();
        // The folder picker is modal; the signal itself is what is checked here.
        disconnect(bar, &MenuBar::SigShowRootPathSelectDialog, nullptr, nullptr);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));

        QAction* action = actionWithShortcut(bar, keys);
        QVERIFY(action);
        QCOMPARE(action->text(), entry);
        QVERIFY(action->isEnabled());

        QSignalSpy triggered(action, &QAction::triggered);
        QSignalSpy folderDialog(bar, &MenuBar::SigShowRootPathSelectDialog);
        QSignalSpy playback(bar, &MenuBar::SigStartPlayback);
        QSignalSpy rowHeight(manager, &TeskManager::SigRowHeightChanged);
        QSignalSpy autoPlay(manager, &TeskManager::SigAutoPlaybackFlagChanged);
        QSignalSpy playlist(manager, &TeskManager::SigPlaylistFlagChanged);
        const int height = manager->GetRowHeight();
        if (QString::fromLatin1(QTest::currentDataTag()) == QLatin1String("Esc")) {
            // Playlist mode arms its timer on a play request; Stop disarms it.
            manager->SlotChangePlaylistFlagCalled(true);
            manager->SlotStartPlaybackCalled(QStringLiteral("/no/such/file.wav"));
            QVERIFY(manager->GetPlaylistTimer()->isActive());
        }

        QTest::keySequence(&window, keys);
        QCOMPARE(triggered.count(), 1);

        const QString name = QString::fromLatin1(QTest::currentDataTag());
        if (name == QLatin1String("Ctrl+O"))
            QCOMPARE(folderDialog.count(), 1);
        else if (name == QLatin1String("Space"))
            QCOMPARE(playback.count(), 1);
        else if (name == QLatin1String("Ctrl++"))
            QCOMPARE(manager->GetRowHeight(), height + 2);
        else if (name == QLatin1String("Ctrl+-"))
            QCOMPARE(manager->GetRowHeight(), qMax(height - 2, 10));
        else if (name == QLatin1String("Ctrl+0"))
            QCOMPARE(rowHeight.count(), 1);
        else if (name == QLatin1String("Ctrl+S"))
            QCOMPARE(autoPlay.count(), 1);
        else if (name == QLatin1String("Ctrl+P"))
            QCOMPARE(playlist.count(), 1);
        else if (name == QLatin1String("Ctrl+Q"))
            QTRY_VERIFY(!window.isVisible());
        else if (name == QLatin1String("Esc"))
            QVERIFY(!manager->GetPlaylistTimer()->isActive());
    }
};

QTEST_MAIN(TestFindMenuBar)
#include "tst_findmenubar.moc"
