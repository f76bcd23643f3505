#include "sve/handlers/integer_compares.h"

#include "sve/handlers/handler_definitions.h"
#include "sve/handlers/result_flags.h"

namespace {

// Comparisons of whole chunks: all bits of a lane set where they hold.
constexpr auto equal = [](auto a, auto b) { return a == b; };
// The complement then becomes one with the conjunction that follows it.
constexpr auto not_equal = [](auto a, auto b) { return ~(chunk<std::uint64_t>)opaque(a == b); };
constexpr auto greater = [](auto a, auto b) { return a > b; };
constexpr auto greater_or_equal = [](auto a, auto b) { return a >= b; };
constexpr auto less = [](auto a, auto b) { return a < b; };
constexpr auto less_or_equal = [](auto a, auto b) { return a <= b; };

// Compares zn with right(i), the i-th chunk of the other operand.
template <class Element, auto compare, class Right>
[[gnu::always_inline]] inline aarch64_decode_rc
compare_elements(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, Right right) {
    const std::uint8_t* const governing = predicate_row(state, pg.reg);
    const std::uint8_t* const left = vector_row(state, zn.reg);
    std::uint8_t* const destination = predicate_row(state, pd.reg);
    chunk_array<chunks_per_row> active, result;
#pragma GCC unroll 8
    for (int i = 0; i < chunks_per_row; ++i) {
        active[i] = load_chunk<std::uint64_t>(governing, i) & element_lane_bits<Element>;
        const auto holds = compare(load_chunk<Element>(left, i), right(i));
        result[i] = (chunk<std::uint64_t>)holds & active[i];
        if (i == chunks_per_row / 2 - 1)
            asm("" ::: "memory"); // all loads at once take more registers than are free
    }
    compute_row<std::uint64_t>(destination, [&](int i) { return result[i]; });
    write_result_flags<Element>(state, active, result);
    return aarch64_emulated;
}

// The other operand's chunks: those of a vector, or an immediate at the element's width.
template <class Element> auto right_chunks(cpu_state* state, aarch64_z_reg zm) {
    return [row_bytes = vector_row(state, zm.reg)](int i) { return load_chunk<Element>(row_bytes, i); };
}
template <class Element, class Immediate> auto right_chunks(cpu_state*, Immediate imm) {
    return [immediates = broadcast(static_cast<Element>(imm))](int) { return immediates; };
}

template <auto compare, class Right>
[[gnu::always_inline]] inline aarch64_decode_rc
compare_signed(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, Right right) {
    return dispatch_signed(
        pd.kind, [&](auto zero) __attribute__((always_inline)) {
            using element = decltype(zero);
            return compare_elements<element, compare>(state, pd, pg, zn, right_chunks<element>(state, right));
        });
}

template <auto compare, class Right>
[[gnu::always_inline]] inline aarch64_decode_rc
compare_unsigned(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn, Right right) {
    return dispatch_unsigned(
        pd.kind, [&](auto zero) __attribute__((always_inline)) {
            using element = decltype(zero);
            return compare_elements<element, compare>(state, pd, pg, zn, right_chunks<element>(state, right));
        });
}

} // namespace

COMPARING_HANDLER(sve_cmpeq_ppzz, compare_unsigned<equal>)
COMPARING_HANDLER(sve_cmpne_ppzz, compare_unsigned<not_equal>)
COMPARING_HANDLER(sve_cmpgt_ppzz, compare_signed<greater>)
COMPARING_HANDLER(sve_cmpge_ppzz, compare_signed<greater_or_equal>)
COMPARING_HANDLER(sve_cmphi_ppzz, compare_unsigned<greater>)
COMPARING_HANDLER(sve_cmphs_ppzz, compare_unsigned<greater_or_equal>)

// A handler a line. Macros, since only they can make the names.
#define IMMEDIATE_HANDLER(name, function, immediate)                                                         \
    aarch64_decode_rc name(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,           \
                           immediate imm) {                                                                  \
        return function(state, pd, pg, zn, imm);                                                             \
    }

IMMEDIATE_HANDLER(sve_cmpeq_ppzi, compare_signed<equal>, int)
IMMEDIATE_HANDLER(sve_cmpne_ppzi, compare_signed<not_equal>, int)
IMMEDIATE_HANDLER(sve_cmpgt_ppzi, compare_signed<greater>, int)
IMMEDIATE_HANDLER(sve_cmplt_ppzi, compare_signed<less>, int)
IMMEDIATE_HANDLER(sve_cmple_ppzi, compare_signed<less_or_equal>, int)
IMMEDIATE_HANDLER(sve_cmphi_ppzi, compare_unsigned<greater>, unsigned int)
IMMEDIATE_HANDLER(sve_cmplo_ppzi, compare_unsigned<less>, unsigned int)
#undef IMMEDIATE_HANDLER
