#include "sve/handlers/shifts.h"

#include "sve/handlers/handler_definitions.h"
#include "sve/handlers/host_shifts.h"

namespace {

constexpr auto shift_left = []<class Element>(Element, auto value, auto counts) {
    return host_shifts::shift_left<Element>(value, counts);
};
constexpr auto shift_right = []<class Element>(Element, auto value, auto counts) {
    return host_shifts::shift_right<Element>(value, counts);
};
constexpr auto shift_right_signed = []<class Element>(Element, auto value, auto counts) {
    return host_shifts::shift_right_signed<Element>(value, counts);
};

template <auto shift>
aarch64_decode_rc by_vector(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return dispatch_unsigned(zdn.dest_kind, [&](auto zero) {
        return merge_binary<decltype(zero)>(
            state, zdn, pg, zm, [&](auto value, auto counts) { return shift(zero, value, counts); });
    });
}

// One count for all elements, small enough for every element type to hold.
template <class Element> chunk<Element> uniform_counts(unsigned int count) {
    return broadcast(static_cast<Element>(count < 64 ? count : 64));
}

template <auto shift>
aarch64_decode_rc by_immediate(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, unsigned int count) {
    return dispatch_unsigned(zdn.dest_kind, [&](auto zero) {
        using element = decltype(zero);
        std::uint8_t* const row_bytes = vector_row(state, zdn.reg);
        const std::uint8_t* const predicate = predicate_row(state, pg.reg);
        const auto counts = uniform_counts<element>(count);
        return compute_lanes<element>(row_bytes, [&](int i) {
            const chunk<element> value = load_chunk<element>(row_bytes, i);
            return blend<element>(active_lanes<element>(predicate, i), shift(zero, value, counts), value);
        });
    });
}

template <auto shift>
aarch64_decode_rc by_immediate(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, unsigned int count) {
    return dispatch_unsigned(zd.kind, [&](auto zero) {
        using element = decltype(zero);
        const std::uint8_t* const source = vector_row(state, zn.reg);
        const auto counts = uniform_counts<element>(count);
        return compute_lanes<element>(vector_row(state, zd.reg), [&](int i) {
            return shift(zero, load_chunk<element>(source, i), counts);
        });
    });
}

} // namespace

MERGING_HANDLER(sve_lsl_zpz, by_vector<shift_left>)
MERGING_HANDLER(sve_lsr_zpz, by_vector<shift_right>)
MERGING_HANDLER(sve_asr_zpz, by_vector<shift_right_signed>)

aarch64_decode_rc sve_lsl_zpi(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, unsigned int count) {
    return by_immediate<shift_left>(state, zdn, pg, count);
}
aarch64_decode_rc sve_asr_zpi(cpu_state* state, aarch64_z_reg zdn, aarch64_p_reg pg, unsigned int count) {
    return by_immediate<shift_right_signed>(state, zdn, pg, count);
}

aarch64_decode_rc sve_lsl_zzi(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, unsigned int count) {
    return by_immediate<shift_left>(state, zd, zn, count);
}
aarch64_decode_rc sve_asr_zzi(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn, unsigned int count) {
    return by_immediate<shift_right_signed>(state, zd, zn, count);
}
