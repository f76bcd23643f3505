// Where the first and the last true elements of a predicate are. Predicates are given as a function from a
// byte offset, a multiple of 8, to the eight predicate bytes there; combinations of rows are thus searched at
// once.
#pragma once

#include "sve/handlers/elements.h"

#include <bit>

// The eight bytes of a row at the offset.
inline std::uint64_t predicate_word(const std::uint8_t* row_bytes, int offset) {
    std::uint64_t bytes;
    std::memcpy(&bytes, row_bytes + offset, sizeof bytes);
    return bytes;
}

// The byte offset of the first true element, or vector_bytes if none is. Most predicates are true at the
// start if anywhere, so that one step finds it.
template <class Element, class Words> inline int first_true(Words words) {
    int offset = 0;
    std::uint64_t lanes;
    while ((lanes = words(offset) & element_lane_bits<Element>) == 0) {
        offset += 8;
        if (offset == vector_bytes)
            return vector_bytes;
    }
    return offset + std::countr_zero(lanes) / 8;
}

// The byte offset of the last true element, or -1 if none is.
template <class Element, class Words> inline int last_true(Words words) {
    int offset = vector_bytes - 8;
    std::uint64_t lanes;
    while ((lanes = words(offset) & element_lane_bits<Element>) == 0) {
        offset -= 8;
        if (offset < 0)
            return -1;
    }
    return offset + 7 - std::countl_zero(lanes) / 8;
}
