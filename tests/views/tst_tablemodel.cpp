// The file table's model over files written and analysed
// for real: cell texts and sort values, the sort specification, the plot cell,
// alignment, flags and the table font.
#include "KrokManager.h"
#include "TeskManager.h"
#include "WaveBuilder.h"
#include "WaveformStyledItem.h"
#include "krokTableModel.h"

#include <QFontMetrics>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace {

using PlotPointer = QSharedPointer<WaveformStyledItem>;

QStringList columnOf(const QAbstractItemModel& model, int column)
{
    QStringList values;
    for (int row = 0; row < model.rowCount(); ++row)
        values << model.index(row, column).data().toString();
    return values;
}

} // namespace

class TestTableModel : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void placeholderAndHeaders();
    void cellsBlankUntilAnalysed();
    void analysedValues_data();
    void analysedValues();
    void alignmentAndFlags();
    void missingRecordShowsError();
    void plotCellAndPosition();
    void sortSpecification();
    void loudnessVoltMode();
    void tableFont_data();
    void tableFont();

private:
    QString wav(const QString& name) const { return dir.filePath(name); }
    std::unique_ptr<krokTableModel> model(const QStringList& paths, bool analysed = false);

    QTemporaryDir dir;
    TeskManager* manager = nullptr;
};

