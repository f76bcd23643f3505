// The fused multiply-add in the three formats: one rounding for a product and a sum.
#pragma once

#include "sve/fp/fp_round.h"

// addend + op1 * op2, rounded once by RMode. Of NaN operands the addend comes first.
template <class Bits> Bits FPMulAdd(Bits addend, Bits op1, Bits op2, FPSCR& fpscr);

// (a + b * c) * 2^scale, rounded once, with the control bits in the mode word and the exceptions ORed into
// `flags`. The scale is 0 or negative. A quiet NaN added to infinity times zero is an invalid operation.
unsigned short fp16_muladd(unsigned short a, unsigned short b, unsigned short c, int scale, int mode,
                           int* flags);
unsigned int fp32_muladd(unsigned int a, unsigned int b, unsigned int c, int scale, int mode, int* flags);
unsigned long fp64_muladd(unsigned long a, unsigned long b, unsigned long c, int scale, int mode, int* flags);

// The same by element type.
inline std::uint16_t fp_muladd(std::uint16_t a, std::uint16_t b, std::uint16_t c, int scale, int mode,
                               int* flags) {
    return fp16_muladd(a, b, c, scale, mode, flags);
}
inline std::uint32_t fp_muladd(std::uint32_t a, std::uint32_t b, std::uint32_t c, int scale, int mode,
                               int* flags) {
    return fp32_muladd(a, b, c, scale, mode, flags);
}
inline std::uint64_t fp_muladd(std::uint64_t a, std::uint64_t b, std::uint64_t c, int scale, int mode,
                               int* flags) {
    return fp64_muladd(a, b, c, scale, mode, flags);
}
