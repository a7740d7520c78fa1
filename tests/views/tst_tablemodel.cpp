#include "KrokManager.h"
#include "TeskManager.h"
#include "WaveBuilder.h"
#include "WaveformStyledItem.h"
#include "krokTableModel.h"

#include <QFont>
#include <QFontMetrics>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {

using PlotPointer = QSharedPointer<WaveformStyledItem>;

} // namespace

class TestTableModel : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void headers();
    void placeholderRow();
    void cellsBlankUntilAnalysed();
    void analysedValues_data();
    void analysedValues();
    void alignment_data();
    void alignment();
    void missingRecordShowsError();
    void plotCellAndPosition();
    void multiChannelPlots();
    void flagsKeepPlotCellsOutOfReach();
    void sortSpecification();
    void sortSpecificationLaterEntryKeepsTheRow();
    void loudnessVoltModeRefresh();
    void tableFont_data();
    void tableFont();

private:
    QString wav(const QString& name) const { return dir.filePath(name); }
    krokTableModel* analysedModel(const QStringList& paths);

    QTemporaryDir dir;
    TeskManager* manager = nullptr;
};

void TestTableModel::initTestCase()
{
    QVERIFY(dir.isValid());
    manager = new TeskManager(this);
    QVERIFY(fixtures::writeFile(wav(QStringLiteral("one_second.wav")),
                                fixtures::wav(1, 44100, 16, std::vector<double>(44100))));
    QVERIFY(fixtures::writeFile(wav(QStringLiteral("ninety.wav")),
                                fixtures::wav(1, 8000, 8, std::vector<double>(90 * 8000))));
    QVERIFY(fixtures::writeSineWav(wav(QStringLiteral("stereo.wav")), 48000, 2, 24000, 0.5, 100));
    QVERIFY(fixtures::writeFile(wav(QStringLiteral("tiny.wav")),
                                fixtures::wav(1, 8000, 8, std::vector<double>(100))));
    QVERIFY(fixtures::writeSineWav(wav(QStringLiteral("sine_mono.wav")), 48000, 1, 96000, 0.1));
    QVERIFY(fixtures::writeSineWav(wav(QStringLiteral("sine_stereo.wav")), 48000, 2, 96000, 0.1));
}

krokTableModel* TestTableModel::analysedModel(const QStringList& paths)
{
    auto* model = new krokTableModel(manager, this);
    model->setHeaderLabels(krokTableModel::columnHeaderLabels());
    model->setFilePathList(paths);
    for (int row = 0; row < paths.size(); ++row) {
        manager->GetKrokManager()->AnalyzeFile(paths[row]);
        model->setDetailAcquired(row, true);
    }
    return model;
}

void TestTableModel::headers()
{
    krokTableModel model(manager);
    QCOMPARE(model.columnCount(), 0);
    QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), QString());
    model.setHeaderLabels(krokTableModel::columnHeaderLabels());
    QCOMPARE(model.columnCount(), 26);
    QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), QStringLiteral("File"));
    QCOMPARE(model.headerData(8, Qt::Horizontal).toString(), QStringLiteral("BIT"));
    QCOMPARE(model.headerData(14, Qt::Horizontal).toString(), QStringLiteral("Sort Comments"));
    QCOMPARE(model.headerData(15, Qt::Horizontal).toString(), QStringLiteral("Description"));
    QCOMPARE(model.headerData(25, Qt::Horizontal).toString(), QStringLiteral("Source"));
    QVERIFY(model.headerData(26, Qt::Horizontal).isValid());
    QCOMPARE(model.headerData(26, Qt::Horizontal).toString(), QString());
    QVERIFY(!model.headerData(0, Qt::Vertical).isValid());
    QVERIFY(!model.headerData(0, Qt::Horizontal, Qt::ToolTipRole).isValid());
}

