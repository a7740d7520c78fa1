#include "VexGacMessages.h"

#include <QtTest>

using namespace Vexmw;

namespace {

AssetData asset(const std::string& path, double start)
{
    AssetData a;
    a.filePath = path;
    a.additionalMetaDataFilePath = path + ".meta.json";
    a.metaData.projectPath = "D:/Projects/Forest \"Night\".npr";
    a.metaData.repositoryUrl = "https://repo.example/forest?id=12&v=3";
    a.metaData.startTime = start;
    a.metaData.length = 1.0 / 3.0;
    return a;
}

SegmentData segment()
{
    SegmentData s;
    TrackData t1;
    t1.name = "Ambience \\ Birds";
    t1.events.push_back({asset("C:/sfx/birds_01.wav", 0.0), 0.0, 2.5, 0.125});
    t1.events.push_back({asset("C:/sfx/birds_02.wav", 0.1), 4.75, 3.0, 0.0});
    TrackData t2;
    t2.name = "Empty";
    s.tracks = {t1, t2};
    s.markers = {{1, 0.0, 1.5}, {-4, 10.25, 12.0}};
    s.tempo = 97.5;
    s.timeSignatureNumerator = 7;
    s.timeSignatureDenominator = 8;
    return s;
}

std::unique_ptr<VexGacMessageBase> fullRecord(int type)
{
    switch (type) {
    case 0:
    case 1: {
        std::unique_ptr<AssetListMessage> m;
        if (type == 0)
            m = std::make_unique<AssetExportedMessage>();
        else
            m = std::make_unique<AssetTransferredMessage>();
        m->assetFiles = {asset("/lib/a.wav", 0.5), asset("/lib/\xE6\xA3\xAE/b.wav", 12.0)};
        return m;
    }
    case 2:
    case 4: {
        std::unique_ptr<SegmentMessage> m;
        if (type == 2)
            m = std::make_unique<SegmentTransferredMessage>();
        else
            m = std::make_unique<CreateNuendoMessage>();
        m->assetSegmentData = segment();
        return m;
    }
    case 3:
        return std::make_unique<OpenNuendoMessage>("C:/sfx/line\nbreak\ttab \xC3\xA9.wav");
    case 5:
    case 6: {
        std::unique_ptr<DisplayValueMessage> m;
        if (type == 5)
            m = std::make_unique<AssetUpdateMessage>();
        else
            m = std::make_unique<SegmentUpdateMessage>();
        m->displayValue = "Version 3 \x01 approved";
        return m;
    }
    default:
        return std::make_unique<VexGacMessageBase>(type);
    }
}

// Each name must occur after the one before it.
void verifyOrder(const QByteArray& text, const QList<QByteArray>& names)
{
    int from = 0;
    for (const QByteArray& name : names) {
        const int at = text.indexOf('"' + name + "\":", from);
        QVERIFY2(at >= 0, name.constData());
        from = at + 1;
    }
}

} // namespace

class TestGacMessages final : public QObject
{
    Q_OBJECT

private slots:
    void roundTrip_data()
    {
        QTest::addColumn<int>("type");
        QTest::newRow("0 asset exported") << 0;
        QTest::newRow("1 asset transferred") << 1;
        QTest::newRow("2 segment transferred") << 2;
        QTest::newRow("3 open nuendo") << 3;
        QTest::newRow("4 create nuendo") << 4;
        QTest::newRow("5 asset update") << 5;
        QTest::newRow("6 segment update") << 6;
        QTest::newRow("42 unknown") << 42;
    }

