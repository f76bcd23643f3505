#include "sve/handlers/integer_arithmetic.h"

#include "sve/handlers/elements.h"

namespace {

// Operations on whole chunks.
constexpr auto add = [](auto a, auto b) { return a + b; };
constexpr auto subtract = [](auto a, auto b) { return a - b; };
constexpr auto bitwise_and = [](auto a, auto b) { return a & b; };
constexpr auto bitwise_or = [](auto a, auto b) { return a | b; };
constexpr auto bitwise_xor = [](auto a, auto b) { return a ^ b; };
constexpr auto bit_clear = [](auto a, auto b) { return a & ~b; };
constexpr auto minimum = [](auto a, auto b) { return a < b ? a : b; };
constexpr auto maximum = [](auto a, auto b) { return a > b ? a : b; };
constexpr auto multiply = [](auto a, auto b) { return a * b; };

// Operations on single elements.
constexpr auto divide_signed = [](auto a, auto b) {
    using element = decltype(a);
    if (b == 0)
        return element{0};
    if (b == -1) // negated unsigned, since the host traps on the most negative number
        return static_cast<element>(0 - static_cast<std::make_unsigned_t<element>>(a));
    return static_cast<element>(a / b);
};
constexpr auto divide_unsigned = [](auto a, auto b) { return b == 0 ? b : a / b; };
constexpr auto divide_signed_reversed = [](auto a, auto b) { return divide_signed(b, a); };
constexpr auto divide_unsigned_reversed = [](auto a, auto b) { return divide_unsigned(b, a); };

template <class Operation>
aarch64_decode_rc predicated_unsigned(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm,
                                      Operation operation) {
    return dispatch_unsigned(zdn.dest_kind, [&](auto zero) {
        return merge_binary<decltype(zero)>(state, zdn, pg, zm, operation);
    });
}

template <class Operation>
aarch64_decode_rc predicated_signed(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm,
                                    Operation operation) {
    return dispatch_signed(zdn.dest_kind, [&](auto zero) {
        return merge_binary<decltype(zero)>(state, zdn, pg, zm, operation);
    });
}

template <class Element, class Operation>
aarch64_decode_rc divide_elements(std::uint8_t* zdn, const std::uint8_t* pg, const std::uint8_t* zm,
                                  Operation operation) {
    Element result[elements_per_row<Element>];
    for (int i = 0; i < elements_per_row<Element>; ++i) {
        result[i] = load_element<Element>(zdn, i);
        if (load_element<Element>(pg, i) & 1)
            result[i] = operation(result[i], load_element<Element>(zm, i));
    }
    std::memcpy(zdn, result, vector_bytes);
    return aarch64_emulated;
}

template <class Word, class Doubleword, class Operation>
aarch64_decode_rc predicated_division(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm,
                                      Operation operation) {
    std::uint8_t* dividend = state->z[zdn.reg];
    if (zdn.dest_kind == doubleword_elements)
        return divide_elements<Doubleword>(dividend, state->p[pg.reg], state->z[zm.reg], operation);
    return divide_elements<Word>(dividend, state->p[pg.reg], state->z[zm.reg], operation);
}

template <class Element, class Operation>
aarch64_decode_rc combine_rows(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm,
                               Operation operation) {
    const std::uint8_t* const left = vector_row(state, zn.reg);
    const std::uint8_t* const right = vector_row(state, zm.reg);
    return compute_lanes<Element>(vector_row(state, zd.reg), [&](int i) {
        return operation(load_chunk<Element>(left, i), load_chunk<Element>(right, i));
    });
}

template <class Operation>
aarch64_decode_rc unpredicated(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm,
                               Operation operation) {
    return dispatch_unsigned(
        zd.kind, [&](auto zero) { return combine_rows<decltype(zero)>(state, zd, zn, zm, operation); });
}

template <class Operation>
aarch64_decode_rc bitwise(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm,
                          Operation operation) {
    return combine_rows<std::uint64_t>(state, zd, zn, zm, operation);
}

// The immediate comes extended to 64 bits as the instruction has it for doublewords.
template <class Operation>
aarch64_decode_rc with_immediate(cpu_state* state, aarch64_z_reg zdn, std::uint64_t imm,
                                 Operation operation) {
    return dispatch_unsigned(zdn.dest_kind, [&](auto zero) {
        using element = decltype(zero);
        std::uint8_t* const row_bytes = vector_row(state, zdn.reg);
        return compute_lanes<element>(row_bytes, [&](int i) {
            return operation(load_chunk<element>(row_bytes, i), broadcast(static_cast<element>(imm)));
        });
    });
}

} // namespace

aarch64_decode_rc sve_add_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_unsigned(state, zdn, pg, zm, add);
}
aarch64_decode_rc sve_sub_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_unsigned(state, zdn, pg, zm, subtract);
}
aarch64_decode_rc sve_and_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_unsigned(state, zdn, pg, zm, bitwise_and);
}
aarch64_decode_rc sve_orr_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_unsigned(state, zdn, pg, zm, bitwise_or);
}
aarch64_decode_rc sve_eor_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_unsigned(state, zdn, pg, zm, bitwise_xor);
}
aarch64_decode_rc sve_bic_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_unsigned(state, zdn, pg, zm, bit_clear);
}
aarch64_decode_rc sve_smin_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_signed(state, zdn, pg, zm, minimum);
}
aarch64_decode_rc sve_smax_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_signed(state, zdn, pg, zm, maximum);
}
aarch64_decode_rc sve_umin_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_unsigned(state, zdn, pg, zm, minimum);
}
aarch64_decode_rc sve_umax_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_unsigned(state, zdn, pg, zm, maximum);
}
aarch64_decode_rc sve_mul_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_unsigned(state, zdn, pg, zm, multiply);
}

aarch64_decode_rc sve_sdiv_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_division<std::int32_t, std::int64_t>(state, zdn, pg, zm, divide_signed);
}
aarch64_decode_rc sve_udiv_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_division<std::uint32_t, std::uint64_t>(state, zdn, pg, zm, divide_unsigned);
}
aarch64_decode_rc sve_sdivr_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_division<std::int32_t, std::int64_t>(state, zdn, pg, zm, divide_signed_reversed);
}
aarch64_decode_rc sve_udivr_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return predicated_division<std::uint32_t, std::uint64_t>(state, zdn, pg, zm, divide_unsigned_reversed);
}

aarch64_decode_rc sve_add_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    return unpredicated(state, zd, zn, zm, add);
}
aarch64_decode_rc sve_sub_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    return unpredicated(state, zd, zn, zm, subtract);
}
aarch64_decode_rc sve_and_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    return bitwise(state, zd, zn, zm, bitwise_and);
}
aarch64_decode_rc sve_orr_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    return bitwise(state, zd, zn, zm, bitwise_or);
}
aarch64_decode_rc sve_eor_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    return bitwise(state, zd, zn, zm, bitwise_xor);
}
aarch64_decode_rc sve_bic_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    return bitwise(state, zd, zn, zm, bit_clear);
}

aarch64_decode_rc sve_add_zi(cpu_state* state, aarch64_z_reg zdn, unsigned int imm) {
    return with_immediate(state, zdn, imm, add);
}
aarch64_decode_rc sve_sub_zi(cpu_state* state, aarch64_z_reg zdn, unsigned int imm) {
    return with_immediate(state, zdn, imm, subtract);
}
aarch64_decode_rc sve_mul_zi(cpu_state* state, aarch64_z_reg zdn, int imm) {
    return with_immediate(state, zdn, static_cast<std::uint64_t>(std::int64_t{imm}), multiply);
}
