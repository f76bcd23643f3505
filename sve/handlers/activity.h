// Which elements of a row are active, in two words, for what is done element by element.
#pragma once

#include "sve/handlers/elements.h"

// One bit for each element of a row: bit i of byte k is the predicate bit of byte k of chunk i. Only the
// bytes in which elements begin count.
struct activity {
    std::uint64_t word[2];

    static activity of(const std::uint8_t* predicate) {
        auto bits = load_chunk<std::uint8_t>(predicate, chunks_per_row - 1);
#pragma GCC unroll 8
        for (int i = chunks_per_row - 2; i >= 0; --i)
            bits = above_lowest_bits(bits, load_chunk<std::uint8_t>(predicate, i));
        return {{((chunk<std::uint64_t>)bits)[0], ((chunk<std::uint64_t>)bits)[1]}};
    }

    template <class Element> bool all() const {
        constexpr std::uint64_t lanes = element_lane_bits<Element> * 0xFF;
        return (~(word[0] & word[1]) & lanes) == 0;
    }

    // Whether element k of chunk i is active.
    template <class Element> bool element(int i, int k) const {
        const int bit = width_of<Element> * k;
        // As a sign, of which GCC makes one instruction with the branch.
        return static_cast<std::int64_t>(word[bit / 64] << (63 - bit % 64 - i)) < 0;
    }

    // Calls body(index, whether it is active) for every element, in order: all in one piece.
    template <class Element, class Body> [[gnu::always_inline]] void for_each(Body body) const {
        constexpr int elements_per_chunk = chunk_bytes / static_cast<int>(sizeof(Element));
#pragma GCC unroll 8
        for (int i = 0; i < chunks_per_row; ++i) {
#pragma GCC unroll 4
            for (int k = 0; k < elements_per_chunk; ++k)
                body(i * elements_per_chunk + k, element<Element>(i, k));
        }
    }

    // Bit i says whether all elements of chunk i are active, or any. Above bit 7 nothing counts.
    template <class Element> std::uint64_t full_chunks() const {
        std::uint64_t chunks = word[0] & word[1];
#pragma GCC unroll 3
        for (int distance = 32; distance >= width_of<Element>; distance /= 2)
            chunks &= chunks >> distance;
        return chunks;
    }
    template <class Element> std::uint64_t nonempty_chunks() const {
        std::uint64_t chunks = word[0] | word[1];
#pragma GCC unroll 3
        for (int distance = 32; distance >= width_of<Element>; distance /= 2)
            chunks |= chunks >> distance;
        return chunks;
    }
    // Makes chunk 1 the first, and so on.
    void drop_chunk() {
        word[0] >>= 1;
        word[1] >>= 1;
    }
};
