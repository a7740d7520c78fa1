#pragma once

// Everything this program assumes about the Game Audio Connect SDK's C
// interface: library name, function signatures, result codes, callback kinds
// and the records exchanged with it. The vendor library is loaded at run time,
// so fitting another SDK release means editing this one file.

#include <cstddef>

namespace GacSdk {

// Base name handed to QLibrary, which adds "lib"/".so" or ".dll" as the
// platform needs ("gac_sdk.dll" on Windows).
inline constexpr const char* kLibraryBaseName = "gac_sdk";

inline constexpr int kResultSuccess = 7;
// Opening a project also reports 0 when it succeeds.
inline constexpr int kResultOpenAlsoAccepted = 0;

// What our callbacks return when they cannot do what was asked.
inline constexpr int kResultRefused = -1;

// The two integers the server expects after the engine name at initialisation.
inline constexpr int kInitializeArgument1 = 2;
inline constexpr int kInitializeArgument2 = 1;

// Size of every text buffer the SDK writes into (error messages, version,
// asset paths), terminating zero included. A path that does not fit is never
// cut: the request is refused.
inline constexpr int kTextSize = 1024;

// The most records of a kind taken from one answer of the SDK. Counts come
// from the other side of a network; anything larger is damage, and nothing is
// allocated or read past these.
inline constexpr int kMaxAssets = 1024;
inline constexpr int kMaxTracks = 256;
inline constexpr int kMaxEvents = 16384; // over all tracks of a segment
inline constexpr int kMaxMarkers = 4096;
// Track names arrive as plain C strings.
inline constexpr int kMaxNameLength = 4096;

inline constexpr int kMinPort = 1;
inline constexpr int kMaxPort = 65535;

enum CallbackKind : int
{
    NewAssetExported = 0,
    AssetTransferred = 1,
    ServerDisconnected = 2,
    SegmentTransferred = 3,
    TransferProgress = 4,
};

} // namespace GacSdk

extern "C" {

struct GacMetaData
{
    char projectPath[GacSdk::kTextSize];
    char repositoryUrl[GacSdk::kTextSize];
    double startTime;
    double length;
};

// Filled by gacReadMetaData and gacGetExportedAssets, read by
// gacOpenNuendoProject and carried by the asset-transferred callback.
struct GacAsset
{
    char filePath[GacSdk::kTextSize];
    char additionalMetaDataFilePath[GacSdk::kTextSize];
    GacMetaData metaData;
};

struct GacAssetList
{
    const GacAsset* assets;
    int count;
};

struct GacTrack
{
    const GacAsset* eventData; // one per event
    const double* eventStartPositions;
    const double* eventLength;
    const double* eventDataOffset;
    int numberOfEvents;
    const char* name;
};

struct GacMarker
{
    int id;
    double startPosition;
    double endPosition;
};

struct GacSegment
{
    const GacTrack* tracks;
    int numberOfTracks;
    const GacMarker* markers;
    int numberOfMarkers;
    double tempo;
    int timeSignatureNumerator;
    int timeSignatureDenominator;
};

// data by kind: NewAssetExported none (fetch with gacGetExportedAssets),
// AssetTransferred const GacAssetList*, ServerDisconnected none,
// SegmentTransferred const GacSegment*, TransferProgress const double* (0..1).
typedef void (*GacCallback)(int kind, const void* data, void* userData);

// Writes the local path for a server path into translated (size bytes);
// returns the SDK's success code when it did.
typedef int (*GacPathTranslateCallback)(const char* path, char* translated, int size,
                                        void* userData);

} // extern "C"

// X(name, return type, parameter list) for the fifteen functions resolved by name.
#define TESK_GAC_SDK_FUNCTIONS(X)                                                                  \
    X(gacInternalInitialize, int, (const char* engineName, int argument1, int argument2))          \
    X(gacEnableCallbackExecutionInBackground, int, (void))                                         \
    X(gacGetErrorMessage, void, (int code, char* buffer))                                          \
    X(gacSetServerPort, int, (int port))                                                           \
    X(gacConnectToServer, int, (const char* address))                                              \
    X(gacGetServerVersion, int, (char* buffer))                                                    \
    X(gacSetClientDropPath, int, (const char* path))                                               \
    X(gacRegisterCallback, int, (int kind, GacCallback callback, void* userData))                  \
    X(gacRegisterPathTranslateCallback, int, (GacPathTranslateCallback callback, void* userData))  \
    X(gacReadMetaData, int, (const char* filePath, GacAsset* asset))                               \
    X(gacOpenNuendoProject, int, (const GacAsset* asset))                                          \
    X(gacOpenNewNuendoProject, int, (const GacSegment* segment))                                   \
    X(gacGetExportedAssets, int, (GacAsset * assets, int capacity, int* count))                    \
    X(gacSetAssetUpdate, int, (const char* displayValue))                                          \
    X(gacDeinitialize, int, (void))

namespace GacSdk {

// The resolved entry points; all null until the library is loaded.
struct Api
{
#define TESK_GAC_SDK_POINTER(name, ret, params) ret(*name) params = nullptr;
    TESK_GAC_SDK_FUNCTIONS(TESK_GAC_SDK_POINTER)
#undef TESK_GAC_SDK_POINTER
};

} // namespace GacSdk
