// Merging operations on one integer vector for any vector length: zn[i] goes through the operation where the
// predicate is active, and zd[i] stays elsewhere.
#pragma once

#include "sve/library/primitive_shapes.h"

// ABS: that of the most negative element is that element.
merging_primitive VecS8AbsVM, VecS16AbsVM, VecS32AbsVM, VecS64AbsVM;

// NOT: the bitwise complement.
merging_primitive VecU8InvVM, VecU16InvVM, VecU32InvVM, VecU64InvVM;

// CNOT: 1 for an element of 0, and 0 for any other.
merging_primitive VecU8NotVM, VecU16NotVM, VecU32NotVM, VecU64NotVM;

// CNT, CLS, CLZ: the number of set bits, of bits equal to the sign below it, of zeros at the top.
merging_primitive VecU8CntVM, VecU16CntVM, VecU32CntVM, VecU64CntVM;
merging_primitive VecU8ClsVM, VecU16ClsVM, VecU32ClsVM, VecU64ClsVM;
merging_primitive VecU8ClzVM, VecU16ClzVM, VecU32ClzVM, VecU64ClzVM;

// REVB, REVH: the bytes, or the halfwords, of each element in opposite order.
merging_primitive VecU16Rev1V, VecU32Rev1V, VecU64Rev1V;
merging_primitive VecU32Rev2V, VecU64Rev2V;

// UXTB: the low byte, zero-extended.
merging_primitive VecU16Extnd12VM, VecU32Extnd14VM, VecU64Extnd18VM;
