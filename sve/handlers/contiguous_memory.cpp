#include "sve/handlers/contiguous_memory.h"

#include "sve/handlers/memory_access.h"

namespace {

// Consecutive elements in host vectors.
template <class Element, int parts> struct run {
    chunk<Element> part[parts];

    // A chunk at a time, so that the compiler keeps them in vector registers.
    static run load(const void* source) {
        run result;
#pragma GCC unroll 8
        for (int i = 0; i < parts; ++i)
            result.part[i] = load_chunk<Element>(static_cast<const std::uint8_t*>(source), i);
        return result;
    }
    void store(void* destination) const {
#pragma GCC unroll 8
        for (int i = 0; i < parts; ++i)
            *reinterpret_cast<unaligned_chunk<Element>*>(static_cast<std::uint8_t*>(destination) +
                                                         i * chunk_bytes) = part[i];
    }
};

// Extends by the signedness of Memory, doubling the width until it is Element's. Inlined, as is `truncate`,
// since a run would pass through memory otherwise.
template <class Element, class Memory, int parts>
[[gnu::always_inline]] inline auto extend(const run<Memory, parts>& narrow) {
    if constexpr (sizeof(Element) == sizeof(Memory)) {
        return narrow;
    } else {
        using Wide = twice_as_wide<Memory>;
        run<Wide, 2 * parts> wide;
#pragma GCC unroll 8
        for (int i = 0; i < parts; ++i) {
            const chunk<Memory> low = narrow.part[i];
            chunk<Memory> high = {};
            if constexpr (std::is_signed_v<Memory>)
                high = (chunk<Memory>)(low < 0);
            wide.part[2 * i] = (chunk<Wide>)interleave<0>(low, high, chunk_indices<Memory>());
            wide.part[2 * i + 1] = (chunk<Wide>)interleave<1>(low, high, chunk_indices<Memory>());
        }
        return extend<Element>(wide);
    }
}

// Truncates to Memory, halving the width until it is reached.
template <class Memory, class Element, int parts>
[[gnu::always_inline]] inline auto truncate(const run<Element, parts>& wide) {
    if constexpr (sizeof(Element) == sizeof(Memory)) {
        return wide;
    } else {
        using Narrow = half_as_wide<std::make_unsigned_t<Element>>;
        run<Narrow, parts / 2> narrow;
#pragma GCC unroll 8
        for (int i = 0; i < parts / 2; ++i)
            narrow.part[i] = even_elements((chunk<Narrow>)wide.part[2 * i],
                                           (chunk<Narrow>)wide.part[2 * i + 1], chunk_indices<Narrow>());
        return truncate<Memory>(narrow);
    }
}

template <class Element, class Memory> struct contiguous {
    static constexpr int elements_per_chunk = chunk_bytes / static_cast<int>(sizeof(Element));
    static constexpr int chunk_in_memory = elements_per_chunk * static_cast<int>(sizeof(Memory));
    static constexpr int row_in_memory = chunks_per_row * chunk_in_memory;
    using memory_row = run<Memory, row_in_memory / chunk_bytes>;

    static aarch64_decode_rc load(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                  std::uint64_t address) {
        std::uint8_t* const data = vector_row(state, zt.reg);
        const activity active = activity::of(predicate_row(state, pg.reg));
        if (!within_one_page<row_in_memory>(address) || !active.all<Element>())
            return transfer_some<loads>(data, active, address);
        const memory_row loaded = memory_row::load(reinterpret_cast<const void*>(address));
        complete_before_fault();
        extend<Element>(loaded).store(data);
        return aarch64_emulated;
    }

    static aarch64_decode_rc store(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                   std::uint64_t address) {
        const std::uint8_t* const data = vector_row(state, zt.reg);
        const activity active = activity::of(predicate_row(state, pg.reg));
        if (!within_one_page<row_in_memory>(address) || !active.all<Element>())
            return transfer_some<stores>(data, active, address);
        const auto elements = run<Element, chunks_per_row>::load(data);
        truncate<Memory>(elements).store(reinterpret_cast<void*>(address));
        return aarch64_emulated;
    }

private:
    // With few elements in a chunk, the tests for all chunks take no more room than a loop is worth.
    static constexpr bool unrolled = elements_per_chunk <= 4;

    // Those chunks may be accessed as a whole of which all elements are active and in one page.
    static std::uint64_t whole_chunks(const activity& active, std::uint64_t address) {
        std::uint64_t chunks = active.full_chunks<Element>();
        if (!within_one_page<row_in_memory>(address)) {
            const std::uint64_t bytes_in_page = smallest_page - address % smallest_page;
            chunks &= ~(std::uint64_t{1} << (bytes_in_page / chunk_in_memory)); // the one that may cross
        }
        return chunks;
    }

    // Chunk by chunk, and where that won't do element by element: what is below one that faults has been
    // done.
    template <class Transfer>
    [[gnu::noinline]] static aarch64_decode_rc transfer_some(typename Transfer::row data, activity active,
                                                             std::uint64_t address) {
        const std::uint64_t whole = whole_chunks(active, address);
        if constexpr (unrolled) {
#pragma GCC unroll 8
            for (int i = 0; i < chunks_per_row; ++i) {
                if (elements_per_chunk > 2 && (whole >> i & 1))
                    Transfer::whole(data, address, i);
                else
                    Transfer::active(data, active, address, i);
            }
        } else {
            const std::uint64_t nonempty = active.nonempty_chunks<Element>();
#pragma GCC unroll 1
            for (int i = 0; i < chunks_per_row; ++i, data += chunk_bytes, address += chunk_in_memory) {
                if (whole >> i & 1)
                    Transfer::whole(data, address, 0);
                else if (nonempty >> i & 1)
                    Transfer::active(data, active, address, 0);
                else
                    Transfer::nothing(data);
                complete_before_fault();
                active.drop_chunk();
            }
        }
        return aarch64_emulated;
    }

    // Transfers of chunk i of a row: of all elements, of the active ones, of none.
    struct loads {
        using row = std::uint8_t*;

        static void whole(row data, std::uint64_t address, int i) {
            run<Memory, 1> loaded = {};
            std::memcpy(&loaded, reinterpret_cast<const void*>(address + at(i * chunk_in_memory)),
                        chunk_in_memory);
            complete_before_fault();
            store_chunk<Element>(data, i, extend<Element>(loaded).part[0]);
            complete_before_fault();
        }
        static void active(row data, const activity& active, std::uint64_t address, int i) {
            const auto start = reinterpret_cast<std::uint64_t>(data);
#pragma GCC unroll 16
            for (int k = 0; k < elements_per_chunk; ++k) {
                const int element = i * elements_per_chunk + k;
                const std::uint64_t place = start + at(element * sizeof(Element));
                if (active.element<Element>(i, k))
                    program_access<Element>::write(place, program_access<Memory>::template read_as<Element>(
                                                              address + at(element * sizeof(Memory))));
                else
                    program_access<Element>::write(place, 0);
            }
        }
        static void nothing(row data) { store_chunk<Element>(data, 0, chunk<Element>{}); }
    };
    struct stores {
        using row = const std::uint8_t*;

        static void whole(row data, std::uint64_t address, int i) {
            run<Element, sizeof(Element) / sizeof(Memory)> elements = {};
            elements.part[0] = load_chunk<Element>(data, i);
            const run<Memory, 1> truncated = truncate<Memory>(elements);
            std::memcpy(reinterpret_cast<void*>(address + at(i * chunk_in_memory)), &truncated,
                        chunk_in_memory);
            complete_before_fault();
        }
        static void active(row data, const activity& active, std::uint64_t address, int i) {
#pragma GCC unroll 16
            for (int k = 0; k < elements_per_chunk; ++k) {
                const int element = i * elements_per_chunk + k;
                if (active.element<Element>(i, k))
                    program_access<Memory>::write(address + at(element * sizeof(Memory)),
                                                  static_cast<Memory>(load_element<Element>(data, element)));
            }
        }
        static void nothing(row) {}
    };

    template <class Integer> static constexpr std::uint64_t at(Integer bytes) {
        return static_cast<std::uint64_t>(bytes);
    }
};

} // namespace

