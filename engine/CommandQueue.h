#pragma once

#include <array>
#include <atomic>
#include <cstddef>

namespace AudioEngine {

// Single-producer single-consumer ring: the control thread posts, the device
// callback drains without locks or allocation. Producers serialise among
// themselves before posting.
template<typename T, std::size_t Capacity>
class CommandQueue final
{
    static_assert((Capacity & (Capacity - 1)) == 0, "capacity must be a power of two");

public:
    bool Push(const T& item)
    {
        const std::size_t tail = tail_.load(std::memory_order_relaxed);
        if (tail - head_.load(std::memory_order_acquire) == Capacity)
            return false;
        slots_[tail & (Capacity - 1)] = item;
        tail_.store(tail + 1, std::memory_order_release);
        return true;
    }

    bool Pop(T& item)
    {
        const std::size_t head = head_.load(std::memory_order_relaxed);
        if (head == tail_.load(std::memory_order_acquire))
            return false;
        item = slots_[head & (Capacity - 1)];
        head_.store(head + 1, std::memory_order_release);
        return true;
    }

private:
    std::array<T, Capacity> slots_{};
    alignas(64) std::atomic<std::size_t> head_{0};
    alignas(64) std::atomic<std::size_t> tail_{0};
};

} // namespace AudioEngine
