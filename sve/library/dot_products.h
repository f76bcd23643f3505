// Dot products for any vector length: every element of the accumulator takes the sum of the products of four
// elements of a quarter of its width.
#pragma once

#include "sve/decode/library_values.h"

// SDOT, UDOT: zda[i] plus the sum of zn[4i + j] * zm[4i + j], j from 0 to 3, wrapping.
using dot_primitive = VecV(const VecV& zda, const VecV& zn, const VecV& zm, CpuContext* context);
dot_primitive VecS32DotVVVX, VecS64DotVVVX, VecU32DotVVVX, VecU64DotVVVX;

// The same with the elements of zm taken, in every 128-bit segment, from the group of four that `index`
// picks.
using indexed_dot_primitive = VecV(const VecV& zda, const VecV& zn, const VecV& zm, int index,
                                   CpuContext* context);
indexed_dot_primitive VecS32DotVVVIX, VecS64DotVVVIX, VecU32DotVVVIX, VecU64DotVVVIX;
