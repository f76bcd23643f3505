#include "sve/handlers/structured_memory.h"

#include "sve/handlers/memory_access.h"

#include <utility>

namespace {

template <class Element, int registers> struct structured {
    static constexpr int elements_per_chunk = chunk_bytes / static_cast<int>(sizeof(Element));
    static constexpr int chunk_in_memory = registers * chunk_bytes;
    static constexpr int all_in_memory = registers * vector_bytes;

    static aarch64_decode_rc load(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                  std::uint64_t address) {
        return transfer<loads>(state, zt, pg, address);
    }
    static aarch64_decode_rc store(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                   std::uint64_t address) {
        return transfer<stores>(state, zt, pg, address);
    }

private:
    struct register_group {
        std::uint8_t* row[registers];

        register_group(cpu_state* state, aarch64_z_reg zt) {
#pragma GCC unroll 4
            for (int k = 0; k < registers; ++k)
                row[k] = state->z[(zt.reg + k) & 31];
        }
        // Done before the next access faults.
        void set(int k, int index, Element value) const {
            program_access<Element>::write(reinterpret_cast<std::uint64_t>(row[k]) +
                                               static_cast<std::uint64_t>(index) * sizeof(Element),
                                           value);
        }
        // Makes chunk 1 the first, and so on.
        void drop_chunk() {
#pragma GCC unroll 4
            for (int k = 0; k < registers; ++k)
                row[k] += chunk_bytes;
        }
    };

    template <class Transfer>
    static aarch64_decode_rc transfer(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                      std::uint64_t address) {
        const activity active = activity::of(predicate_row(state, pg.reg));
        if (!within_one_page<all_in_memory>(address) || !active.all<Element>())
            return transfer_some<Transfer>(state, zt, active, address);
        Transfer::template whole<elements_per_row<Element>>(register_group(state, zt), address);
        return aarch64_emulated;
    }

    // With few elements in a chunk, the tests for all chunks take no more room than a loop is worth.
    static constexpr bool unrolled = elements_per_chunk <= 2;

    // Chunk by chunk, and where that won't do element by element.
    template <class Transfer>
    [[gnu::noinline]] static aarch64_decode_rc transfer_some(cpu_state* state, aarch64_z_reg zt,
                                                             activity active, std::uint64_t address) {
        register_group group(state, zt);
        if constexpr (unrolled) {
#pragma GCC unroll 8
            for (int i = 0; i < chunks_per_row; ++i)
                Transfer::active(group, active, address, i);
            return aarch64_emulated;
        }
        const std::uint64_t full = active.full_chunks<Element>(),
                            nonempty = active.nonempty_chunks<Element>();
#pragma GCC unroll 1
        for (int i = 0; i < chunks_per_row; ++i, address += chunk_in_memory) {
            if ((full >> i & 1) && within_one_page<chunk_in_memory>(address))
                Transfer::template whole<elements_per_chunk>(group, address);
            else if (nonempty >> i & 1)
                Transfer::active(group, active, address, 0);
            else
                Transfer::nothing(group);
            complete_before_fault();
            active.drop_chunk();
            group.drop_chunk();
        }
        return aarch64_emulated;
    }

    using every_register = std::make_integer_sequence<int, registers>;

    // An element at any alignment.
    using unaligned __attribute__((aligned(1), may_alias)) = Element;

    // Transfers: of all of so many records, of the active ones of chunk i, of none. The first are plain loops
    // over what is known not to overlap, since the compiler makes the host's own structured loads and stores
    // of them.
    struct loads {
        template <int elements> static void whole(const register_group& group, std::uint64_t address) {
            [&]<int... k>(std::integer_sequence<int, k...>) {
                records<elements>(reinterpret_cast<const std::uint8_t*>(address), group.row[k]...);
            }
            (every_register());
        }
        template <int elements, class... Byte>
        static void records(const std::uint8_t* __restrict memory, Byte* __restrict... row) {
            for (int i = 0; i < elements; ++i) {
                int k = i * registers;
                ((reinterpret_cast<unaligned*>(row)[i] = reinterpret_cast<const unaligned*>(memory)[k++]),
                 ...);
            }
        }
        static void active(const register_group& group, const activity& active, std::uint64_t address,
                           int i) {
#pragma GCC unroll 16
            for (int element = 0; element < elements_per_chunk; ++element) {
                const int index = i * elements_per_chunk + element;
                if (active.element<Element>(i, element)) {
#pragma GCC unroll 4
                    for (int k = 0; k < registers; ++k)
                        group.set(k, index, program_access<Element>::read(address_of(address, index, k)));
                } else {
#pragma GCC unroll 4
                    for (int k = 0; k < registers; ++k)
                        group.set(k, index, 0);
                }
            }
        }
        static void nothing(const register_group& group) {
#pragma GCC unroll 4
            for (int k = 0; k < registers; ++k)
                store_chunk<Element>(group.row[k], 0, chunk<Element>{});
        }
    };
    struct stores {
        template <int elements> static void whole(const register_group& group, std::uint64_t address) {
            [&]<int... k>(std::integer_sequence<int, k...>) {
                records<elements>(reinterpret_cast<std::uint8_t*>(address), group.row[k]...);
            }
            (every_register());
        }
        template <int elements, class... Byte>
        static void records(std::uint8_t* __restrict memory, const Byte* __restrict... row) {
            for (int i = 0; i < elements; ++i) {
                int k = i * registers;
                ((reinterpret_cast<unaligned*>(memory)[k++] = reinterpret_cast<const unaligned*>(row)[i]),
                 ...);
            }
        }
        static void active(const register_group& group, const activity& active, std::uint64_t address,
                           int i) {
#pragma GCC unroll 16
            for (int element = 0; element < elements_per_chunk; ++element) {
                const int index = i * elements_per_chunk + element;
                if (!active.element<Element>(i, element))
                    continue;
#pragma GCC unroll 4
                for (int k = 0; k < registers; ++k)
                    program_access<Element>::write(address_of(address, index, k),
                                                   load_element<Element>(group.row[k], index));
            }
        }
        static void nothing(const register_group&) {}
    };

    static std::uint64_t address_of(std::uint64_t record, int index, int k) {
        return record + static_cast<std::uint64_t>(index * registers + k) * sizeof(Element);
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
