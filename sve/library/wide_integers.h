// Integers wide enough that instruction semantics can be computed as if they had no bounds: 128 bits for
// the elements' own arithmetic, 256 bits for sums of products. Everything wraps at its width, nothing traps.
//
// Helpers that primitives use are inline, so that a constant width folds away, and [[gnu::used]], so that
// they stand in the library for its other users as well.
#pragma once

#include <cstdint>

// A signed integer of 128 bits, two's complement. The procedure call standards pass and return it as two
// 64-bit words, the low one first.
__extension__ typedef __int128 wide_integer;
__extension__ typedef unsigned __int128 unsigned_wide_integer;

// 256 bits, two's complement, least significant word first.
struct BigInt {
    std::uint64_t words[4];
};

// All ones in the low N bits, N from 1 to 64. The word is shifted by (64 - N) mod 64, so that no width gives
// no ones at all: ones(0) is all 64.
[[gnu::used]] inline std::uint64_t ones(int N) { return ~std::uint64_t{0} >> ((64u - N) % 64); }

// The low N bits of x, zero- or sign-extended: 0 for N below 1, and all of x for N above 64.
[[gnu::used]] inline wide_integer Int(std::uint64_t x, int N, bool is_unsigned) {
    if (N < 1)
        return 0;
    const int unused = N < 64 ? 64 - N : 0;
    if (is_unsigned)
        return (x << unused) >> unused;
    return static_cast<std::int64_t>(x << unused) >> unused;
}

// The low N bits of x, zero-extended.
wide_integer UInt(std::uint64_t x, int N);

// The low N bits of x, sign-extended, for the widths of elements: 8, 16, 32 and 64. Any other width gives 0.
wide_integer SInt(std::uint64_t x, int N);

// The low 64 bits.
[[gnu::used]] inline std::uint64_t bits(wide_integer value) { return static_cast<std::uint64_t>(value); }

// The negation and the absolute value; those of the most negative value are that value itself.
[[gnu::used]] inline wide_integer NegInt(wide_integer value) {
    return static_cast<wide_integer>(-static_cast<unsigned_wide_integer>(value));
}
[[gnu::used]] inline wide_integer AbsInt(wide_integer value) { return value < 0 ? NegInt(value) : value; }

[[gnu::used]] inline wide_integer AddInt(wide_integer a, wide_integer b) {
    return static_cast<wide_integer>(static_cast<unsigned_wide_integer>(a) +
                                     static_cast<unsigned_wide_integer>(b));
}
[[gnu::used]] inline wide_integer SubInt(wide_integer a, wide_integer b) {
    return static_cast<wide_integer>(static_cast<unsigned_wide_integer>(a) -
                                     static_cast<unsigned_wide_integer>(b));
}

// The low 128 bits of the product.
inline wide_integer multiply_wide(wide_integer a, wide_integer b) {
    return static_cast<wide_integer>(static_cast<unsigned_wide_integer>(a) *
                                     static_cast<unsigned_wide_integer>(b));
}

// Arithmetic shift right of all 128 bits. A count above 65 counts as 65, which leaves of any value of 64 bits
// or fewer its sign alone; a negative count is above 65 too. The count 128 leaves all ones if the value's two
// top bits are both set, and 0 otherwise.
[[gnu::used]] inline wide_integer ShiftRightInt(wide_integer value, wide_integer count) {
    const auto magnitude = static_cast<unsigned_wide_integer>(count);
    if (magnitude == 128)
        return (value >> 126) == -1 ? -1 : 0;
    return value >> static_cast<int>(magnitude > 65 ? 65 : magnitude);
}

// Shift left of all 128 bits. A count above 64 counts as 64, which leaves nothing of a value in its low 64
// bits. A negative count shifts right, by ShiftRightInt.
[[gnu::used]] inline wide_integer ShiftLeftInt(wide_integer value, wide_integer count) {
    if (count < 0)
        return ShiftRightInt(value, NegInt(count));
    return static_cast<wide_integer>(static_cast<unsigned_wide_integer>(value)
                                     << static_cast<int>(count > 64 ? 64 : count));
}

// The value in 256 bits.
BigInt toBigInt(wide_integer value);

// The sum, wrapping at 256 bits.
BigInt AddBigInt(BigInt a, BigInt b);

// Arithmetic shift right by n bits, n from 0 up; from 255 on the sign is all that is left.
BigInt ShiftRightBigInt(BigInt value, int n);
