#include "sve/handlers/structured_memory.h"

#include "sve/handlers/memory_access.h"

#include <utility>

namespace {

template <class Element, int registers> struct structured {
    static constexpr int elements_per_chunk = chunk_bytes / static_cast<int>(sizeof(Element));
    static constexpr int record_bytes = registers * static_cast<int>(sizeof(Element));
    static constexpr int chunk_in_memory = registers * chunk_bytes;
    static constexpr int all_in_memory = registers * vector_bytes;

    static aarch64_decode_rc load(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                  std::uint64_t address) {
        const register_group group(state, zt);
        const std::uint8_t* const predicate = state->p[pg.reg];
        if (within_one_page<all_in_memory>(address) && all_active<Element>(predicate)) {
            load_whole<elements_per_row<Element>>(group, 0, address);
            return aarch64_emulated;
        }
        for (int i = 0; i < chunks_per_row; ++i, address += chunk_in_memory) {
            const activity active = activity_of<Element>(load_chunk<std::uint64_t>(predicate, i));
            if (active == activity::none) {
                for (std::uint8_t* const row : group.row)
                    std::memset(row + i * chunk_bytes, 0, chunk_bytes);
            } else if (active == activity::all && within_one_page<chunk_in_memory>(address)) {
                load_whole<elements_per_chunk>(group, i * chunk_bytes, address);
            } else {
                load_active(group, i * elements_per_chunk, predicate, address);
            }
            complete_before_fault();
        }
        return aarch64_emulated;
    }

    static aarch64_decode_rc store(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                   std::uint64_t address) {
        const register_group group(state, zt);
        const std::uint8_t* const predicate = state->p[pg.reg];
        if (within_one_page<all_in_memory>(address) && all_active<Element>(predicate)) {
            store_whole<elements_per_row<Element>>(group, 0, address);
            return aarch64_emulated;
        }
        for (int i = 0; i < chunks_per_row; ++i, address += chunk_in_memory) {
            const activity active = activity_of<Element>(load_chunk<std::uint64_t>(predicate, i));
            if (active == activity::none)
                continue;
            if (active == activity::all && within_one_page<chunk_in_memory>(address))
                store_whole<elements_per_chunk>(group, i * chunk_bytes, address);
            else
                store_active(group, i * elements_per_chunk, predicate, address);
            complete_before_fault();
        }
        return aarch64_emulated;
    }

private:
    struct register_group {
        std::uint8_t* row[registers];

        register_group(cpu_state* state, aarch64_z_reg zt) {
            for (int k = 0; k < registers; ++k)
                row[k] = state->z[(zt.reg + k) & 31];
        }
    };

    using every_register = std::make_integer_sequence<int, registers>;

    // An element at any alignment.
    using unaligned __attribute__((aligned(1), may_alias)) = Element;

    // Transfers of all of so many records, from an offset in the rows. Plain loops over what is known not to
    // overlap, since the compiler makes the host's own structured loads and stores of them.
    template <int elements>
    static void load_whole(const register_group& group, int offset, std::uint64_t address) {
        [&]<int... k>(std::integer_sequence<int, k...>) {
            load_records<elements>(reinterpret_cast<const std::uint8_t*>(address), group.row[k] + offset...);
        }
        (every_register());
    }
    template <int elements, class... Byte>
    static void load_records(const std::uint8_t* __restrict memory, Byte* __restrict... row) {
        for (int i = 0; i < elements; ++i) {
            int k = i * registers;
            ((reinterpret_cast<unaligned*>(row)[i] = reinterpret_cast<const unaligned*>(memory)[k++]), ...);
        }
    }

    template <int elements>
    static void store_whole(const register_group& group, int offset, std::uint64_t address) {
        [&]<int... k>(std::integer_sequence<int, k...>) {
            store_records<elements>(reinterpret_cast<std::uint8_t*>(address), group.row[k] + offset...);
        }
        (every_register());
    }
    template <int elements, class... Byte>
    static void store_records(std::uint8_t* __restrict memory, const Byte* __restrict... row) {
        for (int i = 0; i < elements; ++i) {
            int k = i * registers;
            ((reinterpret_cast<unaligned*>(memory)[k++] = reinterpret_cast<const unaligned*>(row)[i]), ...);
        }
    }

    // One chunk, element by element.
    static void load_active(const register_group& group, int first, const std::uint8_t* predicate,
                            std::uint64_t address) {
        for (int i = first; i < first + elements_per_chunk; ++i) {
            const bool active = element_active<Element>(predicate, i);
#pragma GCC unroll 4
            for (int k = 0; k < registers; ++k, address += sizeof(Element)) {
                const Element value = active ? program_access<Element>::read(address) : Element{0};
                store_element(group.row[k], i, value);
                complete_before_fault();
            }
        }
    }

    static void store_active(const register_group& group, int first, const std::uint8_t* predicate,
                             std::uint64_t address) {
        for (int i = first; i < first + elements_per_chunk; ++i, address += record_bytes) {
            if (!element_active<Element>(predicate, i))
                continue;
#pragma GCC unroll 4
            for (int k = 0; k < registers; ++k)
                program_access<Element>::write(address + static_cast<std::uint64_t>(k) * sizeof(Element),
                                               load_element<Element>(group.row[k], i));
        }
    }
};

} // namespace

