#include "KrokTableSortModel.h"
#include "SearchRowMatcher.h"
#include "SubWidgetTableView.h"
#include "WidgetTableBrowser.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QFontMetrics>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <QtTest>

#include <algorithm>
#include <random>

namespace {

QStringList paths(const QTemporaryDir& dir, int count)
{
    QStringList list;
    for (int k = 0; k < count; ++k) {
        list << dir.filePath(QStringLiteral("take%1.wav").arg(k));
    }
    return list;
}

} // namespace

class TestTableBrowser : public QObject
{
    Q_OBJECT
private slots:
    void viewSetUp();
    void dropFileSelectsItsFolder();
    void dropFolderAndNonsense();
    void updateInformationListsSelectedPaths();
    void statusLineText_data();
    void statusLineText();
    void seekRatio_data();
    void seekRatio();
    void nextItemSkipsHiddenRows();
    void nextItemAtTheEndChangesNothing();
    void autoPlaybackOnSelection();
    void activationPlaysButNotFromPlotColumn();
    void columnVisibilityMask();
    void sortsByPathAndName();
    void endOfListOrderEqualsAFreshSort_data();
    void endOfListOrderEqualsAFreshSort();
    void durationCellParsing_data();
    void durationCellParsing();
    void nameSearchIgnoresCase();
    void loudnessVoltModeRefreshesEveryCell();
    void firstRootChangeSetsDefaultWidthsOnce();
    void userSortSurvivesARootChange();
    void namedFileIsSelectedWithoutPlaying();
};

void TestTableBrowser::viewSetUp()
{
    WidgetTableBrowser browser(nullptr, {});
    SubWidgetTableView* view = browser.tableView();
    QVERIFY(!view->showGrid());
    QCOMPARE(view->selectionBehavior(), QAbstractItemView::SelectRows);
    QCOMPARE(view->selectionMode(), QAbstractItemView::ExtendedSelection);
    QVERIFY(view->horizontalHeader()->sectionsMovable());
    QVERIFY(!view->verticalHeader()->isVisible() || view->verticalHeader()->isHidden());
    QCOMPARE(view->dragDropMode(), QAbstractItemView::DragOnly);
    QCOMPARE(browser.sortModel()->sortRole(), 256);
    QVERIFY(browser.acceptDrops());
    QCOMPARE(browser.tableModel()->columnCount(), int(TableColumnCount));
    // The metadata columns are there but wait to be asked for.
    for (int column = 0; column < TableColumnCount; ++column)
        QCOMPARE(view->isColumnHidden(column), column >= kFirstMetadataColumn);
    QCOMPARE(view->focusPolicy(), Qt::StrongFocus);
}

