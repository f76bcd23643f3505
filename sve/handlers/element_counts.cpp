#include "sve/handlers/element_counts.h"

#include "sve/handlers/elements.h"
#include "sve/handlers/pattern_lengths.h"

#include <bit>

namespace {

// Multiplier times the number of elements that the pattern selects.
std::uint64_t pattern_step(int log2_element_bytes, int pattern, int multiplier) {
    return std::uint64_t{pattern_lengths[static_cast<unsigned>(log2_element_bytes)][pattern & 31]} *
           static_cast<std::uint64_t>(multiplier);
}
template <class Element> std::uint64_t pattern_step(int pattern, int multiplier) {
    return pattern_step(std::countr_zero(sizeof(Element)), pattern, multiplier);
}

aarch64_decode_rc add_to_register(cpu_state* state, aarch64_i_reg rdn, std::uint64_t step) {
    write_register(state, rdn, read_register(state, rdn) + step);
    return aarch64_emulated;
}

template <class Element>
aarch64_decode_rc add_to_elements(cpu_state* state, aarch64_z_reg zdn, std::uint64_t step) {
    std::uint8_t* row_bytes = state->z[zdn.reg];
    const chunk<Element> steps = broadcast(static_cast<Element>(step));
    return compute_row<Element>(row_bytes, [&](int i) { return load_chunk<Element>(row_bytes, i) + steps; });
}

template <class Register>
aarch64_decode_rc sve_uqdec(cpu_state* state, aarch64_i_reg rdn, int pattern, int multiplier,
                            int log2_element_bytes) {
    const auto value = static_cast<Register>(read_register(state, rdn));
    const auto step = static_cast<Register>(pattern_step(log2_element_bytes, pattern, multiplier));
    write_register(state, rdn, value > step ? value - step : 0);
    return aarch64_emulated;
}

// element_lane_bits of the type that an element-size code stands for.
std::uint64_t lane_bits(int size_code) {
    switch (size_code) {
    case word_elements:
        return element_lane_bits<std::uint32_t>;
    case doubleword_elements:
        return element_lane_bits<std::uint64_t>;
    case halfword_elements:
        return element_lane_bits<std::uint16_t>;
    default:
        return element_lane_bits<std::uint8_t>;
    }
}

// The number of elements whose bits are set in `predicate_chunk` of every chunk index.
template <class PredicateChunk> std::uint64_t count_active(int size_code, PredicateChunk predicate_chunk) {
    const chunk<std::uint64_t> bits = broadcast(lane_bits(size_code));
    chunk<std::uint8_t> sums{};
#pragma GCC unroll 8
    for (int i = 0; i < chunks_per_row; ++i)
        sums += (chunk<std::uint8_t>)(predicate_chunk(i) & bits);
    // Each byte holds at most 8; the multiplication adds up the eight bytes of each half, at most 128 in all.
    const auto halves = (chunk<std::uint64_t>)sums;
    return ((halves[0] + halves[1]) * 0x0101010101010101) >> 56;
}

// Bytes in `imm` vectors.
std::int64_t vectors(int imm) { return std::int64_t{imm * vector_bytes}; }

} // namespace

// A handler a line. Macros, since only they can make the names.
#define REGISTER_COUNT(name, sign, element)                                                                  \
    aarch64_decode_rc name(cpu_state* state, aarch64_i_reg rdn, int pattern, int multiplier) {               \
        return add_to_register(state, rdn, sign pattern_step<element>(pattern, multiplier));                 \
    }

REGISTER_COUNT(sve_incb_rii, +, std::uint8_t)
REGISTER_COUNT(sve_inch_rii, +, std::uint16_t)
REGISTER_COUNT(sve_incw_rii, +, std::uint32_t)
REGISTER_COUNT(sve_incd_rii, +, std::uint64_t)
REGISTER_COUNT(sve_decb_rii, -, std::uint8_t)
REGISTER_COUNT(sve_dech_rii, -, std::uint16_t)
REGISTER_COUNT(sve_decw_rii, -, std::uint32_t)
REGISTER_COUNT(sve_decd_rii, -, std::uint64_t)
#undef REGISTER_COUNT

#define VECTOR_COUNT(name, sign, element)                                                                    \
    aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zdn, int pattern, int multiplier) {               \
        return add_to_elements<element>(state, zdn, sign pattern_step<element>(pattern, multiplier));        \
    }

VECTOR_COUNT(sve_inch_zii, +, std::uint16_t)
VECTOR_COUNT(sve_incw_zii, +, std::uint32_t)
VECTOR_COUNT(sve_incd_zii, +, std::uint64_t)
VECTOR_COUNT(sve_dech_zii, -, std::uint16_t)
VECTOR_COUNT(sve_decw_zii, -, std::uint32_t)
VECTOR_COUNT(sve_decd_zii, -, std::uint64_t)
#undef VECTOR_COUNT

aarch64_decode_rc sve_uqdecb_rii(cpu_state* state, aarch64_i_reg rdn, int pattern, int multiplier) {
    constexpr int log2_of_a_byte = 0;
    if (rdn.dest_kind == doubleword_elements)
        return sve_uqdec<std::uint64_t>(state, rdn, pattern, multiplier, log2_of_a_byte);
    return sve_uqdec<std::uint32_t>(state, rdn, pattern, multiplier, log2_of_a_byte);
}

aarch64_decode_rc sve_incp_rp(cpu_state* state, aarch64_i_reg rdn, aarch64_p_reg pm) {
    const std::uint8_t* predicate = state->p[pm.reg];
    const std::uint64_t active =
        count_active(pm.kind, [&](int i) { return load_chunk<std::uint64_t>(predicate, i); });
    return add_to_register(state, rdn, active);
}

aarch64_decode_rc sve_cntp_rpp(cpu_state* state, aarch64_i_reg rd, aarch64_p_reg pg, aarch64_p_reg pn) {
    const std::uint8_t* governing = state->p[pg.reg];
    const std::uint8_t* predicate = state->p[pn.reg];
    write_register(state, rd, count_active(pn.kind, [&](int i) {
                       return load_chunk<std::uint64_t>(governing, i) &
                              load_chunk<std::uint64_t>(predicate, i);
                   }));
    return aarch64_emulated;
}

aarch64_decode_rc sve_addvl_rri(cpu_state* state, aarch64_i_rsp_reg rd, aarch64_i_rsp_reg rn, int imm) {
    write_register(state, rd, read_register(state, rn) + static_cast<std::uint64_t>(vectors(imm)));
    return aarch64_emulated;
}
aarch64_decode_rc sve_addpl_rri(cpu_state* state, aarch64_i_rsp_reg rd, aarch64_i_rsp_reg rn, int imm) {
    write_register(state, rd, read_register(state, rn) + static_cast<std::uint64_t>(vectors(imm) / 8));
    return aarch64_emulated;
}
aarch64_decode_rc sve_rdvl_ri(cpu_state* state, aarch64_i_reg rd, int imm) {
    write_register(state, rd, static_cast<std::uint64_t>(vectors(imm)));
    return aarch64_emulated;
}