void TestTableModel::placeholderRow()
{
    krokTableModel model(manager);
    model.setHeaderLabels(krokTableModel::columnHeaderLabels());
    QCOMPARE(model.rowCount(), 0);
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    model.setFilePathList({});
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(inserted.count(), 1);
    QCOMPARE(model.index(0, 0).data().toString(), QStringLiteral("(no files)"));
    for (int column = 1; column < 15; ++column) {
        QVERIFY2(!model.index(0, column).data().isValid(), qPrintable(QString::number(column)));
        QVERIFY(!model.index(0, column).data(256).isValid());
    }
    model.clearRows();
    QCOMPARE(model.rowCount(), 0);
}

void TestTableModel::cellsBlankUntilAnalysed()
{
    const QString path = wav(QStringLiteral("one_second.wav"));
    manager->GetKrokManager()->AnalyzeFile(path);
    krokTableModel model(manager);
    model.setHeaderLabels(krokTableModel::columnHeaderLabels());
    model.setFilePathList({path});
    QCOMPARE(model.index(0, 0).data().toString(), QStringLiteral("one_second.wav"));
    QCOMPARE(model.index(0, 1).data().toString(), path);
    QCOMPARE(model.index(0, 13).data().toString(), QString());
    QCOMPARE(model.index(0, 13).data(256).toInt(), 131073);
    for (int column = 2; column <= 12; ++column) {
        QVERIFY2(!model.index(0, column).data().isValid(), qPrintable(QString::number(column)));
    }
    QCOMPARE(model.index(0, 9).data(257).toString(), path);
    model.setDetailAcquired(0, true);
    QCOMPARE(model.index(0, 9).data().toString(), QStringLiteral("0:01.000"));
}

void TestTableModel::analysedValues_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("column");
    QTest::addColumn<QVariant>("display");
    QTest::addColumn<QVariant>("sort");
    const QString one = QStringLiteral("one_second.wav");
    const QString ninety = QStringLiteral("ninety.wav");
    // 44 header bytes plus 44100 frames of 2 bytes = 88244 bytes = 86.18 KB.
    QTest::newRow("size KB") << one << 2 << QVariant(QStringLiteral("86.18 KB")) << QVariant(88244);
    // 44 + 720000 bytes: 0.69 MB.
    QTest::newRow("size MB") << ninety << 2 << QVariant(QStringLiteral("0.69 MB"))
                             << QVariant(720044);
    QTest::newRow("size bytes") << QStringLiteral("tiny.wav") << 2
                                << QVariant(QStringLiteral("144 byte")) << QVariant(144);
    QTest::newRow("format") << one << 4 << QVariant(QStringLiteral("wav"))
                            << QVariant(QStringLiteral("wav"));
    QTest::newRow("rate") << one << 5 << QVariant(44100) << QVariant(44100);
    QTest::newRow("channels") << QStringLiteral("stereo.wav") << 6 << QVariant(2) << QVariant(2);
    QTest::newRow("samples") << ninety << 7 << QVariant(720000) << QVariant(720000);
    QTest::newRow("bits") << ninety << 8 << QVariant(QStringLiteral("8")) << QVariant(8);
    QTest::newRow("duration 1 s") << one << 9 << QVariant(QStringLiteral("0:01.000"))
                                  << QVariant(1.0f);
    QTest::newRow("duration 90 s")
        << ninety << 9 << QVariant(QStringLiteral("1:30.000")) << QVariant(90.0f);
    QTest::newRow("loops") << one << 12 << QVariant(0) << QVariant(0);
}

void TestTableModel::analysedValues()
{
    QFETCH(QString, file);
    QFETCH(int, column);
    QFETCH(QVariant, display);
    QFETCH(QVariant, sort);
    std::unique_ptr<krokTableModel> model(analysedModel({wav(file)}));
    const QModelIndex index = model->index(0, column);
    QCOMPARE(index.data().toString(), display.toString());
    const QVariant sortValue = index.data(256);
    QVERIFY(sortValue.isValid());
    if (sort.userType() == QMetaType::Float) {
        QCOMPARE(sortValue.toFloat(), sort.toFloat());
    } else if (sort.userType() == QMetaType::QString) {
        QCOMPARE(sortValue.toString(), sort.toString());
    } else {
        QCOMPARE(sortValue.toLongLong(), sort.toLongLong());
        // Numbers sort as numbers, not as text.
        QVERIFY(sortValue.userType() != QMetaType::QString);
    }
    QCOMPARE(model->index(0, 0).data(258).toString(), QStringLiteral("wav"));
}