void TestTableBrowser::dropFileSelectsItsFolder()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("sub")));
    const QString file = dir.filePath(QStringLiteral("sub/a.wav"));
    const QString text = dir.filePath(QStringLiteral("sub/notes.txt"));
    for (const QString& path : {file, text}) {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
    }
    WidgetTableBrowser browser(nullptr, {});
    QSignalSpy root(&browser, &WidgetTableBrowser::SigChangeRootPathCalled);
    QMimeData mime;
    // Only the first URL counts: the second names another existing folder. An
    // audio file is handed on as it is (its folder is listed, the file selected).
    mime.setUrls({QUrl::fromLocalFile(file), QUrl::fromLocalFile(dir.path())});
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    static_cast<QObject*>(&browser)->event(&drop);
    QCOMPARE(root.count(), 1);
    QCOMPARE(root.at(0).at(0).toString(), file);
    QVERIFY(drop.isAccepted());
    QCOMPARE(drop.dropAction(), Qt::IgnoreAction);
    // Any other file names its folder.
    mime.setUrls({QUrl::fromLocalFile(text)});
    QDropEvent other(QPointF(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    static_cast<QObject*>(&browser)->event(&other);
    QCOMPARE(root.count(), 2);
    QCOMPARE(root.at(1).at(0).toString(), dir.filePath(QStringLiteral("sub")));
}

void TestTableBrowser::dropFolderAndNonsense()
{
    QTemporaryDir dir;
    WidgetTableBrowser browser(nullptr, {});
    QSignalSpy root(&browser, &WidgetTableBrowser::SigChangeRootPathCalled);
    QMimeData folder;
    folder.setUrls({QUrl::fromLocalFile(dir.path())});
    QDropEvent dropFolder(QPointF(5, 5), Qt::CopyAction, &folder, Qt::LeftButton, Qt::NoModifier);
    static_cast<QObject*>(&browser)->event(&dropFolder);
    QCOMPARE(root.count(), 1);
    QCOMPARE(root.at(0).at(0).toString(), dir.path());

    QMimeData missing;
    missing.setUrls({QUrl::fromLocalFile(dir.filePath(QStringLiteral("gone.wav")))});
    QDropEvent dropMissing(QPointF(5, 5), Qt::CopyAction, &missing, Qt::LeftButton, Qt::NoModifier);
    dropMissing.setAccepted(false);
    static_cast<QObject*>(&browser)->event(&dropMissing);
    QCOMPARE(root.count(), 1);
    QVERIFY(!dropMissing.isAccepted());
}

void TestTableBrowser::updateInformationListsSelectedPaths()
{
    QTemporaryDir dir;
    WidgetTableBrowser browser(nullptr, {});
    const QStringList list = paths(dir, 4);
    browser.tableModel()->setFilePathList(list);
    QSignalSpy update(&browser, &WidgetTableBrowser::SigUpdateFilesCalled);
    SubWidgetTableView* view = browser.tableView();
    view->selectionModel()->select(browser.sortModel()->index(1, 0),
                                   QItemSelectionModel::Select | QItemSelectionModel::Rows);
    view->selectionModel()->select(browser.sortModel()->index(3, 0),
                                   QItemSelectionModel::Select | QItemSelectionModel::Rows);
    view->SlotUpdate();
    QCOMPARE(update.count(), 1);
    QStringList files = update.at(0).at(0).toStringList();
    files.sort();
    QCOMPARE(files, (QStringList{list[1], list[3]}));
}

void TestTableBrowser::statusLineText_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<float>("total");
    QTest::addColumn<bool>("sent");
    QTest::addColumn<QString>("time");
    QTest::newRow("hour, minutes, fraction")
        << 7 << 3725.5f << true << QStringLiteral("1hr02min05.500sec");
    QTest::newRow("exactly two minutes")
        << 2 << 120.0f << false << QStringLiteral("0hr02min00.000sec");
    QTest::newRow("nothing shown") << 0 << 0.0f << false << QStringLiteral("0hr00min00.000sec");
    QTest::newRow("half a second") << 1 << 0.5f << true << QStringLiteral("0hr00min00.500sec");
    QTest::newRow("ten hours and a bit")
        << 3 << 36061.25f << true << QStringLiteral("10hr01min01.250sec");
}

void TestTableBrowser::statusLineText()
{
    QFETCH(int, count);
    QFETCH(float, total);
    QFETCH(bool, sent);
    QFETCH(QString, time);
    QString message;
    QCOMPARE(WidgetTableBrowser::statusMessage(count, total, &message), sent);
    QCOMPARE(
        message,
        QStringLiteral("Number of audio files displayed: %1 Total time: %2").arg(count).arg(time));
}

void TestTableBrowser::seekRatio_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("width");
    QTest::addColumn<double>("ratio");
    QTest::newRow("middle") << 60 << 120 << 0.5;
    QTest::newRow("left edge") << 0 << 120 << 0.0;
    QTest::newRow("left of the cell") << -4 << 120 << 0.0;
    QTest::newRow("zero width") << 10 << 0 << 0.0;
    QTest::newRow("one pixel in") << 1 << 100 << 0.01;
}

void TestTableBrowser::seekRatio()
{
    QFETCH(int, x);
    QFETCH(int, width);
    QFETCH(double, ratio);
    QCOMPARE(WidgetTableBrowser::seekRatio(x, width), ratio);
}

void TestTableBrowser::nextItemSkipsHiddenRows()
{
    QTemporaryDir dir;
    WidgetTableBrowser browser(nullptr, {});
    const QStringList list = paths(dir, 5);
    browser.tableModel()->setFilePathList(list);
    browser.tableModel()->setRowMatched(1, false);
    browser.tableModel()->setRowMatched(2, false);
    browser.sortModel()->refilter();
    QCOMPARE(browser.sortModel()->rowCount(), 3);
    SubWidgetTableView* view = browser.tableView();
    view->setCurrentIndex(browser.sortModel()->index(0, 0));
    bool autoPlayback = false;
    connect(&browser, &WidgetTableBrowser::SigAutoPlaybackFlagRequired, this,
            [&autoPlayback](bool* flag) { *flag = autoPlayback; });
    connect(&browser, &WidgetTableBrowser::SigPlayListFlagRequired, this,
            [](bool* flag) { *flag = true; });
    QSignalSpy play(&browser, &WidgetTableBrowser::SigStartPlaybackCalled);
    browser.SlotSelectNextItem();
    QCOMPARE(play.count(), 1);
    QCOMPARE(play.at(0).at(0).toString(), list[3]);
    const QModelIndexList selected = view->selectionModel()->selectedRows(1);
    QCOMPARE(selected.size(), 1);
    QCOMPARE(selected.first().data().toString(), list[3]);

    // With auto playback on, the selection change starts the file, once.
    autoPlayback = true;
    play.clear();
    browser.SlotSelectNextItem();
    QCOMPARE(play.count(), 1);
    QCOMPARE(play.at(0).at(0).toString(), list[4]);
}

