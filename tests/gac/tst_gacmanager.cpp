// The Nuendo link against the stand-in SDK: the manager as the window uses it,
// the client underneath it on its own, and an SDK that behaves like a networked
// one at its worst: calls that do not come back, callbacks from its own threads
// in the middle of our calls, and counts that do not match what it hands over.
#include "ConnectionControlImpl.h"
#include "FakeSdkControl.h"
#include "GacManager.h"
#include "GacSdk.h"
#include "VexGacListener.h"
#include "VexGacMessages.h"

#include <QScopeGuard>
#include <QtTest>

#include <climits>
#include <mutex>
#include <thread>

using namespace Vexmw;

namespace {

// Every expected line, each found at or after the previous one's place.
bool containsInOrder(const QStringList& lines, const QStringList& expected, int from = 0)
{
    int at = from - 1;
    for (const QString& e : expected) {
        do {
            ++at;
        } while (at < lines.size() && !lines.at(at).startsWith(e));
        if (at >= lines.size())
            return false;
    }
    return true;
}

// The client's lines arrive from several threads.
class RecordingListener final : public VexGacListener
{
public:
    void onGacLog(const std::string& line) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_lines << QString::fromStdString(line);
    }
    void onGacMessage(const std::shared_ptr<const VexGacMessageBase>& /*message*/) override {}

    QStringList lines() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_lines;
    }

private:
    mutable std::mutex m_mutex;
    QStringList m_lines;
};

const char* const kNotInitialised =
    "[Warning] Vex GAC is necessary to initialize before start the connection process.";

} // namespace

class TestGacManager final : public QObject
{
    Q_OBJECT
    FakeSdkControl m_sdk;
    const QString m_sdkPath = QStringLiteral(FAKE_GAC_SDK_PATH);
    QStringList m_log;
    // A manager whose log lines land in m_log.
    std::unique_ptr<GacManager> makeManager(const QStringList& candidates, int timeoutMs = 0)
    {
        m_log.clear();
        auto manager = timeoutMs > 0 ? std::make_unique<GacManager>(nullptr, candidates, timeoutMs)
                                     : std::make_unique<GacManager>(nullptr, candidates);
        connect(manager.get(), &GacManager::SigGacLogMessage,
                [this](const QString& line) { m_log << line; });
        return manager;
    }

    void connectNow(GacManager& manager)
    {
        manager.StartConnecting();
        QTRY_COMPARE_WITH_TIMEOUT(manager.GetState(), int(GacManager::Connected), 10000);
    }

    static void connectClient(ConnectionControlImpl& client)
    {
        QVERIFY(client.initialize());
        client.startConnectionThread();
        QTRY_VERIFY(client.isConnected());
    }

private slots:
    void initTestCase() { QVERIFY(m_sdk.resolve(m_sdkPath)); }

    void init() { m_sdk.reset(); }

    void cleanup()
    {
        m_sdk.reset();
        QCOMPARE(m_sdk.holdsGivenUp(), 0);
    }

    void initialisesTheSdk()
    {
        {
            auto manager = makeManager({m_sdkPath});
            QCOMPARE(manager->GetState(), int(GacManager::NotConnected));
            QTRY_VERIFY(m_log.contains("[API] Vex GAC setServerPort()"));
            QVERIFY(containsInOrder(m_log,
                                    {"[API] Vex GAC initialize()", "[Info] GAC status: initialized",
                                     "[Info] GAC engine name: Vex Tesk"}));
            QCOMPARE(m_sdk.callList(),
                     QStringList({"gacInternalInitialize Vex Tesk 2 1",
                                  "gacEnableCallbackExecutionInBackground", "gacRegisterCallback 0",
                                  "gacRegisterCallback 1", "gacRegisterCallback 2",
                                  "gacRegisterCallback 3", "gacRegisterCallback 4",
                                  "gacRegisterPathTranslateCallback"}));
        }
        QCOMPARE(m_sdk.callList().constLast(), QString("gacDeinitialize"));
    }

