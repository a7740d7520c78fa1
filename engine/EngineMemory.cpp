#include "EngineMemory.h"

#include "AudioEngine.h"

#include <atomic>
#include <cstdlib>
#include <string>

namespace AudioEngine {

namespace {

std::atomic<ErrorCallback> g_errorCallback{nullptr};
AllocFunction g_alloc = nullptr;
FreeFunction g_free = nullptr;
float* g_spare = nullptr;
std::size_t g_spareCapacity = 0;

} // namespace

void SetAllocators(AllocFunction alloc, FreeFunction free)
{
    const bool both = alloc && free;
    g_alloc = both ? alloc : nullptr;
    g_free = both ? free : nullptr;
}

void* Allocate(std::size_t size)
{
    return g_alloc ? g_alloc(size) : std::malloc(size);
}

void Release(void* pointer)
{
    if (!pointer)
        return;
    if (g_free)
        g_free(pointer);
    else
        std::free(pointer);
}

float* AcquireSampleBuffer(std::size_t count, std::size_t* capacity)
{
    if (g_spare && g_spareCapacity >= count) {
        float* buffer = g_spare;
        *capacity = g_spareCapacity;
        g_spare = nullptr;
        g_spareCapacity = 0;
        return buffer;
    }
    *capacity = count;
    return static_cast<float*>(Allocate(count * sizeof(float)));
}

void ReturnSampleBuffer(float* buffer, std::size_t capacity)
{
    if (!buffer)
        return;
    ReleaseSpareSampleBuffer();
    g_spare = buffer;
    g_spareCapacity = capacity;
}

void ReleaseSpareSampleBuffer()
{
    Release(g_spare);
    g_spare = nullptr;
    g_spareCapacity = 0;
}

void ReportError(const char* code, const char* message)
{
    const ErrorCallback callback = g_errorCallback.load();
    if (!callback)
        return;
    const std::string text = std::string(code) + " : " + message;
    callback(text.c_str());
}

void SetErrorCallback(ErrorCallback callback)
{
    g_errorCallback.store(callback);
}

} // namespace AudioEngine
