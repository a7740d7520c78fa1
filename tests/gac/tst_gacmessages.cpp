// The JSON records exchanged with the server: what we write is read back as
// the same record, and what a server writes, however laid out, is read right.
#include "VexGacMessages.h"

#include <QtTest>

using namespace Vexmw;

namespace {

AssetData asset(const std::string& path, double start)
{
    return {path,
            path + ".meta.json",
            {"D:/Projects/Forest \"Night\".npr", "https://repo.example/forest?id=12&v=3", start,
             1.0 / 3.0}};
}

std::unique_ptr<VexGacMessageBase> fullRecord(int type)
{
    SegmentData s;
    s.tracks = {{{{asset("C:/sfx/birds_01.wav", 0.0), 0.0, 2.5, 0.125},
                  {asset("C:/sfx/birds_02.wav", 0.1), 4.75, 3.0, 0.0}},
                 "Ambience \\ Birds"},
                {{}, "Empty"}};
    // Numbers must survive the text exactly, however they are written.
    s.markers = {{1, 0.0, 1.5}, {-4, 1e-300, 1.7976931348623157e308}, {2, -123456789.125, 2.88e6}};
    s.tempo = 97.5;
    s.timeSignatureNumerator = 7;
    s.timeSignatureDenominator = 8;
    const std::vector<AssetData> assets{asset("/lib/a.wav", 0.5),
                                        asset("/lib/\xE6\xA3\xAE.wav", 12)};
    switch (type) {
    case 0: {
        auto m = std::make_unique<AssetExportedMessage>();
        m->assetFiles = assets;
        return m;
    }
    case 1: {
        auto m = std::make_unique<AssetTransferredMessage>();
        m->assetFiles = assets;
        return m;
    }
    case 2: {
        auto m = std::make_unique<SegmentTransferredMessage>();
        m->assetSegmentData = s;
        return m;
    }
    case 3:
        return std::make_unique<OpenNuendoMessage>("C:/sfx/line\nbreak\ttab \xC3\xA9.wav");
    case 4: {
        auto m = std::make_unique<CreateNuendoMessage>();
        m->assetSegmentData = s;
        return m;
    }
    case 5:
    case 6: {
        std::unique_ptr<DisplayValueMessage> m;
        if (type == 5)
            m = std::make_unique<AssetUpdateMessage>();
        else
            m = std::make_unique<SegmentUpdateMessage>();
        m->displayValue = "Version 3 \x01 \"approved\" \\";
        return m;
    }
    default:
        return std::make_unique<VexGacMessageBase>(type);
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
        for (int type : {0, 1, 2, 3, 4, 5, 6, 42})
            QTest::addRow("type %d", type) << type;
    }

    void roundTrip()
    {
        QFETCH(int, type);
        const auto original = fullRecord(type);
        const QByteArray text = original->toJson();
        // Any JSON reader must accept what we write.
        QJsonParseError error{};
        const QJsonObject doc = QJsonDocument::fromJson(text, &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(doc.value("VexGacMessageHeader").toObject().value("Type").toInt(), type);
        QCOMPARE(doc.value("VexGacMessageHeader").toObject().value("Version").toInt(), 1);
        QVERIFY(doc.value("VexGacMessageBody").isObject());
        const auto read = VexGacMessageBase::fromJson(text);
        QVERIFY(read);
        QCOMPARE(read->type(), type);
        QCOMPARE(typeid(*read).name(), typeid(*original).name());
        QVERIFY(read->equals(*original));
        QCOMPARE(read->toJson(), text);
        // Same body, other type; and one member changed deep inside.
        QVERIFY(!read->equals(*fullRecord(type == 2 ? 4 : 2)));
        if (auto* c = dynamic_cast<SegmentMessage*>(original.get())) {
            c->assetSegmentData.tracks[0].events[1].dataOffset = 1;
            QVERIFY(!read->equals(*original));
        }
    }

    // What a server may write (keys in any order, spaces, escapes, parts
    // missing) against the one text we write for it; empty means refused.
    void reads_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QByteArray>("expected");
        const QByteArray head = "{\"VexGacMessageHeader\":{\"Type\":";
        QTest::newRow("assets")
            << head + "1,\"Version\":1},\"VexGacMessageBody\":{\"AssetFiles\":[{\"filePath\":"
                      "\"C:\\\\sfx\\\\\\u00e9t\\u00e9.wav\",\"MetaData\":{\"projectPath\":\"P\","
                      "\"repositoryUrl\":\"R\",\"startTime\":1e3,\"length\":-0.5}}]}}"
            << head + "1,\"Version\":1},\"VexGacMessageBody\":{\"AssetFiles\":[{\"filePath\":"
                      "\"C:\\\\sfx\\\\\xC3\xA9t\xC3\xA9.wav\",\"additionalMetaDataFilePath\":\"\","
                      "\"MetaData\":{\"projectPath\":\"P\",\"repositoryUrl\":\"R\","
                      "\"startTime\":1000,\"length\":-0.5}}]}}";
        QTest::newRow("open")
            << head +
                   "3,\n \"Version\":1}, \"VexGacMessageBody\":{\"AssetFilePath\":\"/a/b c.wav\"}}"
            << head + "3,\"Version\":1},\"VexGacMessageBody\":{\"AssetFilePath\":\"/a/b c.wav\"}}";
        QTest::newRow("segment update")
            << head + "6, \"Version\":1},\"VexGacMessageBody\":{\"DisplayValue\":\"say "
                      "\\\"hi\\\"\\\\\"}}"
            << head + "6,\"Version\":1},\"VexGacMessageBody\":{\"DisplayValue\":\"say "
                      "\\\"hi\\\"\\\\\"}}";
        QTest::newRow("body missing")
            << head + "5,\"Version\":1}}"
            << head + "5,\"Version\":1},\"VexGacMessageBody\":{\"DisplayValue\":\"\"}}";
        QTest::newRow("unknown type")
            << head + "9,\"Version\":1}}" << head + "9,\"Version\":1},\"VexGacMessageBody\":{}}";
        const auto refused = [](const char* name, const QByteArray& json) {
            QTest::newRow(name) << json << QByteArray();
        };
        refused("empty", QByteArray());
        refused("truncated", head + "3,\"Vers");
        refused("array", "[1,2]");
        refused("no header", "{\"VexGacMessageBody\":{}}");
        refused("no type", "{\"VexGacMessageHeader\":{\"Version\":1}}");
        refused("type as text", head + "\"3\",\"Version\":1}}");
        refused("version 2", head + "3,\"Version\":2}}");
    }

    void reads()
    {
        QFETCH(QByteArray, json);
        QFETCH(QByteArray, expected);
        const auto read = VexGacMessageBase::fromJson(json);
        QCOMPARE(read ? read->toJson() : QByteArray(), expected);
    }
};

QTEST_GUILESS_MAIN(TestGacMessages)
#include "tst_gacmessages.moc"