template <class T, class U, int N>
aarch64_decode_rc sve_ldN_zpri(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg rn,
                               std::int64_t offset) {
    static_assert(sizeof(T) == sizeof(U));
    return structured<T, N>::load(state, zt, pg,
                                  read_register(state, rn) + static_cast<std::uint64_t>(offset) * sizeof(U));
}

// Both addressing forms of a load and of the store. A macro, since only that can make their names.
#define STRUCTURED_HANDLERS(registers, size, element)                                                        \
    aarch64_decode_rc sve_ld##registers##size##_zpri(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,   \
                                                     aarch64_i_rsp_reg rn, int imm4) {                       \
        return sve_ldN_zpri<element, element, registers>(                                                    \
            state, zt, pg, rn, std::int64_t{imm4} * registers * elements_per_row<element>);                  \
    }                                                                                                        \
    aarch64_decode_rc sve_ld##registers##size##_scaled_zprr(                                                 \
        cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg rn, aarch64_i_reg rm) {      \
        return sve_ldN_zpri<element, element, registers>(                                                    \
            state, zt, pg, rn, static_cast<std::int64_t>(read_register(state, rm)));                         \
    }                                                                                                        \
    aarch64_decode_rc sve_st##registers##size##_zpri(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,   \
                                                     aarch64_i_rsp_reg rn, int imm4) {                       \
        return structured<element, registers>::store(                                                        \
            state, zt, pg, immediate_address(state, rn, imm4, registers * vector_bytes));                    \
    }                                                                                                        \
    aarch64_decode_rc sve_st##registers##size##_scaled_zprr(                                                 \
        cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_i_rsp_reg rn, aarch64_i_reg rm) {      \
        return structured<element, registers>::store(state, zt, pg, scaled_address<element>(state, rn, rm)); \
    }

STRUCTURED_HANDLERS(2, b, signed char)
STRUCTURED_HANDLERS(3, b, signed char)
STRUCTURED_HANDLERS(4, b, signed char)
STRUCTURED_HANDLERS(2, h, short)
STRUCTURED_HANDLERS(3, h, short)
STRUCTURED_HANDLERS(4, h, short)
STRUCTURED_HANDLERS(2, w, int)
STRUCTURED_HANDLERS(3, w, int)
STRUCTURED_HANDLERS(4, w, int)
STRUCTURED_HANDLERS(2, d, long)
STRUCTURED_HANDLERS(3, d, long)
STRUCTURED_HANDLERS(4, d, long)

#undef STRUCTURED_HANDLERS
