// The condition flags of a predicate result, for handlers.
#pragma once

#include "sve/decode/cpu_state.h"

// Replaces N, Z, C and V, and no other bit of nzcv, by what the elements of the result say that the governing
// predicate makes active: N, the first of them is true; Z, none is true; C, the last of them is not true (set
// as well if none is active); V is 0. Both predicates are rows of 128 bytes, read at the width of Element.
// Defined for all integer types of 1, 2, 4 and 8 bytes; signedness makes no difference.
template <class Element> void sve_ptest(cpu_state* state, const char* governing, const char* result);

extern template void sve_ptest<signed char>(cpu_state*, const char*, const char*);
extern template void sve_ptest<short>(cpu_state*, const char*, const char*);
extern template void sve_ptest<int>(cpu_state*, const char*, const char*);
extern template void sve_ptest<long>(cpu_state*, const char*, const char*);
extern template void sve_ptest<unsigned char>(cpu_state*, const char*, const char*);
extern template void sve_ptest<unsigned short>(cpu_state*, const char*, const char*);
extern template void sve_ptest<unsigned int>(cpu_state*, const char*, const char*);
extern template void sve_ptest<unsigned long>(cpu_state*, const char*, const char*);

// PTEST: the flags of pn governed by pg, bit by bit. Returns 0.
aarch64_decode_rc sve_ptest_pp(cpu_state* state, aarch64_p_reg pg, aarch64_p_reg pn);

// Replaces N, Z, C and V of nzcv and nothing else; V becomes 0.
inline void write_predicate_flags(cpu_state* state, bool negative, bool zero, bool carry) {
    // As values, since the compiler takes shifts of conditions apart.
    constexpr std::uint64_t n = 1u << 31, z = 1u << 30, c = 1u << 29, v = 1u << 28;
    std::uint64_t flags = state->nzcv & ~(n | z | c | v);
    flags = negative ? flags | n : flags;
    flags = zero ? flags | z : flags;
    flags = carry ? flags | c : flags;
    state->nzcv = flags;
}
