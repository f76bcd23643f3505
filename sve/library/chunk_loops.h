// The shapes of vector primitives whose operation has a form for many elements at once. As in
// element_loops.h, but an operation takes and gives host vectors of 16 bytes. A vector is worked on by 64
// bytes, the part that one word of a predicate governs: what lies above the vector length is read and
// computed too, and has no meaning.
#pragma once

#include "sve/decode/library_values.h"
#include "sve/handlers/elements.h"
#include "sve/handlers/result_flags.h"
#include "sve/library/predicate_words.h"

#include <type_traits>
#include <utility>

inline constexpr int chunks_per_word = 4;

// The low bits of predicate elements in the 16 bits that govern a chunk, one in each lane.
template <class Element, int... i> constexpr chunk<Element> lane_bits(std::integer_sequence<int, i...>) {
    constexpr int bits = sizeof(Element) == 1 ? 8 : 16; // as many as reach the lane
    return chunk<Element>{static_cast<Element>(1 << i * static_cast<int>(sizeof(Element)) % bits)...};
}

// All bits set in each lane of a word's chunk k whose predicate element is active.
template <class Element, int k> inline chunk<Element> active_lanes_of_word(std::uint64_t word) {
    using Bits = std::make_unsigned_t<Element>;
    const chunk<std::uint64_t> words = {word, word};
    chunk<Bits> spread;
    if constexpr (sizeof(Element) == 1) {
        constexpr int a = 2 * k, b = 2 * k + 1;
        const auto bytes = (chunk<std::uint8_t>)words;
        spread = __builtin_shufflevector(bytes, bytes, a, a, a, a, a, a, a, a, b, b, b, b, b, b, b, b);
    } else {
        const auto halfwords = (chunk<std::uint16_t>)words;
        spread = (chunk<Bits>)__builtin_shufflevector(halfwords, halfwords, k, k, k, k, k, k, k, k);
    }
    return (chunk<Element>)((spread & lane_bits<Bits>(chunk_indices<Element>())) != 0);
}

// Calls body(w, constant k) for chunk 4 * w + k of a vector, for all of them.
template <class Body> [[gnu::always_inline]] inline void visit_chunks(const CpuContext* context, Body body) {
    const int words = word_count(context);
    for (int w = 0; w < words; ++w)
        [&]<int... k>(std::integer_sequence<int, k...>) { (body(w, std::integral_constant<int, k>()), ...); }
    (std::make_integer_sequence<int, chunks_per_word>());
}

template <class Element> inline chunk<Element> get_chunk(const VecV& vector, int index) {
    return load_chunk<Element>(vector.bytes, index);
}

// result = operation(i), i being the number of a chunk.
template <class Element, class Operation>
inline VecV for_each_chunk(const CpuContext* context, Operation operation) {
    VecV result;
    visit_chunks(context, [&](int w, auto k) {
        const auto value = (chunk<Element>)operation(chunks_per_word * w + k);
        std::memcpy(result.bytes + (chunks_per_word * w + k) * chunk_bytes, &value, chunk_bytes);
    });
    return result;
}

// result = operation(zn), chunk by chunk.
template <class Element, class Operation>
inline VecV map_chunks(const VecV& zn, const CpuContext* context, Operation operation) {
    return for_each_chunk<Element>(context, [&](int i) { return operation(get_chunk<Element>(zn, i)); });
}

// result = operation(zn, zm), chunk by chunk.
template <class Element, class Operation>
inline VecV map_chunks(const VecV& zn, const VecV& zm, const CpuContext* context, Operation operation) {
    return for_each_chunk<Element>(
        context, [&](int i) { return operation(get_chunk<Element>(zn, i), get_chunk<Element>(zm, i)); });
}

// result = operation(i) where the predicate is active, old elsewhere.
template <class Element, class Operation>
inline VecV merge_each_chunk(const VecV& old, const PredV& pg, const CpuContext* context,
                             Operation operation) {
    VecV result;
    visit_chunks(context, [&](int w, auto k) {
        const int i = chunks_per_word * w + k;
        const chunk<Element> value = blend<Element>(active_lanes_of_word<Element, k>(pg.words[w]),
                                                    (chunk<Element>)operation(i), get_chunk<Element>(old, i));
        std::memcpy(result.bytes + i * chunk_bytes, &value, chunk_bytes);
    });
    return result;
}

// result = operation(zn) where the predicate is active, old elsewhere.
template <class Element, class Operation>
inline VecV merge_chunks(const VecV& old, const PredV& pg, const VecV& zn, const CpuContext* context,
                         Operation operation) {
    return merge_each_chunk<Element>(old, pg, context,
                                     [&](int i) { return operation(get_chunk<Element>(zn, i)); });
}

// result = operation(zdn, zm) where the predicate is active, zdn elsewhere.
template <class Element, class Operation>
inline VecV merge_two_chunks(const VecV& zdn, const PredV& pg, const VecV& zm, const CpuContext* context,
                             Operation operation) {
    return merge_each_chunk<Element>(zdn, pg, context, [&](int i) {
        return operation(get_chunk<Element>(zdn, i), get_chunk<Element>(zm, i));
    });
}

// The predicate whose elements are active where pg is and holds_at(i) has all bits of the lane set, not none.
// Every other bit of it is clear.
template <class Element, class Test>
inline PredV test_chunks(const PredV& pg, const CpuContext* context, Test holds_at) {
    PredV result = {};
    const int words = word_count(context);
    for (int w = 0; w < words; ++w) {
        chunk_array<chunks_per_word> lanes;
#pragma GCC unroll 4
        for (int k = 0; k < chunks_per_word; ++k)
            lanes[k] = (chunk<std::uint64_t>)((chunk<Element>)holds_at(chunks_per_word * w + k) & 1);
        result.words[w] =
            pack_lanes<std::uint8_t, 1>(lanes) & pg.words[w] & bits_below(predicate_length(context), w);
    }
    return result;
}
