// Every handler against arithmetic done in 128 bits, an element at a time.
#include "sve/handlers/integer_arithmetic.h"

#include "tests/unit/state_tools.h"

#include <array>
#include <limits>

namespace {

__extension__ typedef __int128 wide;

// A random element, every second one a value at which arithmetic goes wrong.
template <class Element> Element interesting(std::mt19937_64& generator) {
    using limits = std::numeric_limits<std::make_signed_t<Element>>;
    const Element edges[] = {0,
                             1,
                             2,
                             static_cast<Element>(-1),
                             static_cast<Element>(-2),
                             static_cast<Element>(limits::min()),
                             static_cast<Element>(limits::min() + 1),
                             static_cast<Element>(limits::max())};
    const std::uint64_t random = generator();
    return random % 2 ? edges[random / 2 % std::size(edges)] : static_cast<Element>(random >> 8);
}

template <class Element> void set_interesting_row(std::uint8_t* row_bytes, unsigned seed) {
    std::mt19937_64 generator(seed);
    for (int i = 0; i < vector_bytes / static_cast<int>(sizeof(Element)); ++i)
        set_element(row_bytes, i, interesting<Element>(generator));
}

// The element as a number, read as signed or unsigned.
template <class Element> wide widened(Element value, bool is_signed) {
    return is_signed ? wide{static_cast<std::make_signed_t<Element>>(value)} : wide{value};
}

template <class... Element, class Body> void for_types(Body body) { (body(Element{}), ...); }
template <class Body> void for_every_size(Body body) {
    for_types<std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t>(body);
}

struct predicated_case {
    const char* name;
    aarch64_decode_rc (*handler)(cpu_state*, aarch64_z_reg, aarch64_p_reg, aarch64_z_reg);
    bool is_signed;
    wide (*reference)(wide a, wide b);
};

wide quotient(wide a, wide b) { return b == 0 ? 0 : a / b; }

const predicated_case predicated_cases[] = {
    {"add", sve_add_zpz, false, [](wide a, wide b) { return a + b; }},
    {"sub", sve_sub_zpz, false, [](wide a, wide b) { return a - b; }},
    {"and", sve_and_zpz, false, [](wide a, wide b) { return a & b; }},
    {"orr", sve_orr_zpz, false, [](wide a, wide b) { return a | b; }},
    {"eor", sve_eor_zpz, false, [](wide a, wide b) { return a ^ b; }},
    {"bic", sve_bic_zpz, false, [](wide a, wide b) { return a & ~b; }},
    {"smin", sve_smin_zpz, true, [](wide a, wide b) { return std::min(a, b); }},
    {"smax", sve_smax_zpz, true, [](wide a, wide b) { return std::max(a, b); }},
    {"umin", sve_umin_zpz, false, [](wide a, wide b) { return std::min(a, b); }},
    {"umax", sve_umax_zpz, false, [](wide a, wide b) { return std::max(a, b); }},
    {"mul", sve_mul_zpz, true, [](wide a, wide b) { return a * b; }},
};

const predicated_case division_cases[] = {
    {"sdiv", sve_sdiv_zpz, true, [](wide a, wide b) { return quotient(a, b); }},
    {"udiv", sve_udiv_zpz, false, [](wide a, wide b) { return quotient(a, b); }},
    {"sdivr", sve_sdivr_zpz, true, [](wide a, wide b) { return quotient(b, a); }},
    {"udivr", sve_udivr_zpz, false, [](wide a, wide b) { return quotient(b, a); }},
};

struct register_numbers {
    int zdn, pg, zm;
};

template <class Element> void check_predicated(const predicated_case& operation) {
    unsigned seed = 1;
    for (const register_numbers r : {register_numbers{3, 2, 9}, {7, 0, 7}, {31, 7, 0}, {0, 1, 31}}) {
        for (const predicate_shape shape : predicate_shapes) {
            SCOPED_TRACE(testing::Message()
                         << operation.name << ", " << sizeof(Element) << "-byte elements, z" << r.zdn << ", z"
                         << r.zm << ", predicate " << static_cast<int>(shape));
            cpu_state state = random_state(++seed);
            set_interesting_row<Element>(state.z[r.zm], ++seed);
            set_interesting_row<Element>(state.z[r.zdn], ++seed);
            set_predicate<Element>(state.p[r.pg], shape, ++seed);
            cpu_state expected = state;
            for (int i = 0; i < vector_bytes / static_cast<int>(sizeof(Element)); ++i) {
                if (!element_is_active<Element>(state.p[r.pg], i))
                    continue;
                const wide a = widened(element<Element>(state.z[r.zdn], i), operation.is_signed);
                const wide b = widened(element<Element>(state.z[r.zm], i), operation.is_signed);
                set_element(expected.z[r.zdn], i, static_cast<Element>(operation.reference(a, b)));
            }
            const int code = size_code_of<Element>;
            EXPECT_EQ(operation.handler(&state, z_destructive(r.zdn, code),
                                        p_operand(r.pg, aarch64_p_reg::merging), z_operand(r.zm, code)),
                      aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected));
        }
    }
}

