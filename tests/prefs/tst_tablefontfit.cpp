#include "FontSettings.h"
#include "TableFontFit.h"

#include <QTest>

class tst_TableFontFit final : public QObject
{
    Q_OBJECT

private slots:
    void followsFortyPercentOfTheRow_data()
    {
        QTest::addColumn<int>("stored");
        QTest::addColumn<int>("rowHeight");
        QTest::addColumn<bool>("stores");
        QTest::addColumn<int>("size");
        QTest::newRow("30 px row gives 12") << 11 << 30 << true << 12;
        QTest::newRow("already 12 at 30 px") << 12 << 30 << false << 12;
        QTest::newRow("22 px row truncates 8.8") << 11 << 22 << true << 8;
        // 8 never equals 8.8, so it is written again, with the same result.
        QTest::newRow("8.8 is stored every time") << 8 << 22 << true << 8;
        QTest::newRow("10 px row") << 11 << 10 << true << 4;
        QTest::newRow("large rows have no ceiling") << 11 << 200 << true << 80;
    }

    void followsFortyPercentOfTheRow()
    {
        QFETCH(int, stored);
        QFETCH(int, rowHeight);
        QFETCH(bool, stores);
        QFETCH(int, size);
        FontSettings fonts;
        fonts.SetFont(FontSettings::Tree, QStringLiteral("Tree Face"), 15);
        fonts.SetFont(FontSettings::Table, QStringLiteral("Table Face"), stored);
        fonts.SetFitToCell(true);
        QCOMPARE(FitTableFontToRow(fonts, rowHeight), stores);
        QCOMPARE(fonts.GetPointSize(FontSettings::Table), size);
        QCOMPARE(fonts.GetFamily(FontSettings::Table), QStringLiteral("Table Face"));
        QCOMPARE(fonts.GetPointSize(FontSettings::Tree), 15);
    }

    void nothingWithoutFit()
    {
        FontSettings fonts;
        fonts.SetFont(FontSettings::Table, QStringLiteral("Table Face"), 11);
        fonts.SetFitToCell(false);
        QVERIFY(!FitTableFontToRow(fonts, 30));
        QCOMPARE(fonts.GetPointSize(FontSettings::Table), 11);
    }
};

QTEST_GUILESS_MAIN(tst_TableFontFit)
#include "tst_tablefontfit.moc"
