// The table browser as the user drives it: drops, selection and playback,
// sorting, the search bar, the status line, column widths, keys, context menu
// and clipboard.
#include "KrokTableSortModel.h"
#include "ModalAnswer.h"
#include "SubWidgetTableView.h"
#include "SubWidgetTreeView.h"
#include "WidgetTableBrowser.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QFontMetrics>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <random>

namespace {

QStringList takes(int count)
{
    QStringList list;
    for (int k = 0; k < count; ++k)
        list << QStringLiteral("/lib/take%1.wav").arg(k);
    return list;
}

QStringList columnOf(const QAbstractItemModel* model, int column)
{
    QStringList values;
    for (int row = 0; row < model->rowCount(); ++row)
        values << model->index(row, column).data().toString();
    return values;
}

void setFlags(WidgetTableBrowser& browser, const bool* autoPlayback, bool playlist)
{
    QObject::connect(&browser, &WidgetTableBrowser::SigAutoPlaybackFlagRequired, &browser,
                     [autoPlayback](bool* flag) { *flag = *autoPlayback; });
    QObject::connect(&browser, &WidgetTableBrowser::SigPlayListFlagRequired, &browser,
                     [playlist](bool* flag) { *flag = playlist; });
}

} // namespace

class TestTableBrowser : public QObject
{
    Q_OBJECT
private slots:
    void drops();
    void selectionAndNextItemPlay();
    void columnVisibilityAndRefresh();
    void endOfListOrderEqualsAFreshSort_data();
    void endOfListOrderEqualsAFreshSort();
    void firstRootChangeSetsWidthsAndUserSortSurvives();
    void namedFileIsSelectedWithoutPlaying();
    void headerMenuShowsAndHidesColumns();
    void viewKeys_data();
    void viewKeys();
    void copyPutsEncodedFileListsOnClipboard();
};

void TestTableBrowser::drops()
{
    QTemporaryDir dir;
    QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("sub")));
    const QString file = dir.filePath(QStringLiteral("sub/a.wav"));
    const QString text = dir.filePath(QStringLiteral("sub/notes.txt"));
    for (const QString& path : {file, text})
        QVERIFY(QFile(path).open(QIODevice::WriteOnly));
    WidgetTableBrowser browser(nullptr, {});
    QSignalSpy root(&browser, &WidgetTableBrowser::SigChangeRootPathCalled);
    const auto drop = [&browser](const QList<QUrl>& urls) {
        QMimeData mime;
        mime.setUrls(urls);
        QDropEvent event(QPointF(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        event.setAccepted(false);
        static_cast<QObject*>(&browser)->event(&event);
        return event.isAccepted();
    };
    // Only the first URL counts; an audio file goes on as it is, another file names its folder.
    QVERIFY(drop({QUrl::fromLocalFile(file), QUrl::fromLocalFile(dir.path())}));
    QVERIFY(drop({QUrl::fromLocalFile(text)}));
    QVERIFY(!drop({QUrl::fromLocalFile(dir.filePath(QStringLiteral("gone.wav")))}));
    QCOMPARE(root.count(), 2);
    QCOMPARE(root.at(0).at(0).toString(), file);
    QCOMPARE(root.at(1).at(0).toString(), dir.filePath(QStringLiteral("sub")));
}

void TestTableBrowser::selectionAndNextItemPlay()
{
    WidgetTableBrowser browser(nullptr, {});
    const QStringList list = takes(5);
    browser.tableModel()->setFilePathList(list);
    browser.tableModel()->setRowMatched(1, false);
    browser.tableModel()->setRowMatched(2, false);
    browser.sortModel()->refilter();
    QCOMPARE(browser.sortModel()->rowCount(), 3);
    SubWidgetTableView* view = browser.tableView();
    bool autoPlayback = false;
    setFlags(browser, &autoPlayback, true);
    QSignalSpy play(&browser, &WidgetTableBrowser::SigStartPlaybackCalled);
    // Enter plays the current row, but not from the plot column, whose clicks seek.
    view->setCurrentIndex(browser.sortModel()->index(0, ColumnPlots));
    browser.SlotSelectedItemPlaybackCalled();
    QCOMPARE(play.count(), 0);
    view->setCurrentIndex(browser.sortModel()->index(0, 3));
    browser.SlotSelectedItemPlaybackCalled();
    QCOMPARE(play.count(), 1);
    // Next skips hidden rows and plays in a playlist.
    browser.SlotSelectNextItem();
    QCOMPARE(play.count(), 2);
    QCOMPARE(play.at(1).at(0).toString(), list[3]);
    QCOMPARE(view->selectionModel()->selectedRows(1).size(), 1);
    // With auto playback the selection change starts the file, once.
    autoPlayback = true;
    browser.SlotSelectNextItem();
    QCOMPARE(play.count(), 3);
    QCOMPARE(play.at(2).at(0).toString(), list[4]);
    browser.SlotSelectNextItem();
    QCOMPARE(play.count(), 3);
    QCOMPARE(view->currentIndex().row(), 2);
    view->clearSelection();
    QCOMPARE(play.count(), 3);
}

void TestTableBrowser::columnVisibilityAndRefresh()
{
    WidgetTableBrowser browser(nullptr, {});
    browser.SlotColumnVisibleChanged((1 << 15) - 1 - (1 << 1) - (1 << 14));
    for (int column = 0; column < 15; ++column)
        QCOMPARE(browser.tableView()->isColumnHidden(column), column == 1 || column == 14);
    QVERIFY(browser.tableView()->isColumnHidden(kFirstMetadataColumn));
    browser.tableModel()->setFilePathList(takes(3));
    QSignalSpy changed(browser.tableModel(), &QAbstractItemModel::dataChanged);
    browser.SlotLoudnessVoltModeChanged(true);
    browser.SlotAnalyzedInfoAcquired(1, 1); // one row long, repainted whole
    QCOMPARE(changed.count(), 2);
    krokTableModel* m = browser.tableModel();
    QCOMPARE(changed.at(0).at(0).toModelIndex(), m->index(0, 0));
    QCOMPARE(changed.at(0).at(1).toModelIndex(), m->index(2, TableColumnCount - 1));
    QCOMPARE(changed.at(1).at(0).toModelIndex(), m->index(1, 0));
    QCOMPARE(changed.at(1).at(1).toModelIndex(), m->index(1, TableColumnCount - 1));
}

void TestTableBrowser::endOfListOrderEqualsAFreshSort_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("replaceListFirst");
    QTest::addColumn<bool>("letThePoolFinish");
    QTest::newRow("small, ended at once") << 7 << false << false;
    QTest::newRow("large, ended at once") << 30000 << false << false;
    QTest::newRow("ranks ready") << 3000 << false << true;
    QTest::newRow("a second folder replaced the first") << 2000 << true << true;
}

