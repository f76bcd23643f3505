#include "sve/handlers/permutes.h"

#include "sve/handlers/elements.h"
#include "sve/handlers/handler_definitions.h"

#include <bit>

namespace {

constexpr int half_chunks = chunks_per_row / 2;

const std::uint8_t* bytes_of(const char* row_bytes) {
    return reinterpret_cast<const std::uint8_t*>(row_bytes);
}
std::uint8_t* bytes_of(char* row_bytes) { return reinterpret_cast<std::uint8_t*>(row_bytes); }
char* chars_of(std::uint8_t* row_bytes) { return reinterpret_cast<char*>(row_bytes); }

// Chunk `i` of the elements of two chunks, alternately.
template <class Element> chunk<Element> interleave_half(int i, chunk<Element> even, chunk<Element> odd) {
    return i % 2 == 0 ? interleave<0>(even, odd, chunk_indices<Element>())
                      : interleave<1>(even, odd, chunk_indices<Element>());
}

// Zips the halves of two rows that begin at chunk `start`.
aarch64_decode_rc zip_rows(std::uint8_t* destination, const std::uint8_t* first, const std::uint8_t* second,
                           int size_code, int start) {
    return dispatch_unsigned(size_code, [&](auto zero) {
        using element = decltype(zero);
        return compute_row<element>(destination, [&](int i) {
            return interleave_half<element>(i, load_chunk<element>(first, start + i / 2),
                                            load_chunk<element>(second, start + i / 2));
        });
    });
}

// `permute` is one of the functions on rows that predicates share.
template <auto permute>
aarch64_decode_rc permute_rows(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    permute(chars_of(state->z[zd.reg]), chars_of(state->z[zn.reg]), chars_of(state->z[zm.reg]), zd.kind);
    return aarch64_emulated;
}

// The elements of odd index of two consecutive chunks.
template <class Vector, int... i>
Vector odd_elements(Vector low, Vector high, std::integer_sequence<int, i...>) {
    return __builtin_shufflevector(low, high, (2 * i + 1)...);
}

// The elements of odd index of two chunks, alternately.
template <class Vector, int... i>
Vector transpose_odd(Vector even, Vector odd, std::integer_sequence<int, i...>) {
    constexpr int count = sizeof...(i);
    return __builtin_shufflevector(even, odd, ((i | 1) + i % 2 * count)...);
}

// Unzips two rows put end to end; `select` makes one chunk of two.
template <class Select>
aarch64_decode_rc unzip_rows(std::uint8_t* destination, const std::uint8_t* first, const std::uint8_t* second,
                             int size_code, Select select) {
    return dispatch_unsigned(size_code, [&](auto zero) {
        using element = decltype(zero);
        return compute_row<element>(destination, [&](int i) {
            const std::uint8_t* source = i < half_chunks ? first : second;
            const int start = i % half_chunks * 2;
            return select(load_chunk<element>(source, start), load_chunk<element>(source, start + 1),
                          chunk_indices<element>());
        });
    });
}

constexpr auto select_even = [](auto low, auto high, auto indices) {
    return even_elements(low, high, indices);
};
constexpr auto select_odd = [](auto low, auto high, auto indices) {
    return odd_elements(low, high, indices);
};

// Widens the elements of half a row by the signedness of their type.
template <class Narrow> aarch64_decode_rc unpack_row(std::uint8_t* destination, const std::uint8_t* source) {
    using Wide = twice_as_wide<Narrow>;
    return compute_row<Wide>(destination, [source](int i) {
        // The element becomes the upper half of the wider one, and is shifted down with its sign or zeros.
        const chunk<Narrow> elements = load_chunk<Narrow>(source, i / 2);
        return (chunk<Wide>)interleave_half<Narrow>(i, chunk<Narrow>{}, elements) >>
               static_cast<int>(sizeof(Narrow) * 8);
    });
}

template <class Narrow> aarch64_decode_rc unpack_low(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn) {
    return unpack_row<Narrow>(state->z[zd.reg], state->z[zn.reg]);
}
template <class Narrow> aarch64_decode_rc unpack_high(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn) {
    return unpack_row<Narrow>(state->z[zd.reg], state->z[zn.reg] + vector_bytes / 2);
}

#if defined(__aarch64__)

// The places in the row of the bytes of the elements that a chunk of indices names; 128 or above if there is
// no such element.
template <class Element> uint8x16_t places_of_bytes(chunk<Element> indices) {
    constexpr int size = sizeof(Element);
    constexpr Element count = elements_per_row<Element>;
    if constexpr (size == 1) {
        return (uint8x16_t)indices;
    } else {
        const chunk<Element> first = (indices < count ? indices : broadcast(count))
                                     << std::countr_zero(sizeof(Element));
        return [&]<int... byte>(std::integer_sequence<int, byte...>) {
            constexpr chunk<std::uint8_t> offsets = {(byte % size)...};
            const auto bytes = (chunk<std::uint8_t>)first;
            return (uint8x16_t)(__builtin_shufflevector(bytes, bytes, (byte / size * size)...) + offsets);
        }
        (chunk_indices<std::uint8_t>());
    }
}

uint8x16x4_t load_half_row(const std::uint8_t* row_bytes, int half) {
    const std::uint8_t* const start = row_bytes + half * vector_bytes / 2;
    return {vld1q_u8(start), vld1q_u8(start + chunk_bytes), vld1q_u8(start + 2 * chunk_bytes),
            vld1q_u8(start + 3 * chunk_bytes)};
}

template <class Element>
aarch64_decode_rc look_up(std::uint8_t* destination, const std::uint8_t* table, const std::uint8_t* indices) {
    const uint8x16x4_t low = load_half_row(table, 0), high = load_half_row(table, 1);
    return compute_lanes<Element>(destination, [low, high, indices](int i) {
        const uint8x16_t places = places_of_bytes<Element>(load_chunk<Element>(indices, i));
        const uint8x16_t from_low = vqtbl4q_u8(low, places); // 0 for places beyond
        return (chunk<Element>)vqtbx4q_u8(from_low, high, vsubq_u8(places, vdupq_n_u8(vector_bytes / 2)));
    });
}

#else

template <class Element>
aarch64_decode_rc look_up(std::uint8_t* destination, const std::uint8_t* table, const std::uint8_t* indices) {
    constexpr Element count = elements_per_row<Element>;
    Element result[elements_per_row<Element>];
    for (int i = 0; i < elements_per_row<Element>; ++i) {
        const auto index = load_element<Element>(indices, i);
        const auto inside = load_element<Element>(table, static_cast<int>(index % count));
        result[i] = index < count ? inside : Element{0};
    }
    std::memcpy(destination, result, vector_bytes);
    return aarch64_emulated;
}

#endif

} // namespace

