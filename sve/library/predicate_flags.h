// The condition flags of a predicate result, and searches for active elements, at any vector length.
//
// Element sizes are 8, 16, 32 or 64 bits; of any other size there are no elements. Of a governing predicate
// only the lowest bit of each element's group counts. Of a result, N takes the lowest bit of the group, while
// Z and C ask whether any bit of the group is set. Each routine replaces the flags that it names and keeps
// every other bit of nzcv.
#pragma once

#include "sve/decode/library_values.h"

// N: the first active element's lowest bit is set; Z: no active element has a bit set; C: the last active
// element has no bit set. If no active element has a bit set, and so if none is active, N = 0, Z = 1, C = 1.
// V keeps its value.
void PredSetNZC(const PredV& governing, const PredV& result, int element_bits, CpuContext* context);

// As PredSetNZC, and V = 0: the flags of every instruction that sets flags from a predicate.
void PredSetNZCV(const PredV& governing, const PredV& result, int element_bits, CpuContext* context);

// N and C as PredSetNZC, with N = 0, C = 1 if no active element has a bit set; V = 0. Z keeps its value.
void PredSetNCV(const PredV& governing, const PredV& result, int element_bits, CpuContext* context);

// N from the first active element and C from the last. If no element is active, all flags keep their values;
// Z and V always do.
void PredSetNC(const PredV& governing, const PredV& result, int element_bits, CpuContext* context);

// The index of the first or last active element, or -1 if none is active.
int FindFirstActive(const PredV& predicate, int element_bits, CpuContext* context);
int FindLastActive(const PredV& predicate, int element_bits, CpuContext* context);

// PTEST: the flags of pn governed by pg, bit by bit.
void VecPTestPZ(const PredV& pg, const PredV& pn, CpuContext* context);
