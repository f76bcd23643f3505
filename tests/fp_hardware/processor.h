// Runs one floating-point instruction on the processor, and gives its result and the exceptions that it
// raised. FPCR is set beforehand, once for many instructions.
#pragma once

#include <cstdint>

struct fp_outcome {
    std::uint64_t result;
    std::uint64_t exceptions; // FPSR
};

using processor_function = fp_outcome (*)(std::uint64_t a, std::uint64_t b, std::uint64_t c);

inline void set_fpcr(std::uint64_t fpcr) { asm volatile("msr fpcr, %0" : : "r"(fpcr)); }

// The instruction's operands are named %h2, %h3 and %h4 (or s, d), its result %h0.
#define FP_INSTRUCTION(instruction)                                                                          \
    [](std::uint64_t a, std::uint64_t b, std::uint64_t c) {                                                  \
        fp_outcome outcome;                                                                                  \
        asm volatile("msr fpsr, xzr\n\t" instruction "\n\tmrs %1, fpsr"                                      \
                     : "=&w"(outcome.result), "=&r"(outcome.exceptions)                                      \
                     : "w"(a), "w"(b), "w"(c)                                                                \
                     : "cc");                                                                                \
        return outcome;                                                                                      \
    }

// The result is in a general register: %w0 or %x0.
#define FP_TO_GENERAL(instruction)                                                                           \
    [](std::uint64_t a, std::uint64_t b, std::uint64_t) {                                                    \
        fp_outcome outcome;                                                                                  \
        asm volatile("msr fpsr, xzr\n\t" instruction "\n\tmrs %1, fpsr"                                      \
                     : "=&r"(outcome.result), "=&r"(outcome.exceptions)                                      \
                     : "w"(a), "w"(b)                                                                        \
                     : "cc");                                                                                \
        return outcome;                                                                                      \
    }

// The operand is in a general register: %w2 or %x2.
#define FP_FROM_GENERAL(instruction)                                                                         \
    [](std::uint64_t a, std::uint64_t, std::uint64_t) {                                                      \
        fp_outcome outcome;                                                                                  \
        asm volatile("msr fpsr, xzr\n\t" instruction "\n\tmrs %1, fpsr"                                      \
                     : "=&w"(outcome.result), "=&r"(outcome.exceptions)                                      \
                     : "r"(a));                                                                              \
        return outcome;                                                                                      \
    }

// A vector instruction on z0, with z1 and z2 (their first elements are the operands, the others 0), under p0.
#define FP_VECTOR(instruction)                                                                               \
    [](std::uint64_t a, std::uint64_t b, std::uint64_t c) {                                                  \
        fp_outcome outcome;                                                                                  \
        asm volatile(                                                                                        \
            ".arch_extension sve\n\tfmov d0, %2\n\tfmov d1, %3\n\tfmov d2, %4\n\tptrue p0.d, vl1\n\t"        \
            "msr fpsr, xzr\n\t" instruction "\n\tmrs %1, fpsr\n\tfmov %0, d0"                                \
            : "=&r"(outcome.result), "=&r"(outcome.exceptions)                                               \
            : "r"(a), "r"(b), "r"(c)                                                                         \
            : "v0", "v1", "v2", "cc");                                                                       \
        return outcome;                                                                                      \
    }