void TestTableBrowser::endOfListOrderEqualsAFreshSort()
{
    QFETCH(int, count);
    QFETCH(bool, replaceListFirst);
    QFETCH(bool, letThePoolFinish);
    QStringList listed;
    const char* folders[] = {"Foley", "foley", "foley/sub", "foley"};
    for (int k = 0; k < count; ++k)
        listed << QStringLiteral("/lib/%1/take%2.wav").arg(QLatin1String(folders[k % 4])).arg(k);
    std::mt19937 random(static_cast<unsigned>(count));
    std::shuffle(listed.begin(), listed.end(), random);
    WidgetTableBrowser browser(nullptr, {});
    if (replaceListFirst) {
        browser.SlotRootPathChanged();
        browser.SlotFilePathListAcquired({"/old/z.wav", "/old/a.wav", "/old/m.wav"});
    }
    browser.SlotRootPathChanged();
    browser.SlotFilePathListAcquired(listed);
    if (letThePoolFinish)
        QTRY_VERIFY(browser.tableModel()->pathRanks().size() == count);
    KrokTableSortModel* proxy = browser.sortModel();
    // While analysed the table keeps the listed order.
    QCOMPARE(proxy->index(0, 1).data().toString(), listed.first());
    browser.SlotAnalyzedInfoAcquired(0, count / 2);
    browser.SlotAnalyzedInfoAcquired(count / 2 + 1, count - 1);
    browser.SlotGetDetailEnded();
    browser.SlotSearchExecute(SearchCriteriaStruct());
    // Natural and case-blind: Foley and foley are one folder, "sub" sorts
    // before its "take" files, and takes go by number.
    QStringList expected = listed;
    const auto take = [](const QString& path) {
        return path.midRef(path.lastIndexOf(QLatin1String("take")) + 4).chopped(4).toInt();
    };
    std::sort(expected.begin(), expected.end(), [&](const QString& a, const QString& b) {
        const bool subA = a.contains(QLatin1String("/sub/"));
        const bool subB = b.contains(QLatin1String("/sub/"));
        return subA != subB ? subA : take(a) < take(b);
    });
    QCOMPARE(columnOf(proxy, 1), expected);
    // A click on another header and back re-sorts from scratch.
    browser.tableView()->sortByColumn(0, Qt::AscendingOrder);
    browser.tableView()->sortByColumn(1, Qt::DescendingOrder);
    std::reverse(expected.begin(), expected.end());
    QCOMPARE(columnOf(proxy, 1), expected);
}

