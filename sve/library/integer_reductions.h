// Reductions of an integer vector to a scalar, for any vector length.
#pragma once

#include "sve/decode/library_values.h"

// SADDV: the sum of the active elements, sign-extended to 64 bits; 0 if there is none.
std::uint64_t VecS8AddReduceV(const PredV& pg, const VecV& zn, CpuContext* context);
std::uint64_t VecS16AddReduceV(const PredV& pg, const VecV& zn, CpuContext* context);
std::uint64_t VecS32AddReduceV(const PredV& pg, const VecV& zn, CpuContext* context);
