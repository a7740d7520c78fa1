#pragma once

// Codes of the engine's own messages ("E" + 10 digits + " : " + text).
namespace AudioEngine {

#ifdef _WIN32
inline constexpr const char* kErrDeviceStart = "E2009042301";
#else
inline constexpr const char* kErrDeviceStart = "E2026112201";
#endif
inline constexpr const char* kErrNotInitialized = "E2026112202";
inline constexpr const char* kErrNoMemory = "E2026112203";
inline constexpr const char* kErrNullHandle = "E2026112204";
inline constexpr const char* kErrNoData = "E2026112205";
inline constexpr const char* kErrDecode = "E2026112206";
inline constexpr const char* kErrNoPool = "E2026112207";
inline constexpr const char* kErrTooManyChannels = "E2026112208";
inline constexpr const char* kErrRateTooHigh = "E2026112209";
inline constexpr const char* kErrNoFreeVoice = "E2026112210";
inline constexpr const char* kErrSampleFormat = "E2026112211";
inline constexpr const char* kErrResampler = "E2026112212";
inline constexpr const char* kErrQueueFull = "E2026112213";
inline constexpr const char* kErrBadConfig = "E2026112214";

} // namespace AudioEngine
