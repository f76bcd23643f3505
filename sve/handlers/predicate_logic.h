// Predicates combined byte by byte under a governing predicate, whatever the element size.
//
// Where bit 0 of pg's byte is set, pd's byte is that of the operation; elsewhere it becomes 0 if `pg.kind` is
// zeroing, and is kept otherwise. No handler changes a flag or can fail; each returns aarch64_emulated. Any
// operands may be the same register.
#pragma once

#include "sve/decode/cpu_state.h"

using predicate_logic_handler = aarch64_decode_rc(cpu_state* state, aarch64_p_reg pd, aarch64_p_reg pg,
                                                  aarch64_p_reg pn, aarch64_p_reg pm);

// Bitwise on all eight bits of the bytes; bic is pn & ~pm.
predicate_logic_handler sve_and_pppp, sve_bic_pppp, sve_eor_pppp, sve_orr_pppp;

// 1 where the bytes of both are 0, all eight bits taken, else 0.
predicate_logic_handler sve_nor_pppp;

// pn's byte where pg is set, pm's elsewhere, for every `pg.kind`.
predicate_logic_handler sve_sel_pppp;
