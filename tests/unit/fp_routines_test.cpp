// What the comparison of the floating-point kernels with a processor doesn't reach: routines that no
// instruction uses as they stand, modes that no instruction has, and what an element leaves in the status.
#include "sve/fp/fp_arithmetic.h"
#include "sve/fp/fp_compare.h"
#include "sve/fp/fp_convert.h"
#include "sve/fp/fp_divide_sqrt.h"
#include "sve/fp/fp_element.h"
#include "sve/fp/fp_estimates.h"
#include "sve/fp/fp_multiply_add.h"
#include "tests/unit/fp_operands.h"

#include <gtest/gtest.h>

namespace {

using half = std::uint16_t;
using single = std::uint32_t;
using double_bits = std::uint64_t;

constexpr std::uint32_t FZ = FPSCR::FZ, FZ16 = FPSCR::FZ16, DN = FPSCR::DN;
constexpr int IOC = FPFlag_IOC, DZC = FPFlag_DZC, OFC = FPFlag_OFC, UFC = FPFlag_UFC, IXC = FPFlag_IXC,
              IDC = FPFlag_IDC;

int exceptions(const FPSCR& fpscr) { return static_cast<int>(fpscr.bits & 0x9F); }

TEST(FPRoutines, RoundingInModesThatOnlyTheRoutinesKnow) {
    struct {
        int sign, exp;
        unsigned short fraction;
        int rm, mode;
        unsigned short result;
        int flags;
    } const cases[] = {
        {0, 15, 0x0000, 5, 0, 0x3C00, 0},         // exact, and left alone by round to odd
        {0, 15, 0x0001, 5, 0, 0x3C01, IXC},       // the sticky bit makes it odd
        {0, 15, 0x0020, 0, 0, 0x3C00, IXC},       // a tie to even
        {0, 15, 0x0060, 4, 0, 0x3C01, IXC},       // ties away truncates here
        {0, 15, 0xFFFF, 0, 0, 0x4000, IXC},       // a carry into the exponent
        {1, 30, 0xFFFF, 0, 0, 0xFC00, OFC | IXC}, // and out of it
        {0, 31, 0x0000, 5, 0, 0x7BFF, OFC | IXC}, // round to odd never gives infinity
        {1, 5000, 0x0000, 3, 0, 0xFBFF, OFC | IXC},
        {0, 31, 0xFFFF, 0, 16, 0x7FFF, IOC}, // the alternative format has numbers there, but no infinity
        {0, 0, 0x0000, 0, 0, 0x0200, 0},     // tiny but exact
        {0, -10, 0x0001, 0, 0, 0x0001, UFC | IXC},
        {1, -5000, 0x0000, 2, 0, 0x8001, UFC | IXC},
        {1, 0, 0xFFFF, 0, 32, 0x8000, UFC}, // flushed by FZ16
        {1, 0, 0xFF80, 0, 4, 0x83FF, 0},    // FZ is none of its business
    };
    for (const auto& c : cases) {
        int flags = 0;
        EXPECT_EQ(fp16_round_(c.sign, c.exp, c.fraction, c.rm, c.mode, &flags), c.result)
            << std::hex << c.exp << " " << c.fraction << " mode " << c.rm;
        EXPECT_EQ(flags, c.flags) << std::hex << c.exp << " " << c.fraction << " mode " << c.rm;
    }
    int flags = DZC; // flags are added
    EXPECT_EQ(fp32_round_(1, 127, 0x00000080, 2, 0, &flags), 0xBF800001u);
    EXPECT_EQ(fp64_round_(0, 1023, 0x0000000000000401, 0, 0, &flags), 0x3FF0000000000000u);
    EXPECT_EQ(flags, DZC | IXC);
    EXPECT_EQ(fp64_round_(0, 0, 0, 0, FPMode_FZ, &flags), 0u);
    EXPECT_EQ(flags, DZC | IXC | UFC);
}

// As an addition of a zero of the value's sign.
template <class Bits> void check_process(Bits (*process)(Bits, FPSCR&)) {
    for (const std::uint32_t control : {0u, FZ | FZ16 | DN}) {
        for (const Bits value : fp_special_values<Bits>()) {
            FPSCR fpscr{control}, by_sum{control};
            const auto zero = static_cast<Bits>(value & FPFormat<Bits>::sign_bit);
            EXPECT_EQ(process(value, fpscr), FPAdd(value, zero, by_sum)) << std::hex << value;
            EXPECT_EQ(fpscr.bits, by_sum.bits) << std::hex << value;
        }
    }
}

TEST(FPRoutines, ProcessQuietsAndFlushes) {
    check_process<half>(FPProcess16);
    check_process<single>(FPProcess32);
    check_process<double_bits>(FPProcess64);
}

TEST(FPRoutines, FusedScale) {
    int flags = 0;
    EXPECT_EQ(fp32_muladd(0x40400000, 0xBF800000, 0x3F800000, -1, 0, &flags), 0x3F800000u); // (3 - 1) / 2
    EXPECT_EQ(fp16_muladd(0, 0x0400, 0x3C01, -1, 0, &flags), 0x0200u); // rounded once, when scaled
    EXPECT_EQ(flags, UFC | IXC);
    flags = DZC; // what stands there stays
    EXPECT_EQ(fp64_muladd(1, 0x3FF0000000000000, 1, -1, 0, &flags), 1u);
    EXPECT_EQ(flags, DZC);
}

TEST(FPRoutines, ConversionsInModesOfTheirOwn) {
    struct {
        std::uint32_t control;
        FPRounding rm;
        single value;
        half result;
        int flags;
    } const cases[] = {{0, FPRounding_ODD, 0x47800001, 0x7BFF, OFC | IXC},
                       {0, FPRounding_ODD, 0x00000001, 0x0001, UFC | IXC},
                       {0, FPRounding_TIEAWAY, 0x3F801000, 0x3C00, IXC}}; // packing knows no ties away
    for (const auto& c : cases) {
        FPSCR fpscr{c.control};
        EXPECT_EQ((FPConvert<single, half>(c.value, c.rm, fpscr)), c.result) << std::hex << c.value;
        EXPECT_EQ(exceptions(fpscr), c.flags) << std::hex << c.value;
    }
    // Instructions don't flush a half that they widen. The kernel does, and its callers clear the bit.
    FPSCR fpscr{FZ16};
    EXPECT_EQ((FPConvert<half, single>(0x8001, FPRounding_TIEEVEN, fpscr)), 0x80000000u);
    EXPECT_EQ(exceptions(fpscr), 0);

    int flags = IDC; // is replaced, but only if there is something to tell
    EXPECT_EQ(FPToFixed_64(1, 1023, 0x10000000000000, false, FPRounding_TIEEVEN, &flags), ~0ul);
    EXPECT_EQ(flags, IDC);
    EXPECT_EQ(FPToFixed_64(0, 1023, 0x18000000000000, false, FPRounding_TIEEVEN, &flags), 2u); // 1.5
    EXPECT_EQ(flags, IXC);
    EXPECT_EQ(FPToFixed_64(1, 1023, 0x10000000000000, true, FPRounding_TIEEVEN, &flags), 0u);
    EXPECT_EQ(flags, IOC);
}

// The estimates of unsigned fractions are made of these.
TEST(FPRoutines, EstimatesOfDoubles) {
    EXPECT_EQ(recip_estimate(0.5), 511 / 256.0);
    EXPECT_EQ(recip_estimate(0.75), 341 / 256.0);
    EXPECT_EQ(recip_estimate(0x1.fffffffffffffp-1), 1.0);
    EXPECT_EQ(recip_sqrt_estimate(0.25), 511 / 256.0);
    EXPECT_EQ(recip_sqrt_estimate(0x1.fffffffffffffp-2), 362 / 256.0);
    EXPECT_EQ(recip_sqrt_estimate(0.5), 361 / 256.0);
    EXPECT_EQ(recip_sqrt_estimate(0x1.fffffffffffffp-1), 1.0);
    EXPECT_EQ(UnsignedRecipEstimate(0x1C0000000, 0), 0xAA800000); // only 32 bits count: 0.75
    EXPECT_EQ(UnsignedRSqrtEstimate(0x1C0000000, 0), 0x93800000);
}

TEST(FPRoutines, ElementStatusIsMergedAndMasked) {
    CpuContext context{};
    context.fpcr = DN | 0x08000000;
    context.fpsr = 0x98000002 | 0x00700000; // the part above bit 26, a flag, and what isn't written
    EXPECT_EQ(call_fp_kernel(&context, FPDiv<single>, 0x7F800001u, 0u), 0x7FC00000u);
    EXPECT_EQ(context.fpsr, 0x98000003u);
    EXPECT_EQ(context.fpcr, DN | 0x08000000);
    const auto not_default = with_fpscr(
        &context, [](FPSCR& fpscr) { return FPAdd<single>(0x7FC00001, 0, fpscr); }, DN);
    EXPECT_EQ(not_default, 0x7FC00001u);
    EXPECT_TRUE(call_fp_kernel(&context, FPCompareEQ<half>, half{0}, half{0x8000}));
    context.fpcr = FZ;
    call_fp_kernel(&context, FPAdd<single>, 1u, 0u);
    EXPECT_EQ(context.fpsr, 0x98000083u); // a flushed operand counts too
}

} // namespace