void TestTableModel::alignment_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("alignment");
    const QList<int> right = {2, 5, 6, 7, 8, 9, 11, 12, 13};
    for (int column = 0; column < 15; ++column) {
        QTest::addRow("column %d", column) << column << (right.contains(column) ? 130 : 129);
    }
}

void TestTableModel::alignment()
{
    QFETCH(int, column);
    QFETCH(int, alignment);
    krokTableModel model(manager);
    model.setHeaderLabels(krokTableModel::columnHeaderLabels());
    model.setFilePathList({wav(QStringLiteral("one_second.wav"))});
    QCOMPARE(model.index(0, column).data(Qt::TextAlignmentRole).toInt(), alignment);
    QVERIFY(!model.index(0, column).data(Qt::ToolTipRole).isValid());
}

void TestTableModel::missingRecordShowsError()
{
    const QString never = wav(QStringLiteral("never_analysed.wav"));
    krokTableModel model(manager);
    model.setHeaderLabels(krokTableModel::columnHeaderLabels());
    model.setFilePathList({never});
    model.setDetailAcquired(0, true);
    QCOMPARE(model.index(0, 4).data().toString(), QStringLiteral("ERROR"));
    QCOMPARE(model.index(0, 4).data(256).toString(), QStringLiteral("ERROR"));
    QCOMPARE(model.index(0, 7).data(258).toString(), QStringLiteral("ERROR"));
    for (int column : {2, 3, 5, 6, 7, 8, 9, 10, 11, 12}) {
        QVERIFY2(!model.index(0, column).data().isValid(), qPrintable(QString::number(column)));
    }
    QCOMPARE(model.index(0, 0).data().toString(), QStringLiteral("never_analysed.wav"));
}

void TestTableModel::plotCellAndPosition()
{
    const QStringList paths = {wav(QStringLiteral("one_second.wav")),
                               wav(QStringLiteral("stereo.wav"))};
    std::unique_ptr<krokTableModel> model(analysedModel(paths));
    const QVariant value = model->index(1, 10).data();
    QVERIFY(value.canConvert<PlotPointer>());
    PlotPointer item = value.value<PlotPointer>();
    QVERIFY(!item->multiChannel());
    QCOMPARE(item->plot().size(), 500);
    // A 0.5-peak sine puts its maxima near +50 and minima near -50.
    const auto [lo, hi] = std::minmax_element(item->plot().begin(), item->plot().end());
    QVERIFY(*hi >= 40 && *hi <= 50);
    QVERIFY(*lo <= -40 && *lo >= -50);
    QCOMPARE(item->position(), 0.0);

    QSignalSpy changed(model.get(), &QAbstractItemModel::dataChanged);
    model->setPlaybackPosition(paths[1], 0.25);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toModelIndex(), model->index(1, 0));
    QCOMPARE(changed.at(0).at(1).toModelIndex(), model->index(1, TableColumnCount - 1));
    QCOMPARE(model->index(1, 10).data().value<PlotPointer>()->position(), 0.25);
    QCOMPARE(model->index(0, 10).data().value<PlotPointer>()->position(), 0.0);
    model->setPlaybackPosition(wav(QStringLiteral("not_listed.wav")), 0.5);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(model->index(1, 10).data().value<PlotPointer>()->position(), 0.0);
}

void TestTableModel::multiChannelPlots()
{
    KrokManager* registry = manager->GetKrokManager();
    registry->SetMultiPlotEnabled(true);
    const QString path = wav(QStringLiteral("stereo.wav"));
    std::unique_ptr<krokTableModel> model(analysedModel({path}));
    registry->SetMultiPlotEnabled(false);
    QVERIFY(!model->index(0, 10).data().value<PlotPointer>()->multiChannel());
    model->setMultiPlot(true);
    const PlotPointer item = model->index(0, 10).data().value<PlotPointer>();
    QVERIFY(item->multiChannel());
    QCOMPARE(item->channelPlots().size(), 2);
    QCOMPARE(item->channelPlots().at(0).size(), 500);
    QCOMPARE(item->channelPlots().at(1), item->channelPlots().at(0));
}