void TestTableModel::initTestCase()
{
    QVERIFY(dir.isValid());
    manager = new TeskManager(this);
    const auto silence = [this](const char* name, int rate, int bits, int frames) {
        return fixtures::writeFile(wav(QLatin1String(name)),
                                   fixtures::wav(1, rate, bits, std::vector<double>(frames)));
    };
    QVERIFY(silence("one_second.wav", 44100, 16, 44100));
    QVERIFY(silence("ninety.wav", 8000, 8, 90 * 8000));
    QVERIFY(silence("tiny.wav", 8000, 8, 100));
    QVERIFY(fixtures::writeSineWav(wav(QStringLiteral("stereo.wav")), 48000, 2, 24000, 0.5, 100));
    QVERIFY(fixtures::writeSineWav(wav(QStringLiteral("sine_mono.wav")), 48000, 1, 96000, 0.1));
    QVERIFY(fixtures::writeSineWav(wav(QStringLiteral("sine_stereo.wav")), 48000, 2, 96000, 0.1));
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

void TestTableModel::placeholderAndHeaders()
{
    krokTableModel empty(manager);
    QCOMPARE(empty.columnCount(), 0);
    auto m = model({});
    QCOMPARE(m->columnCount(), 26);
    // Past the last column: an empty text, not a crash.
    QCOMPARE(m->headerData(26, Qt::Horizontal), QVariant(QString()));
    QVERIFY(!m->headerData(0, Qt::Vertical).isValid());
    // No files: one row that says so and nothing else.
    QCOMPARE(m->rowCount(), 1);
    QCOMPARE(m->index(0, 0).data().toString(), QStringLiteral("(no files)"));
    QVERIFY(!m->index(1, 0).isValid());
    QVERIFY(!m->index(0, 26).isValid());
    for (int column = 1; column < 15; ++column)
        QVERIFY2(!m->index(0, column).data(256).isValid(), qPrintable(QString::number(column)));
    m->clearRows();
    QCOMPARE(m->rowCount(), 0);
}

void TestTableModel::cellsBlankUntilAnalysed()
{
    const QString path = wav(QStringLiteral("one_second.wav"));
    manager->GetKrokManager()->AnalyzeFile(path);
    auto m = model({path});
    QCOMPARE(m->index(0, 0).data().toString(), QStringLiteral("one_second.wav"));
    QCOMPARE(m->index(0, 1).data().toString(), path);
    QCOMPARE(m->index(0, 9).data(257).toString(), path);
    for (int column = 2; column <= 12; ++column)
        QVERIFY2(!m->index(0, column).data().isValid(), qPrintable(QString::number(column)));
    m->setDetailAcquired(0, true);
    QCOMPARE(m->index(0, 9).data().toString(), QStringLiteral("0:01.000"));
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
    QTest::newRow("duration 1 s") << one << 9 << "0:01.000" << QVariant(1.0f);
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
    if (sort.userType() == QMetaType::Float)
        QCOMPARE(sortValue.toFloat(), sort.toFloat());
    else
        QCOMPARE(sortValue.toString(), sort.toString());
    QCOMPARE(sortValue.userType() == QMetaType::QString, sort.userType() == QMetaType::QString);
    QCOMPARE(m->index(0, 0).data(258).toString(), QStringLiteral("wav"));
}

void TestTableModel::alignmentAndFlags()
{
    auto m = model({wav(QStringLiteral("one_second.wav"))});
    const QList<int> right = {2, 5, 6, 7, 8, 9, 11, 12, 13};
    for (int column = 0; column < 15; ++column) {
        const QModelIndex index = m->index(0, column);
        QCOMPARE(index.data(Qt::TextAlignmentRole).toInt(),
                 int((right.contains(column) ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter));
        // Clicks in the plot column seek instead of entering the cell.
        const Qt::ItemFlags f = m->flags(index);
        QVERIFY(f & Qt::ItemIsDragEnabled);
        QCOMPARE(bool(f & Qt::ItemIsEnabled), column != ColumnPlots);
    }
}

void TestTableModel::missingRecordShowsError()
{
    auto m = model({wav(QStringLiteral("never_analysed.wav"))});
    m->setDetailAcquired(0, true);
    QCOMPARE(m->index(0, 4).data().toString(), QStringLiteral("ERROR"));
    QCOMPARE(m->index(0, 7).data(258).toString(), QStringLiteral("ERROR"));
    for (int column : {2, 3, 5, 6, 7, 8, 9, 10, 11, 12})
        QVERIFY2(!m->index(0, column).data().isValid(), qPrintable(QString::number(column)));
}

void TestTableModel::plotCellAndPosition()
{
    const QStringList paths = {wav(QStringLiteral("one_second.wav")),
                               wav(QStringLiteral("stereo.wav"))};
    auto m = model(paths, true);
    const PlotPointer item = m->index(1, 10).data().value<PlotPointer>();
    QVERIFY(item);
    QVERIFY(!item->multiChannel());
    QCOMPARE(item->plot().size(), 500);
    // A 0.5-peak sine puts its maxima near +50 and minima near -50.
    const auto [lo, hi] = std::minmax_element(item->plot().begin(), item->plot().end());
    QVERIFY(*hi >= 40 && *hi <= 50);
    QVERIFY(*lo <= -40 && *lo >= -50);

    QSignalSpy changed(m.get(), &QAbstractItemModel::dataChanged);
    m->setPlaybackPosition(paths[1], 0.25);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.at(0).at(0).toModelIndex(), m->index(1, 0));
    QCOMPARE(changed.at(0).at(1).toModelIndex(), m->index(1, TableColumnCount - 1));
    QCOMPARE(m->index(1, 10).data().value<PlotPointer>()->position(), 0.25);
    QCOMPARE(m->index(0, 10).data().value<PlotPointer>()->position(), 0.0);
    m->setPlaybackPosition(wav(QStringLiteral("not_listed.wav")), 0.5);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(m->index(1, 10).data().value<PlotPointer>()->position(), 0.0);

    // One lane per channel once the registry keeps them.
    manager->GetKrokManager()->SetMultiPlotEnabled(true);
    auto multi = model({paths[1]}, true);
    manager->GetKrokManager()->SetMultiPlotEnabled(false);
    QVERIFY(!multi->index(0, 10).data().value<PlotPointer>()->multiChannel());
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
    QCOMPARE(columnOf(*m, 13), (QStringList{"0", "", "3", "4", ""}));
    QCOMPARE(columnOf(*m, 14), (QStringList{"first", "", "third", "dee", ""}));
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
    QCOMPARE(columnOf(*m, 14), QVector<QString>(5).toList());
    // A specification that names nothing listed hides nothing.
    m->setRowMatched(2, true);
    m->applySortSpecification({{"/elsewhere.wav", QString()}});
    QCOMPARE(shown(), (QList<bool>{true, true, true, true, true}));
    // A new list clears the specification.
    m->applySortSpecification({{"/lib/b.wav", QString()}});
    m->setFilePathList({"/lib/A.wav", "/lib/b.wav"});
    QCOMPARE(shown(), (QList<bool>{true, true}));
}

void TestTableModel::loudnessVoltMode()
{
    manager->GetKrokManager()->SetLoudnessEnabled(true);
    auto m =
        model({wav(QStringLiteral("sine_mono.wav")), wav(QStringLiteral("sine_stereo.wav"))}, true);
    manager->GetKrokManager()->SetLoudnessEnabled(false);
    const QString monoText = m->index(0, 11).data().toString();
    const QString stereoText = m->index(1, 11).data().toString();
    // A 997 Hz sine at -20 dBFS peak measures about -23.01 LUFS on one channel
    // and 3.01 dB more on two.
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
    for (int height : {16, 22, 30, 60})
        QTest::addRow("row %d", height) << height;
}

void TestTableModel::tableFont()
{
    QFETCH(int, rowHeight);
    FontSettings* fonts = manager->GetFontSettings();
    fonts->SetFont(FontSettings::Table, QStringLiteral("DejaVu Serif"), 13);
    auto m = model({wav(QStringLiteral("one_second.wav"))});
    manager->SetRowHeight(rowHeight);
    // Fitted: sized in pixels (not 40 % of the row taken as points), three
    // fifths of the row unless the line would not fit it.
    fonts->SetFitToCell(true);
    QFont font = m->index(0, 3).data(Qt::FontRole).value<QFont>();
    QCOMPARE(font.family(), QStringLiteral("DejaVu Serif"));
    QVERIFY(font.pixelSize() > 0 && font.pixelSize() <= qRound(rowHeight * 0.6));
    QVERIFY(QFontMetrics(font).height() <= rowHeight - 2);
    QFont larger = font;
    larger.setPixelSize(font.pixelSize() + 1);
    QVERIFY(font.pixelSize() == qRound(rowHeight * 0.6) ||
            QFontMetrics(larger).height() > rowHeight - 2);
    if (rowHeight == 22)
        QVERIFY2(font.pixelSize() >= 12, "the default row reads at header size");
    // Not fitted: the size the user chose.
    fonts->SetFitToCell(false);
    font = m->index(0, 3).data(Qt::FontRole).value<QFont>();
    QCOMPARE(font.pointSize(), 13);
    manager->SetRowHeight(22);
}

QTEST_MAIN(TestTableModel)
#include "tst_tablemodel.moc"
