#include "FlacEncoding.h"
#include "KrokManager.h"
#include "KrokTableSortModel.h"
#include "SearchRowMatcher.h"
#include "TeskManager.h"
#include "TestSettings.h"
#include "WaveBuilder.h"
#include "WidgetTableBrowser.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

struct Take
{
    QString name;
    int rate;
    int channels;
    int frames;
};

} // namespace

// Sorting and filtering over files that were really written and analysed.
class TestFindSortFilter : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;

    // Writes the files in `takes` (optionally under subfolders), analyses them and
    // shows them in a fresh browser with sorting on.
    QStringList load(TeskManager& manager, WidgetTableBrowser& browser, const QList<Take>& takes)
    {
        QStringList paths;
        for (const Take& t : takes) {
            const QString path = dir.filePath(t.name);
            if (!fixtures::writeSineWav(path, t.rate, t.channels, t.frames, 0.0))
                return {};
            paths << path;
        }
        KrokManager* registry = manager.GetKrokManager();
        if (!registry->RegisterFiles(paths))
            return {};
        for (const QString& p : paths)
            registry->AnalyzeFile(p);
        browser.tableModel()->setFilePathList(paths);
        for (int row = 0; row < paths.size(); ++row)
            browser.tableModel()->setDetailAcquired(row, true);
        browser.SlotGetDetailEnded();
        return paths;
    }

    static QStringList column(const QAbstractItemModel* model, int c)
    {
        QStringList out;
        for (int row = 0; row < model->rowCount(); ++row)
            out << model->index(row, c).data().toString();
        return out;
    }

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    void channelsTiesFallBackToNaturalFileName()
    {
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        const QList<Take> takes{{QStringLiteral("ch/a10.wav"), 48000, 2, 480},
                                {QStringLiteral("ch/a2.wav"), 48000, 2, 480},
                                {QStringLiteral("ch/b1.wav"), 48000, 1, 480},
                                {QStringLiteral("ch/a1.wav"), 48000, 6, 480}};
        QVERIFY(!load(manager, browser, takes).isEmpty());
        KrokTableSortModel* proxy = browser.sortModel();
        proxy->sort(ColumnChannels, Qt::AscendingOrder);
        QCOMPARE(column(proxy, ColumnFile),
                 QStringList({QStringLiteral("b1.wav"), QStringLiteral("a2.wav"),
                              QStringLiteral("a10.wav"), QStringLiteral("a1.wav")}));
        // Descending reverses the whole order, ties included.
        proxy->sort(ColumnChannels, Qt::DescendingOrder);
        QCOMPARE(column(proxy, ColumnFile),
                 QStringList({QStringLiteral("a1.wav"), QStringLiteral("a10.wav"),
                              QStringLiteral("a2.wav"), QStringLiteral("b1.wav")}));
        proxy->sort(ColumnFile, Qt::AscendingOrder);
        QCOMPARE(column(proxy, ColumnFile),
                 QStringList({QStringLiteral("a1.wav"), QStringLiteral("a2.wav"),
                              QStringLiteral("a10.wav"), QStringLiteral("b1.wav")}));
    }

    void sameNameFallsBackToFullPath()
    {
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        const QList<Take> takes{{QStringLiteral("dup/z/x.wav"), 44100, 1, 100},
                                {QStringLiteral("dup/b/x.wav"), 44100, 1, 100},
                                {QStringLiteral("dup/m/x.wav"), 44100, 1, 100}};
        const QStringList paths = load(manager, browser, takes);
        QVERIFY(!paths.isEmpty());
        browser.sortModel()->sort(ColumnSamplingRate, Qt::AscendingOrder);
        QCOMPARE(column(browser.sortModel(), ColumnFullPath),
                 QStringList({paths[1], paths[2], paths[0]}));
        browser.sortModel()->sort(ColumnFile, Qt::AscendingOrder);
        QCOMPARE(column(browser.sortModel(), ColumnFullPath),
                 QStringList({paths[1], paths[2], paths[0]}));
    }

    void numbersSortAsNumbers()
    {
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        // As text "96000" < "8000" < "44100" would be wrong.
        const QList<Take> takes{{QStringLiteral("num/r1.wav"), 96000, 1, 960},
                                {QStringLiteral("num/r2.wav"), 8000, 1, 80},
                                {QStringLiteral("num/r3.wav"), 44100, 1, 441}};
        QVERIFY(!load(manager, browser, takes).isEmpty());
        browser.sortModel()->sort(ColumnSamplingRate, Qt::AscendingOrder);
        QCOMPARE(column(browser.sortModel(), ColumnSamplingRate),
                 QStringList(
                     {QStringLiteral("8000"), QStringLiteral("44100"), QStringLiteral("96000")}));
    }

    void rowsOutsideSortSpecificationSortLast()
    {
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        const QList<Take> takes{{QStringLiteral("spec/one.wav"), 48000, 1, 48},
                                {QStringLiteral("spec/two.wav"), 48000, 1, 48},
                                {QStringLiteral("spec/three.wav"), 48000, 1, 48}};
        const QStringList paths = load(manager, browser, takes);
        QVERIFY(!paths.isEmpty());
        // Only two.wav and one.wav are named, in that order.
        browser.applySortSpecification(
            {{paths[1], QStringLiteral("first")}, {paths[0], QStringLiteral("second")}});
        KrokTableSortModel* proxy = browser.sortModel();
        proxy->sort(ColumnSortSpecification, Qt::AscendingOrder);
        // The unnamed file is hidden while the specification is active; its
        // sort value still ranks it after every named one.
        QCOMPARE(column(proxy, ColumnFile),
                 QStringList({QStringLiteral("two.wav"), QStringLiteral("one.wav")}));
        const krokTableModel* model = browser.tableModel();
        const auto specValue = [model](int row) {
            return model->index(row, ColumnSortSpecification).data(TableRoles::SortValue);
        };
        QCOMPARE(specValue(2).toInt(), 131073);
        QVERIFY(KrokTableSortModel::compareValues(specValue(0), specValue(2)) < 0);
        QVERIFY(KrokTableSortModel::compareValues(specValue(1), specValue(2)) < 0);

        // Dropping the specification and sorting again by that column forgets the
        // old order: every row ties, so names decide.
        browser.resetSortSpecification();
        proxy->sort(ColumnSortSpecification, Qt::AscendingOrder);
        QCOMPARE(column(proxy, ColumnFile),
                 QStringList({QStringLiteral("one.wav"), QStringLiteral("three.wav"),
                              QStringLiteral("two.wav")}));
    }

    void filterCriteria_data()
    {
        QTest::addColumn<SearchCriteriaStruct>("criteria");
        QTest::addColumn<QStringList>("shown");

        SearchCriteriaStruct byName;
        byName.name = QStringLiteral("Take");
        QTest::newRow("name ignores case")
            << byName
            << QStringList({QStringLiteral("take_01.wav"), QStringLiteral("Take_02.wav")});
        byName.name = QStringLiteral("ONG");
        QTest::newRow("name anywhere, any case")
            << byName << QStringList({QStringLiteral("long.wav")});

        SearchCriteriaStruct wavOnly;
        wavOnly.useDetail = true;
        wavOnly.formatMask = SearchCriteriaStruct::FormatWav;
        QTest::newRow("wav only hides the broken file")
            << wavOnly
            << QStringList({QStringLiteral("long.wav"), QStringLiteral("short.wav"),
                            QStringLiteral("take_01.wav"), QStringLiteral("Take_02.wav")});

        SearchCriteriaStruct errorOnly = wavOnly;
        errorOnly.formatMask = SearchCriteriaStruct::FormatError;
        QTest::newRow("error only") << errorOnly << QStringList({QStringLiteral("broken.wav")});
        SearchCriteriaStruct flacOnly = wavOnly;
        flacOnly.formatMask = SearchCriteriaStruct::FormatFlac;
        QTest::newRow("flac only") << flacOnly << QStringList({QStringLiteral("tone.flac")});

        SearchCriteriaStruct atLeast1500;
        atLeast1500.useDetail = true;
        atLeast1500.useTime = true;
        atLeast1500.timeMs = 1500;
        atLeast1500.timeMode = SearchCriteriaStruct::GreaterOrEqual;
        QTest::newRow("time >= 0:01.500")
            << atLeast1500 << QStringList({QStringLiteral("long.wav")});

        SearchCriteriaStruct equal1499 = atLeast1500;
        equal1499.timeMs = 1499;
        equal1499.timeMode = SearchCriteriaStruct::Equal;
        QTest::newRow("time = 0:01.499") << equal1499 << QStringList({QStringLiteral("short.wav")});

        SearchCriteriaStruct stereo;
        stereo.useDetail = true;
        stereo.useChannels = true;
        stereo.channels = 2;
        stereo.channelsMode = SearchCriteriaStruct::LessOrEqual;
        stereo.useRate = true;
        stereo.rate = 44100;
        stereo.rateMode = SearchCriteriaStruct::GreaterOrEqual;
        stereo.formatMask = SearchCriteriaStruct::FormatWav;
        QTest::newRow("rate and channels")
            << stereo
            << QStringList({QStringLiteral("take_01.wav"), QStringLiteral("Take_02.wav")});
    }

    void filterCriteria()
    {
        QFETCH(SearchCriteriaStruct, criteria);
        QFETCH(QStringList, shown);
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        // 1500 and 1499 frames at 1000 Hz last 0:01.500 and 0:01.499.
        const QList<Take> takes{{QStringLiteral("flt/take_01.wav"), 48000, 2, 480},
                                {QStringLiteral("flt/Take_02.wav"), 44100, 1, 441},
                                {QStringLiteral("flt/long.wav"), 1000, 4, 1500},
                                {QStringLiteral("flt/short.wav"), 1000, 4, 1499}};
        QStringList paths = load(manager, browser, takes);
        QVERIFY(!paths.isEmpty());
        const QString broken = dir.filePath(QStringLiteral("flt/broken.wav"));
        QVERIFY(fixtures::WriteBytes(broken, "RIFF"));
        paths << broken;
        const QString flac = dir.filePath(QStringLiteral("flt/tone.flac"));
        QVERIFY(fixtures::writeSineWav(dir.filePath(QStringLiteral("tone.wav")), 48000, 2, 960));
        QVERIFY(fixtures::encodeFlac(dir.filePath(QStringLiteral("tone.wav")), flac));
        paths << flac;
        QVERIFY(manager.GetKrokManager()->RegisterFiles(paths));
        manager.GetKrokManager()->AnalyzeFile(broken);
        manager.GetKrokManager()->AnalyzeFile(flac);
        browser.tableModel()->setFilePathList(paths);
        for (int row = 0; row < paths.size(); ++row)
            browser.tableModel()->setDetailAcquired(row, true);
        browser.SlotGetDetailEnded();

        browser.SlotSearchExecute(criteria);
        // Natural, case-blind name order: take_01 before Take_02.
        browser.sortModel()->sort(ColumnFile, Qt::AscendingOrder);
        QCOMPARE(column(browser.sortModel(), ColumnFile), shown);
    }

    void durationText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<int>("ms");
        QTest::newRow("short") << QStringLiteral("0:01.500") << true << 1500;
        QTest::newRow("hour+") << QStringLiteral("75:00.001") << true << 4500001;
        QTest::newRow("blank") << QString() << false << 0;
        QTest::newRow("no colon") << QStringLiteral("01.500") << false << 0;
        QTest::newRow("letters") << QStringLiteral("a:bc.def") << false << 0;
    }

    void durationText()
    {
        QFETCH(QString, text);
        QFETCH(bool, ok);
        QFETCH(int, ms);
        int parsed = -1;
        QCOMPARE(SearchRowMatcher::parseDurationMs(text, &parsed), ok);
        if (ok)
            QCOMPARE(parsed, ms);
    }

    void mixedValueComparison()
    {
        QVERIFY(KrokTableSortModel::compareValues(QVariant(9), QVariant(qint64(10))) < 0);
        QVERIFY(KrokTableSortModel::compareValues(QVariant(1.5), QVariant(1)) > 0);
        QVERIFY(KrokTableSortModel::compareValues(QVariant(), QVariant(0)) < 0);
        QCOMPARE(KrokTableSortModel::compareValues(QVariant(QStringLiteral("b")),
                                                   QVariant(QStringLiteral("b"))),
                 0);
    }
};

QTEST_MAIN(TestFindSortFilter)
#include "tst_findsortfilter.moc"
