#include "GacLink.h"

#include "GacSdkRecords.h"

#include <QDir>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <unordered_map>

namespace Vexmw {

namespace {

constexpr bool isSuccess(int code)
{
    return code == GacSdk::kResultSuccess;
}

constexpr bool isOpenSuccess(int code)
{
    return code == GacSdk::kResultSuccess || code == GacSdk::kResultOpenAlsoAccepted;
}

std::string defaultDropPath()
{
    return QDir::toNativeSeparators(QDir::temp().filePath(QStringLiteral("Tesk GAC Drop")))
        .toStdString();
}

// Token -> link for the SDK's callbacks. Never destroyed: the SDK's threads
// may call back at any time, even while the program exits.
struct CallbackRegistry
{
    std::mutex mutex;
    std::unordered_map<quintptr, std::weak_ptr<GacLink>> links;
    quintptr next = 1;
};

CallbackRegistry& registry()
{
    static auto* r = new CallbackRegistry;
    return *r;
}

std::shared_ptr<GacLink> linkFor(void* userData)
{
    CallbackRegistry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    const auto it = r.links.find(reinterpret_cast<quintptr>(userData));
    return it == r.links.end() ? nullptr : it->second.lock();
}

std::string tooLong(const std::string& path)
{
    return "The path is longer than the " + std::to_string(GacSdk::kTextSize - 1) +
           " bytes the SDK takes; nothing was sent: " + path;
}

} // namespace

GacLink::GacLink(QStringList sdkCandidates)
    : m_sdk(GacSdkLibrary::shared(sdkCandidates))
    , m_api(m_sdk.api())
    , m_dropPath(defaultDropPath())
{}

GacLink::~GacLink()
{
    closeCallbacks();
}

void GacLink::setEngineName(const std::string& name)
{
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    m_engineName = name;
}

std::string GacLink::engineName() const
{
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    return m_engineName;
}

void GacLink::setAddress(const std::string& address)
{
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    m_address = address;
}

std::string GacLink::address() const
{
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    return m_address;
}

bool GacLink::setPort(int port)
{
    if (port < GacSdk::kMinPort || port > GacSdk::kMaxPort)
        return false;
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    m_port = port;
    return true;
}

int GacLink::port() const
{
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    return m_port;
}

void GacLink::setDropPath(const std::string& path)
{
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    m_dropPath = path;
}

std::string GacLink::dropPath() const
{
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    return m_dropPath;
}

void GacLink::setAssetSearchPath(const std::string& path)
{
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    m_assetSearchPath = path;
}

std::string GacLink::assetSearchPath() const
{
    std::lock_guard<std::mutex> lock(m_settingsMutex);
    return m_assetSearchPath;
}

std::string GacLink::sdkError(int code)
{
    char buffer[GacSdk::kTextSize] = {};
    m_api.gacGetErrorMessage(code, buffer);
    std::string text = fromBuffer(buffer);
    return text.empty() ? "GAC error " + std::to_string(code) : text;
}

void GacLink::logSdkError(int code)
{
    log("[Warning] " + sdkError(code));
}

bool GacLink::initialize()
{
    const std::string name = engineName();
    if (!m_sdk.isLoaded()) {
        log("[Warning] " + m_sdk.failure());
    } else {
        const int code = m_api.gacInternalInitialize(name.c_str(), GacSdk::kInitializeArgument1,
                                                     GacSdk::kInitializeArgument2);
        if (isSuccess(code)) {
            m_api.gacEnableCallbackExecutionInBackground();
            m_initialized = true;
            log("[Info] GAC status: initialized");
        } else {
            logSdkError(code);
        }
    }
    log("[Info] GAC engine name: " + name);
    if (m_initialized)
        registerCallbacks();
    return m_initialized;
}

bool GacLink::registerCallbacks()
{
    log("[API] Vex GAC registerCallbacks()");
    if (!m_initialized)
        return false;
    if (m_token == 0) {
        CallbackRegistry& r = registry();
        std::lock_guard<std::mutex> lock(r.mutex);
        m_token = r.next++;
        r.links[m_token] = weak_from_this();
    }
    void* userData = reinterpret_cast<void*>(quintptr(m_token));
    bool ok = true;
    for (int kind : {GacSdk::NewAssetExported, GacSdk::AssetTransferred, GacSdk::ServerDisconnected,
                     GacSdk::SegmentTransferred, GacSdk::TransferProgress}) {
        const int code = m_api.gacRegisterCallback(kind, &GacLink::onSdkCallback, userData);
        if (!isSuccess(code)) {
            logSdkError(code);
            ok = false;
        }
    }
    const int code = m_api.gacRegisterPathTranslateCallback(&GacLink::onPathTranslate, userData);
    if (!isSuccess(code)) {
        logSdkError(code);
        ok = false;
    }
    return ok;
}

void GacLink::shutDownSdk()
{
    if (m_initialized.exchange(false))
        m_api.gacDeinitialize();
}

void GacLink::closeCallbacks()
{
    m_closed = true;
    const quintptr token = m_token.exchange(0);
    if (token == 0)
        return;
    CallbackRegistry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    r.links.erase(token);
}

AttemptOutcome GacLink::attempt(unsigned generation)
{
    const auto current = [&] { return generation == kDirectAttempt || generation == m_generation; };
    const auto logIfCurrent = [&](const std::string& line) {
        if (current())
            log(line);
    };
    logIfCurrent("[API] Vex GAC tryConnect()");
    if (!m_initialized) {
        logIfCurrent(
            "[Warning] Vex GAC is necessary to initialize before start the connection process.");
        return AttemptOutcome::Impossible;
    }
    const std::string host = address();
    const int portNumber = port();
    logIfCurrent("[Info] Try connection:  IP Address: " + host +
                 " Port: " + std::to_string(portNumber));
    if (!fitsBuffer(host)) {
        logIfCurrent("[Warning] The server address is too long.");
        return AttemptOutcome::Impossible;
    }

    // An attempt abandoned while the SDK held it makes no further calls.
    const int portCode = m_api.gacSetServerPort(portNumber);
    if (!current())
        return AttemptOutcome::Failed;
    if (!isOpenSuccess(portCode))
        logSdkError(portCode);

    const int code = m_api.gacConnectToServer(host.c_str());
    if (!isSuccess(code)) {
        logIfCurrent("[Info] GAC connection status: failure");
        return AttemptOutcome::Failed;
    }
    if (!current())
        return AttemptOutcome::Connected;
    log("[Info] GAC connection status: success");
    serverVersion();
    if (!current())
        return AttemptOutcome::Connected;
    const std::string drop = dropPath();
    QDir().mkpath(QString::fromStdString(drop));
    setClientDropPath(drop);
    logIfCurrent("[Info] Set drop path: " + drop);
    return AttemptOutcome::Connected;
}

void GacLink::reset()
{
    log("[Info] A connection made after the stop is dropped.");
    shutDownSdk();
    // Not once the client is going: its own shutdown has the last word.
    if (!m_closed)
        initialize();
}

std::string GacLink::serverVersion()
{
    log("[API] Vex GAC getServerVersion()");
    if (!m_initialized)
        return {};
    char buffer[GacSdk::kTextSize] = {};
    const int code = m_api.gacGetServerVersion(buffer);
    if (!isSuccess(code)) {
        logSdkError(code);
        return {};
    }
    const std::string version = fromBuffer(buffer);
    log("[Info] GAC server version: " + version);
    return version;
}

bool GacLink::setClientDropPath(const std::string& path)
{
    if (!m_initialized)
        return false;
    if (!fitsBuffer(path)) {
        log("[Warning] " + tooLong(path));
        return false;
    }
    const int code = m_api.gacSetClientDropPath(path.c_str());
    if (!isSuccess(code)) {
        logSdkError(code);
        return false;
    }
    return true;
}

bool GacLink::openNuendoProject(const OpenNuendoMessage& message, std::string* error)
{
    const auto fail = [&](const std::string& why) {
        if (error)
            *error = why;
        return false;
    };
    if (message.assetFilePath.empty())
        return fail("No file was given.");
    if (!m_initialized || m_state != LinkState::Connected)
        return fail("Not connected.");
    if (!fitsBuffer(message.assetFilePath)) {
        log("[Warning] " + tooLong(message.assetFilePath));
        return fail(tooLong(message.assetFilePath));
    }
    // About 4 KB; kept off the stack of whichever thread calls.
    auto asset = std::make_unique<GacAsset>();
    std::memset(asset.get(), 0, sizeof(GacAsset));
    int code = m_api.gacReadMetaData(message.assetFilePath.c_str(), asset.get());
    if (isOpenSuccess(code))
        code = m_api.gacOpenNuendoProject(asset.get());
    if (!isOpenSuccess(code)) {
        const std::string text = sdkError(code);
        log("[Warning] " + text);
        return fail(text);
    }
    return true;
}

bool GacLink::createNuendoProject(const CreateNuendoMessage& message)
{
    if (!m_initialized || m_state != LinkState::Connected)
        return false;
    const std::string overlong = overlongText(message.assetSegmentData);
    if (!overlong.empty()) {
        log("[Warning] " + tooLong(overlong));
        return false;
    }
    const SdkSegment segment(message.assetSegmentData);
    const int code = m_api.gacOpenNewNuendoProject(&segment.segment);
    if (!isOpenSuccess(code)) {
        logSdkError(code);
        return false;
    }
    return true;
}

bool GacLink::setAssetUpdate(const AssetUpdateMessage& message)
{
    if (!m_initialized || m_state != LinkState::Connected)
        return false;
    const int code = m_api.gacSetAssetUpdate(message.displayValue.c_str());
    if (!isSuccess(code)) {
        logSdkError(code);
        return false;
    }
    return true;
}

void GacLink::post(GacEvent event)
{
    {
        std::lock_guard<std::mutex> lock(m_eventMutex);
        if (m_eventsClosed)
            return;
        m_events.push_back(std::move(event));
    }
    m_eventWake.notify_all();
}

std::optional<GacEvent> GacLink::take(std::optional<std::chrono::steady_clock::time_point> until)
{
    std::unique_lock<std::mutex> lock(m_eventMutex);
    const auto ready = [this] { return !m_events.empty(); };
    if (until)
        m_eventWake.wait_until(lock, *until, ready);
    else
        m_eventWake.wait(lock, ready);
    if (m_events.empty())
        return std::nullopt;
    GacEvent event = std::move(m_events.front());
    m_events.pop_front();
    return event;
}

void GacLink::closeEvents()
{
    std::lock_guard<std::mutex> lock(m_eventMutex);
    m_eventsClosed = true;
    m_events.clear();
}

void GacLink::onSdkCallback(int kind, const void* data, void* userData)
{
    // A C callback: nothing may be thrown back into the SDK.
    try {
        if (const std::shared_ptr<GacLink> link = linkFor(userData))
            link->handleCallback(kind, data);
    } catch (...) {
    }
}

int GacLink::onPathTranslate(const char* path, char* translated, int size, void* userData)
{
    try {
        if (const std::shared_ptr<GacLink> link = linkFor(userData))
            link->log("[Callback] PathTranslate");
    } catch (...) {
    }
    // Paths are shared as they are; the server and we see the same files.
    if (!path || !translated || size <= 0)
        return GacSdk::kResultRefused;
    const size_t length = strnlen(path, static_cast<size_t>(size));
    if (length >= static_cast<size_t>(size))
        return GacSdk::kResultRefused;
    std::memcpy(translated, path, length + 1);
    return GacSdk::kResultSuccess;
}

void GacLink::logAssets(const std::vector<AssetData>& assets)
{
    for (const AssetData& a : assets)
        log("[Info] Asset: " + a.filePath);
}

void GacLink::handleNewAssetExported()
{
    log("[Callback] NewAssetExported");
    auto message = std::make_shared<AssetExportedMessage>();
    int reported = 0;
    int code = m_api.gacGetExportedAssets(nullptr, 0, &reported);
    const int wanted = checkedCount(reported, GacSdk::kMaxAssets);
    if (isSuccess(code) && reported > GacSdk::kMaxAssets)
        log("[Warning] The server reports " + std::to_string(reported) +
            " exported assets; the first " + std::to_string(GacSdk::kMaxAssets) + " are read.");
    if (isSuccess(code) && wanted > 0) {
        std::vector<GacAsset> assets(static_cast<size_t>(wanted));
        int written = 0;
        code = m_api.gacGetExportedAssets(assets.data(), wanted, &written);
        // The SDK's own count of what it wrote is believed only within what we gave it.
        const int n = isSuccess(code) ? checkedCount(written, wanted) : 0;
        for (int i = 0; i < n; ++i)
            message->assetFiles.push_back(assetFromSdk(assets[static_cast<size_t>(i)]));
    }
    if (!isSuccess(code))
        logSdkError(code);
    logAssets(message->assetFiles);
    m_listeners.message(message);
}

void GacLink::handleCallback(int kind, const void* data)
{
    switch (kind) {
    case GacSdk::NewAssetExported:
        handleNewAssetExported();
        break;
    case GacSdk::AssetTransferred: {
        log("[Callback] AssetTransferred");
        auto message = std::make_shared<AssetTransferredMessage>();
        if (const auto* list = static_cast<const GacAssetList*>(data)) {
            const int n = list->assets ? checkedCount(list->count, GacSdk::kMaxAssets) : 0;
            for (int i = 0; i < n; ++i)
                message->assetFiles.push_back(assetFromSdk(list->assets[i]));
        }
        logAssets(message->assetFiles);
        m_listeners.message(message);
        break;
    }
    case GacSdk::SegmentTransferred: {
        log("[Callback] SegmentTransferred");
        auto message = std::make_shared<SegmentTransferredMessage>();
        if (const auto* segment = static_cast<const GacSegment*>(data))
            message->assetSegmentData = segmentFromSdk(*segment);
        const SegmentData& s = message->assetSegmentData;
        log("[Info] Segment: tracks " + std::to_string(s.tracks.size()) + ", markers " +
            std::to_string(s.markers.size()));
        for (const TrackData& t : s.tracks)
            log("[Info] Segment: track " + t.name + ", events " + std::to_string(t.events.size()));
        m_listeners.message(message);
        break;
    }
    case GacSdk::TransferProgress: {
        log("[Callback] TransferProgress");
        double fraction = data ? *static_cast<const double*>(data) : 0.0;
        if (!std::isfinite(fraction))
            fraction = 0.0;
        m_listeners.transferProgress(std::clamp(fraction, 0.0, 1.0));
        break;
    }
    case GacSdk::ServerDisconnected:
        log("[Callback] Vex GAC onServerDisconnected()");
        m_listeners.serverDisconnected();
        post(GacEvent(GacEvent::ServerDisconnected));
        break;
    default:
        log("[Info] Unsupported message");
        break;
    }
}

} // namespace Vexmw
