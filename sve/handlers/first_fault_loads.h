// Contiguous loads that do not fault everywhere: non-fault loads, LDNF1, and first-fault loads, LDFF1, of the
// forms that the library does not carry. They ask in advance whether pages can be read. Names, addresses and
// extension are those of contiguous_memory.h. All return 0.
#pragma once

#include "sve/handlers/contiguous_memory.h"

// Non-fault loads. An inactive element becomes 0. An active one is loaded if its page can be read; otherwise
// it keeps its old contents and loses its FFR lane. So elements behind an unreadable page are loaded again.
// The page is that of the element's first byte: an element that straddles the end of a readable page before
// an unreadable one ends the process.
contiguous_immediate_handler sve_ldnf1b_zpri, sve_ldnf1b_h_zpri, sve_ldnf1b_s_zpri, sve_ldnf1b_d_zpri;
contiguous_immediate_handler sve_ldnf1sb_h_zpri, sve_ldnf1sb_s_zpri, sve_ldnf1sb_d_zpri;
contiguous_immediate_handler sve_ldnf1h_zpri, sve_ldnf1h_s_zpri, sve_ldnf1h_d_zpri;
contiguous_immediate_handler sve_ldnf1sh_s_zpri, sve_ldnf1sh_d_zpri;
contiguous_immediate_handler sve_ldnf1w_zpri, sve_ldnf1w_d_zpri, sve_ldnf1sw_d_zpri;
contiguous_immediate_handler sve_ldnf1d_zpri;

// First-fault loads. Only where fewer than 128 bytes are left in the page of the address, and only if the
// next page cannot be read, does the load stop early: at as many elements of the register's size as fit into
// the rest of the page, however few bytes of memory they take. The elements from there on keep their old
// contents and lose their FFR lanes, active or not. A fault in the page of the address ends the process.
contiguous_scaled_handler sve_ldff1b_scaled_zprr, sve_ldff1b_h_scaled_zprr, sve_ldff1b_s_scaled_zprr;
contiguous_scaled_handler sve_ldff1b_d_scaled_zprr;
contiguous_scaled_handler sve_ldff1w_scaled_zprr, sve_ldff1w_d_scaled_zprr;
contiguous_scaled_handler sve_ldff1d_scaled_zprr;