// Both addressing forms of one instruction. A macro, since only that can make their names.
#define CONTIGUOUS_HANDLERS(name, direction, element, memory)                                                \
    aarch64_decode_rc name##_zpri(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,                      \
                                  aarch64_i_rsp_reg rn, int imm4) {                                          \
        return contiguous<element, memory>::direction(                                                       \
            state, zt, pg, immediate_address(state, rn, imm4, contiguous<element, memory>::row_in_memory));  \
    }                                                                                                        \
    aarch64_decode_rc name##_scaled_zprr(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,               \
                                         aarch64_i_rsp_reg rn, aarch64_i_reg rm) {                           \
        return contiguous<element, memory>::direction(state, zt, pg, scaled_address<memory>(state, rn, rm)); \
    }

CONTIGUOUS_HANDLERS(sve_ld1b, load, std::uint8_t, std::uint8_t)
CONTIGUOUS_HANDLERS(sve_ld1b_h, load, std::uint16_t, std::uint8_t)
CONTIGUOUS_HANDLERS(sve_ld1b_s, load, std::uint32_t, std::uint8_t)
CONTIGUOUS_HANDLERS(sve_ld1b_d, load, std::uint64_t, std::uint8_t)
CONTIGUOUS_HANDLERS(sve_ld1sb_h, load, std::int16_t, std::int8_t)
CONTIGUOUS_HANDLERS(sve_ld1sb_s, load, std::int32_t, std::int8_t)
CONTIGUOUS_HANDLERS(sve_ld1sb_d, load, std::int64_t, std::int8_t)
CONTIGUOUS_HANDLERS(sve_ld1h, load, std::uint16_t, std::uint16_t)
CONTIGUOUS_HANDLERS(sve_ld1h_s, load, std::uint32_t, std::uint16_t)
CONTIGUOUS_HANDLERS(sve_ld1h_d, load, std::uint64_t, std::uint16_t)
CONTIGUOUS_HANDLERS(sve_ld1sh_s, load, std::int32_t, std::int16_t)
CONTIGUOUS_HANDLERS(sve_ld1sh_d, load, std::int64_t, std::int16_t)
CONTIGUOUS_HANDLERS(sve_ld1w, load, std::uint32_t, std::uint32_t)
CONTIGUOUS_HANDLERS(sve_ld1w_d, load, std::uint64_t, std::uint32_t)
CONTIGUOUS_HANDLERS(sve_ld1sw_d, load, std::int64_t, std::int32_t)
CONTIGUOUS_HANDLERS(sve_ld1d, load, std::uint64_t, std::uint64_t)

CONTIGUOUS_HANDLERS(sve_st1b, store, std::uint8_t, std::uint8_t)
CONTIGUOUS_HANDLERS(sve_st1b_h, store, std::uint16_t, std::uint8_t)
CONTIGUOUS_HANDLERS(sve_st1b_s, store, std::uint32_t, std::uint8_t)
CONTIGUOUS_HANDLERS(sve_st1b_d, store, std::uint64_t, std::uint8_t)
CONTIGUOUS_HANDLERS(sve_st1h, store, std::uint16_t, std::uint16_t)
CONTIGUOUS_HANDLERS(sve_st1h_s, store, std::uint32_t, std::uint16_t)
CONTIGUOUS_HANDLERS(sve_st1h_d, store, std::uint64_t, std::uint16_t)
CONTIGUOUS_HANDLERS(sve_st1w, store, std::uint32_t, std::uint32_t)
CONTIGUOUS_HANDLERS(sve_st1w_d, store, std::uint64_t, std::uint32_t)
CONTIGUOUS_HANDLERS(sve_st1d, store, std::uint64_t, std::uint64_t)

#undef CONTIGUOUS_HANDLERS
