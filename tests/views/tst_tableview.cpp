// The file table's own view: its keys, its context menu by Nuendo connection
// state, the clipboard lists and the first row selected on Tab.
#include "SubWidgetTableView.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QVBoxLayout>
#include <QtTest>

#include <memory>

class TestTableView : public QObject
{
    Q_OBJECT
private slots:
    void keys_data();
    void keys();
    void menuByConnectionState_data();
    void menuByConnectionState();
    void copyPutsEncodedFileListsOnClipboard();
    void tabFocusSelectsFirstRow();
};

void TestTableView::keys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<int>("signal");
    const int none = Qt::NoModifier, alt = Qt::AltModifier, ctrl = Qt::ControlModifier,
              shift = Qt::ShiftModifier;
    // Signals by index: Esc, Space, Right, Alt+Up, Alt+Down, explorer, external, update.
    QTest::newRow("period is Esc") << int(Qt::Key_Period) << none << 0;
    QTest::newRow("Esc") << int(Qt::Key_Escape) << none << 0;
    QTest::newRow("Space") << int(Qt::Key_Space) << none << 1;
    QTest::newRow("Right") << int(Qt::Key_Right) << none << 2;
    QTest::newRow("Alt+Up") << int(Qt::Key_Up) << alt << 3;
    QTest::newRow("Alt+Down") << int(Qt::Key_Down) << alt << 4;
    QTest::newRow("Alt+Shift+Up") << int(Qt::Key_Up) << (alt | shift) << -1;
    QTest::newRow("Ctrl+Alt+Down") << int(Qt::Key_Down) << (alt | ctrl) << -1;
    QTest::newRow("plain Up") << int(Qt::Key_Up) << none << -1;
    QTest::newRow("Ctrl+E") << int(Qt::Key_E) << ctrl << 5;
    QTest::newRow("Ctrl+Shift+E") << int(Qt::Key_E) << (ctrl | shift) << 6;
    QTest::newRow("Ctrl+Alt+E") << int(Qt::Key_E) << (ctrl | alt) << -1;
    QTest::newRow("Ctrl+R") << int(Qt::Key_R) << ctrl << 7;
    QTest::newRow("Ctrl+Shift+R") << int(Qt::Key_R) << (ctrl | shift) << -1;
}

void TestTableView::keys()
{
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QFETCH(int, signal);
    SubWidgetTableView view({});
    QStandardItemModel model(2, 2);
    view.setModel(&model);
    QSignalSpy esc(&view, &SubWidgetTableView::SigPressEscKey);
    QSignalSpy space(&view, &SubWidgetTableView::SigPressSpaceKey);
    QSignalSpy right(&view, &SubWidgetTableView::SigPressRightKey);
    QSignalSpy altUp(&view, &SubWidgetTableView::SigPressAltUpKey);
    QSignalSpy altDown(&view, &SubWidgetTableView::SigPressAltDownKey);
    QSignalSpy explorer(&view, &SubWidgetTableView::SigShowInExplorer);
    QSignalSpy external(&view, &SubWidgetTableView::SigOpenByUsingExternal);
    QSignalSpy update(&view, &SubWidgetTableView::SigUpdateFilesCalled);
    const QSignalSpy* spies[] = {&esc,     &space,    &right,    &altUp,
                                 &altDown, &explorer, &external, &update};
    // Ctrl+R only while updating is offered.
    view.setUpdateInformationEnabled(false);
    QTest::keyClick(&view, Qt::Key_R, Qt::ControlModifier);
    view.setUpdateInformationEnabled(true);
    QTest::keyClick(&view, static_cast<Qt::Key>(key), Qt::KeyboardModifiers(modifiers));
    for (int k = 0; k < 8; ++k)
        QVERIFY2(spies[k]->count() == (k == signal ? 1 : 0), qPrintable(QString::number(k)));
}

void TestTableView::menuByConnectionState_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("format");
    QTest::addColumn<bool>("nuendo");
    QTest::newRow("connected wav") << 2 << "wav" << true;
    QTest::newRow("connected aiff") << 2 << "aiff" << false;
    QTest::newRow("connected WAV upper") << 2 << "WAV" << false;
    QTest::newRow("waiting wav") << 1 << "wav" << false;
    QTest::newRow("not connected wav") << 0 << "wav" << false;
}

