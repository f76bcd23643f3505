// Random operands of library primitives at many vector lengths, and values as containers to reason about.
#pragma once

#include "sve/decode/library_values.h"

#include <array>
#include <gtest/gtest.h>
#include <random>
#include <vector>

// Values of a primitive's arguments, random up to the end of their storage: bits that must not matter, above
// the vector length and in a predicate's groups, are random too.
struct primitive_operands {
    PredV pg, pn, pm;
    VecV zn, zm;
    CpuContext context;
    std::uint64_t seed; // for a test's own choices
};

// A random predicate: no bits, all, few, many, the first or last of the length alone, or one byte in eight.
inline PredV random_predicate(std::mt19937_64& generator, int bits) {
    PredV result = {};
    const unsigned shape = generator() % 8;
    for (int k = 0; k < 256; ++k) {
        const bool by_shape[] = {
            false,         true,       generator() % 16 == 0, generator() % 2 == 0, k == 0,
            k == bits - 1, k % 8 == 0, generator() % 16 != 0};
        const bool set = k < bits ? by_shape[shape] : generator() % 2 == 0;
        result.words[k / 64] |= std::uint64_t{set} << (k % 64);
    }
    return result;
}

// Elements that often are equal or extreme.
inline VecV random_vector(std::mt19937_64& generator) {
    VecV result;
    const bool small = generator() % 2 == 0;
    for (std::uint8_t& byte : result.bytes)
        byte = static_cast<std::uint8_t>(small ? generator() % 3 - 1 : generator());
    return result;
}

// Lengths in units of 64 bits: none, less than the architecture's least, odd ones, this machine's 16, and the
// greatest that the values have room for.
inline constexpr std::uint32_t some_vector_lengths[] = {0, 1, 2, 3, 5, 8, 9, 16, 17, 24, 31, 32};

template <class Check> void for_random_operands(Check check, int states = 40) {
    for (const std::uint32_t length : some_vector_lengths) {
        for (int state = 0; state < states && !testing::Test::HasFailure(); ++state) {
            SCOPED_TRACE(testing::Message() << "vector length " << length << ", state " << state);
            std::mt19937_64 generator(length * 1000 + static_cast<unsigned>(state));
            primitive_operands values;
            const int bits = static_cast<int>(length) * 8;
            for (PredV* predicate : {&values.pg, &values.pn, &values.pm, &values.context.ffr})
                *predicate = random_predicate(generator, bits);
            values.zn = random_vector(generator);
            values.zm = random_vector(generator);
            values.context.nzcv = static_cast<std::uint32_t>(generator());
            values.context.fpsr = static_cast<std::uint32_t>(generator());
            values.context.fpcr = static_cast<std::uint32_t>(generator());
            values.context.vl = (static_cast<std::uint32_t>(generator()) << 26) | length;
            values.seed = generator();
            check(values);
        }
    }
}

// The elements and the predicate bits below the vector length.
template <class Element> std::vector<Element> elements_of(const VecV& vector, const CpuContext& context) {
    const auto bytes = (context.vl & 63) * std::size_t{8};
    std::vector<Element> result(bytes / sizeof(Element));
    if (bytes > 0)
        std::memcpy(result.data(), vector.bytes, bytes);
    return result;
}
inline std::vector<bool> bits_of(const PredV& predicate, const CpuContext& context) {
    std::vector<bool> result((context.vl & 63) * std::size_t{8});
    for (std::size_t k = 0; k < result.size(); ++k)
        result[k] = predicate.words[k / 64] >> (k % 64) & 1;
    return result;
}

// Whether element i of that size is active.
template <class Element> bool active_at(const std::vector<bool>& predicate, std::size_t i) {
    return predicate[i * sizeof(Element)];
}
