// The bridge: predicates packed and unpacked, the context carried both ways, results placed.
#include "sve/decode/decoder.h"
#include "sve/decode/library_layouts.h"
#include "sve/handlers/placeholders.h"
#include "tests/unit/state_tools.h"

#include <gtest/gtest.h>

namespace {

TEST(Bridge, PacksTheLowBitOfEachByte) {
    cpu_state state = random_state(11);
    const PredV packed = pack_predicate(state.p[3]);
    for (int k = 0; k < 256; ++k)
        EXPECT_EQ((packed.words[k / 64] >> (k % 64)) & 1, k < vector_bytes ? state.p[3][k] & 1u : 0u) << k;
}

TEST(Bridge, UnpacksToZerosAndOnes) {
    const PredV packed = {{0x8000000000000001, 0x0123456789ABCDEF, ~std::uint64_t{0}, ~std::uint64_t{0}}};
    std::uint8_t rows[vector_bytes + 1];
    rows[vector_bytes] = 0xA5;
    unpack_predicate(rows, packed);
    for (int k = 0; k < vector_bytes; ++k)
        EXPECT_EQ(rows[k], (packed.words[k / 64] >> (k % 64)) & 1) << k;
    EXPECT_EQ(rows[vector_bytes], 0xA5);
}

TEST(Bridge, CarriesTheContextThroughAPrimitiveThatIgnoresIt) {
    cpu_state state = random_state(12);
    state.fpcr = 0x00400000;
    state.fpcr_extra = 0x01000000;
    cpu_state expected = state;
    expected.nzcv &= 0xFFFFFFFF;
    expected.fpcr = 0x01400000;
    for (std::uint8_t& byte : expected.ffr)
        byte &= 1;
    const auto primitive = [](CpuContext* context) {
        EXPECT_EQ(context->vl, 16u);
        EXPECT_EQ(context->fpcr, 0x01400000u);
    };
    EXPECT_EQ((library_layout<results::None>::call(primitive, &state, 0)), aarch64_emulated);
    EXPECT_TRUE(same_state(state, expected)) << "instr_word included: this route does not store it";
}

TEST(Bridge, WritesChangesOfTheContextBack) {
    cpu_state state = random_state(13);
    cpu_state expected = state;
    expected.nzcv = 0xF0000000;
    expected.fpsr = 0x08000011;
    expected.fpcr = 0x07C00000;
    for (int k = 0; k < vector_bytes; ++k)
        expected.ffr[k] = k == 5 || k == 127;
    const auto primitive = [](CpuContext* context) {
        context->nzcv = 0xF0000000;
        context->fpsr = 0x08000011;
        context->fpcr = 0x07C00000;
        context->ffr = {{1 << 5, std::uint64_t{1} << 63, ~std::uint64_t{0}, 0}};
    };
    library_layout<results::None>::call(primitive, &state, 0);
    EXPECT_TRUE(same_state(state, expected));
}

TEST(Bridge, PlacesScalarsByKindOfDestination) {
    cpu_state state = random_state(14);
    std::memset(state.ffr, 1, vector_bytes); // so that the write-back of FFR shows nothing here
    state.nzcv &= 0xF0000000;
    cpu_state expected = state;

    expected.x[7] = 0xFFFFFFFFFFFFFF80;
    library_layout<results::Register>::call([](CpuContext*) { return std::int32_t{-128}; }, &state, 7);
    EXPECT_TRUE(same_state(state, expected)) << "a signed result is sign-extended";

    expected.x[7] = 0xFFFFFF80;
    library_layout<results::Register>::call([](CpuContext*) { return std::uint32_t{0xFFFFFF80}; }, &state, 7);
    EXPECT_TRUE(same_state(state, expected)) << "an unsigned result is zero-extended";

    library_layout<results::Register>::call([](CpuContext*) { return std::uint64_t{1}; }, &state, 31);
    EXPECT_TRUE(same_state(state, expected)) << "register 31 is not the stack pointer here";

    std::memset(expected.z[31], 0, vector_bytes);
    expected.z[31][0] = 0xCD;
    expected.z[31][1] = 0xAB;
    library_layout<results::Scalar>::call([](CpuContext*) { return std::uint16_t{0xABCD}; }, &state, 31);
    EXPECT_TRUE(same_state(state, expected)) << "a SIMD scalar clears the rest of its register";
}

TEST(Bridge, DropsVectorBytesAboveTheRegister) {
    cpu_state state = random_state(15);
    std::memset(state.ffr, 0, vector_bytes);
    state.nzcv &= 0xF0000000;
    cpu_state expected = state;
    std::memset(expected.z[30], 0x5A, vector_bytes);
    library_layout<results::Vector>::call(
        [](CpuContext*) {
            VecV value;
            std::memset(value.bytes, 0x5A, sizeof value.bytes);
            return value;
        },
        &state, 30);
    EXPECT_TRUE(same_state(state, expected));
}

// "uqsub z10.b, z10.b, #77" with the bit set that shifts the immediate by 8.
TEST(Bridge, LeavesNothingOfAShiftedByteImmediate) {
    constexpr unsigned int word = 0x2527c9aa | 1u << 13;
    cpu_state state = random_state(17);
    const cpu_state before = state;
    EXPECT_EQ(is_sve(word)(&state, word), aarch64_emulated);
    EXPECT_EQ(std::memcmp(state.z[10], before.z[10], vector_bytes), 0);
}

TEST(Placeholders, NameTheInstructionAndRefuse) {
    unsigned int word = 0x04120000;
    cpu_state state = random_state(16);
    state.pc = &word;
    state.instr_word = word;
    const cpu_state before = state;
    testing::internal::CaptureStderr();
    EXPECT_EQ(sve_lsl_wide_zzz(&state, z_operand(1, 0), z_operand(2, 0), z_operand(3, 3)),
              aarch64_not_emulated);
    char expected[100];
    std::snprintf(expected, sizeof expected,
                  "Unimplemented instruction: [  %lx:\t 04120000\t sve_lsl_wide_zzz  ]\n",
                  reinterpret_cast<unsigned long>(&word));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
    EXPECT_TRUE(same_state(state, before));
}

} // namespace
