// Complex arithmetic for any vector length. A number takes two neighbouring elements, the real part first;
// each part is active or not by itself.
#pragma once

#include "sve/library/fp_element_loops.h"

// FCADD: zdn + zm turned by 90 degrees (rot 0) or 270 (rot 1), where active; the old zdn elsewhere.
using complex_adding_primitive = VecV(const VecV& zdn, const PredV& pg, const VecV& zm, unsigned rot,
                                      CpuContext* context);
complex_adding_primitive VecF16FCADDVVM, VecF32FCADDVVM, VecD64FCADDVVM;

// FCMLA: half of a complex product, added to zda with one rounding where active; the old zda elsewhere. With
// rot 0 it is zn's real part times zm, with rot 1 zn's imaginary part times zm turned by 90 degrees; rot 2
// and 3 are the same turned by 180 degrees.
using complex_accumulating_primitive = VecV(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm,
                                            unsigned rot, CpuContext* context);
complex_accumulating_primitive VecF16FCMLAVVVM, VecF32FCMLAVVVM, VecD64FCMLAVVVM;

// The same for all elements, zm's factor being number `index` of the 128-bit segment that the element is in:
// below 4 in half precision, below 2 in single.
using complex_indexed_primitive = VecV(const VecV& zda, const VecV& zn, const VecV& zm, unsigned rot,
                                       int index, CpuContext* context);
complex_indexed_primitive VecF16FCMLAVVVIX, VecF32FCMLAVVVIX;
