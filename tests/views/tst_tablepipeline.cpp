// The browser wired to a real manager, list worker, registry and detail
// worker over files that were really written: rows filled range by range,
// clicks in the plot, and the metadata columns (cells, tooltips, sorting, the
// UCS columns with and without a CatID list, the searches reading them).

#include "KrokManager.h"
#include "KrokTableSortModel.h"
#include "SearchRowMatcher.h"
#include "TeskManager.h"
#include "UcsCatalog.h"
#include "WaveBuilder.h"
#include "WidgetTableBrowser.h"

#include <QHeaderView>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace fixtures;

namespace {

// 8 kHz mono 8-bit silence of `frames` frames.
bool writeSilence(const QString& path, int frames)
{
    return writeFile(path, wav(1, 8000, 8, std::vector<double>(frames)));
}

} // namespace

class TestTablePipeline : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;
    QStringList paths;

    // A commercial-style library: descriptions in bext and iXML, INFO tags,
    // UCS names; one file with nothing, one with a plain name.
    void writeLibrary()
    {
        Bext door;
        door.description = "Old oak door, slow creak";
        door.originator = "Field Kit";
        door.originationDate = "2023-04-01";
        const std::string ixml = "<BWFXML><USER><DESCRIPTION>Creaky door (interior)"
                                 "</DESCRIPTION></USER></BWFXML>";
        Bext birds;
        birds.description = "Dawn chorus, distant";
        const std::vector<std::pair<QString, Bytes>> files = {
            {QStringLiteral("DOORWood_Creak Open_JD_FKIT.wav"),
             wavWith({chunk("bext", bextBody(door)), chunk("iXML", text(ixml)),
                      chunk("LIST", infoList({{"INAM", "Door Open"}, {"IKEY", "hinge"}}))})},
            {QStringLiteral("AMBForst_Birds_AB_CD.wav"), wavWith({chunk("bext", bextBody(birds))})},
            {QStringLiteral("kick_01_hard_v2.wav"),
             wavWith({chunk("LIST", infoList({{"ICMT", "Punchy"}})),
                      chunk("acid", acidBody(1, 0, 1, 4, 4, 128.0f))})},
            {QStringLiteral("zz_silence.wav"), wavWith({})},
        };
        for (const auto& [name, bytes] : files) {
            paths << dir.filePath(name);
            QVERIFY(writeFile(paths.last(), bytes));
        }
    }

    void load(TeskManager& manager, WidgetTableBrowser& browser, bool analysed = true)
    {
        KrokManager* registry = manager.GetKrokManager();
        browser.tableModel()->setFilePathList(paths);
        if (!analysed)
            return;
        for (int row = 0; row < paths.size(); ++row) {
            registry->AnalyzeFile(paths[row]);
            browser.tableModel()->setDetailAcquired(row, true);
        }
        browser.SlotGetDetailEnded();
    }

    static QStringList column(const QAbstractItemModel* model, int c, int role = Qt::DisplayRole)
    {
        QStringList out;
        for (int row = 0; row < model->rowCount(); ++row)
            out << model->index(row, c).data(role).toString();
        return out;
    }

