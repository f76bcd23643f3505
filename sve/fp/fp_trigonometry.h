// The accelerators for exponentials and trigonometric series: FEXPA, FTMAD and FTSMUL.
#pragma once

#include "sve/fp/fp_round.h"

// 2^(index / entries) with an exponent field of its own: the low 5 bits of the operand (6 in single and
// double) are the index, and those above it the biased exponent.
template <class Bits> Bits FPEXPA(Bits a);

// One step of a polynomial: coefficient + a * |b|, rounded once. The index, 0 to 7, counts the coefficients
// of the sine, or, when b's sign is set, of the cosine.
template <class Bits> Bits FPTRIMADD(unsigned long index, Bits a, Bits b, FPSCR& fpscr);

// a * a with bit 0 of b as its sign, unless it is a NaN.
template <class Bits> Bits FPTRISMUL(Bits a, Bits b, FPSCR& fpscr);
