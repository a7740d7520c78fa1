// The metadata readers: text decoding, the WAV/AIFF chunk pass (well-formed
// and broken chunks), TagLib tags of files made by the Debian encoders, and
// the timecode of a BWF time reference.

#include "CellFormat.h"
#include "FileMetadata.h"
#include "FileMetadataReader.h"
#include "KrokManager.h"
#include "MetadataColumns.h"
#include "MetadataText.h"
#include "TagMetadataReader.h"
#include "UcsName.h"
#include "WaveBuilder.h"
#include "WaveByteSource.h"
#include "WaveMetadataReader.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace fixtures;

namespace {

// Every field of a record, one "name: text" line each, for whole-record comparisons.
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

// Runs "program|argument|..." and gives its error output, or nothing when it succeeded.
QString run(const QString& command, const QString& folder)
{
    QStringList arguments = command.split(QLatin1Char('|'));
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(arguments.takeFirst(), arguments);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return QString::fromLocal8Bit(process.readAllStandardError()) + command;
    return {};
}

QString readFile(const QString& path, const char* suffix)
{
    return dump(ReadFileMetadata(QFile::encodeName(path).constData(), suffix));
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
        QTest::newRow("garbage after the NUL")
            << QByteArray("Wind\0\xff\xfe junk", 13) << QStringLiteral("Wind");
        QTest::newRow("line breaks and tabs") << QByteArray("  one\r\ntwo\rthree\tfour\x01\x7f \n")
                                              << QStringLiteral("one\ntwo\nthree four");
        QTest::newRow("utf-8 byte-order mark")
            << QByteArray("\xef\xbb\xbfRain") << QStringLiteral("Rain");
        QTest::newRow("utf-16le") << QByteArray("\xff\xfeR\0a\0i\0n\0\0\0x\0", 14)
                                  << QStringLiteral("Rain");
        QTest::newRow("utf-16be surrogate pair") << QByteArray("\xfe\xff\xd8\x3d\xde\x00\0!", 8)
                                                 << QString::fromUtf8("\xf0\x9f\x98\x80!");
        QTest::newRow("overlong utf-8 is not utf-8") << QByteArray("\xc0\xafx") << u8"À¯x";
        QTest::newRow("only NULs") << QByteArray(8, '\0') << QString();
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

        Bytes latin1Info = infoList({{"INAM", "Caf\xe9"}});
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
        Bytes shortBext = bextBody(bext);
        shortBext.resize(300); // Description and Originator only
        QTest::newRow("bext shorter than its fixed part")
            << toQByteArray(wavWith({chunk("bext", shortBext)}))
            << QStringLiteral(
                   "description: Heavy wooden door, slow creak open\noriginator: Field Kit");
        QTest::newRow("bext of ten bytes")
            << toQByteArray(wavWith({chunk("bext", text("0123456789"))}))
            << QStringLiteral("(none)");
        QTest::newRow("iXML that is not XML")
            << toQByteArray(wavWith({textChunk("iXML", "PROJECT=Castle <<< >>> \x01\x02")}))
            << QStringLiteral("(none)");
        QTest::newRow("iXML cut short keeps the finished fields")
            << toQByteArray(wavWith({textChunk("iXML", "<BWFXML><SCENE>4</SCENE><TAKE>2</TA")}))
            << QStringLiteral("scene: 4");
        QTest::newRow("iXML in Latin-1 though it says UTF-8")
            << toQByteArray(wavWith({textChunk(
                   "iXML", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><BWFXML><NOTE>Caf\xe9</NOTE>"
                           "</BWFXML>")}))
            << QString::fromUtf8("note: Caf\xc3\xa9");
        QTest::newRow("odd-sized INFO strings without pad bytes")
            << toQByteArray(wavWith({chunk(
                   "LIST", infoList({{"INAM", "Door"}, {"IART", "Jo"}, {"ICMT", "odd"}}, false))}))
            << QStringLiteral("title: Door\nartist: Jo\ncomment: odd");
        QTest::newRow("INFO string in Latin-1")
            << toQByteArray(wavWith({chunk("LIST", latin1Info)}))
            << QString::fromUtf8("title: Caf\xc3\xa9");
        Bytes overrun;
        putId(overrun, "INFO");
        putId(overrun, "INAM");
        putLe32(overrun, 4000); // the string claims more than its list holds
        append(overrun, text("Short"));
        QTest::newRow("INFO string longer than its list")
            << toQByteArray(wavWith({chunk("LIST", overrun)})) << QStringLiteral("title: Short");
        QTest::newRow("acid shorter than its fields")
            << toQByteArray(wavWith({chunk("acid", Bytes(20, 1))})) << QStringLiteral("(none)");
        Bytes nanAcid = acidBody(2, 200, 4, 4, 4, 0.0f);
        nanAcid[20] = nanAcid[21] = 0xff;
        nanAcid[22] = 0xc0;
        nanAcid[23] = 0x7f; // NaN tempo, root note out of MIDI range
        QTest::newRow("acid with impossible values")
            << toQByteArray(wavWith({chunk("acid", nanAcid)}))
            << QStringLiteral("acid: flags 0 root 200 beats 4 meter 4/4 tempo 0");
        Bytes runaway = wavWith({});
        append(runaway, textChunk("iXML", "<BWFXML><TAPE>7</TAPE></BWFXML>"));
        const std::size_t sizeField =
            runaway.size() - 40 + 4; // the iXML chunk is the last 40 bytes
        runaway[sizeField] = runaway[sizeField + 1] = runaway[sizeField + 2] = 0xff;
        runaway[sizeField + 3] = 0x7f; // far past the end of the file
        QTest::newRow("iXML whose size runs past the file")
            << toQByteArray(runaway) << QStringLiteral("tape: 7");
        Bytes truncated = wavWith({textChunk("iXML", "<BWFXML><TAKE>9</TAKE></BWFXML>")});
        truncated.resize(truncated.size() - 4); // the file ends inside 'data'
        QTest::newRow("file cut inside its data")
            << toQByteArray(truncated) << QStringLiteral("take: 9");
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
        const QString d = dir.path() + QLatin1Char('/');
        QVERIFY(writeSineWav(d + QStringLiteral("tone.wav"), 44100, 2, 4410));
        for (const char* command :
             {u8"lame|--quiet|--tt|Glass Break ガラス|--ta|Shard Audio|--tl|Glass Vol. "
              u8"1|--ty|2021|--tc|"
              u8"close, bright|--tg|Foley|--id3v2-only|tone.wav|tagged.mp3",
              "lame|--quiet|--tt|Old Tag|--id3v1-only|tone.wav|v1.mp3",
              "oggenc|--quiet|-t|Rain Loop|-a|Cloud|-c|DESCRIPTION=Light rain on a tin roof|-c|"
              "COMMENT=seamless|-d|2020-06-01|-o|tagged.ogg|tone.wav",
              "flac|--silent|-o|tagged.flac|tone.wav",
              "metaflac|--set-tag=TITLE=Engine "
              "Idle|--set-tag=GENRE=Vehicles|--set-tag=BPM=96|tagged.flac"})
            QCOMPARE(run(QString::fromUtf8(command), dir.path()), QString());
        QCOMPARE(readFile(d + QStringLiteral("tagged.mp3"), "mp3"),
                 QString::fromUtf8(
                     u8"title: Glass Break ガラス\nartist: Shard Audio\nalbum: Glass Vol. 1\n"
                     u8"comment: close, bright\ndate: 2021\ngenre: Foley"));
        QCOMPARE(readFile(d + QStringLiteral("v1.mp3"), "mp3"), QStringLiteral("title: Old Tag"));
        QCOMPARE(readFile(d + QStringLiteral("tagged.ogg"), "ogg"),
                 QStringLiteral("description: Light rain on a tin roof\ntitle: Rain Loop\n"
                                "artist: Cloud\ncomment: seamless\ndate: 2020-06-01"));
        QCOMPARE(readFile(d + QStringLiteral("tagged.flac"), "flac"),
                 QStringLiteral("title: Engine Idle\ngenre: Vehicles\nbpm: 96"));
        // A file of the wrong kind for its suffix yields nothing rather than garbage.
        QCOMPARE(readFile(d + QStringLiteral("tone.wav"), "ogg"), QStringLiteral("(none)"));
        QCOMPARE(readFile(QStringLiteral("/nonexistent/x.mp3"), "mp3"), QStringLiteral("(none)"));
    }

