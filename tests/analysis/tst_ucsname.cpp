// UCS file names, the CatID list as libraries export it, and its loading off
// the calling thread.

#include "TestSettings.h"
#include "UcsCatalog.h"
#include "UcsCatalogLoader.h"
#include "UcsName.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

namespace {

// The official list's layout: more columns than we read, quoted synonyms.
const QByteArray kCsv = "Category,SubCategory,CatID,CatShort,Explanations,Synonyms\r\n"
                        "AMBIENCE,FOREST,AMBForst,AMB,\"Woods, jungle\",\"woods, trees\"\r\n"
                        "DOORS,WOOD,DOORWood,DOOR,Wooden doors,\"gate, hatch\"\r\n"
                        "USER INTERFACE,CLICK,UIClick,UI,,\r\n";

QString describe(const UcsName& n)
{
    if (!n.isValid())
        return QStringLiteral("(not UCS)");
    return QStringList{n.catId,    n.userCategory, n.fxName,   n.creatorId,
                       n.sourceId, n.userData,     n.category, n.subCategory}
        .join(QLatin1Char('|'));
}

} // namespace

class TestUcsName : public QObject
{
    Q_OBJECT
private slots:
    void parsesNames_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("withList");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const char* file, bool list, const char* expected) {
            QTest::newRow(name) << QString::fromUtf8(file) << list << QString::fromUtf8(expected);
        };
        row("four blocks", "DOORWood_Creaky Door Open_JDOE_MYLIB.wav", false,
            "DOORWood||Creaky Door Open|JDOE|MYLIB|||");
        row("user category and user data", "/lib/AMBForst-Night_Owls far_AB_XYZ_take2_v1.WAV",
            false, "AMBForst|Night|Owls far|AB|XYZ|take2_v1||");
        row("short category prefix", "UIClick_Soft tick_ZZ_UIKIT.ogg", false,
            "UIClick||Soft tick|ZZ|UIKIT|||");
        row("ordinary name", "kick_01_hard_v2.wav", false, "(not UCS)");
        row("numbered takes are no creator", "SFXDoor_wood_01_02.wav", false, "(not UCS)");
        row("all capitals is no CatID", "DOOR_Wood_JD_LIB.wav", false, "(not UCS)");
        row("one capital is no CatID", "BassLoop_120_Dm_A.wav", false, "(not UCS)");
        row("three blocks", "DOORWood_Open_JD.wav", false, "(not UCS)");
        row("empty block", "DOORWood__JD_LIB.wav", false, "(not UCS)");
        row("list names the categories", "DOORWood_Open_JD_LIB.wav", true,
            "DOORWood||Open|JD|LIB||DOORS|WOOD");
        row("list spelling wins", "doorwood_Open_JD_LIB.wav", true,
            "DOORWood||Open|JD|LIB||DOORS|WOOD");
        row("list rules out look-alikes", "GUNAuto_Burst_JD_LIB.wav", true, "(not UCS)");
        row("list allows numbered creators", "UIClick_Tick_01_02.wav", true,
            "UIClick||Tick|01|02||USER INTERFACE|CLICK");
    }

    void parsesNames()
    {
        QFETCH(QString, file);
        QFETCH(bool, withList);
        QFETCH(QString, expected);
        const std::shared_ptr<const UcsCatalog> list = UcsCatalog::parse(kCsv, nullptr);
        QVERIFY(list);
        QCOMPARE(describe(ParseUcsName(file, withList ? list.get() : nullptr)), expected);
    }

    void readsListExports_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("size");
        QTest::addColumn<QString>("doorWood"); // "category|subcategory" of DOORWood, or the error

        QTest::newRow("csv") << kCsv << 3 << QStringLiteral("DOORS|WOOD");
        QTest::newRow("csv with byte-order mark, LF")
            << QByteArray("\xef\xbb\xbf") + QByteArray(kCsv).replace("\r\n", "\n") << 3
            << QStringLiteral("DOORS|WOOD");
        QTest::newRow("tsv, other column order")
            << QByteArray("CatID\tSub Category\tCategory\nDOORWood\tWOOD\tDOORS\n") << 1
            << QStringLiteral("DOORS|WOOD");
        QTest::newRow("semicolons after a title row")
            << QByteArray("UCS v8.2;;\n\nCategory;SubCategory;Cat_ID\nDOORS;WOOD;DOORWood\n") << 1
            << QStringLiteral("DOORS|WOOD");
        QTextCodec* utf16 = QTextCodec::codecForName("UTF-16LE");
        QTest::newRow("utf-16 tab-separated text (a spreadsheet's Unicode export)")
            << QByteArray("\xff\xfe") + utf16->fromUnicode(QString::fromUtf8(
                                            "Category\tSubCategory\tCatID\r\n"
                                            "\xe3\x83\x89\xe3\x82\xa2\tWOOD\tDOORWood\r\n"))
            << 1 << QString::fromUtf8("\xe3\x83\x89\xe3\x82\xa2|WOOD");
        QTest::newRow("quoted line break")
            << QByteArray("CatID,Category,SubCategory\n\"DOORWood\",\"DOORS\nOLD\",WOOD\n") << 1
            << QStringLiteral("DOORS\nOLD|WOOD");
        QTest::newRow("no CatID column") << QByteArray("Category,SubCategory\nDOORS,WOOD\n") << 0
                                         << QStringLiteral("The CatID list has no CatID column.");
        QTest::newRow("header only") << QByteArray("CatID,Category\n") << 0
                                     << QStringLiteral("The CatID list holds no CatID.");
        QTest::newRow("not text at all") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16) << 0
                                         << QStringLiteral("The CatID list has no CatID column.");
    }

    void readsListExports()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, size);
        QFETCH(QString, doorWood);
        QString error;
        const std::shared_ptr<const UcsCatalog> list = UcsCatalog::parse(bytes, &error);
        if (size == 0) {
            QVERIFY(!list);
            QCOMPARE(error, doorWood);
            return;
        }
        QVERIFY2(list, qPrintable(error));
        QCOMPARE(list->size(), size);
        const UcsCatalog::Entry* entry = list->find(QStringLiteral("DOORWOOD"));
        QVERIFY(entry);
        QCOMPARE(entry->catId, QStringLiteral("DOORWood"));
        QCOMPARE(entry->category + QLatin1Char('|') + entry->subCategory, doorWood);
    }

    void loadsOffThread()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("ucs.csv"));
        QVERIFY(fixtures::WriteBytes(path, kCsv));
        UcsCatalogLoader loader;
        QSignalSpy loaded(&loader, &UcsCatalogLoader::SigLoaded);

        // Only the newest of several requests is delivered.
        loader.load(dir.filePath(QStringLiteral("missing.csv")));
        loader.load(path);
        QVERIFY(loaded.wait());
        QTest::qWait(50);
        QCOMPARE(loaded.count(), 1);
        QCOMPARE(loaded.at(0).at(0).toString(), path);
        QCOMPARE(loaded.at(0).at(1).toString(), QString());
        QVERIFY(loader.catalog());
        QCOMPARE(loader.catalog()->size(), 3);

        loader.load(dir.filePath(QStringLiteral("missing.csv")));
        QVERIFY(loaded.wait());
        QVERIFY(loaded.last().at(1).toString().startsWith(QStringLiteral("The CatID list cannot")));
        QVERIFY(!loader.catalog());

        loader.load(path);
        QVERIFY(loaded.wait());
        loader.load(QString());
        QVERIFY(loaded.wait());
        QVERIFY(!loader.catalog());
        // Destroyed with a read under way: it waits for it instead of crashing.
        auto* busy = new UcsCatalogLoader;
        busy->load(path);
        delete busy;
    }
};

QTEST_GUILESS_MAIN(TestUcsName)
#include "tst_ucsname.moc"
