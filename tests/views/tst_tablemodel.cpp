// The file table over files written and analysed for real: the model's cell
// texts and sort values, the sort specification, the plot cell, alignment,
// flags and font; then the browser wired to a real manager and workers: rows
// filled range by range, clicks in the plot, and the metadata columns.
#include "KrokManager.h"
#include "KrokTableSortModel.h"
#include "TeskManager.h"
#include "TestSettings.h"
#include "UcsCatalog.h"
#include "WaveBuilder.h"
#include "WaveformStyledItem.h"
#include "WidgetTableBrowser.h"
#include "krokTableModel.h"

#include <QFontMetrics>
#include <QHeaderView>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace fixtures;
using PlotPointer = QSharedPointer<WaveformStyledItem>;

namespace {

QStringList columnOf(const QAbstractItemModel* model, int column, int role = Qt::DisplayRole)
{
    QStringList values;
    for (int row = 0; row < model->rowCount(); ++row)
        values << model->index(row, column).data(role).toString();
    return values;
}

bool writeSilence(const QString& path, int rate, int bits, int frames)
{
    return writeFile(path, wav(1, rate, bits, std::vector<double>(frames)));
}

} // namespace

class TestTableModel : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void placeholderAndBlankCells();
    void analysedValues_data();
    void analysedValues();
    void alignmentAndFlags();
    void plotCellAndPosition();
    void sortSpecification();
    void loudnessVoltMode();
    void tableFont_data();
    void tableFont();
    void metadataCellsAndTooltips();
    void sortsByMetadata();
    void searchReadsMetadata_data();
    void searchReadsMetadata();
    void fillsRowsRangeByRange();
    void clickInPlotSeeks();

private:
    QString wav(const QString& name) const { return dir.filePath(name); }
    std::unique_ptr<krokTableModel> model(const QStringList& paths, bool analysed = false);
    void load(WidgetTableBrowser& browser, bool analysed = true);

    QTemporaryDir dir;
    QStringList library;
    TeskManager* manager = nullptr;
};

void TestTableModel::initTestCase()
{
    QVERIFY(dir.isValid());
    manager = new TeskManager(this);
    QVERIFY(writeSilence(wav("one_second.wav"), 44100, 16, 44100));
    QVERIFY(writeSilence(wav("ninety.wav"), 8000, 8, 90 * 8000));
    QVERIFY(writeSilence(wav("tiny.wav"), 8000, 8, 100));
    QVERIFY(writeSineWav(wav("stereo.wav"), 48000, 2, 24000, 0.5, 100));
    QVERIFY(writeSineWav(wav("sine_mono.wav"), 48000, 1, 96000, 0.1));
    QVERIFY(writeSineWav(wav("sine_stereo.wav"), 48000, 2, 96000, 0.1));
    // A commercial-style library: bext, iXML, INFO, acid, UCS names.
    Bext door;
    door.description = "Old oak door, slow creak";
    Bext birds;
    birds.description = "Dawn chorus, distant";
    const std::string ixml =
        "<BWFXML><USER><DESCRIPTION>Creaky door (interior)</DESCRIPTION></USER></BWFXML>";
    const std::vector<std::pair<QString, Bytes>> files = {
        {"lib/DOORWood_Creak Open_JD_FKIT.wav",
         wavWith({chunk("bext", bextBody(door)), chunk("iXML", text(ixml)),
                  chunk("LIST", infoList({{"INAM", "Door Open"}, {"IKEY", "hinge"}}))})},
        {"lib/AMBForst_Birds_AB_CD.wav", wavWith({chunk("bext", bextBody(birds))})},
        {"lib/kick_01_hard_v2.wav", wavWith({chunk("LIST", infoList({{"ICMT", "Punchy"}})),
                                             chunk("acid", acidBody(1, 0, 1, 4, 4, 128.0f))})},
        {"lib/zz_silence.wav", wavWith({})},
    };
    QVERIFY(QDir(dir.path()).mkdir("lib"));
    for (const auto& [name, bytes] : files) {
        library << wav(name);
        QVERIFY(writeFile(library.last(), bytes));
    }
}