void TestTableBrowser::firstRootChangeSetsWidthsAndUserSortSurvives()
{
    WidgetTableBrowser browser(nullptr, {});
    QHeaderView* header = browser.tableView()->horizontalHeader();
    browser.SlotRootPathChanged();
    // Every header with room for its label and the sort indicator, every typical value.
    const QFontMetrics headerText(header->font());
    const int margin = header->style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, header);
    const QFontMetrics cellText(browser.tableView()->font());
    const QStringList labels = krokTableModel::columnHeaderLabels();
    const QStringList values{"bassdrum_acoustic01.ogg",
                             "",
                             "123.45 KB",
                             "2020/07/04 11:58:46",
                             "Vorbis",
                             "192000",
                             "",
                             "12345678",
                             "42 - 160",
                             "12:34.567",
                             "",
                             "-23.45"};
    for (int column = 0; column < labels.size(); ++column) {
        if (header->isSectionHidden(column))
            continue;
        const int width = header->sectionSize(column);
        QVERIFY2(width >= headerText.horizontalAdvance(labels[column]) + 4 * margin +
                              header->sizeHint().height() / 2,
                 qPrintable(labels[column]));
        if (column < values.size())
            QVERIFY2(width >= cellText.horizontalAdvance(values[column]) + 4,
                     qPrintable(values[column]));
    }
    QCOMPARE(header->sectionSize(ColumnPlots), 120);
    header->resizeSection(0, 77);
    // Finished lists come in natural path order until the user sorts otherwise.
    browser.SlotFilePathListAcquired({"/a/take2.wav", "/a/take10.wav", "/a/Take1.wav"});
    QVERIFY(!browser.tableView()->isSortingEnabled());
    browser.SlotGetDetailEnded();
    QVERIFY(browser.tableView()->isSortingEnabled());
    KrokTableSortModel* proxy = browser.sortModel();
    QCOMPARE(columnOf(proxy, 0), (QStringList{"Take1.wav", "take2.wav", "take10.wav"}));
    header->setSortIndicator(ColumnFile, Qt::DescendingOrder);
    // Another folder: widths kept, listed in the order found, then sorted the user's way.
    browser.SlotRootPathChanged();
    QCOMPARE(header->sectionSize(0), 77);
    browser.SlotFilePathListAcquired({"/b/b3.wav", "/b/B20.wav", "/b/a1.wav"});
    QCOMPARE(columnOf(proxy, 0), (QStringList{"b3.wav", "B20.wav", "a1.wav"}));
    browser.SlotGetDetailEnded();
    QCOMPARE(columnOf(proxy, 0), (QStringList{"B20.wav", "b3.wav", "a1.wav"}));
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
}

void TestTableBrowser::namedFileIsSelectedWithoutPlaying()
{
    WidgetTableBrowser browser(nullptr, {});
    const bool autoPlayback = true; // a selection by hand would start the file
    setFlags(browser, &autoPlayback, false);
    QSignalSpy play(&browser, &WidgetTableBrowser::SigStartPlaybackCalled);
    // Found in reverse: the row moves when the finished list is sorted.
    QStringList listed = takes(400);
    std::reverse(listed.begin(), listed.end());
    browser.resize(600, 200);
    browser.show();
    QVERIFY(QTest::qWaitForWindowExposed(&browser));
    browser.SlotRootPathChanged();
    browser.SlotFilePathListAcquired(listed);
    browser.SlotSelectFile(QStringLiteral("/lib/take250.wav"));
    SubWidgetTableView* view = browser.tableView();
    QCOMPARE(view->currentIndex().data(257).toString(), QStringLiteral("/lib/take250.wav"));
    QCOMPARE(play.count(), 0);
    browser.SlotGetDetailEnded();
    QCOMPARE(view->currentIndex().data(257).toString(), QStringLiteral("/lib/take250.wav"));
    QCOMPARE(view->selectionModel()->selectedRows().size(), 1);
    QVERIFY(view->viewport()->rect().intersects(view->visualRect(view->currentIndex())));
    view->selectRow(0);
    QCOMPARE(play.count(), 1);
}

void TestTableBrowser::headerMenuShowsAndHidesColumns()
{
    WidgetTableBrowser browser(nullptr, {});
    browser.SlotColumnVisibleChanged(1 << ColumnFile | 1 << ColumnFormat);
    QSignalSpy shown(&browser, &WidgetTableBrowser::SigColumnVisiblityChanged);
    QHeaderView* header = browser.tableView()->horizontalHeader();
    // The last column shown cannot be hidden; one shown again gets a usable width.
    const std::tuple<int, bool, int> steps[] = {
        {ColumnFormat, true, 1 << ColumnFile},
        {ColumnDuration, false, 1 << ColumnFile | 1 << ColumnDuration}};
    for (const auto& [column, fileOffered, shownAfter] : steps) {
        bool offered = false;
        fixtures::AnswerNextModal<QMenu>([&, column = column](QMenu* menu) {
            offered = menu->actions().at(ColumnFile)->isEnabled();
            menu->actions().at(column)->trigger();
            menu->close();
        });
        emit header->customContextMenuRequested(QPoint(5, 5));
        QCOMPARE(offered, fileOffered);
        QCOMPARE(shown.takeFirst().at(0).toInt(), shownAfter);
    }
    QCOMPARE(header->sectionSize(ColumnDuration), header->defaultSectionSize());
}