void TestTableBrowser::nextItemAtTheEndChangesNothing()
{
    QTemporaryDir dir;
    WidgetTableBrowser browser(nullptr, {});
    const QStringList list = paths(dir, 3);
    browser.tableModel()->setFilePathList(list);
    browser.tableModel()->setRowMatched(2, false);
    browser.sortModel()->refilter();
    browser.tableView()->selectRow(1);
    connect(&browser, &WidgetTableBrowser::SigPlayListFlagRequired, this,
            [](bool* flag) { *flag = true; });
    QSignalSpy play(&browser, &WidgetTableBrowser::SigStartPlaybackCalled);
    browser.SlotSelectNextItem();
    QCOMPARE(play.count(), 0);
    QCOMPARE(browser.tableView()->currentIndex().row(), 1);
}

void TestTableBrowser::autoPlaybackOnSelection()
{
    QTemporaryDir dir;
    WidgetTableBrowser browser(nullptr, {});
    const QStringList list = paths(dir, 3);
    browser.tableModel()->setFilePathList(list);
    bool autoPlayback = false;
    connect(&browser, &WidgetTableBrowser::SigAutoPlaybackFlagRequired, this,
            [&autoPlayback](bool* flag) { *flag = autoPlayback; });
    QSignalSpy play(&browser, &WidgetTableBrowser::SigStartPlaybackCalled);
    browser.tableView()->selectRow(1);
    QCOMPARE(play.count(), 0);
    autoPlayback = true;
    browser.tableView()->selectRow(2);
    QCOMPARE(play.count(), 1);
    QCOMPARE(play.at(0).at(0).toString(), list[2]);
    // Clearing the selection selects nothing new and plays nothing.
    browser.tableView()->clearSelection();
    QCOMPARE(play.count(), 1);
}

void TestTableBrowser::activationPlaysButNotFromPlotColumn()
{
    QTemporaryDir dir;
    WidgetTableBrowser browser(nullptr, {});
    const QStringList list = paths(dir, 2);
    browser.tableModel()->setFilePathList(list);
    QSignalSpy play(&browser, &WidgetTableBrowser::SigStartPlaybackCalled);
    browser.tableView()->setCurrentIndex(browser.sortModel()->index(1, 10));
    browser.SlotSelectedItemPlaybackCalled();
    QCOMPARE(play.count(), 0);
    browser.tableView()->setCurrentIndex(browser.sortModel()->index(1, 3));
    browser.SlotSelectedItemPlaybackCalled();
    QCOMPARE(play.count(), 1);
    QCOMPARE(play.at(0).at(0).toString(), list[1]);
}

void TestTableBrowser::columnVisibilityMask()
{
    WidgetTableBrowser browser(nullptr, {});
    browser.SlotColumnVisibleChanged((1 << 15) - 1 - (1 << 1) - (1 << 14));
    for (int column = 0; column < 15; ++column) {
        QCOMPARE(browser.tableView()->isColumnHidden(column), column == 1 || column == 14);
    }
}