    void connectsAfterFailuresAndReconnectsAfterDisconnect()
    {
        m_sdk.setResult("gacConnectToServer", 3);
        auto manager = makeManager({m_sdkPath});
        QSignalSpy disconnected(manager.get(), &GacManager::SigGacServerDisconnected);
        manager->StartConnecting();
        QTRY_VERIFY(m_log.contains("[Info] GAC connection status: failure"));
        QCOMPARE(manager->GetState(), int(GacManager::WaitingConnection));
        m_sdk.setResult("gacConnectToServer", 7);
        QTRY_COMPARE_WITH_TIMEOUT(manager->GetState(), int(GacManager::Connected), 10000);
        QTRY_VERIFY(containsInOrder(m_log, {"[Info] GAC connection status: failure",
                                            "[Info] GAC connection status: success",
                                            "[Info] GAC server version: 2.1.0-test"}));
        QVERIFY(containsInOrder(m_sdk.callList(),
                                {"gacSetServerPort 4444", "gacConnectToServer localhost",
                                 "gacGetServerVersion", "gacSetClientDropPath "}));
        // Connected: stopping is refused and the connection stays.
        QVERIFY(!manager->StopConnecting());
        QTRY_VERIFY(m_log.contains("[Warning] Please disable the GAC server first."));
        QCOMPARE(manager->GetState(), int(GacManager::Connected));
        // The server goes away: back to waiting, by itself.
        m_sdk.setResult("gacConnectToServer", 3);
        const int before = m_log.size();
        m_sdk.fire(GacSdk::ServerDisconnected);
        QTRY_COMPARE(manager->GetState(), int(GacManager::WaitingConnection));
        QTRY_COMPARE(disconnected.count(), 1);
        QTRY_VERIFY(containsInOrder(m_log, {"[Info] GAC connection status: failure"}, before));
        // Waiting: stopping works, at once, and nothing keeps trying after it.
        QVERIFY(manager->StopConnecting());
        QTRY_COMPARE(manager->GetState(), int(GacManager::NotConnected));
        const int attempts = m_sdk.callList().filter("gacConnectToServer").size();
        QTest::qWait(1100);
        QCOMPARE(m_sdk.callList().filter("gacConnectToServer").size(), attempts);
        m_sdk.setResult("gacConnectToServer", 7);
        connectNow(*manager);
    }

    void setServerIsUsedForTheNextAttempt()
    {
        // The SDK is also found in a folder named among the candidates.
        auto manager = makeManager({"/nonexistent/folder", QFileInfo(m_sdkPath).absolutePath()});
        manager->SetServer("10.1.2.3", 5555);
        // Ports that do not exist never reach the SDK.
        manager->SetServer("10.1.2.3", 0);
        manager->SetServer("10.1.2.3", 999999);
        QTRY_VERIFY(m_log.contains("[Warning] Port 999999 is outside 1 to 65535; port 5555 "
                                   "is kept."));
        connectNow(*manager);
        QTRY_VERIFY(m_log.contains("[Info] Try connection:  IP Address: 10.1.2.3 Port: 5555"));
        const QStringList calls = m_sdk.callList();
        QVERIFY(calls.contains("gacConnectToServer 10.1.2.3"));
        QCOMPARE(calls.filter("gacSetServerPort"), QStringList{"gacSetServerPort 5555"});
    }

    void callbacksArriveOnTheManagersThread()
    {
        auto manager = makeManager({m_sdkPath});
        connectNow(*manager);
        std::vector<std::shared_ptr<const VexGacMessageBase>> messages;
        bool allOnThisThread = true;
        connect(manager.get(), &GacManager::SigGacMessageReceived, this,
                [&](const std::shared_ptr<const VexGacMessageBase>& m) {
                    allOnThisThread = allOnThisThread && QThread::currentThread() == thread();
                    messages.push_back(m);
                });
        QSignalSpy progress(manager.get(), &GacManager::SigGacTransferProgress);
        m_sdk.setExportedAsset("/lib/export/door.wav");
        for (int kind : {int(GacSdk::NewAssetExported), int(GacSdk::AssetTransferred),
                         int(GacSdk::SegmentTransferred), int(GacSdk::TransferProgress), 9})
            m_sdk.fire(kind);
        QTRY_COMPARE(messages.size(), size_t(3));
        QTRY_COMPARE(progress.count(), 1);
        QVERIFY(allOnThisThread);
        QCOMPARE(progress.at(0).at(0).toDouble(), 0.5);
        m_sdk.fireCount(GacSdk::TransferProgress, -1); // not a number: read as none
        QTRY_COMPARE(progress.count(), 2);
        QCOMPARE(progress.at(1).at(0).toDouble(), 0.0);
        // The SDK's records as the stand-in fills them, copied whole.
        const auto forest = [](const std::string& path, double start) {
            return AssetData{path,
                             path + ".json",
                             {"/projects/Forest.npr", "https://assets.example/forest", start, 2.5}};
        };
        const AssetData birds = forest("/lib/forest/birds.wav", 0.0);
        const AssetData wind = forest("/lib/forest/wind.wav", 2.5);
        AssetExportedMessage exported;
        exported.assetFiles = {forest("/lib/export/door.wav", 1.0)};
        QVERIFY(messages[0]->equals(exported));
        AssetTransferredMessage transferred;
        transferred.assetFiles = {birds, wind};
        QVERIFY(messages[1]->equals(transferred));
        SegmentTransferredMessage segment;
        SegmentData& s = segment.assetSegmentData;
        s.tracks = {{{{birds, 0.0, 2.5, 0.25}, {wind, 4.0, 2.5, 0.25}}, "Ambience"}};
        s.markers = {{7, 1.0, 3.0}};
        s.tempo = 96.0;
        s.timeSignatureNumerator = 3;
        s.timeSignatureDenominator = 4;
        QVERIFY(messages[2]->equals(segment));
        QTRY_VERIFY(m_log.contains("[Info] Unsupported message"));
    }

