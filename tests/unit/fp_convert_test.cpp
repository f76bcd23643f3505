// Conversions and integral rounding at the edges of formats and integers.
#include "sve/fp/fp_convert.h"

#include "tests/unit/fp_operands.h"

#include <gtest/gtest.h>

namespace {

using half = std::uint16_t;
using single = std::uint32_t;
using double_bits = std::uint64_t;

constexpr std::uint32_t FZ = FPSCR::FZ, FZ16 = FPSCR::FZ16, DN = FPSCR::DN, AHP = FPSCR::AHP;
constexpr int IOC = FPFlag_IOC, OFC = FPFlag_OFC, UFC = FPFlag_UFC, IXC = FPFlag_IXC, IDC = FPFlag_IDC;
constexpr FPRounding even = FPRounding_TIEEVEN, up = FPRounding_POSINF, down = FPRounding_NEGINF,
                     to_zero = FPRounding_ZERO, away = FPRounding_TIEAWAY, odd = FPRounding_ODD;

int exceptions(const FPSCR& fpscr) { return static_cast<int>(fpscr.bits & 0x9F); }

template <class From, class To> struct convert_case {
    std::uint32_t control;
    FPRounding rm;
    From value;
    To result;
    int flags;
};

template <class From, class To> void check(std::initializer_list<convert_case<From, To>> cases) {
    for (const auto& c : cases) {
        FPSCR fpscr{c.control};
        EXPECT_EQ((FPConvert<From, To>(c.value, c.rm, fpscr)), c.result) << std::hex << c.value;
        EXPECT_EQ(exceptions(fpscr), c.flags) << std::hex << c.value;
    }
}

TEST(FPConvert, Widening) {
    check<half, single>({
        {0, even, 0x7C00, 0x7F800000, 0},
        {AHP, even, 0x7C00, 0x47800000, 0}, // 65536 in the alternative format
        {AHP, even, 0xFFFF, 0xC7FFE000, 0}, // which has no NaNs
        {0, even, 0x7C01, 0x7FC02000, IOC},
        {0, even, 0xFE01, 0xFFC02000, 0},
        {DN, even, 0xFE01, 0x7FC00000, 0},
        {0, even, 0x0001, 0x33800000, 0},
        {FZ, even, 0x03FF, 0x387FC000, 0},
        {FZ16, even, 0x8001, 0x80000000, 0},
        {0, even, 0x8000, 0x80000000, 0},
        {0, even, 0xFBFF, 0xC77FE000, 0},
    });
    check<half, double_bits>(
        {{0, even, 0x0001, 0x3E70000000000000, 0}, {AHP, even, 0x7C00, 0x40F0000000000000, 0}});
    check<single, double_bits>({
        {0, even, 0x80000001, 0xB6A0000000000000, 0},
        {FZ, even, 0x80000001, 0x8000000000000000, IDC},
        {FZ16 | AHP, even, 0x7F800000, 0x7FF0000000000000, 0},
        {AHP, even, 0x7F800001, 0x7FF8000020000000, IOC},
    });
}

TEST(FPConvert, Narrowing) {
    check<single, half>({
        {0, even, 0x477FEFFF, 0x7BFF, IXC}, // just below the middle to 65536
        {0, even, 0x477FF000, 0x7C00, OFC | IXC},
        {0, to_zero, 0x477FF000, 0x7BFF, IXC},
        {0, odd, 0x47800001, 0x7BFF, OFC | IXC},
        {AHP, even, 0x47800000, 0x7C00, 0},
        {AHP, even, 0x47FFE000, 0x7FFF, 0},
        {AHP, even, 0x48000000, 0x7FFF, IOC},
        {AHP, even, 0xFF800000, 0xFFFF, IOC},
        {AHP, even, 0xFFC00000, 0x8000, IOC},
        {AHP | DN, even, 0x7F800001, 0x0000, IOC},
        {0, even, 0xFF800000, 0xFC00, 0},
        {0, even, 0xFFC02001, 0xFE01, 0},
        {0, even, 0x7F800001, 0x7E00, IOC},
        {DN, even, 0xFFC02000, 0x7E00, 0},
        {FZ16, even, 0x33800000, 0x0001, 0}, // a tiny half isn't flushed
        {FZ16, even, 0x33000000, 0x0000, UFC | IXC},
        {0, even, 0x00000001, 0x0000, UFC | IXC},
        {0, up, 0x00000001, 0x0001, UFC | IXC},
        {0, odd, 0x00000001, 0x0001, UFC | IXC},
        {FZ, up, 0x80000001, 0x8000, IDC},
        {0, away, 0x3F801000, 0x3C00, IXC}, // rounding and packing knows no ties away
    });
    check<double_bits, half>({
        {0, even, 0x3E60000000000001, 0x0001, UFC | IXC},
        {0, even, 0x7FF0000000000001, 0x7E00, IOC},
        {FZ, even, 0x000FFFFFFFFFFFFF, 0x0000, IDC},
        {0, even, 0xC0EFFC0000000000, 0xFBFF, 0},
    });
    check<double_bits, single>({
        {0, even, 0x380FFFFFFFFFFFFF, 0x00800000, UFC | IXC}, // a denormal becomes normal
        {FZ, even, 0xB80FFFFFFFFFFFFF, 0x80000000, UFC},
        {FZ, even, 0x0000000000000001, 0x00000000, IDC},
        {0, odd, 0x3FF0000000000001, 0x3F800001, IXC},
        {0, odd, 0x3FF0000000000000, 0x3F800000, 0},
        {AHP, even, 0x7FF0000000000000, 0x7F800000, 0},
        {0, even, 0x7FF0000020000000, 0x7FC00001, IOC},
        {0, even, 0x47EFFFFFF0000000, 0x7F800000, OFC | IXC},
    });
}

template <class From, class To> struct integer_case {
    std::uint32_t control;
    From value;
    bool is_unsigned;
    FPRounding rm;
    To result;
    int flags;
    int fbits = 0;
};

template <class From, class To> void check_integers(std::initializer_list<integer_case<From, To>> cases) {
    for (const auto& c : cases) {
        FPSCR fpscr{c.control};
        EXPECT_EQ((fplibFPToFixed<From, To>(c.value, c.fbits, c.is_unsigned, c.rm, fpscr)), c.result)
            << std::hex << c.value << " mode " << c.rm;
        EXPECT_EQ(exceptions(fpscr), c.flags) << std::hex << c.value << " mode " << c.rm;
    }
}

TEST(FPConvert, ToIntegers) {
    check_integers<single, single>({
        {0, 0x4F000000, false, even, 0x7FFFFFFF, IOC}, // 2^31
        {0, 0xCF000000, false, even, 0x80000000, 0},
        {0, 0xCF000001, false, even, 0x80000000, IOC},
        {0, 0x4F000000, true, even, 0x80000000, 0},
        {0, 0x4F800000, true, even, 0xFFFFFFFF, IOC},
        {0, 0xBF000000, true, to_zero, 0, IXC}, // -0.5
        {0, 0xBF000000, true, even, 0, IXC},
        {0, 0xBF000000, true, away, 0, IOC},
        {0, 0xBF800000, true, to_zero, 0, IOC},
        {0, 0x7FC00000, false, even, 0, IOC},
        {0, 0xFF800001, true, even, 0, IOC},
        {0, 0x7F800000, true, even, 0xFFFFFFFF, IOC},
        {0, 0xFF800000, true, even, 0, IOC},
        {0, 0xFF800000, false, even, 0x80000000, IOC},
        {0, 0x7F7FFFFF, false, even, 0x7FFFFFFF, IOC},
        {0, 0x40200000, false, even, 2, IXC}, // 2.5
        {0, 0x40200000, false, away, 3, IXC},
        {0, 0xC0200000, false, away, 0xFFFFFFFD, IXC},
        {0, 0xC0200000, false, down, 0xFFFFFFFD, IXC},
        {0, 0xC0200000, false, up, 0xFFFFFFFE, IXC},
        {0, 0x40600000, false, even, 4, IXC}, // 3.5
        {0, 0x3EFFFFFF, false, away, 0, IXC}, // just below 0.5
        {0, 0x00000001, false, up, 1, IXC},
        {0, 0x80000001, true, down, 0, IOC},
        {FZ, 0x00000001, false, up, 0, IDC},
        {0, 0x3FC00000, false, even, 3, 0, 1}, // 1.5 in halves
        {0, 0x3F800000, false, even, 0x7FFFFFFF, IOC, 31},
    });
    check_integers<half, half>({
        {0, 0x7800, false, even, 0x7FFF, IOC}, // 32768
        {0, 0xF800, false, even, 0x8000, 0},
        {0, 0x7800, true, even, 0x8000, 0},
        {0, 0x7BFF, true, even, 0xFFE0, 0},
        {FZ16, 0x0001, false, up, 0, 0}, // flushed in silence
        {FZ, 0x0001, false, up, 1, IXC},
        {AHP, 0x7C00, true, even, 0xFFFF, IOC},
    });
    check_integers<double_bits, double_bits>({
        {0, 0x43E0000000000000, false, even, 0x7FFFFFFFFFFFFFFF, IOC}, // 2^63
        {0, 0xC3E0000000000000, false, even, 0x8000000000000000, 0},
        {0, 0xC3E0000000000001, false, even, 0x8000000000000000, IOC},
        {0, 0x43EFFFFFFFFFFFFF, true, even, 0xFFFFFFFFFFFFF800, 0},
        {0, 0x43F0000000000000, true, even, 0xFFFFFFFFFFFFFFFF, IOC},
        {0, 0x43F0000000000000, false, even, 0x7FFFFFFFFFFFFFFF, IOC},
        {0, 0x432FFFFFFFFFFFFF, false, even, 0x0010000000000000, IXC}, // 2^52 - 0.5
        {0, 0x4340000000000001, false, even, 0x0020000000000002, 0},
    });
    check_integers<double_bits, single>({
        {0, 0x41DFFFFFFFC00000, false, even, 0x7FFFFFFF, 0},   // 2^31 - 1
        {0, 0x41DFFFFFFFE00000, false, even, 0x7FFFFFFF, IOC}, // and a half: out of range alone, not inexact
        {0, 0x41DFFFFFFFE00000, false, to_zero, 0x7FFFFFFF, IXC},
        {0, 0xC1E0000000100000, false, even, 0x80000000, IXC}, // -2^31 - 1/2
        {0, 0x41EFFFFFFFF00000, true, up, 0xFFFFFFFF, IOC},
        {0, 0xC3F0000000000000, false, even, 0x80000000, IOC},
    });
}

TEST(FPConvert, ToFixedSetsItsFlagsWord) {
    int flags = FPFlag_IDC;
    EXPECT_EQ(FPToFixed_64(0, 1023, 0x18000000000000, false, FPRounding_TIEEVEN, &flags), 2u); // 1.5
    EXPECT_EQ(flags, IXC);
    EXPECT_EQ(FPToFixed_64(1, 1023, 0x10000000000000, true, FPRounding_TIEEVEN, &flags), 0u);
    EXPECT_EQ(flags, IOC);
    flags = FPFlag_IDC;
    EXPECT_EQ(FPToFixed_64(1, 1023, 0x10000000000000, false, FPRounding_TIEEVEN, &flags), ~0ul);
    EXPECT_EQ(flags, IDC);
}

TEST(FPConvert, FromIntegers) {
    FPSCR fpscr{FZ | FZ16 | AHP};
    EXPECT_EQ(fplibFixedToFP<half>(0, 0, false, down, fpscr), 0u);
    EXPECT_EQ(fplibFixedToFP<half>(1, 24, false, even, fpscr), 0x0001u); // never flushed
    EXPECT_EQ(fplibFixedToFP<single>(0x8000000000000000, 0, false, even, fpscr), 0xDF000000u);
    EXPECT_EQ(fplibFixedToFP<single>(0x8000000000000000, 0, true, even, fpscr), 0x5F000000u);
    EXPECT_EQ(fplibFixedToFP<double_bits>(~0ul, 0, false, even, fpscr), 0xBFF0000000000000u);
    EXPECT_EQ(exceptions(fpscr), 0);
    EXPECT_EQ(fplibFixedToFP<half>(65504, 0, true, even, fpscr), 0x7BFFu);
    EXPECT_EQ(exceptions(fpscr), 0);
    EXPECT_EQ(fplibFixedToFP<half>(65519, 0, true, even, fpscr), 0x7BFFu);
    EXPECT_EQ(exceptions(fpscr), IXC);
    EXPECT_EQ(fplibFixedToFP<half>(~0ul, 0, true, even, fpscr), 0x7C00u);
    EXPECT_EQ(fplibFixedToFP<half>(~0ul, 0, true, down, fpscr), 0x7BFFu);
    EXPECT_EQ(fplibFixedToFP<half>(0x8000000000000000, 0, false, up, fpscr), 0xFBFFu);
    EXPECT_EQ(exceptions(fpscr), OFC | IXC);
    FPSCR inexact;
    EXPECT_EQ(fplibFixedToFP<single>(0x1000001, 0, true, even, inexact), 0x4B800000u); // 2^24 + 1
    EXPECT_EQ(fplibFixedToFP<single>(0x1000001, 0, true, up, inexact), 0x4B800001u);
    EXPECT_EQ(exceptions(inexact), IXC);
}

TEST(FPRoundInt, Single) {
    struct {
        std::uint32_t control;
        single value;
        FPRounding rm;
        single result;
        int flags; // when an inexact result is to be told
    } const cases[] = {
        {0, 0x40200000, even, 0x40000000, IXC}, // 2.5
        {0, 0x40200000, away, 0x40400000, IXC},
        {0, 0xC0200000, away, 0xC0400000, IXC},
        {0, 0x40200000, up, 0x40400000, IXC},
        {0, 0x3F000000, even, 0, IXC},             // 0.5
        {0, 0x3F000001, even, 0x3F800000, IXC},    //
        {0, 0x3EFFFFFF, away, 0, IXC},             //
        {0, 0xBE800000, up, 0x80000000, IXC},      // -0.25: the sign stays
        {0, 0xBE800000, down, 0xBF800000, IXC},    //
        {0, 0x00000001, up, 0x3F800000, IXC},      //
        {0, 0x80000001, even, 0x80000000, IXC},    //
        {FZ, 0x80000001, down, 0x80000000, IDC},   //
        {0, 0x80000000, up, 0x80000000, 0},        //
        {0, 0x4AFFFFFF, even, 0x4B000000, IXC},    // 2^23 - 0.5 carries into the exponent
        {0, 0x4AFFFFFF, to_zero, 0x4AFFFFFE, IXC}, //
        {0, 0x4B000001, up, 0x4B000001, 0},        // integral
        {0, 0x42F60000, up, 0x42F60000, 0},        // 123
        {0, 0x7F7FFFFF, down, 0x7F7FFFFF, 0},      //
        {0, 0xFF800000, even, 0xFF800000, 0},      //
        {0, 0x7F800001, even, 0x7FC00001, IOC},    //
        {DN, 0xFFC00001, even, 0x7FC00000, 0},     //
    };
    for (const auto& c : cases) {
        for (const bool exact : {false, true}) {
            FPSCR fpscr{c.control};
            EXPECT_EQ(FPRoundInt(c.value, c.rm, exact, fpscr), c.result)
                << std::hex << c.value << " mode " << c.rm;
            EXPECT_EQ(exceptions(fpscr), exact ? c.flags : c.flags & ~IXC)
                << std::hex << c.value << " mode " << c.rm;
        }
    }
}

TEST(FPRoundInt, HalfAndDouble) {
    FPSCR fpscr{FZ16};
    EXPECT_EQ(FPRoundInt<half>(0x8001, down, true, fpscr), 0x8000u);
    EXPECT_EQ(exceptions(fpscr), 0);
    EXPECT_EQ(FPRoundInt<half>(0x63FF, up, false, fpscr), 0x6400u); // 1023.5
    EXPECT_EQ(FPRoundInt<half>(0x6401, up, false, fpscr), 0x6401u);
    EXPECT_EQ(FPRoundInt<double_bits>(0x432FFFFFFFFFFFFF, even, false, fpscr), 0x4330000000000000u);
    EXPECT_EQ(FPRoundInt<double_bits>(1, up, false, fpscr), 0x3FF0000000000000u);
    EXPECT_EQ(exceptions(fpscr), 0);
}

} // namespace
