#include "sve/handlers/gather_scatter.h"

#include "sve/handlers/memory_access.h"

namespace {

// Element i of the vector, of which the low bytes that make an Offset count, extended to 64 bits and times
// the scale, is added to the base.
template <class Element, class Memory, class Offset, int scale> struct indexed {
    static aarch64_decode_rc load(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_z_reg vector,
                                  std::uint64_t base) {
        std::uint8_t* const data = vector_row(state, zt.reg);
        const std::uint8_t* const offsets = vector_row(state, vector.reg);
        // The offsets may stand in the register that is loaded: element i is read before it is replaced.
        activity::of(predicate_row(state, pg.reg)).template for_each<Element>([=](int index, bool active) {
            const auto element = reinterpret_cast<std::uint64_t>(data) + position(index);
            if (active)
                program_access<Element>::write(element, program_access<Memory>::template read_as<Element>(
                                                            address(offsets, index, base)));
            else
                program_access<Element>::write(element, 0);
        });
        return aarch64_emulated;
    }

    static aarch64_decode_rc store(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_z_reg vector,
                                   std::uint64_t base) {
        const std::uint8_t* const data = vector_row(state, zt.reg);
        const std::uint8_t* const offsets = vector_row(state, vector.reg);
        activity::of(predicate_row(state, pg.reg)).template for_each<Element>([=](int index, bool active) {
            if (active)
                program_access<Memory>::write(address(offsets, index, base),
                                              static_cast<Memory>(load_element<Element>(data, index)));
        });
        return aarch64_emulated;
    }

private:
    static std::uint64_t position(int index) { return static_cast<std::uint64_t>(index) * sizeof(Element); }
    static std::uint64_t address(const std::uint8_t* offsets, int index, std::uint64_t base) {
        Offset offset;
        std::memcpy(&offset, offsets + position(index), sizeof offset);
        return base + static_cast<std::uint64_t>(offset) * scale;
    }
};

} // namespace

// One instruction with one kind of address. Macros, since only they can make the names.
#define VECTOR_BASE(name, direction, element, memory)                                                        \
    aarch64_decode_rc name##_zpzi(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_z_reg zn,    \
                                  unsigned int imm5) {                                                       \
        return indexed<element, memory, std::uint64_t, 1>::direction(state, zt, pg, zn,                      \
                                                                     imm5 * sizeof(memory));                 \
    }
#define VECTOR_OFFSET(name, direction, element, memory, offset)                                              \
    aarch64_decode_rc name##_zpzr(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg, aarch64_z_reg zm,    \
                                  aarch64_i_rsp_reg rn) {                                                    \
        return indexed<element, memory, offset, 1>::direction(state, zt, pg, zm, read_register(state, rn));  \
    }
#define SCALED_OFFSET(name, direction, element, memory, offset)                                              \
    aarch64_decode_rc name##_scaled_zprz(cpu_state* state, aarch64_z_reg zt, aarch64_p_reg pg,               \
                                         aarch64_i_rsp_reg rn, aarch64_z_reg zm) {                           \
        return indexed<element, memory, offset, sizeof(memory)>::direction(state, zt, pg, zm,                \
                                                                           read_register(state, rn));        \
    }

VECTOR_BASE(sve_ld1b_d, load, std::uint64_t, std::uint8_t)
VECTOR_BASE(sve_ld1sb_d, load, std::int64_t, std::int8_t)
VECTOR_BASE(sve_ld1h_d, load, std::uint64_t, std::uint16_t)
VECTOR_BASE(sve_ld1sh_d, load, std::int64_t, std::int16_t)
VECTOR_BASE(sve_ld1w_d, load, std::uint64_t, std::uint32_t)
VECTOR_BASE(sve_ld1sw_d, load, std::int64_t, std::int32_t)
VECTOR_BASE(sve_ld1d, load, std::uint64_t, std::uint64_t)
VECTOR_BASE(sve_st1b_d, store, std::uint64_t, std::uint8_t)
VECTOR_BASE(sve_st1h_d, store, std::uint64_t, std::uint16_t)
VECTOR_BASE(sve_st1w_d, store, std::uint64_t, std::uint32_t)
VECTOR_BASE(sve_st1d, store, std::uint64_t, std::uint64_t)

VECTOR_OFFSET(sve_ld1b_d, load, std::uint64_t, std::uint8_t, std::uint64_t)
VECTOR_OFFSET(sve_ld1sb_d, load, std::int64_t, std::int8_t, std::uint64_t)
VECTOR_OFFSET(sve_ld1h_d, load, std::uint64_t, std::uint16_t, std::uint64_t)
VECTOR_OFFSET(sve_ld1sh_d, load, std::int64_t, std::int16_t, std::uint64_t)
VECTOR_OFFSET(sve_ld1w_d, load, std::uint64_t, std::uint32_t, std::uint64_t)
VECTOR_OFFSET(sve_ld1sw_d, load, std::int64_t, std::int32_t, std::uint64_t)
VECTOR_OFFSET(sve_ld1d, load, std::uint64_t, std::uint64_t, std::uint64_t)
VECTOR_OFFSET(sve_st1b_d, store, std::uint64_t, std::uint8_t, std::uint64_t)
VECTOR_OFFSET(sve_st1h_d, store, std::uint64_t, std::uint16_t, std::uint64_t)
VECTOR_OFFSET(sve_st1w_d, store, std::uint64_t, std::uint32_t, std::uint64_t)
VECTOR_OFFSET(sve_st1d, store, std::uint64_t, std::uint64_t, std::uint64_t)

