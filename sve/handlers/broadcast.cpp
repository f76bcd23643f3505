#include "sve/handlers/broadcast.h"

#include "sve/handlers/elements.h"

#include <utility>

namespace {

std::uint64_t sign_extended(int value) { return static_cast<std::uint64_t>(std::int64_t{value}); }

template <class Element> aarch64_decode_rc fill_row(std::uint8_t* destination, chunk<Element> value) {
    return compute_row<Element>(destination, [&](int) { return value; });
}

// Fills zd with the low bits of the value.
aarch64_decode_rc duplicate(cpu_state* state, aarch64_z_reg zd, std::uint64_t value) {
    return dispatch_unsigned(zd.kind, [&](auto zero) {
        using element = decltype(zero);
        return fill_row<element>(state->z[zd.reg], broadcast(static_cast<element>(value)));
    });
}

// Puts source(i), the i-th chunk of a row, into the active elements of zd; the others keep their values or
// become 0.
template <class Element, class Source>
aarch64_decode_rc copy_active(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, Source source) {
    std::uint8_t* const destination = vector_row(state, zd.reg);
    const std::uint8_t* const predicate = predicate_row(state, pg.reg);
    if (pg.kind == aarch64_p_reg::zeroing) {
        return compute_lanes<Element>(destination,
                                      [&](int i) { return active_lanes<Element>(predicate, i) & source(i); });
    }
    return compute_lanes<Element>(destination, [&](int i) {
        return blend<Element>(active_lanes<Element>(predicate, i), source(i),
                              load_chunk<Element>(destination, i));
    });
}

// The same with the low bits of one value in all elements.
aarch64_decode_rc copy_value(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, std::uint64_t value) {
    return dispatch_unsigned(zd.kind, [&](auto zero) {
        using element = decltype(zero);
        const chunk<element> everywhere = broadcast(static_cast<element>(value));
        return copy_active<element>(state, zd, pg, [everywhere](int) { return everywhere; });
    });
}

// 0, 1, 2, ... in the lanes of a chunk.
template <class Element, std::size_t... Lane> chunk<Element> lane_numbers(std::index_sequence<Lane...>) {
    return chunk<Element>{static_cast<Element>(Lane)...};
}

aarch64_decode_rc fill_index(cpu_state* state, aarch64_z_reg zd, std::uint64_t base, std::uint64_t step) {
    return dispatch_unsigned(zd.kind, [&](auto zero) {
        using element = decltype(zero);
        constexpr int lanes = chunk_bytes / static_cast<int>(sizeof(element));
        chunk<element> next =
            lane_numbers<element>(std::make_index_sequence<lanes>{}) * broadcast(static_cast<element>(step)) +
            broadcast(static_cast<element>(base));
        return compute_row<element>(state->z[zd.reg], [&](int) {
            const chunk<element> current = next;
            next += broadcast(static_cast<element>(step * lanes));
            return current;
        });
    });
}

template <class Operation>
aarch64_decode_rc with_mask(cpu_state* state, aarch64_z_reg zdn, aarch64_sve_logical64_imm mask,
                            Operation operation) {
    std::uint8_t* const row_bytes = vector_row(state, zdn.reg);
    return compute_lanes<std::uint64_t>(row_bytes, [&](int i) {
        return operation(load_chunk<std::uint64_t>(row_bytes, i), broadcast(mask.value));
    });
}

} // namespace

aarch64_decode_rc sve_dup_zi(cpu_state* state, aarch64_z_reg zd, int imm) {
    return duplicate(state, zd, sign_extended(imm));
}
aarch64_decode_rc sve_dup_zr(cpu_state* state, aarch64_z_reg zd, aarch64_i_rsp_reg rn) {
    return duplicate(state, zd, read_register(state, rn));
}
aarch64_decode_rc sve_dupm_zi(cpu_state* state, aarch64_z_reg zd, aarch64_sve_logical64_imm mask) {
    return fill_row<std::uint64_t>(state->z[zd.reg], broadcast(mask.value));
}

