#pragma once

#include "AudioEngine.h"

#include <atomic>
#include <cstdint>

namespace AudioEngine {

class Mixer;

// The SDL2 output: opens the default device as float stereo and pulls the mix
// from the callback. When no device opens, the failure is reported and SDL's
// dummy driver takes over, so playback still advances in real time.
class DeviceOutput final
{
public:
    DeviceOutput() = default;
    DeviceOutput(const DeviceOutput&) = delete;
    DeviceOutput& operator=(const DeviceOutput&) = delete;
    ~DeviceOutput() { Close(); }

    // Opens paused; returns false (reported) when not even the dummy driver opens.
    bool Open(std::int32_t rate, std::int32_t bufferFrames);
    // Starts the callback on `mixer`, which must outlive Close().
    void Run(Mixer* mixer);
    // Waits for a running callback to return.
    void Close();

    bool IsOpen() const { return device_ != 0; }
    std::int32_t Rate() const { return rate_; }
    CallbackStats Stats() const;

private:
    static void Callback(void* self, std::uint8_t* stream, int len);
    bool OpenDevice(std::int32_t rate, std::int32_t bufferFrames);

    std::uint32_t device_ = 0;
    bool subsystem_ = false;  // SDL_InitSubSystem succeeded
    bool directInit_ = false; // SDL_AudioInit("dummy") fallback
    std::int32_t rate_ = 0;
    Mixer* mixer_ = nullptr;
    std::atomic<std::int64_t> busyNs_{0};
    std::atomic<std::int64_t> calls_{0};
    std::atomic<std::int64_t> frames_{0};
};

} // namespace AudioEngine
