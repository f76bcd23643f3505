// Operations on the bits of one element: counting, mirroring, comparing. They look only at the low N bits of
// their inputs, N being the element's width, and never trap: each says what a width without sense gives.
#pragma once

#include <bit>
#include <cstdint>

// The index of the highest set bit among the low N; -1 if there is none, or N is below 1.
[[gnu::used]] inline int HighestBitSet(std::uint64_t x, int N) {
    if (N < 1)
        return -1;
    const int unused = N < 64 ? 64 - N : 0;
    return 63 - std::countl_zero((x << unused) >> unused);
}

// The number of zeros above the highest set bit: N for zero.
[[gnu::used]] inline int CountLeadingZeroBits(std::uint64_t x, int N) { return N - 1 - HighestBitSet(x, N); }

// The number of bits below the sign bit that are equal to it without interruption: N - 1 for 0 and all ones.
[[gnu::used]] inline int CountLeadingSignBits(std::uint64_t x, int N) {
    const std::uint64_t changes = (x & ~(std::uint64_t{1} << 63)) ^ (x >> 1);
    return CountLeadingZeroBits(changes, N - 1);
}

// The number of set bits among the low N; 0 for N below 1.
[[gnu::used]] inline int BitCount(std::uint64_t x, int N) {
    if (N < 1)
        return 0;
    return std::popcount(x << (N < 64 ? 64 - N : 0));
}

// The low N bits in opposite order; 0 for N below 1.
std::uint64_t BitReverse(std::uint64_t x, int N);

// The low N bits in units of 1, 2 or 4 bytes, the order of the units reversed; an incomplete unit at the top
// is dropped. 0 for any other unit, and where N has no room for a unit.
[[gnu::used]] inline std::uint64_t Reverse(std::uint64_t x, int N, int unit) {
    if (unit != 1 && unit != 2 && unit != 4)
        return 0;
    const int unit_bits = 8 * unit;
    const int units = (N < 64 ? N : 64) / unit_bits;
    if (units < 1)
        return 0;
    if (unit == 1)
        x = __builtin_bswap64(x);
    else
        x = x << 32 | x >> 32;
    if (unit == 2)
        x = (x >> 16 & 0x0000FFFF0000FFFF) | (x & 0x0000FFFF0000FFFF) << 16;
    return x >> (64 - units * unit_bits);
}

// Whether a is below b in width N, 8, 16, 32 or 64, and the signedness.
inline bool is_less(std::uint64_t a, std::uint64_t b, int N, bool is_unsigned) {
    const std::uint64_t high_a = a << (64 - N), high_b = b << (64 - N);
    return is_unsigned ? high_a < high_b
                       : static_cast<std::int64_t>(high_a) < static_cast<std::int64_t>(high_b);
}

// The larger and the smaller of two elements of N bits, 8, 16, 32 or 64: the input word itself, whatever is
// above its low N bits, and a if they are equal. 0 for any other N.
[[gnu::used]] inline std::uint64_t Max(std::uint64_t a, std::uint64_t b, int N, bool is_unsigned) {
    if (N != 8 && N != 16 && N != 32 && N != 64)
        return 0;
    return is_less(a, b, N, is_unsigned) ? b : a;
}
[[gnu::used]] inline std::uint64_t Min(std::uint64_t a, std::uint64_t b, int N, bool is_unsigned) {
    if (N != 8 && N != 16 && N != 32 && N != 64)
        return 0;
    return is_less(b, a, N, is_unsigned) ? b : a;
}

// x shifted left by count mod 64, as a host register does it: the width plays no part.
std::uint64_t ShiftLeft(std::uint64_t x, int count, int N);

// The carry-less product of two polynomials over the field of two elements, 128 bits as two words.
struct polynomial_product {
    std::uint64_t low;
    std::uint64_t high;
};
polynomial_product PolynomialMult(std::uint64_t a, std::uint64_t b);
