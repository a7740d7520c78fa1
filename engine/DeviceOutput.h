#pragma once

#include "AudioEngine.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace AudioEngine {

class Mixer;

// The SDL2 output: opens a device (the system default, or one by name) as float
// stereo and pulls the mix from the callback. A named device that does not
// open gives way to the default; when no device opens, the failure is reported
// and SDL's dummy driver takes over, so playback still advances in real time.
class DeviceOutput final
{
public:
    DeviceOutput() = default;
    DeviceOutput(const DeviceOutput&) = delete;
    DeviceOutput& operator=(const DeviceOutput&) = delete;
    ~DeviceOutput() { Close(); }

    // Opens paused; returns false (reported) when not even the dummy driver opens.
    bool Open(std::int32_t rate, std::int32_t bufferFrames, const std::string& device);
    // Starts the callback on `mixer`, which must outlive Close().
    void Run(Mixer* mixer);
    // Waits for a running callback to return.
    void Close();
    // Moves a running output to another device at the same rate, with the same
    // mixer. False when that device did not open and the output went elsewhere.
    bool Switch(const std::string& device);
    // The device stopped on its own: unplugged, its server gone, a write failed.
    bool IsLost() const;

    bool IsOpen() const { return device_ != 0; }
    std::int32_t Rate() const { return rate_; }
    // The device the output runs on; empty for the system default (or dummy).
    const std::string& Device() const { return deviceName_; }
    CallbackStats Stats() const;

    // Output device names the driver reports, in its order.
    static std::vector<std::string> ListDevices();
    // Before a thread that SDL did not start ends: SDL would keep that thread's
    // error text (a device that failed to open sets one) after it has gone.
    static void ReleaseThreadState();

private:
    static void Callback(void* self, std::uint8_t* stream, int len);
    bool OpenDevice(const char* name, std::int32_t rate, bool allowRateChange);
    // Named device, then the default, then the dummy driver.
    bool OpenAny(const std::string& device, std::int32_t rate, bool allowRateChange);
    bool OpenDummy(std::int32_t rate, bool allowRateChange);

    std::uint32_t device_ = 0;
    bool subsystem_ = false;  // SDL_InitSubSystem succeeded
    bool directInit_ = false; // SDL_AudioInit("dummy") fallback
    std::int32_t rate_ = 0;
    std::int32_t bufferFrames_ = 256;
    std::string deviceName_;
    Mixer* mixer_ = nullptr;
    std::atomic<std::int64_t> busyNs_{0};
    std::atomic<std::int64_t> calls_{0};
    std::atomic<std::int64_t> frames_{0};
};

} // namespace AudioEngine
