// The condition flags of a predicate result that is still in registers.
#pragma once

#include "sve/handlers/elements.h"
#include "sve/handlers/predicate_flags.h"

#include <array>
#include <bit>

// A row of lanes of any width, by chunks.
template <std::size_t count> using chunk_array = std::array<chunk<std::uint64_t>, count>;

template <class Wide> struct half_as_wide;
template <> struct half_as_wide<std::uint16_t> { using type = std::uint8_t; };
template <> struct half_as_wide<std::uint32_t> { using type = std::uint16_t; };
template <> struct half_as_wide<std::uint64_t> { using type = std::uint32_t; };

// Makes lanes half as wide: the low halves of all lanes, in order.
template <class Wide, std::size_t count>
[[gnu::always_inline]] inline chunk_array<count / 2> keep_low_halves(const chunk_array<count>& wide) {
    using narrow = typename half_as_wide<Wide>::type;
    chunk_array<count / 2> result;
#pragma GCC unroll 4
    for (std::size_t i = 0; i < count / 2; ++i) {
        result[i] = (chunk<std::uint64_t>)even_elements(
            (chunk<narrow>)wide[2 * i], (chunk<narrow>)wide[2 * i + 1], chunk_indices<narrow>());
    }
    return result;
}

// Joins the low `bits` bits of each pair of bytes in the lower of the two; no others are set.
template <int bits, std::size_t count>
[[gnu::always_inline]] inline chunk_array<count> join_bytes(chunk_array<count> bytes) {
#pragma GCC unroll 8
    for (chunk<std::uint64_t>& each : bytes)
        each =
            (chunk<std::uint64_t>)((chunk<std::uint16_t>)each + ((chunk<std::uint16_t>)each >> (8 - bits)));
    return bytes;
}

// Packs lanes of which only the low `bits` bits may be set into words, the first in the lowest place of the
// first word. Gaps between the bits of lanes may remain.
template <class Lane, int bits, std::size_t count>
[[gnu::always_inline]] inline auto pack_lanes(const chunk_array<count>& lanes) {
    if constexpr (sizeof(Lane) > 1) {
        return pack_lanes<typename half_as_wide<Lane>::type, bits>(keep_low_halves<Lane>(lanes));
    } else if constexpr (bits == 8) {
        std::array<std::uint64_t, 2 * count> words;
#pragma GCC unroll 4
        for (std::size_t i = 0; i < 2 * count; ++i)
            words[i] = lanes[i / 2][i % 2];
        return words;
    } else if constexpr (count > 1) {
        return pack_lanes<Lane, 2 * bits>(keep_low_halves<std::uint16_t>(join_bytes<bits>(lanes)));
    } else {
        using half_chunk __attribute__((vector_size(chunk_bytes / 2))) = std::uint8_t;
        const auto pairs = (chunk<std::uint16_t>)join_bytes<bits>(lanes)[0];
        return std::array{std::bit_cast<std::uint64_t>(__builtin_convertvector(pairs, half_chunk))};
    }
}

// Sets N, Z, C and V as sve_ptest does, given rows in which only the bits of active elements are set, and of
// those that are active and true.
template <class Element>
[[gnu::always_inline]] inline void write_result_flags(cpu_state* state,
                                                      const chunk_array<chunks_per_row>& active,
                                                      const chunk_array<chunks_per_row>& active_and_true) {
    // Two bits an element: 0 for an inactive, 1 for a false and 2 for a true one.
    chunk_array<chunks_per_row> elements;
#pragma GCC unroll 8
    for (std::size_t i = 0; i < chunks_per_row; ++i)
        elements[i] = active[i] + active_and_true[i];
    const auto words = pack_lanes<std::make_unsigned_t<Element>, 2>(elements);

    // The first and the last word that are not 0.
    constexpr std::size_t count = words.size();
    std::uint64_t first = words[count - 1], last = words[0], any = words[0];
#pragma GCC unroll 4
    for (std::size_t i = 1; i < count; ++i) {
        first = words[count - 1 - i] != 0 ? words[count - 1 - i] : first;
        last = words[i] != 0 ? words[i] : last;
        any |= words[i];
    }
    constexpr std::uint64_t true_bits = 0xAAAAAAAAAAAAAAAA;
    write_predicate_flags(state, (first & -first & true_bits) != 0, (any & true_bits) == 0,
                          std::countl_zero(last | 1) % 2 != 0);
}
