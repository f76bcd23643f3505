// Saturation: bringing a wide result into the range of an element, and saying whether it had to be moved.
// There is no sticky state: neither the condition flags nor any status register hears of it.
//
// N is the element's width in bits, 8, 16, 32 or 64, except where a function says otherwise.
#pragma once

#include "sve/decode/integer_types.h"
#include "sve/library/wide_integers.h"

#include <type_traits>

// A value, and 1 if saturation changed it, 0 if not.
struct saturation {
    std::uint64_t value;
    std::uint64_t saturated;
};

// The value in N bits of the given signedness. Both bounds come as N-bit patterns, the negative one not
// sign-extended, and so does a value in range.
[[gnu::used]] inline saturation SatQ(wide_integer value, int N, bool is_unsigned) {
    const std::uint64_t sign_bit = std::uint64_t{1} << ((N - 1) & 63);
    if (is_unsigned) {
        if (value < 0)
            return {0, 1};
        if (value > static_cast<wide_integer>(ones(N)))
            return {ones(N), 1};
        return {bits(value), 0};
    }
    if (value > static_cast<wide_integer>(sign_bit - 1))
        return {sign_bit - 1, 1};
    if (value < Int(sign_bit, N, false))
        return {sign_bit, 1};
    return {bits(value) & ones(N), 0};
}

// The saturated sum of two elements. A sum in range is the low word of the wide sum: a signed one is
// sign-extended above N bits.
[[gnu::used]] inline saturation SatAdd(std::uint64_t a, std::uint64_t b, int N, bool is_unsigned) {
    const wide_integer sum = AddInt(Int(a, N, is_unsigned), Int(b, N, is_unsigned));
    const saturation result = SatQ(sum, N, is_unsigned);
    return result.saturated ? result : saturation{bits(sum), 0};
}

// The saturated difference of two elements, always as an N-bit pattern.
[[gnu::used]] inline saturation SatSub(std::uint64_t a, std::uint64_t b, int N, bool is_unsigned) {
    return SatQ(SubInt(Int(a, N, is_unsigned), Int(b, N, is_unsigned)), N, is_unsigned);
}

// The low bits of a register plus or minus a count, in the range of the register's type: `combine` is SatAdd
// or SatSub.
template <class Register, auto combine>
inline Register saturate_register(std::uint64_t operand, std::uint64_t count) {
    constexpr bool is_unsigned = std::is_unsigned_v<Register>;
    return static_cast<Register>(combine(operand, count, width_of<Register>, is_unsigned).value);
}

// The low word of the product of two elements, not saturated, with the flag telling whether it is out of
// range.
saturation SatMult(std::uint64_t a, std::uint64_t b, int N, bool is_unsigned);

// As SatQ for N from 1 to 128: a value in range comes as its low word unmasked, and the negative bound
// sign-extended. Bounds wider than a word are represented by their low word.
saturation SatQShift(wide_integer value, int N, bool is_unsigned);

// The low word if it is at most 2 to the n, less 1, whatever stands in the high word. Otherwise the flag is
// set, and the value is ones(n) if nothing is left of the 128 bits after a shift right by 2n, else 0.
saturation SatQUShift(wide_integer value, int n);

// As SatQ for a value of 256 bits; an unsigned value in range comes as its low word.
saturation SatQBigInt(BigInt value, int N, bool is_unsigned);

// A saturating left shift to N bits of a value of at most 64. A negative count is a plain shift right, never
// saturated. A count of N or more saturates every value but zero, to the bound on the value's side.
saturation ShiftQLeftInt(wide_integer value, wide_integer count, int N, bool is_unsigned);

// The element a shifted left by the element b, at most by N, saturated; a negative count shifts right. The
// bound is all ones when unsigned, otherwise that of a's sign.
saturation SatShiftLeft(std::uint64_t a, std::uint64_t b, int N, bool is_unsigned);

// The signed element a shifted left by the unsigned count b, at most by N, saturated to an unsigned element:
// ones(N) for a too large result, and 0 for a negative one.
saturation SatShiftLeftU(std::uint64_t a, std::uint64_t b, int N);
