// A load that may fault and whose machine code has a known length, so that a signal handler can step over it.
#pragma once

#include <cstdint>
#include <ucontext.h>

// Loads one byte and drops it. Written in machine code, so that it is this one instruction whatever the
// compiler thinks of a dropped value, and unseen by the address sanitizer.
inline void load_and_drop(std::uint64_t address) {
#if defined(__aarch64__)
    std::uint32_t value;
    __asm__ volatile("ldrb %w0, [%1]" : "=r"(value) : "r"(address) : "memory");
#elif defined(__x86_64__)
    // With these registers, and only with a few others, two bytes.
    __asm__ volatile("movb (%%rax), %%al" : "+a"(address) : : "memory");
#else
#error "no load of known length for this host"
#endif
}

// The same, but first `place` becomes the address of the load.
inline void load_and_drop(std::uint64_t address, volatile std::uint64_t& place) {
#if defined(__aarch64__)
    std::uint64_t value;
    __asm__ volatile("adr %0, 1f\n\t"
                     "str %0, %1\n"
                     "1:\tldrb %w0, [%2]"
                     : "=&r"(value), "=m"(place)
                     : "r"(address)
                     : "memory");
#else
    __asm__ volatile("leaq 1f(%%rip), %%rax\n\t"
                     "movq %%rax, %0\n"
                     "1:\tmovb (%%rdx), %%al"
                     : "=m"(place)
                     : "d"(address)
                     : "rax", "memory");
#endif
}

// The program counter of an interrupted context.
inline std::uint64_t interrupted_at(const ucontext_t* context) {
#if defined(__aarch64__)
    return context->uc_mcontext.pc;
#else
    return static_cast<std::uint64_t>(context->uc_mcontext.gregs[REG_RIP]);
#endif
}

// Moves the program counter of an interrupted context from the load of `load_and_drop` to what follows it.
inline void step_over_load(ucontext_t* context) {
#if defined(__aarch64__)
    context->uc_mcontext.pc += 4;
#else
    context->uc_mcontext.gregs[REG_RIP] += 2;
#endif
}
