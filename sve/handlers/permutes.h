// Rearrangements of vector elements at the fixed length of 1024 bits.
//
// The element size is `zd.kind`. No handler changes a flag or can fail; each returns aarch64_emulated. Any
// operands may be the same register.
#pragma once

#include "sve/decode/cpu_state.h"

// The work of zip1, zip2 and uzp1 on rows of 128 bytes, which serves vectors and predicates alike; all may be
// the same row. With n elements of the size that the code gives: zip1 takes elements 0 to n/2 - 1 of both
// sources alternately, zip2 the others; uzp1 takes the elements of even index, of the first source and then
// of the second.
void sve_zip1(char* destination, const char* first, const char* second, int element_size);
void sve_zip2(char* destination, const char* first, const char* second, int element_size);
void sve_uzp1(char* destination, const char* first, const char* second, int element_size);

using two_source_permute_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn,
                                                     aarch64_z_reg zm);
using one_source_permute_handler = aarch64_decode_rc(cpu_state* state, aarch64_z_reg zd, aarch64_z_reg zn);

// uzp2 is uzp1 with the elements of odd index; trn2 takes these of both sources alternately.
two_source_permute_handler sve_zip1_zzz, sve_zip2_zzz, sve_uzp1_zzz, sve_uzp2_zzz, sve_trn2_zzz;

// zd[i] = zn[zm[i]], or 0 where zm[i], a whole unsigned element, is not below the number of elements.
two_source_permute_handler sve_tbl_zzz;

// The elements in reverse order.
one_source_permute_handler sve_rev_zz;

// The lower (lo) or upper (hi) half of the elements, each extended to twice its width; s as signed, u as
// unsigned.
one_source_permute_handler sve_sunpklo_s2d_zz, sve_sunpkhi_s2d_zz;
one_source_permute_handler sve_uunpklo_b2h_zz, sve_uunpklo_h2s_zz, sve_uunpklo_s2d_zz;
one_source_permute_handler sve_uunpkhi_b2h_zz, sve_uunpkhi_h2s_zz, sve_uunpkhi_s2d_zz;

// The 128 bytes from the position on in zdn with zm behind it. A position of 128 or more counts as 0.
aarch64_decode_rc sve_ext_zzi(cpu_state* state, aarch64_z_reg zdn, aarch64_z_reg zm, unsigned int position);
