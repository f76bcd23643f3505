// The types of primitives that several families have, to declare many of one shape in one line.
#pragma once

#include "sve/decode/library_values.h"

using merging_primitive = VecV(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context);
using vector_primitive = VecV(const VecV& zn, const VecV& zm, CpuContext* context);
using unary_primitive = VecV(const VecV& zn, CpuContext* context);
using comparing_primitive = PredV(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context);
