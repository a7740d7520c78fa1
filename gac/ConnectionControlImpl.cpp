#include "ConnectionControlImpl.h"

#include "ConnectingThread.h"
#include "VexGacListener.h"

#include <QDir>
#include <QThread>

#include <algorithm>
#include <cstring>

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

// The SDK's texts are fixed buffers that need not be terminated at the end.
std::string fromBuffer(const char* text)
{
    return text ? std::string(text, strnlen(text, GacSdk::kTextSize)) : std::string();
}

void toBuffer(char* buffer, const std::string& text)
{
    const size_t n = std::min(text.size(), static_cast<size_t>(GacSdk::kTextSize - 1));
    std::memcpy(buffer, text.data(), n);
    buffer[n] = '\0';
}

AssetData assetFromSdk(const GacAsset& a)
{
    AssetData out;
    out.filePath = fromBuffer(a.filePath);
    out.additionalMetaDataFilePath = fromBuffer(a.additionalMetaDataFilePath);
    out.metaData.projectPath = fromBuffer(a.metaData.projectPath);
    out.metaData.repositoryUrl = fromBuffer(a.metaData.repositoryUrl);
    out.metaData.startTime = a.metaData.startTime;
    out.metaData.length = a.metaData.length;
    return out;
}

void assetToSdk(const AssetData& a, GacAsset* out)
{
    std::memset(out, 0, sizeof(GacAsset));
    toBuffer(out->filePath, a.filePath);
    toBuffer(out->additionalMetaDataFilePath, a.additionalMetaDataFilePath);
    toBuffer(out->metaData.projectPath, a.metaData.projectPath);
    toBuffer(out->metaData.repositoryUrl, a.metaData.repositoryUrl);
    out->metaData.startTime = a.metaData.startTime;
    out->metaData.length = a.metaData.length;
}

SegmentData segmentFromSdk(const GacSegment& s)
{
    SegmentData out;
    for (int i = 0; s.tracks && i < s.numberOfTracks; ++i) {
        const GacTrack& t = s.tracks[i];
        TrackData track;
        track.name = t.name ? std::string(t.name) : std::string();
        for (int e = 0; t.eventData && e < t.numberOfEvents; ++e) {
            TrackEvent event;
            event.asset = assetFromSdk(t.eventData[e]);
            event.startPosition = t.eventStartPositions ? t.eventStartPositions[e] : 0.0;
            event.length = t.eventLength ? t.eventLength[e] : 0.0;
            event.dataOffset = t.eventDataOffset ? t.eventDataOffset[e] : 0.0;
            track.events.push_back(std::move(event));
        }
        out.tracks.push_back(std::move(track));
    }
    for (int i = 0; s.markers && i < s.numberOfMarkers; ++i)
        out.markers.push_back(
            {s.markers[i].id, s.markers[i].startPosition, s.markers[i].endPosition});
    out.tempo = s.tempo;
    out.timeSignatureNumerator = s.timeSignatureNumerator;
    out.timeSignatureDenominator = s.timeSignatureDenominator;
    return out;
}

// Keeps the arrays a GacSegment points into alive for the length of one call.
struct SdkSegment
{
    explicit SdkSegment(const SegmentData& s)
    {
        tracks.resize(s.tracks.size());
        events.resize(s.tracks.size());
        for (size_t i = 0; i < s.tracks.size(); ++i) {
            const TrackData& t = s.tracks[i];
            TrackArrays& a = events[i];
            a.assets.resize(t.events.size());
            for (size_t e = 0; e < t.events.size(); ++e) {
                assetToSdk(t.events[e].asset, &a.assets[e]);
                a.starts.push_back(t.events[e].startPosition);
                a.lengths.push_back(t.events[e].length);
                a.offsets.push_back(t.events[e].dataOffset);
            }
            tracks[i] = {a.assets.data(),
                         a.starts.data(),
                         a.lengths.data(),
                         a.offsets.data(),
                         static_cast<int>(t.events.size()),
                         t.name.c_str()};
        }
        for (const MarkerData& m : s.markers)
            markers.push_back({m.id, m.startPosition, m.endPosition});
        segment = {tracks.data(),
                   static_cast<int>(tracks.size()),
                   markers.data(),
                   static_cast<int>(markers.size()),
                   s.tempo,
                   s.timeSignatureNumerator,
                   s.timeSignatureDenominator};
    }

    struct TrackArrays
    {
        std::vector<GacAsset> assets;
        std::vector<double> starts, lengths, offsets;
    };
    std::vector<TrackArrays> events;
    std::vector<GacTrack> tracks;
    std::vector<GacMarker> markers;
    GacSegment segment{};
};

