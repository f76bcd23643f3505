// The bitmask immediate of the logical instructions: a run of ones, rotated and repeated.
#pragma once

#include <bit>
#include <cstdint>

// The 64-bit mask that bits 17:5 of an instruction word (N, immr, imms) stand for, by the architecture's
// DecodeBitMasks. Reserved encodings are not rejected: a field without an element size gives 0, a run as long
// as its element gives all ones, and 0 where the element has 64 bits.
constexpr std::uint64_t decode_bitmask_immediate(unsigned int word) {
    const unsigned int n = (word >> 17) & 1;
    const unsigned int immr = (word >> 11) & 0x3F;
    const unsigned int imms = (word >> 5) & 0x3F;

    const unsigned int size_marker = (n << 6) | (~imms & 0x3F);
    if (size_marker == 0)
        return 0;
    unsigned int element_bits = std::bit_floor(size_marker);
    const unsigned int levels = element_bits - 1;

    std::uint64_t mask = (std::uint64_t{1} << (((imms & levels) + 1) % 64)) - 1;
    for (unsigned int rotations = immr & levels; rotations != 0; --rotations)
        mask = (mask >> 1) | ((mask & 1) << levels);
    for (; element_bits < 64; element_bits *= 2)
        mask |= mask << element_bits;
    return mask;
}
