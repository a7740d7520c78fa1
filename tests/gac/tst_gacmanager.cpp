#include "FakeSdkControl.h"
#include "GacManager.h"
#include "GacSdk.h"
#include "VexGacMessages.h"

#include <QtTest>

using namespace Vexmw;

namespace {

// Collects the manager's log lines as they arrive on this thread.
struct LogRecorder
{
    QStringList lines;
    explicit LogRecorder(GacManager& m)
    {
        QObject::connect(&m, &GacManager::SigGacLogMessage,
                         [this](const QString& line) { lines << line; });
    }
};

// Index of the first line at or after from that starts with prefix, or -1.
int findFrom(const QStringList& lines, const QString& prefix, int from = 0)
{
    for (int i = qMax(from, 0); i < lines.size(); ++i)
        if (lines.at(i).startsWith(prefix))
            return i;
    return -1;
}

// Every expected line, each found after the previous one.
bool containsInOrder(const QStringList& lines, const QStringList& expected, int from = 0)
{
    int at = from - 1;
    for (const QString& e : expected) {
        at = findFrom(lines, e, at + 1);
        if (at < 0)
            return false;
    }
    return true;
}

const char* const kNotInitialised =
    "[Warning] Vex GAC is necessary to initialize before start the connection process.";

} // namespace

