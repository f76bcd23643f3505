// Arithmetic where the architecture, and not IEEE 754 alone, decides: NaNs, flushing, signs of zeros, the
// multiplication that knows no invalid product, and the rounding routines under modes that arithmetic doesn't
// use.
#include "sve/fp/fp_arithmetic.h"

#include "sve/fp/fp_compare.h"
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

constexpr std::uint32_t round_up = 1u << 22, round_down = 2u << 22, round_to_zero = 3u << 22;
constexpr std::uint32_t FZ = FPSCR::FZ, FZ16 = FPSCR::FZ16, DN = FPSCR::DN, AHP = FPSCR::AHP;
constexpr int IOC = FPFlag_IOC, DZC = FPFlag_DZC, OFC = FPFlag_OFC, UFC = FPFlag_UFC, IXC = FPFlag_IXC,
              IDC = FPFlag_IDC;

int exceptions(const FPSCR& fpscr) { return static_cast<int>(fpscr.bits & 0x9F); }

template <class Bits> struct binary_case {
    const char* name;
    Bits (*kernel)(Bits, Bits, FPSCR&);
    std::uint32_t control;
    Bits a, b, result;
    int flags;
};

template <class Bits> void check(const std::vector<binary_case<Bits>>& cases) {
    for (const auto& c : cases) {
        FPSCR fpscr{c.control};
        EXPECT_EQ(c.kernel(c.a, c.b, fpscr), c.result)
            << c.name << std::hex << " of " << c.a << " and " << c.b;
        EXPECT_EQ(exceptions(fpscr), c.flags) << c.name << std::hex << " of " << c.a << " and " << c.b;
        EXPECT_EQ(fpscr.bits & ~0x9Fu, c.control) << "the control bits have changed";
    }
}

TEST(FPArithmetic, SingleEdges) {
    constexpr single inf = 0x7F800000, minus = 0x80000000, one = 0x3F800000, least = 0x00800000,
                     max = 0x7F7FFFFF;
    constexpr single tiny = 0x000116C2; // 1.0e-40
    check<single>({
        {"inf - inf", FPSub, 0, inf, inf, 0x7FC00000, IOC},
        {"inf + inf", FPAdd, 0, inf, inf, inf, 0},
        {"inf + -inf", FPAdd, 0, inf, inf | minus, 0x7FC00000, IOC},
        {"1 - inf", FPSub, 0, one, inf, inf | minus, 0},
        {"+0 + -0", FPAdd, 0, 0, minus, 0, 0},
        {"+0 + -0", FPAdd, round_down, 0, minus, minus, 0},
        {"-0 + -0", FPAdd, round_up, minus, minus, minus, 0},
        {"-0 - +0", FPSub, 0, minus, 0, minus, 0},
        {"1 - 1", FPSub, round_to_zero, one, one, 0, 0},
        {"1 - 1", FPSub, round_down, one, one, minus, 0},
        {"least normal - denormal", FPSub, 0, least, 1, 0x007FFFFF, 0}, // tiny but exact
        {"tiny difference", FPSub, FZ, 0x00800001, least, 0, UFC},      // flushed: not inexact
        {"negative tiny difference", FPSub, FZ, least, 0x00800001, minus, UFC},
        {"flushed operand", FPAdd, FZ, tiny, one, one, IDC},
        {"flushed operands", FPAdd, FZ | round_down, tiny, tiny | minus, minus, IDC},
        {"unflushed operand", FPAdd, FZ16, tiny, 0, tiny, 0},
        {"overflow", FPAdd, 0, max, max, inf, OFC | IXC},
        {"overflow", FPAdd, round_to_zero, max, max, max, OFC | IXC},
        {"negative overflow", FPAdd, round_up, max | minus, max | minus, max | minus, OFC | IXC},
        {"negative overflow", FPAdd, round_down, max | minus, max | minus, inf | minus, OFC | IXC},
        // (1 - 2^-24) * 2^-126 rounds up to the least normal number: an underflow all the same.
        {"rounds up to normal", FPMul, 0, 0x3F7FFFFF, least, least, UFC | IXC},
        {"inf * 0", FPMul, 0, inf, minus, 0x7FC00000, IOC},
        {"inf * flushed", FPMul, FZ, inf, tiny, 0x7FC00000, IOC | IDC},
        {"inf * -0", FPMulX, 0, inf, minus, 0xC0000000, 0},
        {"-0 * -inf", FPMulX, DN, minus, inf | minus, 0x40000000, 0},
        {"inf * flushed", FPMulX, FZ, inf, tiny, 0x40000000, IDC},
        {"2 * 3", FPMulX, 0, 0x40000000, 0x40400000, 0x40C00000, 0},
        {"1 / 0", FPDiv, 0, one, minus, inf | minus, DZC},
        {"1 / flushed", FPDiv, FZ, one, tiny, inf, DZC | IDC},
        {"inf / 0", FPDiv, 0, inf, 0, inf, 0},
        {"0 / 0", FPDiv, 0, 0, minus, 0x7FC00000, IOC},
        {"inf / inf", FPDiv, 0, inf, inf | minus, 0x7FC00000, IOC},
        {"0 / inf", FPDiv, 0, minus, inf, minus, 0},
        {"1 / 2", FPDiv, round_up, one, 0x40000000, 0x3F000000, 0},
    });
}

