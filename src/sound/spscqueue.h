#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <type_traits>

// A fixed ring for one producer thread and one consumer thread. Neither side allocates, locks
// or waits, so the consumer may be the audio thread.
template <typename T, std::size_t Capacity> class SpscQueue {
    static_assert(Capacity >= 2 && (Capacity & (Capacity - 1)) == 0,
                  "capacity must be a power of two");
    static_assert(std::is_trivially_copyable_v<T>, "items are copied on the audio thread");

public:
    // False when the ring is full; the item is then dropped.
    bool push(const T &item)
    {
        const std::size_t tail = tailIndex.load(std::memory_order_relaxed);
        if (tail - headIndex.load(std::memory_order_acquire) == Capacity)
            return false;
        slots[tail & (Capacity - 1)] = item;
        tailIndex.store(tail + 1, std::memory_order_release);
        return true;
    }

    bool pop(T &item)
    {
        const std::size_t head = headIndex.load(std::memory_order_relaxed);
        if (head == tailIndex.load(std::memory_order_acquire))
            return false;
        item = slots[head & (Capacity - 1)];
        headIndex.store(head + 1, std::memory_order_release);
        return true;
    }

    std::size_t sizeApprox() const
    {
        return tailIndex.load(std::memory_order_acquire) -
               headIndex.load(std::memory_order_acquire);
    }

private:
    std::array<T, Capacity> slots{};
    // Apart on their own cache lines so the two threads don't fight over one.
    alignas(64) std::atomic<std::size_t> headIndex{0};
    alignas(64) std::atomic<std::size_t> tailIndex{0};
};
