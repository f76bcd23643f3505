// A mutex for what is done so often and takes so little time that calls of the C library's would be most of
// it.
#pragma once

#include <atomic>

// Of the standard library's kind, not recursive. A free one is taken, and one that nobody waits for is given
// up, with one atomic operation in place.
struct inline_mutex {
    enum : int { is_free, is_held, is_awaited };
    std::atomic<int> value = is_free;

    void lock() {
        int expected = is_free;
        if (!value.compare_exchange_strong(expected, is_held, std::memory_order_acquire,
                                           std::memory_order_relaxed)) [[unlikely]]
            wait_and_lock();
    }

    void unlock() {
        if (value.exchange(is_free, std::memory_order_release) == is_awaited) [[unlikely]]
            value.notify_one();
    }

    // Whoever has waited can't know whether others still do, and so holds it as one that is awaited.
    [[gnu::noinline]] void wait_and_lock() {
        while (value.exchange(is_awaited, std::memory_order_acquire) != is_free)
            value.wait(is_awaited, std::memory_order_relaxed);
    }
};
