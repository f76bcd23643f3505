#include "sve/handlers/integer_arithmetic.h"

#include "sve/handlers/activity.h"
#include "sve/handlers/handler_definitions.h"

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

// Division of single elements, to 0 by 0; the most negative number by -1 is itself.
#if defined(__aarch64__)
// So does the processor divide.
constexpr auto divide_signed = []<class Element>(Element a, Element b) {
    Element quotient;
    if constexpr (sizeof(Element) == 8)
        asm("sdiv %0, %1, %2" : "=r"(quotient) : "r"(a), "r"(b));
    else
        asm("sdiv %w0, %w1, %w2" : "=r"(quotient) : "r"(a), "r"(b));
    return quotient;
};
constexpr auto divide_unsigned = []<class Element>(Element a, Element b) {
    Element quotient;
    if constexpr (sizeof(Element) == 8)
        asm("udiv %0, %1, %2" : "=r"(quotient) : "r"(a), "r"(b));
    else
        asm("udiv %w0, %w1, %w2" : "=r"(quotient) : "r"(a), "r"(b));
    return quotient;
};
#else
constexpr auto divide_signed = [](auto a, auto b) {
    using element = decltype(a);
    if (b == 0)
        return element{0};
    if (b == -1) // negated unsigned, since the host traps on the most negative number
        return static_cast<element>(0 - static_cast<std::make_unsigned_t<element>>(a));
    return static_cast<element>(a / b);
};
constexpr auto divide_unsigned = [](auto a, auto b) { return b == 0 ? b : a / b; };
#endif
constexpr auto divide_signed_reversed = [](auto a, auto b) { return divide_signed(b, a); };
constexpr auto divide_unsigned_reversed = [](auto a, auto b) { return divide_unsigned(b, a); };

template <auto operation>
aarch64_decode_rc predicated_unsigned(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                      aarch64_z_reg zm) {
    return dispatch_unsigned(zdn.dest_kind, [&](auto zero) {
        return merge_binary<decltype(zero)>(state, zdn, pg, zm, operation);
    });
}

template <auto operation>
aarch64_decode_rc predicated_signed(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return dispatch_signed(zdn.dest_kind, [&](auto zero) {
        return merge_binary<decltype(zero)>(state, zdn, pg, zm, operation);
    });
}

// Element by element, the inactive ones not at all. An element is stored before the next is loaded, which is
// never the same of another register.
template <class Element, class Operation>
aarch64_decode_rc divide_elements(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm,
                                  Operation operation) {
    std::uint8_t* const dividends = vector_row(state, zdn.reg);
    const std::uint8_t* const divisors = vector_row(state, zm.reg);
    activity::of(predicate_row(state, pg.reg)).for_each<Element>([=](int index, bool active) {
        if (active)
            store_element(
                dividends, index,
                operation(load_element<Element>(dividends, index), load_element<Element>(divisors, index)));
    });
    return aarch64_emulated;
}

template <class Word, class Doubleword, auto operation>
aarch64_decode_rc predicated_division(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg,
                                      aarch64_z_reg zm) {
    if (zdn.dest_kind == doubleword_elements)
        return divide_elements<Doubleword>(state, zdn, pg, zm, operation);
    return divide_elements<Word>(state, zdn, pg, zm, operation);
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

template <auto operation>
aarch64_decode_rc unpredicated(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    return dispatch_unsigned(
        zd.kind, [&](auto zero) { return combine_rows<decltype(zero)>(state, zd, zn, zm, operation); });
}

template <auto operation>
aarch64_decode_rc bitwise(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
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

MERGING_HANDLER(sve_add_zpz, predicated_unsigned<add>)
MERGING_HANDLER(sve_sub_zpz, predicated_unsigned<subtract>)
MERGING_HANDLER(sve_and_zpz, predicated_unsigned<bitwise_and>)
MERGING_HANDLER(sve_orr_zpz, predicated_unsigned<bitwise_or>)
MERGING_HANDLER(sve_eor_zpz, predicated_unsigned<bitwise_xor>)
MERGING_HANDLER(sve_bic_zpz, predicated_unsigned<bit_clear>)
MERGING_HANDLER(sve_smin_zpz, predicated_signed<minimum>)
MERGING_HANDLER(sve_smax_zpz, predicated_signed<maximum>)
MERGING_HANDLER(sve_umin_zpz, predicated_unsigned<minimum>)
MERGING_HANDLER(sve_umax_zpz, predicated_unsigned<maximum>)
MERGING_HANDLER(sve_mul_zpz, predicated_unsigned<multiply>)

MERGING_HANDLER(sve_sdiv_zpz, predicated_division<std::int32_t, std::int64_t, divide_signed>)
MERGING_HANDLER(sve_udiv_zpz, predicated_division<std::uint32_t, std::uint64_t, divide_unsigned>)
MERGING_HANDLER(sve_sdivr_zpz, predicated_division<std::int32_t, std::int64_t, divide_signed_reversed>)
MERGING_HANDLER(sve_udivr_zpz, predicated_division<std::uint32_t, std::uint64_t, divide_unsigned_reversed>)

VECTOR_HANDLER(sve_add_zzz, unpredicated<add>)
VECTOR_HANDLER(sve_sub_zzz, unpredicated<subtract>)
VECTOR_HANDLER(sve_and_zzz, bitwise<bitwise_and>)
VECTOR_HANDLER(sve_orr_zzz, bitwise<bitwise_or>)
VECTOR_HANDLER(sve_eor_zzz, bitwise<bitwise_xor>)
VECTOR_HANDLER(sve_bic_zzz, bitwise<bit_clear>)

aarch64_decode_rc sve_add_zi(cpu_state* state, aarch64_z_reg zdn, unsigned int imm) {
    return with_immediate(state, zdn, imm, add);
}

aarch64_decode_rc sve_sub_zi(cpu_state* state, aarch64_z_reg zdn, unsigned int imm) {
    return with_immediate(state, zdn, imm, subtract);
}

aarch64_decode_rc sve_mul_zi(cpu_state* state, aarch64_z_reg zdn, int imm) {
    return with_immediate(state, zdn, static_cast<std::uint64_t>(std::int64_t{imm}), multiply);
}
