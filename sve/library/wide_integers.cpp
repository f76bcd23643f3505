#include "sve/library/wide_integers.h"

wide_integer UInt(std::uint64_t x, int N) { return Int(x, N, true); }

wide_integer SInt(std::uint64_t x, int N) {
    const bool is_element_width = N == 8 || N == 16 || N == 32 || N == 64;
    return is_element_width ? Int(x, N, false) : 0;
}

// All ones for a negative value, 0 for any other.
static std::uint64_t sign_word(const BigInt& value) { return 0 - (value.words[3] >> 63); }

BigInt toBigInt(wide_integer value) {
    const std::uint64_t sign = value < 0 ? ~std::uint64_t{0} : 0;
    return {{bits(value), bits(value >> 64), sign, sign}};
}

BigInt AddBigInt(BigInt a, BigInt b) {
    BigInt sum;
    unsigned_wide_integer carried = 0;
    for (int i = 0; i < 4; ++i) {
        carried += a.words[i];
        carried += b.words[i];
        sum.words[i] = static_cast<std::uint64_t>(carried);
        carried >>= 64;
    }
    return sum;
}

BigInt ShiftRightBigInt(BigInt value, int n) {
    const std::uint64_t sign = sign_word(value);
    const auto word_at = [&](int i) { return i < 4 ? value.words[i] : sign; };
    const int whole_words = n / 64;
    BigInt result;
    for (int i = 0; i < 4; ++i) {
        const int from = i + whole_words;
        const auto pair = unsigned_wide_integer{word_at(from + 1)} << 64 | word_at(from);
        result.words[i] = static_cast<std::uint64_t>(pair >> (n % 64));
    }
    return result;
}
