#include "sve/handlers/unary_integer.h"

#include "sve/handlers/elements.h"
#include "sve/handlers/handler_definitions.h"

namespace {

// Operations on whole chunks.
constexpr auto negate = [](auto value) { return -value; };

#if defined(__aarch64__)
chunk<std::uint8_t> reverse_byte_bits(chunk<std::uint8_t> value) {
    return (chunk<std::uint8_t>)vrbitq_u8((uint8x16_t)value);
}
#else
// Exchanges the bits of the mask with those `distance` above, in every byte.
template <int distance> chunk<std::uint8_t> exchange_bits(chunk<std::uint8_t> value, std::uint8_t mask) {
    return blend<std::uint8_t>(broadcast(mask), value >> distance, value << distance);
}
chunk<std::uint8_t> reverse_byte_bits(chunk<std::uint8_t> value) {
    return exchange_bits<1>(exchange_bits<2>(exchange_bits<4>(value, 0x0F), 0x33), 0x55);
}
#endif

template <class Element, int... byte>
chunk<Element> reverse_element_bytes(chunk<std::uint8_t> value, std::integer_sequence<int, byte...>) {
    constexpr int last = sizeof(Element) - 1;
    return (chunk<Element>)__builtin_shufflevector(value, value, (byte ^ last)...);
}

constexpr auto reverse_bits = []<class Vector>(Vector value) {
    using element = std::remove_cvref_t<decltype(value[0])>;
    return reverse_element_bytes<element>(reverse_byte_bits((chunk<std::uint8_t>)value),
                                          chunk_indices<std::uint8_t>());
};

constexpr auto exchange_words = [](chunk<std::uint64_t> value) { return value << 32 | value >> 32; };

template <class Narrow>
constexpr auto sign_extend = []<class Vector>(Vector value) {
    using element = std::remove_cvref_t<decltype(value[0])>;
    constexpr int shift = (sizeof(element) - sizeof(Narrow)) * 8;
    return (Vector)((chunk<std::make_signed_t<element>>)(value << shift) >> shift);
};

template <class Narrow> constexpr auto zero_extend = [](auto value) { return value & Narrow(~Narrow{0}); };

// The smallest element is at least `Smallest`.
template <class Smallest, auto operation>
aarch64_decode_rc of_elements(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return dispatch_unsigned(zd.kind, [&](auto zero) {
        using element = std::conditional_t<(sizeof zero < sizeof(Smallest)), Smallest, decltype(zero)>;
        return merge_unary<element, operation>(state, zd, pg, zn);
    });
}

} // namespace

MERGING_HANDLER(sve_neg_zpz, of_elements<std::uint8_t, negate>)

MERGING_HANDLER(sve_rbit_zpz, of_elements<std::uint8_t, reverse_bits>)
MERGING_HANDLER(sve_revw_zpz, merge_unary<std::uint64_t, exchange_words>)

MERGING_HANDLER(sve_sxtb_zpz, of_elements<std::uint16_t, sign_extend<std::uint8_t>>)
MERGING_HANDLER(sve_sxth_zpz, of_elements<std::uint32_t, sign_extend<std::uint16_t>>)
MERGING_HANDLER(sve_sxtw_zpz, merge_unary<std::uint64_t, sign_extend<std::uint32_t>>)
MERGING_HANDLER(sve_uxth_zpz, of_elements<std::uint32_t, zero_extend<std::uint16_t>>)
MERGING_HANDLER(sve_uxtw_zpz, merge_unary<std::uint64_t, zero_extend<std::uint32_t>>)
