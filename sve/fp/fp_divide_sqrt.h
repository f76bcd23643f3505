// Division and square root in the three formats.
#pragma once

#include "sve/fp/fp_round.h"

// a / b. A finite number other than zero divided by zero raises DZC; infinity divided by zero raises nothing.
template <class Bits> Bits FPDiv(Bits a, Bits b, FPSCR& fpscr);

// The square root; that of -0 is -0, that of any other negative number is an invalid operation.
template <class Bits> Bits FPSqrt(Bits a, FPSCR& fpscr);
