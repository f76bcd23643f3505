#include "sve/handlers/shifts.h"

#include "sve/handlers/elements.h"

namespace {

template <class Element> constexpr Element width = sizeof(Element) * 8;

// Host vectors shift by less than the width only, so counts are brought below it before every shift.

constexpr auto shift_left = []<class Element>(Element, auto value, auto counts) {
    return (value << (counts & (width<Element> - 1))) & (chunk<Element>)(counts < width<Element>);
};
constexpr auto shift_right = []<class Element>(Element, auto value, auto counts) {
    return (value >> (counts & (width<Element> - 1))) & (chunk<Element>)(counts < width<Element>);
};
constexpr auto shift_right_signed = []<class Element>(Element, auto value, auto counts) {
    using signed_chunk = chunk<std::make_signed_t<Element>>;
    const chunk<Element> last = broadcast<Element>(width<Element> - 1);
    const chunk<Element> clamped = counts < last ? counts : last;
    return (chunk<Element>)((signed_chunk)value >> (signed_chunk)clamped);
};

template <class Shift>
aarch64_decode_rc by_vector(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm,
                            Shift shift) {
    return dispatch_unsigned(zdn.dest_kind, [&](auto zero) {
        return merge_binary<decltype(zero)>(
            state->z[zdn.reg], state->p[pg.reg], state->z[zm.reg],
            [&](auto value, auto counts) { return shift(zero, value, counts); });
    });
}

// One count for all elements, small enough for every element type to hold.
template <class Element> chunk<Element> uniform_counts(unsigned int count) {
    return broadcast(static_cast<Element>(count < 64 ? count : 64));
}

template <class Shift>
aarch64_decode_rc by_immediate(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, unsigned int count,
                               Shift shift) {
    return dispatch_unsigned(zdn.dest_kind, [&](auto zero) {
        using element = decltype(zero);
        std::uint8_t* row_bytes = state->z[zdn.reg];
        return compute_row<element>(row_bytes, [&](int i) {
            const chunk<element> value = load_chunk<element>(row_bytes, i);
            return blend<element>(active_lanes<element>(state->p[pg.reg], i),
                                  shift(zero, value, uniform_counts<element>(count)), value);
        });
    });
}

template <class Shift>
aarch64_decode_rc by_immediate(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, unsigned int count,
                               Shift shift) {
    return dispatch_unsigned(zd.kind, [&](auto zero) {
        using element = decltype(zero);
        return compute_row<element>(state->z[zd.reg], [&](int i) {
            return shift(zero, load_chunk<element>(state->z[zn.reg], i), uniform_counts<element>(count));
        });
    });
}

} // namespace

aarch64_decode_rc sve_lsl_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return by_vector(state, zdn, pg, zm, shift_left);
}
aarch64_decode_rc sve_lsr_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return by_vector(state, zdn, pg, zm, shift_right);
}
aarch64_decode_rc sve_asr_zpz(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return by_vector(state, zdn, pg, zm, shift_right_signed);
}

aarch64_decode_rc sve_lsl_zpi(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, unsigned int count) {
    return by_immediate(state, zdn, pg, count, shift_left);
}
aarch64_decode_rc sve_asr_zpi(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, unsigned int count) {
    return by_immediate(state, zdn, pg, count, shift_right_signed);
}

aarch64_decode_rc sve_lsl_zzi(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, unsigned int count) {
    return by_immediate(state, zd, zn, count, shift_left);
}
aarch64_decode_rc sve_asr_zzi(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, unsigned int count) {
    return by_immediate(state, zd, zn, count, shift_right_signed);
}
