// A stand-in for the vendor's Game Audio Connect SDK: exports the functions the
// client resolves, plays a server whose answers the tests choose, records every
// call, and fires callbacks from a thread of its own as the real one does. Like
// a networked SDK it can also hold a call until released, fire a callback in
// the middle of a call, and hand over counts that do not match what it holds.

#include "GacSdk.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <limits>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

// A held call gives up by itself after this, so that a broken test ends.
constexpr std::chrono::seconds kHoldLimit(30);

struct Registration
{
    GacCallback callback = nullptr;
    void* userData = nullptr;
};

struct State
{
    std::mutex mutex;
    std::condition_variable released;
    std::map<std::string, int> results;
    std::vector<std::string> calls;
    std::map<int, Registration> callbacks;
    GacPathTranslateCallback translate = nullptr;
    void* translateUserData = nullptr;
    std::string exportedAsset;
    // Functions that hold their callers, and how many callers they hold now.
    std::set<std::string> holding;
    std::map<std::string, int> held;
    int holdsGivenUp = 0;
    // Function -> callback kind fired during its next call.
    std::map<std::string, int> fireDuring;
    // gacGetExportedAssets: the count reported when asked for it, and the
    // count claimed as written; INT_MIN means "the true one".
    int reportedCount = std::numeric_limits<int>::min();
    int writtenCount = std::numeric_limits<int>::min();
};

// Never destroyed: threads held in a call may still use it while the process ends.
State& state()
{
    static auto* s = new State;
    return *s;
}

int resultOf(State& s, const char* function)
{
    const auto it = s.results.find(function);
    return it == s.results.end() ? GacSdk::kResultSuccess : it->second;
}

void fire(int kind, int count);

// Records the call, holds it while asked to, fires what is due during it.
int record(const char* function, const std::string& args = {})
{
    State& s = state();
    int due = -1;
    {
        std::unique_lock<std::mutex> lock(s.mutex);
        s.calls.push_back(args.empty() ? std::string(function)
                                       : std::string(function) + ' ' + args);
        if (s.holding.count(function)) {
            ++s.held[function];
            if (!s.released.wait_for(lock, kHoldLimit,
                                     [&] { return s.holding.count(function) == 0; }))
                ++s.holdsGivenUp;
            --s.held[function];
        }
        const auto it = s.fireDuring.find(function);
        if (it != s.fireDuring.end()) {
            due = it->second;
            s.fireDuring.erase(it);
        }
    }
    if (due >= 0)
        fire(due, 2);
    std::lock_guard<std::mutex> lock(s.mutex);
    return resultOf(s, function);
}

void copyText(char* buffer, const std::string& text)
{
    std::snprintf(buffer, GacSdk::kTextSize, "%s", text.c_str());
}

void fillAsset(GacAsset* a, const std::string& path, double start)
{
    std::memset(a, 0, sizeof(GacAsset));
    copyText(a->filePath, path);
    copyText(a->additionalMetaDataFilePath, path + ".json");
    copyText(a->metaData.projectPath, "/projects/Forest.npr");
    copyText(a->metaData.repositoryUrl, "https://assets.example/forest");
    a->metaData.startTime = start;
    a->metaData.length = 2.5;
}

