#include "sve/library/fp_arithmetic.h"

#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_compare.h"
#include "sve/fp/fp_divide_sqrt.h"
#include "sve/library/chunk_loops.h"

// The second operand less the first, and over it.
template <class Bits> static Bits subtract_reversed(Bits a, Bits b, FPSCR& fpscr) {
    return FPSub(b, a, fpscr);
}
template <class Bits> static Bits divide_reversed(Bits a, Bits b, FPSCR& fpscr) { return FPDiv(b, a, fpscr); }

// A NaN result loses its sign like any other.
template <class Bits> static Bits absolute_difference(Bits a, Bits b, FPSCR& fpscr) {
    return FPAbs(FPSub(a, b, fpscr));
}

// a * 2^b, b being a signed integer.
static half_bits scale(half_bits a, half_bits b, FPSCR& fpscr) {
    return FPScale16(a, static_cast<std::int16_t>(b), fpscr);
}
static single_bits scale(single_bits a, single_bits b, FPSCR& fpscr) {
    return FPScale32(a, static_cast<std::int32_t>(b), fpscr);
}
static double_bits scale(double_bits a, double_bits b, FPSCR& fpscr) {
    return FPScale64(a, static_cast<std::int64_t>(b), fpscr);
}
template <class Bits> static Bits scale_by(Bits a, Bits b, FPSCR& fpscr) { return scale(a, b, fpscr); }

template <class Bits>
static VecV absolute(const VecV& zd, const PredV& pg, const VecV& zn, const CpuContext* context) {
    return merge_chunks<Bits>(zd, pg, zn, context, [](auto a) { return a & FPFormat<Bits>::magnitude_mask; });
}
template <class Bits>
static VecV negate(const VecV& zd, const PredV& pg, const VecV& zn, const CpuContext* context) {
    return merge_chunks<Bits>(zd, pg, zn, context, [](auto a) { return a ^ FPFormat<Bits>::sign_bit; });
}
template <class Bits>
static VecV copy(const VecV& zd, const PredV& pg, Bits value, const CpuContext* context) {
    return merge_each_chunk<Bits>(zd, pg, context, [=](int) { return broadcast(value); });
}

// The constants that the flag of an immediate form selects. They are exact in every format, so that they are
// what a conversion in any mode would give, and raise nothing.
template <class Bits> static Bits half_or_one(int i1) {
    return i1 ? FPFormat<Bits>::power_of_two(0) : FPFormat<Bits>::power_of_two(-1);
}
template <class Bits> static Bits half_or_two(int i1) {
    return i1 ? FPFormat<Bits>::power_of_two(1) : FPFormat<Bits>::power_of_two(-1);
}
template <class Bits> static Bits zero_or_one(int i1) {
    return i1 ? FPFormat<Bits>::power_of_two(0) : Bits{0};
}

VecV VecF16AddVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<half_bits, FPAdd<half_bits>>(zdn, pg, zm, context);
}
VecV VecF16SubVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<half_bits, FPSub<half_bits>>(zdn, pg, zm, context);
}
VecV VecF16SubRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<half_bits, subtract_reversed<half_bits>>(zdn, pg, zm, context);
}
VecV VecF16MulVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<half_bits, FPMul<half_bits>>(zdn, pg, zm, context);
}
VecV VecF16DivVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<half_bits, FPDiv<half_bits>>(zdn, pg, zm, context);
}
VecV VecF16DivRVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<half_bits, divide_reversed<half_bits>>(zdn, pg, zm, context);
}
VecV VecF16MaxVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<half_bits, FPMax<half_bits>>(zdn, pg, zm, context);
}
VecV VecF16MaxNumVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<half_bits, FPMaxNum<half_bits>>(zdn, pg, zm, context);
}
VecV VecF16MinNumVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<half_bits, FPMinNum<half_bits>>(zdn, pg, zm, context);
}

VecV VecF16MinVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<half_bits, FPMin<half_bits>>(zdn, pg, zm, context);
}
VecV VecF32MinVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<single_bits, FPMin<single_bits>>(zdn, pg, zm, context);
}
VecV VecD64MinVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<double_bits, FPMin<double_bits>>(zdn, pg, zm, context);
}

VecV VecF16MulXVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<half_bits, FPMulX<half_bits>>(zdn, pg, zm, context);
}
VecV VecF32MulXVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<single_bits, FPMulX<single_bits>>(zdn, pg, zm, context);
}
VecV VecD64MulXVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<double_bits, FPMulX<double_bits>>(zdn, pg, zm, context);
}

