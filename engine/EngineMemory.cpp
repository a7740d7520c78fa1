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
