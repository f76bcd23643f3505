#include "sve/handlers/integer_reductions.h"

#include "sve/handlers/elements.h"

#include <limits>

namespace {

// Operations on whole chunks, with the value that leaves every other as it is.
struct minimum {
    template <class Element> static constexpr Element identity = std::numeric_limits<Element>::max();
    template <class Vector> static Vector combine(Vector a, Vector b) { return a < b ? a : b; }
};
struct maximum {
    template <class Element> static constexpr Element identity = std::numeric_limits<Element>::min();
    template <class Vector> static Vector combine(Vector a, Vector b) { return a > b ? a : b; }
};
struct bitwise_and {
    template <class Element> static constexpr Element identity = static_cast<Element>(-1);
    template <class Vector> static Vector combine(Vector a, Vector b) { return a & b; }
};
struct bitwise_or {
    template <class Element> static constexpr Element identity = 0;
    template <class Vector> static Vector combine(Vector a, Vector b) { return a | b; }
};
struct bitwise_xor {
    template <class Element> static constexpr Element identity = 0;
    template <class Vector> static Vector combine(Vector a, Vector b) { return a ^ b; }
};

// Folds the chunks, then the halves of what remains until one element is left; shifted doublewords serve,
// because only the lowest element counts in the end.
template <class Operation, class Element>
aarch64_decode_rc reduce_row(std::uint8_t* destination, const std::uint8_t* pg, const std::uint8_t* zn) {
    chunk<Element> folded = broadcast(Operation::template identity<Element>);
#pragma GCC unroll 8
    for (int i = 0; i < chunks_per_row; ++i) {
        folded = Operation::combine(folded,
                                    blend<Element>(active_lanes<Element>(pg, i), load_chunk<Element>(zn, i),
                                                   broadcast(Operation::template identity<Element>)));
    }
    auto halves = (chunk<std::uint64_t>)folded;
    folded = Operation::combine(folded, (chunk<Element>)chunk<std::uint64_t>{halves[1], halves[0]});
#pragma GCC unroll 3
    for (int bits = 32; bits >= static_cast<int>(sizeof(Element)) * 8; bits /= 2)
        folded = Operation::combine(folded, (chunk<Element>)((chunk<std::uint64_t>)folded >> bits));
    return store_scalar(destination, static_cast<std::make_unsigned_t<Element>>(folded[0]));
}

template <class Operation>
aarch64_decode_rc reduce_signed(cpu_state* state, unsigned int vd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return dispatch_signed(zn.kind, [&](auto zero) {
        return reduce_row<Operation, decltype(zero)>(state->z[vd], state->p[pg.reg], state->z[zn.reg]);
    });
}
template <class Operation>
aarch64_decode_rc reduce_unsigned(cpu_state* state, unsigned int vd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return dispatch_unsigned(zn.kind, [&](auto zero) {
        return reduce_row<Operation, decltype(zero)>(state->z[vd], state->p[pg.reg], state->z[zn.reg]);
    });
}

// The sums of each lane's two halves. They cannot overflow.
template <class Wide> chunk<Wide> sum_halves(chunk<Wide> lanes) {
    constexpr int half = sizeof(Wide) * 4;
    return (lanes & static_cast<Wide>(static_cast<Wide>(-1) >> half)) + (lanes >> half);
}

// The sum of all lanes, zero-extended.
template <class Element> std::uint64_t sum_lanes(chunk<Element> lanes) {
    if constexpr (sizeof(Element) == 8) {
        return lanes[0] + lanes[1];
    } else {
        using wide = twice_as_wide<Element>;
        return sum_lanes<wide>(sum_halves<wide>((chunk<wide>)lanes));
    }
}

// A lane of twice the element's width holds the sum of the 16 elements of any type that add up in it.
template <class Element> std::uint64_t sum_row(const std::uint8_t* pg, const std::uint8_t* zn) {
    const auto active = [&](int i) { return active_lanes<Element>(pg, i) & load_chunk<Element>(zn, i); };
    if constexpr (sizeof(Element) == 8) {
        chunk<Element> sums{};
#pragma GCC unroll 8
        for (int i = 0; i < chunks_per_row; ++i)
            sums += active(i);
        return sum_lanes<Element>(sums);
    } else {
        using wide = twice_as_wide<Element>;
        chunk<wide> sums{};
#pragma GCC unroll 8
        for (int i = 0; i < chunks_per_row; ++i)
            sums += sum_halves<wide>((chunk<wide>)active(i));
        return sum_lanes<wide>(sums);
    }
}

} // namespace

aarch64_decode_rc sve_uaddv_vpz(cpu_state* state, unsigned int vd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return dispatch_unsigned(zn.kind, [&](auto zero) {
        return store_scalar(state->z[vd], sum_row<decltype(zero)>(state->p[pg.reg], state->z[zn.reg]));
    });
}

// A handler a line. Macros, since only they can make the names.
#define REDUCTION(name, ...)                                                                                 \
    aarch64_decode_rc name(cpu_state* state, unsigned int vd, aarch64_p_reg pg, aarch64_z_reg zn) {          \
        return __VA_ARGS__(state, vd, pg, zn);                                                               \
    }

REDUCTION(sve_smaxv_vpz, reduce_signed<maximum>)
REDUCTION(sve_sminv_vpz, reduce_signed<minimum>)
REDUCTION(sve_umaxv_vpz, reduce_unsigned<maximum>)
REDUCTION(sve_uminv_vpz, reduce_unsigned<minimum>)
REDUCTION(sve_andv_vpz, reduce_unsigned<bitwise_and>)
REDUCTION(sve_orv_vpz, reduce_unsigned<bitwise_or>)
REDUCTION(sve_eorv_vpz, reduce_unsigned<bitwise_xor>)
#undef REDUCTION
