#include "sve/handlers/predicate_generation.h"

#include "sve/handlers/elements.h"
#include "sve/handlers/pattern_lengths.h"
#include "sve/handlers/predicate_flags.h"

#include <limits>

namespace {

// A predicate operand's element-size code; what is not a code stands for bytes.
unsigned size_code(aarch64_p_reg predicate) {
    const auto code = static_cast<unsigned>(predicate.kind);
    return code <= doubleword_elements ? code : unsigned{byte_elements};
}

// For each element-size code, 128 bytes of true elements and then 128 zeros: a predicate whose first elements
// are true, and the others false, stands ready at as many bytes from the start as are false.
struct leading_table {
    std::uint8_t bytes[4][2 * vector_bytes];

    constexpr leading_table() : bytes() {
        for (int code = 0; code < 4; ++code)
            for (int k = 0; k < vector_bytes; k += 1 << code)
                bytes[code][k] = 1;
    }
};
constexpr leading_table leading;

// Makes the last `false_count` elements of the size false and the others true.
aarch64_decode_rc write_leading(cpu_state* state, aarch64_p_reg pd, unsigned code, unsigned false_count) {
    const std::uint8_t* const source = leading.bytes[code] + (false_count << code);
    return compute_row<std::uint8_t>(state->p[static_cast<unsigned>(pd.reg)],
                                     [source](int i) { return load_chunk<std::uint8_t>(source, i); });
}

enum class comparison { less, less_or_equal };

// How many of `elements` values, counter, counter + 1 and so on, modulo the type's range, stand at or behind
// the first that does not compare so to the limit. A value passes the limit before it can wrap, unless all
// values are less or equal.
template <comparison compared, class Register>
unsigned false_count(std::uint64_t counter_bits, std::uint64_t limit_bits, unsigned elements) {
    const auto counter = static_cast<Register>(counter_bits);
    const auto limit = static_cast<Register>(limit_bits);
    if (compared == comparison::less ? counter >= limit : counter > limit)
        return elements;
    if (compared == comparison::less_or_equal && limit == std::numeric_limits<Register>::max())
        return 0;
    using Unsigned = std::make_unsigned_t<Register>;
    const Unsigned steps = static_cast<Unsigned>(limit_bits) - static_cast<Unsigned>(counter_bits);
    const unsigned last_step = compared == comparison::less ? elements : elements - 1;
    return steps < last_step ? last_step - static_cast<unsigned>(steps) : 0;
}

template <comparison compared, class Register32, class Register64>
aarch64_decode_rc while_true(cpu_state* state, aarch64_p_reg pd, aarch64_i_reg rn, aarch64_i_reg rm) {
    const std::uint64_t counter = read_register(state, rn);
    const std::uint64_t limit = read_register(state, rm);
    const unsigned code = size_code(pd);
    const unsigned elements = static_cast<unsigned>(vector_bytes) >> code;
    const unsigned missing = rn.kind == doubleword_elements
                                 ? false_count<compared, Register64>(counter, limit, elements)
                                 : false_count<compared, Register32>(counter, limit, elements);
    write_predicate_flags(state, missing != elements, missing == elements, missing != 0);
    return write_leading(state, pd, code, missing);
}

} // namespace

aarch64_decode_rc sve_whilelo_prr(cpu_state* state, aarch64_p_reg pd, aarch64_i_reg rn, aarch64_i_reg rm) {
    return while_true<comparison::less, std::uint32_t, std::uint64_t>(state, pd, rn, rm);
}

aarch64_decode_rc sve_whilels_prr(cpu_state* state, aarch64_p_reg pd, aarch64_i_reg rn, aarch64_i_reg rm) {
    return while_true<comparison::less_or_equal, std::uint32_t, std::uint64_t>(state, pd, rn, rm);
}

aarch64_decode_rc sve_whilelt_prr(cpu_state* state, aarch64_p_reg pd, aarch64_i_reg rn, aarch64_i_reg rm) {
    return while_true<comparison::less, std::int32_t, std::int64_t>(state, pd, rn, rm);
}

aarch64_decode_rc sve_ptrue_pi(cpu_state* state, aarch64_p_reg pd, int pattern) {
    const unsigned code = size_code(pd);
    const unsigned elements = vector_bytes >> code;
    const auto number = static_cast<unsigned>(pattern);
    const unsigned count = number < 32 ? pattern_lengths[code][number] : 0u;
    return write_leading(state, pd, code, elements - count);
}

aarch64_decode_rc sve_pfalse_p(cpu_state* state, aarch64_p_reg pd) {
    return compute_row<std::uint8_t>(state->p[pd.reg], [](int) { return chunk<std::uint8_t>{}; });
}
