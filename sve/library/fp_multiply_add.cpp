#include "sve/library/fp_multiply_add.h"

#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_multiply_add.h"

// What an instruction of the family negates before the fused operation: a NaN operand comes out with its sign
// inverted.
enum class negated { nothing, product, addend, both };

template <class Bits, negated what> static Bits fused(Bits addend, Bits op1, Bits op2, FPSCR& fpscr) {
    constexpr bool negate_addend = what == negated::addend || what == negated::both;
    constexpr bool negate_product = what == negated::product || what == negated::both;
    return FPMulAdd(negate_addend ? FPNeg(addend) : addend, negate_product ? FPNeg(op1) : op1, op2, fpscr);
}

// The addend is the destination.
template <class Bits, negated what>
static VecV accumulate(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm,
                       CpuContext* context) {
    return fp_merge_each<Bits>(zda, pg, context, [&](int i, FPSCR& fpscr) {
        return fused<Bits, what>(get_element<Bits>(zda, i), get_element<Bits>(zn, i),
                                 get_element<Bits>(zm, i), fpscr);
    });
}

// The first factor is the destination.
template <class Bits, negated what>
static VecV multiply(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return fp_merge_each<Bits>(zdn, pg, context, [&](int i, FPSCR& fpscr) {
        return fused<Bits, what>(get_element<Bits>(za, i), get_element<Bits>(zdn, i),
                                 get_element<Bits>(zm, i), fpscr);
    });
}

// The element at `index` of the 128-bit segment that element i is in.
template <class Bits> static Bits element_of_segment(const VecV& zm, int i, int index) {
    constexpr int segment_elements = 16 / sizeof(Bits);
    return get_element<Bits>(zm, (i & -segment_elements) + index);
}

template <class Bits, negated what>
static VecV accumulate_indexed(const VecV& zda, const VecV& zn, const VecV& zm, int index,
                               CpuContext* context) {
    return fp_each_element<Bits>(context, [&](int i, FPSCR& fpscr) {
        return fused<Bits, what>(get_element<Bits>(zda, i), get_element<Bits>(zn, i),
                                 element_of_segment<Bits>(zm, i, index), fpscr);
    });
}

template <class Bits>
static VecV multiply_indexed(const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return fp_each_element<Bits>(context, [&](int i, FPSCR& fpscr) {
        return FPMul(get_element<Bits>(zn, i), element_of_segment<Bits>(zm, i, index), fpscr);
    });
}

VecV VecF16FMAVVVM(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return accumulate<half_bits, negated::nothing>(zda, pg, zn, zm, context);
}
VecV VecF32FMAVVVM(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return accumulate<single_bits, negated::nothing>(zda, pg, zn, zm, context);
}
VecV VecD64FMAVVVM(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return accumulate<double_bits, negated::nothing>(zda, pg, zn, zm, context);
}

VecV VecF16FMSVVVM(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return accumulate<half_bits, negated::product>(zda, pg, zn, zm, context);
}
VecV VecF32FMSVVVM(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return accumulate<single_bits, negated::product>(zda, pg, zn, zm, context);
}
VecV VecD64FMSVVVM(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return accumulate<double_bits, negated::product>(zda, pg, zn, zm, context);
}

VecV VecF16FNMAVVVM(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return accumulate<half_bits, negated::both>(zda, pg, zn, zm, context);
}

VecV VecF16FNMSVVVM(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return accumulate<half_bits, negated::addend>(zda, pg, zn, zm, context);
}
VecV VecF32FNMSVVVM(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return accumulate<single_bits, negated::addend>(zda, pg, zn, zm, context);
}
VecV VecD64FNMSVVVM(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {
    return accumulate<double_bits, negated::addend>(zda, pg, zn, zm, context);
}

VecV VecF16FMADDVVVM(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return multiply<half_bits, negated::nothing>(zdn, pg, zm, za, context);
}
VecV VecF32FMADDVVVM(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return multiply<single_bits, negated::nothing>(zdn, pg, zm, za, context);
}
VecV VecD64FMADDVVVM(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return multiply<double_bits, negated::nothing>(zdn, pg, zm, za, context);
}

VecV VecF16FMSUBVVVM(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return multiply<half_bits, negated::product>(zdn, pg, zm, za, context);
}
VecV VecF32FMSUBVVVM(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return multiply<single_bits, negated::product>(zdn, pg, zm, za, context);
}
VecV VecD64FMSUBVVVM(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return multiply<double_bits, negated::product>(zdn, pg, zm, za, context);
}

VecV VecF16FNMADDVVVM(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return multiply<half_bits, negated::both>(zdn, pg, zm, za, context);
}
VecV VecF32FNMADDVVVM(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return multiply<single_bits, negated::both>(zdn, pg, zm, za, context);
}
VecV VecD64FNMADDVVVM(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return multiply<double_bits, negated::both>(zdn, pg, zm, za, context);
}

VecV VecF16FNMSUBVVVM(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return multiply<half_bits, negated::addend>(zdn, pg, zm, za, context);
}
VecV VecF32FNMSUBVVVM(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return multiply<single_bits, negated::addend>(zdn, pg, zm, za, context);
}
VecV VecD64FNMSUBVVVM(const VecV& zdn, const PredV& pg, const VecV& zm, const VecV& za, CpuContext* context) {
    return multiply<double_bits, negated::addend>(zdn, pg, zm, za, context);
}

VecV VecF16FMAVVVIX(const VecV& zda, const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return accumulate_indexed<half_bits, negated::nothing>(zda, zn, zm, index, context);
}
VecV VecF32FMAVVVIX(const VecV& zda, const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return accumulate_indexed<single_bits, negated::nothing>(zda, zn, zm, index, context);
}
VecV VecD64FMAVVVIX(const VecV& zda, const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return accumulate_indexed<double_bits, negated::nothing>(zda, zn, zm, index, context);
}

VecV VecF16FMSVVVIX(const VecV& zda, const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return accumulate_indexed<half_bits, negated::product>(zda, zn, zm, index, context);
}
VecV VecF32FMSVVVIX(const VecV& zda, const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return accumulate_indexed<single_bits, negated::product>(zda, zn, zm, index, context);
}
VecV VecD64FMSVVVIX(const VecV& zda, const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return accumulate_indexed<double_bits, negated::product>(zda, zn, zm, index, context);
}

VecV VecF16MulVVIX(const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return multiply_indexed<half_bits>(zn, zm, index, context);
}
VecV VecF32MulVVIX(const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return multiply_indexed<single_bits>(zn, zm, index, context);
}
VecV VecD64MulVVIX(const VecV& zn, const VecV& zm, int index, CpuContext* context) {
    return multiply_indexed<double_bits>(zn, zm, index, context);
}
