// Bookmarks end to end: the manager's operations, the main window's prompt
// behind the menu and the star toggle, and persistence through the settings.
#include "MainWindow.h"
#include "MenuBar.h"
#include "ModalAnswer.h"
#include "TeskManager.h"
#include "TestSettings.h"

#include <QApplication>
#include <QDir>
#include <QInputDialog>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace {

// Answers the next bookmark-name prompt with `text`, or cancels it.
void AnswerName(const QString& text, bool confirm, QString* shown = nullptr)
{
    fixtures::AnswerNextModal<QInputDialog>([=](QInputDialog* input) {
        if (shown)
            *shown = input->textValue();
        input->setTextValue(text);
        confirm ? input->accept() : input->reject();
    });
}

} // namespace

class tst_Bookmarks final : public QObject
{
    Q_OBJECT

private:
    fixtures::TestSettings configDir;
    QTemporaryDir folders;
    QString sfx, music;

    static QStringList names(const BookmarkList& list)
    {
        QStringList out;
        for (const Bookmark& b : list)
            out << b.name;
        return out;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(configDir.isValid());
        sfx = QDir(folders.path()).filePath(QStringLiteral("Sfx"));
        music = QDir(folders.path()).filePath(QStringLiteral("Music"));
        QVERIFY(QDir().mkpath(sfx));
        QVERIFY(QDir().mkpath(music));
    }

    void init() { configDir.clear(); }

    void addingTwiceRenames()
    {
        TeskManager manager;
        manager.SlotChangeRootPathCalled(sfx);
        QSignalSpy state(&manager, &TeskManager::SigCurrentDirBookmarkChanged);
        manager.AddBookmark(QStringLiteral("Effects"));
        manager.AddBookmark(QStringLiteral("Impacts"));
        QCOMPARE(manager.GetBookmarks(), (BookmarkList{{sfx, QStringLiteral("Impacts")}}));
        QCOMPARE(state.count(), 2);
        QCOMPARE(state.last().at(0).toBool(), true);
    }

    void removeTakesEveryEntryOfTheRoot()
    {
        TeskManager manager;
        manager.SlotChangeRootPathCalled(sfx);
        manager.SetBookmarks({{sfx, "a"}, {music, "m"}, {sfx, "b"}, {sfx + "/", "c"}});
        QVERIFY(manager.IsRootBookmarked());
        QSignalSpy state(&manager, &TeskManager::SigCurrentDirBookmarkChanged);
        manager.RemoveBookmark();
        // One folder, one spelling: a trailing slash names the same folder.
        QCOMPARE(names(manager.GetBookmarks()), (QStringList{"m"}));
        QCOMPARE(state.count(), 1);
        QCOMPARE(state.at(0).at(0).toBool(), false);
    }

    void setReportsWhetherTheRootIsListed()
    {
        TeskManager manager;
        manager.SlotChangeRootPathCalled(music);
        QSignalSpy state(&manager, &TeskManager::SigCurrentDirBookmarkChanged);
        manager.SetBookmarks({{sfx, "s"}});
        manager.SetBookmarks({{sfx, "s"}, {music, "m"}});
        manager.SetBookmarks({{sfx, "s"}, {music, "m"}}); // unchanged, still reported
        QCOMPARE(state.count(), 3);
        QCOMPARE(state.at(0).at(0).toBool(), false);
        QCOMPARE(state.at(1).at(0).toBool(), true);
        QCOMPARE(state.at(2).at(0).toBool(), true);
    }

    void emptyRootDoesNothing()
    {
        TeskManager manager;
        QSignalSpy state(&manager, &TeskManager::SigCurrentDirBookmarkChanged);
        manager.AddBookmark(QStringLiteral("x"));
        manager.RemoveBookmark();
        QVERIFY(manager.GetBookmarks().isEmpty());
        QCOMPARE(state.count(), 0);
    }

    void vanishedFolderStaysListedAndPersists()
    {
        const QString gone = QDir(folders.path()).filePath(QStringLiteral("Gone"));
        {
            TeskManager manager;
            manager.SetBookmarks({{gone, "Gone"}, {sfx, "Sfx"}});
            manager.SaveSettings(0, 0, 800, 600);
        }
        TeskManager manager;
        manager.ApplyStoredSettings();
        QCOMPARE(manager.GetBookmarks(), (BookmarkList{{gone, "Gone"}, {sfx, "Sfx"}}));
        manager.SlotChangeRootPathCalled(gone);
        QVERIFY(manager.IsRootBookmarked());
    }

    void starToggleAndMenu()
    {
        MainWindow window;
        TeskManager* manager = window.GetManager();
        manager->SlotChangeRootPathCalled(sfx);
        QSignalSpy state(manager, &TeskManager::SigCurrentDirBookmarkChanged);

        // Switching the star on and cancelling the prompt leaves it off.
        AnswerName(QStringLiteral("ignored"), false);
        window.SlotChangeBookmarkCalled(true);
        QVERIFY(manager->GetBookmarks().isEmpty());
        QCOMPARE(state.count(), 1);
        QCOMPARE(state.last().at(0).toBool(), false);

        // An emptied name counts as a cancel.
        AnswerName(QString(), true);
        window.SlotBookmarkAddMenuSelected();
        QVERIFY(manager->GetBookmarks().isEmpty());
        QCOMPARE(state.last().at(0).toBool(), false);

        QString shown;
        AnswerName(QStringLiteral("Effects"), true, &shown);
        window.SlotChangeBookmarkCalled(true);
        QCOMPARE(shown, QStringLiteral("Sfx"));
        QCOMPARE(manager->GetBookmarks(), (BookmarkList{{sfx, QStringLiteral("Effects")}}));
        QCOMPARE(state.last().at(0).toBool(), true);

        auto* menu = qobject_cast<MenuBar*>(window.menuBar());
        QVERIFY(menu);
        QAction* add = nullptr;
        QAction* remove = nullptr;
        for (QAction* action : menu->findChildren<QAction*>()) {
            if (action->text() == QLatin1String("Add to Bookmarks"))
                add = action;
            if (action->text() == QLatin1String("Delete Bookmarks"))
                remove = action;
        }
        QVERIFY(add && remove);
        QVERIFY(!add->isEnabled());
        QVERIFY(remove->isEnabled());

        window.SlotChangeBookmarkCalled(false);
        QVERIFY(manager->GetBookmarks().isEmpty());
        QVERIFY(add->isEnabled());
        QVERIFY(!remove->isEnabled());

        // A root that no longer exists is not offered a bookmark at all.
        manager->SlotChangeRootPathCalled(QDir(folders.path()).filePath(QStringLiteral("nope")));
        const int before = state.count();
        window.SlotBookmarkAddMenuSelected();
        QCOMPARE(state.count(), before);
    }
};

QTEST_MAIN(tst_Bookmarks)
#include "tst_bookmarks.moc"