// Fires the callback registered for kind from a new thread and waits for it.
// Lists hold max(count, 2) records but claim count of them; the first record's
// texts fill their buffers without a terminating zero when count is not 2.
// Asset and segment data name files under /lib/forest/.
void fire(int kind, int count)
{
    State& s = state();
    Registration reg;
    {
        std::lock_guard<std::mutex> lock(s.mutex);
        const auto it = s.callbacks.find(kind);
        // Unknown kinds go to whatever callback the client gave us.
        if (it != s.callbacks.end())
            reg = it->second;
        else if (!s.callbacks.empty())
            reg = s.callbacks.begin()->second;
    }
    if (!reg.callback)
        return;
    std::thread worker([kind, count, reg] {
        const size_t n = static_cast<size_t>(std::max(count, 2));
        std::vector<GacAsset> assets(n);
        for (size_t i = 0; i < n; ++i)
            fillAsset(&assets[i], i % 2 ? "/lib/forest/wind.wav" : "/lib/forest/birds.wav",
                      2.5 * double(i % 2));
        if (count != 2)
            std::memset(assets[0].filePath, 'x', sizeof assets[0].filePath);
        const GacAssetList list{assets.data(), count};
        const std::vector<double> lengths(n, 2.5), offsets(n, 0.25);
        std::vector<double> startsInOrder(n);
        for (size_t i = 0; i < n; ++i)
            startsInOrder[i] = 4.0 * double(i);
        std::vector<GacTrack> tracks(n,
                                     GacTrack{assets.data(), startsInOrder.data(), lengths.data(),
                                              offsets.data(), count, "Ambience"});
        if (count == 2)
            tracks[0].numberOfEvents = 2;
        const std::vector<GacMarker> markers(n, GacMarker{7, 1.0, 3.0});
        const GacSegment segment{tracks.data(),
                                 count == 2 ? 1 : count,
                                 markers.data(),
                                 count == 2 ? 1 : count,
                                 96.0,
                                 3,
                                 4};
        const double progress = count == 2 ? 0.5 : std::numeric_limits<double>::quiet_NaN();
        const void* data = nullptr;
        switch (kind) {
        case GacSdk::AssetTransferred:
            data = &list;
            break;
        case GacSdk::SegmentTransferred:
            data = &segment;
            break;
        case GacSdk::TransferProgress:
            data = &progress;
            break;
        default:
            break;
        }
        reg.callback(kind, data, reg.userData);
    });
    worker.join();
}

} // namespace

#ifndef FAKE_GAC_OMIT_DEINITIALIZE
FAKE_EXPORT int gacDeinitialize(void)
{
    State& s = state();
    const int code = record("gacDeinitialize");
    std::lock_guard<std::mutex> lock(s.mutex);
    s.callbacks.clear();
    s.translate = nullptr;
    return code;
}
#endif

FAKE_EXPORT int gacInternalInitialize(const char* engineName, int argument1, int argument2)
{
    return record("gacInternalInitialize", std::string(engineName) + ' ' +
                                               std::to_string(argument1) + ' ' +
                                               std::to_string(argument2));
}

FAKE_EXPORT int gacEnableCallbackExecutionInBackground(void)
{
    return record("gacEnableCallbackExecutionInBackground");
}

FAKE_EXPORT void gacGetErrorMessage(int code, char* buffer)
{
    record("gacGetErrorMessage", std::to_string(code));
    copyText(buffer, "fake error " + std::to_string(code));
}

FAKE_EXPORT int gacSetServerPort(int port)
{
    return record("gacSetServerPort", std::to_string(port));
}

FAKE_EXPORT int gacConnectToServer(const char* address)
{
    return record("gacConnectToServer", address);
}

FAKE_EXPORT int gacGetServerVersion(char* buffer)
{
    copyText(buffer, "2.1.0-test");
    return record("gacGetServerVersion");
}

FAKE_EXPORT int gacSetClientDropPath(const char* path)
{
    return record("gacSetClientDropPath", path);
}

FAKE_EXPORT int gacRegisterCallback(int kind, GacCallback callback, void* userData)
{
    State& s = state();
    const int code = record("gacRegisterCallback", std::to_string(kind));
    std::lock_guard<std::mutex> lock(s.mutex);
    s.callbacks[kind] = {callback, userData};
    return code;
}

FAKE_EXPORT int gacRegisterPathTranslateCallback(GacPathTranslateCallback callback, void* userData)
{
    State& s = state();
    const int code = record("gacRegisterPathTranslateCallback");
    std::lock_guard<std::mutex> lock(s.mutex);
    s.translate = callback;
    s.translateUserData = userData;
    return code;
}

FAKE_EXPORT int gacReadMetaData(const char* filePath, GacAsset* asset)
{
    fillAsset(asset, filePath, 0.0);
    return record("gacReadMetaData", filePath);
}