    void survivesBrokenTags()
    {
        // An ID3v2 header whose size is not synch-safe and claims far more than
        // the file, followed by frames and an ID3v1 tag at the end.
        QByteArray mp3("ID3\x03\x00\x00\xff\xff\xff\xff", 10);
        mp3 += QByteArray("TIT2\x00\x00\x00\x05\x00\x00\x00Junk", 15);
        mp3 += QByteArray(400, '\xff');
        QByteArray v1(128, '\0');
        v1.replace(0, 3, "TAG");
        v1.replace(3, 9, "Fallback!");
        mp3 += v1;
        const FileMetadataPtr m =
            ReadTagMetadataFromMemory(mp3.constData(), std::size_t(mp3.size()), TagContainer::Mpeg);
        QVERIFY(m);
        QCOMPARE(QString::fromStdString(std::string(m->text(MetadataKey::Title))),
                 QStringLiteral("Fallback!"));
        // Truncated and random containers: no crash, no text.
        for (const TagContainer container :
             {TagContainer::Mpeg, TagContainer::OggVorbis, TagContainer::Flac}) {
            for (const QByteArray& bytes :
                 {QByteArray("ID3\x04\x00\x00\x00\x00\x7f", 9), QByteArray("OggS\0\x02", 6),
                  QByteArray("fLaC\0\0\0\x22", 8), QByteArray(1000, '\x5a')}) {
                const FileMetadataPtr none = ReadTagMetadataFromMemory(
                    bytes.constData(), std::size_t(bytes.size()), container);
                QCOMPARE(dump(none), QStringLiteral("(none)"));
            }
        }
    }

