// Bookmarks end to end: the manager's operations, the main window's prompt
// behind the menu and the star toggle, persistence through the settings, and
// the Bookmark Manager dialog.
#include "MainWindow.h"
#include "MenuBar.h"
#include "ModalAnswer.h"
#include "TeskManager.h"
#include "TestSettings.h"
#include "subFormBookmark.h"

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
    fixtures::AnswerNextModal<QInputDialog>([=](QInputDialog* input) {
        if (seenDefault)
            *seenDefault = input->textValue();
        input->setTextValue(text);
        confirm ? input->accept() : input->reject();
    });
}

void AnswerFolder(const QString& folder)
{
    fixtures::AnswerNextModal<QFileDialog>([=](QFileDialog* files) {
        if (folder.isEmpty())
            return files->reject();
        // An empty name field makes the dialog return the folder it shows;
        // typing the path instead races with the file system model.
        files->setDirectory(folder);
        if (auto* name = files->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")))
            name->clear();
        QMetaObject::invokeMethod(files, "accept");
    });
}

QString Names(const BookmarkList& list)
{
    QString out;
    for (const Bookmark& b : list)
        out += b.name;
    return out;
}

// Each "is the root bookmarked" report so far, as 1s and 0s.
QString States(const QSignalSpy& spy)
{
    QString out;
    for (const QList<QVariant>& args : spy)
        out += args.at(0).toBool() ? '1' : '0';
    return out;
}

QTableWidget* Table(subFormBookmark& form)
{
    return form.findChild<QTableWidget*>(QStringLiteral("tableBookmarks"));
}
QPushButton* Button(subFormBookmark& form, const QString& name)
{
    return form.findChild<QPushButton*>(name);
}
void SelectRow(subFormBookmark& form, int row)
{
    Table(form)->clearSelection();
    Table(form)->item(row, 0)->setSelected(true);
    Table(form)->item(row, 1)->setSelected(true);
}
const BookmarkList kThree{{"/s/a", "A"}, {"/s/b", "B"}, {"/s/c", "C"}};

} // namespace

class tst_Bookmarks final : public QObject
{
    Q_OBJECT

    fixtures::TestSettings configDir;
    QTemporaryDir folders;
    QString sfx, music;

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

    void managerKeepsOneEntryAFolder()
    {
        TeskManager manager;
        QSignalSpy state(&manager, &TeskManager::SigCurrentDirBookmarkChanged);
        // No root: nothing to add or remove.
        manager.AddBookmark(QStringLiteral("x"));
        manager.RemoveBookmark();
        QVERIFY(manager.GetBookmarks().isEmpty());
        QCOMPARE(States(state), QString());

        manager.SlotChangeRootPathCalled(sfx);
        state.clear();
        // Adding twice renames.
        manager.AddBookmark(QStringLiteral("Effects"));
        manager.AddBookmark(QStringLiteral("Impacts"));
        QCOMPARE(manager.GetBookmarks(), (BookmarkList{{sfx, QStringLiteral("Impacts")}}));
        // Removing takes every entry of the root, a trailing slash names the same folder.
        manager.SetBookmarks({{sfx, "a"}, {music, "m"}, {sfx, "b"}, {sfx + "/", "c"}});
        manager.RemoveBookmark();
        QCOMPARE(Names(manager.GetBookmarks()), QStringLiteral("m"));
        // Setting reports whether the root is listed, changed or not.
        manager.SetBookmarks({{music, "m"}});
        QCOMPARE(States(state), QStringLiteral("11100"));

        // A vanished folder stays listed and persists.
        const QString gone = QDir(folders.path()).filePath(QStringLiteral("Gone"));
        manager.SetBookmarks({{gone, "Gone"}, {sfx, "Sfx"}});
        manager.SaveSettings(0, 0, 800, 600);
        TeskManager next;
        next.ApplyStoredSettings();
        QCOMPARE(next.GetBookmarks(), (BookmarkList{{gone, "Gone"}, {sfx, "Sfx"}}));
        next.SlotChangeRootPathCalled(gone);
        QVERIFY(next.IsRootBookmarked());
    }

