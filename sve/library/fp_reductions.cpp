#include "sve/library/fp_reductions.h"

#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_compare.h"

// Combines neighbours, then neighbouring results, and so on: a balanced tree over the elements in their
// order. Inactive elements, and those that fill up to a power of two, hold the identity and take part.
template <class Bits, auto kernel>
static Bits reduce(const PredV& pg, const VecV& zn, Bits identity, CpuContext* context) {
    const unsigned count = static_cast<unsigned>(element_count<Bits>(context));
    unsigned left = std::bit_ceil(count);
    Bits values[sizeof(VecV) / sizeof(Bits)];
    for (unsigned i = 0; i < left; ++i)
        values[i] = identity;
    for_each_active<Bits>(pg, context, [&](int i) { values[i] = get_element<Bits>(zn, i); });
    with_fp_status(left > 1, context, [&](FPSCR& fpscr) {
        for (; left > 1; left /= 2) {
            for (unsigned k = 0; k < left / 2; ++k)
                values[k] = kernel(values[2 * k], values[2 * k + 1], fpscr);
        }
    });
    return values[0];
}

// Adds the active elements to `sum` one by one, in their order.
template <class Bits>
static Bits add_in_order(const PredV& pg, Bits sum, const VecV& zm, CpuContext* context) {
    with_fp_status(any_active<Bits>(pg, context), context, [&](FPSCR& fpscr) {
        for_each_active<Bits>(pg, context, [&](int i) { sum = FPAdd(sum, get_element<Bits>(zm, i), fpscr); });
    });
    return sum;
}

template <class Bits>
static constexpr Bits minus_infinity = FPFormat<Bits>::infinity | FPFormat<Bits>::sign_bit;

half_bits VecF16AddReduceFV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return reduce<half_bits, FPAdd<half_bits>>(pg, zn, 0, context);
}
single_bits VecF32AddReduceFV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return reduce<single_bits, FPAdd<single_bits>>(pg, zn, 0, context);
}
double_bits VecD64AddReduceFV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return reduce<double_bits, FPAdd<double_bits>>(pg, zn, 0, context);
}

half_bits VecF16MaxReduceFV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return reduce<half_bits, FPMax<half_bits>>(pg, zn, minus_infinity<half_bits>, context);
}
single_bits VecF32MaxReduceFV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return reduce<single_bits, FPMax<single_bits>>(pg, zn, minus_infinity<single_bits>, context);
}
double_bits VecD64MaxReduceFV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return reduce<double_bits, FPMax<double_bits>>(pg, zn, minus_infinity<double_bits>, context);
}

half_bits VecF16MinReduceFV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return reduce<half_bits, FPMin<half_bits>>(pg, zn, FPFormat<half_bits>::infinity, context);
}
single_bits VecF32MinReduceFV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return reduce<single_bits, FPMin<single_bits>>(pg, zn, FPFormat<single_bits>::infinity, context);
}
double_bits VecD64MinReduceFV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return reduce<double_bits, FPMin<double_bits>>(pg, zn, FPFormat<double_bits>::infinity, context);
}

half_bits VecF16MaxNumReduceFV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return reduce<half_bits, FPMaxNum<half_bits>>(pg, zn, FPFormat<half_bits>::default_nan, context);
}

half_bits VecF16MinNumReduceFV(const PredV& pg, const VecV& zn, CpuContext* context) {
    return reduce<half_bits, FPMinNum<half_bits>>(pg, zn, FPFormat<half_bits>::default_nan, context);
}

half_bits VecF16AddReduceAV(const PredV& pg, half_bits initial, const VecV& zm, CpuContext* context) {
    return add_in_order<half_bits>(pg, initial, zm, context);
}
single_bits VecF32AddReduceAV(const PredV& pg, single_bits initial, const VecV& zm, CpuContext* context) {
    return add_in_order<single_bits>(pg, initial, zm, context);
}
double_bits VecD64AddReduceAV(const PredV& pg, double_bits initial, const VecV& zm, CpuContext* context) {
    return add_in_order<double_bits>(pg, initial, zm, context);
}
