// The table browser as the user drives it: drops, selection and playback,
// sorting (natural, case-blind, stable after the list ends), the search bar,
// the status line and the first column widths.
#include "KrokTableSortModel.h"
#include "SubWidgetTableView.h"
#include "WidgetTableBrowser.h"

#include <QDir>
#include <QFile>
#include <QFontMetrics>
#include <QHeaderView>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
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

// Answers the browser's questions about the auto playback and playlist flags.
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
    void statusLineText();
    void nextItemSkipsHiddenRows();
    void selectionAndActivationPlay();
    void columnVisibilityAndRefresh();
    void sortsByPathAndName();
    void endOfListOrderEqualsAFreshSort_data();
    void endOfListOrderEqualsAFreshSort();
    void nameSearchIgnoresCase();
    void firstRootChangeSetsDefaultWidthsOnce();
    void userSortSurvivesARootChange();
    void namedFileIsSelectedWithoutPlaying();
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
    // Only the first URL counts. An audio file is handed on as it is (its
    // folder listed, the file selected); any other file names its folder.
    QVERIFY(drop({QUrl::fromLocalFile(file), QUrl::fromLocalFile(dir.path())}));
    QVERIFY(drop({QUrl::fromLocalFile(text)}));
    QVERIFY(drop({QUrl::fromLocalFile(dir.path())}));
    QVERIFY(!drop({QUrl::fromLocalFile(dir.filePath(QStringLiteral("gone.wav")))}));
    QCOMPARE(root.count(), 3);
    QCOMPARE(root.at(0).at(0).toString(), file);
    QCOMPARE(root.at(1).at(0).toString(), dir.filePath(QStringLiteral("sub")));
    QCOMPARE(root.at(2).at(0).toString(), dir.path());
}

void TestTableBrowser::statusLineText()
{
    // Sent only when the total is not whole minutes (the end of a run of plays).
    QString message;
    QVERIFY(WidgetTableBrowser::statusMessage(3, 36061.25f, &message));
    QCOMPARE(message, "Number of audio files displayed: 3 Total time: 10hr01min01.250sec");
    QVERIFY(!WidgetTableBrowser::statusMessage(2, 3720.0f, &message));
    QCOMPARE(message, "Number of audio files displayed: 2 Total time: 1hr02min00.000sec");
}

void TestTableBrowser::nextItemSkipsHiddenRows()
{
    WidgetTableBrowser browser(nullptr, {});
    const QStringList list = takes(5);
    browser.tableModel()->setFilePathList(list);
    browser.tableModel()->setRowMatched(1, false);
    browser.tableModel()->setRowMatched(2, false);
    browser.sortModel()->refilter();
    QCOMPARE(browser.sortModel()->rowCount(), 3);
    SubWidgetTableView* view = browser.tableView();
    view->setCurrentIndex(browser.sortModel()->index(0, 0));
    bool autoPlayback = false;
    setFlags(browser, &autoPlayback, true);
    QSignalSpy play(&browser, &WidgetTableBrowser::SigStartPlaybackCalled);
    browser.SlotSelectNextItem();
    QCOMPARE(play.count(), 1);
    QCOMPARE(play.at(0).at(0).toString(), list[3]);
    QCOMPARE(view->selectionModel()->selectedRows(1).size(), 1);
    QCOMPARE(view->selectionModel()->selectedRows(1).first().data().toString(), list[3]);
    // With auto playback on, the selection change starts the file, once.
    autoPlayback = true;
    browser.SlotSelectNextItem();
    QCOMPARE(play.count(), 2);
    QCOMPARE(play.at(1).at(0).toString(), list[4]);
    // At the end nothing changes.
    browser.SlotSelectNextItem();
    QCOMPARE(play.count(), 2);
    QCOMPARE(view->currentIndex().row(), 2);
}

void TestTableBrowser::selectionAndActivationPlay()
{
    WidgetTableBrowser browser(nullptr, {});
    const QStringList list = takes(3);
    browser.tableModel()->setFilePathList(list);
    bool autoPlayback = false;
    setFlags(browser, &autoPlayback, false);
    QSignalSpy play(&browser, &WidgetTableBrowser::SigStartPlaybackCalled);
    // Enter plays the current row, but not from the plot column, whose clicks seek.
    browser.tableView()->setCurrentIndex(browser.sortModel()->index(1, ColumnPlots));
    browser.SlotSelectedItemPlaybackCalled();
    QCOMPARE(play.count(), 0);
    browser.tableView()->setCurrentIndex(browser.sortModel()->index(1, 3));
    browser.SlotSelectedItemPlaybackCalled();
    QCOMPARE(play.count(), 1);
    QCOMPARE(play.at(0).at(0).toString(), list[1]);
    // A selection plays only with auto playback on; clearing it plays nothing.
    browser.tableView()->selectRow(0);
    QCOMPARE(play.count(), 1);
    autoPlayback = true;
    browser.tableView()->selectRow(2);
    QCOMPARE(play.count(), 2);
    QCOMPARE(play.at(1).at(0).toString(), list[2]);
    browser.tableView()->clearSelection();
    QCOMPARE(play.count(), 2);
}

