#include "ConnectionControlImpl.h"
#include "FakeSdkControl.h"
#include "GacManager.h"
#include "VexGacListener.h"

#include <QtTest>

#include <mutex>

using namespace Vexmw;

namespace {

// Lines arrive from several threads.
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

QMutex g_logMutex;
QStringList g_qtLog;

void captureGacCategory(QtMsgType, const QMessageLogContext& context, const QString& message)
{
    if (context.category && QByteArray(context.category) == "tesk.gac") {
        QMutexLocker lock(&g_logMutex);
        g_qtLog << message;
    }
}

} // namespace

// The client on its own, without the manager: the requests that go through
// sendMessage, the path-translation callback and texts longer than the SDK's
// buffers.
class TestGacClient final : public QObject
{
    Q_OBJECT

    const QString m_sdkPath = QStringLiteral(FAKE_GAC_SDK_PATH);
    FakeSdkControl m_sdk;

    QStringList calls() const { return m_sdk.callList(); }

    static void connect(ConnectionControlImpl& client)
    {
        QVERIFY(client.initialize());
        client.startConnectionThread();
        QTRY_VERIFY(client.isConnected());
    }

private slots:
    void initTestCase() { QVERIFY(m_sdk.resolve(m_sdkPath)); }

    void init() { m_sdk.reset(); }

    void requestsGoToTheirOperation()
    {
        RecordingListener listener;
        ConnectionControlImpl client(&listener, {m_sdkPath});
        connect(client);

        CreateNuendoMessage create;
        TrackData track;
        track.name = "Doors";
        track.events.push_back({{"/sfx/door_open.wav", "", {}}, 0.0, 1.0, 0.0});
        create.assetSegmentData.tracks = {track, TrackData{}};
        create.assetSegmentData.markers = {{1, 0.0, 1.0}};
        QVERIFY(client.sendMessage(create));
        AssetUpdateMessage update;
        update.displayValue = "Approved";
        QVERIFY(client.sendMessage(update));
        QVERIFY(client.sendMessage(OpenNuendoMessage("/sfx/door_open.wav")));
        QVERIFY(!client.sendMessage(SegmentUpdateMessage()));
        QVERIFY(!client.sendMessage(AssetTransferredMessage()));

        const QStringList c = calls();
        QVERIFY(c.contains("gacOpenNewNuendoProject tracks 2 markers 1 first /sfx/door_open.wav"));
        QVERIFY(c.contains("gacSetAssetUpdate Approved"));
        QVERIFY(c.contains("gacReadMetaData /sfx/door_open.wav"));
        const QStringList lines = listener.lines();
        QVERIFY(lines.contains("[API] Vex GAC createNuendoProject()"));
        QVERIFY(lines.contains("[API] Vex GAC setAssetUpdate()"));
        QVERIFY(lines.contains("[API] Vex GAC setSegmentUpdate()"));
        QCOMPARE(lines.constLast(), QString("[Info] Unsupported message"));
    }

    void requestsNeedAConnection()
    {
        RecordingListener listener;
        ConnectionControlImpl client(&listener, {m_sdkPath});
        QVERIFY(client.initialize());
        QVERIFY(!client.sendMessage(CreateNuendoMessage()));
        QVERIFY(!client.sendMessage(AssetUpdateMessage()));
        QVERIFY(!client.sendMessage(OpenNuendoMessage("/a.wav")));
        QCOMPARE(calls()
                     .filter(QRegularExpression("gacOpenNewNuendoProject|gacSetAssetUpdate|"
                                                "gacReadMetaData"))
                     .size(),
                 0);
    }

    void pathsAreTranslatedUnchanged()
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

    // The SDK's buffers hold 1023 bytes and the terminating zero; a longer
    // path would arrive cut, naming another file, so the request is refused.
    void overlongPathsAreRefused()
    {
        RecordingListener listener;
        ConnectionControlImpl client(&listener, {m_sdkPath});
        connect(client);
        const std::string longPath = "/" + std::string(1023, 'p') + ".wav";
        const std::string fits = "/" + std::string(1018, 'p') + ".wav";
        CreateNuendoMessage create;
        TrackData track;
        track.events.push_back({{fits, fits, {fits, longPath, 0, 0}}, 0, 0, 0});
        create.assetSegmentData.tracks = {track};
        QVERIFY(!client.createNuendoProject(create));
        create.assetSegmentData.tracks[0].events[0].asset.metaData.repositoryUrl = fits;
        QVERIFY(client.createNuendoProject(create));
        std::string error;
        QVERIFY(!client.openNuendoProject(OpenNuendoMessage(longPath), &error));
        QVERIFY(QString::fromStdString(error).startsWith("The path is longer than the 1023 bytes"));
        QCOMPARE(calls().filter("gacOpenNewNuendoProject").size(), 1);
        QCOMPARE(calls().filter("gacReadMetaData").size(), 0);
        QVERIFY(listener.lines().contains(
            QString::fromStdString("[Warning] The path is longer than the 1023 bytes the SDK "
                                   "takes; nothing was sent: " +
                                   longPath)));
    }

    void logLinesReachTheQtMessageLog()
    {
        const QtMessageHandler previous = qInstallMessageHandler(captureGacCategory);
        {
            GacManager manager(nullptr, {m_sdkPath});
        }
        qInstallMessageHandler(previous);
        QMutexLocker lock(&g_logMutex);
        QVERIFY(g_qtLog.contains("[API] Vex GAC initialize()"));
        QVERIFY(g_qtLog.contains("[API] Vex GAC destructor()"));
    }
};

QTEST_GUILESS_MAIN(TestGacClient)
#include "tst_gacclient.moc"
