// The vocabulary in which handlers are written: a register row as eight 16-byte host vectors, the predicate
// of a row as lane masks, and the dispatch from an element-size code to an element type.
//
// Everything here is data-parallel and without branches: a handler loads whole rows, computes all lanes,
// blends by the mask, and stores the whole result at the end, which makes every aliasing of its operands
// correct.
#pragma once

#include "sve/decode/cpu_state.h"
#include "sve/decode/integer_types.h"

#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

#if defined(__aarch64__)
#include <arm_neon.h>
#endif

inline constexpr int chunk_bytes = 16;
inline constexpr int chunks_per_row = vector_bytes / chunk_bytes;

// A host vector of 16 bytes holding elements of the given type.
template <class Element> using chunk __attribute__((vector_size(chunk_bytes))) = Element;

// The same where it stands in memory, at any address. Rows are accessed through this type and not by memcpy,
// because only then does GCC join neighbouring accesses into pairs.
// The type is a member of a class, since Clang forgets the alignment of a template alias.
template <class Element> struct unaligned_chunk_of {
    using type __attribute__((aligned(1), may_alias)) = chunk<Element>;
};
template <class Element> using unaligned_chunk = typename unaligned_chunk_of<Element>::type;

// The same value, of which the compiler knows nothing: it then neither joins what is computed from it with
// anything computed before, nor moves it there.
template <class Pointer> [[gnu::always_inline]] inline Pointer* opaque(Pointer* pointer) {
    asm("" : "+r"(pointer));
    return pointer;
}
template <class Vector> [[gnu::always_inline]] inline Vector opaque(Vector value) {
#if defined(__aarch64__)
    asm("" : "+w"(value));
#endif
    return value;
}

// The row of a Z or P register. Of its address the compiler knows so little that loads which are common to
// the element sizes stay behind the dispatch, where they pair; the last addition is left to the loads.
inline std::uint8_t* vector_row(cpu_state* state, int reg) {
    return opaque(reinterpret_cast<std::uint8_t*>(state) + reg * vector_bytes) + offsetof(cpu_state, z);
}
inline std::uint8_t* predicate_row(cpu_state* state, int reg) {
    constexpr std::size_t from_z = offsetof(cpu_state, p) - offsetof(cpu_state, z);
    std::uint8_t* const shifted = opaque(reinterpret_cast<std::uint8_t*>(state) + from_z);
    return opaque(shifted + reg * vector_bytes) + offsetof(cpu_state, z);
}

template <class Element>
inline constexpr int elements_per_row = vector_bytes / static_cast<int>(sizeof(Element));

// Chunk `index` of a register or predicate row. Rows are read and written a chunk at a time, never as one
// copy of 128 bytes, so that the compiler keeps them in vector registers.
template <class Element> inline chunk<Element> load_chunk(const std::uint8_t* row_bytes, int index) {
    return *reinterpret_cast<const unaligned_chunk<Element>*>(row_bytes + index * chunk_bytes);
}

template <class Element> inline void store_chunk(std::uint8_t* row_bytes, int index, chunk<Element> value) {
    *reinterpret_cast<unaligned_chunk<Element>*>(row_bytes + index * chunk_bytes) = value;
}

// A row computed but not yet stored.
template <class Element> struct row { chunk<Element> part[chunks_per_row]; };

template <class Element> inline void store_row(std::uint8_t* row_bytes, const row<Element>& value) {
#pragma GCC unroll 8
    for (int i = 0; i < chunks_per_row; ++i)
        store_chunk<Element>(row_bytes, i, value.part[i]);
}

// Computes every chunk of a row from its index, and only then stores the row: `body` may read any register.
template <class Element, class Body>
inline aarch64_decode_rc compute_row(std::uint8_t* destination, Body body) {
    row<Element> result;
#pragma GCC unroll 8
    for (int i = 0; i < chunks_per_row; ++i)
        result.part[i] = body(i);
    store_row(destination, result);
    return aarch64_emulated;
}

// The same for a body that reads, for a chunk, no other chunk of any register. Pairs of chunks are stored as
// they come, so that no more than those have to be kept in registers.
template <class Element, class Body>
[[gnu::always_inline]] inline aarch64_decode_rc compute_lanes(std::uint8_t* destination, Body body) {
#pragma GCC unroll 4
    for (int i = 0; i < chunks_per_row; i += 2) {
        const chunk<Element> even = body(i);
        const chunk<Element> odd = body(i + 1);
        store_chunk<Element>(destination, i, even);
        store_chunk<Element>(destination, i + 1, odd);
        asm("" ::: "memory"); // loads that move up over the stores lose their partner
    }
    return aarch64_emulated;
}

// Makes the lowest doubleword of a row the value and all others 0.
inline aarch64_decode_rc store_scalar(std::uint8_t* destination, std::uint64_t value) {
    return compute_row<std::uint64_t>(destination, [value](int i) {
        return chunk<std::uint64_t>{i == 0 ? value : 0, 0};
    });
}

// All bits set in each lane whose predicate element is active: the low bit of the lane read as one
// little-endian unit.
template <class Element> inline chunk<Element> active_lanes(const std::uint8_t* predicate, int index) {
    using lane = std::make_unsigned_t<Element>; // one instruction less than with signed lanes
    const chunk<lane> lanes = load_chunk<lane>(predicate, index);
    return opaque((chunk<Element>)((lanes & 1) != 0)); // or blends are taken apart
}

