#include "GacManager.h"
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

namespace {

QStringList menuTexts(QMenu* menu)
{
    QStringList texts;
    for (QAction* action : menu->actions()) {
        texts << action->text();
    }
    return texts;
}

} // namespace

class TestTableView : public QObject
{
    Q_OBJECT
private slots:
    void keys_data();
    void keys();
    void ctrlRFollowsUpdateAvailability();
    void menuByConnectionState_data();
    void menuByConnectionState();
    void disconnectedGacManagerOffersNoNuendo();
    void copyPutsFileUrlsOnClipboard();
    void copyOfEmptySelectionLeavesClipboard();
    void clipboardListsEncodeEveryName();
    void tabFocusSelectsFirstRow();
};

void TestTableView::keys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<QString>("signal");
    QTest::newRow("period is Esc")
        << int(Qt::Key_Period) << int(Qt::NoModifier) << QStringLiteral("esc");
    QTest::newRow("Esc") << int(Qt::Key_Escape) << int(Qt::NoModifier) << QStringLiteral("esc");
    QTest::newRow("Space") << int(Qt::Key_Space) << int(Qt::NoModifier) << QStringLiteral("space");
    QTest::newRow("Right") << int(Qt::Key_Right) << int(Qt::NoModifier) << QStringLiteral("right");
    QTest::newRow("Alt+Up") << int(Qt::Key_Up) << int(Qt::AltModifier) << QStringLiteral("altup");
    QTest::newRow("Alt+Down") << int(Qt::Key_Down) << int(Qt::AltModifier)
                              << QStringLiteral("altdown");
    QTest::newRow("Alt+Shift+Up raises nothing")
        << int(Qt::Key_Up) << int(Qt::AltModifier | Qt::ShiftModifier) << QString();
    QTest::newRow("Ctrl+Alt+Down raises nothing")
        << int(Qt::Key_Down) << int(Qt::AltModifier | Qt::ControlModifier) << QString();
    QTest::newRow("plain Up raises nothing") << int(Qt::Key_Up) << int(Qt::NoModifier) << QString();
    QTest::newRow("Ctrl+E") << int(Qt::Key_E) << int(Qt::ControlModifier)
                            << QStringLiteral("explorer");
    QTest::newRow("Ctrl+Shift+E") << int(Qt::Key_E) << int(Qt::ControlModifier | Qt::ShiftModifier)
                                  << QStringLiteral("external");
    QTest::newRow("Ctrl+Alt+E raises nothing")
        << int(Qt::Key_E) << int(Qt::ControlModifier | Qt::AltModifier) << QString();
}

void TestTableView::keys()
{
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QFETCH(QString, signal);
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
    QTest::keyClick(&view, static_cast<Qt::Key>(key), Qt::KeyboardModifiers(modifiers));
    QCOMPARE(esc.count(), signal == QLatin1String("esc") ? 1 : 0);
    QCOMPARE(space.count(), signal == QLatin1String("space") ? 1 : 0);
    QCOMPARE(right.count(), signal == QLatin1String("right") ? 1 : 0);
    QCOMPARE(altUp.count(), signal == QLatin1String("altup") ? 1 : 0);
    QCOMPARE(altDown.count(), signal == QLatin1String("altdown") ? 1 : 0);
    QCOMPARE(explorer.count(), signal == QLatin1String("explorer") ? 1 : 0);
    QCOMPARE(external.count(), signal == QLatin1String("external") ? 1 : 0);
}

