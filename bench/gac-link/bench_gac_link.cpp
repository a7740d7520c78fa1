// How long "Stop connection", quitting and "Open with Nuendo" keep the calling
// (GUI) thread, while the SDK does its worst: a silent server that holds the
// connect call, a server that drops at that very moment, an SDK whose shutdown
// never ends, a server that does not answer a request. Each scenario runs
// ROUNDS times (default 20); the figure to hold is 100 ms. No other program
// speaks Game Audio Connect here, so there is no peer to print beside ours.
#include "FakeSdkControl.h"
#include "GacManager.h"
#include "GacSdk.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

FakeSdkControl g_sdk;
// The figures; standard output itself carries the client's log lines, which
// are sent away.
std::FILE* g_out = stdout;
const QString kSdk = QStringLiteral(BENCH_GAC_SDK_PATH);

bool WaitFor(const std::function<bool()>& condition, int ms = 10000)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > ms)
            return false;
        QCoreApplication::processEvents();
        QThread::msleep(1);
    }
    return true;
}

double Ms(const QElapsedTimer& clock)
{
    return double(clock.nsecsElapsed()) / 1e6;
}

// One round: prepares, times `act` on this thread, then lets the SDK go.
using Round = std::function<double()>;

void Report(const char* name, const Round& round, int rounds)
{
    std::vector<double> ms;
    for (int i = 0; i < rounds; ++i) {
        g_sdk.reset();
        const double t = round();
        if (t < 0) {
            std::fprintf(g_out, "%-58s  failed to set up\n", name);
            return;
        }
        ms.push_back(t);
    }
    std::sort(ms.begin(), ms.end());
    std::fprintf(g_out, "%-58s  median %7.3f ms   max %7.3f ms\n", name, ms[ms.size() / 2],
                 ms.back());
}

double StopWhileHeld(const char* function, bool serverDrops)
{
    g_sdk.hold(function, 1);
    GacManager manager(nullptr, {kSdk});
    manager.StartConnecting();
    if (!WaitFor([&] { return g_sdk.held(function) == 1; }))
        return -1;
    std::unique_ptr<std::thread> dropper;
    if (serverDrops)
        dropper = std::make_unique<std::thread>([] { g_sdk.fire(GacSdk::ServerDisconnected); });
    QElapsedTimer clock;
    clock.start();
    manager.StopConnecting();
    const double t = Ms(clock);
    if (dropper)
        dropper->join();
    g_sdk.hold(function, 0);
    WaitFor([&] { return g_sdk.held(function) == 0; });
    return t;
}

double QuitWhileHeld(const char* function, bool connectFirst)
{
    QElapsedTimer clock;
    {
        auto manager = std::make_unique<GacManager>(nullptr, QStringList{kSdk});
        if (connectFirst) {
            manager->StartConnecting();
            if (!WaitFor([&] { return manager->GetState() == GacManager::Connected; }))
                return -1;
            g_sdk.hold(function, 1);
        } else {
            g_sdk.hold(function, 1);
            manager->StartConnecting();
            if (!WaitFor([&] { return g_sdk.held(function) == 1; }))
                return -1;
        }
        clock.start();
        manager.reset();
    }
    const double t = Ms(clock);
    g_sdk.hold(function, 0);
    WaitFor([&] { return g_sdk.held(function) == 0; });
    return t;
}

double OpenWithSilentServer()
{
    GacManager manager(nullptr, {kSdk});
    manager.StartConnecting();
    if (!WaitFor([&] { return manager.GetState() == GacManager::Connected; }))
        return -1;
    g_sdk.hold("gacReadMetaData", 1);
    QElapsedTimer clock;
    clock.start();
    manager.OpenByNuendo(QStringLiteral("/sfx/door.wav"));
    const double t = Ms(clock);
    WaitFor([&] { return g_sdk.held("gacReadMetaData") == 1; });
    g_sdk.hold("gacReadMetaData", 0);
    WaitFor([&] { return g_sdk.held("gacReadMetaData") == 0; });
    return t;
}

double StopBetweenAttempts()
{
    g_sdk.setResult("gacConnectToServer", 3);
    GacManager manager(nullptr, {kSdk});
    manager.StartConnecting();
    if (!WaitFor([&] { return g_sdk.callList().contains("gacConnectToServer localhost"); }))
        return -1;
    QElapsedTimer clock;
    clock.start();
    manager.StopConnecting();
    return Ms(clock);
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, QByteArray(argv[1]).toInt()) : 20;
    if (!g_sdk.resolve(kSdk)) {
        std::fprintf(stderr, "stand-in SDK not found at %s\n", qPrintable(kSdk));
        return 1;
    }
    g_out = fdopen(dup(STDOUT_FILENO), "w");
    std::setvbuf(g_out, nullptr, _IOLBF, 0);
    if (!std::freopen("/dev/null", "w", stdout))
        return 1;
    qputenv("QT_LOGGING_RULES", "tesk.gac=false");

    std::fprintf(g_out, "Tesk's Nuendo link, %d rounds each (the calling thread's time):\n",
                 rounds);
    Report(
        "stop, server silent in the connect call",
        [] { return StopWhileHeld("gacConnectToServer", false); }, rounds);
    Report(
        "stop, server silent in the connect call and drops then",
        [] { return StopWhileHeld("gacConnectToServer", true); }, rounds);
    Report(
        "stop, server silent when asked its version",
        [] { return StopWhileHeld("gacGetServerVersion", true); }, rounds);
    Report("stop between two failed attempts", StopBetweenAttempts, rounds);
    Report(
        "quit, server silent in the connect call",
        [] { return QuitWhileHeld("gacConnectToServer", false); }, rounds);
    Report(
        "quit while connected, the SDK's shutdown never ends",
        [] { return QuitWhileHeld("gacDeinitialize", true); }, rounds);
    Report(
        "quit while connected", [] { return QuitWhileHeld("gacSetAssetUpdate", true); }, rounds);
    Report("Open with Nuendo, server silent", OpenWithSilentServer, rounds);
    std::fprintf(g_out, "No other program speaks Game Audio Connect here: no peer figures.\n");
    return 0;
}