    void roundTrip()
    {
        QFETCH(int, type);
        const auto original = fullRecord(type);
        const QByteArray text = original->toJson();

        // Any JSON reader must accept what we write.
        QJsonParseError error{};
        const QJsonDocument doc = QJsonDocument::fromJson(text, &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(doc.object().value("VexGacMessageHeader").toObject().value("Type").toInt(), type);
        QCOMPARE(doc.object().value("VexGacMessageHeader").toObject().value("Version").toInt(), 1);
        QVERIFY(doc.object().value("VexGacMessageBody").isObject());

        const auto read = VexGacMessageBase::fromJson(text);
        QVERIFY(read);
        QCOMPARE(read->type(), type);
        QCOMPARE(typeid(*read).name(), typeid(*original).name());
        QVERIFY(read->equals(*original));
        QCOMPARE(read->toJson(), text);
    }

    void equalityNoticesEachMember()
    {
        auto a = fullRecord(4);
        auto b = fullRecord(4);
        QVERIFY(a->equals(*b));
        static_cast<CreateNuendoMessage&>(*b).assetSegmentData.tracks[0].events[1].dataOffset = 1;
        QVERIFY(!a->equals(*b));
        // Same body, other type.
        auto c = fullRecord(2);
        QVERIFY(!a->equals(*c));
    }

    void exactText()
    {
        QCOMPARE(OpenNuendoMessage("C:/a.wav").toJson(),
                 QByteArray("{\"VexGacMessageHeader\":{\"Type\":3,\"Version\":1},"
                            "\"VexGacMessageBody\":{\"AssetFilePath\":\"C:/a.wav\"}}"));
        AssetUpdateMessage update;
        update.displayValue = "say \"hi\"\\";
        QCOMPARE(update.toJson(),
                 QByteArray("{\"VexGacMessageHeader\":{\"Type\":5,\"Version\":1},"
                            "\"VexGacMessageBody\":{\"DisplayValue\":\"say \\\"hi\\\"\\\\\"}}"));
        QCOMPARE(VexGacMessageBase(9).toJson(),
                 QByteArray("{\"VexGacMessageHeader\":{\"Type\":9,\"Version\":1},"
                            "\"VexGacMessageBody\":{}}"));
        AssetExportedMessage none;
        QCOMPARE(none.toJson(), QByteArray("{\"VexGacMessageHeader\":{\"Type\":0,\"Version\":1},"
                                           "\"VexGacMessageBody\":{\"AssetFiles\":[]}}"));
    }

    void membersInDocumentedOrder()
    {
        const QByteArray text = fullRecord(4)->toJson();
        verifyOrder(text, {"VexGacMessageHeader",
                           "Type",
                           "Version",
                           "VexGacMessageBody",
                           "AssetSegmentData",
                           "tracks",
                           "eventData",
                           "filePath",
                           "additionalMetaDataFilePath",
                           "MetaData",
                           "projectPath",
                           "repositoryUrl",
                           "startTime",
                           "length",
                           "eventStartPositions",
                           "eventLength",
                           "eventDataOffset",
                           "numberOfEvents",
                           "name",
                           "numberOfTracks",
                           "markers",
                           "id",
                           "startPosition",
                           "endPosition",
                           "numberOfMarkers",
                           "tempo",
                           "timeSignatureNumerator",
                           "timeSignatureDenominator"});
        // Counts follow the arrays: 2 events then 0 in the second track.
        QVERIFY(text.contains("\"numberOfEvents\":2,\"name\":\"Ambience \\\\ Birds\""));
        QVERIFY(text.contains("\"numberOfEvents\":0,\"name\":\"Empty\""));
        QVERIFY(text.contains("\"numberOfTracks\":2"));
        QVERIFY(text.contains("\"numberOfMarkers\":2,\"tempo\":97.5"));
        QVERIFY(text.contains("\"eventStartPositions\":[0,4.75]"));
    }

    void readsHandWrittenSegment()
    {
        // Keys out of order, whitespace, a count that disagrees with the
        // arrays and a missing length array.
        const QByteArray text =
            "\n"
            "        {\n"
            "          \"VexGacMessageBody\": {\n"
            "            \"AssetSegmentData\": {\n"
            "              \"tempo\": 140,\n"
            "              \"numberOfTracks\": 9,\n"
            "              \"timeSignatureDenominator\": 8,\n"
            "              \"timeSignatureNumerator\": 6,\n"
            "              \"markers\": [ { \"endPosition\": 2.5, \"startPosition\": 1, \"id\": 3 "
            "} ],\n"
            "              \"tracks\": [ {\n"
            "                  \"name\": \"Steps\",\n"
            "                  \"numberOfEvents\": 5,\n"
            "                  \"eventStartPositions\": [ 1.5, 3 ],\n"
            "                  \"eventDataOffset\": [ 0.5 ],\n"
            "                  \"eventData\": [\n"
            "                    { \"filePath\": \"/s/step1.wav\", \"MetaData\": { \"length\": "
            "0.75, \"projectPath\": \"/p.npr\" } },\n"
            "                    { \"filePath\": \"/s/step2.wav\" }\n"
            "                  ]\n"
            "              } ]\n"
            "            }\n"
            "          },\n"
            "          \"VexGacMessageHeader\": { \"Version\": 1, \"Type\": 2 }\n"
            "        }";
        const auto read = VexGacMessageBase::fromJson(text);
        QVERIFY(read);
        const auto* m = dynamic_cast<const SegmentTransferredMessage*>(read.get());
        QVERIFY(m);
        const SegmentData& s = m->assetSegmentData;
        QCOMPARE(s.tempo, 140.0);
        QCOMPARE(s.timeSignatureNumerator, 6);
        QCOMPARE(s.timeSignatureDenominator, 8);
        QCOMPARE(s.markers.size(), size_t(1));
        QCOMPARE(s.markers[0].id, 3);
        QCOMPARE(s.markers[0].startPosition, 1.0);
        QCOMPARE(s.markers[0].endPosition, 2.5);
        QCOMPARE(s.tracks.size(), size_t(1));
        const TrackData& t = s.tracks[0];
        QCOMPARE(t.name, std::string("Steps"));
        QCOMPARE(t.events.size(), size_t(2));
        QCOMPARE(t.events[0].asset.filePath, std::string("/s/step1.wav"));
        QCOMPARE(t.events[0].asset.metaData.length, 0.75);
        QCOMPARE(t.events[0].asset.metaData.projectPath, std::string("/p.npr"));
        QCOMPARE(t.events[0].startPosition, 1.5);
        QCOMPARE(t.events[0].dataOffset, 0.5);
        QCOMPARE(t.events[1].asset.filePath, std::string("/s/step2.wav"));
        QCOMPARE(t.events[1].startPosition, 3.0);
        QCOMPARE(t.events[1].length, 0.0);
        QCOMPARE(t.events[1].dataOffset, 0.0);
    }

    void readsHandWrittenAssets()
    {
        const QByteArray text =
            "{\"VexGacMessageHeader\":{\"Type\":1,\"Version\":1},\"VexGacMessageBody\":"
            "{\"AssetFiles\":[{\"filePath\":\"C:\\\\sfx\\\\\\u00e9t\\u00e9.wav\","
            "\"additionalMetaDataFilePath\":\"\",\"MetaData\":{\"projectPath\":\"P\","
            "\"repositoryUrl\":\"R\",\"startTime\":1e3,\"length\":-0.5}}]}}";
        const auto read = VexGacMessageBase::fromJson(text);
        QVERIFY(read);
        const auto* m = dynamic_cast<const AssetTransferredMessage*>(read.get());
        QVERIFY(m);
        QCOMPARE(m->assetFiles.size(), size_t(1));
        QCOMPARE(m->assetFiles[0].filePath, std::string("C:\\sfx\\\xC3\xA9t\xC3\xA9.wav"));
        QCOMPARE(m->assetFiles[0].metaData.projectPath, std::string("P"));
        QCOMPARE(m->assetFiles[0].metaData.repositoryUrl, std::string("R"));
        QCOMPARE(m->assetFiles[0].metaData.startTime, 1000.0);
        QCOMPARE(m->assetFiles[0].metaData.length, -0.5);
    }

    void readsHandWrittenSimpleBodies_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("open")
            << QByteArray("{\"VexGacMessageHeader\":{\"Type\":3,\"Version\":1},\n"
                          "            \"VexGacMessageBody\":{\"AssetFilePath\":\"/a/b c.wav\"}}")
            << 3 << QByteArray("/a/b c.wav");
        QTest::newRow("segment update")
            << QByteArray(
                   "{\"VexGacMessageHeader\":{\"Type\":6,\n"
                   "            \"Version\":1},\"VexGacMessageBody\":{\"DisplayValue\":\"v2\"}}")
            << 6 << QByteArray("v2");
        QTest::newRow("body missing") << QByteArray("{\"VexGacMessageHeader\":{\"Type\":5,\n"
                                                    "            \"Version\":1}}")
                                      << 5 << QByteArray();
    }