void TestTableModel::flagsKeepPlotCellsOutOfReach()
{
    krokTableModel model(manager);
    model.setHeaderLabels(krokTableModel::columnHeaderLabels());
    model.setFilePathList({wav(QStringLiteral("one_second.wav"))});
    for (int column = 0; column < 15; ++column) {
        const Qt::ItemFlags f = model.flags(model.index(0, column));
        QVERIFY(f & Qt::ItemIsDragEnabled);
        QCOMPARE(bool(f & Qt::ItemIsEnabled), column != 10);
        QVERIFY(f & Qt::ItemIsSelectable);
    }
}

void TestTableModel::sortSpecification()
{
    krokTableModel model(manager);
    model.setHeaderLabels(krokTableModel::columnHeaderLabels());
    model.setFilePathList(
        {QStringLiteral("/lib/A.wav"), QStringLiteral("/lib/b.wav"), QStringLiteral("/lib/c.wav")});
    for (int row = 0; row < 3; ++row) {
        QVERIFY(model.isRowShown(row));
    }
    const QList<SortSpecEntry> unmatched =
        model.applySortSpecification({{QStringLiteral("/LIB/a.WAV"), QStringLiteral("first")},
                                      {QStringLiteral("/lib/missing.wav"), QStringLiteral("gone")},
                                      {QStringLiteral("/lib/c.wav"), QStringLiteral("third")}});
    QCOMPARE(unmatched,
             (QList<SortSpecEntry>{{QStringLiteral("/lib/missing.wav"), QStringLiteral("gone")}}));
    QCOMPARE(model.index(0, 13).data().toInt(), 0);
    QCOMPARE(model.index(0, 14).data().toString(), QStringLiteral("first"));
    // Positions count the unmatched entry too.
    QCOMPARE(model.index(2, 13).data().toInt(), 2);
    QCOMPARE(model.index(2, 13).data(256).toInt(), 2);
    QCOMPARE(model.index(2, 14).data().toString(), QStringLiteral("third"));
    QCOMPARE(model.index(1, 13).data().toString(), QString());
    QCOMPARE(model.index(1, 13).data(256).toInt(), 131073);
    QVERIFY(model.isRowShown(0));
    QVERIFY(!model.isRowShown(1));
    QVERIFY(model.isRowShown(2));
    model.setRowMatched(2, false);
    QVERIFY(!model.isRowShown(2));

    model.resetSortSpecification();
    QVERIFY(model.isRowShown(1));
    QVERIFY(!model.isRowShown(2));
    QCOMPARE(model.index(0, 14).data().toString(), QString());
    QCOMPARE(model.index(0, 13).data(256).toInt(), 131073);

    // A specification that names nothing listed hides nothing.
    model.setRowMatched(2, true);
    model.applySortSpecification({{QStringLiteral("/elsewhere.wav"), QString()}});
    for (int row = 0; row < 3; ++row) {
        QVERIFY(model.isRowShown(row));
    }
}

void TestTableModel::sortSpecificationLaterEntryKeepsTheRow()
{
    krokTableModel model(manager);
    model.setHeaderLabels(krokTableModel::columnHeaderLabels());
    model.setFilePathList(
        {QStringLiteral("/lib/d.wav"), QStringLiteral("/lib/D.wav"), QStringLiteral("/lib/e.wav")});
    QList<SortSpecEntry> unmatched =
        model.applySortSpecification({{QStringLiteral("/LIB/D.WAV"), QStringLiteral("x")}});
    QVERIFY(unmatched.isEmpty());
    QCOMPARE(model.index(0, 13).data().toInt(), 0);
    QCOMPARE(model.index(1, 13).data().toString(), QString());
    QVERIFY(!model.isRowShown(1));

    // Two entries naming e.wav: both find the row, the later one keeps it, and
    // neither is reported; an entry that names no row at all is.
    unmatched =
        model.applySortSpecification({{QStringLiteral("/lib/e.wav"), QStringLiteral("1")},
                                      {QStringLiteral("/lib/gone.wav"), QStringLiteral("g")},
                                      {QStringLiteral("/lib/e.wav"), QStringLiteral("2")}});
    QCOMPARE(unmatched.size(), 1);
    QCOMPARE(unmatched.first().second, QStringLiteral("g"));
    QCOMPARE(model.index(2, 14).data().toString(), QStringLiteral("2"));
    QCOMPARE(model.index(2, 13).data().toInt(), 2);
    // A new list clears the specification.
    model.setFilePathList({QStringLiteral("/lib/d.wav")});
    QVERIFY(model.isRowShown(0));
}

