#include "ConnectionControlImpl.h"

#include "ConnectingThread.h"
#include "GacSdkRecords.h"

#include <chrono>
#include <future>
#include <thread>

namespace Vexmw {

namespace {

// How long quitting waits for the SDK's own shutdown.
constexpr std::chrono::milliseconds kShutdownWait(50);

} // namespace

ConnectionControlImpl::ConnectionControlImpl(VexGacListener* listener, QStringList sdkCandidates,
                                             int retryIntervalMs)
    : m_link(std::make_shared<GacLink>(std::move(sdkCandidates)))
    , m_thread(std::make_unique<ConnectingThread>(m_link, retryIntervalMs))
{
    addListener(listener);
    log("[API] Vex GAC constructor()");
}

ConnectionControlImpl::~ConnectionControlImpl()
{
    log("[API] Vex GAC destructor()");
    m_thread.reset();
    m_link->closeCallbacks();
    deinitialize();
    m_link->listeners().detach();
}

void ConnectionControlImpl::addListener(VexGacListener* listener)
{
    m_link->listeners().add(listener);
}

void ConnectionControlImpl::removeListener(VexGacListener* listener)
{
    m_link->listeners().remove(listener);
}

bool ConnectionControlImpl::initialize()
{
    log("[API] Vex GAC initialize()");
    if (m_link->isInitialized()) {
        log("[Info] GAC status: initialized");
        return true;
    }
    return m_link->initialize();
}

bool ConnectionControlImpl::deinitialize()
{
    log("[API] Vex GAC deinitialize()");
    if (!m_link->isInitialized())
        return true;
    auto done = std::make_shared<std::promise<void>>();
    std::future<void> finished = done->get_future();
    std::thread([link = m_link, done]() mutable {
        link->shutDownSdk();
        // Let go first, so that a prompt shutdown leaves the client's end to its owner.
        link.reset();
        done->set_value();
    }).detach();
    if (finished.wait_for(kShutdownWait) == std::future_status::ready)
        return true;
    log("[Warning] The SDK has not shut down yet; it is left to finish by itself.");
    return false;
}

bool ConnectionControlImpl::registerCallbacks()
{
    return m_link->registerCallbacks();
}

void ConnectionControlImpl::setGacEngineName(const std::string& name)
{
    log("[API] Vex GAC setGacEngineName()");
    m_link->setEngineName(name);
}

void ConnectionControlImpl::setServerIpAddress(const std::string& address)
{
    log("[API] Vex GAC setServerIpAddress()");
    m_link->setAddress(address);
}

bool ConnectionControlImpl::setServerPort(int port)
{
    log("[API] Vex GAC setServerPort()");
    if (m_link->setPort(port))
        return true;
    log("[Warning] Port " + std::to_string(port) + " is outside 1 to 65535; port " +
        std::to_string(m_link->port()) + " is kept.");
    return false;
}

bool ConnectionControlImpl::setClientDropPath(const std::string& path)
{
    log("[API] Vex GAC setClientDropPath()");
    m_link->setDropPath(path);
    return m_link->setClientDropPath(path);
}

void ConnectionControlImpl::setAssetSearchPath(const std::string& path)
{
    log("[API] Vex GAC setAssetSearchPath()");
    m_link->setAssetSearchPath(path);
}

bool ConnectionControlImpl::setAssetUpdate(const AssetUpdateMessage& message)
{
    log("[API] Vex GAC setAssetUpdate()");
    return m_link->setAssetUpdate(message);
}

bool ConnectionControlImpl::setSegmentUpdate(const SegmentUpdateMessage& /*message*/)
{
    // The SDK offers no segment update; the request is only recorded.
    log("[API] Vex GAC setSegmentUpdate()");
    return false;
}

void ConnectionControlImpl::startConnectionThread()
{
    log("[API] Vex GAC startConnectionThread()");
    m_thread->begin();
}

bool ConnectionControlImpl::stopConnectionThread()
{
    log("[API] Vex GAC stopConnectionThread()");
    return m_thread->stop();
}

ConnectionControlImpl::AttemptOutcome ConnectionControlImpl::tryConnect()
{
    return m_link->attempt(GacLink::kDirectAttempt);
}

std::string ConnectionControlImpl::getServerVersion()
{
    return m_link->serverVersion();
}

bool ConnectionControlImpl::openNuendoProject(const OpenNuendoMessage& message, std::string* error)
{
    log("[API] Vex GAC openNuendoProject()");
    return m_link->openNuendoProject(message, error);
}

void ConnectionControlImpl::openNuendoProjectAsync(
    const OpenNuendoMessage& message, std::function<void(bool ok, const std::string& error)> done)
{
    log("[API] Vex GAC openNuendoProject()");
    std::thread([link = m_link, message, done = std::move(done)] {
        std::string error;
        const bool ok = link->openNuendoProject(message, &error);
        done(ok, error);
    }).detach();
}

bool ConnectionControlImpl::createNuendoProject(const CreateNuendoMessage& message)
{
    log("[API] Vex GAC createNuendoProject()");
    return m_link->createNuendoProject(message);
}

bool ConnectionControlImpl::sendMessage(const VexGacMessageBase& message)
{
    if (const auto* m = dynamic_cast<const OpenNuendoMessage*>(&message))
        return openNuendoProject(*m);
    if (const auto* m = dynamic_cast<const CreateNuendoMessage*>(&message))
        return createNuendoProject(*m);
    if (const auto* m = dynamic_cast<const AssetUpdateMessage*>(&message))
        return setAssetUpdate(*m);
    if (const auto* m = dynamic_cast<const SegmentUpdateMessage*>(&message))
        return setSegmentUpdate(*m);
    log("[Info] Unsupported message");
    return false;
}

} // namespace Vexmw