TEST(IntegerArithmetic, Predicated) {
    for (const predicated_case& operation : predicated_cases)
        for_every_size([&](auto zero) { check_predicated<decltype(zero)>(operation); });
}

TEST(IntegerArithmetic, PredicatedDivision) {
    for (const predicated_case& operation : division_cases)
        for_types<std::uint32_t, std::uint64_t>(
            [&](auto zero) { check_predicated<decltype(zero)>(operation); });
}

// Only the low bit of an element's first predicate byte decides.
TEST(IntegerArithmetic, StrayPredicateBits) {
    struct {
        int byte_in_lane;
        std::uint8_t value;
        bool active;
    } const cases[] = {{0, 0x01, true},  {0, 0x03, true},  {0, 0xFF, true},  {0, 0x02, false},
                       {0, 0xFE, false}, {1, 0x01, false}, {1, 0xFF, false}, {7, 0xFF, false}};
    for (const auto& c : cases) {
        for_every_size([&](auto zero) {
            using Element = decltype(zero);
            if (c.byte_in_lane >= static_cast<int>(sizeof(Element)))
                return;
            SCOPED_TRACE(testing::Message() << sizeof(Element) << "-byte elements, byte " << c.byte_in_lane
                                            << " = " << int{c.value});
            cpu_state state{};
            set_element<Element>(state.z[1], 1, 40);
            set_element<Element>(state.z[2], 1, 2);
            state.p[4][sizeof(Element) + static_cast<std::size_t>(c.byte_in_lane)] = c.value;
            cpu_state expected = state;
            if (c.active)
                set_element<Element>(expected.z[1], 1, 42);
            const int code = size_code_of<Element>;
            sve_add_zpz(&state, z_destructive(1, code), p_operand(4, 4), z_operand(2, code));
            EXPECT_TRUE(same_state(state, expected));
        });
    }
}

template <class Element> struct division_result {
    decltype(&sve_sdiv_zpz) handler;
    Element zdn, zm, result;
};

template <class Element, std::size_t count>
void check_divisions(const division_result<Element> (&cases)[count]) {
    for (const auto& c : cases) {
        cpu_state state = random_state(5);
        set_predicate<Element>(state.p[1], predicate_shape::only_last, 6);
        const int last = vector_bytes / static_cast<int>(sizeof(Element)) - 1;
        set_element(state.z[8], last, c.zdn);
        set_element(state.z[9], last, c.zm);
        cpu_state expected = state;
        set_element(expected.z[8], last, c.result);
        c.handler(&state, z_destructive(8, size_code_of<Element>), p_operand(1, 4),
                  z_operand(9, size_code_of<Element>));
        EXPECT_TRUE(same_state(state, expected)) << c.zdn << " and " << c.zm;
    }
}

TEST(IntegerArithmetic, DivisionEdges) {
    constexpr std::int32_t min32 = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t min64 = std::numeric_limits<std::int64_t>::min();
    check_divisions<std::int32_t>({{sve_sdiv_zpz, 17, 0, 0},
                                   {sve_sdiv_zpz, min32, -1, min32},
                                   {sve_sdiv_zpz, 5, -1, -5},
                                   {sve_sdiv_zpz, -7, 2, -3},
                                   {sve_sdiv_zpz, 7, -2, -3},
                                   {sve_sdiv_zpz, min32, 1, min32},
                                   {sve_sdivr_zpz, 0, 17, 0},
                                   {sve_sdivr_zpz, -1, min32, min32},
                                   {sve_sdivr_zpz, 2, -7, -3}});
    check_divisions<std::int64_t>({{sve_sdiv_zpz, -17, 0, 0},
                                   {sve_sdiv_zpz, min64, -1, min64},
                                   {sve_sdiv_zpz, min64, 2, min64 / 2},
                                   {sve_sdivr_zpz, 0, min64, 0},
                                   {sve_sdivr_zpz, -1, min64, min64}});
    check_divisions<std::uint32_t>({{sve_udiv_zpz, 17, 0, 0},
                                    {sve_udiv_zpz, 0x80000000, 0xFFFFFFFF, 0},
                                    {sve_udiv_zpz, 0xFFFFFFFF, 2, 0x7FFFFFFF},
                                    {sve_udivr_zpz, 0, 17, 0},
                                    {sve_udivr_zpz, 10, 0xFFFFFFFF, 0x19999999}});
    check_divisions<std::uint64_t>({{sve_udiv_zpz, 0x8000000000000000, 0xFFFFFFFFFFFFFFFF, 0},
                                    {sve_udiv_zpz, 0xFFFFFFFFFFFFFFFF, 0, 0},
                                    {sve_udivr_zpz, 16, 0xFFFFFFFFFFFFFFFF, 0x0FFFFFFFFFFFFFFF}});
}

