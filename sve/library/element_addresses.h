// Where the elements of a vector load or store stand in memory: functions from an element's index to its
// address. All arithmetic is modulo 2^64, on offsets extended to 64 bits before they are scaled.
#pragma once

#include "sve/decode/library_values.h"

#include <type_traits>

// The lowest bytes of element i that make an Offset, extended to 64 bits by the signedness of that type.
template <class Element, class Offset> inline std::uint64_t extended_offset(const VecV& vector, int i) {
    using Bits = std::make_unsigned_t<Element>;
    const auto offset = static_cast<Offset>(get_element<Bits>(vector, i));
    return static_cast<std::uint64_t>(offset);
}

// Element after element from a start.
struct consecutive {
    std::uint64_t start;
    std::uint64_t step; // bytes of an element in memory

    std::uint64_t operator()(int i) const { return start + static_cast<std::uint64_t>(i) * step; }
};

// A scalar base plus an offset for each element, times the scale.
template <class Element, class Offset> struct base_plus_offsets {
    std::uint64_t base;
    const VecV& offsets;
    std::uint64_t scale;

    std::uint64_t operator()(int i) const {
        return base + extended_offset<Element, Offset>(offsets, i) * scale;
    }
};

// A base for each element, zero-extended, plus one displacement.
template <class Element> struct bases_plus_displacement {
    const VecV& bases;
    std::uint64_t displacement;

    std::uint64_t operator()(int i) const {
        return extended_offset<Element, std::make_unsigned_t<Element>>(bases, i) + displacement;
    }
};
