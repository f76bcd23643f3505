// The mutexes that the application's C library wants released when a thread ends that holds them. The kernel
// does it at the end of the host's thread, which is later than that of the application's.
#pragma once

#include <cstdint>

inline constexpr std::uint64_t robust_list_head_bytes = 24;

// Marks every futex of the list that the thread owns as left behind, and wakes one waiter of each. `head` is
// the address given to set_robust_list. Where memory of the list cannot be read, the list ends.
void release_robust_futexes(std::uint64_t head, std::uint32_t owner);