void TestTableBrowser::viewKeys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<QByteArray>("signal");
    const int none = Qt::NoModifier, alt = Qt::AltModifier, ctrl = Qt::ControlModifier,
              shift = Qt::ShiftModifier;
    QTest::newRow("period is Esc") << int(Qt::Key_Period) << none << QByteArray("SigPressEscKey");
    QTest::newRow("Space") << int(Qt::Key_Space) << none << QByteArray("SigPressSpaceKey");
    QTest::newRow("Right") << int(Qt::Key_Right) << none << QByteArray("SigPressRightKey");
    QTest::newRow("Alt+Up") << int(Qt::Key_Up) << alt << QByteArray("SigPressAltUpKey");
    QTest::newRow("Alt+Down") << int(Qt::Key_Down) << alt << QByteArray("SigPressAltDownKey");
    QTest::newRow("Alt+Shift+Up") << int(Qt::Key_Up) << (alt | shift) << QByteArray();
    QTest::newRow("Ctrl+E") << int(Qt::Key_E) << ctrl << QByteArray("SigShowInExplorer");
    QTest::newRow("Ctrl+Shift+E") << int(Qt::Key_E) << (ctrl | shift)
                                  << QByteArray("SigOpenByUsingExternal");
    QTest::newRow("Ctrl+R") << int(Qt::Key_R) << ctrl << QByteArray("SigUpdateFilesCalled");
    QTest::newRow("Ctrl+Shift+R") << int(Qt::Key_R) << (ctrl | shift) << QByteArray();
}

void TestTableBrowser::viewKeys()
{
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QFETCH(QByteArray, signal);
    WidgetTableBrowser browser(nullptr, {});
    browser.tableModel()->setFilePathList(takes(2));
    SubWidgetTableView* view = browser.tableView();
    view->selectRow(1);
    SubWidgetTreeView tree;
    QStandardItemModel model(2, 1);
    tree.setModel(&model);
    // Each view's signals, with the one the key should send: the folder tree
    // answers the keys without Ctrl alike.
    const bool inTree = !(modifiers & Qt::ControlModifier);
    std::vector<std::pair<std::unique_ptr<QSignalSpy>, QByteArray>> spies;
    for (const auto& [object, expected] :
         {std::pair<QObject*, QByteArray>(view, signal), {&tree, inTree ? signal : QByteArray()}}) {
        const QMetaObject& meta = *object->metaObject();
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            if (meta.method(i).methodType() == QMetaMethod::Signal)
                spies.emplace_back(
                    std::make_unique<QSignalSpy>(
                        object, QByteArray("2" + meta.method(i).methodSignature()).constData()),
                    expected);
        }
    }
    // Ctrl+R only while updating is offered.
    view->setUpdateInformationEnabled(false);
    QTest::keyClick(view, Qt::Key_R, Qt::ControlModifier);
    view->setUpdateInformationEnabled(true);
    for (QWidget* target : {static_cast<QWidget*>(view), static_cast<QWidget*>(&tree)})
        QTest::keyClick(target, static_cast<Qt::Key>(key), Qt::KeyboardModifiers(modifiers));
    for (const auto& [spy, expected] : spies)
        QCOMPARE(spy->signal().startsWith(expected + '(') ? 1 : 0, spy->count());
}

void TestTableBrowser::copyPutsEncodedFileListsOnClipboard()
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
    QList<QUrl> urls = mime->urls();
    std::sort(urls.begin(), urls.end());
    QCOMPARE(urls, (QList<QUrl>{QUrl::fromLocalFile(files[0]), QUrl::fromLocalFile(files[2])}));
#ifndef Q_OS_WIN
    // GNOME-family file managers paste "copy", then one encoded URI a line.
    QList<QByteArray> gnome =
        mime->data(QStringLiteral("x-special/gnome-copied-files")).split('\n');
    QCOMPARE(gnome.takeFirst(), QByteArray("copy"));
    std::sort(gnome.begin(), gnome.end());
    QCOMPARE(gnome,
             (QList<QByteArray>{"file:///lib/%E3%83%89%E3%82%A2%20%E9%96%89%E3%81%BE%E3%82%8B.wav",
                                "file:///lib/door%20%232%20100%25.wav"}));
#endif
}

QTEST_MAIN(TestTableBrowser)
#include "tst_tablebrowser.moc"
