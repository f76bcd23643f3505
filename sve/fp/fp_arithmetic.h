// Addition, subtraction and multiplication, and the operations on the sign, in the three formats. Operands
// and results are the elements' bits; the results are those of IEEE 754 under the control bits of `fpscr`,
// into which the exceptions go.
#pragma once

#include "sve/fp/fp_round.h"

template <class Bits> Bits FPAdd(Bits a, Bits b, FPSCR& fpscr);
template <class Bits> Bits FPSub(Bits a, Bits b, FPSCR& fpscr);
template <class Bits> Bits FPMul(Bits a, Bits b, FPSCR& fpscr);

// FPMul, but for infinity times zero, which is 2.0 with the sign of the product and raises nothing.
template <class Bits> Bits FPMulX(Bits a, Bits b, FPSCR& fpscr);

// The sign inverted, or cleared, of any element whatever; nothing is raised.
template <class Bits> inline Bits FPNeg(Bits value) { return value ^ FPFormat<Bits>::sign_bit; }
template <class Bits> inline Bits FPAbs(Bits value) { return value & FPFormat<Bits>::magnitude_mask; }
