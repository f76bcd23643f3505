#include "sve/handlers/predicate_flags.h"

#include "tests/unit/state_tools.h"

namespace {

constexpr std::uint64_t flag_n = std::uint64_t{1} << 31;
constexpr std::uint64_t flag_z = std::uint64_t{1} << 30;
constexpr std::uint64_t flag_c = std::uint64_t{1} << 29;
constexpr std::uint64_t all_flags = 0xF0000000;

const char* bytes_of(const std::uint8_t* row) { return reinterpret_cast<const char*>(row); }

// The flags that the elements of a result say, in one pass upwards: the last active element seen so far wins.
template <class Element> std::uint64_t define(const std::uint8_t* governing, const std::uint8_t* result) {
    bool any_active = false, any_true = false, first = false, last = false;
    for (int i = 0; i < vector_bytes / static_cast<int>(sizeof(Element)); ++i) {
        if (!element_is_active<Element>(governing, i))
            continue;
        last = element_is_active<Element>(result, i);
        if (!any_active)
            first = last;
        any_active = true;
        any_true = any_true || last;
    }
    return (first ? flag_n : 0) | (any_true ? 0 : flag_z) | (last ? 0 : flag_c);
}

template <class Element> class PredicateFlags : public testing::Test {};
using element_types =
    testing::Types<signed char, short, int, long, unsigned char, unsigned short, unsigned int, unsigned long>;
TYPED_TEST_SUITE(PredicateFlags, element_types);

// Every pair of an active and a true element, and everything in the shapes of a predicate.
TYPED_TEST(PredicateFlags, OfSingleElements) {
    constexpr int count = vector_bytes / static_cast<int>(sizeof(TypeParam));
    cpu_state state = random_state(1);
    for (int active = 0; active < count; ++active) {
        for (int is_true = 0; is_true < count; ++is_true) {
            set_predicate<TypeParam>(state.p[1], predicate_shape::all_false, static_cast<unsigned>(active));
            set_predicate<TypeParam>(state.p[2], predicate_shape::all_false, static_cast<unsigned>(is_true));
            set_active<TypeParam>(state.p[1], active, true);
            set_active<TypeParam>(state.p[2], is_true, true);
            sve_ptest<TypeParam>(&state, bytes_of(state.p[1]), bytes_of(state.p[2]));
            ASSERT_EQ(state.nzcv & all_flags, active == is_true ? flag_n : flag_z | flag_c)
                << active << ", " << is_true;
        }
    }
}

TYPED_TEST(PredicateFlags, OfEveryPairOfShapes) {
    for (unsigned seed = 0; seed < 30; ++seed) {
        for (const predicate_shape governing : predicate_shapes) {
            for (const predicate_shape result : predicate_shapes) {
                cpu_state state = random_state(seed);
                set_predicate<TypeParam>(state.p[3], governing, seed);
                set_predicate<TypeParam>(state.p[4], result, seed + 1000);
                cpu_state expected = state;
                expected.nzcv = (state.nzcv & ~all_flags) | define<TypeParam>(state.p[3], state.p[4]);
                sve_ptest<TypeParam>(&state, bytes_of(state.p[3]), bytes_of(state.p[4]));
                ASSERT_TRUE(same_state(state, expected))
                    << "shapes " << static_cast<int>(governing) << ", " << static_cast<int>(result);
            }
        }
    }
}

// Active from the first element to `length`, true between two others, as loops make them.
TYPED_TEST(PredicateFlags, OfLeadingElements) {
    constexpr int count = vector_bytes / static_cast<int>(sizeof(TypeParam));
    cpu_state state = random_state(5);
    std::mt19937 generator(5);
    for (int length = 0; length <= count; ++length) {
        for (int repeat = 0; repeat < 20; ++repeat) {
            const int from = static_cast<int>(generator() % count);
            const int to = static_cast<int>(generator() % (count + 1));
            for (int i = 0; i < count; ++i) {
                set_active<TypeParam>(state.p[0], i, i < length);
                set_active<TypeParam>(state.p[15], i, i >= from && i < to);
            }
            sve_ptest<TypeParam>(&state, bytes_of(state.p[0]), bytes_of(state.p[15]));
            const bool some = from < to && from < length;
            const std::uint64_t flags =
                (some && from == 0 ? flag_n : 0) | (some ? 0 : flag_z) | (some && to >= length ? 0 : flag_c);
            ASSERT_EQ(state.nzcv & all_flags, flags) << length << ", " << from << " to " << to;
        }
    }
}

TEST(PredicateTest, LooksAtEveryByte) {
    cpu_state state = random_state(9);
    set_predicate<std::uint8_t>(state.p[8], predicate_shape::all_false, 1);
    set_predicate<std::uint8_t>(state.p[9], predicate_shape::all_false, 2);
    set_active<std::uint8_t>(state.p[8], 13, true);
    set_active<std::uint8_t>(state.p[9], 13, true);
    cpu_state expected = state;
    expected.nzcv = (state.nzcv & ~all_flags) | flag_n;
    EXPECT_EQ(sve_ptest_pp(&state, p_operand(8, aarch64_p_reg::plain), p_operand(9, byte_elements)),
              aarch64_emulated);
    EXPECT_TRUE(same_state(state, expected));
}

} // namespace