std::string defaultDropPath()
{
    return QDir::toNativeSeparators(QDir::temp().filePath(QStringLiteral("Tesk GAC Drop")))
        .toStdString();
}

} // namespace

ConnectionControlImpl::ConnectionControlImpl(VexGacListener* listener, QStringList sdkCandidates)
    : m_sdk(std::move(sdkCandidates))
    , m_dropPath(defaultDropPath())
    , m_thread(std::make_unique<ConnectingThread>(*this))
{
    addListener(listener);
    log("[API] Vex GAC constructor()");
}

ConnectionControlImpl::~ConnectionControlImpl()
{
    log("[API] Vex GAC destructor()");
    m_shuttingDown = true;
    stopThreadQuietly();
    deinitialize();
}

void ConnectionControlImpl::addListener(VexGacListener* listener)
{
    QMutexLocker lock(&m_listenerMutex);
    if (listener &&
        std::find(m_listeners.begin(), m_listeners.end(), listener) == m_listeners.end())
        m_listeners.push_back(listener);
}

void ConnectionControlImpl::removeListener(VexGacListener* listener)
{
    QMutexLocker lock(&m_listenerMutex);
    m_listeners.erase(std::remove(m_listeners.begin(), m_listeners.end(), listener),
                      m_listeners.end());
}

void ConnectionControlImpl::log(const std::string& line)
{
    std::vector<VexGacListener*> listeners;
    {
        QMutexLocker lock(&m_listenerMutex);
        listeners = m_listeners;
    }
    for (VexGacListener* l : listeners)
        l->onGacLog(line);
}

void ConnectionControlImpl::notify(const std::shared_ptr<const VexGacMessageBase>& message)
{
    std::vector<VexGacListener*> listeners;
    {
        QMutexLocker lock(&m_listenerMutex);
        listeners = m_listeners;
    }
    for (VexGacListener* l : listeners)
        l->onGacMessage(message);
}

void ConnectionControlImpl::logSdkError(int code)
{
    char buffer[GacSdk::kTextSize] = {};
    m_sdk.api().gacGetErrorMessage(code, buffer);
    std::string text = fromBuffer(buffer);
    if (text.empty())
        text = "GAC error " + std::to_string(code);
    log("[Warning] " + text);
}

