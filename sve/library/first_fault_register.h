// The first-fault register as a predicate.
#pragma once

#include "sve/decode/library_values.h"

// RDFFRS: the first-fault register where pg is set, 0 elsewhere; sets the flags of that result under pg.
PredV VecPActualFlgP(const PredV& pg, CpuContext* context);