    void readsHandWrittenSimpleBodies()
    {
        QFETCH(QByteArray, json);
        QFETCH(int, type);
        QFETCH(QByteArray, text);
        const auto read = VexGacMessageBase::fromJson(json);
        QVERIFY(read);
        QCOMPARE(read->type(), type);
        std::string value;
        if (const auto* open = dynamic_cast<const OpenNuendoMessage*>(read.get()))
            value = open->assetFilePath;
        else if (const auto* d = dynamic_cast<const DisplayValueMessage*>(read.get()))
            value = d->displayValue;
        else
            QFAIL("wrong record class");
        QCOMPARE(QByteArray::fromStdString(value), text);
    }

    void rejectsWhatIsNotAMessage_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("truncated") << QByteArray("{\"VexGacMessageHeader\":{\"Type\":3,\"Vers");
        QTest::newRow("array") << QByteArray("[1,2]");
        QTest::newRow("no header") << QByteArray("{\"VexGacMessageBody\":{}}");
        QTest::newRow("no type") << QByteArray("{\"VexGacMessageHeader\":{\"Version\":1}}");
        QTest::newRow("type as text")
            << QByteArray("{\"VexGacMessageHeader\":{\"Type\":\"3\",\"Version\":1}}");
        QTest::newRow("version 2")
            << QByteArray("{\"VexGacMessageHeader\":{\"Type\":3,\"Version\":2}}");
    }

    void rejectsWhatIsNotAMessage()
    {
        QFETCH(QByteArray, json);
        QVERIFY(!VexGacMessageBase::fromJson(json));
    }

    void numbersSurviveExactly_data()
    {
        QTest::addColumn<double>("value");
        QTest::newRow("third") << 1.0 / 3.0;
        QTest::newRow("tiny") << 1e-300;
        QTest::newRow("huge") << 1.7976931348623157e308;
        QTest::newRow("negative") << -123456789.125;
        QTest::newRow("zero") << 0.0;
        QTest::newRow("48k samples") << 2880000.0;
    }

    void numbersSurviveExactly()
    {
        QFETCH(double, value);
        CreateNuendoMessage m;
        m.assetSegmentData.tempo = value;
        m.assetSegmentData.markers = {{1, value, -value}};
        const auto read = VexGacMessageBase::fromJson(m.toJson());
        QVERIFY(read);
        const auto& s = static_cast<const CreateNuendoMessage&>(*read).assetSegmentData;
        QCOMPARE(s.tempo, value);
        QCOMPARE(s.markers.at(0).startPosition, value);
        QCOMPARE(s.markers.at(0).endPosition, -value);
    }
};

QTEST_GUILESS_MAIN(TestGacMessages)
#include "tst_gacmessages.moc"
