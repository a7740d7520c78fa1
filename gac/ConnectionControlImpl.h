#pragma once

#include "GacSdkLibrary.h"
#include "VexGacMessages.h"

#include <QMutex>
#include <QStringList>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace Vexmw {

class ConnectingThread;
class VexGacListener;

// The Game Audio Connect client: loads the SDK, connects to a Nuendo server on
// its own thread, and asks it to open files. Every operation first writes its
// "[API] " log line to the listeners.
class ConnectionControlImpl final
{
public:
    enum class AttemptOutcome
    {
        Connected,
        Failed,
        Impossible
    };

    // listener, if given, hears the constructor's own log line. sdkCandidates:
    // folders or files where the SDK is looked for; empty means beside the
    // executable, then the system's library path.
    explicit ConnectionControlImpl(VexGacListener* listener = nullptr,
                                   QStringList sdkCandidates = {});
    ~ConnectionControlImpl();
    ConnectionControlImpl(const ConnectionControlImpl&) = delete;
    ConnectionControlImpl& operator=(const ConnectionControlImpl&) = delete;

    void addListener(VexGacListener* listener);
    void removeListener(VexGacListener* listener);

    bool initialize();
    void deinitialize();
    bool registerCallbacks();

    void setGacEngineName(const std::string& name);
    void setServerIpAddress(const std::string& address);
    void setServerPort(int port);
    bool setClientDropPath(const std::string& path);
    void setAssetSearchPath(const std::string& path);
    bool setAssetUpdate(const AssetUpdateMessage& message);
    bool setSegmentUpdate(const SegmentUpdateMessage& message);

    void startConnectionThread();
    void stopConnectionThread();
    // One attempt; normally called by the connection thread.
    AttemptOutcome tryConnect();

    bool openNuendoProject(const OpenNuendoMessage& message);
    bool createNuendoProject(const CreateNuendoMessage& message);
    std::string getServerVersion();
    // Hands a request to the operation that serves its type.
    bool sendMessage(const VexGacMessageBase& message);

    bool isInitialized() const { return m_initialized; }
    bool isConnected() const { return m_connected; }
    bool isConnectionThreadRunning() const;

    std::string engineName() const;
    std::string serverIpAddress() const;
    int serverPort() const;
    std::string clientDropPath() const;
    std::string assetSearchPath() const;

private:
    static void onSdkCallback(int kind, const void* data, void* userData);
    static int onPathTranslate(const char* path, char* translated, int size, void* userData);
    void handleCallback(int kind, const void* data);
    void handleServerDisconnected();
    void stopThreadQuietly();

    void log(const std::string& line);
    void logSdkError(int code);
    void notify(const std::shared_ptr<const VexGacMessageBase>& message);
    void logAssets(const std::vector<AssetData>& assets);

    GacSdkLibrary m_sdk;
    mutable QMutex m_settingsMutex;
    std::string m_engineName = "Vex GAC Client";
    std::string m_address = "localhost";
    int m_port = 4444;
    std::string m_dropPath;
    std::string m_assetSearchPath;

    std::atomic<bool> m_initialized{false};
    std::atomic<bool> m_connected{false};
    std::atomic<bool> m_shuttingDown{false};

    QMutex m_listenerMutex;
    std::vector<VexGacListener*> m_listeners;

    QMutex m_threadMutex;
    std::unique_ptr<ConnectingThread> m_thread;
};

} // namespace Vexmw
