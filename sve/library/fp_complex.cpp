#include "sve/library/fp_complex.h"

#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_multiply_add.h"

namespace {

// Element i is the real part of a number when i is even and the imaginary part of the one before when odd.

template <class Bits> Bits negate_if(bool negative, Bits value) { return negative ? FPNeg(value) : value; }

// Each part adds the other part of zm, one of them negated: the real part for 90 degrees (0), the imaginary
// part for 270 (1).
template <class Bits>
VecV add_rotated(const VecV& zdn, const PredV& pg, const VecV& zm, unsigned rot, CpuContext* context) {
    return fp_merge_each<Bits>(zdn, pg, context, [&](int i, FPSCR& fpscr) {
        const bool negative = (static_cast<unsigned>(i) & 1) == rot;
        return FPAdd(get_element<Bits>(zdn, i), negate_if(negative, get_element<Bits>(zm, i ^ 1)), fpscr);
    });
}

// What a rotation by `rot` quarter turns takes: of zn the real part for both parts of the result, or, by odd
// quarters, the imaginary part; of zm the same part as the result's, or, by odd quarters, the other one.
struct rotation {
    int odd;
    bool negative[2]; // of zm, for the real and for the imaginary part of the result

    explicit rotation(unsigned rot)
        : odd(static_cast<int>(rot & 1)), negative{rot == 1 || rot == 2, rot >= 2} {}
};

// The part of a product that is added to element i, where zm's element i stands at `position`.
template <class Bits>
Bits multiply_add_part(const rotation& by, const VecV& zda, const VecV& zn, const VecV& zm, int i,
                       int position, FPSCR& fpscr) {
    const Bits zm_factor = negate_if(by.negative[i & 1], get_element<Bits>(zm, position ^ by.odd));
    return FPMulAdd(get_element<Bits>(zda, i), get_element<Bits>(zn, (i & ~1) | by.odd), zm_factor, fpscr);
}

template <class Bits>
VecV multiply_add(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, unsigned rot,
                  CpuContext* context) {
    const rotation by(rot);
    return fp_merge_each<Bits>(zda, pg, context, [&](int i, FPSCR& fpscr) {
        return multiply_add_part<Bits>(by, zda, zn, zm, i, i, fpscr);
    });
}

// The factor from zm is the number at `index` in the 128-bit segment of each element.
template <class Bits>
VecV multiply_add_indexed(const VecV& zda, const VecV& zn, const VecV& zm, unsigned rot, int index,
                          CpuContext* context) {
    constexpr int segment_elements = 16 / sizeof(Bits);
    const rotation by(rot);
    return fp_each_element<Bits>(context, [&](int i, FPSCR& fpscr) {
        const int position = (i & -segment_elements) + 2 * index + (i & 1);
        return multiply_add_part<Bits>(by, zda, zn, zm, i, position, fpscr);
    });
}

} // namespace

VecV VecF16FCADDVVM(const VecV& zdn, const PredV& pg, const VecV& zm, unsigned rot, CpuContext* context) {
    return add_rotated<half_bits>(zdn, pg, zm, rot, context);
}
VecV VecF32FCADDVVM(const VecV& zdn, const PredV& pg, const VecV& zm, unsigned rot, CpuContext* context) {
    return add_rotated<single_bits>(zdn, pg, zm, rot, context);
}
VecV VecD64FCADDVVM(const VecV& zdn, const PredV& pg, const VecV& zm, unsigned rot, CpuContext* context) {
    return add_rotated<double_bits>(zdn, pg, zm, rot, context);
}

VecV VecF16FCMLAVVVM(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, unsigned rot,
                     CpuContext* context) {
    return multiply_add<half_bits>(zda, pg, zn, zm, rot, context);
}
VecV VecF32FCMLAVVVM(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, unsigned rot,
                     CpuContext* context) {
    return multiply_add<single_bits>(zda, pg, zn, zm, rot, context);
}
VecV VecD64FCMLAVVVM(const VecV& zda, const PredV& pg, const VecV& zn, const VecV& zm, unsigned rot,
                     CpuContext* context) {
    return multiply_add<double_bits>(zda, pg, zn, zm, rot, context);
}

VecV VecF16FCMLAVVVIX(const VecV& zda, const VecV& zn, const VecV& zm, unsigned rot, int index,
                      CpuContext* context) {
    return multiply_add_indexed<half_bits>(zda, zn, zm, rot, index, context);
}
VecV VecF32FCMLAVVVIX(const VecV& zda, const VecV& zn, const VecV& zm, unsigned rot, int index,
                      CpuContext* context) {
    return multiply_add_indexed<single_bits>(zda, zn, zm, rot, index, context);
}
