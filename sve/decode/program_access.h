// Single accesses to the memory of the program under emulation, which is the emulator's own.
#pragma once

#include <atomic>
#include <cstdint>

// An access of the program under emulation: of exactly this size, once, at any alignment, and in program
// order with the other volatile accesses. The order is seen when one faults, so the compiler must neither
// move nor merge nor vectorise them.
template <class Memory> struct program_access {
    using unaligned __attribute__((aligned(1), may_alias)) = volatile Memory;

    static Memory read(std::uint64_t address) { return *reinterpret_cast<const unaligned*>(address); }
    static void write(std::uint64_t address, Memory value) { *reinterpret_cast<unaligned*>(address) = value; }
};

// Stands between two steps of which the second may fault: whoever looks then, a signal handler or another
// process, finds what the first has stored and nothing of the second.
inline void complete_before_fault() { std::atomic_signal_fence(std::memory_order_seq_cst); }
