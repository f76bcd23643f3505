#include "sve/library/fp_arithmetic.h"

#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_compare.h"
#include "sve/fp/fp_divide_sqrt.h"
#include "sve/library/chunk_loops.h"
#include "sve/library/primitive_definitions.h"

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

MERGING_PRIMITIVE(VecF16AddVVM, fp_merge_binary<half_bits, FPAdd<half_bits>>)
MERGING_PRIMITIVE(VecF16SubVVM, fp_merge_binary<half_bits, FPSub<half_bits>>)
MERGING_PRIMITIVE(VecF16SubRVVM, fp_merge_binary<half_bits, subtract_reversed<half_bits>>)
MERGING_PRIMITIVE(VecF16MulVVM, fp_merge_binary<half_bits, FPMul<half_bits>>)
MERGING_PRIMITIVE(VecF16DivVVM, fp_merge_binary<half_bits, FPDiv<half_bits>>)
MERGING_PRIMITIVE(VecF16DivRVVM, fp_merge_binary<half_bits, divide_reversed<half_bits>>)
MERGING_PRIMITIVE(VecF16MaxVVM, fp_merge_binary<half_bits, FPMax<half_bits>>)
MERGING_PRIMITIVE(VecF16MaxNumVVM, fp_merge_binary<half_bits, FPMaxNum<half_bits>>)
MERGING_PRIMITIVE(VecF16MinNumVVM, fp_merge_binary<half_bits, FPMinNum<half_bits>>)

MERGING_PRIMITIVE(VecF16MinVVM, fp_merge_binary<half_bits, FPMin<half_bits>>)
MERGING_PRIMITIVE(VecF32MinVVM, fp_merge_binary<single_bits, FPMin<single_bits>>)
MERGING_PRIMITIVE(VecD64MinVVM, fp_merge_binary<double_bits, FPMin<double_bits>>)

MERGING_PRIMITIVE(VecF16MulXVVM, fp_merge_binary<half_bits, FPMulX<half_bits>>)
MERGING_PRIMITIVE(VecF32MulXVVM, fp_merge_binary<single_bits, FPMulX<single_bits>>)
MERGING_PRIMITIVE(VecD64MulXVVM, fp_merge_binary<double_bits, FPMulX<double_bits>>)

MERGING_PRIMITIVE(VecF16AbdVVM, fp_merge_binary<half_bits, absolute_difference<half_bits>>)
MERGING_PRIMITIVE(VecF32AbdVVM, fp_merge_binary<single_bits, absolute_difference<single_bits>>)
MERGING_PRIMITIVE(VecD64AbdVVM, fp_merge_binary<double_bits, absolute_difference<double_bits>>)

MERGING_PRIMITIVE(VecF16ScaleVVM, fp_merge_binary<half_bits, scale_by<half_bits>>)
MERGING_PRIMITIVE(VecF32ScaleVVM, fp_merge_binary<single_bits, scale_by<single_bits>>)
MERGING_PRIMITIVE(VecD64ScaleVVM, fp_merge_binary<double_bits, scale_by<double_bits>>)

VECTOR_PRIMITIVE(VecF16AddVVX, fp_map<half_bits, FPAdd<half_bits>>)
VECTOR_PRIMITIVE(VecF16SubVVX, fp_map<half_bits, FPSub<half_bits>>)
VECTOR_PRIMITIVE(VecF16MulVVX, fp_map<half_bits, FPMul<half_bits>>)

// A primitive a line. Macros, since only they can make the names.
#define IMMEDIATE_PRIMITIVE(name, bits, kernel, constant)                                                    \
    VecV name(const VecV& zdn, const PredV& pg, int i1, CpuContext* context) {                               \
        return fp_merge_with<bits, kernel<bits>>(zdn, pg, constant<bits>(i1), context);                      \
    }

IMMEDIATE_PRIMITIVE(VecF16AddVIM, half_bits, FPAdd, half_or_one)
IMMEDIATE_PRIMITIVE(VecF16SubVIM, half_bits, FPSub, half_or_one)
IMMEDIATE_PRIMITIVE(VecF16SubRVIM, half_bits, subtract_reversed, half_or_one)
IMMEDIATE_PRIMITIVE(VecF16MulVIM, half_bits, FPMul, half_or_two)

IMMEDIATE_PRIMITIVE(VecF16MaxVIM, half_bits, FPMax, zero_or_one)
IMMEDIATE_PRIMITIVE(VecF32MaxVIM, single_bits, FPMax, zero_or_one)
IMMEDIATE_PRIMITIVE(VecD64MaxVIM, double_bits, FPMax, zero_or_one)

IMMEDIATE_PRIMITIVE(VecF16MinVIM, half_bits, FPMin, zero_or_one)
IMMEDIATE_PRIMITIVE(VecF32MinVIM, single_bits, FPMin, zero_or_one)
IMMEDIATE_PRIMITIVE(VecD64MinVIM, double_bits, FPMin, zero_or_one)

IMMEDIATE_PRIMITIVE(VecF16MaxNumVIM, half_bits, FPMaxNum, zero_or_one)
IMMEDIATE_PRIMITIVE(VecF32MaxNumVIM, single_bits, FPMaxNum, zero_or_one)
IMMEDIATE_PRIMITIVE(VecD64MaxNumVIM, double_bits, FPMaxNum, zero_or_one)

IMMEDIATE_PRIMITIVE(VecF16MinNumVIM, half_bits, FPMinNum, zero_or_one)
IMMEDIATE_PRIMITIVE(VecF32MinNumVIM, single_bits, FPMinNum, zero_or_one)
IMMEDIATE_PRIMITIVE(VecD64MinNumVIM, double_bits, FPMinNum, zero_or_one)
#undef IMMEDIATE_PRIMITIVE

MERGING_PRIMITIVE(VecF16SqrtVM, fp_merge_unary<half_bits, FPSqrt<half_bits>>)
MERGING_PRIMITIVE(VecF16NegVM, negate<half_bits>)

MERGING_PRIMITIVE(VecF16AbsVM, absolute<half_bits>)
MERGING_PRIMITIVE(VecF32AbsVM, absolute<single_bits>)
MERGING_PRIMITIVE(VecD64AbsVM, absolute<double_bits>)

VecV VecF16DupIM(const VecV& zd, const PredV& pg, half_bits value, CpuContext* context) {
    return copy<half_bits>(zd, pg, value, context);
}
VecV VecF32DupIM(const VecV& zd, const PredV& pg, single_bits value, CpuContext* context) {
    return copy<single_bits>(zd, pg, value, context);
}
VecV VecD64DupIM(const VecV& zd, const PredV& pg, double_bits value, CpuContext* context) {
    return copy<double_bits>(zd, pg, value, context);
}