void TestTableView::menuByConnectionState()
{
    QFETCH(int, state);
    QFETCH(QString, format);
    QFETCH(bool, nuendo);
    SubWidgetTableView view([state] { return state; });
    QStandardItemModel model(1, 2);
    model.setData(model.index(0, 0), format, 258);
    view.setModel(&model);
    view.setCurrentIndex(model.index(0, 0));
    std::unique_ptr<QMenu> menu(view.createContextMenu(nullptr));
    QStringList expected = {"Show in File Manager\tCtrl+E",
                            "Open with an external tool\tCtrl+Shift+E", "Copy to Clipboard\tCtrl+C",
                            "Update information\tCtrl+R"};
    if (nuendo)
        expected << QStringLiteral("Open with Nuendo\t");
    QStringList texts;
    for (QAction* action : menu->actions())
        texts << action->text() + QLatin1Char('\t') + action->shortcut().toString();
    QCOMPARE(texts, expected);
}

void TestTableView::copyPutsEncodedFileListsOnClipboard()
{
    // Names a file manager must get back exactly: blanks, #, %, Japanese.
    const QStringList files = {QStringLiteral("/lib/door #2 100%.wav"),
                               QStringLiteral("/lib/c.wav"),
                               QStringLiteral("/lib/\u30c9\u30a2 \u9589\u307e\u308b.wav")};
    QStandardItemModel model(3, 2);
    for (int row = 0; row < 3; ++row)
        model.setData(model.index(row, 1), files[row]);
    SubWidgetTableView view({});
    view.setModel(&model);
    view.setSelectionBehavior(QAbstractItemView::SelectRows);
    view.setSelectionMode(QAbstractItemView::ExtendedSelection);
    // Nothing selected: the clipboard keeps what it had.
    QApplication::clipboard()->setText(QStringLiteral("before"));
    view.SlotCopyToClip();
    QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("before"));

    for (int row : {0, 2})
        view.selectionModel()->select(model.index(row, 0),
                                      QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
    const QMimeData* mime = QApplication::clipboard()->mimeData();
    QVERIFY(mime);
    QList<QUrl> urls = mime->urls();
    std::sort(urls.begin(), urls.end());
    QCOMPARE(urls, (QList<QUrl>{QUrl::fromLocalFile(files[0]), QUrl::fromLocalFile(files[2])}));
#ifndef Q_OS_WIN
    // GNOME-family file managers paste from their own list: "copy", then one
    // encoded URI a line.
    QList<QByteArray> gnome =
        mime->data(QStringLiteral("x-special/gnome-copied-files")).split('\n');
    QCOMPARE(gnome.takeFirst(), QByteArray("copy"));
    std::sort(gnome.begin(), gnome.end());
    QCOMPARE(gnome,
             (QList<QByteArray>{"file:///lib/%E3%83%89%E3%82%A2%20%E9%96%89%E3%81%BE%E3%82%8B.wav",
                                "file:///lib/door%20%232%20100%25.wav"}));
    QStringList text = mime->text().split(QLatin1Char('\n'));
    std::sort(text.begin(), text.end());
    QCOMPARE(text, (QStringList{files[0], files[2]}));
#endif
}

void TestTableView::tabFocusSelectsFirstRow()
{
    QWidget window;
    auto* other = new QLineEdit(&window);
    auto* view = new SubWidgetTableView({}, &window);
    QStandardItemModel model(3, 2);
    view->setModel(&model);
    auto* layout = new QVBoxLayout(&window);
    layout->addWidget(other);
    layout->addWidget(view);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    other->setFocus(Qt::OtherFocusReason);
    view->setFocus(Qt::MouseFocusReason);
    // A mouse or program focus leaves the selection alone.
    QVERIFY(!view->selectionModel()->hasSelection());
    other->setFocus(Qt::OtherFocusReason);
    view->setFocus(Qt::TabFocusReason);
    QTRY_VERIFY(view->selectionModel()->isRowSelected(0, QModelIndex()));
}

QTEST_MAIN(TestTableView)
#include "tst_tableview.moc"