void TestTableBrowser::columnVisibilityAndRefresh()
{
    WidgetTableBrowser browser(nullptr, {});
    browser.SlotColumnVisibleChanged((1 << 15) - 1 - (1 << 1) - (1 << 14));
    for (int column = 0; column < 15; ++column)
        QCOMPARE(browser.tableView()->isColumnHidden(column), column == 1 || column == 14);
    // The metadata columns wait to be asked for.
    QVERIFY(browser.tableView()->isColumnHidden(kFirstMetadataColumn));

    browser.tableModel()->setFilePathList(takes(3));
    QSignalSpy changed(browser.tableModel(), &QAbstractItemModel::dataChanged);
    browser.SlotLoudnessVoltModeChanged(true);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toModelIndex(), browser.tableModel()->index(0, 0));
    QCOMPARE(changed.at(0).at(1).toModelIndex(),
             browser.tableModel()->index(2, TableColumnCount - 1));
}

void TestTableBrowser::sortsByPathAndName()
{
    WidgetTableBrowser browser(nullptr, {});
    browser.tableModel()->setFilePathList(
        {"/lib2/x.wav", "/lib/z/d.wav", "/lib/a.wav", "/lib/b/c.wav", "/lib"});
    browser.SlotGetDetailEnded();
    browser.tableView()->sortByColumn(1, Qt::AscendingOrder);
    QCOMPARE(columnOf(browser.sortModel(), 1),
             (QStringList{"/lib", "/lib/a.wav", "/lib/b/c.wav", "/lib/z/d.wav", "/lib2/x.wav"}));
    browser.tableView()->sortByColumn(0, Qt::DescendingOrder);
    QCOMPARE(columnOf(browser.sortModel(), 0),
             (QStringList{"x.wav", "lib", "d.wav", "c.wav", "a.wav"}));
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

    // Natural and case-blind: Foley and foley are one folder, its subfolder
    // "sub" sorts before its "take" files, and takes go by number.
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
    browser.tableView()->sortByColumn(1, Qt::AscendingOrder);
    QCOMPARE(columnOf(proxy, 1), expected);
    browser.tableView()->sortByColumn(1, Qt::DescendingOrder);
    std::reverse(expected.begin(), expected.end());
    QCOMPARE(columnOf(proxy, 1), expected);
}

void TestTableBrowser::nameSearchIgnoresCase()
{
    WidgetTableBrowser browser(nullptr, {});
    browser.tableModel()->setFilePathList(
        {"/lib/take_01.wav", "/lib/Take_02.wav", "/Take/other.wav"});
    browser.SlotGetDetailEnded();
    SearchCriteriaStruct criteria;
    criteria.name = QStringLiteral("tAKE_");
    browser.SlotSearchExecute(criteria);
    // The file name only, in any case: the folder "Take" does not count.
    browser.sortModel()->sort(ColumnFile);
    QCOMPARE(columnOf(browser.sortModel(), 0), (QStringList{"take_01.wav", "Take_02.wav"}));
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
    QVERIFY(!browser.tableView()->isSortingEnabled());
    QCOMPARE(header->sortIndicatorSection(), 1);
    header->resizeSection(0, 77);
    browser.SlotRootPathChanged();
    QCOMPARE(header->sectionSize(0), 77);
    browser.SlotGetDetailEnded();
    QVERIFY(browser.tableView()->isSortingEnabled());
}

void TestTableBrowser::userSortSurvivesARootChange()
{
    WidgetTableBrowser browser(nullptr, {});
    browser.SlotRootPathChanged();
    browser.SlotFilePathListAcquired({"/a/take2.wav", "/a/take10.wav", "/a/Take1.wav"});
    browser.SlotGetDetailEnded();
    KrokTableSortModel* proxy = browser.sortModel();
    // Finished lists come in natural path order until the user sorts otherwise.
    QCOMPARE(columnOf(proxy, 0), (QStringList{"Take1.wav", "take2.wav", "take10.wav"}));
    QHeaderView* header = browser.tableView()->horizontalHeader();
    header->setSortIndicator(ColumnFile, Qt::DescendingOrder);
    QCOMPARE(columnOf(proxy, 0), (QStringList{"take10.wav", "take2.wav", "Take1.wav"}));

    // Another folder: listed in the order found, then sorted the user's way.
    browser.SlotRootPathChanged();
    browser.SlotFilePathListAcquired({"/b/b3.wav", "/b/B20.wav", "/b/a1.wav"});
    QCOMPARE(header->sortIndicatorSection(), int(ColumnFile));
    QCOMPARE(columnOf(proxy, 0), (QStringList{"b3.wav", "B20.wav", "a1.wav"}));
    browser.SlotGetDetailEnded();
    QCOMPARE(columnOf(proxy, 0), (QStringList{"B20.wav", "b3.wav", "a1.wav"}));
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
}

void TestTableBrowser::namedFileIsSelectedWithoutPlaying()
{
    WidgetTableBrowser browser(nullptr, {});
    // Auto playback is on: a selection by hand would start the file.
    const bool autoPlayback = true;
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
