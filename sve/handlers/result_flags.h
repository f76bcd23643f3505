// The condition flags of a predicate result that is still in registers.
#pragma once

#include "sve/handlers/elements.h"
#include "sve/handlers/predicate_flags.h"

#include <array>
#include <bit>

// A row of lanes of any width, by chunks.
template <std::size_t count> using chunk_array = std::array<chunk<std::uint64_t>, count>;

// Makes lanes half as wide: the low halves of all lanes, in order.
template <class Wide, std::size_t count>
[[gnu::always_inline]] inline chunk_array<count / 2> keep_low_halves(const chunk_array<count>& wide) {
    using narrow = half_as_wide<Wide>;
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

// Packs lanes of which only the low `bits` bits may be set into as few chunks as they fill, or into one word
// if that is enough, the first in the lowest place. Gaps between the bits of lanes may remain.
template <class Lane, int bits, std::size_t count>
[[gnu::always_inline]] inline auto pack_lanes(const chunk_array<count>& lanes) {
    if constexpr (sizeof(Lane) > 1) {
        return pack_lanes<half_as_wide<Lane>, bits>(keep_low_halves<Lane>(lanes));
    } else if constexpr (bits == 8) {
        return lanes;
    } else if constexpr (count > 1) {
        return pack_lanes<Lane, 2 * bits>(keep_low_halves<std::uint16_t>(join_bytes<bits>(lanes)));
    } else {
        using half_chunk __attribute__((vector_size(chunk_bytes / 2))) = std::uint8_t;
        const auto pairs = (chunk<std::uint16_t>)join_bytes<bits>(lanes)[0];
        return std::bit_cast<std::uint64_t>(__builtin_convertvector(pairs, half_chunk));
    }
}

// The first and the last word of a packed row that are not 0, or 0, and all words or-ed together.
struct word_summary {
    std::uint64_t first;
    std::uint64_t last;
    std::uint64_t any;
};
inline word_summary summarise(std::uint64_t word) { return {word, word, word}; }
inline word_summary summarise(const chunk_array<1>& packed) {
    const std::uint64_t low = packed[0][0], high = packed[0][1];
    return {low != 0 ? low : high, high != 0 ? high : low, low | high};
}
// The words' order is by columns.
inline word_summary summarise(const chunk_array<2>& packed) {
    const chunk<std::uint64_t> even = packed[0], odd = packed[1];
    const chunk<std::uint64_t> first = even != 0 ? even : odd;
    const chunk<std::uint64_t> last = odd != 0 ? odd : even;
    const chunk<std::uint64_t> any = even | odd;
    return {first[0] != 0 ? first[0] : first[1], last[1] != 0 ? last[1] : last[0], any[0] | any[1]};
}

// Sets N, Z, C and V as sve_ptest does, given rows in which only the bits of active elements are set, and of
// those that are active and true.
template <class Element>
[[gnu::always_inline]] inline void write_result_flags(cpu_state* state,
                                                      const chunk_array<chunks_per_row>& active,
                                                      const chunk_array<chunks_per_row>& active_and_true) {
    // Two bits an element: 0 for an inactive, 1 for a false and 2 for a true one. Bytes fill two chunks with
    // them, whose words are in order by columns if the chunks come so.
    constexpr std::size_t by_columns[] = {0, 1, 4, 5, 2, 3, 6, 7};
    chunk_array<chunks_per_row> elements;
#pragma GCC unroll 8
    for (std::size_t i = 0; i < chunks_per_row; ++i) {
        const std::size_t k = sizeof(Element) == 1 ? by_columns[i] : i;
        elements[i] = active[k] + active_and_true[k];
    }
    const auto [first, last, any] = summarise(pack_lanes<std::make_unsigned_t<Element>, 2>(elements));

    constexpr std::uint64_t true_bits = 0xAAAAAAAAAAAAAAAA;
    write_predicate_flags(state, (first & -first & true_bits) != 0, (any & true_bits) == 0,
                          (last & true_bits) <= (last & ~true_bits));
}