bool ConnectionControlImpl::initialize()
{
    log("[API] Vex GAC initialize()");
    if (m_initialized) {
        log("[Info] GAC status: initialized");
        return true;
    }
    const std::string name = engineName();
    std::string why;
    if (!m_sdk.load(&why)) {
        log("[Warning] " + why);
    } else {
        const GacSdk::Api& api = m_sdk.api();
        const int code = api.gacInternalInitialize(name.c_str(), GacSdk::kInitializeArgument1,
                                                   GacSdk::kInitializeArgument2);
        if (isSuccess(code)) {
            api.gacEnableCallbackExecutionInBackground();
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

void ConnectionControlImpl::deinitialize()
{
    log("[API] Vex GAC deinitialize()");
    if (!m_initialized)
        return;
    // Callbacks stop once the SDK has shut down.
    m_sdk.api().gacDeinitialize();
    m_initialized = false;
    m_connected = false;
}

bool ConnectionControlImpl::registerCallbacks()
{
    log("[API] Vex GAC registerCallbacks()");
    if (!m_initialized)
        return false;
    const GacSdk::Api& api = m_sdk.api();
    bool ok = true;
    for (int kind : {GacSdk::NewAssetExported, GacSdk::AssetTransferred, GacSdk::ServerDisconnected,
                     GacSdk::SegmentTransferred, GacSdk::TransferProgress}) {
        const int code = api.gacRegisterCallback(kind, &ConnectionControlImpl::onSdkCallback, this);
        if (!isSuccess(code)) {
            logSdkError(code);
            ok = false;
        }
    }
    const int code =
        api.gacRegisterPathTranslateCallback(&ConnectionControlImpl::onPathTranslate, this);
    if (!isSuccess(code)) {
        logSdkError(code);
        ok = false;
    }
    return ok;
}

void ConnectionControlImpl::setGacEngineName(const std::string& name)
{
    log("[API] Vex GAC setGacEngineName()");
    QMutexLocker lock(&m_settingsMutex);
    m_engineName = name;
}

void ConnectionControlImpl::setServerIpAddress(const std::string& address)
{
    log("[API] Vex GAC setServerIpAddress()");
    QMutexLocker lock(&m_settingsMutex);
    m_address = address;
}

void ConnectionControlImpl::setServerPort(int port)
{
    log("[API] Vex GAC setServerPort()");
    QMutexLocker lock(&m_settingsMutex);
    m_port = port;
}

bool ConnectionControlImpl::setClientDropPath(const std::string& path)
{
    log("[API] Vex GAC setClientDropPath()");
    {
        QMutexLocker lock(&m_settingsMutex);
        m_dropPath = path;
    }
    if (!m_initialized)
        return false;
    const int code = m_sdk.api().gacSetClientDropPath(path.c_str());
    if (!isSuccess(code)) {
        logSdkError(code);
        return false;
    }
    return true;
}

void ConnectionControlImpl::setAssetSearchPath(const std::string& path)
{
    log("[API] Vex GAC setAssetSearchPath()");
    QMutexLocker lock(&m_settingsMutex);
    m_assetSearchPath = path;
}

bool ConnectionControlImpl::setAssetUpdate(const AssetUpdateMessage& message)
{
    log("[API] Vex GAC setAssetUpdate()");
    if (!m_initialized || !m_connected)
        return false;
    const int code = m_sdk.api().gacSetAssetUpdate(message.displayValue.c_str());
    if (!isSuccess(code)) {
        logSdkError(code);
        return false;
    }
    return true;
}

bool ConnectionControlImpl::setSegmentUpdate(const SegmentUpdateMessage& /*message*/)
{
    // The SDK offers no segment update; the request is only recorded.
    log("[API] Vex GAC setSegmentUpdate()");
    return false;
}

std::string ConnectionControlImpl::engineName() const
{
    QMutexLocker lock(&m_settingsMutex);
    return m_engineName;
}

std::string ConnectionControlImpl::serverIpAddress() const
{
    QMutexLocker lock(&m_settingsMutex);
    return m_address;
}

int ConnectionControlImpl::serverPort() const
{
    QMutexLocker lock(&m_settingsMutex);
    return m_port;
}

std::string ConnectionControlImpl::clientDropPath() const
{
    QMutexLocker lock(&m_settingsMutex);
    return m_dropPath;
}

std::string ConnectionControlImpl::assetSearchPath() const
{
    QMutexLocker lock(&m_settingsMutex);
    return m_assetSearchPath;
}

bool ConnectionControlImpl::isConnectionThreadRunning() const
{
    return m_thread->isRunning();
}

void ConnectionControlImpl::startConnectionThread()
{
    log("[API] Vex GAC startConnectionThread()");
    // A disconnect reported on the connection thread itself, mid-attempt: that
    // thread keeps trying on its own.
    if (m_shuttingDown || QThread::currentThread() == m_thread.get())
        return;
    QMutexLocker lock(&m_threadMutex);
    if (m_thread->isRunning()) {
        if (!m_thread->stopRequested())
            return;
        m_thread->wait();
    }
    m_thread->begin();
}

void ConnectionControlImpl::stopConnectionThread()
{
    log("[API] Vex GAC stopConnectionThread()");
    stopThreadQuietly();
}

void ConnectionControlImpl::stopThreadQuietly()
{
    if (QThread::currentThread() == m_thread.get())
        return;
    QMutexLocker lock(&m_threadMutex);
    m_thread->stop();
    m_thread->wait();
}

ConnectionControlImpl::AttemptOutcome ConnectionControlImpl::tryConnect()
{
    log("[API] Vex GAC tryConnect()");
    if (!m_initialized) {
        log("[Warning] Vex GAC is necessary to initialize before start the connection process.");
        return AttemptOutcome::Impossible;
    }
    const std::string address = serverIpAddress();
    const int port = serverPort();
    log("[Info] Try connection:  IP Address: " + address + " Port: " + std::to_string(port));

    const GacSdk::Api& api = m_sdk.api();
    const int portCode = api.gacSetServerPort(port);
    if (!isOpenSuccess(portCode))
        logSdkError(portCode);

    const int code = api.gacConnectToServer(address.c_str());
    if (!isSuccess(code)) {
        log("[Info] GAC connection status: failure");
        return AttemptOutcome::Failed;
    }
    log("[Info] GAC connection status: success");
    getServerVersion();
    const std::string dropPath = clientDropPath();
    QDir().mkpath(QString::fromStdString(dropPath));
    const int dropCode = api.gacSetClientDropPath(dropPath.c_str());
    if (!isSuccess(dropCode))
        logSdkError(dropCode);
    log("[Info] Set drop path: " + dropPath);
    m_connected = true;
    return AttemptOutcome::Connected;
}

std::string ConnectionControlImpl::getServerVersion()
{
    log("[API] Vex GAC getServerVersion()");
    if (!m_initialized)
        return {};
    char buffer[GacSdk::kTextSize] = {};
    const int code = m_sdk.api().gacGetServerVersion(buffer);
    if (!isSuccess(code)) {
        logSdkError(code);
        return {};
    }
    const std::string version = fromBuffer(buffer);
    log("[Info] GAC server version: " + version);
    return version;
}

bool ConnectionControlImpl::openNuendoProject(const OpenNuendoMessage& message)
{
    log("[API] Vex GAC openNuendoProject()");
    if (message.assetFilePath.empty() || !m_initialized || !m_connected)
        return false;
    const GacSdk::Api& api = m_sdk.api();
    // About 4 KB; kept off the stack of whichever thread calls.
    auto asset = std::make_unique<GacAsset>();
    std::memset(asset.get(), 0, sizeof(GacAsset));
    int code = api.gacReadMetaData(message.assetFilePath.c_str(), asset.get());
    if (!isOpenSuccess(code)) {
        logSdkError(code);
        return false;
    }
    code = api.gacOpenNuendoProject(asset.get());
    if (!isOpenSuccess(code)) {
        logSdkError(code);
        return false;
    }
    return true;
}

bool ConnectionControlImpl::createNuendoProject(const CreateNuendoMessage& message)
{
    log("[API] Vex GAC createNuendoProject()");
    if (!m_initialized || !m_connected)
        return false;
    const SdkSegment segment(message.assetSegmentData);
    const int code = m_sdk.api().gacOpenNewNuendoProject(&segment.segment);
    if (!isOpenSuccess(code)) {
        logSdkError(code);
        return false;
    }
    return true;
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

void ConnectionControlImpl::onSdkCallback(int kind, const void* data, void* userData)
{
    if (userData)
        static_cast<ConnectionControlImpl*>(userData)->handleCallback(kind, data);
}

int ConnectionControlImpl::onPathTranslate(const char* path, char* translated, int size,
                                           void* userData)
{
    if (userData)
        static_cast<ConnectionControlImpl*>(userData)->log("[Callback] PathTranslate");
    // Paths are shared as they are; the server and we see the same files.
    if (!path || !translated || size <= 0)
        return GacSdk::kResultOpenAlsoAccepted;
    const size_t length = std::strlen(path);
    if (length >= static_cast<size_t>(size))
        return GacSdk::kResultOpenAlsoAccepted;
    std::memcpy(translated, path, length + 1);
    return GacSdk::kResultSuccess;
}

void ConnectionControlImpl::logAssets(const std::vector<AssetData>& assets)
{
    for (const AssetData& a : assets)
        log("[Info] Asset: " + a.filePath);
}

void ConnectionControlImpl::handleCallback(int kind, const void* data)
{
    switch (kind) {
    case GacSdk::NewAssetExported: {
        log("[Callback] NewAssetExported");
        auto message = std::make_shared<AssetExportedMessage>();
        const GacSdk::Api& api = m_sdk.api();
        int count = 0;
        int code = api.gacGetExportedAssets(nullptr, 0, &count);
        if (isSuccess(code) && count > 0) {
            std::vector<GacAsset> assets(static_cast<size_t>(count));
            int written = 0;
            code = api.gacGetExportedAssets(assets.data(), count, &written);
            for (int i = 0; isSuccess(code) && i < std::min(written, count); ++i)
                message->assetFiles.push_back(assetFromSdk(assets[static_cast<size_t>(i)]));
        }
        if (!isSuccess(code))
            logSdkError(code);
        logAssets(message->assetFiles);
        notify(message);
        break;
    }
    case GacSdk::AssetTransferred: {
        log("[Callback] AssetTransferred");
        auto message = std::make_shared<AssetTransferredMessage>();
        if (const auto* list = static_cast<const GacAssetList*>(data)) {
            for (int i = 0; list->assets && i < list->count; ++i)
                message->assetFiles.push_back(assetFromSdk(list->assets[i]));
        }
        logAssets(message->assetFiles);
        notify(message);
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
        notify(message);
        break;
    }
    case GacSdk::TransferProgress: {
        log("[Callback] TransferProgress");
        const double fraction = data ? *static_cast<const double*>(data) : 0.0;
        std::vector<VexGacListener*> listeners;
        {
            QMutexLocker lock(&m_listenerMutex);
            listeners = m_listeners;
        }
        for (VexGacListener* l : listeners)
            l->onGacTransferProgress(fraction);
        break;
    }
    case GacSdk::ServerDisconnected:
        handleServerDisconnected();
        break;
    default:
        log("[Info] Unsupported message");
        break;
    }
}

void ConnectionControlImpl::handleServerDisconnected()
{
    log("[Callback] Vex GAC onServerDisconnected()");
    m_connected = false;
    std::vector<VexGacListener*> listeners;
    {
        QMutexLocker lock(&m_listenerMutex);
        listeners = m_listeners;
    }
    for (VexGacListener* l : listeners)
        l->onGacServerDisconnected();
    startConnectionThread();
}

} // namespace Vexmw
