#include "DeviceOutput.h"

#include "EngineErrors.h"
#include "EngineMemory.h"
#include "Mixer.h"

#include <SDL.h>

#include <chrono>
#include <string>

namespace AudioEngine {

namespace {

void ReportDeviceError(const char* what)
{
    const std::string message = std::string(what) + " (" + SDL_GetError() + ")";
    ReportError(kErrDeviceStart, message.c_str());
}

} // namespace

void DeviceOutput::Callback(void* self, std::uint8_t* stream, int len)
{
    auto& out = *static_cast<DeviceOutput*>(self);
    const auto t0 = std::chrono::steady_clock::now();
    const auto frames = static_cast<std::size_t>(len) / (2 * sizeof(float));
    out.mixer_->Render(reinterpret_cast<float*>(stream), frames);
    const auto t1 = std::chrono::steady_clock::now();
    out.busyNs_.fetch_add(std::chrono::duration_cast<std::chrono::nanoseconds>(t1 - t0).count(),
                          std::memory_order_relaxed);
    out.calls_.fetch_add(1, std::memory_order_relaxed);
    out.frames_.fetch_add(static_cast<std::int64_t>(frames), std::memory_order_relaxed);
}

bool DeviceOutput::OpenDevice(const char* name, std::int32_t rate, bool allowRateChange)
{
    SDL_AudioSpec want{};
    want.freq = rate;
    want.format = AUDIO_F32SYS;
    want.channels = 2;
    want.samples = static_cast<Uint16>(bufferFrames_);
    want.callback = &DeviceOutput::Callback;
    want.userdata = this;
    SDL_AudioSpec have{};
    // A device that runs at another rate keeps it at the first open; the mixer
    // resamples once instead of SDL converting a second time. A later move to
    // another device keeps the mixer's rate and lets SDL convert.
    device_ = SDL_OpenAudioDevice(name, 0, &want, &have,
                                  allowRateChange ? SDL_AUDIO_ALLOW_FREQUENCY_CHANGE : 0);
    if (device_ != 0)
        rate_ = have.freq;
    return device_ != 0;
}

bool DeviceOutput::OpenDummy(std::int32_t rate, bool allowRateChange)
{
    if (subsystem_) {
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
        subsystem_ = false;
    }
    if (!directInit_) {
        if (SDL_AudioInit("dummy") != 0)
            return false;
        directInit_ = true;
    }
    if (OpenDevice(nullptr, rate, allowRateChange))
        return true;
    SDL_AudioQuit();
    directInit_ = false;
    return false;
}

bool DeviceOutput::OpenAny(const std::string& device, std::int32_t rate, bool allowRateChange)
{
    deviceName_.clear();
    if (!subsystem_ && !directInit_) {
        if (SDL_InitSubSystem(SDL_INIT_AUDIO) == 0)
            subsystem_ = true;
        else
            ReportDeviceError("Can not start the audio output.");
    }
    if (subsystem_) {
        if (!device.empty()) {
            if (OpenDevice(device.c_str(), rate, allowRateChange)) {
                deviceName_ = device;
                return true;
            }
        }
        if (OpenDevice(nullptr, rate, allowRateChange))
            return true;
        ReportDeviceError("Can not start the audio output.");
    }
    return OpenDummy(rate, allowRateChange);
}

bool DeviceOutput::Open(std::int32_t rate, std::int32_t bufferFrames, const std::string& device)
{
    Close();
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    bufferFrames_ = bufferFrames;
    return OpenAny(device, rate, true);
}

void DeviceOutput::Run(Mixer* mixer)
{
    if (device_ == 0)
        return;
    mixer_ = mixer;
    busyNs_ = 0;
    calls_ = 0;
    frames_ = 0;
    SDL_PauseAudioDevice(device_, 0);
}

bool DeviceOutput::Switch(const std::string& device)
{
    if (device_ == 0 || !mixer_)
        return false;
    // Closing waits for a callback under way; the mixer keeps every voice.
    SDL_CloseAudioDevice(device_);
    device_ = 0;
    const std::int32_t rate = rate_;
    if (!OpenAny(device, rate, false)) {
        mixer_->ReleaseAll(); // nothing will pull the mix: let the sounds go rather than hang
        return false;
    }
    SDL_PauseAudioDevice(device_, 0);
    return deviceName_ == device;
}

bool DeviceOutput::IsLost() const
{
    return device_ != 0 && SDL_GetAudioDeviceStatus(device_) == SDL_AUDIO_STOPPED;
}

void DeviceOutput::Close()
{
    if (device_ != 0) {
        SDL_CloseAudioDevice(device_);
        device_ = 0;
    }
    if (subsystem_)
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
    if (directInit_)
        SDL_AudioQuit();
    subsystem_ = directInit_ = false;
    mixer_ = nullptr;
    deviceName_.clear();
}

CallbackStats DeviceOutput::Stats() const
{
    return {busyNs_.load(), calls_.load(), frames_.load(), 0};
}

std::vector<std::string> DeviceOutput::ListDevices()
{
    std::vector<std::string> names;
    const int n = SDL_GetNumAudioDevices(0);
    for (int i = 0; i < n; ++i) {
        if (const char* name = SDL_GetAudioDeviceName(i, 0))
            names.emplace_back(name);
    }
    return names;
}

void DeviceOutput::ReleaseThreadState()
{
    SDL_TLSCleanup();
}

} // namespace AudioEngine