    void starToggleAndMenu()
    {
        MainWindow window;
        TeskManager* manager = window.GetManager();
        manager->SlotChangeRootPathCalled(sfx);
        QSignalSpy state(manager, &TeskManager::SigCurrentDirBookmarkChanged);
        // Cancelling the prompt, or emptying the name, adds nothing.
        AnswerName(QStringLiteral("ignored"), false);
        window.SlotChangeBookmarkCalled(true);
        AnswerName(QString(), true);
        window.SlotBookmarkAddMenuSelected();
        QVERIFY(manager->GetBookmarks().isEmpty());

        QString shown;
        AnswerName(QStringLiteral("Effects"), true, &shown);
        window.SlotChangeBookmarkCalled(true);
        QCOMPARE(shown, QStringLiteral("Sfx"));
        QCOMPARE(manager->GetBookmarks(), (BookmarkList{{sfx, QStringLiteral("Effects")}}));
        QVERIFY(States(state).startsWith('0') && States(state).endsWith(QStringLiteral("01")));

        QAction* add = nullptr;
        QAction* remove = nullptr;
        for (QAction* action : window.menuBar()->findChildren<QAction*>()) {
            if (action->text() == QLatin1String("Add to Bookmarks"))
                add = action;
            if (action->text() == QLatin1String("Delete Bookmarks"))
                remove = action;
        }
        QVERIFY(add && remove);
        QVERIFY(!add->isEnabled() && remove->isEnabled());
        window.SlotChangeBookmarkCalled(false);
        QVERIFY(manager->GetBookmarks().isEmpty());
        QVERIFY(add->isEnabled() && !remove->isEnabled());

        // A root that no longer exists is not offered a bookmark at all.
        manager->SlotChangeRootPathCalled(QDir(folders.path()).filePath(QStringLiteral("nope")));
        const int before = state.count();
        window.SlotBookmarkAddMenuSelected();
        QCOMPARE(state.count(), before);
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
        row("bottom on the last does nothing", 3, 2, "buttonBottom", 1, "ABC", 2);
        row("top", 3, 2, "buttonTop", 1, "CAB", 0);
        row("bottom", 3, 0, "buttonBottom", 1, "BCA", 2);
        // The moved row stays selected, so repeated presses keep moving it.
        row("down three times", 3, 0, "buttonDown", 3, "BCA", 2);
        row("up twice", 3, 2, "buttonUp", 2, "CAB", 0);
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
        subFormBookmark form(nullptr, kThree.mid(0, count), QString());
        SelectRow(form, row);
        for (int i = 0; i < presses; ++i)
            Button(form, button)->click();
        QCOMPARE(Names(form.bookmarks()), expected);
        // Paths travel with their names.
        for (const Bookmark& b : form.bookmarks())
            QCOMPARE(b.path, QStringLiteral("/s/") + b.name.toLower());
        QVERIFY(Table(form)->item(selectedRow, 0)->isSelected());
        QVERIFY(Table(form)->item(selectedRow, 1)->isSelected());
        if (row != selectedRow)
            QCOMPARE(Table(form)->currentItem(), Table(form)->item(selectedRow, 0));
    }

    void managerDialogEditsTheList()
    {
        // A folder that no longer exists stays listed: nothing is validated.
        const BookmarkList list{{"/gone/folder", "Gone"}, {"/s/b", "B"}, {"/s/b", "B"}};
        QCOMPARE(subFormBookmark(nullptr, list, QStringLiteral("/s")).bookmarks(), list);

        subFormBookmark form(nullptr, kThree, folders.path());
        QTableWidget* t = Table(form);
        QCOMPARE(t->editTriggers(), QAbstractItemView::NoEditTriggers);
        const auto enabled = [&form] {
            QString on;
            for (const char* name : {"buttonEdit", "buttonDelete", "buttonTop", "buttonUp",
                                     "buttonDown", "buttonBottom"})
                on += Button(form, QLatin1String(name))->isEnabled() ? '1' : '0';
            return on;
        };
        QCOMPARE(enabled(), QStringLiteral("000000"));
        SelectRow(form, 1);
        QCOMPARE(enabled(), QStringLiteral("111111"));

        // Renamed through the name dialog; cancelled or emptied, nothing changes.
        QString shown;
        AnswerName(QStringLiteral("Explosions"), true, &shown);
        emit t->itemDoubleClicked(t->item(1, 0));
        QCOMPARE(shown, QStringLiteral("B"));
        AnswerName(QStringLiteral("Ignored"), false);
        emit t->itemDoubleClicked(t->item(1, 0));
        AnswerName(QString(), true);
        emit t->itemDoubleClicked(t->item(1, 0));
        // "Edit" opens the same editor on the selected cell.
        t->setCurrentItem(t->item(2, 0));
        AnswerName(QStringLiteral("Edited"), true);
        Button(form, QStringLiteral("buttonEdit"))->click();
        QCOMPARE(Names(form.bookmarks()), QStringLiteral("AExplosionsEdited"));

        // Added and repointed through the folder dialog.
        const QString folder = QDir(folders.path()).filePath(QStringLiteral("Footsteps"));
        QVERIFY(QDir().mkpath(folder));
        AnswerFolder(folder);
        Button(form, QStringLiteral("buttonAdd"))->click();
        AnswerFolder(QString());
        Button(form, QStringLiteral("buttonAdd"))->click();
        QCOMPARE(Names(form.bookmarks()), QStringLiteral("AExplosionsEditedFootsteps"));
        QCOMPARE(QDir(form.bookmarks().last().path), QDir(folder));
        AnswerFolder(folder);
        emit t->itemDoubleClicked(t->item(0, 1));
        QCOMPARE(QDir(form.bookmarks().first().path), QDir(folder));
        QCOMPARE(form.bookmarks().first().name, QStringLiteral("A"));

        // Every selected row is deleted.
        t->clearSelection();
        t->item(0, 1)->setSelected(true);
        t->item(2, 0)->setSelected(true);
        Button(form, QStringLiteral("buttonDelete"))->click();
        QCOMPARE(Names(form.bookmarks()), QStringLiteral("ExplosionsFootsteps"));
        QVERIFY(t->selectedItems().isEmpty());
        QCOMPARE(enabled(), QStringLiteral("000000"));
    }
};

QTEST_MAIN(tst_Bookmarks)
#include "tst_bookmarks.moc"
