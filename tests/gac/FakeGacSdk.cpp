// A stand-in for the vendor's Game Audio Connect SDK: exports the functions the
// client resolves, plays a server whose answers the tests choose, records every
// call, and fires callbacks from a thread of its own as the real one does. Like
// a networked SDK it can hold a call until released, fire a callback in the
// middle of a call, and hand over counts that do not match what it holds.

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

constexpr int kTrueCount = std::numeric_limits<int>::min();

struct State
{
    std::mutex mutex;
    std::condition_variable released;
    std::map<std::string, int> results;
    std::vector<std::string> calls;
    std::map<int, std::pair<GacCallback, void*>> callbacks;
    GacPathTranslateCallback translate = nullptr;
    void* translateUserData = nullptr;
    std::string exportedAsset;
    std::set<std::string> holding;   // functions that hold their callers
    std::map<std::string, int> held; // callers held now
    int holdsGivenUp = 0;
    std::map<std::string, int> fireDuring; // function -> callback kind fired in its next call
    int reportedCount = kTrueCount;        // gacGetExportedAssets, asked for the count
    int writtenCount = kTrueCount;         // and claimed as written
};

// Never destroyed: threads held in a call may still use it while the process ends.
State& state()
{
    static auto* s = new State;
    return *s;
}

void fire(int kind, int count);

// Records the call, holds it while asked to (30 s at most, so that a broken
// test ends), does its work (before a held call counts as returned), fires
// what is due during it.
int record(const char* function, const std::string& args = {}, void (*work)(State&) = nullptr)
{
    State& s = state();
    int due = -1;
    {
        std::unique_lock<std::mutex> lock(s.mutex);
        s.calls.push_back(args.empty() ? std::string(function) : function + (' ' + args));
        const bool hold = s.holding.count(function) > 0;
        if (hold) {
            ++s.held[function];
            if (!s.released.wait_for(lock, std::chrono::seconds(30),
                                     [&] { return s.holding.count(function) == 0; }))
                ++s.holdsGivenUp;
        }
        if (work)
            work(s);
        if (hold)
            --s.held[function];
        const auto it = s.fireDuring.find(function);
        if (it != s.fireDuring.end()) {
            due = it->second;
            s.fireDuring.erase(it);
        }
    }
    if (due >= 0)
        fire(due, 2);
    std::lock_guard<std::mutex> lock(s.mutex);
    const auto it = s.results.find(function);
    return it == s.results.end() ? GacSdk::kResultSuccess : it->second;
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

// Fires the callback registered for kind (unknown kinds: any callback) from a
// new thread and waits for it. Lists hold max(count, 2) records under
// /lib/forest/ but claim count of them; unless count is 2, the first record's
// path fills its buffer without a terminating zero.
void fire(int kind, int count)
{
    State& s = state();
    std::pair<GacCallback, void*> reg{};
    {
        std::lock_guard<std::mutex> lock(s.mutex);
        const auto it = s.callbacks.find(kind);
        if (it != s.callbacks.end())
            reg = it->second;
        else if (!s.callbacks.empty())
            reg = s.callbacks.begin()->second;
    }
    if (!reg.first)
        return;
    std::thread([kind, count, reg] {
        const size_t n = static_cast<size_t>(std::max(count, 2));
        std::vector<GacAsset> assets(n);
        std::vector<double> starts(n);
        for (size_t i = 0; i < n; ++i) {
            fillAsset(&assets[i], i % 2 ? "/lib/forest/wind.wav" : "/lib/forest/birds.wav",
                      2.5 * double(i % 2));
            starts[i] = 4.0 * double(i);
        }
        if (count != 2)
            std::memset(assets[0].filePath, 'x', sizeof assets[0].filePath);
        const GacAssetList list{assets.data(), count};
        const std::vector<double> lengths(n, 2.5), offsets(n, 0.25);
        std::vector<GacTrack> tracks(n, GacTrack{assets.data(), starts.data(), lengths.data(),
                                                 offsets.data(), count, "Ambience"});
        const std::vector<GacMarker> markers(n, GacMarker{7, 1.0, 3.0});
        const int tracksAndMarkers = count == 2 ? 1 : count;
        const GacSegment segment{
            tracks.data(), tracksAndMarkers, markers.data(), tracksAndMarkers, 96.0, 3, 4};
        const double progress = count == 2 ? 0.5 : std::numeric_limits<double>::quiet_NaN();
        const void* data = kind == GacSdk::AssetTransferred     ? static_cast<const void*>(&list)
                           : kind == GacSdk::SegmentTransferred ? static_cast<const void*>(&segment)
                           : kind == GacSdk::TransferProgress   ? &progress
                                                                : nullptr;
        reg.first(kind, data, reg.second);
    }).join();
}

} // namespace