void TestTableBrowser::firstRootChangeSetsDefaultWidthsOnce()
{
    WidgetTableBrowser browser(nullptr, {});
    QHeaderView* header = browser.tableView()->horizontalHeader();
    browser.SlotRootPathChanged();
    // Measured with the fonts in use: every header with room for the sort
    // indicator (half the header's height, and a margin on either side of it
    // and of the label), every typical value.
    const QFontMetrics headerText(header->font());
    const int margin = header->style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, header);
    const QFontMetrics cellText(browser.tableView()->font());
    const QStringList labels = krokTableModel::columnHeaderLabels();
    const QStringList values{QStringLiteral("bassdrum_acoustic01.ogg"),
                             QString(),
                             QStringLiteral("123.45 KB"),
                             QStringLiteral("2020/07/04 11:58:46"),
                             QStringLiteral("Vorbis"),
                             QStringLiteral("192000"),
                             QString(),
                             QStringLiteral("12345678"),
                             QStringLiteral("42 - 160"),
                             QStringLiteral("12:34.567"),
                             QString(),
                             QStringLiteral("-23.45")};
    for (int column = 0; column < labels.size(); ++column) {
        if (header->isSectionHidden(column))
            continue;
        const int width = header->sectionSize(column);
        QVERIFY2(width >= headerText.horizontalAdvance(labels[column]) + 4 * margin +
                              header->sizeHint().height() / 2,
                 qPrintable(labels[column]));
        if (column < values.size() && !values[column].isEmpty())
            QVERIFY2(width >= cellText.horizontalAdvance(values[column]) + 4,
                     qPrintable(values[column]));
    }
    QCOMPARE(header->sectionSize(ColumnPlots), 120);
    QVERIFY(!browser.tableView()->isSortingEnabled());
    QCOMPARE(header->sortIndicatorSection(), 1);
    header->resizeSection(0, 77);
    browser.SlotRootPathChanged();
    QCOMPARE(header->sectionSize(0), 77);
    browser.SlotGetDetailEnded();
    QVERIFY(browser.tableView()->isSortingEnabled());
    QVERIFY(browser.sortModel()->dynamicSortFilter());
}

void TestTableBrowser::userSortSurvivesARootChange()
{
    WidgetTableBrowser browser(nullptr, {});
    const QStringList first{QStringLiteral("/a/take2.wav"), QStringLiteral("/a/take10.wav"),
                            QStringLiteral("/a/Take1.wav")};
    browser.SlotRootPathChanged();
    browser.SlotFilePathListAcquired(first);
    browser.SlotGetDetailEnded();
    KrokTableSortModel* proxy = browser.sortModel();
    auto names = [proxy] {
        QStringList values;
        for (int row = 0; row < proxy->rowCount(); ++row)
            values << proxy->index(row, ColumnFile).data().toString();
        return values;
    };
    // Finished lists come in natural path order until the user sorts otherwise.
    QCOMPARE(names(), (QStringList{"Take1.wav", "take2.wav", "take10.wav"}));
    browser.tableView()->horizontalHeader()->setSortIndicator(ColumnFile, Qt::DescendingOrder);
    QCOMPARE(names(), (QStringList{"take10.wav", "take2.wav", "Take1.wav"}));

    // Another folder: listed in the order found, then sorted the user's way.
    browser.SlotRootPathChanged();
    browser.SlotFilePathListAcquired(
        {QStringLiteral("/b/b3.wav"), QStringLiteral("/b/B20.wav"), QStringLiteral("/b/a1.wav")});
    QCOMPARE(browser.tableView()->horizontalHeader()->sortIndicatorSection(), int(ColumnFile));
    QCOMPARE(names(), (QStringList{"b3.wav", "B20.wav", "a1.wav"}));
    browser.SlotGetDetailEnded();
    QCOMPARE(names(), (QStringList{"B20.wav", "b3.wav", "a1.wav"}));
    QCOMPARE(browser.tableView()->horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
}

void TestTableBrowser::loudnessVoltModeRefreshesEveryCell()
{
    QTemporaryDir dir;
    WidgetTableBrowser browser(nullptr, {});
    browser.tableModel()->setFilePathList(paths(dir, 3));
    QSignalSpy changed(browser.tableModel(), &QAbstractItemModel::dataChanged);
    browser.SlotLoudnessVoltModeChanged(true);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toModelIndex(), browser.tableModel()->index(0, 0));
    QCOMPARE(changed.at(0).at(1).toModelIndex(),
             browser.tableModel()->index(2, TableColumnCount - 1));
    // The plot mode waits for the next repaint.
    browser.SlotMultiPlotFlagChanged(true);
    QCOMPARE(changed.count(), 1);
}

void TestTableBrowser::durationCellParsing_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<int>("ms");
    QTest::newRow("1.5 s") << QStringLiteral("0:01.500") << true << 1500;
    QTest::newRow("1.499 s") << QStringLiteral("0:01.499") << true << 1499;
    QTest::newRow("long") << QStringLiteral("123:59.999") << true << (123 * 60 + 59) * 1000 + 999;
    QTest::newRow("blank cell") << QString() << false << 0;
    QTest::newRow("no minutes") << QStringLiteral(":01.500") << false << 0;
    QTest::newRow("text") << QStringLiteral("a:bc.def") << false << 0;
}

