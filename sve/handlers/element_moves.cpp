#include "sve/handlers/element_moves.h"

#include "sve/handlers/elements.h"
#include "sve/handlers/predicate_search.h"

namespace {

// The byte offset of the last active element, or -1.
template <class Element> int last_active(const std::uint8_t* predicate) {
    return last_true<Element>([predicate](int offset) { return predicate_word(predicate, offset); });
}

template <class Element> Element element_at(const std::uint8_t* row_bytes, int byte_offset) {
    return load_element<Element>(row_bytes + byte_offset, 0);
}

// The last active element, or the last if none is active.
template <class Element> Element last_element(const std::uint8_t* predicate, const std::uint8_t* vector) {
    const int offset = last_active<Element>(predicate);
    return element_at<Element>(vector,
                               offset < 0 ? vector_bytes - static_cast<int>(sizeof(Element)) : offset);
}

} // namespace

aarch64_decode_rc sve_lastb_rpz(cpu_state* state, aarch64_i_reg rd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return dispatch_unsigned(zn.kind, [&](auto zero) {
        write_register(state, rd, last_element<decltype(zero)>(state->p[pg.reg], state->z[zn.reg]));
        return aarch64_emulated;
    });
}

aarch64_decode_rc sve_lastb_vpz(cpu_state* state, unsigned int vd, aarch64_p_reg pg, aarch64_z_reg zn) {
    return dispatch_unsigned(zn.kind, [&](auto zero) {
        const auto value = last_element<decltype(zero)>(state->p[pg.reg], state->z[zn.reg]);
        return store_scalar(state->z[vd], value);
    });
}

aarch64_decode_rc sve_clastb_rpz(cpu_state* state, aarch64_i_reg rdn, aarch64_p_reg pg, aarch64_z_reg zm) {
    return dispatch_unsigned(zm.kind, [&](auto zero) {
        using element = decltype(zero);
        const int offset = last_active<element>(state->p[pg.reg]);
        write_register(state, rdn,
                       offset < 0 ? static_cast<element>(read_register(state, rdn))
                                  : element_at<element>(state->z[zm.reg], offset));
        return aarch64_emulated;
    });
}
