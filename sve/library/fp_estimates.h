// Estimates of reciprocals and of reciprocal square roots, and the steps that refine them, for any vector
// length.
#pragma once

#include "sve/library/fp_element_loops.h"

// FRECPE, FRSQRTE: about 1 / zn[i] and 1 / sqrt(zn[i]), to eight bits, all elements.
unary_primitive VecF16RecpEV;
unary_primitive VecF16RSqrtEV, VecF32RSqrtEV, VecD64RSqrtEV;

// FRECPS, FRSQRTS: 2 - zn[i] * zm[i] and (3 - zn[i] * zm[i]) / 2, rounded once, all elements.
vector_primitive VecF16RecpSVV;
vector_primitive VecF16RSqrtSVV, VecF32RSqrtSVV, VecD64RSqrtSVV;

// FRECPX: a power of two of about the size of 1 / zn[i] where active, the old zd[i] elsewhere.
merging_primitive VecF16RecpXVM, VecF32RecpXVM, VecD64RecpXVM;
