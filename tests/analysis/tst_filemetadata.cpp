// The metadata readers: text decoding, the WAV/AIFF chunk pass (well-formed
// and broken chunks), TagLib tags of files made by the Debian encoders, the
// timecode of a BWF time reference, UCS file names and the CatID list.

#include "FileMetadata.h"
#include "FileMetadataReader.h"
#include "MetadataColumns.h"
#include "MetadataText.h"
#include "TestSettings.h"
#include "UcsCatalog.h"
#include "UcsCatalogLoader.h"
#include "UcsName.h"
#include "WaveBuilder.h"
#include "WaveByteSource.h"
#include "WaveMetadataReader.h"

#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

using namespace fixtures;

namespace {

QString dump(const FileMetadataPtr& m)
{
    if (!m)
        return QStringLiteral("(none)");
    QStringList lines;
    for (const FileMetadata::Entry& e : m->entries())
        lines << QStringLiteral("%1: %2").arg(QLatin1String(MetadataKeyName(e.key)),
                                              QString::fromUtf8(e.text.data(), int(e.text.size())));
    if (m->hasTimeReference)
        lines << QStringLiteral("timeReference: %1").arg(m->timeReference);
    if (m->hasAcid)
        lines << QStringLiteral("acid: flags %1 root %2 beats %3 meter %4/%5 tempo %6")
                     .arg(m->acid.flags)
                     .arg(m->acid.rootNote)
                     .arg(m->acid.beats)
                     .arg(m->acid.meterNumerator)
                     .arg(m->acid.meterDenominator)
                     .arg(double(m->acid.tempo));
    return lines.join(QLatin1Char('\n'));
}

FileMetadataPtr readWave(const Bytes& file)
{
    const std::unique_ptr<WaveByteSource> io = WaveByteSource::fromMemory(file.data(), file.size());
    return ReadWaveMetadata(*io);
}

Bytes textChunk(const char* id, const std::string& s, bool bigEndian = false)
{
    return chunk(id, text(s), bigEndian);
}

// The official list's layout: more columns than we read, quoted synonyms.
const QByteArray kCsv = "Category,SubCategory,CatID,CatShort,Explanations,Synonyms\r\n"
                        "AMBIENCE,FOREST,AMBForst,AMB,\"Woods, jungle\",\"woods, trees\"\r\n"
                        "DOORS,WOOD,DOORWood,DOOR,Wooden doors,\"gate, hatch\"\r\n"
                        "USER INTERFACE,CLICK,UIClick,UI,,\r\n";

QString describeUcs(const UcsName& n)
{
    if (!n.isValid())
        return QStringLiteral("(not UCS)");
    return QStringList{n.catId,    n.userCategory, n.fxName,   n.creatorId,
                       n.sourceId, n.userData,     n.category, n.subCategory}
        .join(QLatin1Char('|'));
}

} // namespace