    void openWithNuendo()
    {
        auto manager = makeManager({m_sdkPath});
        QSignalSpy finished(manager.get(), &GacManager::SigOpenByNuendoFinished);
        const QString path = QString::fromUtf8("/lib/森の音/birds \xC3\xA9t\xC3\xA9.wav");
        const auto open = [&](const QString& file) -> QString {
            const int before = finished.count();
            manager->OpenByNuendo(file);
            if (!QTest::qWaitFor([&] { return finished.count() > before; }, 10000))
                return QString("(no answer)");
            const QList<QVariant> last = finished.last();
            return QString(last.at(0).toBool() ? "ok: " : "failed: ") + last.at(1).toString();
        };
        // Not connected: nothing reaches the server.
        QVERIFY(open(path).startsWith("failed: Not connected to Nuendo"));
        QCOMPARE(m_sdk.callList().filter("gacReadMetaData").size(), 0);
        connectNow(*manager);
        QCOMPARE(open(path), "ok: Opened in Nuendo: " + path);
        // The record read for the file is the one handed on.
        QVERIFY(containsInOrder(m_sdk.callList(),
                                {"gacReadMetaData " + path,
                                 "gacOpenNuendoProject " + path + " | /projects/Forest.npr"}));
        // No file: no request and no answer.
        manager->OpenByNuendo(QString());
        QCOMPARE(m_sdk.callList().filter("gacReadMetaData").size(), 1);
        m_sdk.setResult("gacOpenNuendoProject", 12);
        QCOMPARE(open(path), "failed: Nuendo could not open " + path + ": fake error 12");
        QTRY_VERIFY(m_log.contains("[Warning] fake error 12"));
        m_sdk.setResult("gacReadMetaData", 4);
        const int opens = m_sdk.callList().filter("gacOpenNuendoProject").size();
        QCOMPARE(open(path), "failed: Nuendo could not open " + path + ": fake error 4");
        QCOMPARE(m_sdk.callList().filter("gacOpenNuendoProject").size(), opens);
        QCOMPARE(finished.count(), 4);
    }

    // A path is sent whole or not at all: 1,023 bytes of UTF-8 fit the SDK's
    // buffer, one more character does not, and nothing is cut mid-character.
    void pathsLongerThanTheSdkBufferAreRefused()
    {
        auto manager = makeManager({m_sdkPath});
        QSignalSpy finished(manager.get(), &GacManager::SigOpenByNuendoFinished);
        connectNow(*manager);
        // "/" + 340 three-byte characters + ".wav" = 1,025 bytes; one fewer character fits.
        const QString tooLong = "/" + QString(340, QChar(0x68EE)) + ".wav";
        const QString fits = "/" + QString(339, QChar(0x68EE)) + "x.wav";
        manager->OpenByNuendo(tooLong);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(finished.last().at(0).toBool(), false);
        QVERIFY(finished.last().at(1).toString().startsWith(
            "The path is too long to send to Nuendo (1025 bytes, at most 1023)"));
        manager->OpenByNuendo(fits);
        QTRY_COMPARE(finished.count(), 2);
        QCOMPARE(finished.last().at(0).toBool(), true);
        QCOMPARE(m_sdk.callList().filter("gacReadMetaData"),
                 QStringList{"gacReadMetaData " + fits});
    }

