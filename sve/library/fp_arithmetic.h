// Floating-point arithmetic on one or two operands for any vector length. A primitive's name gives the format
// of its elements; a format that is left out is carried out on the register file directly.
#pragma once

#include "sve/library/fp_element_loops.h"

// FADD, FSUB, FSUBR, FMUL, FDIV, FDIVR, FMAX, FMAXNM, FMINNM: zdn[i] and zm[i] where active. The reversed
// forms compute zm[i] - zdn[i] and zm[i] / zdn[i].
merging_primitive VecF16AddVVM, VecF16SubVVM, VecF16SubRVVM, VecF16MulVVM, VecF16DivVVM, VecF16DivRVVM;
merging_primitive VecF16MaxVVM, VecF16MaxNumVVM, VecF16MinNumVVM;

// FMIN, FMULX, and FABD, the absolute value of zdn[i] - zm[i], where active.
merging_primitive VecF16MinVVM, VecF32MinVVM, VecD64MinVVM;
merging_primitive VecF16MulXVVM, VecF32MulXVVM, VecD64MulXVVM;
merging_primitive VecF16AbdVVM, VecF32AbdVVM, VecD64AbdVVM;

// FSCALE: zdn[i] * 2^zm[i] where active, zm[i] being a signed integer of the element's width.
merging_primitive VecF16ScaleVVM, VecF32ScaleVVM, VecD64ScaleVVM;

// FADD, FSUB, FMUL: zn[i] and zm[i], all elements.
vector_primitive VecF16AddVVX, VecF16SubVVX, VecF16MulVVX;

// The type of an operation with a constant, of two that the flag i1, 0 or 1, chooses between.
using constant_primitive = VecV(const VecV& zdn, const PredV& pg, int i1, CpuContext* context);

// FADD, FSUB, FSUBR with 0.5 or 1.0, FMUL with 0.5 or 2.0, where active.
constant_primitive VecF16AddVIM, VecF16SubVIM, VecF16SubRVIM, VecF16MulVIM;

// FMAX, FMIN, FMAXNM, FMINNM with 0.0 or 1.0, where active.
constant_primitive VecF16MaxVIM, VecF32MaxVIM, VecD64MaxVIM;
constant_primitive VecF16MinVIM, VecF32MinVIM, VecD64MinVIM;
constant_primitive VecF16MaxNumVIM, VecF32MaxNumVIM, VecD64MaxNumVIM;
constant_primitive VecF16MinNumVIM, VecF32MinNumVIM, VecD64MinNumVIM;

// FSQRT, and FNEG and FABS, which touch the sign alone and raise nothing: of zn[i] where active, the old
// zd[i] elsewhere.
merging_primitive VecF16SqrtVM, VecF16NegVM;
merging_primitive VecF16AbsVM, VecF32AbsVM, VecD64AbsVM;

// FCPY: the bits of `value` where active, the old zd[i] elsewhere.
VecV VecF16DupIM(const VecV& zd, const PredV& pg, half_bits value, CpuContext* context);
VecV VecF32DupIM(const VecV& zd, const PredV& pg, single_bits value, CpuContext* context);
VecV VecD64DupIM(const VecV& zd, const PredV& pg, double_bits value, CpuContext* context);