VECTOR_OFFSET(sve_ld1b_s_sxtw, load, std::uint32_t, std::uint8_t, std::int32_t)
VECTOR_OFFSET(sve_ld1sb_s_sxtw, load, std::int32_t, std::int8_t, std::int32_t)
VECTOR_OFFSET(sve_ld1h_s_sxtw, load, std::uint32_t, std::uint16_t, std::int32_t)
VECTOR_OFFSET(sve_ld1sh_s_sxtw, load, std::int32_t, std::int16_t, std::int32_t)
VECTOR_OFFSET(sve_ld1w_sxtw, load, std::uint32_t, std::uint32_t, std::int32_t)
VECTOR_OFFSET(sve_ld1b_d_sxtw, load, std::uint64_t, std::uint8_t, std::int32_t)
VECTOR_OFFSET(sve_ld1sb_d_sxtw, load, std::int64_t, std::int8_t, std::int32_t)
VECTOR_OFFSET(sve_ld1sb_d_uxtw, load, std::int64_t, std::int8_t, std::uint32_t)
VECTOR_OFFSET(sve_st1b_s_sxtw, store, std::uint32_t, std::uint8_t, std::int32_t)
VECTOR_OFFSET(sve_st1h_s_sxtw, store, std::uint32_t, std::uint16_t, std::int32_t)
VECTOR_OFFSET(sve_st1w_sxtw, store, std::uint32_t, std::uint32_t, std::int32_t)
VECTOR_OFFSET(sve_st1b_d_sxtw, store, std::uint64_t, std::uint8_t, std::int32_t)

SCALED_OFFSET(sve_ld1h_d, load, std::uint64_t, std::uint16_t, std::uint64_t)
SCALED_OFFSET(sve_ld1sh_d, load, std::int64_t, std::int16_t, std::uint64_t)
SCALED_OFFSET(sve_ld1w_d, load, std::uint64_t, std::uint32_t, std::uint64_t)
SCALED_OFFSET(sve_ld1sw_d, load, std::int64_t, std::int32_t, std::uint64_t)
SCALED_OFFSET(sve_ld1d, load, std::uint64_t, std::uint64_t, std::uint64_t)
SCALED_OFFSET(sve_st1h_d, store, std::uint64_t, std::uint16_t, std::uint64_t)
SCALED_OFFSET(sve_st1w_d, store, std::uint64_t, std::uint32_t, std::uint64_t)
SCALED_OFFSET(sve_st1d, store, std::uint64_t, std::uint64_t, std::uint64_t)

SCALED_OFFSET(sve_ld1h_s_sxtw, load, std::uint32_t, std::uint16_t, std::int32_t)
SCALED_OFFSET(sve_ld1sh_s_sxtw, load, std::int32_t, std::int16_t, std::int32_t)
SCALED_OFFSET(sve_ld1w_sxtw, load, std::uint32_t, std::uint32_t, std::int32_t)
SCALED_OFFSET(sve_ld1h_d_sxtw, load, std::uint64_t, std::uint16_t, std::int32_t)
SCALED_OFFSET(sve_ld1sh_d_sxtw, load, std::int64_t, std::int16_t, std::int32_t)
SCALED_OFFSET(sve_ld1w_d_sxtw, load, std::uint64_t, std::uint32_t, std::int32_t)
SCALED_OFFSET(sve_ld1sw_d_sxtw, load, std::int64_t, std::int32_t, std::int32_t)
SCALED_OFFSET(sve_ld1d_sxtw, load, std::uint64_t, std::uint64_t, std::int32_t)
SCALED_OFFSET(sve_ld1sh_d_uxtw, load, std::int64_t, std::int16_t, std::uint32_t)
SCALED_OFFSET(sve_ld1d_uxtw, load, std::uint64_t, std::uint64_t, std::uint32_t)
SCALED_OFFSET(sve_st1h_s_sxtw, store, std::uint32_t, std::uint16_t, std::int32_t)
SCALED_OFFSET(sve_st1w_sxtw, store, std::uint32_t, std::uint32_t, std::int32_t)
SCALED_OFFSET(sve_st1h_d_sxtw, store, std::uint64_t, std::uint16_t, std::int32_t)
SCALED_OFFSET(sve_st1w_d_sxtw, store, std::uint64_t, std::uint32_t, std::int32_t)
SCALED_OFFSET(sve_st1d_sxtw, store, std::uint64_t, std::uint64_t, std::int32_t)
SCALED_OFFSET(sve_st1w_d_uxtw, store, std::uint64_t, std::uint32_t, std::uint32_t)
SCALED_OFFSET(sve_st1d_uxtw, store, std::uint64_t, std::uint64_t, std::uint32_t)

#undef VECTOR_BASE
#undef VECTOR_OFFSET
#undef SCALED_OFFSET

aarch64_decode_rc sve_adr_scaled_zzz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, aarch64_z_reg zm) {
    const auto scale = static_cast<int>(state->instr_word >> 10 & 3);
    const bool is_doubleword = state->instr_word >> 22 & 1;
    return dispatch_unsigned(is_doubleword ? doubleword_elements : word_elements, [&](auto element) {
        using Element = decltype(element);
        return compute_row<Element>(state->z[zd.reg], [&](int i) {
            return load_chunk<Element>(state->z[zn.reg], i) +
                   (load_chunk<Element>(state->z[zm.reg], i) << scale);
        });
    });
}
