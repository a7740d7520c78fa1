// Sorting and filtering over files that were really written and analysed.
#include "FlacEncoding.h"
#include "KrokManager.h"
#include "KrokTableSortModel.h"
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

class TestFindSortFilter : public QObject
{
    Q_OBJECT

    QTemporaryDir dir;

    // Writes `takes` (and `more` files as they are), analyses them and shows
    // them in `browser` with sorting on.
    QStringList load(TeskManager& manager, WidgetTableBrowser& browser, const QList<Take>& takes,
                     QStringList more = {})
    {
        QStringList paths;
        for (const Take& t : takes) {
            paths << dir.filePath(t.name);
            if (!fixtures::writeSineWav(paths.last(), t.rate, t.channels, t.frames, 0.0))
                return {};
        }
        paths << more;
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

    // Column `c` top to bottom, each text with the test folder taken off.
    QString column(const QAbstractItemModel* model, int c) const
    {
        QStringList out;
        for (int row = 0; row < model->rowCount(); ++row)
            out << model->index(row, c).data().toString().remove(dir.path() + '/');
        return out.join(' ');
    }

private slots:
    // Numbers as numbers, ties by natural file name, same names by full path;
    // descending reverses the whole order, ties included.
    void sortsByValueThenNameThenPath_data()
    {
        QTest::addColumn<int>("sortColumn");
        QTest::addColumn<bool>("descending");
        QTest::addColumn<QString>("order");
        QTest::newRow("channels") << int(ColumnChannels) << false
                                  << "s/b1.wav s/b/x.wav s/z/x.wav s/a2.wav s/a10.wav s/a1.wav";
        QTest::newRow("channels descending")
            << int(ColumnChannels) << true
            << "s/a1.wav s/a10.wav s/a2.wav s/z/x.wav s/b/x.wav s/b1.wav";
        // As text "96000" < "8000" < "44100" would be wrong.
        QTest::newRow("rate") << int(ColumnSamplingRate) << false
                              << "s/b1.wav s/b/x.wav s/z/x.wav s/a2.wav s/a10.wav s/a1.wav";
        QTest::newRow("name") << int(ColumnFile) << false
                              << "s/a1.wav s/a2.wav s/a10.wav s/b1.wav s/b/x.wav s/z/x.wav";
    }
    void sortsByValueThenNameThenPath()
    {
        QFETCH(int, sortColumn);
        QFETCH(bool, descending);
        QFETCH(QString, order);
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        QVERIFY(!load(manager, browser,
                      {{"s/a10.wav", 48000, 2, 48},
                       {"s/z/x.wav", 44100, 1, 44},
                       {"s/a2.wav", 48000, 2, 48},
                       {"s/b1.wav", 8000, 1, 8},
                       {"s/b/x.wav", 44100, 1, 44},
                       {"s/a1.wav", 96000, 6, 96}})
                     .isEmpty());
        browser.sortModel()->sort(sortColumn,
                                  descending ? Qt::DescendingOrder : Qt::AscendingOrder);
        QCOMPARE(column(browser.sortModel(), ColumnFullPath), order);
    }

    // With the table sorted, files analysed again (Ctrl+R) move to their new
    // places; modification times sort as times, not as texts.
    void sortedRowsFollowNewRecords()
    {
        QStringList files;
        for (int k = 0; k < 3; ++k) {
            files << dir.filePath(QStringLiteral("re/%1.wav").arg(QChar('a' + k)));
            QVERIFY(fixtures::writeSineWav(files[k], 1000, 1, 100 * (k + 1), 0.0));
            QFile file(files[k]);
            QVERIFY(file.open(QIODevice::ReadWrite) &&
                    file.setFileTime(QDateTime::currentDateTime().addSecs(-3600 * (k * 7 + 1)),
                                     QFileDevice::FileModificationTime));
        }
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        QVERIFY(!load(manager, browser, {}, files).isEmpty());
        KrokTableSortModel* proxy = browser.sortModel();
        proxy->sort(ColumnDuration);
        const auto longer = [&browser](int row, int samples) {
            auto record = std::make_shared<AudioFileInfo>(*browser.tableModel()->record(row));
            record->samples = samples;
            return record;
        };
        // Rows of a pass over selected files come by path; a path no longer listed is passed over.
        browser.SlotAnalyzedRowsAcquired({{0, files[0], longer(0, 350)},
                                          {0, dir.filePath("re/gone.wav"), longer(1, 1)},
                                          {9, files[2], longer(2, 250)}});
        QCOMPARE(column(proxy, ColumnFile), QString("b.wav c.wav a.wav"));
        proxy->sort(ColumnModifyTime);
        QCOMPARE(column(proxy, ColumnFile), QString("c.wav b.wav a.wav"));
        browser.SlotAnalyzedRowsAcquired({{1, files[1], longer(1, 200)}});
        QCOMPARE(column(proxy, ColumnFile), QString("c.wav b.wav a.wav"));
        // A new list (the same files in another order) is searched afresh.
        const auto record = longer(0, 777);
        browser.SlotFilePathListAcquired({files[2], files[1], files[0]});
        browser.SlotAnalyzedRowsAcquired({{9, files[0], record}});
        QCOMPARE(browser.tableModel()->record(2)->samples, 777);
    }

    void rowsOutsideSortSpecificationSortLast()
    {
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        const QStringList paths = load(manager, browser,
                                       {{"spec/one.wav", 48000, 1, 48},
                                        {"spec/two.wav", 48000, 1, 48},
                                        {"spec/three.wav", 48000, 1, 48}});
        QVERIFY(!paths.isEmpty());
        // Only two.wav and one.wav are named, in that order.
        browser.applySortSpecification(
            {{paths[1], QStringLiteral("first")}, {paths[0], QStringLiteral("second")}});
        KrokTableSortModel* proxy = browser.sortModel();
        proxy->sort(ColumnSortSpecification, Qt::AscendingOrder);
        // The unnamed file is hidden while the specification is active; its
        // sort value still ranks it after every named one.
        QCOMPARE(column(proxy, ColumnFile), QString("two.wav one.wav"));
        const auto specValue = [&browser](int row) {
            return browser.tableModel()
                ->index(row, ColumnSortSpecification)
                .data(TableRoles::SortValue);
        };
        QVERIFY(KrokTableSortModel::compareValues(specValue(1), specValue(2)) < 0);

        // Dropping the specification and sorting again by that column forgets the
        // old order: every row ties, so names decide.
        browser.resetSortSpecification();
        proxy->sort(ColumnSortSpecification, Qt::AscendingOrder);
        QCOMPARE(column(proxy, ColumnFile), QString("one.wav three.wav two.wav"));
    }

    void filterCriteria_data()
    {
        QTest::addColumn<SearchCriteriaStruct>("criteria");
        QTest::addColumn<QString>("shown");
        const auto row = [](const char* name, const QString& shown, auto&& set) {
            SearchCriteriaStruct c;
            c.useDetail = true;
            c.formatMask = SearchCriteriaStruct::FormatWav;
            set(c);
            QTest::newRow(name) << c << shown;
        };
        row("name ignores case", "take_01.wav Take_02.wav", [](auto& c) {
            c.useDetail = false;
            c.name = "Take";
        });
        row("name anywhere", "long.wav", [](auto& c) { c.name = "ONG"; });
        row("wav only hides the broken file", "long.wav short.wav take_01.wav Take_02.wav",
            [](auto&) {});
        row("error only", "broken.wav",
            [](auto& c) { c.formatMask = SearchCriteriaStruct::FormatError; });
        row("flac only", "tone.flac",
            [](auto& c) { c.formatMask = SearchCriteriaStruct::FormatFlac; });
        // 1500 and 1499 frames at 1000 Hz last 0:01.500 and 0:01.499.
        row("time >= 0:01.500", "long.wav", [](auto& c) {
            c.useTime = true;
            c.timeMs = 1500;
            c.timeMode = SearchCriteriaStruct::GreaterOrEqual;
        });
        row("time = 0:01.499", "short.wav", [](auto& c) {
            c.useTime = true;
            c.timeMs = 1499;
            c.timeMode = SearchCriteriaStruct::Equal;
        });
        row("rate and channels", "take_01.wav Take_02.wav", [](auto& c) {
            c.useChannels = c.useRate = true;
            c.channels = 2;
            c.channelsMode = SearchCriteriaStruct::LessOrEqual;
            c.rate = 44100;
            c.rateMode = SearchCriteriaStruct::GreaterOrEqual;
        });
    }
    void filterCriteria()
    {
        QFETCH(SearchCriteriaStruct, criteria);
        QFETCH(QString, shown);
        const QString broken = dir.filePath(QStringLiteral("flt/broken.wav"));
        QVERIFY(fixtures::WriteBytes(broken, "RIFF"));
        const QString flac = dir.filePath(QStringLiteral("flt/tone.flac"));
        QVERIFY(fixtures::writeSineWav(dir.filePath(QStringLiteral("tone.wav")), 48000, 2, 960));
        QVERIFY(fixtures::encodeFlac(dir.filePath(QStringLiteral("tone.wav")), flac));
        TeskManager manager;
        WidgetTableBrowser browser(&manager, {});
        QVERIFY(!load(manager, browser,
                      {{"flt/take_01.wav", 48000, 2, 480},
                       {"flt/Take_02.wav", 44100, 1, 441},
                       {"flt/long.wav", 1000, 4, 1500},
                       {"flt/short.wav", 1000, 4, 1499}},
                      {broken, flac})
                     .isEmpty());
        browser.SlotSearchExecute(criteria);
        // Natural, case-blind name order: take_01 before Take_02.
        browser.sortModel()->sort(ColumnFile, Qt::AscendingOrder);
        QCOMPARE(column(browser.sortModel(), ColumnFile), shown);
    }

    void mixedValueComparison()
    {
        QVERIFY(KrokTableSortModel::compareValues(QVariant(1.5), QVariant(1)) > 0);
        QVERIFY(KrokTableSortModel::compareValues(QVariant(), QVariant(0)) < 0);
    }
};

QTEST_MAIN(TestFindSortFilter)
#include "tst_findsortfilter.moc"
