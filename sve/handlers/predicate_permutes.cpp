#include "sve/handlers/predicate_permutes.h"

#include "sve/handlers/elements.h"
#include "sve/handlers/permutes.h"

namespace {

// Spreads the 64 bytes at `source`, each to a lane of two bytes.
aarch64_decode_rc unpack(std::uint8_t* destination, const std::uint8_t* source) {
    return compute_row<std::uint8_t>(destination, [source](int i) {
        const chunk<std::uint8_t> bits = load_chunk<std::uint8_t>(source, i / 2) & 1;
        const chunk<std::uint8_t> zeros = {};
        return i % 2 == 0 ? interleave<0>(bits, zeros, chunk_indices<std::uint8_t>())
                          : interleave<1>(bits, zeros, chunk_indices<std::uint8_t>());
    });
}

// Vectors and predicates have the same shape, and so the same permutes.
template <class Permute>
aarch64_decode_rc permute_rows(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn, aarch64_p_reg pm,
                               Permute permute) {
    permute(reinterpret_cast<char*>(state->p[pd.reg]), reinterpret_cast<const char*>(state->p[pn.reg]),
            reinterpret_cast<const char*>(state->p[pm.reg]), pd.kind);
    return aarch64_emulated;
}

// The elements of even index of two chunks, alternately.
template <class Vector, int... i>
Vector transpose_even(Vector even, Vector odd, std::integer_sequence<int, i...>) {
    constexpr int count = sizeof...(i);
    return __builtin_shufflevector(even, odd, ((i & ~1) + i % 2 * count)...);
}

} // namespace

aarch64_decode_rc sve_rev_pp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn) {
    std::uint8_t* const destination = state->p[pd.reg];
    const std::uint8_t* const source = state->p[pn.reg];
    return dispatch_unsigned(pd.kind, [=](auto element) {
        using Element = decltype(element);
        return compute_row<Element>(destination, [source](int i) {
            return reverse_elements(load_chunk<Element>(source, chunks_per_row - 1 - i),
                                    chunk_indices<Element>());
        });
    });
}

aarch64_decode_rc sve_punpklo_pp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn) {
    return unpack(state->p[pd.reg], state->p[pn.reg]);
}

aarch64_decode_rc sve_punpkhi_pp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn) {
    return unpack(state->p[pd.reg], state->p[pn.reg] + vector_bytes / 2);
}

aarch64_decode_rc sve_zip1_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn, aarch64_p_reg pm) {
    return permute_rows(state, pd, pn, pm, sve_zip1);
}
aarch64_decode_rc sve_zip2_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn, aarch64_p_reg pm) {
    return permute_rows(state, pd, pn, pm, sve_zip2);
}
aarch64_decode_rc sve_uzp1_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn, aarch64_p_reg pm) {
    return permute_rows(state, pd, pn, pm, sve_uzp1);
}
aarch64_decode_rc sve_trn1_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pn, aarch64_p_reg pm) {
    return dispatch_unsigned(pd.kind, [&](auto zero) {
        using element = decltype(zero);
        return compute_row<element>(state->p[pd.reg], [&](int i) {
            return transpose_even(load_chunk<element>(state->p[pn.reg], i),
                                  load_chunk<element>(state->p[pm.reg], i), chunk_indices<element>());
        });
    });
}
