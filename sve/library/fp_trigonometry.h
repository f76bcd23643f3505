// Accelerators of sines, cosines and exponentials for any vector length; all elements take part.
#pragma once

#include "sve/library/fp_element_loops.h"

// FTMAD: a step of a polynomial, coefficient + zdn[i] * |zm[i]|, rounded once. The index, 0 to 7, counts the
// coefficients, those of the cosine where zm[i] is negative and those of the sine elsewhere.
using coefficient_primitive = VecV(const VecV& zdn, const VecV& zm, unsigned index, CpuContext* context);
coefficient_primitive VecF16TRIMADDVVI, VecF32TRIMADDVVI, VecD64TRIMADDVVI;

// FTSMUL: zn[i] * zn[i] with bit 0 of zm[i] as its sign.
vector_primitive VecF16TRISMULVV, VecF32TRISMULVV, VecD64TRISMULVV;

// FTSSEL: 1.0 where bit 0 of zm[i] is set, else zn[i], with the sign inverted where bit 1 is set. Raises
// nothing.
vector_primitive VecF16TRISSELVV, VecF32TRISSELVV, VecD64TRISSELVV;

// FEXPA: 2 to the power of a fraction, zn[i]'s low 5 or 6 bits, with the exponent field that stands above
// them. Raises nothing.
unary_primitive VecF16EXPAV, VecF32EXPAV, VecD64EXPAV;
