// The named predicate patterns: how many leading elements a 5-bit pattern number selects.
#pragma once

#include <bit>

// The number of leading true elements that the pattern gives among n elements. The numbered patterns give 0
// where n is too small for them, and so do numbers that name no pattern. ALL is n rounded down to even, which
// is n at every element count of a real vector length. POW2 of no elements is 1.
constexpr int predicate_pattern_length(unsigned long pattern, int n) {
    constexpr unsigned long pow2 = 0, vl8 = 8, vl16 = 9, vl256 = 13, mul4 = 29, mul3 = 30, all = 31;
    if (pattern == pow2)
        return n < 1 ? 1 : static_cast<int>(std::bit_floor(static_cast<unsigned int>(n)));
    if (pattern <= vl256) {
        const int length = pattern <= vl8 ? static_cast<int>(pattern) : 16 << (pattern - vl16);
        return length <= n ? length : 0;
    }
    switch (pattern) {
    case mul4:
        return n & ~3;
    case mul3:
        return n / 3 * 3;
    case all:
        return n & ~1;
    default:
        return 0;
    }
}

// The same, for all who link with the library.
int VecTrueILength(unsigned long pattern, int n);
