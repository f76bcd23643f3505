#include "sve/library/saturation.h"

#include <algorithm>

saturation SatMult(std::uint64_t a, std::uint64_t b, int N, bool is_unsigned) {
    const wide_integer product = multiply_wide(Int(a, N, is_unsigned), Int(b, N, is_unsigned));
    return {bits(product), SatQ(product, N, is_unsigned).saturated};
}

// The largest values of N bits for N from 1 to 128. That of 128 unsigned bits has no place among signed
// integers; no value exceeds 127 bits.
static wide_integer largest(int N, bool is_unsigned) {
    const int value_bits = is_unsigned ? std::min(N, 127) : N - 1;
    return static_cast<wide_integer>(((unsigned_wide_integer{1} << value_bits) - 1));
}

// The low word of the bound on the side of the sign.
static std::uint64_t bound(bool is_negative, int N, bool is_unsigned) {
    if (is_negative)
        return is_unsigned ? 0 : bits(SubInt(-1, largest(N, false)));
    return bits(largest(N, is_unsigned));
}

saturation SatQShift(wide_integer value, int N, bool is_unsigned) {
    const wide_integer most = largest(N, is_unsigned);
    const wide_integer least = is_unsigned ? 0 : SubInt(-1, most);
    if (value > most || value < least)
        return {bound(value < 0, N, is_unsigned), 1};
    return {bits(value), 0};
}

saturation SatQUShift(wide_integer value, int n) {
    const std::uint64_t limit = n < 64 ? (std::uint64_t{1} << std::max(n, 0)) - 1 : ~std::uint64_t{0};
    if (bits(value) <= limit)
        return {bits(value), 0};
    const bool small = value >> (2 * std::clamp(n, 0, 63)) == 0;
    return {small ? ones(n) : 0, 1};
}

saturation SatQBigInt(BigInt value, int N, bool is_unsigned) {
    const auto& [low, second, third, top] = value.words;
    const bool is_negative = top >> 63;
    if (is_unsigned) {
        if (is_negative)
            return {0, 1};
        const bool in_range = (second | third | top) == 0 && low <= ones(N);
        return in_range ? saturation{low, 0} : saturation{ones(N), 1};
    }
    const std::uint64_t sign = 0 - std::uint64_t{is_negative};
    const std::uint64_t sign_and_above =
        static_cast<std::uint64_t>(static_cast<std::int64_t>(low) >> (N - 1));
    if (second == sign && third == sign && top == sign && sign_and_above == sign)
        return {low & ones(N), 0};
    return {is_negative ? std::uint64_t{1} << (N - 1) : ones(N - 1), 1};
}

saturation ShiftQLeftInt(wide_integer value, wide_integer count, int N, bool is_unsigned) {
    if (count < 0)
        return {bits(ShiftRightInt(value, NegInt(count))), 0};
    if (value == 0)
        return {0, 0};
    if (count >= N)
        return {bound(value < 0, N, is_unsigned), 1};
    const auto shifted = static_cast<unsigned_wide_integer>(value) << static_cast<int>(count);
    return SatQShift(static_cast<wide_integer>(shifted), N, is_unsigned);
}

saturation SatShiftLeft(std::uint64_t a, std::uint64_t b, int N, bool is_unsigned) {
    const wide_integer value = Int(a, N, is_unsigned);
    const wide_integer count = std::min(Int(b, N, is_unsigned), wide_integer{N});
    const saturation shifted = SatQ(ShiftLeftInt(value, count), N, is_unsigned);
    if (!shifted.saturated)
        return shifted;
    // Shifting a large unsigned element by 64 reaches the sign of the 128 bits, so its own sign decides.
    return {is_unsigned ? ones(N) : bound(value < 0, N, false) & ones(N), 1};
}

saturation SatShiftLeftU(std::uint64_t a, std::uint64_t b, int N) {
    const wide_integer value = Int(a, N, false);
    const wide_integer count = std::min(Int(b, N, true), wide_integer{N});
    return SatQ(ShiftLeftInt(value, count), N, true);
}