VecV VecF16AbdVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<half_bits, absolute_difference<half_bits>>(zdn, pg, zm, context);
}
VecV VecF32AbdVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<single_bits, absolute_difference<single_bits>>(zdn, pg, zm, context);
}
VecV VecD64AbdVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<double_bits, absolute_difference<double_bits>>(zdn, pg, zm, context);
}

VecV VecF16ScaleVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<half_bits, scale_by<half_bits>>(zdn, pg, zm, context);
}
VecV VecF32ScaleVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<single_bits, scale_by<single_bits>>(zdn, pg, zm, context);
}
VecV VecD64ScaleVVM(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {
    return fp_merge_binary<double_bits, scale_by<double_bits>>(zdn, pg, zm, context);
}

VecV VecF16AddVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return fp_map<half_bits, FPAdd<half_bits>>(zn, zm, context);
}
VecV VecF16SubVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return fp_map<half_bits, FPSub<half_bits>>(zn, zm, context);
}
VecV VecF16MulVVX(const VecV& zn, const VecV& zm, CpuContext* context) {
    return fp_map<half_bits, FPMul<half_bits>>(zn, zm, context);
}

VecV VecF16AddVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<half_bits, FPAdd<half_bits>>(zdn, pg, half_or_one<half_bits>(i1), context);
}
VecV VecF16SubVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<half_bits, FPSub<half_bits>>(zdn, pg, half_or_one<half_bits>(i1), context);
}
VecV VecF16SubRVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<half_bits, subtract_reversed<half_bits>>(zdn, pg, half_or_one<half_bits>(i1),
                                                                  context);
}
VecV VecF16MulVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<half_bits, FPMul<half_bits>>(zdn, pg, half_or_two<half_bits>(i1), context);
}

VecV VecF16MaxVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<half_bits, FPMax<half_bits>>(zdn, pg, zero_or_one<half_bits>(i1), context);
}
VecV VecF32MaxVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<single_bits, FPMax<single_bits>>(zdn, pg, zero_or_one<single_bits>(i1), context);
}
VecV VecD64MaxVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<double_bits, FPMax<double_bits>>(zdn, pg, zero_or_one<double_bits>(i1), context);
}

VecV VecF16MinVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<half_bits, FPMin<half_bits>>(zdn, pg, zero_or_one<half_bits>(i1), context);
}
VecV VecF32MinVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<single_bits, FPMin<single_bits>>(zdn, pg, zero_or_one<single_bits>(i1), context);
}
VecV VecD64MinVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<double_bits, FPMin<double_bits>>(zdn, pg, zero_or_one<double_bits>(i1), context);
}

VecV VecF16MaxNumVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<half_bits, FPMaxNum<half_bits>>(zdn, pg, zero_or_one<half_bits>(i1), context);
}
VecV VecF32MaxNumVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<single_bits, FPMaxNum<single_bits>>(zdn, pg, zero_or_one<single_bits>(i1), context);
}
VecV VecD64MaxNumVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<double_bits, FPMaxNum<double_bits>>(zdn, pg, zero_or_one<double_bits>(i1), context);
}

VecV VecF16MinNumVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<half_bits, FPMinNum<half_bits>>(zdn, pg, zero_or_one<half_bits>(i1), context);
}
VecV VecF32MinNumVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<single_bits, FPMinNum<single_bits>>(zdn, pg, zero_or_one<single_bits>(i1), context);
}
VecV VecD64MinNumVIM(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {
    return fp_merge_with<double_bits, FPMinNum<double_bits>>(zdn, pg, zero_or_one<double_bits>(i1), context);
}

VecV VecF16SqrtVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return fp_merge_unary<half_bits, FPSqrt<half_bits>>(zd, pg, zn, context);
}
VecV VecF16NegVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return negate<half_bits>(zd, pg, zn, context);
}

VecV VecF16AbsVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return absolute<half_bits>(zd, pg, zn, context);
}
VecV VecF32AbsVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return absolute<single_bits>(zd, pg, zn, context);
}
VecV VecD64AbsVM(const VecV& zd, const PredV& pg, const VecV& zn, CpuContext* context) {
    return absolute<double_bits>(zd, pg, zn, context);
}

VecV VecF16DupIM(const VecV& zd, const PredV& pg, half_bits value, CpuContext* context) {
    return copy<half_bits>(zd, pg, value, context);
}
VecV VecF32DupIM(const VecV& zd, const PredV& pg, single_bits value, CpuContext* context) {
    return copy<single_bits>(zd, pg, value, context);
}
VecV VecD64DupIM(const VecV& zd, const PredV& pg, double_bits value, CpuContext* context) {
    return copy<double_bits>(zd, pg, value, context);
}
