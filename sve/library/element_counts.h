// Counts of elements by predicate pattern: CNTB, CNTH, CNTW and CNTD.
#pragma once

#include "sve/decode/library_values.h"

// The number of elements of 8, 16, 32 or 64 bits that the pattern selects at the context's vector length,
// times imm4 + 1.
unsigned long VecU8CountVLSI(unsigned long pattern, unsigned long imm4, CpuContext* context);
unsigned long VecU16CountVLSI(unsigned long pattern, unsigned long imm4, CpuContext* context);
unsigned long VecU32CountVLSI(unsigned long pattern, unsigned long imm4, CpuContext* context);
unsigned long VecU64CountVLSI(unsigned long pattern, unsigned long imm4, CpuContext* context);
