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

    // The Folder, View, Preview and Bookmark menus as they open.
    void menusFollowTheState()
    {
        MainWindow window;
        MenuBar* bar = window.GetMenuBar();
        TeskManager* manager = window.GetManager();
        // The store keeps the ten newest of a longer hand-made list; one
        // chosen becomes the root.
        emit menuTitled(bar, QStringLiteral("Folder"))->aboutToShow();
        QCOMPARE(visibleTexts(bar->recentFolderActions()), twelve.mid(0, 10));
        bar->recentFolderActions().at(3)->trigger();
        QCOMPARE(manager->GetRootPath(), twelve.at(3));

        // A loaded column mask ticks the entries and is not sent back; a
        // toggle sends the whole mask.
        const QList<QAction*>& columns = bar->columnVisibilityActions();
        QCOMPARE(columns.size(), int(TableColumnCount));
        QCOMPARE(columns.at(ColumnLoudness)->text(), QStringLiteral("Loudness"));
        QSignalSpy mask(bar, &MenuBar::SigColumnVisiblityChanged);
        bar->ColumnVisibleStateLoaded(0b101);
        for (int column = 0; column < 15; ++column)
            QCOMPARE(columns.at(column)->isChecked(), column == 0 || column == 2);
        columns.at(14)->trigger();
        columns.at(0)->trigger();
        QCOMPARE(mask.count(), 2);
        QCOMPARE(mask.at(0).at(0).toInt(), 0b101 | (1 << 14));
        QCOMPARE(manager->GetColumnVisibleState(), 0b100 | (1 << 14));

        // Seeking is offered from the open Preview menu only while playing.
        QMenu* preview = menuTitled(bar, QStringLiteral("Preview"));
        QVERIFY(!manager->GetKrokManager()->IsPlaying());
        emit preview->aboutToShow();
        QVERIFY(!bar->seekForwardAction()->isEnabled() && !bar->seekBackwardAction()->isEnabled());
        emit preview->aboutToHide();
        QVERIFY(bar->seekForwardAction()->isEnabled() && bar->seekBackwardAction()->isEnabled());

        // One entry a bookmark; one bookmark fewer hides the extra entry.
        QMenu* bookmarks = menuTitled(bar, QStringLiteral("Bookmark"));
        manager->SetBookmarks({{"/sfx/doors", "Doors"}, {"/sfx/rain", "Rain"}});
        emit bookmarks->aboutToShow();
        const QList<QAction*> entries = bookmarks->actions();
        const auto rain = std::find_if(entries.cbegin(), entries.cend(), [](QAction* a) {
            return a->text() == QLatin1String("Rain") && a->isVisible();
        });
        QVERIFY(rain != entries.cend());
        (*rain)->trigger();
        QCOMPARE(manager->GetRootPath(), QStringLiteral("/sfx/rain"));
        manager->SetBookmarks({{"/sfx/doors", "Doors"}});
        emit bookmarks->aboutToShow();
        QVERIFY(!(*rain)->isVisible());
    }

    void everyShortcutReachesItsEntry_data()
    {
        QTest::addColumn<QKeySequence>("keys");
        QTest::addColumn<QString>("entry");
        const std::pair<const char*, const char*> rows[] = {
            {"Ctrl+O", "Select a folder..."},
            {"Ctrl+Shift+O", "Show in File Manager"},
            {"Ctrl++", "Enlarge"},
            {"Ctrl+-", "Shrink"},
            {"Ctrl+0", "Reset to Default Settings"},
            {"Space", "Playback"},
            {"Esc", "Stop"},
            {"T", "Seek forward"},
            {"R", "Seek backward"},
            {"Ctrl+S", "Play selected tracks"},
            {"Ctrl+P", "Enable Playlist Playback"},
            {"Ctrl+D", "Add to Bookmarks"},
            {"Ctrl+Q", "Exit"}};
        for (const auto& [keys, entry] : rows)
            QTest::newRow(keys) << QKeySequence(QLatin1String(keys)) << QString::fromLatin1(entry);
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
        const int height = manager->GetRowHeight();
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        if (name == QLatin1String("Esc")) {
            // Playlist mode arms its timer on a play request; Stop disarms it.
            manager->SlotChangePlaylistFlagCalled(true);
            manager->SlotStartPlaybackCalled(QStringLiteral("/no/such/file.wav"));
            QVERIFY(manager->GetPlaylistTimer()->isActive());
        }
        QTest::keySequence(&window, keys);
        QCOMPARE(triggered.count(), 1);
        if (name == QLatin1String("Ctrl++"))
            QCOMPARE(manager->GetRowHeight(), height + 2);
        else if (name == QLatin1String("Ctrl+-"))
            QCOMPARE(manager->GetRowHeight(), qMax(height - 2, 10));
        else if (name == QLatin1String("Ctrl+Q"))
            QTRY_VERIFY(!window.isVisible());
        else if (name == QLatin1String("Esc"))
            QVERIFY(!manager->GetPlaylistTimer()->isActive());
    }
};

QTEST_MAIN(TestFindMenuBar)
#include "tst_findmenubar.moc"
