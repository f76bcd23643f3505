// Control and status of the floating-point kernels: the FPSCR record that every kernel takes, the rounding
// modes, and the two words that the kernels work with inside: the mode word and the flags word.
#pragma once

#include <cstdint>

// The rounding modes. The first four have the values of RMode in FPCR; the other two are only given
// explicitly.
enum FPRounding : int {
    FPRounding_TIEEVEN = 0,
    FPRounding_POSINF = 1,
    FPRounding_NEGINF = 2,
    FPRounding_ZERO = 3,
    FPRounding_TIEAWAY = 4,
    FPRounding_ODD = 5,
};

// The exception bits, in the places that they have in FPSR; the flags word of a kernel holds them too.
enum FPFlag : int {
    FPFlag_IOC = 1 << 0, // invalid operation
    FPFlag_DZC = 1 << 1, // division by zero
    FPFlag_OFC = 1 << 2, // overflow
    FPFlag_UFC = 1 << 3, // underflow
    FPFlag_IXC = 1 << 4, // inexact
    FPFlag_IDC = 1 << 7, // input denormal flushed to zero
};

// The mode word: what a kernel takes from the control bits once, on entry. Bits 1:0 are RMode.
enum FPMode : int {
    FPMode_RMode = 3,
    FPMode_FZ = 1 << 2,   // single and double denormals are flushed to zero
    FPMode_DN = 1 << 3,   // every NaN result is the default NaN
    FPMode_AHP = 1 << 4,  // alternative half precision; only conversions put it into their mode word
    FPMode_FZ16 = 1 << 5, // half denormals are flushed to zero
};

// The control bits of an operation, as FPCR has them, and the exceptions that it raises, as FPSR has them, in
// one word. A kernel sets exception bits and never clears one.
struct FPSCR {
    static constexpr std::uint32_t FZ16 = 1u << 19;
    static constexpr std::uint32_t RMode = 3u << 22;
    static constexpr std::uint32_t FZ = 1u << 24;
    static constexpr std::uint32_t DN = 1u << 25;
    static constexpr std::uint32_t AHP = 1u << 26;

    std::uint32_t bits = 0;

    // The rounding mode in RMode.
    FPRounding rounding() const { return static_cast<FPRounding>((bits >> 22) & 3); }

    // The mode word of everything but the half-precision conversions: AHP isn't in it.
    int mode() const { return static_cast<int>(((bits >> 22) & 15) | ((bits & FZ16) >> 14)); }

    // AHP in its place in the mode word.
    int alternative_half_mode() const { return static_cast<int>((bits & AHP) >> 22); }

    // Adds the exceptions of a flags word.
    void raise(int flags) { bits |= static_cast<std::uint32_t>(flags); }
};
