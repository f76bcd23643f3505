#include "sve/library/bit_operations.h"

std::uint64_t BitReverse(std::uint64_t x, int N) {
    if (N < 1)
        return 0;
    x = __builtin_bswap64(x);
    x = (x >> 4 & 0x0F0F0F0F0F0F0F0F) | (x & 0x0F0F0F0F0F0F0F0F) << 4;
    x = (x >> 2 & 0x3333333333333333) | (x & 0x3333333333333333) << 2;
    x = (x >> 1 & 0x5555555555555555) | (x & 0x5555555555555555) << 1;
    return x >> (N < 64 ? 64 - N : 0);
}

std::uint64_t ShiftLeft(std::uint64_t x, int count, int) { return x << (static_cast<unsigned>(count) % 64); }

polynomial_product PolynomialMult(std::uint64_t a, std::uint64_t b) {
    polynomial_product product = {0, 0};
    for (int i = 0; i < 64; ++i) {
        if ((b >> i & 1) == 0)
            continue;
        product.low ^= a << i;
        product.high ^= i == 0 ? 0 : a >> (64 - i);
    }
    return product;
}
