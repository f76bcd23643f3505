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

// A primitive a line. Macros, since only they can make the names.
#define REDUCTION(name, bits, kernel, identity)                                                              \
    bits name(const PredV& pg, const VecV& zn, CpuContext* context) {                                        \
        return reduce<bits, kernel<bits>>(pg, zn, identity, context);                                        \
    }

REDUCTION(VecF16AddReduceFV, half_bits, FPAdd, 0)
REDUCTION(VecF32AddReduceFV, single_bits, FPAdd, 0)
REDUCTION(VecD64AddReduceFV, double_bits, FPAdd, 0)

REDUCTION(VecF16MaxReduceFV, half_bits, FPMax, minus_infinity<half_bits>)
REDUCTION(VecF32MaxReduceFV, single_bits, FPMax, minus_infinity<single_bits>)
REDUCTION(VecD64MaxReduceFV, double_bits, FPMax, minus_infinity<double_bits>)

REDUCTION(VecF16MinReduceFV, half_bits, FPMin, FPFormat<half_bits>::infinity)
REDUCTION(VecF32MinReduceFV, single_bits, FPMin, FPFormat<single_bits>::infinity)
REDUCTION(VecD64MinReduceFV, double_bits, FPMin, FPFormat<double_bits>::infinity)

REDUCTION(VecF16MaxNumReduceFV, half_bits, FPMaxNum, FPFormat<half_bits>::default_nan)
REDUCTION(VecF16MinNumReduceFV, half_bits, FPMinNum, FPFormat<half_bits>::default_nan)
#undef REDUCTION

#define ADDITION_IN_ORDER(name, bits)                                                                        \
    bits name(const PredV& pg, bits initial, const VecV& zm, CpuContext* context) {                          \
        return add_in_order<bits>(pg, initial, zm, context);                                                 \
    }

ADDITION_IN_ORDER(VecF16AddReduceAV, half_bits)
ADDITION_IN_ORDER(VecF32AddReduceAV, single_bits)
ADDITION_IN_ORDER(VecD64AddReduceAV, double_bits)
#undef ADDITION_IN_ORDER
