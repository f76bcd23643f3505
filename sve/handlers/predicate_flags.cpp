#include "sve/handlers/predicate_flags.h"

#include "sve/handlers/result_flags.h"

template <class Element>
void sve_ptest(cpu_state* state, const char* governing_bytes, const char* result_bytes) {
    const auto* governing = reinterpret_cast<const std::uint8_t*>(governing_bytes);
    const auto* result = reinterpret_cast<const std::uint8_t*>(result_bytes);

    chunk_array<chunks_per_row> active;
    chunk_array<chunks_per_row> active_and_true;
#pragma GCC unroll 8
    for (int i = 0; i < chunks_per_row; ++i) {
        active[i] = load_chunk<std::uint64_t>(governing, i) & element_lane_bits<Element>;
        active_and_true[i] = active[i] & load_chunk<std::uint64_t>(result, i);
    }
    write_result_flags<Element>(state, active, active_and_true);
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
