#include "KrokTableSortModel.h"
#include "TeskManager.h"
#include "WaveBuilder.h"
#include "WidgetTableBrowser.h"
#include "krokTableModel.h"

#include <QHeaderView>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

// The browser wired to a real manager, list worker, registry and detail worker.
namespace {

// 8 kHz mono 8-bit silence of `frames` frames.
bool writeSilence(const QString& path, int frames)
{
    return fixtures::writeFile(path, fixtures::wav(1, 8000, 8, std::vector<double>(frames)));
}

} // namespace

class TestTablePipeline : public QObject
{
    Q_OBJECT
private slots:
    void fillsRowsRangeByRange();
    void clickInPlotSeeks();
};

void TestTablePipeline::fillsRowsRangeByRange()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const int count = 400;
    for (int k = 0; k < count; ++k) {
        QVERIFY(writeSilence(
            dir.filePath(QStringLiteral("take%1.wav").arg(k, 3, 10, QLatin1Char('0'))), 800 + k));
    }
    // Not audio: never listed.
    QFile other(dir.filePath(QStringLiteral("notes.txt")));
    QVERIFY(other.open(QIODevice::WriteOnly));
    other.close();

    TeskManager manager;
    WidgetTableBrowser browser(&manager, {});
    krokTableModel* model = browser.tableModel();
    QSignalSpy end(&manager, &TeskManager::SigEndGetDetailInfo);

    // Runs after the browser's own slot: the reported range must be filled by
    // then, and the rows after it still blank.
    int covered = 0;
    bool rangesInOrder = true;
    bool filledInTime = true;
    connect(&manager, &TeskManager::SigAnalyzedInfoAcquired, this, [&](int from, int to) {
        rangesInOrder = rangesInOrder && from == covered && to >= from;
        covered = to + 1;
        for (int row = from; row <= to; ++row) {
            filledInTime = filledInTime && model->index(row, 9).data().isValid();
        }
        if (to + 1 < model->rowCount()) {
            filledInTime = filledInTime && !model->index(to + 1, 9).data().isValid();
        }
        // While analysing, the table stays in path order and cannot be re-sorted.
        filledInTime = filledInTime && !browser.tableView()->isSortingEnabled();
    });

    emit browser.SigChangeRootPathCalled(dir.path());
    QVERIFY(end.wait(30000));
    QCOMPARE(model->rowCount(), count);
    QCOMPARE(covered, count);
    QVERIFY(rangesInOrder);
    QVERIFY(filledInTime);
    QVERIFY(browser.tableView()->isSortingEnabled());
    QVERIFY(browser.tableView()->isUpdateInformationEnabled());
    QTRY_COMPARE(browser.sortModel()->rowCount(), count);
    // Column widths were set on this first root change.
    QVERIFY(browser.tableView()->horizontalHeader()->sectionSize(1) >= 180);
    const QModelIndex first = browser.sortModel()->index(0, 9);
    QCOMPARE(first.data().toString(), QStringLiteral("0:00.100"));
    QCOMPARE(browser.sortModel()->index(0, 1).data().toString(),
             dir.filePath(QStringLiteral("take000.wav")));
}

void TestTablePipeline::clickInPlotSeeks()
{
    QTemporaryDir dir;
    QVERIFY(writeSilence(dir.filePath(QStringLiteral("ten.wav")), 80000));
    TeskManager manager;
    WidgetTableBrowser browser(&manager, {});
    browser.resize(1400, 400);
    browser.show();
    QVERIFY(QTest::qWaitForWindowExposed(&browser));
    QSignalSpy end(&manager, &TeskManager::SigEndGetDetailInfo);
    emit browser.SigChangeRootPathCalled(dir.path());
    QVERIFY(end.wait(30000));
    QSignalSpy seek(&browser, &WidgetTableBrowser::SigStartPlaybackWithSeekCalled);

    SubWidgetTableView* view = browser.tableView();
    QHeaderView* header = view->horizontalHeader();
    const int left = header->sectionViewportPosition(10);
    const int width = header->sectionSize(10);
    QCOMPARE(width, 120);
    const int y = view->visualRect(browser.sortModel()->index(0, 10)).center().y();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(left + 60, y));
    QCOMPARE(seek.count(), 1);
    QCOMPARE(seek.at(0).at(0).toString(), dir.filePath(QStringLiteral("ten.wav")));
    QCOMPARE(seek.at(0).at(1).toInt(), 5000);
    QVERIFY(view->selectionModel()->isRowSelected(0, QModelIndex()));

    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(left, y));
    QCOMPARE(seek.count(), 2);
    QCOMPARE(seek.at(1).at(1).toInt(), 0);

    // Clicks outside the plot column do not seek.
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(header->sectionViewportPosition(0) + 5, y));
    QCOMPARE(seek.count(), 2);
}

QTEST_MAIN(TestTablePipeline)
#include "tst_tablepipeline.moc"
