// The three floating-point formats of IEEE 754 that the architecture computes in, each as one record of
// constants keyed by the unsigned type that holds an element's bits. The kernels are templates over these
// types.
#pragma once

#include "sve/fp/fp_control.h"

#include <cstdint>

__extension__ typedef unsigned __int128 fp_uint128;

// What follows from an element's width and the width of its fraction field.
template <class ElementBits, int FractionBits> struct fp_format_of {
    using Bits = ElementBits;

    static constexpr int width = 8 * sizeof(Bits);
    static constexpr int fraction_bits = FractionBits;
    static constexpr int exponent_bits = width - 1 - fraction_bits;
    static constexpr int bias = (1 << (exponent_bits - 1)) - 1;
    static constexpr int infinite_exponent = (1 << exponent_bits) - 1;

    static constexpr Bits sign_bit = Bits{1} << (width - 1);
    static constexpr Bits magnitude_mask = sign_bit - 1;
    static constexpr Bits implicit_bit = Bits{1} << fraction_bits;
    static constexpr Bits fraction_mask = implicit_bit - 1;
    static constexpr Bits quiet_bit = Bits{1} << (fraction_bits - 1);
    static constexpr Bits infinity = static_cast<Bits>(Bits{infinite_exponent} << fraction_bits);
    static constexpr Bits largest_normal = infinity - 1;
    static constexpr Bits default_nan = infinity | quiet_bit;

    // 2^exponent, a normal number.
    static constexpr Bits power_of_two(int exponent) {
        return static_cast<Bits>(Bits(bias + exponent) << fraction_bits);
    }
};

// Word: what an element's significand is worked on in, with room for a carry and guard bits.
// Product: holds the exact product of two significands.
// Accumulator: holds an addend and an exact product, aligned, with a carry.
template <class Bits> struct FPFormat;

template <> struct FPFormat<std::uint16_t> : fp_format_of<std::uint16_t, 10> {
    using Word = std::uint32_t;
    using Product = std::uint32_t;
    using Accumulator = std::uint64_t;
    static constexpr int flush_mode = FPMode_FZ16;
    static constexpr int flushed_input_flag = 0; // half precision flushes in silence
};

template <> struct FPFormat<std::uint32_t> : fp_format_of<std::uint32_t, 23> {
    using Word = std::uint32_t;
    using Product = std::uint64_t;
    using Accumulator = std::uint64_t;
    static constexpr int flush_mode = FPMode_FZ;
    static constexpr int flushed_input_flag = FPFlag_IDC;
};

template <> struct FPFormat<std::uint64_t> : fp_format_of<std::uint64_t, 52> {
    using Word = std::uint64_t;
    using Product = fp_uint128;
    using Accumulator = fp_uint128;
    static constexpr int flush_mode = FPMode_FZ;
    static constexpr int flushed_input_flag = FPFlag_IDC;
};

// Instantiates kernels for the types of the three formats: `instantiate` is a macro that takes the type.
#define FP_FOR_EACH_FORMAT(instantiate)                                                                      \
    instantiate(std::uint16_t) instantiate(std::uint32_t) instantiate(std::uint64_t)
