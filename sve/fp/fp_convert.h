// Conversions between the three formats, and between them and integers, and rounding to integral values.
#pragma once

#include "sve/fp/fp_round.h"

// The value in another format. Widening is exact; narrowing rounds by `rm` and never flushes a tiny half.
// With AHP set a half has no infinities and NaNs: its exponent 31 is an ordinary one, and what it can't hold
// is an invalid operation.
template <class From, class To> To FPConvert(From value, FPRounding rm, FPSCR& fpscr);

// value * 2^fbits as an integer of To's width, signed or not, rounded by `rm` (any but round to odd). NaNs
// give 0, everything out of range the nearest integer, both as an invalid operation.
template <class From, class To>
To fplibFPToFixed(From value, int fbits, bool is_unsigned, FPRounding rm, FPSCR& fpscr);

// The same for the finite number mantissa * 2^(exp - 1023 - 52), whose leading bit is bit 52 or lower, to 64
// bits. Sets the flags word to IOC or IXC if the result is invalid or inexact.
unsigned long FPToFixed_64(int sign, int exp, unsigned long mantissa, bool is_unsigned, FPRounding rm,
                           int* flags);

// The 64-bit integer, signed or not, divided by 2^fbits and rounded by `rm`. Never flushes a half.
template <class Bits>
Bits fplibFixedToFP(unsigned long value, int fbits, bool is_unsigned, FPRounding rm, FPSCR& fpscr);

// The value rounded by `rm` (any but round to odd) to an integral one in its format. With `exact` a result
// that differs from the operand raises IXC.
template <class Bits> Bits FPRoundInt(Bits value, FPRounding rm, bool exact, FPSCR& fpscr);
