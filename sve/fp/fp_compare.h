// Comparisons, maximum and minimum in the three formats.
#pragma once

#include "sve/fp/fp_unpack.h"

// Whether a and b are equal; false for NaNs, of which only a signalling one raises IOC.
template <class Bits> bool FPCompareEQ(Bits a, Bits b, FPSCR& fpscr);

// Whether a >= b, or a > b; false for NaNs, each of which raises IOC.
template <class Bits> bool FPCompareGE(Bits a, Bits b, FPSCR& fpscr);
template <class Bits> bool FPCompareGT(Bits a, Bits b, FPSCR& fpscr);

// Whether an operand is a NaN; only a signalling one raises IOC.
template <class Bits> bool FPCompareUN(Bits a, Bits b, FPSCR& fpscr);

// The NZCV nibble of a comparison: 3 unordered, 6 equal, 2 greater, 8 less. A quiet NaN raises IOC when
// `signal_all_NaNs` is set, a signalling one always. Single and double only.
template <class Bits> int FPCompare(Bits a, Bits b, bool signal_all_NaNs, FPSCR& fpscr);

// The larger or the smaller operand, +0 being larger than -0; a NaN operand is the result.
template <class Bits> Bits FPMax(Bits a, Bits b, FPSCR& fpscr);
template <class Bits> Bits FPMin(Bits a, Bits b, FPSCR& fpscr);

// The same, but a number is preferred to a quiet NaN.
template <class Bits> Bits FPMaxNum(Bits a, Bits b, FPSCR& fpscr);
template <class Bits> Bits FPMinNum(Bits a, Bits b, FPSCR& fpscr);
