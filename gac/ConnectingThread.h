#pragma once

#include "GacLink.h"

#include <chrono>
#include <memory>
#include <optional>
#include <thread>

namespace Vexmw {

// Owns the connection state: only this thread changes it, taking events in
// the order they come (start, stop, the server's disconnects, the outcome of
// attempts), so a disconnect at any moment leads back to connecting and never
// to a connected state without a connection. It never calls into the SDK
// itself: each attempt runs on a thread of its own, which a stop abandons if
// the SDK holds it. An abandoned attempt's outcome is ignored, and a
// connection it made late is dropped by resetting the SDK, again on a thread
// of its own.
class ConnectingThread final
{
public:
    explicit ConnectingThread(std::shared_ptr<GacLink> link, int retryIntervalMs = 1000);
    // Returns as soon as the thread has taken the quit event; attempts under
    // way are abandoned.
    ~ConnectingThread();
    ConnectingThread(const ConnectingThread&) = delete;
    ConnectingThread& operator=(const ConnectingThread&) = delete;

    // Both return at once, whatever the SDK is doing.
    void begin();
    // False while connected: only the server can close the connection.
    bool stop();

private:
    void run();
    void onStart();
    void onStop(const GacEvent& event);
    void onServerDisconnected();
    void onWorkerDone(const GacEvent& event);
    void launchAttempt();
    void setState(LinkState state);
    void abandonAttempts();

    const std::shared_ptr<GacLink> m_link;
    const std::chrono::milliseconds m_retryInterval;

    // Touched by the thread only.
    LinkState m_state = LinkState::NotConnected;
    unsigned m_generation = 1;
    bool m_workerBusy = false;
    bool m_disconnectDuringAttempt = false;
    std::optional<std::chrono::steady_clock::time_point> m_retryAt;

    std::thread m_thread;
};

} // namespace Vexmw