std::unique_ptr<krokTableModel> TestTableModel::model(const QStringList& paths, bool analysed)
{
    auto m = std::make_unique<krokTableModel>(manager);
    m->setHeaderLabels(krokTableModel::columnHeaderLabels());
    m->setFilePathList(paths);
    for (int row = 0; analysed && row < paths.size(); ++row) {
        manager->GetKrokManager()->AnalyzeFile(paths[row]);
        m->setDetailAcquired(row, true);
    }
    return m;
}

void TestTableModel::load(WidgetTableBrowser& browser, bool analysed)
{
    browser.tableModel()->setFilePathList(library);
    for (int row = 0; analysed && row < library.size(); ++row) {
        manager->GetKrokManager()->AnalyzeFile(library[row]);
        browser.tableModel()->setDetailAcquired(row, true);
    }
    if (analysed)
        browser.SlotGetDetailEnded();
}

void TestTableModel::placeholderAndBlankCells()
{
    auto m = model({});
    QCOMPARE(m->columnCount(), 26);
    QCOMPARE(m->headerData(26, Qt::Horizontal), QVariant(QString()));
    // No files: one row that says so and nothing else.
    QCOMPARE(m->rowCount(), 1);
    QCOMPARE(m->index(0, 0).data().toString(), QStringLiteral("(no files)"));
    QVERIFY(!m->index(1, 0).isValid());
    QVERIFY(!m->index(0, 26).isValid());
    QVERIFY(!m->index(0, 2).data(256).isValid());
    const QString path = wav("one_second.wav");
    manager->GetKrokManager()->AnalyzeFile(path);
    m = model({path, wav("never_analysed.wav")});
    QCOMPARE(m->index(0, 0).data().toString(), QStringLiteral("one_second.wav"));
    QCOMPARE(m->index(0, 1).data().toString(), path);
    QCOMPARE(m->index(0, 9).data(257).toString(), path);
    for (int column = 2; column <= 12; ++column)
        QVERIFY(!m->index(0, column).data().isValid());
    m->setDetailAcquired(0, true);
    QCOMPARE(m->index(0, 9).data().toString(), QStringLiteral("0:01.000"));
    // A file the registry never read shows an error, its numbers blank.
    m->setDetailAcquired(1, true);
    QCOMPARE(m->index(1, 4).data().toString(), QStringLiteral("ERROR"));
    QCOMPARE(m->index(1, 7).data(258).toString(), QStringLiteral("ERROR"));
    QVERIFY(!m->index(1, 7).data().isValid());
}

void TestTableModel::analysedValues_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("display");
    QTest::addColumn<QVariant>("sort");
    const QString one = QStringLiteral("one_second.wav");
    const QString ninety = QStringLiteral("ninety.wav");
    // 44 header bytes plus the samples.
    QTest::newRow("size KB") << one << 2 << "86.18 KB" << QVariant(88244);
    QTest::newRow("size MB") << ninety << 2 << "0.69 MB" << QVariant(720044);
    QTest::newRow("size bytes") << "tiny.wav" << 2 << "144 byte" << QVariant(144);
    QTest::newRow("format") << one << 4 << "wav" << QVariant(QStringLiteral("wav"));
    QTest::newRow("rate") << one << 5 << "44100" << QVariant(44100);
    QTest::newRow("channels") << "stereo.wav" << 6 << "2" << QVariant(2);
    QTest::newRow("samples") << ninety << 7 << "720000" << QVariant(720000);
    QTest::newRow("bits") << ninety << 8 << "8" << QVariant(8);
    QTest::newRow("duration 90 s") << ninety << 9 << "1:30.000" << QVariant(90.0f);
    QTest::newRow("loops") << one << 12 << "0" << QVariant(0);
}

