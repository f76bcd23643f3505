// Single accesses to the memory of the program under emulation, which is the emulator's own.
#pragma once

#include <atomic>
#include <cstdint>
#include <type_traits>

// An access of the program under emulation: of exactly this size, once, at any alignment, and in program
// order with the other volatile accesses. The order is seen when one faults, so the compiler must neither
// move nor merge nor vectorise them.
template <class Memory> struct program_access {
    using unaligned __attribute__((aligned(1), may_alias)) = volatile Memory;

    static Memory read(std::uint64_t address) { return *reinterpret_cast<const unaligned*>(address); }

    // The value extended by the signedness of Memory, or truncated. In machine code, because for a volatile
    // read the compiler extends by an instruction of its own.
    template <class Element> static Element read_as(std::uint64_t address) {
#if defined(__aarch64__)
        if constexpr (sizeof(Memory) < sizeof(Element)) {
            const unaligned& memory = *reinterpret_cast<const unaligned*>(address);
            std::uint64_t value;
            if constexpr (sizeof(Memory) == 1 && std::is_signed_v<Memory>)
                asm volatile("ldrsb %0, %1" : "=r"(value) : "m"(memory));
            else if constexpr (sizeof(Memory) == 1)
                asm volatile("ldrb %w0, %1" : "=r"(value) : "m"(memory));
            else if constexpr (sizeof(Memory) == 2 && std::is_signed_v<Memory>)
                asm volatile("ldrsh %0, %1" : "=r"(value) : "m"(memory));
            else if constexpr (sizeof(Memory) == 2)
                asm volatile("ldrh %w0, %1" : "=r"(value) : "m"(memory));
            else if constexpr (std::is_signed_v<Memory>)
                asm volatile("ldrsw %0, %1" : "=r"(value) : "m"(memory));
            else
                asm volatile("ldr %w0, %1" : "=r"(value) : "m"(memory));
            return static_cast<Element>(value);
        }
#endif
        return static_cast<Element>(read(address));
    }
    static void write(std::uint64_t address, Memory value) { *reinterpret_cast<unaligned*>(address) = value; }
};

// Stands between two steps of which the second may fault: whoever looks then, a signal handler or another
// process, finds what the first has stored and nothing of the second.
inline void complete_before_fault() { std::atomic_signal_fence(std::memory_order_seq_cst); }