TEST(FPArithmetic, HalfAndDoubleEdges) {
    check<half>({
        {"flushed without IDC", FPAdd, FZ16, 0x0001, 0x3C00, 0x3C00, 0},
        {"not flushed by FZ", FPAdd, FZ, 0x0001, 0x0001, 0x0002, 0},
        {"AHP doesn't count", FPAdd, AHP, 0x7BFF, 0x7BFF, 0x7C00, OFC | IXC},
        {"AHP doesn't count", FPMul, AHP, 0x7C00, 0x3C00, 0x7C00, 0},
        {"inf * -0", FPMulX, 0, 0x7C00, 0x8000, 0xC000, 0},
        {"tiny product", FPMul, FZ16, 0x0400, 0x8400, 0x8000, UFC},
        {"1 / 2", FPDiv, 0, 0x3C00, 0x4000, 0x3800, 0},
    });
    constexpr double_bits inf = 0x7FF0000000000000, minus = 0x8000000000000000;
    check<double_bits>({
        {"flushed", FPAdd, FZ, 1, 0x3FF0000000000000, 0x3FF0000000000000, IDC},
        {"not flushed by FZ16", FPAdd, FZ16, 1, 1, 2, 0},
        {"inf * -0", FPMulX, 0, inf, minus, 0xC000000000000000, 0},
        {"1 / 2", FPDiv, 0, 0x3FF0000000000000, 0x4000000000000000, 0x3FE0000000000000, 0},
    });
}

TEST(FPArithmetic, SquareRoots) {
    struct {
        std::uint32_t control;
        single a, result;
        int flags;
    } const cases[] = {{0, 0x80000000, 0x80000000, 0},    {0, 0x40800000, 0x40000000, 0},
                       {0, 0xBF800000, 0x7FC00000, IOC},  {0, 0xFF800000, 0x7FC00000, IOC},
                       {0, 0x7F800000, 0x7F800000, 0},    {0, 0x80000001, 0x7FC00000, IOC},
                       {FZ, 0x80000001, 0x80000000, IDC}, {0, 0x40000000, 0x3FB504F3, IXC},
                       {0, 0xFF800001, 0xFFC00001, IOC}};
    for (const auto& c : cases) {
        FPSCR fpscr{c.control};
        EXPECT_EQ(FPSqrt(c.a, fpscr), c.result) << std::hex << c.a;
        EXPECT_EQ(exceptions(fpscr), c.flags) << std::hex << c.a;
    }
    FPSCR fpscr{round_up};
    EXPECT_EQ(FPSqrt<double_bits>(0x7FEFFFFFFFFFFFFF, fpscr), 0x5FF0000000000000u); // the largest: 2^512
    EXPECT_EQ(exceptions(fpscr), IXC);
}