private slots:
    void fillsRowsRangeByRange();
    void clickInPlotSeeks();

    void initTestCase()
    {
        QVERIFY(dir.isValid());
        writeLibrary();
    }

    void cellsAndTooltips()
    {
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        load(manager, browser, false);
        krokTableModel* model = browser.tableModel();
        // UCS blocks come from the names, before any analysis; metadata waits for it.
        QCOMPARE(column(model, ColumnCatId),
                 (QStringList{"DOORWood", "AMBForst", QString(), QString()}));
        QCOMPARE(column(model, ColumnCreator), (QStringList{"JD", "AB", QString(), QString()}));
        QCOMPARE(column(model, ColumnDescription), QStringList(QVector<QString>(4).toList()));

        load(manager, browser);
        QCOMPARE(column(model, ColumnDescription),
                 (QStringList{"Old oak door, slow creak", "Dawn chorus, distant", "", ""}));
        QCOMPARE(column(model, ColumnTitle), (QStringList{"Door Open", "", "", ""}));
        QCOMPARE(column(model, ColumnComment), (QStringList{"hinge", "", "Punchy", ""}));
        QCOMPARE(column(model, ColumnTempoKey), (QStringList{"", "", "128 BPM", ""}));
        QCOMPARE(column(model, ColumnFxName), (QStringList{"Creak Open", "Birds", "", ""}));
        // Without a list there are no category names.
        QCOMPARE(column(model, ColumnCategory), QStringList(QVector<QString>(4).toList()));

        // The tooltip holds every field of the group in full.
        QCOMPARE(model->index(0, ColumnDescription).data(Qt::ToolTipRole).toString(),
                 QStringLiteral("Description: Old oak door, slow creak\n"
                                "iXML description: Creaky door (interior)"));
        QCOMPARE(model->index(1, ColumnDescription).data(Qt::ToolTipRole).toString(),
                 QStringLiteral("Dawn chorus, distant"));
        QCOMPARE(model->index(2, ColumnTempoKey).data(Qt::ToolTipRole).toString(),
                 QStringLiteral("Tempo: 128 BPM\nBeats: 1\nMeter: 4/4\nType: One-shot"));
        QVERIFY(!model->index(3, ColumnDescription).data(Qt::ToolTipRole).isValid());

        // With the CatID list only its CatIDs count, and they get their names.
        model->setUcsCatalog(UcsCatalog::parse("CatID,Category,SubCategory\n"
                                               "DOORWood,DOORS,WOOD\n",
                                               nullptr));
        QCOMPARE(column(model, ColumnCatId), (QStringList{"DOORWood", "", "", ""}));
        QCOMPARE(column(model, ColumnCategory), (QStringList{"DOORS-WOOD", "", "", ""}));
        QCOMPARE(model->index(0, ColumnCategory).data(Qt::ToolTipRole).toString(),
                 QStringLiteral("Category: DOORS\nSubCategory: WOOD"));
    }

    void sortsByMetadata()
    {
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        load(manager, browser);
        KrokTableSortModel* proxy = browser.sortModel();
        // Blank cells first, then the texts letter case aside; ties by name.
        proxy->sort(ColumnDescription, Qt::AscendingOrder);
        QCOMPARE(column(proxy, ColumnFile),
                 (QStringList{"kick_01_hard_v2.wav", "zz_silence.wav", "AMBForst_Birds_AB_CD.wav",
                              "DOORWood_Creak Open_JD_FKIT.wav"}));
        proxy->sort(ColumnCatId, Qt::AscendingOrder);
        QCOMPARE(column(proxy, ColumnCatId),
                 (QStringList{QString(), QString(), "AMBForst", "DOORWood"}));
    }

    void searchReadsMetadata_data()
    {
        QTest::addColumn<SearchCriteriaStruct>("criteria");
        QTest::addColumn<QStringList>("shown");

        SearchCriteriaStruct text;
        text.name = QStringLiteral("OAK");
        QTest::newRow("search bar finds a description, letter case aside")
            << text << QStringList{"DOORWood_Creak Open_JD_FKIT.wav"};
        text.name = QStringLiteral("interior");
        QTest::newRow("search bar finds an iXML field")
            << text << QStringList{"DOORWood_Creak Open_JD_FKIT.wav"};
        text.name = QStringLiteral("Kick");
        QTest::newRow("file names letter case aside") << text << QStringList{"kick_01_hard_v2.wav"};

        SearchCriteriaStruct description;
        description.useDetail = true;
        description.description = QStringLiteral("DAWN");
        QTest::newRow("description contains")
            << description << QStringList{"AMBForst_Birds_AB_CD.wav"};
        description.description = QStringLiteral("punchy");
        QTest::newRow("a comment is no description") << description << QStringList{};
    }

    void searchReadsMetadata()
    {
        QFETCH(SearchCriteriaStruct, criteria);
        QFETCH(QStringList, shown);
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        load(manager, browser);
        browser.SlotSearchExecute(criteria);
        browser.sortModel()->sort(ColumnFile, Qt::AscendingOrder);
        QCOMPARE(column(browser.sortModel(), ColumnFile), shown);
    }
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