    // A server that does not answer: the request returns at once, fails in
    // the status bar after the timeout, and the SDK gets no second request
    // before it has answered the first.
    void openWithASilentServer()
    {
        auto manager = makeManager({m_sdkPath}, 300);
        QSignalSpy finished(manager.get(), &GacManager::SigOpenByNuendoFinished);
        connectNow(*manager);
        m_sdk.hold("gacReadMetaData", 1);
        manager->OpenByNuendo("/sfx/door.wav");
        QTRY_COMPARE(m_sdk.held("gacReadMetaData"), 1);
        QCOMPARE(finished.count(), 0);
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(finished.last().at(1).toString(),
                 QString("Nuendo did not answer in time; /sfx/door.wav was not opened."));
        manager->OpenByNuendo("/sfx/window.wav");
        QCOMPARE(finished.count(), 2);
        QCOMPARE(finished.last().at(1).toString(),
                 QString("Nuendo has not answered the previous request yet."));
        m_sdk.hold("gacReadMetaData", 0);
        QTRY_VERIFY(m_sdk.callList().contains("gacOpenNuendoProject /sfx/door.wav | "
                                              "/projects/Forest.npr"));
        // The late answer is not reported twice; the next request goes through.
        QTest::qWait(50);
        QCOMPARE(finished.count(), 2);
        manager->OpenByNuendo("/sfx/window.wav");
        QTRY_COMPARE(finished.count(), 3);
        QCOMPARE(finished.last().at(0).toBool(), true);
        QCOMPARE(m_sdk.holdsGivenUp(), 0);
    }

    void unusableSdk_data()
    {
        QTest::addColumn<QString>("candidate");
        QTest::addColumn<QString>("initFailure");
        QTest::addColumn<QString>("reason");
        QTest::newRow("missing") << "/nonexistent/folder" << QString()
                                 << "[Warning] Game Audio Connect SDK not found";
        QTest::newRow("incomplete") << QStringLiteral(INCOMPLETE_GAC_SDK_PATH) << QString()
                                    << "[Warning] Game Audio Connect SDK";
        QTest::newRow("refuses to initialise") << m_sdkPath << "gacInternalInitialize"
                                               << "[Warning] fake error 5";
    }

    void unusableSdk()
    {
        QFETCH(QString, candidate);
        QFETCH(QString, initFailure);
        QFETCH(QString, reason);
        if (!initFailure.isEmpty())
            m_sdk.setResult(initFailure.toUtf8().constData(), 5);
        auto manager = makeManager({candidate});
        QCOMPARE(manager->GetState(), int(GacManager::NotConnected));
        QTRY_VERIFY(containsInOrder(m_log, {"[Info] GAC engine name: Vex Tesk"}));
        QVERIFY(containsInOrder(m_log, {"[API] Vex GAC initialize()", reason}));
        QVERIFY(!m_log.contains("[Info] GAC status: initialized"));
        if (QTest::currentDataTag() == QByteArray("incomplete"))
            QVERIFY(m_log.indexOf(QRegularExpression(".*lacks: gacDeinitialize$")) >= 0);
        manager->StartConnecting();
        QTRY_VERIFY(m_log.contains(kNotInitialised));
        QTRY_COMPARE(manager->GetState(), int(GacManager::NotConnected));
        QVERIFY(containsInOrder(m_log, {"[API] Vex GAC startConnectionThread()",
                                        "[API] Vex GAC tryConnect()", kNotInitialised}));
        QVERIFY(manager->StopConnecting());
        QCOMPARE(m_sdk.callList().filter("gacConnectToServer").size(), 0);
    }

    // The client's requests that go through sendMessage, each to its own SDK
    // call, and none of them before there is a connection.
    void clientRequestsGoToTheirOperation()
    {
        RecordingListener listener;
        ConnectionControlImpl client(&listener, {m_sdkPath});
        QVERIFY(client.initialize());
        CreateNuendoMessage create;
        TrackData track;
        track.name = "Doors";
        track.events.push_back({{"/sfx/door_open.wav", "", {}}, 0.0, 1.0, 0.0});
        create.assetSegmentData.tracks = {track, TrackData{}};
        create.assetSegmentData.markers = {{1, 0.0, 1.0}};
        AssetUpdateMessage update;
        update.displayValue = "Approved";
        const OpenNuendoMessage open("/sfx/door_open.wav");
        const QRegularExpression requests("gacOpenNewNuendoProject|gacSetAssetUpdate|gacRead");
        for (const VexGacMessageBase* m : {static_cast<const VexGacMessageBase*>(&create),
                                           static_cast<const VexGacMessageBase*>(&update),
                                           static_cast<const VexGacMessageBase*>(&open)})
            QVERIFY(!client.sendMessage(*m));
        QCOMPARE(m_sdk.callList().filter(requests).size(), 0);
        client.startConnectionThread();
        QTRY_VERIFY(client.isConnected());
        QVERIFY(client.sendMessage(create));
        QVERIFY(client.sendMessage(update));
        QVERIFY(client.sendMessage(open));
        QVERIFY(!client.sendMessage(SegmentUpdateMessage()));
        QVERIFY(!client.sendMessage(AssetTransferredMessage()));
        QCOMPARE(m_sdk.callList().filter(requests),
                 QStringList({"gacOpenNewNuendoProject tracks 2 markers 1 first /sfx/door_open.wav",
                              "gacSetAssetUpdate Approved", "gacReadMetaData /sfx/door_open.wav"}));
        QCOMPARE(listener.lines().constLast(), QString("[Info] Unsupported message"));
    }

