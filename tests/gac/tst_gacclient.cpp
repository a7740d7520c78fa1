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
        QCOMPARE(client.tryConnect(), ConnectionControlImpl::AttemptOutcome::Connected);
        QVERIFY(client.isConnected());
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

    void overlongTextsAreCut()
    {
        RecordingListener listener;
        ConnectionControlImpl client(&listener, {m_sdkPath});
        connect(client);
        const std::string longPath = "/" + std::string(5000, 'p') + ".wav";
        CreateNuendoMessage create;
        TrackData track;
        track.events.push_back({{longPath, longPath, {longPath, longPath, 0, 0}}, 0, 0, 0});
        create.assetSegmentData.tracks = {track};
        QVERIFY(client.createNuendoProject(create));
        const QStringList c = calls().filter("gacOpenNewNuendoProject");
        QCOMPARE(c.size(), 1);
        // The SDK's buffers hold 1023 characters and the terminating zero.
        QCOMPARE(c.at(0), "gacOpenNewNuendoProject tracks 1 markers 0 first " +
                              QString::fromStdString(longPath.substr(0, 1023)));
        QVERIFY(client.openNuendoProject(OpenNuendoMessage(longPath)));
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
