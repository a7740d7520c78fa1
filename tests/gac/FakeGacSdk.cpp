// A stand-in for the vendor's Game Audio Connect SDK: exports the functions the
// client resolves, plays a server whose answers the tests choose, records every
// call, and fires callbacks from a thread of its own as the real one does.

#include "GacSdk.h"

#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

struct Registration
{
    GacCallback callback = nullptr;
    void* userData = nullptr;
};

struct State
{
    std::mutex mutex;
    std::map<std::string, int> results;
    std::vector<std::string> calls;
    std::map<int, Registration> callbacks;
    GacPathTranslateCallback translate = nullptr;
    void* translateUserData = nullptr;
    std::string exportedAsset;
};

State& state()
{
    static State s;
    return s;
}

int resultOf(const char* function)
{
    State& s = state();
    const auto it = s.results.find(function);
    return it == s.results.end() ? GacSdk::kResultSuccess : it->second;
}

int record(const char* function, const std::string& args = {})
{
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.calls.push_back(args.empty() ? std::string(function) : std::string(function) + ' ' + args);
    return resultOf(function);
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
    *count = s.exportedAsset.empty() ? 0 : 1;
    if (capacity > 0 && *count > 0)
        fillAsset(&assets[0], s.exportedAsset, 1.0);
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

// Fires the callback registered for kind from a new thread and waits for it.
// Asset and segment data name files under /lib/forest/.
FAKE_EXPORT void fakeGacFire(int kind)
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
    std::thread worker([kind, reg] {
        GacAsset assets[2];
        fillAsset(&assets[0], "/lib/forest/birds.wav", 0.0);
        fillAsset(&assets[1], "/lib/forest/wind.wav", 2.5);
        const GacAssetList list{assets, 2};
        const double starts[2] = {0.0, 4.0};
        const double lengths[2] = {2.5, 2.5};
        const double offsets[2] = {0.0, 0.25};
        const GacTrack track{assets, starts, lengths, offsets, 2, "Ambience"};
        const GacMarker marker{7, 1.0, 3.0};
        const GacSegment segment{&track, 1, &marker, 1, 96.0, 3, 4};
        const double progress = 0.5;
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
