// Estimates of reciprocals and of reciprocal square roots, the steps that refine them, and FRECPX.
#pragma once

#include "sve/fp/fp_round.h"

// 1 / a and 1 / sqrt(a) with eight bits: FRECPE and FRSQRTE. A zero gives infinity and raises DZC. Nothing is
// inexact but an overflow.
template <class Bits> Bits FPRecipEstimate(Bits a, FPSCR& fpscr);
template <class Bits> Bits FPRSqrtEstimate(Bits a, FPSCR& fpscr);

// 2 - a * b and (3 - a * b) / 2, rounded once: FRECPS and FRSQRTS. Infinity times zero counts as 0. A NaN in
// a comes out with its sign inverted.
template <class Bits> Bits FPRecipStepFused(Bits a, Bits b, FPSCR& fpscr);
template <class Bits> Bits FPRSqrtStepFused(Bits a, Bits b, FPSCR& fpscr);

// A power of two of about the size of 1 / a, with a's sign: FRECPX.
template <class Bits> Bits FPRecpX(Bits a, FPSCR& fpscr);

// 1 / x and 1 / sqrt(x) in 256ths, for x in [0.5, 1) and [0.25, 1): what the estimates are made of.
double recip_estimate(double x);
double recip_sqrt_estimate(double x);

// The estimates of unsigned 32-bit fractions, URECPE and URSQRTE: of operand / 2^32 the result, in [1, 2),
// times 2^31. All ones for operands below 1/2, or 1/4. `width` is the operand's width in bits, of which there
// is but 32.
unsigned long UnsignedRecipEstimate(unsigned long operand, int width);
unsigned long UnsignedRSqrtEstimate(unsigned long operand, int width);
