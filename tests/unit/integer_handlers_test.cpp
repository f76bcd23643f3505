// Counts, positions and size codes that no instruction word encodes, but that the handlers define.
#include "sve/handlers/integer_reductions.h"
#include "sve/handlers/permutes.h"
#include "sve/handlers/shifts.h"
#include "sve/handlers/unary_integer.h"

#include "tests/unit/state_tools.h"

namespace {

// Counts around the widths and beyond every width, in whichever element they are not a multiple of.
constexpr unsigned int counts[] = {0,  1,  7,  8,  9,   15,  16,  17,      31,         32,
                                   33, 63, 64, 65, 128, 255, 256, 0x10000, 0x80000000, 0xFFFFFFFF};

template <class Element> class ImmediateShifts : public testing::Test {};
using element_types = testing::Types<std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t>;
TYPED_TEST_SUITE(ImmediateShifts, element_types);

TYPED_TEST(ImmediateShifts, ByAnyCount) {
    using Element = TypeParam;
    using Signed = std::make_signed_t<Element>;
    constexpr int code = size_code_of<Element>;
    constexpr unsigned int width = sizeof(Element) * 8;
    for (const unsigned int count : counts) {
        const auto left = [count](Element value) {
            return count < width ? static_cast<Element>(std::uint64_t{value} << count) : Element{0};
        };
        const auto right = [count](Element value) {
            return static_cast<Element>(std::int64_t{static_cast<Signed>(value)} >> std::min(count, 63u));
        };
        const auto check = [count](auto run, auto define, bool predicated) {
            cpu_state state = random_state(count);
            cpu_state expected = state;
            for (int i = 0; i < vector_bytes / static_cast<int>(sizeof(Element)); ++i) {
                if (!predicated || element_is_active<Element>(state.p[2], i))
                    set_element(expected.z[3], i, define(element<Element>(state.z[predicated ? 3 : 4], i)));
            }
            EXPECT_EQ(run(&state), aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected)) << "count " << count;
        };
        const aarch64_p_reg p2 = p_operand(2, aarch64_p_reg::merging);
        check([=](cpu_state* s) { return sve_lsl_zpi(s, z_destructive(3, code), p2, count); }, left, true);
        check([=](cpu_state* s) { return sve_asr_zpi(s, z_destructive(3, code), p2, count); }, right, true);
        check([=](cpu_state* s) { return sve_lsl_zzi(s, z_operand(3, code), z_operand(4, code), count); },
              left, false);
        check([=](cpu_state* s) { return sve_asr_zzi(s, z_operand(3, code), z_operand(4, code), count); },
              right, false);
    }
}

// A size that an extension does not have counts as the smallest that it has.
TEST(Extensions, SmallestElements) {
    const struct {
        unary_integer_handler* handler;
        int code, instead;
    } cases[] = {
        {sve_sxtb_zpz, byte_elements, halfword_elements},
        {sve_sxth_zpz, halfword_elements, word_elements},
        {sve_uxth_zpz, byte_elements, word_elements},
        {sve_sxtw_zpz, word_elements, doubleword_elements},
        {sve_uxtw_zpz, byte_elements, doubleword_elements},
        {sve_revw_zpz, byte_elements, doubleword_elements},
    };
    for (const auto& c : cases) {
        cpu_state state = random_state(21);
        cpu_state expected = state;
        const aarch64_p_reg pg = p_operand(1, aarch64_p_reg::merging);
        c.handler(&expected, z_operand(5, c.instead), pg, z_operand(6, c.instead));
        EXPECT_EQ(c.handler(&state, z_operand(5, c.code), pg, z_operand(6, c.code)), aarch64_emulated);
        EXPECT_TRUE(same_state(state, expected)) << c.code;
    }
}

TEST(Ext, PositionsBeyondTheVectorChangeNothing) {
    for (const unsigned int position : {128u, 129u, 255u, 256u, 0xFFFFFFFFu}) {
        cpu_state state = random_state(position);
        const cpu_state expected = state;
        EXPECT_EQ(sve_ext_zzi(&state, z_destructive(1, byte_elements), z_operand(2, byte_elements), position),
                  aarch64_emulated);
        EXPECT_TRUE(same_state(state, expected)) << position;
    }
}

// Sums at the edge of the lanes in which they are formed, and what an empty predicate gives.
TEST(IntegerReductions, ByHand) {
    const struct {
        const char* name;
        integer_reduction_handler* handler;
        int code;
        bool active;
        std::uint8_t fill;
        std::uint64_t result;
    } cases[] = {
        {"uaddv b", sve_uaddv_vpz, byte_elements, true, 0xFF, 32640},
        {"uaddv h", sve_uaddv_vpz, halfword_elements, true, 0xFF, 64 * 0xFFFF},
        {"uaddv s", sve_uaddv_vpz, word_elements, true, 0xFF, 32 * 0xFFFFFFFFull},
        {"uaddv d", sve_uaddv_vpz, doubleword_elements, true, 0xFF, ~0ull - 15},
        {"sminv b", sve_sminv_vpz, byte_elements, false, 0, 0x7F},
        {"smaxv h", sve_smaxv_vpz, halfword_elements, false, 0, 0x8000},
        {"smaxv d", sve_smaxv_vpz, doubleword_elements, false, 0, 0x8000000000000000},
        {"uminv b", sve_uminv_vpz, byte_elements, false, 0, 0xFF},
        {"umaxv s", sve_umaxv_vpz, word_elements, false, 0xFF, 0},
        {"andv s", sve_andv_vpz, word_elements, false, 0, 0xFFFFFFFF},
        {"orv d", sve_orv_vpz, doubleword_elements, false, 0xFF, 0},
        {"eorv b", sve_eorv_vpz, byte_elements, true, 0x5A, 0},
    };
    for (const auto& c : cases) {
        for (const unsigned int vd : {8u, 9u}) {
            cpu_state state = random_state(22);
            std::fill_n(state.z[9], vector_bytes, c.fill);
            set_predicate<std::uint8_t>(
                state.p[3], c.active ? predicate_shape::all_true : predicate_shape::all_false, 22);
            cpu_state expected = state;
            std::fill_n(expected.z[vd], vector_bytes, std::uint8_t{0});
            set_element(expected.z[vd], 0, c.result);
            EXPECT_EQ(c.handler(&state, vd, p_operand(3, aarch64_p_reg::plain), z_operand(9, c.code)),
                      aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected)) << c.name << " into v" << vd;
        }
    }
}

} // namespace
