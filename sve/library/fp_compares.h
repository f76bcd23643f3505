// Floating-point compares into predicates for any vector length. The result is false for inactive elements
// and in all bits of an element but the lowest; NZCV stays as it is.
#pragma once

#include "sve/library/fp_element_loops.h"

using fp_zero_comparing_primitive = PredV(const PredV& pg, const VecV& zn, CpuContext* context);

// FCMEQ, FCMGE, FCMGT, FCMNE and FCMUO of zn[i] and zm[i]. With a NaN FCMNE and FCMUO are true, all others
// false. FCMGE and FCMGT raise IOC for every NaN, the others for signalling ones.
comparing_primitive VecF16CmpEQVVZ, VecF16CmpGEVVZ, VecF16CmpGTVVZ, VecF16CmpNEVVZ, VecF16CmpUNVVZ;

// The same of zn[i] and zero, and FCMLE and FCMLT.
fp_zero_comparing_primitive VecF16CmpEQV0Z, VecF16CmpGEV0Z, VecF16CmpGTV0Z, VecF16CmpLEV0Z, VecF16CmpLTV0Z;
fp_zero_comparing_primitive VecF16CmpNEV0Z, VecF32CmpNEV0Z, VecD64CmpNEV0Z;

// FACGE and FACGT: of the absolute values of zn[i] and zm[i].
comparing_primitive VecF16AcGEVVZ, VecF32AcGEVVZ, VecD64AcGEVVZ;
comparing_primitive VecF16AcGTVVZ, VecF32AcGTVVZ, VecD64AcGTVVZ;
