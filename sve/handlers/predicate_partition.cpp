#include "sve/handlers/predicate_partition.h"

#include "sve/handlers/elements.h"
#include "sve/handlers/predicate_flags.h"
#include "sve/handlers/predicate_search.h"

namespace {

const char* flag_bytes(const std::uint8_t* row_bytes) { return reinterpret_cast<const char*>(row_bytes); }

// The first byte that is true in both predicates, or vector_bytes.
int first_true_in_both(const std::uint8_t* pg, const std::uint8_t* pn) {
    return first_true<std::uint8_t>(
        [pg, pn](int offset) { return predicate_word(pg, offset) & predicate_word(pn, offset); });
}

// The active bytes below the end as 1, others as 0; chunk `index` of the row.
chunk<std::uint8_t> active_below(const std::uint8_t* pg, int end, int index) {
    constexpr chunk<std::uint8_t> indices = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    const auto position = indices + static_cast<std::uint8_t>(index * chunk_bytes);
    const auto below = (chunk<std::uint8_t>)(position < broadcast(static_cast<std::uint8_t>(end)));
    return below & load_chunk<std::uint8_t>(pg, index) & 1;
}

// BRKA and BRKB: what is active below the end is true.
aarch64_decode_rc break_at(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, int end) {
    std::uint8_t* const destination = state->p[pd.reg];
    const std::uint8_t* const governing = state->p[pg.reg];
    const auto kept =
        broadcast<std::uint8_t>(pg.kind == aarch64_p_reg::zeroing ? std::uint8_t{0} : std::uint8_t{0xFF});
    return compute_row<std::uint8_t>(destination, [=](int i) {
        const chunk<std::uint8_t> inactive = ~active_lanes<std::uint8_t>(governing, i) & kept;
        return (inactive & load_chunk<std::uint8_t>(destination, i)) | active_below(governing, end, i);
    });
}

// Whether pn's byte at the last active byte of pg is other than zero. The whole byte is taken.
bool last_active_is_set(const std::uint8_t* pg, const std::uint8_t* pn) {
    const int last = last_true<std::uint8_t>([pg](int offset) { return predicate_word(pg, offset); });
    return last >= 0 && pn[last] != 0;
}

template <class Element>
aarch64_decode_rc next_active(cpu_state* state, std::uint8_t* pdn, const std::uint8_t* pg) {
    constexpr int size = sizeof(Element);
    const int last = last_true<Element>([pdn](int offset) { return predicate_word(pdn, offset); });
    const int start = last < 0 ? 0 : last + size;
    const int next = first_true<Element>([pg, start](int offset) {
        const int skipped = start - offset;
        const std::uint64_t lanes = predicate_word(pg, offset);
        return skipped <= 0 ? lanes : skipped >= 8 ? 0 : lanes >> (8 * skipped) << (8 * skipped);
    });
    alignas(chunk_bytes) std::uint8_t result[vector_bytes] = {};
    if (next != vector_bytes)
        result[next] = 1;
    sve_ptest<Element>(state, flag_bytes(pg), flag_bytes(result));
    return compute_row<std::uint8_t>(pdn, [&result](int i) { return load_chunk<std::uint8_t>(result, i); });
}

} // namespace

aarch64_decode_rc sve_brka_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn) {
    const int first = first_true_in_both(state->p[pg.reg], state->p[pn.reg]);
    return break_at(state, pd, pg, first == vector_bytes ? first : first + 1);
}

aarch64_decode_rc sve_brkb_ppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn) {
    return break_at(state, pd, pg, first_true_in_both(state->p[pg.reg], state->p[pn.reg]));
}

aarch64_decode_rc sve_brkn(cpu_state* state, aarch64_p_reg pdm, aarch64_p_reg pg, aarch64_p_reg pn,
                           bool flags) {
    std::uint8_t* const destination = state->p[pdm.reg];
    if (!last_active_is_set(state->p[pg.reg], state->p[pn.reg]))
        std::memset(destination, 0, vector_bytes);
    if (flags) {
        const int first = first_true<std::uint8_t>(
            [destination](int offset) { return predicate_word(destination, offset); });
        write_predicate_flags(state, first == 0, first == vector_bytes, !(destination[vector_bytes - 1] & 1));
    }
    return aarch64_emulated;
}

aarch64_decode_rc sve_brkn_ppp(cpu_state* state, aarch64_p_reg pdm, aarch64_p_reg pg, aarch64_p_reg pn) {
    return sve_brkn(state, pdm, pg, pn, false);
}

aarch64_decode_rc sve_brkns_ppp(cpu_state* state, aarch64_p_reg pdm, aarch64_p_reg pg, aarch64_p_reg pn) {
    return sve_brkn(state, pdm, pg, pn, true);
}

aarch64_decode_rc sve_brkpb(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                            aarch64_p_reg pm, bool flags) {
    const std::uint8_t* const governing = state->p[pg.reg];
    const int end =
        last_active_is_set(governing, state->p[pn.reg]) ? first_true_in_both(governing, state->p[pm.reg]) : 0;
    alignas(chunk_bytes) std::uint8_t result[vector_bytes];
    compute_row<std::uint8_t>(result, [=](int i) { return active_below(governing, end, i); });
    if (flags)
        sve_ptest<signed char>(state, flag_bytes(governing), flag_bytes(result));
    return compute_row<std::uint8_t>(state->p[pd.reg],
                                     [&result](int i) { return load_chunk<std::uint8_t>(result, i); });
}

aarch64_decode_rc sve_brkpb_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                                 aarch64_p_reg pm) {
    return sve_brkpb(state, pd, pg, pn, pm, false);
}

aarch64_decode_rc sve_brkpbs_pppp(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg, aarch64_p_reg pn,
                                  aarch64_p_reg pm) {
    return sve_brkpb(state, pd, pg, pn, pm, true);
}

aarch64_decode_rc sve_pnext_pp(cpu_state* state, aarch64_p_reg pdn, aarch64_p_reg pg) {
    std::uint8_t* const destination = state->p[pdn.reg];
    const std::uint8_t* const governing = state->p[pg.reg];
    return dispatch_unsigned(pdn.dest_kind2, [=](auto element) {
        return next_active<decltype(element)>(state, destination, governing);
    });
}