void TestTableModel::analysedValues()
{
    QFETCH(QString, file);
    QFETCH(int, column);
    QFETCH(QString, display);
    QFETCH(QVariant, sort);
    auto m = model({wav(file)}, true);
    const QModelIndex index = m->index(0, column);
    QCOMPARE(index.data().toString(), display);
    const QVariant sortValue = index.data(256);
    QCOMPARE(sortValue.toString(), sort.toString());
    QCOMPARE(sortValue.userType() == QMetaType::QString, sort.userType() == QMetaType::QString);
}

void TestTableModel::alignmentAndFlags()
{
    auto m = model({wav("one_second.wav")});
    const QList<int> right = {2, 5, 6, 7, 8, 9, 11, 12, 13};
    for (int column = 0; column < 15; ++column) {
        const QModelIndex index = m->index(0, column);
        QCOMPARE(index.data(Qt::TextAlignmentRole).toInt(),
                 int((right.contains(column) ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter));
        // Clicks in the plot column seek instead of entering the cell.
        QVERIFY(m->flags(index) & Qt::ItemIsDragEnabled);
        QCOMPARE(bool(m->flags(index) & Qt::ItemIsEnabled), column != ColumnPlots);
    }
}

void TestTableModel::plotCellAndPosition()
{
    const QStringList paths = {wav("one_second.wav"), wav("stereo.wav")};
    auto m = model(paths, true);
    const PlotPointer item = m->index(1, 10).data().value<PlotPointer>();
    QVERIFY(!item->multiChannel());
    QCOMPARE(item->plot().size(), 500);
    // A 0.5-peak sine puts its maxima near +50 and minima near -50.
    const auto [lo, hi] = std::minmax_element(item->plot().begin(), item->plot().end());
    QVERIFY(*hi >= 40 && *hi <= 50 && *lo <= -40 && *lo >= -50);
    QSignalSpy changed(m.get(), &QAbstractItemModel::dataChanged);
    m->setPlaybackPosition(paths[1], 0.25);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toModelIndex(), m->index(1, 0));
    QCOMPARE(changed.at(0).at(1).toModelIndex(), m->index(1, TableColumnCount - 1));
    QCOMPARE(m->index(1, 10).data().value<PlotPointer>()->position(), 0.25);
    QCOMPARE(m->index(0, 10).data().value<PlotPointer>()->position(), 0.0);
    m->setPlaybackPosition(wav("not_listed.wav"), 0.5);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(m->index(1, 10).data().value<PlotPointer>()->position(), 0.0);
    // One lane per channel once the registry keeps them.
    manager->GetKrokManager()->SetMultiPlotEnabled(true);
    auto multi = model({paths[1]}, true);
    manager->GetKrokManager()->SetMultiPlotEnabled(false);
    multi->setMultiPlot(true);
    const PlotPointer lanes = multi->index(0, 10).data().value<PlotPointer>();
    QCOMPARE(lanes->channelPlots().size(), 2);
    QCOMPARE(lanes->channelPlots().at(1), lanes->channelPlots().at(0));
}

void TestTableModel::sortSpecification()
{
    auto m = model({"/lib/A.wav", "/lib/b.wav", "/lib/c.wav", "/lib/d.wav", "/lib/D.wav"});
    // Case aside; positions count unmatched entries too; a file named twice
    // keeps the later entry, and only the first of two rows of one name is found.
    const QList<SortSpecEntry> unmatched = m->applySortSpecification({{"/LIB/a.WAV", "first"},
                                                                      {"/lib/missing.wav", "gone"},
                                                                      {"/lib/c.wav", "early"},
                                                                      {"/lib/c.wav", "third"},
                                                                      {"/LIB/D.WAV", "dee"}});
    QCOMPARE(unmatched, (QList<SortSpecEntry>{{"/lib/missing.wav", "gone"}}));
    QCOMPARE(columnOf(m.get(), 13), (QStringList{"0", "", "3", "4", ""}));
    QCOMPARE(columnOf(m.get(), 14), (QStringList{"first", "", "third", "dee", ""}));
    QCOMPARE(m->index(2, 13).data(256).toInt(), 3);
    QCOMPARE(m->index(1, 13).data(256).toInt(), 131073);
    const auto shown = [&m] {
        QList<bool> flags;
        for (int row = 0; row < m->rowCount(); ++row)
            flags << m->isRowShown(row);
        return flags;
    };
    QCOMPARE(shown(), (QList<bool>{true, false, true, true, false}));
    m->setRowMatched(2, false);
    QCOMPARE(shown(), (QList<bool>{true, false, false, true, false}));
    m->resetSortSpecification();
    QCOMPARE(shown(), (QList<bool>{true, true, false, true, true}));
    QCOMPARE(columnOf(m.get(), 14), QVector<QString>(5).toList());
    // A specification that names nothing listed hides nothing; a new list clears it.
    m->setRowMatched(2, true);
    m->applySortSpecification({{"/elsewhere.wav", QString()}});
    QCOMPARE(shown(), (QList<bool>{true, true, true, true, true}));
    m->applySortSpecification({{"/lib/b.wav", QString()}});
    m->setFilePathList({"/lib/A.wav", "/lib/b.wav"});
    QCOMPARE(shown(), (QList<bool>{true, true}));
}

