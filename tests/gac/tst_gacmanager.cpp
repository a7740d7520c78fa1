// The Nuendo link against the stand-in SDK: the manager as the window uses it,
// and the client underneath it on its own.
#include "ConnectionControlImpl.h"
#include "FakeSdkControl.h"
#include "GacManager.h"
#include "GacSdk.h"
#include "VexGacListener.h"
#include "VexGacMessages.h"

#include <QtTest>

#include <mutex>

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

QMutex g_qtLogMutex;
QStringList g_qtLog;
void captureGacCategory(QtMsgType, const QMessageLogContext& context, const QString& message)
{
    if (context.category && QByteArray(context.category) == "tesk.gac") {
        QMutexLocker lock(&g_qtLogMutex);
        g_qtLog << message;
    }
}

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

    void initialisesTheSdk()
    {
        const QtMessageHandler previous = qInstallMessageHandler(captureGacCategory);
        {
            auto manager = makeManager({m_sdkPath});
            QCOMPARE(manager->GetState(), int(GacManager::NotConnected));
            QTRY_VERIFY(m_log.contains("[API] Vex GAC setServerPort()"));
            QVERIFY(containsInOrder(
                m_log, {"[API] Vex GAC constructor()", "[API] Vex GAC setGacEngineName()",
                        "[API] Vex GAC initialize()", "[Info] GAC status: initialized",
                        "[Info] GAC engine name: Vex Tesk", "[API] Vex GAC registerCallbacks()",
                        "[API] Vex GAC setServerIpAddress()", "[API] Vex GAC setServerPort()"}));
            QCOMPARE(m_sdk.callList(),
                     QStringList({"gacInternalInitialize Vex Tesk 2 1",
                                  "gacEnableCallbackExecutionInBackground", "gacRegisterCallback 0",
                                  "gacRegisterCallback 1", "gacRegisterCallback 2",
                                  "gacRegisterCallback 3", "gacRegisterCallback 4",
                                  "gacRegisterPathTranslateCallback"}));
        }
        qInstallMessageHandler(previous);
        QCOMPARE(m_sdk.callList().constLast(), QString("gacDeinitialize"));
        // The same lines reach Qt's message log.
        QMutexLocker lock(&g_qtLogMutex);
        QVERIFY(g_qtLog.contains("[API] Vex GAC initialize()"));
        QVERIFY(g_qtLog.contains("[API] Vex GAC destructor()"));
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
        QTRY_VERIFY(containsInOrder(
            m_log, {"[API] Vex GAC startConnectionThread()", "[API] Vex GAC tryConnect()",
                    "[Info] Try connection:  IP Address: localhost Port: 4444",
                    "[Info] GAC connection status: failure", "[API] Vex GAC tryConnect()",
                    "[Info] GAC connection status: success", "[API] Vex GAC getServerVersion()",
                    "[Info] GAC server version: 2.1.0-test", "[Info] Set drop path: "}));
        const QStringList calls = m_sdk.callList();
        QVERIFY(calls.contains("gacSetServerPort 4444"));
        QVERIFY(calls.contains("gacConnectToServer localhost"));
        QVERIFY(containsInOrder(calls, {"gacGetServerVersion", "gacSetClientDropPath "}));

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
        QTRY_VERIFY(containsInOrder(
            m_log,
            {"[Callback] Vex GAC onServerDisconnected()", "[API] Vex GAC startConnectionThread()",
             "[API] Vex GAC tryConnect()", "[Info] GAC connection status: failure"},
            before));

        // Waiting: stopping works, at once, and nothing keeps trying after it.
        QVERIFY(manager->StopConnecting());
        QCOMPARE(manager->GetState(), int(GacManager::NotConnected));
        QTRY_VERIFY(containsInOrder(m_log, {"[API] Vex GAC stopConnectionThread()"}, before));
        const int attempts = m_sdk.callList().filter("gacConnectToServer").size();
        QTest::qWait(1200);
        QCOMPARE(m_sdk.callList().filter("gacConnectToServer").size(), attempts);
        m_sdk.setResult("gacConnectToServer", 7);
        connectNow(*manager);
    }

    void setServerIsUsedForTheNextAttempt()
    {
        auto manager = makeManager({m_sdkPath});
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

        // The SDK's records as the stand-in fills them, copied whole.
        const auto forest = [](const std::string& path, double start) {
            return AssetData{path,
                             path + ".json",
                             {"/projects/Forest.npr", "https://assets.example/forest", start, 2.5}};
        };
        const AssetData birds = forest("/lib/forest/birds.wav", 0.0);
        const AssetData wind = forest("/lib/forest/wind.wav", 2.5);
        const auto* exported = dynamic_cast<const AssetExportedMessage*>(messages[0].get());
        QVERIFY(exported);
        QVERIFY(exported->assetFiles ==
                std::vector<AssetData>{forest("/lib/export/door.wav", 1.0)});
        const auto* transferred = dynamic_cast<const AssetTransferredMessage*>(messages[1].get());
        QVERIFY(transferred);
        QVERIFY(transferred->assetFiles == (std::vector<AssetData>{birds, wind}));
        const auto* segment = dynamic_cast<const SegmentTransferredMessage*>(messages[2].get());
        QVERIFY(segment);
        SegmentData s;
        s.tracks = {{{{birds, 0.0, 2.5, 0.25}, {wind, 4.0, 2.5, 0.25}}, "Ambience"}};
        s.markers = {{7, 1.0, 3.0}};
        s.tempo = 96.0;
        s.timeSignatureNumerator = 3;
        s.timeSignatureDenominator = 4;
        QVERIFY(segment->assetSegmentData == s);

        QTRY_VERIFY(containsInOrder(
            m_log,
            {"[Callback] NewAssetExported", "[Info] Asset: /lib/export/door.wav",
             "[Callback] AssetTransferred", "[Info] Asset: /lib/forest/birds.wav",
             "[Info] Asset: /lib/forest/wind.wav", "[Callback] SegmentTransferred",
             "[Info] Segment:", "[Callback] TransferProgress", "[Info] Unsupported message"}));
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

        m_sdk.setResult("gacReadMetaData", 0);
        m_sdk.setResult("gacOpenNuendoProject", 0);
        QVERIFY(open(path).startsWith("ok: "));

        m_sdk.setResult("gacOpenNuendoProject", 12);
        QCOMPARE(open(path), "failed: Nuendo could not open " + path + ": fake error 12");
        QTRY_VERIFY(m_log.contains("[Warning] fake error 12"));

        m_sdk.setResult("gacReadMetaData", 4);
        const int opens = m_sdk.callList().filter("gacOpenNuendoProject").size();
        QCOMPARE(open(path), "failed: Nuendo could not open " + path + ": fake error 4");
        QCOMPARE(m_sdk.callList().filter("gacOpenNuendoProject").size(), opens);
        QTRY_COMPARE(m_log.filter("[API] Vex GAC openNuendoProject()").size(), 4);
        QCOMPARE(finished.count(), 5);
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

    void sdkFolderIsSearched()
    {
        auto manager = makeManager({"/nonexistent/folder", QFileInfo(m_sdkPath).absolutePath()});
        connectNow(*manager);
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
        const QStringList lines = listener.lines();
        QVERIFY(containsInOrder(lines, {"[API] Vex GAC createNuendoProject()",
                                        "[API] Vex GAC setAssetUpdate()",
                                        "[API] Vex GAC setSegmentUpdate()"}));
        QCOMPARE(lines.constLast(), QString("[Info] Unsupported message"));
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
};

QTEST_GUILESS_MAIN(TestGacManager)
#include "tst_gacmanager.moc"
