// Rounding to integral values in the same format, for any vector length: of zn[i] where active, the old zd[i]
// elsewhere.
#pragma once

#include "sve/library/fp_element_loops.h"

// FRINTN, FRINTP, FRINTM, FRINTZ, FRINTA: to nearest with ties to even, up, down, towards zero, to nearest
// with ties away from zero. An inexact result raises nothing.
merging_primitive VecF16FRIntNVM, VecF32FRIntNVM, VecD64FRIntNVM;
merging_primitive VecF16FRIntPVM, VecF32FRIntPVM, VecD64FRIntPVM;
merging_primitive VecF16FRIntMVM, VecF32FRIntMVM, VecD64FRIntMVM;
merging_primitive VecF16FRIntZVM, VecF32FRIntZVM, VecD64FRIntZVM;
merging_primitive VecF16FRIntAVM;

// FRINTI and FRINTX: by RMode. FRINTX raises IXC for a result that differs from the operand.
merging_primitive VecF16FRIntIVM, VecF32FRIntIVM, VecD64FRIntIVM;
merging_primitive VecF16FRIntXVM, VecF32FRIntXVM, VecD64FRIntXVM;
