#include "DeviceOutput.h"

#include "EngineErrors.h"
#include "EngineMemory.h"
#include "Mixer.h"

#include <SDL.h>

#include <chrono>
#include <string>

namespace AudioEngine {

namespace {

void ReportDeviceError()
{
    const std::string message =
        std::string("Can not start the audio output. (") + SDL_GetError() + ")";
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

bool DeviceOutput::OpenDevice(std::int32_t rate, std::int32_t bufferFrames)
{
    SDL_AudioSpec want{};
    want.freq = rate;
    want.format = AUDIO_F32SYS;
    want.channels = 2;
    want.samples = static_cast<Uint16>(bufferFrames);
    want.callback = &DeviceOutput::Callback;
    want.userdata = this;
    SDL_AudioSpec have{};
    // A device that runs at another rate keeps it; the mixer resamples once
    // instead of SDL converting a second time.
    device_ = SDL_OpenAudioDevice(nullptr, 0, &want, &have, SDL_AUDIO_ALLOW_FREQUENCY_CHANGE);
    if (device_ != 0)
        rate_ = have.freq;
    return device_ != 0;
}

bool DeviceOutput::Open(std::int32_t rate, std::int32_t bufferFrames)
{
    Close();
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) == 0) {
        subsystem_ = true;
        if (OpenDevice(rate, bufferFrames))
            return true;
        ReportDeviceError();
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
        subsystem_ = false;
    } else {
        ReportDeviceError();
    }
    if (SDL_AudioInit("dummy") != 0)
        return false;
    directInit_ = true;
    if (OpenDevice(rate, bufferFrames))
        return true;
    SDL_AudioQuit();
    directInit_ = false;
    return false;
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
}

CallbackStats DeviceOutput::Stats() const
{
    return {busyNs_.load(), calls_.load(), frames_.load()};
}

} // namespace AudioEngine
