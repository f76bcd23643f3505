#include "sve/library/fp_rounding.h"

#include "sve/fp/fp_convert.h"

// Rounds to integral by a mode of the instruction's own.
template <class Bits, FPRounding rounding> static Bits round_by(Bits value, FPSCR& fpscr) {
    return FPRoundInt(value, rounding, false, fpscr);
}

// Rounds to integral by RMode; the exact form raises IXC when that changes the value.
template <class Bits, bool exact> static Bits round_by_mode(Bits value, FPSCR& fpscr) {
    return FPRoundInt(value, fpscr.rounding(), exact, fpscr);
}

VecV VecF16FRIntNVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<half_bits, round_by<half_bits, FPRounding_TIEEVEN>>(zd, pg, zn, context);
}
VecV VecF32FRIntNVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<single_bits, round_by<single_bits, FPRounding_TIEEVEN>>(zd, pg, zn, context);
}
VecV VecD64FRIntNVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<double_bits, round_by<double_bits, FPRounding_TIEEVEN>>(zd, pg, zn, context);
}

VecV VecF16FRIntPVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<half_bits, round_by<half_bits, FPRounding_POSINF>>(zd, pg, zn, context);
}
VecV VecF32FRIntPVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<single_bits, round_by<single_bits, FPRounding_POSINF>>(zd, pg, zn, context);
}
VecV VecD64FRIntPVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<double_bits, round_by<double_bits, FPRounding_POSINF>>(zd, pg, zn, context);
}

VecV VecF16FRIntMVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<half_bits, round_by<half_bits, FPRounding_NEGINF>>(zd, pg, zn, context);
}
VecV VecF32FRIntMVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<single_bits, round_by<single_bits, FPRounding_NEGINF>>(zd, pg, zn, context);
}
VecV VecD64FRIntMVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<double_bits, round_by<double_bits, FPRounding_NEGINF>>(zd, pg, zn, context);
}

VecV VecF16FRIntZVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<half_bits, round_by<half_bits, FPRounding_ZERO>>(zd, pg, zn, context);
}
VecV VecF32FRIntZVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<single_bits, round_by<single_bits, FPRounding_ZERO>>(zd, pg, zn, context);
}
VecV VecD64FRIntZVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<double_bits, round_by<double_bits, FPRounding_ZERO>>(zd, pg, zn, context);
}

VecV VecF16FRIntAVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<half_bits, round_by<half_bits, FPRounding_TIEAWAY>>(zd, pg, zn, context);
}

VecV VecF16FRIntIVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<half_bits, round_by_mode<half_bits, false>>(zd, pg, zn, context);
}
VecV VecF32FRIntIVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<single_bits, round_by_mode<single_bits, false>>(zd, pg, zn, context);
}
VecV VecD64FRIntIVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<double_bits, round_by_mode<double_bits, false>>(zd, pg, zn, context);
}

VecV VecF16FRIntXVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<half_bits, round_by_mode<half_bits, true>>(zd, pg, zn, context);
}
VecV VecF32FRIntXVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<single_bits, round_by_mode<single_bits, true>>(zd, pg, zn, context);
}
VecV VecD64FRIntXVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<double_bits, round_by_mode<double_bits, true>>(zd, pg, zn, context);
}
