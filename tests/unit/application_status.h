// Runs code as a stub of the emulator is run.
#pragma once

#include "sve/decode/cpu_state.h"

// Calls `body` with the state's FPCR and FPSR in the processor, where it is one that has them. FPSR is clear
// afterwards.
template <class Body> void as_application([[maybe_unused]] const cpu_state& state, Body body) {
#if defined(__aarch64__)
    const std::uint64_t fpcr = state.fpcr, fpsr = state.fpsr;
    std::uint64_t own_fpcr;
    asm volatile("mrs %0, fpcr\n\tmsr fpcr, %1\n\tmsr fpsr, %2"
                 : "=&r"(own_fpcr)
                 : "r"(fpcr), "r"(fpsr)
                 : "memory");
    body();
    asm volatile("msr fpcr, %0\n\tmsr fpsr, xzr" : : "r"(own_fpcr) : "memory");
#else
    body();
#endif
}