TEST(FPArithmetic, FusedMultiplyAdd) {
    constexpr single inf = 0x7F800000, minus = 0x80000000, one = 0x3F800000, quiet = 0x7FC00005,
                     signalling = 0x7F800005;
    struct {
        std::uint32_t control;
        single addend, a, b, result;
        int flags;
    } const cases[] = {
        {0, quiet, 0, inf, 0x7FC00000, IOC}, // a quiet NaN doesn't hide the invalid product
        {0, quiet, inf | minus, 0, 0x7FC00000, IOC},
        {0, signalling, 0, inf, quiet, IOC},
        {DN, signalling, 0, inf, 0x7FC00000, IOC},
        {FZ, quiet, 1, inf, 0x7FC00000, IOC | IDC}, // flushed to zero
        {0, quiet, 1, inf, quiet, 0},
        {0, one, 0, inf, 0x7FC00000, IOC},
        {0, inf, one, inf | minus, 0x7FC00000, IOC},
        {0, inf, one, inf, inf, 0},
        {0, one, inf | minus, 0x40000000, inf | minus, 0},
        {0, one, one, one | minus, 0, 0},
        {round_down, one, one, one | minus, minus, 0},
        {0, minus, minus, 0, minus, 0},
        {0, 0, minus, one, 0, 0},
        {round_down, 0, minus, one, minus, 0},
        // A zero product with a large exponent of its own leaves a small addend whole, and the other way
        // round.
        {0, 0x00000001, 0, 0x7F000000, 0x00000001, 0},
        {0, 0, 0x00800000, 0x3F800001, 0x00800001, 0},
        // (1 + 2^-23)^2 - (1 + 2^-22) = 2^-46, which two roundings would lose.
        {0, 0xBF800002, 0x3F800001, 0x3F800001, 0x28800000, 0},
        {FZ, 0, 0x20000000, 0x1F800000, 0, UFC},
    };
    for (const auto& c : cases) {
        FPSCR fpscr{c.control};
        EXPECT_EQ(FPMulAdd(c.addend, c.a, c.b, fpscr), c.result)
            << std::hex << c.addend << " " << c.a << " " << c.b;
        EXPECT_EQ(exceptions(fpscr), c.flags) << std::hex << c.addend << " " << c.a << " " << c.b;
    }
}

TEST(FPArithmetic, FusedScale) {
    int flags = 0;
    EXPECT_EQ(fp32_muladd(0x40400000, 0xBF800000, 0x3F800000, -1, 0, &flags), 0x3F800000u); // (3 - 1) / 2
    EXPECT_EQ(fp16_muladd(0, 0x0400, 0x3C01, -1, 0, &flags), 0x0200u); // rounded once, when scaled
    EXPECT_EQ(flags, UFC | IXC);
    flags = DZC; // what stands there stays
    EXPECT_EQ(fp64_muladd(1, 0x3FF0000000000000, 1, -1, 0, &flags), 1u);
    EXPECT_EQ(flags, DZC);
}

// The NaN that comes out, and IOC, said once more: the first signalling operand, else the first quiet one.
template <class Bits> Bits expected_nan(std::vector<Bits> operands, bool default_nan, int* flags) {
    using Format = FPFormat<Bits>;
    const auto is_nan = [](Bits x) {
        return (x & Format::infinity) == Format::infinity && (x & Format::fraction_mask);
    };
    const Bits* chosen = nullptr;
    for (const Bits& operand : operands) {
        const bool signalling = is_nan(operand) && !(operand & Format::quiet_bit);
        if (signalling && *flags == 0) {
            chosen = &operand;
            *flags = IOC;
        }
        if (is_nan(operand) && chosen == nullptr)
            chosen = &operand;
    }
    return default_nan ? Format::default_nan : Bits(*chosen | Format::quiet_bit);
}