#ifndef FAKE_GAC_OMIT_DEINITIALIZE
FAKE_EXPORT int gacDeinitialize(void)
{
    return record("gacDeinitialize", {}, [](State& s) {
        s.callbacks.clear();
        s.translate = nullptr;
    });
}
#endif

// Calls that only record their arguments and answer as told.
#define FAKE_RECORDED(name, params, args)                                                          \
    FAKE_EXPORT int name params                                                                    \
    {                                                                                              \
        return record(#name, args);                                                                \
    }
FAKE_RECORDED(gacInternalInitialize, (const char* engine, int argument1, int argument2),
              std::string(engine) + ' ' + std::to_string(argument1) + ' ' +
                  std::to_string(argument2))
FAKE_RECORDED(gacEnableCallbackExecutionInBackground, (void), {})
FAKE_RECORDED(gacSetServerPort, (int port), std::to_string(port))
FAKE_RECORDED(gacConnectToServer, (const char* address), address)
FAKE_RECORDED(gacSetClientDropPath, (const char* path), path)
FAKE_RECORDED(gacSetAssetUpdate, (const char* displayValue), displayValue)

FAKE_EXPORT void gacGetErrorMessage(int code, char* buffer)
{
    record("gacGetErrorMessage", std::to_string(code));
    copyText(buffer, "fake error " + std::to_string(code));
}

FAKE_EXPORT int gacGetServerVersion(char* buffer)
{
    copyText(buffer, "2.1.0-test");
    return record("gacGetServerVersion");
}

FAKE_EXPORT int gacRegisterCallback(int kind, GacCallback callback, void* userData)
{
    const int code = record("gacRegisterCallback", std::to_string(kind));
    std::lock_guard<std::mutex> lock(state().mutex);
    state().callbacks[kind] = {callback, userData};
    return code;
}

FAKE_EXPORT int gacRegisterPathTranslateCallback(GacPathTranslateCallback callback, void* userData)
{
    const int code = record("gacRegisterPathTranslateCallback");
    std::lock_guard<std::mutex> lock(state().mutex);
    state().translate = callback;
    state().translateUserData = userData;
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
    *count = claimed == kTrueCount ? held : claimed;
    return code;
}

// ---- Test controls (see FakeSdkControl.h) ---------------------------------

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
    s.reportedCount = s.writtenCount = kTrueCount;
    s.released.notify_all();
}

FAKE_EXPORT void fakeGacSetResult(const char* function, int code)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    state().results[function] = code;
}

FAKE_EXPORT void fakeGacSetExportedAsset(const char* path)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    state().exportedAsset = path;
}

FAKE_EXPORT void fakeGacSetExportedCounts(int reported, int written)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    state().reportedCount = reported;
    state().writtenCount = written;
}

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

FAKE_EXPORT int fakeGacHeld(const char* function)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    const auto it = state().held.find(function);
    return it == state().held.end() ? 0 : it->second;
}

FAKE_EXPORT int fakeGacHoldsGivenUp()
{
    std::lock_guard<std::mutex> lock(state().mutex);
    return state().holdsGivenUp;
}

FAKE_EXPORT void fakeGacFireDuring(const char* function, int kind)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    state().fireDuring[function] = kind;
}

FAKE_EXPORT int fakeGacCalls(char* buffer, int size)
{
    std::lock_guard<std::mutex> lock(state().mutex);
    std::string text;
    for (const std::string& c : state().calls)
        text += c + '\n';
    if (buffer && size > 0)
        std::snprintf(buffer, static_cast<size_t>(size), "%s", text.c_str());
    return static_cast<int>(text.size()) + 1;
}

FAKE_EXPORT int fakeGacTranslate(const char* path, char* translated, int size)
{
    GacPathTranslateCallback callback = nullptr;
    void* userData = nullptr;
    {
        std::lock_guard<std::mutex> lock(state().mutex);
        callback = state().translate;
        userData = state().translateUserData;
    }
    return callback ? callback(path, translated, size, userData) : -1;
}

FAKE_EXPORT void fakeGacFireCount(int kind, int count)
{
    fire(kind, count);
}
