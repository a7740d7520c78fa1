// Bookmarks end to end: the manager's operations, the main window's prompt
// behind the menu and the star toggle, persistence through the settings, and
// the Bookmark Manager dialog.
#include "MainWindow.h"
#include "ModalAnswer.h"
#include "TeskManager.h"
#include "TestSettings.h"
#include "subFormBookmark.h"

#include <QDir>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenuBar>
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

} // namespace

class tst_Bookmarks final : public QObject
{
    Q_OBJECT

    fixtures::TestSettings configDir;
    QTemporaryDir folders;

    QString folder(const char* name) const
    {
        const QString path = QDir(folders.path()).filePath(QLatin1String(name));
        QDir().mkpath(path);
        return path;
    }

private slots:
    void managerKeepsOneEntryAFolder()
    {
        const QString sfx = folder("Sfx"), music = folder("Music");
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
        const QString sfx = folder("Sfx");
        configDir.clear();
        MainWindow window;
        TeskManager* manager = window.GetManager();
        manager->SlotChangeRootPathCalled(sfx);
        QSignalSpy state(manager, &TeskManager::SigCurrentDirBookmarkChanged);
        // An emptied name adds nothing.
        AnswerName(QString(), true);
        window.SlotBookmarkAddMenuSelected();
        QVERIFY(manager->GetBookmarks().isEmpty());

        QString shown;
        AnswerName(QStringLiteral("Effects"), true, &shown);
        window.SlotChangeBookmarkCalled(true);
        QCOMPARE(shown, QStringLiteral("Sfx"));
        QCOMPARE(manager->GetBookmarks(), (BookmarkList{{sfx, QStringLiteral("Effects")}}));
        QVERIFY(States(state).startsWith('0') && States(state).endsWith(QStringLiteral("01")));

        // The Bookmark menu offers only the entry that applies.
        const auto enabled = [&window] {
            QString on;
            for (QAction* a : window.menuBar()->findChildren<QAction*>()) {
                if (a->text() == QLatin1String("Add to Bookmarks") ||
                    a->text() == QLatin1String("Delete Bookmarks"))
                    on += a->text().left(3) + (a->isEnabled() ? "+" : "-");
            }
            return on;
        };
        QCOMPARE(enabled(), QString("Add-Del+"));
        window.SlotChangeBookmarkCalled(false);
        QVERIFY(manager->GetBookmarks().isEmpty());
        QCOMPARE(enabled(), QString("Add+Del-"));
    }

    void managerDialogEditsTheList()
    {
        subFormBookmark form(nullptr, {{"/s/a", "A"}, {"/s/b", "B"}, {"/s/c", "C"}},
                             folders.path());
        auto* t = form.findChild<QTableWidget*>(QStringLiteral("tableBookmarks"));
        QCOMPARE(t->editTriggers(), QAbstractItemView::NoEditTriggers);
        const auto press = [&form](const char* name) {
            form.findChild<QPushButton*>(QLatin1String(name))->click();
        };
        const auto select = [t](int row) {
            t->clearSelection();
            t->item(row, 0)->setSelected(true);
            t->item(row, 1)->setSelected(true);
        };
        // The moved row stays selected, so repeated presses keep moving it;
        // paths travel with their names.
        select(0);
        for (const char* button : {"buttonUp", "buttonDown", "buttonDown", "buttonDown"})
            press(button);
        QCOMPARE(Names(form.bookmarks()), QStringLiteral("BCA"));
        press("buttonTop");
        QCOMPARE(Names(form.bookmarks()), QStringLiteral("ABC"));
        press("buttonBottom");
        QCOMPARE(Names(form.bookmarks()), QStringLiteral("BCA"));
        QVERIFY(t->item(2, 1)->isSelected());
        for (const Bookmark& b : form.bookmarks())
            QCOMPARE(b.path, "/s/" + b.name.toLower());

        // Renamed through the name dialog; cancelled, nothing changes.
        QString shown;
        AnswerName(QStringLiteral("Explosions"), true, &shown);
        emit t->itemDoubleClicked(t->item(0, 0));
        QCOMPARE(shown, QStringLiteral("B"));
        AnswerName(QStringLiteral("Ignored"), false);
        emit t->itemDoubleClicked(t->item(0, 0));
        QCOMPARE(Names(form.bookmarks()), QStringLiteral("ExplosionsCA"));

        // Every selected row is deleted, and with no selection the row buttons rest.
        t->clearSelection();
        t->item(0, 1)->setSelected(true);
        t->item(2, 0)->setSelected(true);
        press("buttonDelete");
        QCOMPARE(Names(form.bookmarks()), QStringLiteral("C"));
        for (const char* name : {"buttonEdit", "buttonDelete", "buttonUp", "buttonBottom"})
            QVERIFY(!form.findChild<QPushButton*>(QLatin1String(name))->isEnabled());
    }
};

QTEST_MAIN(tst_Bookmarks)
#include "tst_bookmarks.moc"
