#include "sve/decode/bitmask_immediate.h"

#include <gtest/gtest.h>

namespace {

constexpr unsigned int bitmask_word(unsigned int n, unsigned int immr, unsigned int imms) {
    return n << 17 | immr << 11 | imms << 5;
}

TEST(BitmaskImmediate, ReservedEncodings) {
    struct {
        unsigned int n, immr, imms;
        std::uint64_t mask;
    } const cases[] = {
        // A run as long as its element, and no element size.
        {0, 0, 0b111101, ~std::uint64_t{0}},
        {0, 5, 0b111110, ~std::uint64_t{0}},
        {0, 9, 0b011111, ~std::uint64_t{0}},
        {1, 3, 0b111111, 0},
        {0, 7, 0b111111, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(decode_bitmask_immediate(bitmask_word(c.n, c.immr, c.imms)), c.mask)
            << c.n << " " << c.immr << " " << c.imms;
}

// All masks that have an encoding, each built from its description.
TEST(BitmaskImmediate, EveryMask) {
    int masks = 0;
    for (unsigned int size = 2; size <= 64; size *= 2) {
        for (unsigned int ones = 1; ones < size; ++ones) {
            for (unsigned int rotation = 0; rotation < size; ++rotation) {
                std::uint64_t mask = 0;
                for (unsigned int bit = 0; bit < 64; ++bit)
                    mask |= std::uint64_t{(bit + rotation) % size < ones} << bit;
                const unsigned int n = size == 64;
                const unsigned int imms = (~(size * 2 - 1) & 0x3F) | (ones - 1);
                const unsigned int ignored_rotation_bits = ~(size - 1) & 0x3F;
                const unsigned int rest_of_word = ~bitmask_word(1, 0x3F, 0x3F);
                EXPECT_EQ(decode_bitmask_immediate(bitmask_word(n, rotation, imms)), mask);
                EXPECT_EQ(decode_bitmask_immediate(bitmask_word(n, rotation | ignored_rotation_bits, imms) |
                                                   rest_of_word),
                          mask);
                ++masks;
            }
        }
    }
    EXPECT_EQ(masks, 5334);
}

} // namespace
