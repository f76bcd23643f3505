// Fused multiply-add for any vector length: one rounding for the product and the sum.
#pragma once

#include "sve/library/fp_element_loops.h"

// FMLA, FMLS, FNMLA, FNMLS: +-zda[i] +- zn[i] * zm[i] where active, the old zda[i] elsewhere.
using accumulating_primitive = VecV(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm,
                                    CpuContext* context);
accumulating_primitive VecF16FMAVVVM, VecF32FMAVVVM, VecD64FMAVVVM;    // zda + zn * zm
accumulating_primitive VecF16FMSVVVM, VecF32FMSVVVM, VecD64FMSVVVM;    // zda - zn * zm
accumulating_primitive VecF16FNMAVVVM;                                 // -zda - zn * zm
accumulating_primitive VecF16FNMSVVVM, VecF32FNMSVVVM, VecD64FNMSVVVM; // -zda + zn * zm

// FMAD, FMSB, FNMAD, FNMSB: the destination is a factor. +-za[i] +- zdn[i] * zm[i] where active, the old
// zdn[i] elsewhere.
using multiplying_primitive = VecV(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za,
                                   CpuContext* context);
multiplying_primitive VecF16FMADDVVVM, VecF32FMADDVVVM, VecD64FMADDVVVM;    // za + zdn * zm
multiplying_primitive VecF16FMSUBVVVM, VecF32FMSUBVVVM, VecD64FMSUBVVVM;    // za - zdn * zm
multiplying_primitive VecF16FNMADDVVVM, VecF32FNMADDVVVM, VecD64FNMADDVVVM; // -za - zdn * zm
multiplying_primitive VecF16FNMSUBVVVM, VecF32FNMSUBVVVM, VecD64FNMSUBVVVM; // -za + zdn * zm

// FMLA, FMLS, FMUL by element, all elements: zm's factor is the element at `index` of the 128-bit segment
// that element i is in. The index is below the number of elements of a segment.
using indexed_accumulating_primitive = VecV(const VecV& zda, const VecV& zn, const VecV& zm, int index,
                                            CpuContext* context);
indexed_accumulating_primitive VecF16FMAVVVIX, VecF32FMAVVVIX, VecD64FMAVVVIX;
indexed_accumulating_primitive VecF16FMSVVVIX, VecF32FMSVVVIX, VecD64FMSVVVIX;
using indexed_primitive = VecV(const VecV& zn, const VecV& zm, int index, CpuContext* context);
indexed_primitive VecF16MulVVIX, VecF32MulVVIX, VecD64MulVVIX;