template <class Bits> void check_nans() {
    using Format = FPFormat<Bits>;
    const Bits values[] = {0,
                           Format::power_of_two(0),
                           Format::infinity,
                           Bits(Format::infinity | Format::sign_bit),
                           Bits(Format::default_nan | 3),
                           Bits(Format::default_nan | Format::sign_bit | 5),
                           Bits(Format::infinity | 7),
                           Bits(Format::infinity | Format::sign_bit | 9)};
    Bits (*const kernels[])(Bits, Bits, FPSCR&) = {FPAdd, FPSub, FPMul, FPMulX, FPDiv, FPMax, FPMin};
    for (const std::uint32_t control : {0u, DN}) {
        for (const Bits a : values) {
            for (const Bits b : values) {
                for (const Bits c : values) {
                    if (!fp_is_nan(a) && !fp_is_nan(b) && !fp_is_nan(c))
                        continue;
                    FPSCR fpscr{control};
                    int flags = 0;
                    const bool invalid = (fp_is_infinite(b) && c == 0) || (b == 0 && fp_is_infinite(c));
                    Bits expected = expected_nan<Bits>({a, b, c}, control != 0, &flags);
                    if (invalid && flags == 0) {
                        expected = Format::default_nan;
                        flags = IOC;
                    }
                    EXPECT_EQ(FPMulAdd(a, b, c, fpscr), expected) << std::hex << a << " " << b << " " << c;
                    EXPECT_EQ(exceptions(fpscr), flags) << std::hex << a << " " << b << " " << c;
                }
                if (!fp_is_nan(a) && !fp_is_nan(b))
                    continue;
                int flags = 0;
                const Bits expected = expected_nan<Bits>({a, b}, control != 0, &flags);
                for (const auto kernel : kernels) {
                    FPSCR fpscr{control};
                    EXPECT_EQ(kernel(a, b, fpscr), expected) << std::hex << a << " " << b;
                    EXPECT_EQ(exceptions(fpscr), flags) << std::hex << a << " " << b;
                }
                // The steps negate their first operand, and with it the sign of its NaN.
                for (const auto kernel : {FPRecipStepFused<Bits>, FPRSqrtStepFused<Bits>}) {
                    FPSCR fpscr{control};
                    int step_flags = 0;
                    const auto negated = static_cast<Bits>(a ^ Format::sign_bit);
                    EXPECT_EQ(kernel(a, b, fpscr),
                              expected_nan<Bits>({negated, b}, control != 0, &step_flags));
                    EXPECT_EQ(exceptions(fpscr), step_flags);
                }
            }
        }
    }
}

TEST(FPArithmetic, NaNs) {
    check_nans<half>();
    check_nans<single>();
    check_nans<double_bits>();
}

TEST(FPArithmetic, Signs) {
    EXPECT_EQ(FPNeg<half>(0x7C01), 0xFC01);
    EXPECT_EQ(FPNeg<double_bits>(0), 0x8000000000000000u);
    EXPECT_EQ(FPAbs<single>(0xFF800001), 0x7F800001u);
    EXPECT_EQ(FPAbs<double_bits>(0xBFF0000000000000), 0x3FF0000000000000u);
}