class TestFileMetadata : public QObject
{
    Q_OBJECT
private slots:
    void decodesTexts_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected");
        QTest::newRow("utf-8") << QByteArray("Caf\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac")
                               << u8"Café 日本";
        QTest::newRow("latin-1 fallback") << QByteArray("Caf\xe9 cr\xe8me") << u8"Café crème";
        QTest::newRow("windows letters") << QByteArray("\x93Quoted\x94 \x80") << u8"“Quoted” €";
        QTest::newRow("trailing NULs and padding")
            << QByteArray("Door creak\0\0\0\0   ", 17) << QStringLiteral("Door creak");
        QTest::newRow("line breaks and tabs") << QByteArray("  one\r\ntwo\rthree\tfour\x01\x7f \n")
                                              << QStringLiteral("one\ntwo\nthree four");
        QTest::newRow("utf-16le") << QByteArray("\xff\xfeR\0a\0i\0n\0\0\0x\0", 14)
                                  << QStringLiteral("Rain");
        QTest::newRow("utf-16be surrogate pair") << QByteArray("\xfe\xff\xd8\x3d\xde\x00\0!", 8)
                                                 << QString::fromUtf8("\xf0\x9f\x98\x80!");
        QTest::newRow("binary is no text") << QByteArray("\x07\x01"
                                                         "Ab\x02\x1b\x05\x10"
                                                         "cd\x11\x12\x7f\x83\x8d",
                                                         15)
                                           << QString();
        QTest::newRow("a stray control code is dropped")
            << QByteArray("Door\x01 creak, long and slow")
            << QStringLiteral("Door creak, long and slow");
    }

    void decodesTexts()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, expected);
        const std::string decoded =
            DecodeMetadataText(bytes.constData(), std::size_t(bytes.size()));
        QCOMPARE(QString::fromStdString(decoded), expected);
        QVERIFY(
            IsValidUtf8(reinterpret_cast<const unsigned char*>(decoded.data()), decoded.size()));
    }

    void readsWaveChunks_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("expected");

        Bext bext;
        bext.description = "Heavy wooden door, slow creak open";
        bext.originator = "Field Kit";
        bext.originatorReference = "FK0001";
        bext.originationDate = "2023-04-01";
        bext.originationTime = "12:30:05";
        bext.timeReference = 0x100000000ull + 7;
        bext.codingHistory = "A=PCM,F=48000,W=24,M=mono\r\n";
        const std::string ixml =
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?><BWFXML><IXML_VERSION>1.6</IXML_VERSION>"
            "<PROJECT>Castle</PROJECT><SCENE>12A</SCENE><TAKE>3</TAKE><TAPE>T01</TAPE>"
            "<NOTE>door &amp; hinge</NOTE><SPEED><TIMECODE_RATE>25/1</TIMECODE_RATE>"
            "<TIMECODE_FLAG>NDF</TIMECODE_FLAG></SPEED><USER><DESCRIPTION>Door creak</DESCRIPTION>"
            "<CATID>DOORWood</CATID><MICROPHONE>MKH 416</MICROPHONE></USER></BWFXML>";
        QTest::newRow("commercial-style wav")
            << toQByteArray(wavWith({chunk("bext", bextBody(bext)), textChunk("iXML", ixml),
                                     chunk("LIST", infoList({{"INAM", "Door Open"},
                                                             {"IART", "Jane Doe"},
                                                             {"ICMT", "Recorded at night"},
                                                             {"ICOP", "(c) 2023 Field Kit"},
                                                             {"ISFT", "Recorder 2.1"},
                                                             {"IGNR", "Foley"},
                                                             {"IKEY", "door; wood; creak"},
                                                             {"ICRD", "2023-04-01"},
                                                             {"IZZZ", "unknown"}})),
                                     chunk("acid", acidBody(3, 60, 8, 4, 4, 120.0f)),
                                     chunk("LIST", adtlList({"Start", "Slam"}, {"hinge noise"}))}))
            << QStringLiteral(
                   "description: Heavy wooden door, slow creak open\n"
                   "title: Door Open\nartist: Jane Doe\ncomment: Recorded at night\n"
                   "date: 2023-04-01\ngenre: Foley\ncopyright: (c) 2023 Field Kit\n"
                   "software: Recorder 2.1\nkeywords: door; wood; creak\n"
                   "originator: Field Kit\noriginatorReference: FK0001\n"
                   "originationDate: 2023-04-01\noriginationTime: 12:30:05\n"
                   "project: Castle\nscene: 12A\ntake: 3\ntape: T01\nnote: door & hinge\n"
                   "timecodeRate: 25/1\ntimecodeFlag: NDF\nuserDescription: Door creak\n"
                   "userCatId: DOORWood\nuserText: MICROPHONE: MKH 416\n"
                   "cueLabels: Start\nSlam\ncueNotes: hinge noise\n"
                   "timeReference: 4294967303\n"
                   "acid: flags 3 root 60 beats 8 meter 4/4 tempo 120");

        QTest::newRow("aiff text chunks")
            << toQByteArray(aiffWith(
                   {textChunk("NAME", "Thunder", true), textChunk("AUTH", "Sky Lab", true),
                    textChunk("ANNO", "far away", true), textChunk("ANNO", "second pass", true),
                    textChunk("(c) ", "2024", true)}))
            << QStringLiteral("title: Thunder\nartist: Sky Lab\ncomment: far away\nsecond pass\n"
                              "copyright: 2024");
        QTest::newRow("no metadata") << toQByteArray(wavWith({})) << QStringLiteral("(none)");
        QTest::newRow("not a wave file")
            << QByteArray("ID3\4\0\0\0\0\0\0 not wave at all") << QStringLiteral("(none)");

        // Broken chunks: what lies wholly inside the file and the chunk is read, nothing more.
        QTest::newRow("iXML cut short keeps the finished fields")
            << toQByteArray(wavWith({textChunk("iXML", "<BWFXML><SCENE>4</SCENE><TAKE>2</TA")}))
            << QStringLiteral("scene: 4");
        Bytes overrun;
        putId(overrun, "INFO");
        putId(overrun, "INAM");
        putLe32(overrun, 4000); // the string claims more than its list holds
        append(overrun, text("Short"));
        QTest::newRow("INFO string longer than its list")
            << toQByteArray(wavWith({chunk("LIST", overrun)})) << QStringLiteral("title: Short");
        Bytes runaway = wavWith({});
        append(runaway, textChunk("iXML", "<BWFXML><TAPE>7</TAPE></BWFXML>"));
        const std::size_t sizeField =
            runaway.size() - 40 + 4; // the iXML chunk is the last 40 bytes
        runaway[sizeField] = runaway[sizeField + 1] = runaway[sizeField + 2] = 0xff;
        runaway[sizeField + 3] = 0x7f; // far past the end of the file
        QTest::newRow("iXML whose size runs past the file")
            << toQByteArray(runaway) << QStringLiteral("tape: 7");
    }

    void readsWaveChunks()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, expected);
        const Bytes bytes(file.begin(), file.end());
        QCOMPARE(dump(readWave(bytes)), expected);
    }

    void readsTags()
    {
        QTemporaryDir dir;
        const QString wav = dir.filePath(QStringLiteral("tone.wav"));
        const QString mp3 = dir.filePath(QStringLiteral("tagged.mp3"));
        const QString ogg = dir.filePath(QStringLiteral("tagged.ogg"));
        QVERIFY(writeSineWav(wav, 44100, 2, 4410));
        QCOMPARE(QProcess::execute("lame",
                                   {"--quiet", "--tt", u8"Glass Break ガラス", "--ta",
                                    "Shard Audio", "--tl", "Glass Vol. 1", "--ty", "2021", "--tc",
                                    "close, bright", "--tg", "Foley", "--id3v2-only", wav, mp3}),
                 0);
        QCOMPARE(
            QProcess::execute("oggenc", {"--quiet", "-t", "Rain Loop", "-a", "Cloud", "-c",
                                         "DESCRIPTION=Light rain on a tin roof", "-c",
                                         "COMMENT=seamless", "-d", "2020-06-01", "-o", ogg, wav}),
            0);
        const auto read = [](const QString& path, const char* suffix) {
            return dump(ReadFileMetadata(QFile::encodeName(path).constData(), suffix));
        };
        QCOMPARE(read(mp3, "mp3"),
                 QString::fromUtf8(
                     u8"title: Glass Break ガラス\nartist: Shard Audio\nalbum: Glass Vol. 1\n"
                     u8"comment: close, bright\ndate: 2021\ngenre: Foley"));
        QCOMPARE(read(ogg, "ogg"),
                 QStringLiteral("description: Light rain on a tin roof\ntitle: Rain Loop\n"
                                "artist: Cloud\ncomment: seamless\ndate: 2020-06-01"));
        // A file of the wrong kind for its suffix yields nothing rather than garbage.
        QCOMPARE(read(wav, "ogg"), QStringLiteral("(none)"));
    }

    // A BWF time reference shown as timecode at the iXML rate and flag, or as
    // clock time without a usable rate.
    void formatsTimecodes()
    {
        const unsigned long long hour = 3600ull * 48000;
        for (const auto& [samples, rate, timecodeRate, flag, expected] :
             {std::tuple<unsigned long long, int, const char*, const char*, const char*>{
                  hour + 61 * 48000 + 24000, 48000, "", "", "01:01:01.500"},
              {hour + 48000 + 1920 * 3, 48000, "25/1", "NDF", "01:00:01:03"},
              {44100ull * 10, 44100, "24", "", "00:00:10:00"},
              {hour, 48000, "30000/1001", "NDF", "00:59:56:12"}, // 29.97 non-drop lags the clock
              {hour, 48000, "30000/1001", "DF", "01:00:00;00"},  // drop-frame keeps to it
              // Frame 1800 at 29.97 DF is the first after a minute's two dropped labels.
              {1800ull * 1001 * 48000 / 30000 + 1, 48000, "30000/1001", "DF", "00:01:00;02"},
              {96000, 48000, "0/0", "", "00:00:02.000"},
              {~0ull, 192000, "25/1", "", "26687997791:49:30:14"},
              {1, 0, "", "", ""}})
            QCOMPARE(FormatTimecode(samples, rate, timecodeRate, flag), QLatin1String(expected));
    }

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
        row("ordinary name", "kick_01_hard_v2.wav", false, "(not UCS)");
        row("numbered takes are no creator", "SFXDoor_wood_01_02.wav", false, "(not UCS)");
        row("all capitals is no CatID", "DOOR_Wood_JD_LIB.wav", false, "(not UCS)");
        row("three blocks", "DOORWood_Open_JD.wav", false, "(not UCS)");
        row("list names the categories", "DOORWood_Open_JD_LIB.wav", true,
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
        QCOMPARE(describeUcs(ParseUcsName(file, withList ? list.get() : nullptr)), expected);
    }

    void readsListExports_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("size");
        QTest::addColumn<QString>("doorWood"); // "category|subcategory" of DOORWood, or the error

        QTest::newRow("csv") << kCsv << 3 << QStringLiteral("DOORS|WOOD");
        QTest::newRow("tsv, other column order")
            << QByteArray("CatID\tSub Category\tCategory\nDOORWood\tWOOD\tDOORS\n") << 1
            << QStringLiteral("DOORS|WOOD");
        QTextCodec* utf16 = QTextCodec::codecForName("UTF-16LE");
        QTest::newRow("utf-16 tab-separated text (a spreadsheet's Unicode export)")
            << QByteArray("\xff\xfe") + utf16->fromUnicode(QString::fromUtf8(
                                            "Category\tSubCategory\tCatID\r\n"
                                            "\xe3\x83\x89\xe3\x82\xa2\tWOOD\tDOORWood\r\n"))
            << 1 << QString::fromUtf8("\xe3\x83\x89\xe3\x82\xa2|WOOD");
        QTest::newRow("no CatID column") << QByteArray("Category,SubCategory\nDOORS,WOOD\n") << 0
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

    void loadsListOffThread()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("ucs.csv"));
        const QString missing = dir.filePath(QStringLiteral("missing.csv"));
        QVERIFY(fixtures::WriteBytes(path, kCsv));
        UcsCatalogLoader loader;
        QSignalSpy loaded(&loader, &UcsCatalogLoader::SigLoaded);
        // Only the newest of several requests is delivered.
        loader.load(missing);
        loader.load(path);
        QVERIFY(loaded.wait());
        QTest::qWait(50);
        QCOMPARE(loaded.count(), 1);
        QCOMPARE(loaded.at(0), (QVariantList{path, QString()}));
        QCOMPARE(loader.catalog()->size(), 3);
        // Destroyed with a read under way: it waits for it instead of crashing.
        auto* busy = new UcsCatalogLoader;
        busy->load(path);
        delete busy;
    }
};

QTEST_GUILESS_MAIN(TestFileMetadata)
#include "tst_filemetadata.moc"
