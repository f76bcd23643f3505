// The estimates of reciprocals that no instruction uses, computed by hand in exact fractions.
#include "sve/fp/fp_estimates.h"

#include <gtest/gtest.h>

namespace {

TEST(Estimates, OfDoubles) {
    EXPECT_EQ(recip_estimate(0.5), 511 / 256.0);
    EXPECT_EQ(recip_estimate(0.75), 341 / 256.0);
    EXPECT_EQ(recip_estimate(0x1.fffffffffffffp-1), 1.0);
    EXPECT_EQ(recip_sqrt_estimate(0.25), 511 / 256.0);
    EXPECT_EQ(recip_sqrt_estimate(0x1.fffffffffffffp-2), 362 / 256.0);
    EXPECT_EQ(recip_sqrt_estimate(0.5), 361 / 256.0);
    EXPECT_EQ(recip_sqrt_estimate(0x1.fffffffffffffp-1), 1.0);
}

TEST(Estimates, OfFractions) {
    struct {
        std::uint32_t x, reciprocal, root;
    } const cases[] = {{0, 0xFFFFFFFF, 0xFFFFFFFF},          {0x3FFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF},
                       {0x40000000, 0xFFFFFFFF, 0xFF800000}, {0x7FFFFFFF, 0xFFFFFFFF, 0xB5000000},
                       {0x80000000, 0xFF800000, 0xB4800000}, {0xC0000000, 0xAA800000, 0x93800000},
                       {0xFFFFFFFF, 0x80000000, 0x80000000}};
    for (const auto& c : cases) {
        for (const int N : {32, 0}) {
            EXPECT_EQ(UnsignedRecipEstimate(c.x, N), c.reciprocal) << std::hex << c.x;
            EXPECT_EQ(UnsignedRSqrtEstimate(c.x, N), c.root) << std::hex << c.x;
        }
    }
}

} // namespace