void TestTableBrowser::durationCellParsing()
{
    QFETCH(QString, text);
    QFETCH(bool, ok);
    QFETCH(int, ms);
    int parsed = -1;
    QCOMPARE(SearchRowMatcher::parseDurationMs(text, &parsed), ok);
    if (ok) {
        QCOMPARE(parsed, ms);
        QVERIFY(SearchRowMatcher::compare(parsed, 1500, SearchCriteriaStruct::GreaterOrEqual) ==
                (ms >= 1500));
    }
}

void TestTableBrowser::nameSearchIgnoresCase()
{
    WidgetTableBrowser browser(nullptr, {});
    browser.tableModel()->setFilePathList({QStringLiteral("/lib/take_01.wav"),
                                           QStringLiteral("/lib/Take_02.wav"),
                                           QStringLiteral("/Take/other.wav")});
    browser.SlotGetDetailEnded();
    SearchCriteriaStruct criteria;
    criteria.name = QStringLiteral("tAKE_");
    browser.SlotSearchExecute(criteria);
    // The file name only, in any case: the folder "Take" does not count.
    QCOMPARE(browser.sortModel()->rowCount(), 2);
    browser.sortModel()->sort(ColumnFile);
    QCOMPARE(browser.sortModel()->index(0, 0).data().toString(), QStringLiteral("take_01.wav"));
    QCOMPARE(browser.sortModel()->index(1, 0).data().toString(), QStringLiteral("Take_02.wav"));
    // Unanalysed rows have a blank format, which only the "Error" box admits.
    criteria.name.clear();
    criteria.useDetail = true;
    browser.SlotSearchExecute(criteria);
    QCOMPARE(browser.sortModel()->rowCount(), 3);
    criteria.formatMask = SearchCriteriaStruct::FormatWav;
    browser.SlotSearchExecute(criteria);
    QCOMPARE(browser.sortModel()->rowCount(), 0);
    criteria.useDetail = false;
    browser.SlotSearchExecute(criteria);
    QCOMPARE(browser.sortModel()->rowCount(), 3);
}

void TestTableBrowser::sortsByPathAndName()
{
    WidgetTableBrowser browser(nullptr, {});
    browser.tableModel()->setFilePathList(
        {QStringLiteral("/lib2/x.wav"), QStringLiteral("/lib/z/d.wav"),
         QStringLiteral("/lib/a.wav"), QStringLiteral("/lib/b/c.wav"), QStringLiteral("/lib")});
    browser.SlotGetDetailEnded();
    KrokTableSortModel* proxy = browser.sortModel();
    auto column = [proxy](int c) {
        QStringList values;
        for (int row = 0; row < proxy->rowCount(); ++row) {
            values << proxy->index(row, c).data().toString();
        }
        return values;
    };
    browser.tableView()->sortByColumn(1, Qt::AscendingOrder);
    QCOMPARE(column(1), (QStringList{QStringLiteral("/lib"), QStringLiteral("/lib/a.wav"),
                                     QStringLiteral("/lib/b/c.wav"), QStringLiteral("/lib/z/d.wav"),
                                     QStringLiteral("/lib2/x.wav")}));
    browser.tableView()->sortByColumn(0, Qt::DescendingOrder);
    QCOMPARE(column(0),
             (QStringList{QStringLiteral("x.wav"), QStringLiteral("lib"), QStringLiteral("d.wav"),
                          QStringLiteral("c.wav"), QStringLiteral("a.wav")}));
}

void TestTableBrowser::endOfListOrderEqualsAFreshSort_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("replaceListFirst");
    QTest::addColumn<bool>("letThePoolFinish");
    QTest::newRow("small, ended at once") << 7 << false << false;
    QTest::newRow("large, ended at once") << 30000 << false << false;
    QTest::newRow("large, ranks ready") << 30000 << false << true;
    QTest::newRow("a second folder replaced the first") << 5000 << true << true;
}

