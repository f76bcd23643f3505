// Conversions between floating-point formats and integers for any vector length. They work in containers of
// the wider of the two types: the narrower one stands in the low bits; on reading, the bits above are
// ignored, and on writing cleared, or for a signed integer filled with its sign. Inactive containers keep the
// old zd.
#pragma once

#include "sve/library/fp_element_loops.h"

// FCVT, rounded by RMode: single to half, double to half and to single; half to single and to double, single
// to double. Halves are always those of IEEE 754, and never flushed.
merging_primitive VecH32TruncFVM, VecH64TruncDVM, VecF64TruncDVM;
merging_primitive VecF32ExtndHVM, VecD64ExtndHVM, VecD64ExtndFVM;

// FCVTZS, FCVTZU, towards zero: the name has the container's bits, the integer's bytes, and the format (H, F,
// D). NaNs give 0 and all that is out of range the nearest integer.
merging_primitive VecS16_2FromHVM, VecS32_4FromHVM, VecS64_8FromHVM;
merging_primitive VecU16_2FromHVM, VecU32_4FromHVM, VecU64_8FromHVM;
merging_primitive VecS32_4FromFVM, VecS64_8FromFVM, VecU32_4FromFVM, VecU64_8FromFVM;
merging_primitive VecS64_4FromDVM, VecS64_8FromDVM, VecU64_4FromDVM, VecU64_8FromDVM;

// SCVTF, UCVTF, rounded by RMode: integers of 2, 4 or 8 bytes to half, and unsigned ones of 8 bytes to
// single.
merging_primitive VecF16FromS2VM, VecF16FromS4VM, VecF16FromS8VM;
merging_primitive VecF16FromU2VM, VecF16FromU4VM, VecF16FromU8VM;
merging_primitive VecF64FromU8VM;
