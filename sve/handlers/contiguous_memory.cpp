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

template <int bytes, bool is_signed> struct integer_of_size;
template <> struct integer_of_size<1, false> { using type = std::uint8_t; };
template <> struct integer_of_size<2, false> { using type = std::uint16_t; };
template <> struct integer_of_size<4, false> { using type = std::uint32_t; };
template <> struct integer_of_size<8, false> { using type = std::uint64_t; };
template <> struct integer_of_size<2, true> { using type = std::int16_t; };
template <> struct integer_of_size<4, true> { using type = std::int32_t; };
template <> struct integer_of_size<8, true> { using type = std::int64_t; };

// Extends by the signedness of Memory, doubling the width until it is Element's. Inlined, as is `truncate`,
// since a run would pass through memory otherwise.
template <class Element, class Memory, int parts>
[[gnu::always_inline]] inline run<Element, chunks_per_row> extend(const run<Memory, parts>& narrow) {
    if constexpr (sizeof(Element) == sizeof(Memory)) {
        return narrow;
    } else {
        using Wide = typename integer_of_size<2 * sizeof(Memory), std::is_signed_v<Memory>>::type;
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
        using Narrow = typename integer_of_size<sizeof(Element) / 2, false>::type;
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
        std::uint8_t* const data = state->z[zt.reg];
        const std::uint8_t* const predicate = state->p[pg.reg];
        if (!within_one_page<row_in_memory>(address) || !all_active<Element>(predicate))
            return load_by_chunks(data, predicate, address);
        const memory_row loaded = memory_row::load(reinterpret_cast<const void*>(address));
        complete_before_fault();
        extend<Element>(loaded).store(data);
        return aarch64_emulated;
    }

    static aarch64_decode_rc store(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,
                                   std::uint64_t address) {
        const std::uint8_t* const data = state->z[zt.reg];
        const std::uint8_t* const predicate = state->p[pg.reg];
        if (!within_one_page<row_in_memory>(address) || !all_active<Element>(predicate))
            return store_by_chunks(data, predicate, address);
        const auto elements = run<Element, chunks_per_row>::load(data);
        truncate<Memory>(elements).store(reinterpret_cast<void*>(address));
        return aarch64_emulated;
    }

private:
    static aarch64_decode_rc load_by_chunks(std::uint8_t* data, const std::uint8_t* predicate,
                                            std::uint64_t address) {
        for (int i = 0; i < chunks_per_row; ++i, address += chunk_in_memory) {
            const chunk<std::uint64_t> lanes = load_chunk<std::uint64_t>(predicate, i);
            const activity active = activity_of<Element>(lanes);
            if (active == activity::some ||
                (active == activity::all && !within_one_page<chunk_in_memory>(address))) {
                load_elements(data + i * chunk_bytes, lanes, address);
                continue;
            }
            Memory loaded[elements_per_chunk] = {};
            if (active == activity::all)
                std::memcpy(loaded, reinterpret_cast<const void*>(address), sizeof loaded);
            Element extended[elements_per_chunk];
            for (int k = 0; k < elements_per_chunk; ++k)
                extended[k] = static_cast<Element>(loaded[k]);
            std::memcpy(data + i * chunk_bytes, extended, chunk_bytes);
            complete_before_fault();
        }
        return aarch64_emulated;
    }

    static aarch64_decode_rc store_by_chunks(const std::uint8_t* data, const std::uint8_t* predicate,
                                             std::uint64_t address) {
        for (int i = 0; i < chunks_per_row; ++i, address += chunk_in_memory) {
            const chunk<std::uint64_t> lanes = load_chunk<std::uint64_t>(predicate, i);
            const activity active = activity_of<Element>(lanes);
            if (active == activity::none)
                continue;
            if (active == activity::some || !within_one_page<chunk_in_memory>(address)) {
                store_elements(data + i * chunk_bytes, lanes, address);
                complete_before_fault();
                continue;
            }
            Element stored[elements_per_chunk];
            std::memcpy(stored, data + i * chunk_bytes, chunk_bytes);
            Memory truncated[elements_per_chunk];
            for (int k = 0; k < elements_per_chunk; ++k)
                truncated[k] = static_cast<Memory>(stored[k]);
            std::memcpy(reinterpret_cast<void*>(address), truncated, sizeof truncated);
            complete_before_fault();
        }
        return aarch64_emulated;
    }

    static constexpr int elements_per_half = elements_per_chunk / 2;

    static bool is_active(std::uint64_t lanes, int index) {
        return (lanes >> (8 * static_cast<int>(sizeof(Element)) * index)) & 1;
    }

    static void load_elements(std::uint8_t* elements, chunk<std::uint64_t> lanes, std::uint64_t address) {
        for (int half = 0; half < 2; ++half) {
#pragma GCC unroll 8
            for (int i = 0; i < elements_per_half; ++i) {
                Element value = 0;
                if (is_active(lanes[half], i))
                    value = static_cast<Element>(program_access<Memory>::read(address));
                std::memcpy(elements, &value, sizeof value);
                complete_before_fault();
                elements += sizeof(Element);
                address += sizeof(Memory);
            }
        }
    }

    static void store_elements(const std::uint8_t* elements, chunk<std::uint64_t> lanes,
                               std::uint64_t address) {
        for (int half = 0; half < 2; ++half) {
#pragma GCC unroll 8
            for (int i = 0; i < elements_per_half; ++i) {
                Element value;
                std::memcpy(&value, elements, sizeof value);
                if (is_active(lanes[half], i))
                    program_access<Memory>::write(address, static_cast<Memory>(value));
                elements += sizeof(Element);
                address += sizeof(Memory);
            }
        }
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