class TestGacManager final : public QObject
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

    void initialisesTheSdk()
    {
        {
            GacManager manager(nullptr, {m_sdkPath});
            LogRecorder log(manager);
            QCOMPARE(manager.GetState(), int(GacManager::NotConnected));
            QTRY_VERIFY(log.lines.contains("[API] Vex GAC registerCallbacks()"));
            QVERIFY(containsInOrder(
                log.lines,
                {"[API] Vex GAC constructor()", "[API] Vex GAC setGacEngineName()",
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
        QCOMPARE(m_sdk.callList().constLast(), QString("gacDeinitialize"));
    }

    void connectsAfterFailuresAndReconnectsAfterDisconnect()
    {
        m_sdk.setResult("gacConnectToServer", 3);
        GacManager manager(nullptr, {m_sdkPath});
        LogRecorder log(manager);
        QSignalSpy disconnected(&manager, &GacManager::SigGacServerDisconnected);

        manager.StartConnecting();
        QTRY_VERIFY(log.lines.contains("[Info] GAC connection status: failure"));
        QCOMPARE(manager.GetState(), int(GacManager::WaitingConnection));

        m_sdk.setResult("gacConnectToServer", 7);
        QTRY_COMPARE_WITH_TIMEOUT(manager.GetState(), int(GacManager::Connected), 10000);
        QTRY_VERIFY(log.lines.contains("[Info] GAC server version: 2.1.0-test"));
        QTRY_VERIFY(findFrom(log.lines, "[Info] Set drop path: ") >= 0);
        const int start = findFrom(log.lines, "[API] Vex GAC startConnectionThread()");
        QVERIFY(start >= 0);
        QVERIFY(containsInOrder(
            log.lines,
            {"[API] Vex GAC tryConnect()",
             "[Info] Try connection:  IP Address: localhost Port: 4444",
             "[Info] GAC connection status: failure", "[API] Vex GAC tryConnect()",
             "[Info] GAC connection status: success", "[API] Vex GAC getServerVersion()",
             "[Info] GAC server version: 2.1.0-test", "[Info] Set drop path: "},
            start));
        const QStringList calls = m_sdk.callList();
        QVERIFY(calls.contains("gacSetServerPort 4444"));
        QVERIFY(calls.contains("gacConnectToServer localhost"));
        QVERIFY(calls.contains("gacGetServerVersion"));
        QVERIFY(findFrom(calls, "gacSetClientDropPath ") >= 0);

        // Connected: stopping is refused and the connection stays.
        QVERIFY(!manager.StopConnecting());
        QTRY_VERIFY(log.lines.contains("[Warning] Please disable the GAC server first."));
        QCOMPARE(manager.GetState(), int(GacManager::Connected));

        // The server goes away: back to waiting, by itself.
        m_sdk.setResult("gacConnectToServer", 3);
        const int before = log.lines.size();
        m_sdk.fire(GacSdk::ServerDisconnected);
        QTRY_COMPARE(manager.GetState(), int(GacManager::WaitingConnection));
        QTRY_COMPARE(disconnected.count(), 1);
        QTRY_VERIFY(containsInOrder(
            log.lines,
            {"[Callback] Vex GAC onServerDisconnected()", "[API] Vex GAC startConnectionThread()",
             "[API] Vex GAC tryConnect()", "[Info] GAC connection status: failure"},
            before));

        // Waiting: stopping works, and connecting again when asked.
        QVERIFY(manager.StopConnecting());
        QCOMPARE(manager.GetState(), int(GacManager::NotConnected));
        QTRY_VERIFY(findFrom(log.lines, "[API] Vex GAC stopConnectionThread()", before) >= 0);
        m_sdk.setResult("gacConnectToServer", 7);
        connectNow(manager);
    }

    void stoppingWhileWaitingComesBackQuickly()
    {
        m_sdk.setResult("gacConnectToServer", 3);
        GacManager manager(nullptr, {m_sdkPath});
        manager.StartConnecting();
        QTRY_COMPARE(manager.GetState(), int(GacManager::WaitingConnection));
        QVERIFY(manager.StopConnecting());
        QCOMPARE(manager.GetState(), int(GacManager::NotConnected));
        // Nothing keeps trying after the stop.
        const int attempts = m_sdk.callList().filter("gacConnectToServer").size();
        QTest::qWait(1500);
        QCOMPARE(m_sdk.callList().filter("gacConnectToServer").size(), attempts);
    }

    void setServerIsUsedForTheNextAttempt()
    {
        GacManager manager(nullptr, {m_sdkPath});
        LogRecorder log(manager);
        manager.SetServer("10.1.2.3", 5555);
        // Ports that do not exist never reach the SDK.
        manager.SetServer("10.1.2.3", 0);
        manager.SetServer("10.1.2.3", 999999);
        QTRY_VERIFY(log.lines.contains("[Warning] Port 999999 is outside 1 to 65535; port 5555 "
                                       "is kept."));
        connectNow(manager);
        QTRY_VERIFY(log.lines.contains("[Info] Try connection:  IP Address: 10.1.2.3 Port: 5555"));
        const QStringList calls = m_sdk.callList();
        QVERIFY(calls.contains("gacSetServerPort 5555"));
        QVERIFY(calls.contains("gacConnectToServer 10.1.2.3"));
        QCOMPARE(calls.filter("gacSetServerPort").size(), 1);
    }

    void callbacksArriveOnTheManagersThread()
    {
        GacManager manager(nullptr, {m_sdkPath});
        LogRecorder log(manager);
        connectNow(manager);

        std::vector<std::shared_ptr<const VexGacMessageBase>> messages;
        bool allOnThisThread = true;
        connect(&manager, &GacManager::SigGacMessageReceived, this,
                [&](const std::shared_ptr<const VexGacMessageBase>& m) {
                    allOnThisThread = allOnThisThread && QThread::currentThread() == thread();
                    messages.push_back(m);
                });
        QSignalSpy progress(&manager, &GacManager::SigGacTransferProgress);

        m_sdk.setExportedAsset("/lib/export/door.wav");
        m_sdk.fire(GacSdk::NewAssetExported);
        m_sdk.fire(GacSdk::AssetTransferred);
        m_sdk.fire(GacSdk::SegmentTransferred);
        m_sdk.fire(GacSdk::TransferProgress);
        m_sdk.fire(9);
        QTRY_COMPARE(messages.size(), size_t(3));
        QTRY_COMPARE(progress.count(), 1);
        QVERIFY(allOnThisThread);
        QCOMPARE(progress.at(0).at(0).toDouble(), 0.5);

        const auto* exported = dynamic_cast<const AssetExportedMessage*>(messages[0].get());
        QVERIFY(exported);
        QCOMPARE(exported->assetFiles.size(), size_t(1));
        QCOMPARE(exported->assetFiles[0].filePath, std::string("/lib/export/door.wav"));
        QCOMPARE(exported->assetFiles[0].metaData.startTime, 1.0);

        const auto* transferred = dynamic_cast<const AssetTransferredMessage*>(messages[1].get());
        QVERIFY(transferred);
        QCOMPARE(transferred->assetFiles.size(), size_t(2));
        QCOMPARE(transferred->assetFiles[1].filePath, std::string("/lib/forest/wind.wav"));
        QCOMPARE(transferred->assetFiles[1].additionalMetaDataFilePath,
                 std::string("/lib/forest/wind.wav.json"));
        QCOMPARE(transferred->assetFiles[1].metaData.projectPath,
                 std::string("/projects/Forest.npr"));
        QCOMPARE(transferred->assetFiles[1].metaData.repositoryUrl,
                 std::string("https://assets.example/forest"));
        QCOMPARE(transferred->assetFiles[1].metaData.startTime, 2.5);
        QCOMPARE(transferred->assetFiles[1].metaData.length, 2.5);

        const auto* segment = dynamic_cast<const SegmentTransferredMessage*>(messages[2].get());
        QVERIFY(segment);
        const SegmentData& s = segment->assetSegmentData;
        QCOMPARE(s.tracks.size(), size_t(1));
        QCOMPARE(s.tracks[0].name, std::string("Ambience"));
        QCOMPARE(s.tracks[0].events.size(), size_t(2));
        QCOMPARE(s.tracks[0].events[1].asset.filePath, std::string("/lib/forest/wind.wav"));
        QCOMPARE(s.tracks[0].events[1].startPosition, 4.0);
        QCOMPARE(s.tracks[0].events[1].dataOffset, 0.25);
        QCOMPARE(s.markers.size(), size_t(1));
        QCOMPARE(s.markers[0].id, 7);
        QCOMPARE(s.tempo, 96.0);
        QCOMPARE(s.timeSignatureNumerator, 3);
        QCOMPARE(s.timeSignatureDenominator, 4);

        QTRY_VERIFY(log.lines.contains("[Info] Unsupported message"));
        QVERIFY(containsInOrder(
            log.lines,
            {"[Callback] NewAssetExported", "[Info] Asset: /lib/export/door.wav",
             "[Callback] AssetTransferred", "[Info] Asset: /lib/forest/birds.wav",
             "[Info] Asset: /lib/forest/wind.wav", "[Callback] SegmentTransferred",
             "[Info] Segment:", "[Callback] TransferProgress", "[Info] Unsupported message"}));
    }

    void openWithNuendo()
    {
        GacManager manager(nullptr, {m_sdkPath});
        LogRecorder log(manager);
        QSignalSpy finished(&manager, &GacManager::SigOpenByNuendoFinished);
        const QString path = QString::fromUtf8("/lib/森の音/birds \xC3\xA9t\xC3\xA9.wav");
        const QString utf8Path = QString::fromUtf8(path.toUtf8());
        const auto open = [&](const QString& file) -> QString {
            const int before = finished.count();
            manager.OpenByNuendo(file);
            if (!QTest::qWaitFor([&] { return finished.count() > before; }, 10000))
                return QString("(no answer)");
            const QList<QVariant> last = finished.last();
            return QString(last.at(0).toBool() ? "ok: " : "failed: ") + last.at(1).toString();
        };

        // Not connected: nothing reaches the server.
        QVERIFY(open(path).startsWith("failed: Not connected to Nuendo"));
        QCOMPARE(m_sdk.callList().filter("gacReadMetaData").size(), 0);

        connectNow(manager);
        QCOMPARE(open(path), "ok: Opened in Nuendo: " + path);
        QStringList calls = m_sdk.callList();
        const int read = calls.indexOf("gacReadMetaData " + utf8Path);
        QVERIFY(read >= 0);
        // The record read for the file is the one handed on.
        QCOMPARE(calls.value(read + 1),
                 QString("gacOpenNuendoProject " + utf8Path + " | /projects/Forest.npr"));

        // No file: no request and no answer.
        manager.OpenByNuendo(QString());
        QCOMPARE(m_sdk.callList().filter("gacReadMetaData").size(), 1);

        m_sdk.setResult("gacReadMetaData", 0);
        m_sdk.setResult("gacOpenNuendoProject", 0);
        QVERIFY(open(path).startsWith("ok: "));

        m_sdk.setResult("gacOpenNuendoProject", 12);
        QCOMPARE(open(path), "failed: Nuendo could not open " + path + ": fake error 12");
        QTRY_VERIFY(log.lines.contains("[Warning] fake error 12"));

        m_sdk.setResult("gacReadMetaData", 4);
        const int opens = m_sdk.callList().filter("gacOpenNuendoProject").size();
        QCOMPARE(open(path), "failed: Nuendo could not open " + path + ": fake error 4");
        QCOMPARE(m_sdk.callList().filter("gacOpenNuendoProject").size(), opens);
        QTRY_COMPARE(log.lines.filter("[API] Vex GAC openNuendoProject()").size(), 4);
        QCOMPARE(finished.count(), 5);
    }

    // A path is sent whole or not at all: 1,023 bytes of UTF-8 fit the SDK's
    // buffer, one more character does not, and nothing is cut mid-character.
    void pathsLongerThanTheSdkBufferAreRefused()
    {
        GacManager manager(nullptr, {m_sdkPath});
        LogRecorder log(manager);
        QSignalSpy finished(&manager, &GacManager::SigOpenByNuendoFinished);
        connectNow(manager);
        // "/" + 340 three-byte characters + ".wav" = 1,025 bytes; one fewer character fits.
        const QString tooLong = "/" + QString(340, QChar(0x68EE)) + ".wav";
        const QString fits = "/" + QString(339, QChar(0x68EE)) + "x.wav";
        QCOMPARE(tooLong.toUtf8().size(), 1025);
        QCOMPARE(fits.toUtf8().size(), 1023);

        manager.OpenByNuendo(tooLong);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(finished.last().at(0).toBool(), false);
        QVERIFY(finished.last().at(1).toString().startsWith(
            "The path is too long to send to Nuendo (1025 bytes, at most 1023)"));
        manager.OpenByNuendo(fits);
        QTRY_COMPARE(finished.count(), 2);
        QCOMPARE(finished.last().at(0).toBool(), true);
        const QStringList reads = m_sdk.callList().filter("gacReadMetaData");
        QCOMPARE(reads, QStringList{"gacReadMetaData " + fits});
    }

    // A server that does not answer: the request returns at once, fails in
    // the status bar after the timeout, and the SDK gets no second request
    // before it has answered the first.
    void openWithASilentServer()
    {
        GacManager manager(nullptr, {m_sdkPath}, 300);
        QSignalSpy finished(&manager, &GacManager::SigOpenByNuendoFinished);
        connectNow(manager);
        m_sdk.hold("gacReadMetaData", 1);
        manager.OpenByNuendo("/sfx/door.wav");
        QTRY_COMPARE(m_sdk.held("gacReadMetaData"), 1);
        QCOMPARE(finished.count(), 0);
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(finished.last().at(1).toString(),
                 QString("Nuendo did not answer in time; /sfx/door.wav was not opened."));
        manager.OpenByNuendo("/sfx/window.wav");
        QCOMPARE(finished.count(), 2);
        QCOMPARE(finished.last().at(1).toString(),
                 QString("Nuendo has not answered the previous request yet."));

        m_sdk.hold("gacReadMetaData", 0);
        QTRY_COMPARE(m_sdk.held("gacReadMetaData"), 0);
        QTRY_VERIFY(m_sdk.callList().contains("gacOpenNuendoProject /sfx/door.wav | "
                                              "/projects/Forest.npr"));
        // The late answer is not reported twice; the next request goes through.
        QTest::qWait(50);
        QCOMPARE(finished.count(), 2);
        manager.OpenByNuendo("/sfx/window.wav");
        QTRY_COMPARE(finished.count(), 3);
        QCOMPARE(finished.last().at(0).toBool(), true);
        QCOMPARE(m_sdk.holdsGivenUp(), 0);
    }

    void sdkFolderIsSearched()
    {
        GacManager manager(nullptr, {"/nonexistent/folder", QFileInfo(m_sdkPath).absolutePath()});
        connectNow(manager);
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

        GacManager manager(nullptr, {candidate});
        LogRecorder log(manager);
        QCOMPARE(manager.GetState(), int(GacManager::NotConnected));
        QTRY_VERIFY(findFrom(log.lines, "[Info] GAC engine name: Vex Tesk") >= 0);
        QVERIFY(containsInOrder(log.lines, {"[API] Vex GAC initialize()", reason}));
        QVERIFY(!log.lines.contains("[Info] GAC status: initialized"));
        if (QTest::currentDataTag() == QByteArray("incomplete"))
            QVERIFY(findFrom(log.lines, reason) ==
                    log.lines.indexOf(QRegularExpression(".*lacks: gacDeinitialize$")));

        manager.StartConnecting();
        QTRY_VERIFY(log.lines.contains(kNotInitialised));
        QTRY_COMPARE(manager.GetState(), int(GacManager::NotConnected));
        QVERIFY(containsInOrder(log.lines, {"[API] Vex GAC startConnectionThread()",
                                            "[API] Vex GAC tryConnect()", kNotInitialised}));
        QVERIFY(manager.StopConnecting());
        QCOMPARE(m_sdk.callList().filter("gacConnectToServer").size(), 0);
    }
};

QTEST_GUILESS_MAIN(TestGacManager)
#include "tst_gacmanager.moc"