void TestTableView::ctrlRFollowsUpdateAvailability()
{
    SubWidgetTableView view({});
    QStandardItemModel model(2, 2);
    view.setModel(&model);
    QSignalSpy update(&view, &SubWidgetTableView::SigUpdateFilesCalled);
    view.setUpdateInformationEnabled(false);
    QTest::keyClick(&view, Qt::Key_R, Qt::ControlModifier);
    QCOMPARE(update.count(), 0);
    view.setUpdateInformationEnabled(true);
    QTest::keyClick(&view, Qt::Key_R, Qt::ControlModifier);
    QCOMPARE(update.count(), 1);
    QTest::keyClick(&view, Qt::Key_R, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(update.count(), 1);
}

void TestTableView::menuByConnectionState_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("format");
    QTest::addColumn<bool>("nuendo");
    QTest::newRow("connected wav") << 2 << QStringLiteral("wav") << true;
    QTest::newRow("connected aiff") << 2 << QStringLiteral("aiff") << false;
    QTest::newRow("connected WAV upper") << 2 << QStringLiteral("WAV") << false;
    QTest::newRow("waiting wav") << 1 << QStringLiteral("wav") << false;
    QTest::newRow("not connected wav") << 0 << QStringLiteral("wav") << false;
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
    QStringList expected = {
        QStringLiteral("Show in File Manager"), QStringLiteral("Open with an external tool"),
        QStringLiteral("Copy to Clipboard"), QStringLiteral("Update information")};
    if (nuendo) {
        expected << QStringLiteral("Open with Nuendo");
    }
    QCOMPARE(menuTexts(menu.get()), expected);
    QCOMPARE(menu->actions().at(0)->shortcut(), QKeySequence(QStringLiteral("Ctrl+E")));
    QCOMPARE(menu->actions().at(1)->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+E")));
    QCOMPARE(menu->actions().at(2)->shortcut(), QKeySequence(QStringLiteral("Ctrl+C")));
    QCOMPARE(menu->actions().at(3)->shortcut(), QKeySequence(QStringLiteral("Ctrl+R")));
}

void TestTableView::disconnectedGacManagerOffersNoNuendo()
{
    GacManager gac(nullptr, {QStringLiteral("/nonexistent/gac_sdk")});
    QCOMPARE(gac.GetState(), 0);
    SubWidgetTableView view(&gac);
    QStandardItemModel model(1, 2);
    model.setData(model.index(0, 0), QStringLiteral("wav"), 258);
    view.setModel(&model);
    view.setCurrentIndex(model.index(0, 0));
    std::unique_ptr<QMenu> menu(view.createContextMenu(nullptr));
    QCOMPARE(menu->actions().size(), 4);
    QVERIFY(!menuTexts(menu.get()).contains(QStringLiteral("Open with Nuendo")));
}

void TestTableView::copyPutsFileUrlsOnClipboard()
{
    SubWidgetTableView view({});
    QStandardItemModel model(3, 2);
    const QStringList files = {QStringLiteral("/lib/a b.wav"), QStringLiteral("/lib/c.wav"),
                               QStringLiteral("/lib/d.wav")};
    for (int row = 0; row < 3; ++row) {
        model.setData(model.index(row, 1), files[row]);
    }
    view.setModel(&model);
    view.setSelectionBehavior(QAbstractItemView::SelectRows);
    view.setSelectionMode(QAbstractItemView::ExtendedSelection);
    view.selectionModel()->select(model.index(0, 0),
                                  QItemSelectionModel::Select | QItemSelectionModel::Rows);
    view.selectionModel()->select(model.index(2, 0),
                                  QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
    const QMimeData* mime = QApplication::clipboard()->mimeData();
    QVERIFY(mime);
    QVERIFY(mime->hasFormat(QStringLiteral("text/uri-list")));
    QList<QUrl> urls = mime->urls();
    std::sort(urls.begin(), urls.end());
    QCOMPARE(urls, (QList<QUrl>{QUrl(QStringLiteral("file:///lib/a%20b.wav")),
                                QUrl(QStringLiteral("file:///lib/d.wav"))}));
#ifndef Q_OS_WIN
    // GNOME-family file managers paste from their own list: "copy", then one
    // encoded URI a line.
    QStringList gnome =
        QString::fromUtf8(mime->data(QStringLiteral("x-special/gnome-copied-files")))
            .split(QLatin1Char('\n'));
    QCOMPARE(gnome.takeFirst(), QStringLiteral("copy"));
    std::sort(gnome.begin(), gnome.end());
    QCOMPARE(gnome, (QStringList{QStringLiteral("file:///lib/a%20b.wav"),
                                 QStringLiteral("file:///lib/d.wav")}));
    QStringList text = mime->text().split(QLatin1Char('\n'));
    std::sort(text.begin(), text.end());
    QCOMPARE(text, (QStringList{files[0], files[2]}));
#endif
}

void TestTableView::clipboardListsEncodeEveryName()
{
    // Names a file manager must get back exactly: blanks, #, %, Japanese.
    const QStringList files{QStringLiteral("/lib/door #2 100%.wav"),
                            QStringLiteral("/lib/\u30c9\u30a2 \u9589\u307e\u308b.wav")};
    QList<QUrl> urls;
    for (const QString& file : files)
        urls << QUrl::fromLocalFile(file);
    std::unique_ptr<QMimeData> mime(SubWidgetTableView::clipboardData(urls));
    QCOMPARE(mime->urls(), urls);
#ifndef Q_OS_WIN
    const QByteArray gnome = mime->data(QStringLiteral("x-special/gnome-copied-files"));
    QCOMPARE(gnome, QByteArray("copy\nfile:///lib/door%20%232%20100%25.wav\n"
                               "file:///lib/%E3%83%89%E3%82%A2%20%E9%96%89%E3%81%BE%E3%82%8B.wav"));
    for (const QByteArray& line : gnome.split('\n').mid(1))
        QVERIFY(files.contains(QUrl::fromEncoded(line).toLocalFile()));
#endif
}

void TestTableView::copyOfEmptySelectionLeavesClipboard()
{
    QApplication::clipboard()->setText(QStringLiteral("before"));
    SubWidgetTableView view({});
    QStandardItemModel model(2, 2);
    model.setData(model.index(0, 1), QStringLiteral("/lib/a.wav"));
    view.setModel(&model);
    view.SlotCopyToClip();
    QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("before"));
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
    QVERIFY(!view->selectionModel()->hasSelection());
    view->setFocus(Qt::TabFocusReason);
    QTRY_VERIFY(view->selectionModel()->isRowSelected(0, QModelIndex()));
    // A mouse or program focus leaves the selection alone.
    view->clearSelection();
    other->setFocus(Qt::OtherFocusReason);
    view->setFocus(Qt::MouseFocusReason);
    QVERIFY(!view->selectionModel()->hasSelection());
}

QTEST_MAIN(TestTableView)
#include "tst_tableview.moc"
