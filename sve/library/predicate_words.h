// Predicates by whole 64-bit words: an element's bits never straddle two words, so that what is done to one
// element can be done to all elements of a word at once.
#pragma once

#include "sve/decode/library_values.h"

inline constexpr int words_per_predicate = 4;

// The lowest bit of each group of 1, 2, 4, 8 or 16 bits.
constexpr std::uint64_t lowest_bits_of_groups(int group) {
    return ~std::uint64_t{0} / ((std::uint64_t{1} << group) - 1);
}

// Those bits of a predicate's word that are among the predicate's first `bit_count` bits.
constexpr std::uint64_t bits_below(int bit_count, int word) {
    const int bits = bit_count - 64 * word;
    return bits >= 64 ? ~std::uint64_t{0} : bits <= 0 ? 0 : (std::uint64_t{1} << bits) - 1;
}

// The number of predicate bits, one for each vector byte.
inline int predicate_length(const CpuContext* context) { return vector_length(context) * 8; }

// The number of a predicate's words that hold the elements below the vector length.
inline int word_count(const CpuContext* context) { return (predicate_length(context) + 63) / 64; }

// The bits of a predicate's word that stand for active elements among the predicate's first `length` bits.
template <class Element> inline std::uint64_t active_bits(const PredV& pg, int word, int length) {
    return pg.words[word] & lowest_bits_of_groups(sizeof(Element)) & bits_below(length, word);
}

// The predicate whose words `word_at(0)` to `word_at(3)` gives, with all bits from `bit_count` up cleared.
template <class WordAt> inline PredV predicate_of_words(int bit_count, WordAt word_at) {
    PredV result = {};
    for (int w = 0; 64 * w < bit_count; ++w)
        result.words[w] = word_at(w) & bits_below(bit_count, w);
    return result;
}

// The predicate whose first `count` elements are true.
template <class Element> inline PredV leading_elements(int count) {
    return predicate_of_words(count * static_cast<int>(sizeof(Element)),
                              [](int) { return lowest_bits_of_groups(sizeof(Element)); });
}
