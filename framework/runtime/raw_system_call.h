// A system call straight to the kernel: no errno, no cancellation, no wrapper's opinion.
#pragma once

#include <cstdint>

// Returns what the kernel leaves in X0, a negated error number if it failed.
inline std::uint64_t raw_system_call(std::uint64_t number, std::uint64_t a0 = 0, std::uint64_t a1 = 0,
                                     std::uint64_t a2 = 0, std::uint64_t a3 = 0, std::uint64_t a4 = 0,
                                     std::uint64_t a5 = 0) {
    register std::uint64_t x8 asm("x8") = number;
    register std::uint64_t x0 asm("x0") = a0;
    register std::uint64_t x1 asm("x1") = a1;
    register std::uint64_t x2 asm("x2") = a2;
    register std::uint64_t x3 asm("x3") = a3;
    register std::uint64_t x4 asm("x4") = a4;
    register std::uint64_t x5 asm("x5") = a5;
    asm volatile("svc #0" : "+r"(x0) : "r"(x1), "r"(x2), "r"(x3), "r"(x4), "r"(x5), "r"(x8) : "memory");
    return x0;
}

// True if a result of raw_system_call is an error.
inline bool is_error(std::uint64_t result) { return result >= static_cast<std::uint64_t>(-4095); }
