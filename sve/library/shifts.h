// Vector shifts for any vector length: right shifts of unsigned elements by an immediate, reversed and wide
// forms, division by a power of two. Counts are whole unsigned numbers: one at or above the element's width
// shifts every bit out, and leaves the sign of a signed element.
#pragma once

#include "sve/library/primitive_shapes.h"

// LSR: zn[i] >> shift, shift from 1 to the element's width. The merging form keeps zdn[i] where inactive.
using merging_shift_primitive = VecV(const VecV& zdn, const PredV& pg, unsigned int shift,
                                     CpuContext* context);
using shift_primitive = VecV(const VecV& zn, unsigned int shift, CpuContext* context);
merging_shift_primitive VecU8ShrVIM, VecU16ShrVIM, VecU32ShrVIM, VecU64ShrVIM;
shift_primitive VecU8ShrVIX, VecU16ShrVIX, VecU32ShrVIX, VecU64ShrVIX;

// ASRD: zdn[i] divided by 2 to the shift, rounded towards zero, where active.
merging_shift_primitive VecS8ShrDVIM, VecS16ShrDVIM, VecS32ShrDVIM, VecS64ShrDVIM;

// LSLR, LSRR, ASRR: zm[i] shifted by zdn[i] where active.
merging_primitive VecU8ShlRVVM, VecU16ShlRVVM, VecU32ShlRVVM, VecU64ShlRVVM;
merging_primitive VecU8ShrRVVM, VecU16ShrRVVM, VecU32ShrRVVM, VecU64ShrRVVM;
merging_primitive VecS8ShrRVVM, VecS16ShrRVVM, VecS32ShrRVVM, VecS64ShrRVVM;

// LSL, LSR, ASR with wide counts: each element shifted by the 64-bit lane of zm in which it stands.
merging_primitive VecU8ShlVWM, VecU16ShlVWM, VecU32ShlVWM;
merging_primitive VecU8ShrVWM, VecU16ShrVWM, VecU32ShrVWM;
merging_primitive VecS8ShrVWM, VecS16ShrVWM, VecS32ShrVWM;
vector_primitive VecU8ShlVWX, VecU16ShlVWX, VecU32ShlVWX;
vector_primitive VecU8ShrVWX, VecU16ShrVWX, VecU32ShrVWX;
vector_primitive VecS8ShrVWX, VecS16ShrVWX, VecS32ShrVWX;
