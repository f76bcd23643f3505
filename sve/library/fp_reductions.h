// Reductions of a floating-point vector to a scalar, for any vector length.
#pragma once

#include "sve/library/fp_element_loops.h"

template <class Bits> using fp_reduction = Bits(const PredV& pg, const VecV& zn, CpuContext* context);

// FADDV, FMAXV, FMINV: a balanced tree of additions, maxima or minima over the elements in their order,
// filled up to a power of two. Inactive elements and those that fill up count as +0, -infinity and +infinity,
// and take part as such.
fp_reduction<half_bits> VecF16AddReduceFV, VecF16MaxReduceFV, VecF16MinReduceFV;
fp_reduction<single_bits> VecF32AddReduceFV, VecF32MaxReduceFV, VecF32MinReduceFV;
fp_reduction<double_bits> VecD64AddReduceFV, VecD64MaxReduceFV, VecD64MinReduceFV;

// FMAXNMV, FMINNMV: the same, preferring numbers to quiet NaNs; others count as the default NaN.
fp_reduction<half_bits> VecF16MaxNumReduceFV, VecF16MinNumReduceFV;

// FADDA: the initial value plus the active elements, one after the other in their order.
half_bits VecF16AddReduceAV(const PredV& pg, half_bits initial, const VecV& zm, CpuContext* context);
single_bits VecF32AddReduceAV(const PredV& pg, single_bits initial, const VecV& zm, CpuContext* context);
double_bits VecD64AddReduceAV(const PredV& pg, double_bits initial, const VecV& zm, CpuContext* context);
