#include "sve/decode/bitmask_immediate.h"

#include <gtest/gtest.h>

namespace {

constexpr unsigned int bitmask_word(unsigned int n, unsigned int immr, unsigned int imms) {
    return n << 17 | immr << 11 | imms << 5;
}

TEST(BitmaskImmediate, Known) {
    struct {
        unsigned int n, immr, imms;
        std::uint64_t mask;
    } const cases[] = {
        {1, 0, 0, 1},
        {0, 0, 0b111100, 0x5555555555555555},
        {0, 1, 0b111100, 0xAAAAAAAAAAAAAAAA},
        {0, 0, 0b110000, 0x0101010101010101},
        {0, 0, 0b000000, 0x0000000100000001},
        {1, 8, 7, 0xFF00000000000000},
        {1, 4, 7, 0xF00000000000000F},
        {0, 3, 0b100111, 0xE01FE01FE01FE01F},
        // Reserved encodings: a run as long as its element, and no element size.
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
