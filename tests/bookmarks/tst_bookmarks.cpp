// Bookmarks end to end: the manager's operations, the main window's prompt
// behind the menu and the star toggle, persistence through the settings, and
// the Bookmark Manager dialog.
#include "MainWindow.h"
#include "MenuBar.h"
#include "ModalAnswer.h"
#include "TeskManager.h"
#include "TestSettings.h"
#include "subFormBookmark.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

namespace {

void AnswerName(const QString& text, bool confirm, QString* seenDefault = nullptr)
{
    fixtures::AnswerNextModal<QDialog>([=](QDialog* d) {
        auto* input = qobject_cast<QInputDialog*>(d);
        if (!input) {
            d->reject();
            return;
        }
        if (seenDefault)
            *seenDefault = input->textValue();
        input->setTextValue(text);
        confirm ? input->accept() : input->reject();
    });
}

void AnswerFolder(const QString& folder)
{
    fixtures::AnswerNextModal<QDialog>([=](QDialog* d) {
        auto* files = qobject_cast<QFileDialog*>(d);
        if (!files || folder.isEmpty()) {
            d->reject();
            return;
        }
        // An empty name field makes the dialog return the folder it shows;
        // typing the path instead races with the file system model.
        files->setDirectory(folder);
        if (auto* name = files->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")))
            name->clear();
        QMetaObject::invokeMethod(files, "accept");
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

    // Each "is the root bookmarked" report so far, as 1s and 0s.
    static QString states(const QSignalSpy& spy)
    {
        QString out;
        for (const QList<QVariant>& args : spy)
            out += args.at(0).toBool() ? '1' : '0';
        return out;
    }

    static QTableWidget* table(subFormBookmark& form)
    {
        return form.findChild<QTableWidget*>(QStringLiteral("tableBookmarks"));
    }
    static void press(subFormBookmark& form, const char* name)
    {
        auto* button = form.findChild<QPushButton*>(QString::fromLatin1(name));
        QVERIFY2(button, name);
        button->click();
    }
    static void selectRow(subFormBookmark& form, int row)
    {
        table(form)->clearSelection();
        table(form)->item(row, 0)->setSelected(true);
        table(form)->item(row, 1)->setSelected(true);
    }
    static QStringList names(const subFormBookmark& form) { return names(form.bookmarks()); }
    static BookmarkList threeBookmarks() { return {{"/s/a", "A"}, {"/s/b", "B"}, {"/s/c", "C"}}; }

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
        QCOMPARE(states(state), QStringLiteral("11"));
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
        QCOMPARE(states(state), QStringLiteral("0"));
    }

    void setReportsWhetherTheRootIsListed()
    {
        TeskManager manager;
        manager.SlotChangeRootPathCalled(music);
        QSignalSpy state(&manager, &TeskManager::SigCurrentDirBookmarkChanged);
        manager.SetBookmarks({{sfx, "s"}});
        manager.SetBookmarks({{sfx, "s"}, {music, "m"}});
        manager.SetBookmarks({{sfx, "s"}, {music, "m"}}); // unchanged, still reported
        QCOMPARE(states(state), QStringLiteral("011"));
    }

    void emptyRootDoesNothing()
    {
        TeskManager manager;
        QSignalSpy state(&manager, &TeskManager::SigCurrentDirBookmarkChanged);
        manager.AddBookmark(QStringLiteral("x"));
        manager.RemoveBookmark();
        QVERIFY(manager.GetBookmarks().isEmpty());
        QCOMPARE(states(state), QString());
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
        // An emptied name counts as a cancel.
        AnswerName(QString(), true);
        window.SlotBookmarkAddMenuSelected();
        QVERIFY(manager->GetBookmarks().isEmpty());

        QString shown;
        AnswerName(QStringLiteral("Effects"), true, &shown);
        window.SlotChangeBookmarkCalled(true);
        QCOMPARE(shown, QStringLiteral("Sfx"));
        QCOMPARE(manager->GetBookmarks(), (BookmarkList{{sfx, QStringLiteral("Effects")}}));
        QVERIFY(states(state).startsWith(QStringLiteral("0")));
        QVERIFY(states(state).endsWith(QStringLiteral("01")));

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

    void showsAndReturnsTheList()
    {
        // A folder that no longer exists stays listed: nothing is validated.
        const BookmarkList list{{"/gone/folder", "Gone"}, {"/s/b", "B"}, {"/s/b", "B"}};
        subFormBookmark form(nullptr, list, QStringLiteral("/s"));
        QCOMPARE(table(form)->item(0, 1)->text(), QStringLiteral("/gone/folder"));
        QCOMPARE(form.bookmarks(), list);
        QCOMPARE(table(form)->editTriggers(), QAbstractItemView::NoEditTriggers);
    }

    void selectionEnablesTheControls()
    {
        subFormBookmark form(nullptr, threeBookmarks(), QString());
        const auto enabled = [&form] {
            QString on;
            for (const char* name : {"buttonEdit", "buttonDelete", "buttonTop", "buttonUp",
                                     "buttonDown", "buttonBottom"})
                on += form.findChild<QPushButton*>(QString::fromLatin1(name))->isEnabled() ? '1'
                                                                                           : '0';
            return on;
        };
        QCOMPARE(enabled(), QStringLiteral("000000"));
        QVERIFY(form.findChild<QPushButton*>(QStringLiteral("buttonAdd"))->isEnabled());
        selectRow(form, 1);
        QCOMPARE(enabled(), QStringLiteral("111111"));
        table(form)->clearSelection();
        QCOMPARE(enabled(), QStringLiteral("000000"));
    }

    void moves_data()
    {
        QTest::addColumn<int>("count"); // bookmarks A, B, C... listed
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("presses");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<int>("selectedRow");
        const auto row = [](const char* name, int count, int row, const char* button, int presses,
                            const char* expected, int selectedRow) {
            QTest::newRow(name) << count << row << QString::fromLatin1(button) << presses
                                << QString::fromLatin1(expected) << selectedRow;
        };
        row("up on the first does nothing", 3, 0, "buttonUp", 1, "ABC", 0);
        row("down on the last does nothing", 3, 2, "buttonDown", 1, "ABC", 2);
        row("top on the first does nothing", 3, 0, "buttonTop", 1, "ABC", 0);
        row("bottom on the last does nothing", 3, 2, "buttonBottom", 1, "ABC", 2);
        row("up", 3, 2, "buttonUp", 1, "ACB", 1);
        row("down", 3, 0, "buttonDown", 1, "BAC", 1);
        row("top", 3, 2, "buttonTop", 1, "CAB", 0);
        row("bottom", 3, 0, "buttonBottom", 1, "BCA", 2);
        // The moved row stays selected, so repeated presses keep moving it.
        row("down three times", 3, 0, "buttonDown", 3, "BCA", 2);
        row("up twice", 3, 2, "buttonUp", 2, "CAB", 0);
        row("bottom of one", 1, 0, "buttonBottom", 1, "A", 0);
        row("down of one", 1, 0, "buttonDown", 1, "A", 0);
    }

    void moves()
    {
        QFETCH(int, count);
        QFETCH(int, row);
        QFETCH(QString, button);
        QFETCH(int, presses);
        QFETCH(QString, expected);
        QFETCH(int, selectedRow);
        subFormBookmark form(nullptr, threeBookmarks().mid(0, count), QString());
        selectRow(form, row);
        for (int i = 0; i < presses; ++i)
            press(form, button.toLatin1().constData());
        QCOMPARE(names(form).join(QString()), expected);
        // Paths travel with their names.
        for (const Bookmark& b : form.bookmarks())
            QCOMPARE(b.path, QStringLiteral("/s/") + b.name.toLower());
        QVERIFY(table(form)->item(selectedRow, 0)->isSelected());
        QVERIFY(table(form)->item(selectedRow, 1)->isSelected());
        if (row != selectedRow)
            QCOMPARE(table(form)->currentItem(), table(form)->item(selectedRow, 0));
    }

    void deletesEverySelectedRow()
    {
        subFormBookmark form(nullptr, threeBookmarks(), QString());
        table(form)->item(0, 1)->setSelected(true);
        table(form)->item(2, 0)->setSelected(true);
        press(form, "buttonDelete");
        QCOMPARE(names(form), (QStringList{"B"}));
        QVERIFY(table(form)->selectedItems().isEmpty());
    }

    void renamesThroughTheNameDialog()
    {
        subFormBookmark form(nullptr, threeBookmarks(), QString());
        QTableWidget* t = table(form);
        QString shown;
        AnswerName(QStringLiteral("Explosions"), true, &shown);
        emit t->itemDoubleClicked(t->item(1, 0));
        QCOMPARE(shown, QStringLiteral("B"));
        QCOMPARE(names(form), (QStringList{"A", "Explosions", "C"}));

        AnswerName(QStringLiteral("Ignored"), false);
        emit t->itemDoubleClicked(t->item(1, 0));
        AnswerName(QString(), true);
        emit t->itemDoubleClicked(t->item(1, 0));
        QCOMPARE(names(form), (QStringList{"A", "Explosions", "C"}));

        // "Edit" opens the same editor on the selected cell.
        t->setCurrentItem(t->item(2, 0));
        AnswerName(QStringLiteral("Edited"), true);
        press(form, "buttonEdit");
        QCOMPARE(names(form), (QStringList{"A", "Explosions", "Edited"}));
    }

    void addsAndRepointsFolders()
    {
        const QString folder = QDir(folders.path()).filePath(QStringLiteral("Footsteps"));
        QVERIFY(QDir().mkpath(folder));

        subFormBookmark form(nullptr, threeBookmarks(), folders.path());
        AnswerFolder(folder);
        press(form, "buttonAdd");
        QCOMPARE(form.bookmarks().size(), 4);
        QCOMPARE(form.bookmarks().last().name, QStringLiteral("Footsteps"));
        QCOMPARE(QDir(form.bookmarks().last().path), QDir(folder));

        AnswerFolder(QString()); // cancelled: nothing added
        press(form, "buttonAdd");
        QCOMPARE(form.bookmarks().size(), 4);

        QTableWidget* t = table(form);
        AnswerFolder(folder);
        emit t->itemDoubleClicked(t->item(0, 1));
        QCOMPARE(QDir(form.bookmarks().first().path), QDir(folder));
        QCOMPARE(form.bookmarks().first().name, QStringLiteral("A"));
    }
};

QTEST_MAIN(tst_Bookmarks)
#include "tst_bookmarks.moc"
