#include "sve/handlers/predicate_flags.h"

#include "sve/handlers/elements.h"
#include "sve/handlers/predicate_search.h"

template <class Element>
void sve_ptest(cpu_state* state, const char* governing_bytes, const char* result_bytes) {
    const auto* governing = reinterpret_cast<const std::uint8_t*>(governing_bytes);
    const auto* result = reinterpret_cast<const std::uint8_t*>(result_bytes);

    chunk<std::uint64_t> active_and_true = {};
#pragma GCC unroll 8
    for (int i = 0; i < chunks_per_row; ++i)
        active_and_true |= load_chunk<std::uint64_t>(governing, i) & load_chunk<std::uint64_t>(result, i);
    const bool zero = ((active_and_true[0] | active_and_true[1]) & element_lane_bits<Element>) == 0;

    const auto active = [governing](int offset) { return predicate_word(governing, offset); };
    const int first = first_true<Element>(active);
    const int last = last_true<Element>(active);
    const bool negative = first != vector_bytes && (result[first] & 1);
    const bool carry = last < 0 || !(result[last] & 1);
    write_predicate_flags(state, negative, zero, carry);
}

template void sve_ptest<signed char>(cpu_state*, const char*, const char*);
template void sve_ptest<short>(cpu_state*, const char*, const char*);
template void sve_ptest<int>(cpu_state*, const char*, const char*);
template void sve_ptest<long>(cpu_state*, const char*, const char*);
template void sve_ptest<unsigned char>(cpu_state*, const char*, const char*);
template void sve_ptest<unsigned short>(cpu_state*, const char*, const char*);
template void sve_ptest<unsigned int>(cpu_state*, const char*, const char*);
template void sve_ptest<unsigned long>(cpu_state*, const char*, const char*);

aarch64_decode_rc sve_ptest_pp(cpu_state* state, aarch64_p_reg pg, aarch64_p_reg pn) {
    sve_ptest<signed char>(state, reinterpret_cast<const char*>(state->p[pg.reg]),
                           reinterpret_cast<const char*>(state->p[pn.reg]));
    return aarch64_emulated;
}