struct unpredicated_case {
    const char* name;
    aarch64_decode_rc (*handler)(cpu_state*, aarch64_z_reg, aarch64_z_reg, aarch64_z_reg);
    wide (*reference)(wide a, wide b);
};

const unpredicated_case sized_cases[] = {
    {"add", sve_add_zzz, [](wide a, wide b) { return a + b; }},
    {"sub", sve_sub_zzz, [](wide a, wide b) { return a - b; }},
};
const unpredicated_case bitwise_cases[] = {
    {"and", sve_and_zzz, [](wide a, wide b) { return a & b; }},
    {"orr", sve_orr_zzz, [](wide a, wide b) { return a | b; }},
    {"eor", sve_eor_zzz, [](wide a, wide b) { return a ^ b; }},
    {"bic", sve_bic_zzz, [](wide a, wide b) { return a & ~b; }},
};

template <class Element> void check_unpredicated(const unpredicated_case& operation) {
    unsigned seed = 100;
    struct {
        int zd, zn, zm;
    } const registers[] = {{1, 2, 3}, {1, 1, 3}, {1, 2, 1}, {4, 5, 5}, {6, 6, 6}, {31, 0, 30}};
    for (const auto& r : registers) {
        SCOPED_TRACE(testing::Message() << operation.name << ", " << sizeof(Element) << "-byte elements, z"
                                        << r.zd << ", z" << r.zn << ", z" << r.zm);
        cpu_state state = random_state(++seed);
        set_interesting_row<Element>(state.z[r.zn], ++seed);
        set_interesting_row<Element>(state.z[r.zm], ++seed);
        cpu_state expected = state;
        for (int i = 0; i < vector_bytes / static_cast<int>(sizeof(Element)); ++i) {
            const wide a = element<Element>(state.z[r.zn], i);
            const wide b = element<Element>(state.z[r.zm], i);
            set_element(expected.z[r.zd], i, static_cast<Element>(operation.reference(a, b)));
        }
        const int code = size_code_of<Element>;
        EXPECT_EQ(
            operation.handler(&state, z_operand(r.zd, code), z_operand(r.zn, code), z_operand(r.zm, code)),
            aarch64_emulated);
        EXPECT_TRUE(same_state(state, expected));
    }
}

TEST(IntegerArithmetic, Unpredicated) {
    for (const unpredicated_case& operation : sized_cases)
        for_every_size([&](auto zero) { check_unpredicated<decltype(zero)>(operation); });
    for (const unpredicated_case& operation : bitwise_cases)
        check_unpredicated<std::uint64_t>(operation);
}

// The reference gets the immediate with the sign that it has in the instruction.
template <class Immediate, class Handler, class Reference, std::size_t count>
void check_immediate(Handler handler, const Immediate (&immediates)[count], Reference reference) {
    unsigned seed = 200;
    for (const Immediate immediate : immediates) {
        for_every_size([&](auto zero) {
            using Element = decltype(zero);
            SCOPED_TRACE(testing::Message() << sizeof(Element) << "-byte elements, " << immediate);
            cpu_state state = random_state(++seed);
            set_interesting_row<Element>(state.z[31], ++seed);
            cpu_state expected = state;
            for (int i = 0; i < vector_bytes / static_cast<int>(sizeof(Element)); ++i) {
                const wide a = element<Element>(state.z[31], i);
                set_element(expected.z[31], i, static_cast<Element>(reference(a, wide{immediate})));
            }
            EXPECT_EQ(handler(&state, z_destructive(31, size_code_of<Element>), immediate), aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected));
        });
    }
}

TEST(IntegerArithmetic, Immediates) {
    const unsigned int shifted[] = {0, 1, 0xFF, 0x100, 0xFF00, 0xFFFFFFFF};
    const int multipliers[] = {0, 1, -1, 3, 127, -128};
    check_immediate(sve_add_zi, shifted, [](wide a, wide b) { return a + b; });
    check_immediate(sve_sub_zi, shifted, [](wide a, wide b) { return a - b; });
    check_immediate(sve_mul_zi, multipliers, [](wide a, wide b) { return a * b; });
}

} // namespace