FAKE_EXPORT int gacOpenNuendoProject(const GacAsset* asset)
{
    return record("gacOpenNuendoProject",
                  std::string(asset->filePath) + " | " + asset->metaData.projectPath);
}

FAKE_EXPORT int gacOpenNewNuendoProject(const GacSegment* segment)
{
    std::string args = "tracks " + std::to_string(segment->numberOfTracks) + " markers " +
                       std::to_string(segment->numberOfMarkers);
    if (segment->numberOfTracks > 0 && segment->tracks[0].numberOfEvents > 0)
        args += " first " + std::string(segment->tracks[0].eventData[0].filePath);
    return record("gacOpenNewNuendoProject", args);
}

FAKE_EXPORT int gacGetExportedAssets(GacAsset* assets, int capacity, int* count)
{
    const int code = record("gacGetExportedAssets", std::to_string(capacity));
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    const int held = s.exportedAsset.empty() ? 0 : 1;
    if (capacity > 0 && held > 0)
        fillAsset(&assets[0], s.exportedAsset, 1.0);
    const int claimed = capacity > 0 ? s.writtenCount : s.reportedCount;
    *count = claimed == std::numeric_limits<int>::min() ? held : claimed;
    return code;
}

FAKE_EXPORT int gacSetAssetUpdate(const char* displayValue)
{
    return record("gacSetAssetUpdate", displayValue);
}

// ---- Test controls -------------------------------------------------------

FAKE_EXPORT void fakeGacReset()
{
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.results.clear();
    s.calls.clear();
    s.callbacks.clear();
    s.translate = nullptr;
    s.exportedAsset.clear();
    s.holding.clear();
    s.fireDuring.clear();
    s.holdsGivenUp = 0;
    s.reportedCount = s.writtenCount = std::numeric_limits<int>::min();
    s.released.notify_all();
}

FAKE_EXPORT void fakeGacSetResult(const char* function, int code)
{
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.results[function] = code;
}

FAKE_EXPORT void fakeGacSetExportedAsset(const char* path)
{
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.exportedAsset = path;
}

// What gacGetExportedAssets claims: the count when asked for it and the count
// written into the caller's array; INT_MIN for the true one.
FAKE_EXPORT void fakeGacSetExportedCounts(int reported, int written)
{
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.reportedCount = reported;
    s.writtenCount = written;
}

// Calls to function wait while on is non-zero.
FAKE_EXPORT void fakeGacHold(const char* function, int on)
{
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (on)
        s.holding.insert(function);
    else
        s.holding.erase(function);
    s.released.notify_all();
}

// How many calls to function are held now.
FAKE_EXPORT int fakeGacHeld(const char* function)
{
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    const auto it = s.held.find(function);
    return it == s.held.end() ? 0 : it->second;
}

// Held calls that gave up waiting by themselves.
FAKE_EXPORT int fakeGacHoldsGivenUp()
{
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    return s.holdsGivenUp;
}

// The next call to function fires the callback of kind from a thread of the
// SDK, and returns only once the client's callback has returned.
FAKE_EXPORT void fakeGacFireDuring(const char* function, int kind)
{
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.fireDuring[function] = kind;
}

// The calls so far, one per line; returns the length the whole text needs.
FAKE_EXPORT int fakeGacCalls(char* buffer, int size)
{
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    std::string text;
    for (const std::string& c : s.calls)
        text += c + '\n';
    if (buffer && size > 0)
        std::snprintf(buffer, static_cast<size_t>(size), "%s", text.c_str());
    return static_cast<int>(text.size()) + 1;
}

// Asks the client to translate a path as the server would; returns its answer.
FAKE_EXPORT int fakeGacTranslate(const char* path, char* translated, int size)
{
    State& s = state();
    GacPathTranslateCallback callback = nullptr;
    void* userData = nullptr;
    {
        std::lock_guard<std::mutex> lock(s.mutex);
        callback = s.translate;
        userData = s.translateUserData;
    }
    return callback ? callback(path, translated, size, userData) : -1;
}

// Fires the callback of kind with lists that claim count records (see fire()).
FAKE_EXPORT void fakeGacFireCount(int kind, int count)
{
    fire(kind, count);
}
