// Operands that find faults in floating point: values at the edges of a format, and random ones with edges of
// their own.
#pragma once

#include "sve/fp/fp_formats.h"

#include <cstdint>
#include <random>
#include <vector>

// Zeros, denormals, the ends of each range, numbers around 1, infinities and both kinds of NaNs, with both
// signs.
template <class Bits> inline std::vector<Bits> fp_special_values() {
    using Format = FPFormat<Bits>;
    const Bits one = Format::power_of_two(0), ulp = 1, half_fraction = Format::quiet_bit;
    const Bits positive[] = {
        0,
        ulp,                                                  // the least denormal
        2,                                                    //
        Format::implicit_bit - ulp,                           // the greatest denormal
        Format::implicit_bit,                                 // the least normal
        Bits(Format::implicit_bit + ulp),                     //
        Bits(Format::implicit_bit >> 2),                      // whose reciprocal is just representable
        Bits((Format::implicit_bit >> 2) - ulp),              // and whose isn't
        half_fraction,                                        //
        Bits(one - ulp),                                      //
        one,                                                  //
        Bits(one + ulp),                                      //
        Bits(one | half_fraction),                            // 1.5
        Format::power_of_two(1),                              // 2
        Format::power_of_two(-1),                             // 0.5
        Bits(Format::power_of_two(-1) - ulp),                 //
        Bits(Format::power_of_two(1) | (half_fraction >> 1)), // 2.5
        Bits(Format::power_of_two(1) | half_fraction),        // 3
        Format::power_of_two(Format::fraction_bits),          // integral from here on
        Bits(Format::power_of_two(Format::fraction_bits) - ulp),
        Format::power_of_two(Format::bias - 1), // whose reciprocal is the least normal
        Format::power_of_two(Format::bias),     // and a denormal
        Format::largest_normal,
        Format::infinity,
        Format::default_nan,
        Bits(Format::default_nan | 0x25),
        Bits(Format::infinity | 1), // signalling
        Bits(Format::infinity | 0x25),
    };
    std::vector<Bits> values;
    for (const Bits value : positive) {
        values.push_back(value);
        values.push_back(value | Format::sign_bit);
    }
    return values;
}

// An element out of one 64-bit random number: a special value, or random bits with some of their fraction
// bits cleared or set, or a number near 1, so that sums cancel and products stay in range.
template <class Bits> inline Bits fp_random_value(std::uint64_t random) {
    using Format = FPFormat<Bits>;
    static const std::vector<Bits> specials = fp_special_values<Bits>();
    const unsigned choice = random & 15;
    random >>= 4;
    if (choice < 3)
        return specials[random % specials.size()];
    // Sixty bits are left: a bijection spreads them over the whole element.
    Bits bits = static_cast<Bits>((random * 0x9E3779B97F4A7C15) >> (64 - Format::width));
    const int run = static_cast<int>(random % Format::fraction_bits);
    if (choice < 6)
        bits &= static_cast<Bits>(~Bits{0}) << run;
    else if (choice < 9)
        bits |= static_cast<Bits>((Bits{1} << run) - 1);
    if (choice % 3 != 0)
        return bits;
    const int exponent = static_cast<int>(random >> 40) % 32 - 16;
    const Bits sign_and_fraction = bits & (Format::sign_bit | Format::fraction_mask);
    return sign_and_fraction | Format::power_of_two(exponent % (Format::bias - 1));
}
