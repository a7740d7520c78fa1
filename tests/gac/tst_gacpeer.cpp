// The connection against an SDK that behaves like a networked one at its
// worst: calls that do not come back, callbacks from its own threads in the
// middle of our calls, and counts that do not match what it hands over.
#include "FakeSdkControl.h"
#include "GacManager.h"
#include "GacSdk.h"
#include "VexGacMessages.h"

#include <QtTest>

#include <climits>
#include <memory>
#include <thread>

using namespace Vexmw;

class TestGacPeer final : public QObject
{
    Q_OBJECT

    FakeSdkControl m_sdk;
    const QString m_sdkPath = QStringLiteral(FAKE_GAC_SDK_PATH);

    void connectNow(GacManager& manager)
    {
        manager.StartConnecting();
        QTRY_COMPARE_WITH_TIMEOUT(manager.GetState(), int(GacManager::Connected), 10000);
    }

private slots:
    void initTestCase() { QVERIFY(m_sdk.resolve(m_sdkPath)); }

    void init() { m_sdk.reset(); }

    void cleanup()
    {
        m_sdk.reset();
        QCOMPARE(m_sdk.holdsGivenUp(), 0);
    }

    // A call the SDK does not return from: stopping and quitting come back
    // while it is still held (were they to wait for it, the test would hang
    // here), also when the server drops at that very moment; the attempt's
    // late outcome is ignored and a connection it made is dropped again.
    void stopAndQuitWhileTheSdkHoldsACall_data()
    {
        QTest::addColumn<QString>("held");
        QTest::addColumn<bool>("quit");
        QTest::addColumn<bool>("serverDrops");
        // Whether the held attempt goes on to connect once released.
        QTest::addColumn<bool>("connectsLate");
        for (const char* function :
             {"gacSetServerPort", "gacConnectToServer", "gacGetServerVersion"}) {
            const bool late = QByteArray(function) != "gacSetServerPort";
            for (const bool quit : {false, true})
                for (const bool drops : {false, true})
                    QTest::addRow("%s in %s%s", quit ? "quit" : "stop", function,
                                  drops ? ", server drops" : "")
                        << function << quit << drops << late;
        }
    }
    void stopAndQuitWhileTheSdkHoldsACall()
    {
        QFETCH(QString, held);
        QFETCH(bool, quit);
        QFETCH(bool, serverDrops);
        QFETCH(bool, connectsLate);
        const QByteArray function = held.toUtf8();
        m_sdk.hold(function.constData(), 1);
        auto manager = std::make_unique<GacManager>(nullptr, QStringList{m_sdkPath});
        QStringList lines;
        connect(manager.get(), &GacManager::SigGacLogMessage,
                [&lines](const QString& line) { lines << line; });
        manager->StartConnecting();
        QTRY_COMPARE(m_sdk.held(function.constData()), 1);

        // The server drops in another thread of the SDK, as a real one would.
        std::unique_ptr<std::thread> dropper;
        if (serverDrops)
            dropper =
                std::make_unique<std::thread>([this] { m_sdk.fire(GacSdk::ServerDisconnected); });
        if (quit) {
            manager.reset();
        } else {
            QVERIFY(manager->StopConnecting());
            QCOMPARE(manager->GetState(), int(GacManager::NotConnected));
        }
        QCOMPARE(m_sdk.held(function.constData()), 1);
        if (dropper)
            dropper->join();

        m_sdk.hold(function.constData(), 0);
        QTRY_COMPARE(m_sdk.held(function.constData()), 0);
        if (!quit) {
            // A connection made after the stop is dropped by starting the SDK afresh.
            QTRY_COMPARE(m_sdk.callList().filter("gacInternalInitialize").size(),
                         connectsLate ? 2 : 1);
            QTest::qWait(50);
            QCOMPARE(manager->GetState(), int(GacManager::NotConnected));
            // Only an attempt held after it had connected ever said so.
            QCOMPARE(lines.count("[Info] GAC connection status: success"),
                     held == "gacGetServerVersion" ? 1 : 0);
            // And the next start connects as usual.
            connectNow(*manager);
        }
    }

    void quitWhileTheSdkShutsDownForever()
    {
        m_sdk.hold("gacDeinitialize", 1);
        {
            GacManager manager(nullptr, {m_sdkPath});
            connectNow(manager);
        }
        QCOMPARE(m_sdk.held("gacDeinitialize"), 1);
        m_sdk.hold("gacDeinitialize", 0);
        QTRY_COMPARE(m_sdk.held("gacDeinitialize"), 0);
    }

