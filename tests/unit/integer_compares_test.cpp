// What a comparison with a processor cannot show: the bits of a predicate byte above the lowest, on both
// sides, and flags that are those of a governing predicate which the result overwrites.
#include "sve/handlers/integer_compares.h"

#include "tests/unit/state_tools.h"

namespace {

template <class Element> class IntegerCompares : public testing::Test {};
using element_types = testing::Types<std::int8_t, std::int16_t, std::int32_t, std::int64_t>;
TYPED_TEST_SUITE(IntegerCompares, element_types);

// Compares register 1 with 2, element by element, and applies the outcome to the expected state.
template <class Element, class Compare> void define(cpu_state& state, int pd, int pg, Compare compare) {
    std::uint8_t result[vector_bytes] = {};
    bool any_active = false, any_true = false, first = false, last = false;
    for (int i = 0; i < vector_bytes / static_cast<int>(sizeof(Element)); ++i) {
        if (!element_is_active<Element>(state.p[pg], i))
            continue;
        last = compare(element<Element>(state.z[1], i), element<Element>(state.z[2], i));
        if (!any_active)
            first = last;
        any_active = true;
        any_true = any_true || last;
        result[i * static_cast<int>(sizeof(Element))] = last;
    }
    state.nzcv = (state.nzcv & ~std::uint64_t{0xF0000000}) | std::uint64_t{first} << 31 |
                 std::uint64_t{!any_true} << 30 | std::uint64_t{!last} << 29;
    std::copy_n(result, vector_bytes, state.p[pd]);
}

// Both vectors hold few different values, so that all comparisons come out either way.
template <class Element> cpu_state comparable_state(predicate_shape shape, unsigned seed) {
    cpu_state state = random_state(seed);
    for (int k = 0; k < vector_bytes; ++k) {
        state.z[1][k] = state.z[1][k] % 2 ? 0x80 : 0;
        state.z[2][k] = state.z[2][k] % 2 ? 0x80 : 0;
    }
    set_predicate<Element>(state.p[5], shape, seed);
    return state;
}

TYPED_TEST(IntegerCompares, WriteLanesWholeAndSetFlagsByTheOldPredicate) {
    using Signed = TypeParam;
    using Unsigned = std::make_unsigned_t<Signed>;
    for (const predicate_shape shape : predicate_shapes) {
        for (const int pd : {5, 9}) {
            for (unsigned seed = 0; seed < 20; ++seed) {
                const cpu_state start = comparable_state<Signed>(shape, seed);
                const auto check = [&](auto handler, auto element, auto compare) {
                    cpu_state state = start;
                    cpu_state expected = start;
                    define<decltype(element)>(expected, pd, 5, compare);
                    constexpr int code = size_code_of<Signed>;
                    EXPECT_EQ(handler(&state, p_operand(pd, code), p_operand(5, aarch64_p_reg::zeroing),
                                      z_operand(1, code), z_operand(2, code)),
                              aarch64_emulated);
                    ASSERT_TRUE(same_state(state, expected)) << "into p" << pd << ", seed " << seed;
                };
                check(sve_cmpeq_ppzz, Signed{}, std::equal_to<>());
                check(sve_cmpne_ppzz, Signed{}, std::not_equal_to<>());
                check(sve_cmpgt_ppzz, Signed{}, std::greater<>());
                check(sve_cmpge_ppzz, Signed{}, std::greater_equal<>());
                check(sve_cmphi_ppzz, Unsigned{}, std::greater<>());
                check(sve_cmphs_ppzz, Unsigned{}, std::greater_equal<>());
            }
        }
    }
}

// Immediates at the ends of their fields against the elements on either side of them.
TEST(IntegerComparesWithImmediate, ByHand) {
    const struct {
        aarch64_decode_rc (*with_signed)(cpu_state*, aarch64_p_reg, aarch64_p_reg, aarch64_z_reg, int);
        aarch64_decode_rc (*with_unsigned)(cpu_state*, aarch64_p_reg, aarch64_p_reg, aarch64_z_reg,
                                           unsigned int);
        int imm;
        std::int64_t elements[4];
        bool results[4];
        std::uint64_t nzcv; // bits 31 to 28
    } cases[] = {
        {sve_cmpeq_ppzi, nullptr, -1, {-1, 0, 1, -1}, {1, 0, 0, 1}, 8},
        {sve_cmpne_ppzi, nullptr, -16, {-16, 16, -16, -16}, {0, 1, 0, 0}, 2},
        {sve_cmpgt_ppzi, nullptr, -16, {-17, -16, -15, 15}, {0, 0, 1, 1}, 0},
        {sve_cmplt_ppzi, nullptr, -16, {-17, -16, -15, 15}, {1, 0, 0, 0}, 10},
        {sve_cmple_ppzi, nullptr, 15, {14, 15, 16, -128}, {1, 1, 0, 1}, 8},
        {nullptr, sve_cmphi_ppzi, 127, {126, 127, -128, -1}, {0, 0, 1, 1}, 0},
        {nullptr, sve_cmplo_ppzi, 127, {126, 127, -128, -1}, {1, 0, 0, 0}, 10},
    };
    for (const auto& c : cases) {
        for (int code = byte_elements; code <= doubleword_elements; ++code) {
            cpu_state state = random_state(7);
            set_predicate<std::uint8_t>(state.p[2], predicate_shape::all_false, 7);
            cpu_state expected = state;
            std::fill_n(expected.p[3], vector_bytes, std::uint8_t{0});
            for (int i = 0; i < 4; ++i) {
                // The low bytes of the sign-extended value are the element of every size.
                std::memcpy(state.z[1] + (i << code), &c.elements[i], std::size_t{1} << code);
                state.p[2][i << code] |= 1;
                expected.p[3][i << code] = c.results[i];
            }
            std::copy_n(state.z[1], vector_bytes, expected.z[1]);
            std::copy_n(state.p[2], vector_bytes, expected.p[2]);
            expected.nzcv = (expected.nzcv & ~std::uint64_t{0xF0000000}) | c.nzcv << 28;
            const aarch64_p_reg pd = p_operand(3, code), pg = p_operand(2, aarch64_p_reg::zeroing);
            if (c.with_signed != nullptr)
                c.with_signed(&state, pd, pg, z_operand(1, code), c.imm);
            else
                c.with_unsigned(&state, pd, pg, z_operand(1, code), static_cast<unsigned int>(c.imm));
            EXPECT_TRUE(same_state(state, expected)) << "immediate " << c.imm << ", size code " << code;
        }
    }
}

} // namespace
