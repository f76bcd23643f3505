#include "sve/handlers/integer_compares.h"

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
template <class Element, class Right, class Compare>
[[gnu::always_inline]] inline aarch64_decode_rc compare_elements(cpu_state* state, aarch64_p_reg pd,
                                                                 aarch64_p_reg pg, aarch64_z_reg zn,
                                                                 Right right, Compare compare) {
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

template <class Right, class Compare>
[[gnu::always_inline]] inline aarch64_decode_rc compare_signed(cpu_state* state, aarch64_p_reg pd,
                                                               aarch64_p_reg pg, aarch64_z_reg zn,
                                                               Right right, Compare compare) {
    return dispatch_signed(
        pd.kind, [&](auto zero) __attribute__((always_inline)) {
            using element = decltype(zero);
            return compare_elements<element>(state, pd, pg, zn, right_chunks<element>(state, right), compare);
        });
}

template <class Right, class Compare>
[[gnu::always_inline]] inline aarch64_decode_rc compare_unsigned(cpu_state* state, aarch64_p_reg pd,
                                                                 aarch64_p_reg pg, aarch64_z_reg zn,
                                                                 Right right, Compare compare) {
    return dispatch_unsigned(
        pd.kind, [&](auto zero) __attribute__((always_inline)) {
            using element = decltype(zero);
            return compare_elements<element>(state, pd, pg, zn, right_chunks<element>(state, right), compare);
        });
}

} // namespace

aarch64_decode_rc sve_cmpeq_ppzz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm) {
    return compare_unsigned(state, pd, pg, zn, zm, equal);
}
aarch64_decode_rc sve_cmpne_ppzz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm) {
    return compare_unsigned(state, pd, pg, zn, zm, not_equal);
}
aarch64_decode_rc sve_cmpgt_ppzz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm) {
    return compare_signed(state, pd, pg, zn, zm, greater);
}
aarch64_decode_rc sve_cmpge_ppzz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm) {
    return compare_signed(state, pd, pg, zn, zm, greater_or_equal);
}
aarch64_decode_rc sve_cmphi_ppzz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm) {
    return compare_unsigned(state, pd, pg, zn, zm, greater);
}
aarch64_decode_rc sve_cmphs_ppzz(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 aarch64_z_reg zm) {
    return compare_unsigned(state, pd, pg, zn, zm, greater_or_equal);
}

aarch64_decode_rc sve_cmpeq_ppzi(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 int imm) {
    return compare_signed(state, pd, pg, zn, imm, equal);
}
aarch64_decode_rc sve_cmpne_ppzi(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 int imm) {
    return compare_signed(state, pd, pg, zn, imm, not_equal);
}
aarch64_decode_rc sve_cmpgt_ppzi(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 int imm) {
    return compare_signed(state, pd, pg, zn, imm, greater);
}
aarch64_decode_rc sve_cmplt_ppzi(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 int imm) {
    return compare_signed(state, pd, pg, zn, imm, less);
}
aarch64_decode_rc sve_cmple_ppzi(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 int imm) {
    return compare_signed(state, pd, pg, zn, imm, less_or_equal);
}
aarch64_decode_rc sve_cmphi_ppzi(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 unsigned int imm) {
    return compare_unsigned(state, pd, pg, zn, imm, greater);
}
aarch64_decode_rc sve_cmplo_ppzi(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_z_reg zn,
                                 unsigned int imm) {
    return compare_unsigned(state, pd, pg, zn, imm, less);
}
