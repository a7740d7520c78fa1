#include "ModalAnswer.h"
#include "subFormBookmark.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>

namespace {

void AnswerName(const QString& text, bool confirm, QString* seenTitle = nullptr,
                QString* seenLabel = nullptr, QString* seenDefault = nullptr)
{
    fixtures::AnswerNextModal<QDialog>([=](QDialog* d) {
        auto* input = qobject_cast<QInputDialog*>(d);
        if (!input) {
            d->reject();
            return;
        }
        if (seenTitle)
            *seenTitle = input->windowTitle();
        if (seenLabel)
            *seenLabel = input->labelText();
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

class tst_subFormBookmark final : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir;

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
    static QStringList names(const subFormBookmark& form)
    {
        QStringList out;
        for (const Bookmark& b : form.bookmarks())
            out << b.name;
        return out;
    }
    static BookmarkList threeBookmarks() { return {{"/s/a", "A"}, {"/s/b", "B"}, {"/s/c", "C"}}; }

private slots:
    void showsAndReturnsTheList()
    {
        // A folder that no longer exists stays listed: nothing is validated.
        const BookmarkList list{{"/gone/folder", "Gone"}, {"/s/b", "B"}, {"/s/b", "B"}};
        subFormBookmark form(nullptr, list, QStringLiteral("/s"));
        QCOMPARE(form.windowTitle(), QStringLiteral("Bookmark Manager"));
        QCOMPARE(table(form)->horizontalHeaderItem(0)->text(), QStringLiteral("Name"));
        QCOMPARE(table(form)->horizontalHeaderItem(1)->text(), QStringLiteral("Folder Path"));
        QCOMPARE(table(form)->item(0, 1)->text(), QStringLiteral("/gone/folder"));
        QCOMPARE(form.bookmarks(), list);
        QCOMPARE(table(form)->editTriggers(), QAbstractItemView::NoEditTriggers);
    }

    void selectionEnablesTheControls()
    {
        subFormBookmark form(nullptr, threeBookmarks(), QString());
        const char* dependent[] = {"buttonEdit", "buttonDelete", "buttonTop",
                                   "buttonUp",   "buttonDown",   "buttonBottom"};
        for (const char* name : dependent)
            QVERIFY2(!form.findChild<QPushButton*>(QString::fromLatin1(name))->isEnabled(), name);
        QVERIFY(form.findChild<QPushButton*>(QStringLiteral("buttonAdd"))->isEnabled());
        selectRow(form, 1);
        for (const char* name : dependent)
            QVERIFY2(form.findChild<QPushButton*>(QString::fromLatin1(name))->isEnabled(), name);
        table(form)->clearSelection();
        QVERIFY(!form.findChild<QPushButton*>(QStringLiteral("buttonUp"))->isEnabled());
    }

    void moves_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<int>("selectedRow");

        QTest::newRow("up on the first does nothing")
            << 0 << "buttonUp" << QStringList{"A", "B", "C"} << 0;
        QTest::newRow("down on the last does nothing")
            << 2 << "buttonDown" << QStringList{"A", "B", "C"} << 2;
        QTest::newRow("top on the first does nothing")
            << 0 << "buttonTop" << QStringList{"A", "B", "C"} << 0;
        QTest::newRow("bottom on the last does nothing")
            << 2 << "buttonBottom" << QStringList{"A", "B", "C"} << 2;
        QTest::newRow("up") << 2 << "buttonUp" << QStringList{"A", "C", "B"} << 1;
        QTest::newRow("down") << 0 << "buttonDown" << QStringList{"B", "A", "C"} << 1;
        QTest::newRow("top") << 2 << "buttonTop" << QStringList{"C", "A", "B"} << 0;
        QTest::newRow("bottom") << 0 << "buttonBottom" << QStringList{"B", "C", "A"} << 2;
    }

    void moves()
    {
        QFETCH(int, row);
        QFETCH(QString, button);
        QFETCH(QStringList, expected);
        QFETCH(int, selectedRow);

        subFormBookmark form(nullptr, threeBookmarks(), QString());
        selectRow(form, row);
        press(form, button.toLatin1().constData());
        QCOMPARE(names(form), expected);
        // Paths travel with their names.
        for (const Bookmark& b : form.bookmarks())
            QCOMPARE(b.path, QStringLiteral("/s/") + b.name.toLower());
        // The moved row stays selected, so repeated presses keep moving it.
        QVERIFY(table(form)->item(selectedRow, 0)->isSelected());
        QVERIFY(table(form)->item(selectedRow, 1)->isSelected());
        if (row != selectedRow)
            QCOMPARE(table(form)->currentItem(), table(form)->item(selectedRow, 0));
    }

    void repeatedMovesFollowTheRow()
    {
        subFormBookmark form(nullptr, threeBookmarks(), QString());
        selectRow(form, 0);
        press(form, "buttonDown");
        press(form, "buttonDown");
        press(form, "buttonDown");
        QCOMPARE(names(form), (QStringList{"B", "C", "A"}));
    }

    void movesNeedTwoRows()
    {
        subFormBookmark form(nullptr, {{"/s/a", "A"}}, QString());
        selectRow(form, 0);
        press(form, "buttonBottom");
        press(form, "buttonDown");
        QCOMPARE(names(form), (QStringList{"A"}));
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
        QString title, label, shown;

        AnswerName(QStringLiteral("Explosions"), true, &title, &label, &shown);
        emit t->itemDoubleClicked(t->item(1, 0));
        QCOMPARE(title, QStringLiteral("Vex Tesk"));
        QCOMPARE(label, QStringLiteral("Bookmark Name"));
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
        QVERIFY(dir.isValid());
        const QString folder = QDir(dir.path()).filePath(QStringLiteral("Footsteps"));
        QVERIFY(QDir().mkpath(folder));

        subFormBookmark form(nullptr, threeBookmarks(), dir.path());
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

QTEST_MAIN(tst_subFormBookmark)
#include "tst_subformbookmark.moc"