    // The server drops between the call that connected and the moment the
    // client would count itself connected: the client connects again rather
    // than showing a connection that is gone.
    void disconnectWhileConnecting_data()
    {
        QTest::addColumn<QString>("during");
        QTest::newRow("in the connect call") << "gacConnectToServer";
        QTest::newRow("while asking the version") << "gacGetServerVersion";
        QTest::newRow("while setting the drop path") << "gacSetClientDropPath";
    }
    void disconnectWhileConnecting()
    {
        QFETCH(QString, during);
        m_sdk.fireDuring(during.toUtf8().constData(), GacSdk::ServerDisconnected);
        GacManager manager(nullptr, {m_sdkPath});
        QStringList lines;
        connect(&manager, &GacManager::SigGacLogMessage,
                [&lines](const QString& line) { lines << line; });
        connectNow(manager);
        QCOMPARE(m_sdk.callList().filter("gacConnectToServer").size(), 2);
        QTRY_VERIFY(lines.contains("[Info] The server went away while connecting; trying again."));

        // And a drop while connected leads back to connecting, every time.
        for (int connects = 3; connects <= 5; ++connects) {
            m_sdk.fire(GacSdk::ServerDisconnected);
            QTRY_COMPARE(m_sdk.callList().filter("gacConnectToServer").size(), connects);
            QTRY_COMPARE_WITH_TIMEOUT(manager.GetState(), int(GacManager::Connected), 10000);
        }
    }

    void hostileCounts_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("reportedExports");
        QTest::addColumn<int>("writtenExports");
        QTest::addColumn<int>("records");
        QTest::addColumn<int>("markers");
        const int n = INT_MIN; // the fake's own count
        QTest::newRow("exports: two billion announced")
            << int(GacSdk::NewAssetExported) << 2 << INT_MAX << 1 << 1 << 0;
        QTest::newRow("exports: more written than room")
            << int(GacSdk::NewAssetExported) << 2 << 5 << 99 << 5 << 0;
        QTest::newRow("exports: two billion announced and written")
            << int(GacSdk::NewAssetExported) << 2 << INT_MAX << INT_MAX << GacSdk::kMaxAssets << 0;
        QTest::newRow("exports: two billion written")
            << int(GacSdk::NewAssetExported) << 2 << 1 << INT_MAX << 1 << 0;
        QTest::newRow("exports: negative")
            << int(GacSdk::NewAssetExported) << 2 << -7 << -7 << 0 << 0;
        QTest::newRow("transfer: 1500 assets")
            << int(GacSdk::AssetTransferred) << 1500 << n << n << GacSdk::kMaxAssets << 0;
        QTest::newRow("transfer: negative")
            << int(GacSdk::AssetTransferred) << -5 << n << n << 0 << 0;
        QTest::newRow("segment: 1500 tracks of 1500 events")
            << int(GacSdk::SegmentTransferred) << 1500 << n << n << GacSdk::kMaxEvents << 1500;
        QTest::newRow("segment: negative")
            << int(GacSdk::SegmentTransferred) << -5 << n << n << 0 << 0;
    }
    void hostileCounts()
    {
        QFETCH(int, kind);
        QFETCH(int, count);
        QFETCH(int, reportedExports);
        QFETCH(int, writtenExports);
        QFETCH(int, records);
        QFETCH(int, markers);
        GacManager manager(nullptr, {m_sdkPath});
        std::vector<std::shared_ptr<const VexGacMessageBase>> messages;
        connect(&manager, &GacManager::SigGacMessageReceived,
                [&](const std::shared_ptr<const VexGacMessageBase>& m) { messages.push_back(m); });
        connectNow(manager);
        m_sdk.setExportedAsset("/lib/export/door.wav");
        m_sdk.setExportedCounts(reportedExports, writtenExports);
        m_sdk.fireCount(kind, count);
        QTRY_COMPARE(messages.size(), size_t(1));

        int got = -1;
        int gotMarkers = 0;
        if (const auto* m = dynamic_cast<const AssetExportedMessage*>(messages[0].get())) {
            got = int(m->assetFiles.size());
            if (got > 0)
                QCOMPARE(m->assetFiles[0].filePath, std::string("/lib/export/door.wav"));
        } else if (const auto* m =
                       dynamic_cast<const AssetTransferredMessage*>(messages[0].get())) {
            got = int(m->assetFiles.size());
            // A text that fills its buffer without an end is read to the buffer's end.
            if (got > 0)
                QCOMPARE(m->assetFiles[0].filePath, std::string(GacSdk::kTextSize, 'x'));
        } else if (const auto* m =
                       dynamic_cast<const SegmentTransferredMessage*>(messages[0].get())) {
            got = 0;
            for (const TrackData& t : m->assetSegmentData.tracks)
                got += int(t.events.size());
            QVERIFY(int(m->assetSegmentData.tracks.size()) <= GacSdk::kMaxTracks);
            gotMarkers = int(m->assetSegmentData.markers.size());
        }
        QCOMPARE(got, records);
        QCOMPARE(gotMarkers, markers);
    }

    void progressThatIsNotANumberReadsAsNone()
    {
        GacManager manager(nullptr, {m_sdkPath});
        QSignalSpy progress(&manager, &GacManager::SigGacTransferProgress);
        connectNow(manager);
        m_sdk.fireCount(GacSdk::TransferProgress, -1);
        QTRY_COMPARE(progress.count(), 1);
        QCOMPARE(progress.at(0).at(0).toDouble(), 0.0);
    }
};

QTEST_GUILESS_MAIN(TestGacPeer)
#include "tst_gacpeer.moc"