    void analysisStoresMetadata()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("DOORWood_Creak_JD_LIB.wav"));
        Bext bext;
        bext.description = "Creak";
        QVERIFY(writeFile(path, wavWith({chunk("bext", bextBody(bext))})));
        const QString plain = dir.filePath(QStringLiteral("plain.wav"));
        QVERIFY(writeFile(plain, wavWith({})));

        AudioFileInfo info;
        AnalyzeAudioFile(path, info, false, false);
        QCOMPARE(info.samplingRate, 48000);
        QCOMPARE(dump(info.metadata), QStringLiteral("description: Creak\ntimeReference: 0"));
        AudioFileInfo none;
        AnalyzeAudioFile(plain, none, false, false);
        QVERIFY(!none.metadata); // files without metadata cost one null pointer
    }

    // A BWF time reference shown as timecode at the iXML rate and flag, or as
    // clock time without a usable rate.
    void formatsTimecodes()
    {
        struct Case
        {
            unsigned long long samples;
            int rate;
            const char *timecodeRate, *flag, *expected;
        };
        const unsigned long long hour = 3600ull * 48000;
        const Case cases[] = {
            {hour + 61 * 48000 + 24000, 48000, "", "", "01:01:01.500"},
            {hour + 48000 + 1920 * 3, 48000, "25/1", "NDF", "01:00:01:03"},
            {44100ull * 10, 44100, "24", "", "00:00:10:00"},
            {hour, 48000, "30000/1001", "NDF", "00:59:56:12"}, // 29.97 non-drop lags the clock
            {hour, 48000, "30000/1001", "DF", "01:00:00;00"},  // drop-frame keeps to it
            // Frame 1800 at 29.97 DF is the first after a minute's two dropped labels.
            {1800ull * 1001 * 48000 / 30000 + 1, 48000, "30000/1001", "DF", "00:01:00;02"},
            {96000, 48000, "0/0", "", "00:00:02.000"},
            {~0ull, 192000, "25/1", "", "26687997791:49:30:14"},
            {1, 0, "", "", ""},
        };
        for (const Case& c : cases)
            QCOMPARE(FormatTimecode(c.samples, c.rate, c.timecodeRate, c.flag),
                     QString::fromLatin1(c.expected));
    }

    void ucsColumnsFallBackToIxml()
    {
        // Libraries that keep plain file names carry the same blocks in iXML USER.
        FileMetadata m;
        m.setText(MetadataKey::UserCatId, "DOORWood");
        m.setText(MetadataKey::UserCategory, "DOORS");
        m.setText(MetadataKey::UserSubCategory, "WOOD");
        m.setText(MetadataKey::UserFxName, "Creak");
        m.setText(MetadataKey::UserCreator, "JD");
        m.setText(MetadataKey::UserSource, "LIB");
        const auto cells = [&m](const UcsName& ucs) {
            QStringList out;
            for (int column = ColumnCatId; column <= ColumnSource; ++column)
                out << MetadataCellValue(column, &m, 48000, ucs, false).toString();
            return out;
        };
        QCOMPARE(cells(ParseUcsName(QStringLiteral("door_take_3.wav"), nullptr)),
                 (QStringList{"DOORWood", "DOORS-WOOD", "Creak", "JD", "LIB"}));
        // A UCS name speaks first, and iXML's category is not taken for another CatID.
        QCOMPARE(cells(ParseUcsName(QStringLiteral("AMBForst_Birds_AB_CD.wav"), nullptr)),
                 (QStringList{"AMBForst", "", "Birds", "AB", "CD"}));
        QCOMPARE(cells(ParseUcsName(QStringLiteral("DOORWood_Slam_AB_CD.wav"), nullptr)),
                 (QStringList{"DOORWood", "DOORS-WOOD", "Slam", "AB", "CD"}));
    }
};

QTEST_GUILESS_MAIN(TestFileMetadata)
#include "tst_filemetadata.moc"