    void clientTranslatesPathsUnchanged()
    {
        RecordingListener listener;
        ConnectionControlImpl client(&listener, {m_sdkPath});
        QVERIFY(client.initialize());
        char out[64] = {};
        QCOMPARE(m_sdk.translate("/server/a.wav", out, sizeof out), 7);
        QCOMPARE(QByteArray(out), QByteArray("/server/a.wav"));
        QVERIFY(listener.lines().contains("[Callback] PathTranslate"));
        // Too small a buffer: refused, nothing written past it.
        char small[5] = {'x', 'x', 'x', 'x', 'x'};
        QCOMPARE(m_sdk.translate("/server/a.wav", small, 4), -1);
        QCOMPARE(small[4], 'x');
    }

    // Any text of a new project longer than the SDK's 1023 bytes would arrive
    // cut, naming another file, so the request is refused.
    void clientRefusesOverlongProjectTexts()
    {
        RecordingListener listener;
        ConnectionControlImpl client(&listener, {m_sdkPath});
        connectClient(client);
        const std::string longPath = "/" + std::string(1023, 'p') + ".wav";
        const std::string fits = "/" + std::string(1018, 'p') + ".wav";
        CreateNuendoMessage create;
        TrackData track;
        track.events.push_back({{fits, fits, {fits, longPath, 0, 0}}, 0, 0, 0});
        create.assetSegmentData.tracks = {track};
        QVERIFY(!client.createNuendoProject(create));
        create.assetSegmentData.tracks[0].events[0].asset.metaData.repositoryUrl = fits;
        QVERIFY(client.createNuendoProject(create));
        QCOMPARE(m_sdk.callList().filter("gacOpenNewNuendoProject").size(), 1);
        QVERIFY(listener.lines().contains(
            QString::fromStdString("[Warning] The path is longer than the 1023 bytes the SDK "
                                   "takes; nothing was sent: " +
                                   longPath)));
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
        auto manager = makeManager({m_sdkPath});
        manager->StartConnecting();
        QTRY_COMPARE(m_sdk.held(function.constData()), 1);
        // The server drops in another thread of the SDK, as a real one would.
        // Joined on every way out: a failed check must not end the run with a
        // joinable thread destroyed.
        std::thread dropper;
        const auto joinDropper = qScopeGuard([&] {
            if (dropper.joinable())
                dropper.join();
        });
        if (serverDrops)
            dropper = std::thread([this] { m_sdk.fire(GacSdk::ServerDisconnected); });
        if (quit) {
            manager.reset();
        } else {
            QVERIFY(manager->StopConnecting());
            QTRY_COMPARE(manager->GetState(), int(GacManager::NotConnected));
        }
        QCOMPARE(m_sdk.held(function.constData()), 1);
        if (dropper.joinable())
            dropper.join();
        m_sdk.hold(function.constData(), 0);
        QTRY_COMPARE(m_sdk.held(function.constData()), 0);
        if (!quit) {
            // A connection made after the stop is dropped by starting the SDK afresh.
            QTRY_COMPARE(m_sdk.callList().filter("gacInternalInitialize").size(),
                         connectsLate ? 2 : 1);
            QTest::qWait(50);
            QCOMPARE(manager->GetState(), int(GacManager::NotConnected));
            // Only an attempt held after it had connected ever said so.
            QCOMPARE(m_log.count("[Info] GAC connection status: success"),
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
        auto manager = makeManager({m_sdkPath});
        connectNow(*manager);
        QCOMPARE(m_sdk.callList().filter("gacConnectToServer").size(), 2);
        QTRY_VERIFY(m_log.contains("[Info] The server went away while connecting; trying again."));
        // And a drop while connected leads back to connecting, every time.
        for (int connects = 3; connects <= 5; ++connects) {
            m_sdk.fire(GacSdk::ServerDisconnected);
            QTRY_COMPARE(m_sdk.callList().filter("gacConnectToServer").size(), connects);
            QTRY_COMPARE_WITH_TIMEOUT(manager->GetState(), int(GacManager::Connected), 10000);
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
};

QTEST_GUILESS_MAIN(TestGacManager)
#include "tst_gacmanager.moc"