void TestTableModel::loudnessVoltModeRefresh()
{
    KrokManager* registry = manager->GetKrokManager();
    registry->SetLoudnessEnabled(true);
    std::unique_ptr<krokTableModel> model(analysedModel(
        {wav(QStringLiteral("sine_mono.wav")), wav(QStringLiteral("sine_stereo.wav"))}));
    registry->SetLoudnessEnabled(false);
    const QString monoText = model->index(0, 11).data().toString();
    const QString stereoText = model->index(1, 11).data().toString();
    if (monoText == QLatin1String("---")) {
        QSKIP("loudness is not measured by this build of the analysis");
    }
    // A 997 Hz sine at -20 dBFS peak measures about -23.01 LUFS on one channel
    // and 3.01 dB more on two.
    QVERIFY2(qAbs(monoText.toDouble() + 23.01) < 0.1, qPrintable(monoText));
    QVERIFY2(qAbs(stereoText.toDouble() + 20.0) < 0.1, qPrintable(stereoText));
    const float monoSort = model->index(0, 11).data(256).toFloat();

    model->setLoudnessVoltMode(true);
    QCOMPARE(model->index(0, 11).data().toString(),
             QString::number(monoText.toDouble() + 3.0103, 'f', 2));
    QCOMPARE(model->index(1, 11).data().toString(), stereoText);
    QVERIFY(qAbs(model->index(0, 11).data(256).toFloat() - (monoSort + 3.0103f)) < 1e-4f);
}

void TestTableModel::tableFont_data()
{
    QTest::addColumn<int>("rowHeight");
    QTest::newRow("shrunk to 16") << 16;
    QTest::newRow("default 22") << 22;
    QTest::newRow("30") << 30;
    QTest::newRow("enlarged to 60") << 60;
}

void TestTableModel::tableFont()
{
    QFETCH(int, rowHeight);
    FontSettings* fonts = manager->GetFontSettings();
    fonts->SetFont(FontSettings::Table, QStringLiteral("DejaVu Serif"), 13);
    krokTableModel model(manager);
    model.setHeaderLabels(krokTableModel::columnHeaderLabels());
    model.setFilePathList({wav(QStringLiteral("one_second.wav"))});
    manager->SetRowHeight(rowHeight);

    // Fitted: sized in pixels (not 40 % of the row taken as points), three
    // fifths of the row unless the line would not fit it.
    fonts->SetFitToCell(true);
    QFont font = model.index(0, 3).data(Qt::FontRole).value<QFont>();
    QCOMPARE(font.family(), QStringLiteral("DejaVu Serif"));
    QVERIFY(font.pixelSize() > 0);
    QVERIFY(font.pixelSize() <= qRound(rowHeight * 0.6));
    QVERIFY(QFontMetrics(font).height() <= rowHeight - 2);
    QFont larger = font;
    larger.setPixelSize(font.pixelSize() + 1);
    QVERIFY(font.pixelSize() == qRound(rowHeight * 0.6) ||
            QFontMetrics(larger).height() > rowHeight - 2);
    if (rowHeight == 22)
        QVERIFY2(font.pixelSize() >= 12, "the default row reads at header size");

    // Not fitted: the size the user chose.
    fonts->SetFitToCell(false);
    font = model.index(0, 3).data(Qt::FontRole).value<QFont>();
    QCOMPARE(font.family(), QStringLiteral("DejaVu Serif"));
    QCOMPARE(font.pointSize(), 13);
    manager->SetRowHeight(22);
}

QTEST_MAIN(TestTableModel)
#include "tst_tablemodel.moc"