void TestTableModel::loudnessVoltMode()
{
    manager->GetKrokManager()->SetLoudnessEnabled(true);
    auto m = model({wav("sine_mono.wav"), wav("sine_stereo.wav")}, true);
    manager->GetKrokManager()->SetLoudnessEnabled(false);
    const QString monoText = m->index(0, 11).data().toString();
    const QString stereoText = m->index(1, 11).data().toString();
    // A 997 Hz sine at -20 dBFS peak: about -23.01 LUFS on one channel, 3.01 dB more on two.
    QVERIFY2(qAbs(monoText.toDouble() + 23.01) < 0.1, qPrintable(monoText));
    QVERIFY2(qAbs(stereoText.toDouble() + 20.0) < 0.1, qPrintable(stereoText));
    const float monoSort = m->index(0, 11).data(256).toFloat();
    m->setLoudnessVoltMode(true);
    QCOMPARE(m->index(0, 11).data().toString(),
             QString::number(monoText.toDouble() + 3.0103, 'f', 2));
    QCOMPARE(m->index(1, 11).data().toString(), stereoText);
    QVERIFY(qAbs(m->index(0, 11).data(256).toFloat() - (monoSort + 3.0103f)) < 1e-4f);
}

void TestTableModel::tableFont_data()
{
    QTest::addColumn<int>("rowHeight");
    for (int height : {16, 22, 60})
        QTest::addRow("row %d", height) << height;
}

void TestTableModel::tableFont()
{
    QFETCH(int, rowHeight);
    FontSettings* fonts = manager->GetFontSettings();
    fonts->SetFont(FontSettings::Table, QStringLiteral("DejaVu Serif"), 13);
    auto m = model({wav("one_second.wav")});
    manager->SetRowHeight(rowHeight);
    // Fitted: in pixels, three fifths of the row unless the line would not fit it.
    fonts->SetFitToCell(true);
    QFont font = m->index(0, 3).data(Qt::FontRole).value<QFont>();
    QCOMPARE(font.family(), QStringLiteral("DejaVu Serif"));
    QVERIFY(font.pixelSize() > 0 && font.pixelSize() <= qRound(rowHeight * 0.6));
    QVERIFY(QFontMetrics(font).height() <= rowHeight - 2);
    QFont larger = font;
    larger.setPixelSize(font.pixelSize() + 1);
    QVERIFY(font.pixelSize() == qRound(rowHeight * 0.6) ||
            QFontMetrics(larger).height() > rowHeight - 2);
    QVERIFY(rowHeight != 22 || font.pixelSize() >= 12); // the default row reads at header size
    // Not fitted: the size the user chose.
    fonts->SetFitToCell(false);
    QCOMPARE(m->index(0, 3).data(Qt::FontRole).value<QFont>().pointSize(), 13);
    manager->SetRowHeight(22);
}

