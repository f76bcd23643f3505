// The tables of the estimates and of FEXPA, made from their definitions when the program is compiled.
#pragma once

#include "sve/fp/fp_formats.h"

#include <array>
#include <type_traits>

// The architecture's estimate of 1/sqrt: an entry is the fraction, in 256ths, of an estimate in [1, 2).
// Entries below 128 are for the numbers (128 + i + 1/2) / 512, the others for (256 + 2 (i - 128) + 1) / 512:
// the largest estimate of nine bits, rounded, that doesn't exceed the true value.
struct FPEstimateTables {
    static constexpr std::array<std::uint8_t, 256> make() {
        std::array<std::uint8_t, 256> table{};
        for (int i = 0; i < 256; ++i) {
            const unsigned a = i < 128 ? 2 * (128u + i) + 1 : 2 * (256 + 2 * (i - 128u) + 1);
            unsigned b = 512;
            while (a * (b + 1) * (b + 1) < (1u << 28))
                ++b;
            table[i] = static_cast<std::uint8_t>((b + 1) / 2 - 256);
        }
        return table;
    }
    static const std::array<std::uint8_t, 256> recip_sqrt_estimate;
};
inline constexpr std::array<std::uint8_t, 256> FPEstimateTables::recip_sqrt_estimate =
    FPEstimateTables::make();

// The high half of the product of two 128-bit numbers.
constexpr fp_uint128 fp_multiply_high(fp_uint128 a, fp_uint128 b) {
    const std::uint64_t a_low = static_cast<std::uint64_t>(a), b_low = static_cast<std::uint64_t>(b);
    const fp_uint128 a_high = a >> 64, b_high = b >> 64;
    const fp_uint128 middle = a_high * b_low + ((static_cast<fp_uint128>(a_low) * b_low) >> 64);
    const fp_uint128 other = b_high * a_low + static_cast<std::uint64_t>(middle);
    return a_high * b_high + (middle >> 64) + (other >> 64);
}

// The table of FEXPA in an element's format: round((2^(i / entries) - 1) * 2^fraction_bits) for each i.
// Powers are numbers in [1, 2) with 127 bits of fraction, of which far fewer are in doubt than the rounding
// looks at.
template <class Bits> constexpr auto fp_make_exponential_table() {
    constexpr int entries = sizeof(Bits) == 2 ? 32 : 64;
    constexpr fp_uint128 one = static_cast<fp_uint128>(1) << 127;
    std::array<fp_uint128, entries> powers{};
    powers[0] = one;
    // 2, and then the last root, with 126 bits of fraction, as a product's high half has.
    fp_uint128 square = one;
    for (int step = entries / 2; step > 0; step /= 2) {
        fp_uint128 root = one; // of the square, bit by bit
        for (fp_uint128 bit = one >> 1; bit != 0; bit >>= 1)
            root |= fp_multiply_high(root | bit, root | bit) < square ? bit : 0;
        powers[step] = root;
        square = root >> 1;
    }
    std::array<std::conditional_t<sizeof(Bits) == 8, std::uint64_t, std::uint32_t>, entries> table{};
    constexpr int dropped = 127 - FPFormat<Bits>::fraction_bits;
    for (int i = 1; i < entries; ++i) {
        const int lowest_bit = i & -i;
        if (i != lowest_bit)
            powers[i] = fp_multiply_high(powers[lowest_bit], powers[i - lowest_bit]) << 1;
        const fp_uint128 rounded = (powers[i] + (one >> (127 - dropped + 1))) >> dropped;
        table[i] = static_cast<Bits>(rounded) & FPFormat<Bits>::fraction_mask;
    }
    return table;
}