TEST(FPRounding, ModesThatOnlyTheRoutinesKnow) {
    struct {
        int sign, exp;
        unsigned short fraction;
        int rm, mode;
        unsigned short result;
        int flags;
    } const cases[] = {
        {0, 15, 0x0000, 0, 0, 0x3C00, 0},         // exact
        {0, 15, 0x0000, 5, 0, 0x3C00, 0},         // and left alone by round to odd
        {0, 15, 0x0001, 5, 0, 0x3C01, IXC},       // the sticky bit makes it odd
        {0, 15, 0x0041, 5, 0, 0x3C01, IXC},       // odd already
        {0, 15, 0x0020, 0, 0, 0x3C00, IXC},       // a tie to even
        {0, 15, 0x0060, 0, 0, 0x3C02, IXC},       // and the other way
        {0, 15, 0x0060, 4, 0, 0x3C01, IXC},       // ties away truncates here
        {0, 15, 0xFFFF, 0, 0, 0x4000, IXC},       // a carry into the exponent
        {1, 30, 0xFFFF, 0, 0, 0xFC00, OFC | IXC}, // and out of it
        {1, 30, 0xFFFF, 1, 0, 0xFBFF, IXC},       // which truncation doesn't reach
        {0, 31, 0x0000, 5, 0, 0x7BFF, OFC | IXC}, // round to odd never gives infinity
        {1, 5000, 0x0000, 3, 0, 0xFBFF, OFC | IXC},
        {0, 31, 0x8000, 0, 16, 0x7E00, 0},   // the alternative format has numbers there
        {0, 31, 0xFFFF, 0, 16, 0x7FFF, IOC}, // and no infinity above them
        {1, 32, 0x0000, 3, 16, 0xFFFF, IOC},
        {0, 0, 0xFFFF, 0, 0, 0x0400, UFC | IXC},   // a denormal becomes normal
        {0, 0, 0x0000, 0, 0, 0x0200, 0},           // tiny but exact
        {0, -9, 0x0000, 0, 0, 0x0001, 0},          // the least denormal
        {0, -10, 0x0000, 0, 0, 0x0000, UFC | IXC}, // a tie
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

TEST(FPRounding, ProcessAndScale) {
    struct {
        std::uint32_t control;
        single value;
        int scale;
        single result;
        int flags;
    } const cases[] = {
        {0, 0x3F800000, 0, 0x3F800000, 0},
        {0, 0x3F800000, 1000, 0x7F800000, OFC | IXC},
        {0, 0x3F800000, -1000, 0, UFC | IXC},
        {0, 0xBF800000, INT32_MIN, 0x80000000, UFC | IXC},
        {round_to_zero, 0x3F800000, INT32_MAX, 0x7F7FFFFF, OFC | IXC},
        {0, 0x00000001, 277, 0x7F800000, OFC | IXC},
        {0, 0x00000001, 276, 0x7F000000, 0},
        {0, 0x00800001, -1, 0x00400000, UFC | IXC},
        {FZ, 0x00800000, -1, 0, UFC},
        {FZ, 0x80000001, 300, 0x80000000, IDC},
        {0, 0x7F800001, 5, 0x7FC00001, IOC},
        {DN, 0xFFC00001, 5, 0x7FC00000, 0},
        {0, 0xFF800000, -300, 0xFF800000, 0},
        {0, 0x80000000, 300, 0x80000000, 0},
    };
    for (const auto& c : cases) {
        FPSCR fpscr{c.control};
        EXPECT_EQ(FPScale32(c.value, c.scale, fpscr), c.result) << std::hex << c.value << " " << c.scale;
        EXPECT_EQ(exceptions(fpscr), c.flags) << std::hex << c.value << " " << c.scale;
        if (c.scale == 0 || fp_is_nan(c.value) || fp_is_infinite(c.value) ||
            (c.control & FZ && c.value == 0x80000001)) {
            FPSCR unscaled{c.control};
            EXPECT_EQ(FPProcess32(c.value, unscaled), c.result) << std::hex << c.value;
            EXPECT_EQ(exceptions(unscaled), c.flags) << std::hex << c.value;
        }
    }
    FPSCR fpscr;
    EXPECT_EQ(FPScale16(0x0001, 39, fpscr), 0x7800u);
    EXPECT_EQ(FPScale16(0x3C00, INT16_MIN, fpscr), 0u);
    EXPECT_EQ(FPScale64(1, 2097, fpscr), 0x7FE0000000000000u);
    EXPECT_EQ(FPScale64(0x3FF0000000000000, INT64_MAX, fpscr), 0x7FF0000000000000u);
    // What isn't special comes out as it went in.
    for (const double_bits value : fp_special_values<double_bits>()) {
        FPSCR plain;
        const bool signalling = fp_is_signalling_nan(value);
        EXPECT_EQ(FPProcess64(value, plain), signalling ? value | 0x0008000000000000 : value);
        EXPECT_EQ(FPProcess16(static_cast<half>(value >> 48), plain) & 0x7DFFu, (value >> 48) & 0x7DFFu);
    }
}

TEST(FPElement, StatusIsMergedAndMasked) {
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
