#pragma once

#include "AudioEngine.h"

#include <cstddef>
#include <new>
#include <utility>

namespace AudioEngine {

// Every allocation of the engine goes through the functions the host handed
// over (malloc/free when it handed none). Called under the engine's control lock.
void SetAllocators(AllocFunction alloc, FreeFunction free);
void* Allocate(std::size_t size);
void Release(void* pointer);

template<typename T, typename... Args>
T* Create(Args&&... args)
{
    void* p = Allocate(sizeof(T));
    return p ? new (p) T(std::forward<Args>(args)...) : nullptr;
}

template<typename T>
void Destroy(T* object)
{
    if (!object)
        return;
    object->~T();
    Release(object);
}

// "E" + 10 digits + " : " + message, to the registered error callback.
void ReportError(const char* code, const char* message);

} // namespace AudioEngine
