// The values that library primitives work on: written for any vector length up to 2048 bits, with no
// knowledge of the register file. A primitive takes vectors and predicates by const reference, integers and
// scalars by value and the context last, and returns its result by value.
#pragma once

#include <cstdint>
#include <cstring>

// A vector; element i of E bytes stands at byte i * E. Only the bytes below the vector length carry data.
struct VecV {
    std::uint8_t bytes[256];
};

// A predicate, one bit for each vector byte; element i of E bytes is active when bit i * E is set.
struct PredV {
    std::uint64_t words[4];
};

struct CpuContext {
    std::uint32_t nzcv; // N in bit 31 down to V in bit 28
    std::uint32_t fpsr;
    std::uint32_t fpcr;
    std::uint32_t vl; // vector length in units of 64 bits, in bits 25:0
    PredV ffr;
};

// The vector length in units of 64 bits.
inline int vector_length(const CpuContext* context) { return static_cast<int>(context->vl & 0x3FFFFFF); }

// The number of elements of the type at the context's vector length.
template <class Element> inline int element_count(const CpuContext* context) {
    return vector_length(context) * 8 / static_cast<int>(sizeof(Element));
}

template <class Element> inline Element get_element(const VecV& vector, int index) {
    Element value;
    std::memcpy(&value, vector.bytes + index * sizeof(Element), sizeof(Element));
    return value;
}

template <class Element> inline void set_element(VecV& vector, int index, Element value) {
    std::memcpy(vector.bytes + index * sizeof(Element), &value, sizeof(Element));
}

// Whether the element is active: the lowest bit of its group of sizeof(Element) predicate bits.
template <class Element> inline bool is_active(const PredV& predicate, int index) {
    const unsigned bit = static_cast<unsigned>(index) * sizeof(Element);
    return (predicate.words[bit / 64] >> (bit % 64)) & 1;
}

// Clears the element's group of predicate bits and sets its lowest bit to `value`.
template <class Element> inline void set_predicate_element(PredV& predicate, int index, bool value) {
    const unsigned bit = static_cast<unsigned>(index) * sizeof(Element);
    const std::uint64_t group = ((std::uint64_t{1} << sizeof(Element)) - 1) << (bit % 64);
    std::uint64_t& word = predicate.words[bit / 64];
    word = (word & ~group) | (std::uint64_t{value} << (bit % 64));
}