void sve_zip1(char* destination, const char* first, const char* second, int element_size) {
    zip_rows(bytes_of(destination), bytes_of(first), bytes_of(second), element_size, 0);
}
void sve_zip2(char* destination, const char* first, const char* second, int element_size) {
    zip_rows(bytes_of(destination), bytes_of(first), bytes_of(second), element_size, half_chunks);
}
void sve_uzp1(char* destination, const char* first, const char* second, int element_size) {
    unzip_rows(bytes_of(destination), bytes_of(first), bytes_of(second), element_size, select_even);
}

VECTOR_HANDLER(sve_zip1_zzz, permute_rows<sve_zip1>)
VECTOR_HANDLER(sve_zip2_zzz, permute_rows<sve_zip2>)
VECTOR_HANDLER(sve_uzp1_zzz, permute_rows<sve_uzp1>)

aarch64_decode_rc sve_uzp2_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    return unzip_rows(state->z[zd.reg], state->z[zn.reg], state->z[zm.reg], zd.kind, select_odd);
}

aarch64_decode_rc sve_trn2_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    return dispatch_unsigned(zd.kind, [&](auto zero) {
        using element = decltype(zero);
        return compute_row<element>(state->z[zd.reg], [&](int i) {
            return transpose_odd(load_chunk<element>(state->z[zn.reg], i),
                                 load_chunk<element>(state->z[zm.reg], i), chunk_indices<element>());
        });
    });
}

aarch64_decode_rc sve_tbl_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    return dispatch_unsigned(zd.kind, [&](auto zero) {
        return look_up<decltype(zero)>(state->z[zd.reg], state->z[zn.reg], state->z[zm.reg]);
    });
}

aarch64_decode_rc sve_rev_zz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn) {
    return dispatch_unsigned(zd.kind, [&](auto zero) {
        using element = decltype(zero);
        return compute_row<element>(state->z[zd.reg], [&](int i) {
            return reverse_elements(load_chunk<element>(state->z[zn.reg], chunks_per_row - 1 - i),
                                    chunk_indices<element>());
        });
    });
}

// A handler a line. Macros, since only they can make the names.
#define UNPACK(name, ...)                                                                                    \
    aarch64_decode_rc name(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn) {                           \
        return __VA_ARGS__(state, zd, zn);                                                                   \
    }

UNPACK(sve_sunpklo_s2d_zz, unpack_low<std::int32_t>)
UNPACK(sve_sunpkhi_s2d_zz, unpack_high<std::int32_t>)
UNPACK(sve_uunpklo_b2h_zz, unpack_low<std::uint8_t>)
UNPACK(sve_uunpklo_h2s_zz, unpack_low<std::uint16_t>)
UNPACK(sve_uunpklo_s2d_zz, unpack_low<std::uint32_t>)
UNPACK(sve_uunpkhi_b2h_zz, unpack_high<std::uint8_t>)
UNPACK(sve_uunpkhi_h2s_zz, unpack_high<std::uint16_t>)
UNPACK(sve_uunpkhi_s2d_zz, unpack_high<std::uint32_t>)
#undef UNPACK

aarch64_decode_rc sve_ext_zzi(cpu_state* state, aarch64_z_reg zdn, aarch64_z_reg zm, unsigned int position) {
    std::uint8_t joined[2 * vector_bytes];
    std::memcpy(joined, state->z[zdn.reg], vector_bytes);
    std::memcpy(joined + vector_bytes, state->z[zm.reg], vector_bytes);
    std::memcpy(state->z[zdn.reg], joined + (position < vector_bytes ? position : 0), vector_bytes);
    return aarch64_emulated;
}
