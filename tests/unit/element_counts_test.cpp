// Counts by pattern, in the library and in the handlers, and the instructions that add them.
#include "sve/library/element_counts.h"

#include "sve/handlers/element_counts.h"
#include "sve/library/predicate_patterns.h"
#include "tests/unit/state_tools.h"

namespace {

// The element counts that a pattern selects at 1024 bits, for bytes, halfwords, words and doublewords.
struct pattern_row {
    int pattern;
    std::uint64_t counts[4];
};
const pattern_row named_patterns[] = {
    {0, {128, 64, 32, 16}}, {1, {1, 1, 1, 1}},     {2, {2, 2, 2, 2}},       {3, {3, 3, 3, 3}},
    {4, {4, 4, 4, 4}},      {5, {5, 5, 5, 5}},     {6, {6, 6, 6, 6}},       {7, {7, 7, 7, 7}},
    {8, {8, 8, 8, 8}},      {9, {16, 16, 16, 16}}, {10, {32, 32, 32, 0}},   {11, {64, 64, 0, 0}},
    {12, {128, 0, 0, 0}},   {13, {0, 0, 0, 0}},    {29, {128, 64, 32, 16}}, {30, {126, 63, 30, 15}},
    {31, {128, 64, 32, 16}}};

std::uint64_t expected_count(int pattern, int size_code) {
    for (const pattern_row& row : named_patterns)
        if (row.pattern == pattern)
            return row.counts[size_code];
    return 0;
}

TEST(PredicatePatterns, AnyElementCount) {
    struct {
        unsigned long pattern;
        int elements, length;
    } const cases[] = {
        {0, 0, 1},     {0, 1, 1},      {0, 2, 2},    {0, 3, 2},    {0, 24, 16},         {0, 255, 128},
        {0, 256, 256}, {1, 0, 0},      {1, 1, 1},    {7, 6, 0},    {7, 7, 7},           {8, 7, 0},
        {8, 9, 8},     {9, 15, 0},     {9, 16, 16},  {10, 31, 0},  {11, 64, 64},        {12, 127, 0},
        {13, 255, 0},  {13, 256, 256}, {14, 256, 0}, {28, 256, 0}, {29, 0, 0},          {29, 3, 0},
        {29, 6, 4},    {29, 256, 256}, {30, 2, 0},   {30, 8, 6},   {30, 256, 255},      {31, 0, 0},
        {31, 6, 6},    {31, 7, 6},     {32, 256, 0}, {63, 256, 0}, {1ul << 32, 256, 0}, {~0ul, 256, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(VecTrueILength(c.pattern, c.elements), c.length)
            << "pattern " << c.pattern << ", " << c.elements << " elements";
}

TEST(ElementCounts, CountPrimitives) {
    unsigned long (*const primitives[])(unsigned long, unsigned long, CpuContext*) = {
        VecU8CountVLSI, VecU16CountVLSI, VecU32CountVLSI, VecU64CountVLSI};
    CpuContext context{};
    context.vl = 0xFC000000 | 16; // only bits 25:0 are the length
    for (int size_code = 0; size_code < 4; ++size_code) {
        for (int pattern = 0; pattern < 32; ++pattern) {
            for (const unsigned long imm4 : {0ul, 1ul, 15ul}) {
                EXPECT_EQ(primitives[size_code](static_cast<unsigned long>(pattern), imm4, &context),
                          expected_count(pattern, size_code) * (imm4 + 1))
                    << "size " << size_code << ", pattern " << pattern << ", imm4 " << imm4;
            }
        }
    }
    context.vl = 6; // 384 bits: 48 bytes
    EXPECT_EQ(VecU8CountVLSI(0, 0, &context), 32u);
    EXPECT_EQ(VecU8CountVLSI(31, 1, &context), 96u);
    EXPECT_EQ(VecU16CountVLSI(29, 0, &context), 24u);
    EXPECT_EQ(VecU32CountVLSI(9, 0, &context), 0u);
    EXPECT_EQ(VecU64CountVLSI(30, 2, &context), 18u);
}

TEST(ElementCounts, ScalarIncrements) {
    struct {
        decltype(&sve_incb_rii) handler;
        int size_code;
        bool decrements;
    } const cases[] = {{sve_incb_rii, 0, false}, {sve_inch_rii, 1, false}, {sve_incw_rii, 2, false},
                       {sve_incd_rii, 3, false}, {sve_decb_rii, 0, true},  {sve_dech_rii, 1, true},
                       {sve_decw_rii, 2, true},  {sve_decd_rii, 3, true}};
    for (const auto& c : cases) {
        for (int pattern = 0; pattern < 32; ++pattern) {
            for (const int multiplier : {1, 2, 16}) {
                for (const int reg : {0, 30, 31}) {
                    SCOPED_TRACE(testing::Message()
                                 << (c.decrements ? "dec" : "inc") << ", size " << c.size_code << ", pattern "
                                 << pattern << ", multiplier " << multiplier << ", x" << reg);
                    cpu_state state = random_state(20);
                    state.x[0] = c.decrements ? 7 : ~std::uint64_t{0} - 7; // most sums wrap
                    cpu_state expected = state;
                    const std::uint64_t step =
                        expected_count(pattern, c.size_code) * static_cast<std::uint64_t>(multiplier);
                    if (reg != 31)
                        expected.x[reg] += c.decrements ? 0 - step : step;
                    EXPECT_EQ(c.handler(&state, i_destructive(reg), pattern, multiplier), aarch64_emulated);
                    EXPECT_TRUE(same_state(state, expected));
                }
            }
        }
    }
}

template <class Element>
void check_vector_increments(decltype(&sve_inch_zii) increment, decltype(&sve_inch_zii) decrement) {
    const int code = size_code_of<Element>;
    for (int pattern = 0; pattern < 32; ++pattern) {
        for (const int multiplier : {1, 16}) {
            SCOPED_TRACE(testing::Message() << sizeof(Element) << "-byte elements, pattern " << pattern
                                            << ", multiplier " << multiplier);
            cpu_state state = random_state(21);
            set_element<Element>(state.z[31], 0, 3); // wraps downwards, and its neighbour upwards
            set_element<Element>(state.z[31], 1, static_cast<Element>(-3));
            const cpu_state before = state;
            cpu_state expected = state;
            const std::uint64_t step = expected_count(pattern, code) * static_cast<std::uint64_t>(multiplier);
            for (int i = 0; i < vector_bytes / static_cast<int>(sizeof(Element)); ++i)
                set_element(expected.z[31], i,
                            static_cast<Element>(element<Element>(before.z[31], i) + step));
            EXPECT_EQ(increment(&state, z_destructive(31, code), pattern, multiplier), aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected));

            state = before;
            for (int i = 0; i < vector_bytes / static_cast<int>(sizeof(Element)); ++i)
                set_element(expected.z[31], i,
                            static_cast<Element>(element<Element>(before.z[31], i) - step));
            EXPECT_EQ(decrement(&state, z_destructive(31, code), pattern, multiplier), aarch64_emulated);
            EXPECT_TRUE(same_state(state, expected));
        }
    }
}

TEST(ElementCounts, VectorIncrements) {
    check_vector_increments<std::uint16_t>(sve_inch_zii, sve_dech_zii);
    check_vector_increments<std::uint32_t>(sve_incw_zii, sve_decw_zii);
    check_vector_increments<std::uint64_t>(sve_incd_zii, sve_decd_zii);
}

TEST(ElementCounts, SaturatingByteDecrement) {
    struct {
        int size_code, pattern, multiplier;
        std::uint64_t value, result;
    } const cases[] = {{3, 31, 1, 1000, 872},
                       {3, 31, 1, 128, 0},
                       {3, 31, 1, 127, 0},
                       {3, 31, 16, 0x100000000, 0xFFFFF800},
                       {3, 30, 2, 0xFFFFFFFFFFFFFFFF, 0xFFFFFFFFFFFFFF03},
                       {3, 13, 16, 5, 5},
                       {3, 14, 16, 5, 5},
                       {2, 31, 1, 1000, 872},
                       {2, 31, 1, 0x500000064, 0},        // only the low word is read and
                       {2, 31, 1, 0xFFFFFFFF00000081, 1}, // the upper one becomes zero
                       {2, 13, 1, 0x1234567800000005, 5},
                       {2, 12, 16, 0xFFFFFFFF, 0xFFFFF7FF}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << "size " << c.size_code << ", pattern " << c.pattern << ", value " << c.value);
        cpu_state state = random_state(22);
        state.x[8] = c.value;
        cpu_state expected = state;
        expected.x[8] = c.result;
        EXPECT_EQ(sve_uqdecb_rii(&state, i_destructive(8, c.size_code), c.pattern, c.multiplier),
                  aarch64_emulated);
        EXPECT_TRUE(same_state(state, expected));
        sve_uqdecb_rii(&state, i_destructive(31, c.size_code), c.pattern, c.multiplier);
        EXPECT_TRUE(same_state(state, expected));
    }
}

template <class Element> void check_predicate_counts() {
    const int code = size_code_of<Element>;
    for (const predicate_shape shape : predicate_shapes) {
        for (const predicate_shape governing : predicate_shapes) {
            for (const int reg : {17, 31}) {
                SCOPED_TRACE(testing::Message()
                             << sizeof(Element) << "-byte elements, predicates " << static_cast<int>(shape)
                             << " and " << static_cast<int>(governing));
                cpu_state state = random_state(23);
                set_predicate<Element>(state.p[6], shape, 24);
                set_predicate<Element>(state.p[7], governing, 25);
                std::uint64_t active = 0, both = 0;
                for (int i = 0; i < vector_bytes / static_cast<int>(sizeof(Element)); ++i) {
                    active += element_is_active<Element>(state.p[6], i);
                    both += element_is_active<Element>(state.p[6], i) &&
                            element_is_active<Element>(state.p[7], i);
                }
                state.x[17] = ~std::uint64_t{0} - 4; // most sums wrap
                cpu_state expected = state;
                if (reg != 31)
                    expected.x[reg] += active;
                EXPECT_EQ(sve_incp_rp(&state, i_destructive(reg), p_operand(6, code)), aarch64_emulated);
                EXPECT_TRUE(same_state(state, expected));

                if (reg != 31)
                    expected.x[reg] = both;
                EXPECT_EQ(sve_cntp_rpp(&state, i_operand(reg), p_operand(7, aarch64_p_reg::plain),
                                       p_operand(6, code)),
                          aarch64_emulated);
                EXPECT_TRUE(same_state(state, expected));
            }
        }
    }
}

TEST(ElementCounts, PredicateCounts) {
    check_predicate_counts<std::uint8_t>();
    check_predicate_counts<std::uint16_t>();
    check_predicate_counts<std::uint32_t>();
    check_predicate_counts<std::uint64_t>();
}

TEST(ElementCounts, VectorLengthArithmetic) {
    struct {
        int rd, rn, imm;
        std::uint64_t vectors, predicates; // to be added to rn
    } const cases[] = {{1, 2, 1, 128, 16},
                       {31, 31, -1, std::uint64_t{0} - 128, std::uint64_t{0} - 16},
                       {31, 4, -32, std::uint64_t{0} - 4096, std::uint64_t{0} - 512},
                       {4, 31, 31, 3968, 496},
                       {5, 5, 0, 0, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.rd << ", " << c.rn << ", " << c.imm);
        const cpu_state before = random_state(26);
        const aarch64_i_rsp_reg rd{c.rd, doubleword_elements}, rn{c.rn, doubleword_elements};
        cpu_state state = before, expected = before;
        expected.x[c.rd] = before.x[c.rn] + c.vectors;
        EXPECT_EQ(sve_addvl_rri(&state, rd, rn, c.imm), aarch64_emulated);
        EXPECT_TRUE(same_state(state, expected));

        state = before;
        expected.x[c.rd] = before.x[c.rn] + c.predicates;
        EXPECT_EQ(sve_addpl_rri(&state, rd, rn, c.imm), aarch64_emulated);
        EXPECT_TRUE(same_state(state, expected));

        state = expected = before;
        if (c.rd != 31)
            expected.x[c.rd] = c.vectors;
        EXPECT_EQ(sve_rdvl_ri(&state, i_operand(c.rd), c.imm), aarch64_emulated);
        EXPECT_TRUE(same_state(state, expected));
    }
}

} // namespace