void TestTableBrowser::endOfListOrderEqualsAFreshSort()
{
    QFETCH(int, count);
    QFETCH(bool, replaceListFirst);
    QFETCH(bool, letThePoolFinish);
    QStringList listed;
    for (int k = 0; k < count; ++k) {
        listed << QStringLiteral("/lib/%1/take%2.wav")
                      .arg(QLatin1String(k % 4 == 0 ? "Foley"
                                                    : (k % 4 == 1 ? "foley" : "foley/sub")))
                      .arg(k);
    }
    std::mt19937 random(static_cast<unsigned>(count));
    std::shuffle(listed.begin(), listed.end(), random);

    WidgetTableBrowser browser(nullptr, {});
    if (replaceListFirst) {
        browser.SlotRootPathChanged();
        browser.SlotFilePathListAcquired({QStringLiteral("/old/z.wav"),
                                          QStringLiteral("/old/a.wav"),
                                          QStringLiteral("/old/m.wav")});
    }
    browser.SlotRootPathChanged();
    browser.SlotFilePathListAcquired(listed);
    if (letThePoolFinish) {
        QTRY_VERIFY(browser.tableModel()->pathRanks().size() == count);
    }
    KrokTableSortModel* proxy = browser.sortModel();
    // While analysed the table keeps the listed order.
    QCOMPARE(proxy->index(0, 1).data().toString(), listed.first());
    browser.SlotAnalyzedInfoAcquired(0, count / 2);
    browser.SlotAnalyzedInfoAcquired(count / 2 + 1, count - 1);
    browser.SlotGetDetailEnded();
    browser.SlotSearchExecute(SearchCriteriaStruct());

    auto shownPaths = [proxy] {
        QStringList values;
        for (int row = 0; row < proxy->rowCount(); ++row) {
            values << proxy->index(row, 1).data().toString();
        }
        return values;
    };
    // Natural and case-blind: Foley and foley are one folder, its subfolder
    // "sub" sorts before its "take" files, and takes go by number.
    QStringList expected = listed;
    const auto take = [](const QString& path) {
        return path.midRef(path.lastIndexOf(QLatin1String("take")) + 4)
            .toString()
            .chopped(4)
            .toInt();
    };
    std::sort(expected.begin(), expected.end(), [&](const QString& a, const QString& b) {
        const bool subA = a.contains(QLatin1String("/sub/"));
        const bool subB = b.contains(QLatin1String("/sub/"));
        return subA != subB ? subA : take(a) < take(b);
    });
    const QStringList afterEnd = shownPaths();
    QCOMPARE(afterEnd, expected);
    // A click on another header and back re-sorts from scratch.
    browser.tableView()->sortByColumn(0, Qt::AscendingOrder);
    browser.tableView()->sortByColumn(1, Qt::AscendingOrder);
    QCOMPARE(shownPaths(), afterEnd);
    browser.tableView()->sortByColumn(1, Qt::DescendingOrder);
    std::reverse(expected.begin(), expected.end());
    QCOMPARE(shownPaths(), expected);
}

void TestTableBrowser::namedFileIsSelectedWithoutPlaying()
{
    WidgetTableBrowser browser(nullptr, {});
    // Auto playback is on: a selection by hand would start the file.
    connect(&browser, &WidgetTableBrowser::SigAutoPlaybackFlagRequired, this,
            [](bool* flag) { *flag = true; });
    QSignalSpy play(&browser, &WidgetTableBrowser::SigStartPlaybackCalled);
    QStringList listed;
    // Found in reverse: the row moves when the finished list is sorted.
    for (int k = 399; k >= 0; --k)
        listed << QStringLiteral("/lib/take%1.wav").arg(k);
    browser.resize(600, 200);
    browser.show();
    QVERIFY(QTest::qWaitForWindowExposed(&browser));
    browser.SlotRootPathChanged();
    browser.SlotFilePathListAcquired(listed);
    browser.SlotSelectFile(QStringLiteral("/lib/take250.wav"));
    SubWidgetTableView* view = browser.tableView();
    QCOMPARE(view->currentIndex().data(257).toString(), QStringLiteral("/lib/take250.wav"));
    QCOMPARE(view->selectionModel()->selectedRows().size(), 1);
    QCOMPARE(play.count(), 0);
    // Still selected and in sight once the finished list is sorted.
    browser.SlotGetDetailEnded();
    QCOMPARE(view->currentIndex().data(257).toString(), QStringLiteral("/lib/take250.wav"));
    QVERIFY(view->viewport()->rect().intersects(view->visualRect(view->currentIndex())));
    // A later selection by hand plays as before.
    view->selectRow(0);
    QCOMPARE(play.count(), 1);
}

QTEST_MAIN(TestTableBrowser)
#include "tst_tablebrowser.moc"