// The low bit of each element's predicate lane, in 64 bits of a predicate row.
template <class Element>
inline constexpr std::uint64_t element_lane_bits = sizeof(Element) == 1   ? 0x0101010101010101
                                                   : sizeof(Element) == 2 ? 0x0001000100010001
                                                   : sizeof(Element) == 4 ? 0x0000000100000001
                                                                          : 1;

// Whether all elements of a row are active.
template <class Element> bool all_active(const std::uint8_t* predicate) {
    chunk<std::uint64_t> both = load_chunk<std::uint64_t>(predicate, 0);
#pragma GCC unroll 8
    for (int i = 1; i < chunks_per_row; ++i)
        both &= load_chunk<std::uint64_t>(predicate, i);
    return (~(both[0] & both[1]) & element_lane_bits<Element>) == 0;
}

// The low 7 bits of each byte of the first chunk above the lowest bits of the second.
inline chunk<std::uint8_t> above_lowest_bits(chunk<std::uint8_t> high, chunk<std::uint8_t> low) {
#if defined(__aarch64__)
    return (chunk<std::uint8_t>)vsliq_n_u8((uint8x16_t)low, (uint8x16_t)high, 1);
#else
    return high << 1 | (low & 1);
#endif
}

// `active` where the mask's bits are set, `inactive` elsewhere.
template <class Element>
inline chunk<Element> blend(chunk<Element> mask, chunk<Element> active, chunk<Element> inactive) {
    return (mask & active) | (~mask & inactive);
}

// 0 and so on, one for each element of a chunk.
template <class Element>
using chunk_indices = std::make_integer_sequence<int, chunk_bytes / static_cast<int>(sizeof(Element))>;

// The elements of the low (half = 0) or high (half = 1) half of two chunks, alternately.
template <int half, class Vector, int... i>
inline Vector interleave(Vector even, Vector odd, std::integer_sequence<int, i...>) {
    constexpr int count = sizeof...(i);
    return __builtin_shufflevector(even, odd, ((half * count + i) / 2 + i % 2 * count)...);
}

// The elements of even index of two consecutive chunks.
template <class Vector, int... i>
inline Vector even_elements(Vector low, Vector high, std::integer_sequence<int, i...>) {
    return __builtin_shufflevector(low, high, (2 * i)...);
}

// The elements of a chunk in reverse order.
template <class Vector, int... i>
inline Vector reverse_elements(Vector value, std::integer_sequence<int, i...>) {
    return __builtin_shufflevector(value, value, (static_cast<int>(sizeof...(i)) - 1 - i)...);
}

// The value in every lane.
template <class Element> inline chunk<Element> broadcast(Element value) { return chunk<Element>{} + value; }

// One element of a row, for the few operations that have no data-parallel form.
template <class Element> inline Element load_element(const std::uint8_t* row_bytes, int index) {
    Element value;
    std::memcpy(&value, row_bytes + index * sizeof(Element), sizeof(Element));
    return value;
}

template <class Element> inline void store_element(std::uint8_t* row_bytes, int index, Element value) {
    std::memcpy(row_bytes + index * sizeof(Element), &value, sizeof(Element));
}

// Calls `body` with a value of the element type that an element-size code selects. Codes are tested in the
// order word, doubleword, halfword; anything else is bytes. Always inlined, because the captures of `body`
// would have to go through memory otherwise.
template <class Byte, class Halfword, class Word, class Doubleword, class Body>
[[gnu::always_inline]] inline aarch64_decode_rc dispatch_elements(int size_code, Body body) {
    switch (size_code) {
    case word_elements:
        return body(Word{});
    case doubleword_elements:
        return body(Doubleword{});
    case halfword_elements:
        return body(Halfword{});
    default:
        return body(Byte{});
    }
}
template <class Body>
[[gnu::always_inline]] inline aarch64_decode_rc dispatch_unsigned(int size_code, Body body) {
    return dispatch_elements<std::uint8_t, std::uint16_t, std::uint32_t, std::uint64_t>(size_code, body);
}
template <class Body>
[[gnu::always_inline]] inline aarch64_decode_rc dispatch_signed(int size_code, Body body) {
    return dispatch_elements<std::int8_t, std::int16_t, std::int32_t, std::int64_t>(size_code, body);
}

// zd = pg ? operation(zn) : zd, lane by lane; `operation` works on whole chunks.
template <class Element, auto operation>
inline aarch64_decode_rc merge_unary(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn) {
    std::uint8_t* const row_bytes = vector_row(state, zd.reg);
    const std::uint8_t* const predicate = predicate_row(state, pg.reg);
    const std::uint8_t* const source = vector_row(state, zn.reg);
    return compute_lanes<Element>(row_bytes, [&](int i) {
        return blend<Element>(active_lanes<Element>(predicate, i), operation(load_chunk<Element>(source, i)),
                              load_chunk<Element>(row_bytes, i));
    });
}

// zdn = pg ? operation(zdn, zm) : zdn.
template <class Element, class Operation>
inline aarch64_decode_rc merge_binary(cpu_state* state, aarch64_z_reg destination, aarch64_p_reg governing,
                                      aarch64_z_reg source, Operation operation) {
    std::uint8_t* const zdn = vector_row(state, destination.reg);
    const std::uint8_t* const pg = predicate_row(state, governing.reg);
    const std::uint8_t* const zm = vector_row(state, source.reg);
    return compute_lanes<Element>(zdn, [&](int i) {
        const chunk<Element> a = load_chunk<Element>(zdn, i);
        const chunk<Element> b = load_chunk<Element>(zm, i);
        return blend<Element>(active_lanes<Element>(pg, i), operation(a, b), a);
    });
}