void TestTableModel::metadataCellsAndTooltips()
{
    WidgetTableBrowser browser(manager, {});
    krokTableModel* m = browser.tableModel();
    // UCS blocks come from the names, before any analysis; metadata waits for it.
    load(browser, false);
    QCOMPARE(columnOf(m, ColumnCatId), (QStringList{"DOORWood", "AMBForst", "", ""}));
    QCOMPARE(columnOf(m, ColumnCreator), (QStringList{"JD", "AB", "", ""}));
    QCOMPARE(columnOf(m, ColumnDescription), QStringList(QVector<QString>(4).toList()));
    load(browser);
    QCOMPARE(columnOf(m, ColumnDescription),
             (QStringList{"Old oak door, slow creak", "Dawn chorus, distant", "", ""}));
    QCOMPARE(columnOf(m, ColumnTitle), (QStringList{"Door Open", "", "", ""}));
    QCOMPARE(columnOf(m, ColumnComment), (QStringList{"hinge", "", "Punchy", ""}));
    QCOMPARE(columnOf(m, ColumnTempoKey), (QStringList{"", "", "128 BPM", ""}));
    QCOMPARE(columnOf(m, ColumnFxName), (QStringList{"Creak Open", "Birds", "", ""}));
    QCOMPARE(columnOf(m, ColumnCategory), QStringList(QVector<QString>(4).toList()));
    // The tooltip holds every field of the group in full.
    QCOMPARE(columnOf(m, ColumnDescription, Qt::ToolTipRole),
             (QStringList{"Description: Old oak door, slow creak\n"
                          "iXML description: Creaky door (interior)",
                          "Dawn chorus, distant", "", ""}));
    QCOMPARE(m->index(2, ColumnTempoKey).data(Qt::ToolTipRole).toString(),
             QStringLiteral("Tempo: 128 BPM\nBeats: 1\nMeter: 4/4\nType: One-shot"));
    // With the CatID list only its CatIDs count, and they get their names.
    m->setUcsCatalog(
        UcsCatalog::parse("CatID,Category,SubCategory\nDOORWood,DOORS,WOOD\n", nullptr));
    QCOMPARE(columnOf(m, ColumnCatId), (QStringList{"DOORWood", "", "", ""}));
    QCOMPARE(columnOf(m, ColumnCategory), (QStringList{"DOORS-WOOD", "", "", ""}));
    QCOMPARE(m->index(0, ColumnCategory).data(Qt::ToolTipRole).toString(),
             QStringLiteral("Category: DOORS\nSubCategory: WOOD"));
}

void TestTableModel::sortsByMetadata()
{
    WidgetTableBrowser browser(manager, {});
    load(browser);
    KrokTableSortModel* proxy = browser.sortModel();
    // Blank cells first, then the texts letter case aside; ties by name.
    proxy->sort(ColumnDescription, Qt::AscendingOrder);
    QCOMPARE(columnOf(proxy, ColumnFile),
             (QStringList{"kick_01_hard_v2.wav", "zz_silence.wav", "AMBForst_Birds_AB_CD.wav",
                          "DOORWood_Creak Open_JD_FKIT.wav"}));
    proxy->sort(ColumnCatId, Qt::DescendingOrder);
    QCOMPARE(columnOf(proxy, ColumnCatId), (QStringList{"DOORWood", "AMBForst", "", ""}));
}

void TestTableModel::searchReadsMetadata_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("description");
    QTest::addColumn<QStringList>("shown");
    const QStringList door{"DOORWood_Creak Open_JD_FKIT.wav"};
    QTest::newRow("search bar finds a description, case aside") << "OAK"
                                                                << "" << door;
    QTest::newRow("search bar finds an iXML field") << "interior"
                                                    << "" << door;
    QTest::newRow("description contains") << ""
                                          << "DAWN" << QStringList{"AMBForst_Birds_AB_CD.wav"};
    QTest::newRow("a comment is no description") << ""
                                                 << "punchy" << QStringList{};
}

