#pragma once

#include "GacLink.h"
#include "VexGacMessages.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <string>

namespace Vexmw {

class ConnectingThread;
class VexGacListener;

// The Game Audio Connect client: loads the SDK, connects to a Nuendo server on
// its own threads, and asks it to open files. Every operation first writes its
// "[API] " log line to the listeners. No operation called from the owner's
// thread waits for the SDK, except the synchronous requests, which are meant
// for other threads (the *Async form runs one there).
class ConnectionControlImpl final
{
public:
    using AttemptOutcome = Vexmw::AttemptOutcome;

    // listener, if given, hears the constructor's own log line. sdkCandidates:
    // folders or files where the SDK is looked for; empty means beside the
    // executable, then the system's library path.
    explicit ConnectionControlImpl(VexGacListener* listener = nullptr,
                                   QStringList sdkCandidates = {}, int retryIntervalMs = 1000);
    // Returns promptly whatever the SDK does: attempts and requests under way
    // are abandoned, the SDK's shutdown is given a few tens of milliseconds,
    // and nothing the SDK does afterwards reaches the listeners.
    ~ConnectionControlImpl();
    ConnectionControlImpl(const ConnectionControlImpl&) = delete;
    ConnectionControlImpl& operator=(const ConnectionControlImpl&) = delete;

    void addListener(VexGacListener* listener);
    void removeListener(VexGacListener* listener);

    bool initialize();
    // The SDK's shutdown on a thread of its own; false when it did not end
    // within the wait, and is left to finish by itself.
    bool deinitialize();
    bool registerCallbacks();

    void setGacEngineName(const std::string& name);
    void setServerIpAddress(const std::string& address);
    // A port outside 1 to 65535 is refused with a warning; false then.
    bool setServerPort(int port);
    bool setClientDropPath(const std::string& path);
    void setAssetSearchPath(const std::string& path);
    bool setAssetUpdate(const AssetUpdateMessage& message);
    bool setSegmentUpdate(const SegmentUpdateMessage& message);

    void startConnectionThread();
    // False while connected: only the server side can close a connection.
    bool stopConnectionThread();
    // One attempt on the calling thread, as the connection thread makes them;
    // the outcome is returned and does not change the connection state.
    AttemptOutcome tryConnect();

    bool openNuendoProject(const OpenNuendoMessage& message, std::string* error = nullptr);
    // Runs openNuendoProject on a thread of its own and calls done there.
    void openNuendoProjectAsync(const OpenNuendoMessage& message,
                                std::function<void(bool ok, const std::string& error)> done);
    bool createNuendoProject(const CreateNuendoMessage& message);
    std::string getServerVersion();
    // Hands a request to the operation that serves its type.
    bool sendMessage(const VexGacMessageBase& message);

    bool isInitialized() const { return m_link->isInitialized(); }
    bool isConnected() const { return m_link->state() == LinkState::Connected; }
    bool isConnectionThreadRunning() const { return m_link->state() == LinkState::Waiting; }

    std::string engineName() const { return m_link->engineName(); }
    std::string serverIpAddress() const { return m_link->address(); }
    int serverPort() const { return m_link->port(); }
    std::string clientDropPath() const { return m_link->dropPath(); }
    std::string assetSearchPath() const { return m_link->assetSearchPath(); }

private:
    void log(const std::string& line) { m_link->log(line); }

    const std::shared_ptr<GacLink> m_link;
    std::unique_ptr<ConnectingThread> m_thread;
};

} // namespace Vexmw
