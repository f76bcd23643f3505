#include "sve/library/fp_estimates.h"

#include "sve/fp/fp_estimates.h"

VecV VecF16RecpEV(const VecV& zn, CpuContext* context) {
    return fp_map<half_bits, FPRecipEstimate<half_bits>>(zn, context);
}

VecV VecF16RSqrtEV(const VecV& zn, CpuContext* context) {
    return fp_map<half_bits, FPRSqrtEstimate<half_bits>>(zn, context);
}
VecV VecF32RSqrtEV(const VecV& zn, CpuContext* context) {
    return fp_map<single_bits, FPRSqrtEstimate<single_bits>>(zn, context);
}
VecV VecD64RSqrtEV(const VecV& zn, CpuContext* context) {
    return fp_map<double_bits, FPRSqrtEstimate<double_bits>>(zn, context);
}

VecV VecF16RecpSVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return fp_map<half_bits, FPRecipStepFused<half_bits>>(zn, zm, context);
}

VecV VecF16RSqrtSVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return fp_map<half_bits, FPRSqrtStepFused<half_bits>>(zn, zm, context);
}
VecV VecF32RSqrtSVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return fp_map<single_bits, FPRSqrtStepFused<single_bits>>(zn, zm, context);
}
VecV VecD64RSqrtSVV(const VecV& zn, const VecV& zm, CpuContext* context) {
    return fp_map<double_bits, FPRSqrtStepFused<double_bits>>(zn, zm, context);
}

VecV VecF16RecpXVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<half_bits, FPRecpX<half_bits>>(zd, pg, zn, context);
}
VecV VecF32RecpXVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<single_bits, FPRecpX<single_bits>>(zd, pg, zn, context);
}
VecV VecD64RecpXVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<double_bits, FPRecpX<double_bits>>(zd, pg, zn, context);
}