void TestTableModel::searchReadsMetadata()
{
    QFETCH(QString, name);
    QFETCH(QString, description);
    QFETCH(QStringList, shown);
    WidgetTableBrowser browser(manager, {});
    load(browser);
    SearchCriteriaStruct criteria;
    criteria.name = name;
    criteria.useDetail = !description.isEmpty();
    criteria.description = description;
    browser.SlotSearchExecute(criteria);
    browser.sortModel()->sort(ColumnFile, Qt::AscendingOrder);
    QCOMPARE(columnOf(browser.sortModel(), ColumnFile), shown);
}

void TestTableModel::fillsRowsRangeByRange()
{
    QTemporaryDir folder;
    const int count = 200;
    for (int k = 0; k < count; ++k)
        QVERIFY(writeSilence(
            folder.filePath(QStringLiteral("take%1.wav").arg(k, 3, 10, QLatin1Char('0'))), 8000, 8,
            800 + k));
    QVERIFY(fixtures::WriteBytes(folder.filePath("notes.txt"))); // not audio: never listed
    TeskManager owner;
    WidgetTableBrowser browser(&owner, {});
    krokTableModel* m = browser.tableModel();
    QSignalSpy end(&owner, &TeskManager::SigEndGetDetailInfo);
    // Runs after the browser's own slot: the range is filled by then, the next row
    // still blank, and the table stays in path order, not sortable.
    int covered = 0;
    bool inOrder = true;
    connect(&owner, &TeskManager::SigAnalyzedInfoAcquired, this, [&](int from, int to) {
        inOrder =
            inOrder && from == covered && to >= from && !browser.tableView()->isSortingEnabled();
        covered = to + 1;
        for (int row = from; row <= to; ++row)
            inOrder = inOrder && m->index(row, 9).data().isValid();
        inOrder = inOrder && (to + 1 == m->rowCount() || !m->index(to + 1, 9).data().isValid());
    });
    emit browser.SigChangeRootPathCalled(folder.path());
    QVERIFY(end.wait(30000));
    QCOMPARE(m->rowCount(), count);
    QCOMPARE(covered, count);
    QVERIFY(inOrder);
    QVERIFY(browser.tableView()->isSortingEnabled());
    QVERIFY(browser.tableView()->isUpdateInformationEnabled());
    QTRY_COMPARE(browser.sortModel()->rowCount(), count);
    QCOMPARE(browser.sortModel()->index(0, 9).data().toString(), QStringLiteral("0:00.100"));
    QCOMPARE(browser.sortModel()->index(0, 1).data().toString(), folder.filePath("take000.wav"));
}

void TestTableModel::clickInPlotSeeks()
{
    QTemporaryDir folder;
    QVERIFY(writeSilence(folder.filePath("ten.wav"), 8000, 8, 80000));
    TeskManager owner;
    WidgetTableBrowser browser(&owner, {});
    browser.resize(1400, 400);
    browser.show();
    QVERIFY(QTest::qWaitForWindowExposed(&browser));
    QSignalSpy end(&owner, &TeskManager::SigEndGetDetailInfo);
    emit browser.SigChangeRootPathCalled(folder.path());
    QVERIFY(end.wait(30000));
    QSignalSpy seek(&browser, &WidgetTableBrowser::SigStartPlaybackWithSeekCalled);
    SubWidgetTableView* view = browser.tableView();
    QHeaderView* header = view->horizontalHeader();
    const int left = header->sectionViewportPosition(10);
    const int y = view->visualRect(browser.sortModel()->index(0, 10)).center().y();
    for (const int x : {left + 60, left, header->sectionViewportPosition(0) + 5})
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(x, y));
    // The middle of the 120-pixel plot is 5 s in; its left edge is the start;
    // clicks outside the plot do not seek.
    QCOMPARE(seek.count(), 2);
    QCOMPARE(seek.at(0).at(0).toString(), folder.filePath("ten.wav"));
    QCOMPARE(seek.at(0).at(1).toInt(), 5000);
    QCOMPARE(seek.at(1).at(1).toInt(), 0);
    QVERIFY(view->selectionModel()->isRowSelected(0, QModelIndex()));
}

QTEST_MAIN(TestTableModel)
#include "tst_tablemodel.moc"
