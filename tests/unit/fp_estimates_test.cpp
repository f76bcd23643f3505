// Estimates, steps and the exponential and trigonometric accelerators; their tables against definitions of
// their own.
#include "sve/fp/fp_estimates.h"

#include "sve/fp/fp_tables.h"
#include "sve/fp/fp_trigonometry.h"
#include "tests/unit/fp_operands.h"

#include <bit>
#include <cmath>
#include <gtest/gtest.h>

namespace {

using half = std::uint16_t;
using single = std::uint32_t;
using double_bits = std::uint64_t;

constexpr std::uint32_t round_up = 1u << 22, round_down = 2u << 22, round_to_zero = 3u << 22;
constexpr std::uint32_t FZ = FPSCR::FZ, FZ16 = FPSCR::FZ16, DN = FPSCR::DN;
constexpr int IOC = FPFlag_IOC, DZC = FPFlag_DZC, OFC = FPFlag_OFC, UFC = FPFlag_UFC, IXC = FPFlag_IXC,
              IDC = FPFlag_IDC;

int exceptions(const FPSCR& fpscr) { return static_cast<int>(fpscr.bits & 0x9F); }

template <class Bits> struct unary_case {
    Bits (*kernel)(Bits, FPSCR&);
    std::uint32_t control;
    Bits a, result;
    int flags;
};
template <class Bits> void check(std::initializer_list<unary_case<Bits>> cases) {
    for (const auto& c : cases) {
        FPSCR fpscr{c.control};
        EXPECT_EQ(c.kernel(c.a, fpscr), c.result) << std::hex << c.a;
        EXPECT_EQ(exceptions(fpscr), c.flags) << std::hex << c.a;
    }
}

TEST(FPEstimates, Reciprocals) {
    check<single>({
        {FPRecipEstimate, 0, 0x40000000, 0x3EFF8000, 0},
        {FPRecipEstimate, 0, 0x00000000, 0x7F800000, DZC},
        {FPRecipEstimate, 0, 0x80000000, 0xFF800000, DZC},
        {FPRecipEstimate, FZ, 0x80000001, 0xFF800000, DZC | IDC},
        {FPRecipEstimate, 0, 0xFF800000, 0x80000000, 0},
        {FPRecipEstimate, 0, 0x001FFFFF, 0x7F800000, OFC | IXC},
        {FPRecipEstimate, round_up, 0x801FFFFF, 0xFF7FFFFF, OFC | IXC},
        {FPRecipEstimate, round_down, 0x801FFFFF, 0xFF800000, OFC | IXC},
        {FPRecipEstimate, round_to_zero, 0x001FFFFF, 0x7F7FFFFF, OFC | IXC},
        {FPRecipEstimate, 0, 0x00200000, 0x7F7F8000, 0},
        {FPRecipEstimate, 0, 0x7E800000, 0x007FC000, 0}, // the reciprocal of 2^126 is a denormal
        {FPRecipEstimate, 0, 0x7F000000, 0x003FE000, 0}, //
        {FPRecipEstimate, FZ, 0xFE800000, 0x80000000, UFC},
        {FPRecipEstimate, FZ, 0x7E7FFFFF, 0x00800000, 0},
        {FPRecipEstimate, 0, 0x7F800001, 0x7FC00001, IOC},
        {FPRecipEstimate, DN, 0xFFC00001, 0x7FC00000, 0},
        {FPRecpX, 0, 0x80000000, 0xFF000000, 0},
        {FPRecpX, FZ, 0x00000001, 0x7F000000, IDC},
        {FPRecpX, 0, 0x00000001, 0x7F000000, 0},
        {FPRecpX, 0, 0xBF812345, 0xC0000000, 0},
        {FPRecpX, 0, 0xFF800000, 0x80000000, 0},
        {FPRecpX, 0, 0x7F800001, 0x7FC00001, IOC},
    });
    check<half>({
        {FPRecipEstimate, 0, 0x00FF, 0x7C00, OFC | IXC},
        {FPRecipEstimate, FZ16, 0x00FF, 0x7C00, DZC},
        {FPRecipEstimate, FZ16, 0x7400, 0x0000, UFC},
        {FPRecipEstimate, FZ, 0x7400, 0x03FE, 0},
        {FPRecpX, FZ16, 0x8001, 0xF800, 0},
    });
    check<double_bits>({
        {FPRecipEstimate, 0, 0x4000000000000000, 0x3FDFF00000000000, 0},
        {FPRecipEstimate, 0, 0x0003FFFFFFFFFFFF, 0x7FF0000000000000, OFC | IXC},
        {FPRecipEstimate, 0, 0x0004000000000000, 0x7FEFF00000000000, 0},
    });
}

TEST(FPEstimates, ReciprocalSquareRoots) {
    check<single>({
        {FPRSqrtEstimate, 0, 0x40800000, 0x3EFF8000, 0},
        {FPRSqrtEstimate, 0, 0x80000000, 0xFF800000, DZC},
        {FPRSqrtEstimate, FZ, 0x00000001, 0x7F800000, DZC | IDC},
        {FPRSqrtEstimate, 0, 0xBF800000, 0x7FC00000, IOC},
        {FPRSqrtEstimate, 0, 0xFF800000, 0x7FC00000, IOC},
        {FPRSqrtEstimate, 0, 0x7F800000, 0x00000000, 0},
        {FPRSqrtEstimate, 0, 0x40000000, 0x3F348000, 0}, // entry 128 of the table, 105
        {FPRSqrtEstimate, 0, 0x00000001, 0x64B48000, 0}, // 2^74.5
        {FPRSqrtEstimate, 0, 0xFFC00001, 0xFFC00001, 0},
    });
    check<half>({{FPRSqrtEstimate, FZ16, 0x8001, 0xFC00, DZC}, {FPRSqrtEstimate, 0, 0x4400, 0x37FC, 0}});
    check<double_bits>({{FPRSqrtEstimate, 0, 0x4010000000000000, 0x3FDFF00000000000, 0}});
}

TEST(FPEstimates, Steps) {
    struct {
        single (*kernel)(single, single, FPSCR&);
        std::uint32_t control;
        single a, b, result;
        int flags;
    } const cases[] = {
        {FPRecipStepFused, 0, 0x7F800000, 0x00000000, 0x40000000, 0},
        {FPRecipStepFused, 0, 0xFF800000, 0x80000000, 0x40000000, 0},
        {FPRecipStepFused, FZ, 0x00000001, 0xFF800000, 0x40000000, IDC},
        {FPRecipStepFused, 0, 0x7F800000, 0x3F800000, 0xFF800000, 0},
        {FPRecipStepFused, 0, 0x40000000, 0x3EFF8000, 0x3F804000, 0},
        {FPRSqrtStepFused, 0, 0x00000000, 0x7F800000, 0x3FC00000, 0},
        {FPRSqrtStepFused, 0, 0xFF800000, 0x3F800000, 0x7F800000, 0},
        {FPRSqrtStepFused, 0, 0x3F800000, 0x3F800000, 0x3F800000, 0},
        {FPRSqrtStepFused, 0, 0x40400000, 0x3F800000, 0x00000000, 0},
        {FPRSqrtStepFused, round_down, 0x40400000, 0x3F800000, 0x80000000, 0},
        {FPRSqrtStepFused, 0, 0xFF7FFFFF, 0x40000000, 0x7F7FFFFF,
         IXC}, // halved before it is rounded: no overflow
    };
    for (const auto& c : cases) {
        FPSCR fpscr{c.control};
        EXPECT_EQ(c.kernel(c.a, c.b, fpscr), c.result) << std::hex << c.a << " and " << c.b;
        EXPECT_EQ(exceptions(fpscr), c.flags) << std::hex << c.a << " and " << c.b;
    }
}

// The unsigned estimates in plain double arithmetic, as they are defined.
double reciprocal_by_definition(double x) {
    const double r = 1 / ((std::floor(x * 512) + 0.5) / 512);
    return std::floor(256 * r + 0.5) / 256;
}
double reciprocal_square_root_by_definition(double x) {
    const double unit = x < 0.5 ? 512 : 256;
    const double r = 1 / std::sqrt((std::floor(x * unit) + 0.5) / unit);
    return std::floor(256 * r + 0.5) / 256;
}

TEST(FPEstimates, FractionsInDoubles) {
    for (int i = 0; i < 4096; ++i) {
        const double x = 0.25 + 0.75 * i / 4096;
        if (x >= 0.5) {
            EXPECT_EQ(recip_estimate(x), reciprocal_by_definition(x)) << x;
        }
        EXPECT_EQ(recip_sqrt_estimate(x), reciprocal_square_root_by_definition(x)) << x;
    }
    for (int i = 0; i < 256; ++i) {
        const double x = i < 128 ? (128 + i) / 512.0 : i / 256.0;
        EXPECT_EQ(256 + FPEstimateTables::recip_sqrt_estimate[static_cast<unsigned>(i)],
                  256 * reciprocal_square_root_by_definition(x))
            << i;
    }
    EXPECT_EQ(FPEstimateTables::recip_sqrt_estimate[0], 255);
    EXPECT_EQ(FPEstimateTables::recip_sqrt_estimate[3], 249);
    EXPECT_EQ(FPEstimateTables::recip_sqrt_estimate[128], 105);
    EXPECT_EQ(FPEstimateTables::recip_sqrt_estimate[255], 0);
}

TEST(FPEstimates, UnsignedFractions) {
    struct {
        unsigned long operand, reciprocal, root;
    } const cases[] = {{0, 0xFFFFFFFF, 0xFFFFFFFF},          {0x3FFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF},
                       {0x40000000, 0xFFFFFFFF, 0xFF800000}, {0x7FFFFFFF, 0xFFFFFFFF, 0xB5000000},
                       {0x80000000, 0xFF800000, 0xB4800000}, {0xFFFFFFFF, 0x80000000, 0x80000000},
                       {0x1C0000000, 0xAA800000, 0x93800000}}; // only 32 bits count: 0.75
    for (const auto& c : cases) {
        EXPECT_EQ(UnsignedRecipEstimate(c.operand, 32), c.reciprocal) << std::hex << c.operand;
        EXPECT_EQ(UnsignedRSqrtEstimate(c.operand, 32), c.root) << std::hex << c.operand;
    }
}

template <class Bits> void check_exponentials(unsigned entries) {
    using Format = FPFormat<Bits>;
    for (unsigned i = 0; i < entries; ++i) {
        const long double power = std::exp2(static_cast<long double>(i) / entries);
        const auto fraction =
            static_cast<std::uint64_t>(std::round(std::ldexp(power - 1, Format::fraction_bits)));
        EXPECT_EQ(FPEXPA(static_cast<Bits>(i)), fraction) << i;
        // The exponent field is what stands above the index; bits above that don't count.
        const Bits exponent = Format::bias;
        const auto a = static_cast<Bits>(exponent * entries | i | Format::sign_bit);
        EXPECT_EQ(FPEXPA(a), static_cast<Bits>(Format::power_of_two(0) | fraction)) << i;
    }
}

TEST(FPTrigonometry, Exponentials) {
    check_exponentials<half>(32);
    check_exponentials<single>(64);
    check_exponentials<double_bits>(64);
}

// The coefficients are those of the series of sin(x)/x and cos(x) in x^2, but for the last, fitted, ones.
TEST(FPTrigonometry, PolynomialSteps) {
    double factorial = 1;
    for (unsigned i = 0; i < 8; ++i) {
        for (const bool cosine : {false, true}) {
            FPSCR fpscr;
            const std::uint64_t sign = cosine ? FPFormat<double_bits>::sign_bit : 0;
            const auto one = FPFormat<double_bits>::power_of_two(0);
            const auto bits = FPTRIMADD<double_bits>(i, 0, one | sign, fpscr);
            const double term = (i % 2 != 0 ? -1.0 : 1.0) / (cosine ? factorial : factorial * (2 * i + 1));
            if (i == 7 && !cosine) {
                EXPECT_EQ(bits, 0u);
            } else {
                EXPECT_NEAR(std::bit_cast<double>(bits) / term, 1, i < 5 ? 1e-5 : 2e-2) << i << cosine;
            }
            EXPECT_EQ(exceptions(fpscr), 0);
        }
        factorial *= (2 * i + 1) * (2 * i + 2);
    }
    FPSCR fpscr;
    EXPECT_EQ(FPTRIMADD<single>(0, 0, 0x7F7FFFFF, fpscr), 0x3F800000u);
    EXPECT_EQ(FPTRIMADD<single>(0, 0x40000000, 0xC0000000, fpscr), 0x40A00000u); // 1 + 2 * |-2|
    EXPECT_EQ(FPTRIMADD<half>(1, 0x3C00, 0x8000, fpscr), 0xB800u);
    EXPECT_EQ(FPTRIMADD<half>(1, 0x3C00, 0x0000, fpscr), 0xB155u);
    EXPECT_EQ(exceptions(fpscr), 0);
}

TEST(FPTrigonometry, Squares) {
    FPSCR fpscr;
    EXPECT_EQ(FPTRISMUL<single>(0xC0000000, 1, fpscr), 0xC0800000u);
    EXPECT_EQ(FPTRISMUL<single>(0xC0000000, 0xFFFFFFFE, fpscr), 0x40800000u);
    EXPECT_EQ(FPTRISMUL<single>(0x80000000, 1, fpscr), 0x80000000u);
    EXPECT_EQ(FPTRISMUL<half>(0xFC00, 1, fpscr), 0xFC00u);
    EXPECT_EQ(FPTRISMUL<double_bits>(0xFFF8000000000001, 0, fpscr),
              0xFFF8000000000001u); // a NaN keeps its sign
    EXPECT_EQ(exceptions(fpscr), 0);
    EXPECT_EQ(FPTRISMUL<single>(0x7F000000, 1, fpscr), 0xFF800000u);
    EXPECT_EQ(exceptions(fpscr), OFC | IXC);
}

} // namespace
