#pragma once

#include "GacListenerHub.h"
#include "GacSdkLibrary.h"
#include "VexGacMessages.h"

#include <QStringList>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace Vexmw {

enum class AttemptOutcome
{
    Connected,
    Failed,
    Impossible
};

enum class LinkState
{
    NotConnected = 0,
    Waiting = 1,
    Connected = 2
};

// What the connection thread is told; posted from any thread.
struct GacEvent
{
    enum Kind
    {
        Start,
        Stop,
        ServerDisconnected,
        AttemptDone,
        ResetDone,
        Quit
    };
    explicit GacEvent(Kind k)
        : kind(k)
    {}

    Kind kind;
    unsigned generation = 0;
    AttemptOutcome outcome = AttemptOutcome::Failed;
    // Stop: whether it stopped (false while connected).
    std::shared_ptr<std::promise<bool>> reply;
};

// Everything of a client that may outlive it: the SDK's entry points, the
// listeners, the server settings, the events for the connection thread and
// the state that thread publishes. Held shared by the client and by the
// threads that make calls into the SDK, and reached by the SDK's callbacks
// through a token rather than a pointer, so that whatever the SDK does late
// finds either a live object or nothing. No lock here is held across a call
// into the SDK.
class GacLink final : public std::enable_shared_from_this<GacLink>
{
public:
    explicit GacLink(QStringList sdkCandidates);
    ~GacLink();
    GacLink(const GacLink&) = delete;
    GacLink& operator=(const GacLink&) = delete;

    GacListenerHub& listeners() { return m_listeners; }
    void log(const std::string& line) { m_listeners.log(line); }

    void setEngineName(const std::string& name);
    std::string engineName() const;
    void setAddress(const std::string& address);
    std::string address() const;
    // Refused (false, nothing stored) outside 1 to 65535.
    bool setPort(int port);
    int port() const;
    void setDropPath(const std::string& path);
    std::string dropPath() const;
    void setAssetSearchPath(const std::string& path);
    std::string assetSearchPath() const;

    // Loads the SDK, initialises it and registers the callbacks.
    bool initialize();
    bool registerCallbacks();
    // The SDK's own shutdown, on the calling thread; it may take as long as
    // the SDK likes.
    void shutDownSdk();
    // The client is going: late callbacks are dropped from now on, and the
    // SDK is not started again.
    void closeCallbacks();
    bool isInitialized() const { return m_initialized; }

    // One connection attempt on the calling thread. Its log lines are written
    // only while `generation` is current: an abandoned attempt is silent.
    AttemptOutcome attempt(unsigned generation);
    // Deinitialises and initialises the SDK again: the only way to drop a
    // connection it made after the user stopped connecting.
    void reset();

    // Each needs a connection; a text that does not fit the SDK's buffers is
    // refused. On failure *error says why.
    bool openNuendoProject(const OpenNuendoMessage& message, std::string* error);
    bool createNuendoProject(const CreateNuendoMessage& message);
    bool setAssetUpdate(const AssetUpdateMessage& message);
    bool setClientDropPath(const std::string& path);
    std::string serverVersion();

    void post(GacEvent event);
    // The next event, or none once `until` has passed.
    std::optional<GacEvent> take(std::optional<std::chrono::steady_clock::time_point> until);
    // The connection thread has ended: later events are dropped.
    void closeEvents();

    // Written only by the connection thread.
    LinkState state() const { return m_state; }
    void publishState(LinkState state) { m_state = state; }
    unsigned currentGeneration() const { return m_generation; }
    void setCurrentGeneration(unsigned generation) { m_generation = generation; }

    // The attempt made by tryConnect on the caller's thread, outside the connection thread.
    static constexpr unsigned kDirectAttempt = 0;

private:
    static void onSdkCallback(int kind, const void* data, void* userData);
    static int onPathTranslate(const char* path, char* translated, int size, void* userData);
    void handleCallback(int kind, const void* data);
    void handleNewAssetExported();
    void logAssets(const std::vector<AssetData>& assets);
    std::string sdkError(int code);
    void logSdkError(int code);

    const GacSdkLibrary& m_sdk;
    GacSdk::Api m_api;
    GacListenerHub m_listeners;

    mutable std::mutex m_settingsMutex;
    std::string m_engineName = "Vex GAC Client";
    std::string m_address = "localhost";
    int m_port = 4444;
    std::string m_dropPath;
    std::string m_assetSearchPath;

    std::atomic<bool> m_initialized{false};
    // The client is gone or going.
    std::atomic<bool> m_closed{false};
    std::atomic<LinkState> m_state{LinkState::NotConnected};
    std::atomic<unsigned> m_generation{1};
    // The SDK's userData for our callbacks; 0 before registration.
    std::atomic<quintptr> m_token{0};

    std::mutex m_eventMutex;
    std::condition_variable m_eventWake;
    std::deque<GacEvent> m_events;
    bool m_eventsClosed = false;
};

} // namespace Vexmw
