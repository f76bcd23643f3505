// Recognition of words: every row is found whatever its operand fields hold, nothing else is, and the two
// look-up functions do what they promise with a stub.
#include "sve/client/statistics.h"
#include "sve/decode/opcode_rows.h"
#include "tests/unit/state_tools.h"

#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

TEST(DecodeMaps, CutKeysInTheDirectionOfTheirNames) {
    EXPECT_EQ(map_key(describe(decode_map_id::map_31_13), 0x052A8000), 0x2954);
    EXPECT_EQ(map_key(describe(decode_map_id::map_31_21__15_10), 0x04200000), 0x840);
    EXPECT_EQ(map_key(describe(decode_map_id::map_31_14__9_9__4_0), 0x2550C000), 0x2550C0);
    EXPECT_EQ(map_key(describe(decode_map_id::map_31_0), 0x252C9000), 0x252C9000);
    EXPECT_EQ(map_key(describe(decode_map_id::map_31_0), 0xFFFFFFFF), -1)
        << "bit 31 is the sign of a whole-word key";
    EXPECT_GT(map_key(describe(decode_map_id::map_31_4), 0xFFFFFFFF), 0);

    EXPECT_EQ(decode_map__31_13.size(), 403u);
    EXPECT_EQ(decode_map__31_0.size(), 1u);
    EXPECT_STREQ(opcode_name(decode_map__31_13.at(0x2954)), "VecB8CondXASV");
    EXPECT_STREQ(opcode_name(decode_map__31_21__15_10.at(0x840)), "VecU8AddVVX");
}

TEST(DecodeMaps, CoverTheirSlicesAlone) {
    EXPECT_EQ(map_mask(describe(decode_map_id::map_31_14__9_9__4_0)), 0xFFFFC21Fu);
    EXPECT_EQ(map_mask(describe(decode_map_id::map_31_24__21_21__16_10)), 0xFF21FC00u);
    EXPECT_EQ(map_mask(describe(decode_map_id::map_31_21__13_13__4_4)), 0xFFE02010u);
    EXPECT_EQ(map_mask(describe(decode_map_id::map_31_0)), 0xFFFFFFFFu);
}

TEST(Decoder, FindsEveryRowWhateverItsOperandFieldsHold) {
    std::mt19937 generator(7);
    std::set<std::string> names;
    for_each_opcode([&](const opcode_row& row) {
        names.insert(row.name);
        const std::uint32_t free_bits = ~map_mask(describe(row.map));
        const std::uint32_t value = map_value(describe(row.map), row.key);
        for (const std::uint32_t filling :
             {0u, ~0u, static_cast<std::uint32_t>(generator()), static_cast<std::uint32_t>(generator())})
            ASSERT_EQ(is_sve(value | (filling & free_bits)), row.stub)
                << row.name << " " << std::hex << filling;
        ASSERT_STREQ(opcode_name(row.stub), row.name);
    });
    EXPECT_EQ(names.size(), 1483u);
}

TEST(Decoder, MissesEverythingElse) {
    const unsigned int words[] = {
        0x00000000, 0xFFFFFFFF,
        0xD503201F, // nop
        0x8B020020, // add x0, x1, x2
        0x0E228420, // add v0.8b, v1.8b, v2.8b
        0xF9400000, // ldr x0, [x0]
        0xA9400000, // ldp x0, x0, [x0]
        0x252C9001, // setffr with a bit that must be 0
        0x2518E410, // pfalse with bit 4 set
        0x04020000, // in the space of the predicated adds, unallocated
        0xA52C9000, // setffr with bit 31 set: must not hit the map of whole words
    };
    for (const unsigned int word : words)
        EXPECT_EQ(is_sve(word), nullptr) << std::hex << word;
    EXPECT_EQ(opcode_name(nullptr), nullptr);
    EXPECT_EQ(opcode_name([](cpu_state*, unsigned int) { return aarch64_emulated; }), nullptr);
}

TEST(Decoder, ExecutesCountsAndAdvances) {
    unsigned int code[] = {0x04A00020, 0xD503201F}; // add z0.s, z1.s, z0.s; nop
    cpu_state state = random_state(3);
    cpu_state expected = state;
    for (int i = 0; i < 32; ++i)
        set_element<std::uint32_t>(
            expected.z[0], i, element<std::uint32_t>(state.z[1], i) + element<std::uint32_t>(state.z[0], i));
    state.pc = code;
    expected.pc = code + 1;
    expected.instr_word = code[0];
    const std::uint64_t before = sve_instr_count;
    EXPECT_EQ(execute_sve_instruction(&state), aarch64_emulated);
    EXPECT_TRUE(same_state(state, expected));
    EXPECT_EQ(sve_instr_count, before + 1);
    EXPECT_EQ(icounts.at(code).first, code[0]);

    EXPECT_EQ(execute_sve_instruction(&state), aarch64_not_emulated) << "a word that no row matches";
    EXPECT_TRUE(same_state(state, expected));
    EXPECT_EQ(sve_instr_count, before + 1);
}

// Where random words seldom are.
TEST(Operands, ImmediatesAtTheEndsOfTheirFields) {
    const struct {
        unsigned int word; // to x1, from x2
        std::int64_t distance;
    } sums[] = {
        {0x04225401, -32 * 128}, {0x042253E1, 31 * 128}, {0x04625401, -32 * 16}, {0x046253E1, 31 * 16}};
    for (const auto& c : sums) {
        cpu_state state = random_state(5);
        is_sve(c.word)(&state, c.word);
        EXPECT_EQ(state.x[1] - state.x[2], static_cast<std::uint64_t>(c.distance)) << std::hex << c.word;
    }
    const struct {
        unsigned int word; // to z1 or p1, under p3, from x2
        int distance;
    } loads[] = {{0x85A04041, -256 * 128}, {0x859F5C41, 255 * 128}, // ldr z1
                 {0x85A00041, -256 * 16},  {0x859F1C41, 255 * 16},  // ldr p1
                 {0xA408AC41, -8 * 128},   {0xA587AC41, 7 * 16},    // ld1b, ld1sb to doublewords
                 {0xA578AC41, -8 * 64},                             // ldnf1w to doublewords
                 {0xA5E8EC41, -32 * 128},  {0xA4C7EC41, 21 * 128},  // ld4d, ld3h
                 {0x85FFEC41, 504},        {0x857F8C41, 126},       // ld1rd, ld1rsh
                 {0xA5082C41, -128},       {0xA4072C41, 112}};      // ld1rqw, ld1rqb
    for (const auto& c : loads) {
        std::vector<std::uint8_t> memory(2 * 33024);
        memory[static_cast<std::size_t>(33024 + c.distance)] = 1;
        cpu_state state = random_state(6);
        state.z[1][0] = state.p[1][0] = 0;
        state.p[3][0] = 1;
        state.x[2] = reinterpret_cast<std::uint64_t>(memory.data()) + 33024;
        is_sve(c.word)(&state, c.word);
        EXPECT_EQ(state.z[1][0] + state.p[1][0], 1) << std::hex << c.word;
    }
}

TEST(Prefetches, ChangeNothingAtAll) {
    int count = 0;
    for_each_opcode([&](const opcode_row& row) {
        if (row.route != opcode_route::prefetch)
            return;
        ++count;
        cpu_state state = random_state(4);
        const cpu_state before = state;
        EXPECT_EQ(row.stub(&state, map_value(describe(row.map), row.key) | 0x1FEF), aarch64_emulated);
        EXPECT_TRUE(same_state(state, before)) << row.name;
    });
    EXPECT_EQ(count, 36);
}

} // namespace
