#include "sve/library/fp_multiply_add.h"

#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_multiply_add.h"

namespace {

// What an instruction of the family negates before the fused operation: a NaN operand comes out with its sign
// inverted.
enum class negated { nothing, product, addend, both };

template <class Bits, negated what> Bits fused(Bits addend, Bits op1, Bits op2, FPSCR& fpscr) {
    constexpr bool negate_addend = what == negated::addend || what == negated::both;
    constexpr bool negate_product = what == negated::product || what == negated::both;
    return FPMulAdd(negate_addend ? FPNeg(addend) : addend, negate_product ? FPNeg(op1) : op1, op2, fpscr);
}

// The addend is the destination.
template <class Bits, negated what>
VecV accumulate(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return fp_merge_each<Bits>(zda, pg, context, [&](int i, FPSCR& fpscr) {
        return fused<Bits, what>(get_element<Bits>(zda, i), get_element<Bits>(zn, i),
                                 get_element<Bits>(zm, i), fpscr);
    });
}

// The first factor is the destination.
template <class Bits, negated what>
VecV multiply(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return fp_merge_each<Bits>(zdn, pg, context, [&](int i, FPSCR& fpscr) {
        return fused<Bits, what>(get_element<Bits>(za, i), get_element<Bits>(zdn, i),
                                 get_element<Bits>(zm, i), fpscr);
    });
}

// The element at `index` of the 128-bit segment that element i is in.
template <class Bits> Bits element_of_segment(const VecV& zm, int i, int index) {
    constexpr int segment_elements = 16 / sizeof(Bits);
    return get_element<Bits>(zm, (i & -segment_elements) + index);
}

template <class Bits, negated what>
VecV accumulate_indexed(const VecV& zda, const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return fp_each_element<Bits>(context, [&](int i, FPSCR& fpscr) {
        return fused<Bits, what>(get_element<Bits>(zda, i), get_element<Bits>(zn, i),
                                 element_of_segment<Bits>(zm, i, index), fpscr);
    });
}

template <class Bits> VecV multiply_indexed(const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return fp_each_element<Bits>(context, [&](int i, FPSCR& fpscr) {
        return FPMul(get_element<Bits>(zn, i), element_of_segment<Bits>(zm, i, index), fpscr);
    });
}

} // namespace

// A primitive a line. Macros, since only they can make the names.
#define ACCUMULATE(name, bits, what)                                                                         \
    VecV name(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {       \
        return accumulate<bits, negated::what>(zda, pg, zn, zm, context);                                    \
    }

ACCUMULATE(VecF16FMAVVVM, half_bits, nothing)
ACCUMULATE(VecF32FMAVVVM, single_bits, nothing)
ACCUMULATE(VecD64FMAVVVM, double_bits, nothing)

ACCUMULATE(VecF16FMSVVVM, half_bits, product)
ACCUMULATE(VecF32FMSVVVM, single_bits, product)
ACCUMULATE(VecD64FMSVVVM, double_bits, product)

ACCUMULATE(VecF16FNMAVVVM, half_bits, both)

ACCUMULATE(VecF16FNMSVVVM, half_bits, addend)
ACCUMULATE(VecF32FNMSVVVM, single_bits, addend)
ACCUMULATE(VecD64FNMSVVVM, double_bits, addend)
#undef ACCUMULATE

#define MULTIPLY(name, bits, what)                                                                           \
    VecV name(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {       \
        return multiply<bits, negated::what>(zdn, pg, zm, za, context);                                      \
    }

MULTIPLY(VecF16FMADDVVVM, half_bits, nothing)
MULTIPLY(VecF32FMADDVVVM, single_bits, nothing)
MULTIPLY(VecD64FMADDVVVM, double_bits, nothing)

MULTIPLY(VecF16FMSUBVVVM, half_bits, product)
MULTIPLY(VecF32FMSUBVVVM, single_bits, product)
MULTIPLY(VecD64FMSUBVVVM, double_bits, product)

MULTIPLY(VecF16FNMADDVVVM, half_bits, both)
MULTIPLY(VecF32FNMADDVVVM, single_bits, both)
MULTIPLY(VecD64FNMADDVVVM, double_bits, both)

MULTIPLY(VecF16FNMSUBVVVM, half_bits, addend)
MULTIPLY(VecF32FNMSUBVVVM, single_bits, addend)
MULTIPLY(VecD64FNMSUBVVVM, double_bits, addend)
#undef MULTIPLY

#define ACCUMULATE_INDEXED(name, bits, what)                                                                 \
    VecV name(const VecV& zda, const VecV& zn, const VecV& zm, int index, CpuContext* context) {             \
        return accumulate_indexed<bits, negated::what>(zda, zn, zm, index, context);                         \
    }

ACCUMULATE_INDEXED(VecF16FMAVVVIX, half_bits, nothing)
ACCUMULATE_INDEXED(VecF32FMAVVVIX, single_bits, nothing)
ACCUMULATE_INDEXED(VecD64FMAVVVIX, double_bits, nothing)

ACCUMULATE_INDEXED(VecF16FMSVVVIX, half_bits, product)
ACCUMULATE_INDEXED(VecF32FMSVVVIX, single_bits, product)
ACCUMULATE_INDEXED(VecD64FMSVVVIX, double_bits, product)
#undef ACCUMULATE_INDEXED

#define MULTIPLY_INDEXED(name, bits)                                                                         \
    VecV name(const VecV& zn, const VecV& zm, int index, CpuContext* context) {                              \
        return multiply_indexed<bits>(zn, zm, index, context);                                               \
    }

MULTIPLY_INDEXED(VecF16MulVVIX, half_bits)
MULTIPLY_INDEXED(VecF32MulVVIX, single_bits)
MULTIPLY_INDEXED(VecD64MulVVIX, double_bits)
#undef MULTIPLY_INDEXED