aarch64_decode_rc sve_dup_zzi(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, unsigned int index) {
    const std::uint8_t* source = state->z[zn.reg];
    if (zd.kind == quadword_elements) {
        const bool inside = index < chunks_per_row;
        return fill_row<std::uint64_t>(state->z[zd.reg], inside ? load_chunk<std::uint64_t>(source, index)
                                                                : chunk<std::uint64_t>{});
    }
    return dispatch_unsigned(zd.kind, [&](auto zero) {
        using element = decltype(zero);
        const bool inside = index < elements_per_row<element>;
        return fill_row<element>(state->z[zd.reg],
                                 broadcast(inside ? load_element<element>(source, index) : element{0}));
    });
}

aarch64_decode_rc sve_cpy_zpi(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, int imm) {
    return copy_value(state, zd, pg, sign_extended(imm));
}
aarch64_decode_rc sve_cpy_zpr(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_i_rsp_reg rn) {
    return copy_value(state, zd, pg, read_register(state, rn));
}
aarch64_decode_rc sve_cpy_zpv(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg vn) {
    return copy_value(state, zd, pg, load_element<std::uint64_t>(state->z[vn.reg], 0));
}

aarch64_decode_rc sve_sel_zpzz(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn,
                               aarch64_z_reg zm) {
    return dispatch_unsigned(zd.kind, [&](auto zero) {
        using element = decltype(zero);
        const std::uint8_t* const predicate = predicate_row(state, pg.reg);
        const std::uint8_t* const chosen = vector_row(state, zn.reg);
        const std::uint8_t* const otherwise = vector_row(state, zm.reg);
        return compute_lanes<element>(vector_row(state, zd.reg), [&](int i) {
            return blend<element>(active_lanes<element>(predicate, i), load_chunk<element>(chosen, i),
                                  load_chunk<element>(otherwise, i));
        });
    });
}

aarch64_decode_rc sve_index_zii(cpu_state* state, aarch64_z_reg zd, int base, int step) {
    return fill_index(state, zd, sign_extended(base), sign_extended(step));
}
aarch64_decode_rc sve_index_zir(cpu_state* state, aarch64_z_reg zd, int base, aarch64_i_reg step) {
    return fill_index(state, zd, sign_extended(base), read_register(state, step));
}
aarch64_decode_rc sve_index_zri(cpu_state* state, aarch64_z_reg zd, aarch64_i_reg base, int step) {
    return fill_index(state, zd, read_register(state, base), sign_extended(step));
}
aarch64_decode_rc sve_index_zrr(cpu_state* state, aarch64_z_reg zd, aarch64_i_reg base, aarch64_i_reg step) {
    return fill_index(state, zd, read_register(state, base), read_register(state, step));
}

aarch64_decode_rc sve_movprfx_zpz(cpu_state* state, aarch64_z_reg zd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return dispatch_unsigned(zd.kind, [&](auto zero) {
        using element = decltype(zero);
        const std::uint8_t* const source = vector_row(state, zn.reg);
        return copy_active<element>(state, zd, pg,
                                    [source](int i) { return load_chunk<element>(source, i); });
    });
}
aarch64_decode_rc sve_movprfx_zz(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn) {
    const std::uint8_t* const source = vector_row(state, zn.reg);
    return compute_lanes<std::uint64_t>(vector_row(state, zd.reg),
                                        [&](int i) { return load_chunk<std::uint64_t>(source, i); });
}

aarch64_decode_rc sve_and_zi(cpu_state* state, aarch64_z_reg zdn, aarch64_sve_logical64_imm mask) {
    return with_mask(state, zdn, mask, [](auto a, auto b) { return a & b; });
}
aarch64_decode_rc sve_orr_zi(cpu_state* state, aarch64_z_reg zdn, aarch64_sve_logical64_imm mask) {
    return with_mask(state, zdn, mask, [](auto a, auto b) { return a | b; });
}
aarch64_decode_rc sve_eor_zi(cpu_state* state, aarch64_z_reg zdn, aarch64_sve_logical64_imm mask) {
    return with_mask(state, zdn, mask, [](auto a, auto b) { return a ^ b; });
}
