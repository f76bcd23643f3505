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

// Moves the program counter of an interrupted context from the load of `load_and_drop` to what follows it.
inline void step_over_load(ucontext_t* context) {
#if defined(__aarch64__)
    context->uc_mcontext.pc += 4;
#else
    context->uc_mcontext.gregs[REG_RIP] += 2;
#endif
}
