// Predicates made from scalars, from patterns and from other predicates. A result's bits above an element's
// lowest are 0, except where whole groups are moved. Where flags are set, they are N, Z, C and V.
#pragma once

#include "sve/decode/library_values.h"

// WHILELE, signed, of 32-bit or 64-bit operands: element i is true while counter + i, which does not wrap, is
// at most the limit; if the limit is the type's maximum, all elements are true. Sets the flags of the result
// under an all-true predicate.
template <class Register>
using while_primitive = PredV(Register counter, Register limit, CpuContext* context);
while_primitive<std::int32_t> VecS8While4LESS, VecS16While4LESS, VecS32While4LESS, VecS64While4LESS;
while_primitive<std::int64_t> VecS8While8LESS, VecS16While8LESS, VecS32While8LESS, VecS64While8LESS;

// PTRUES: as many leading elements as the pattern names are true. Sets the flags of the result under itself.
using true_primitive = PredV(unsigned long pattern, CpuContext* context);
true_primitive VecP8TrueFlgI, VecP16TrueFlgI, VecP32TrueFlgI, VecP64TrueFlgI;

// PFIRST: pdn, with the bit of the first active byte set as well. Sets the flags of the result under pg.
PredV VecPSetFirstActiveP(const PredV& pdn, const PredV& pg, CpuContext* context);

// BRKAS and BRKBS, zeroing: the active bytes up to the first active one where pn is set, that one included
// (A) or not (B). Set the flags of the result under pg.
using break_primitive = PredV(const PredV& pg, const PredV& pn, CpuContext* context);
break_primitive VecPBreakAFlgPZ, VecPBreakBFlgPZ;

// BRKPA and BRKPAS: nothing if pn is clear at the last active byte or none is active, else the active bytes
// up to the first active one where pm is set, that one included. BRKPAS sets the flags of the result under
// pg.
using break_previous_primitive = PredV(const PredV& pg, const PredV& pn, const PredV& pm,
                                       CpuContext* context);
break_previous_primitive VecPBreakPrevAPZ, VecPBreakPrevAFlgPZ;

// CTERMEQ and CTERMNE: whether a loop terminates because the operands are equal, or not equal. N = 1, V = 0
// if so; else N = 0 and V = not C. Z and C keep their values.
template <class Register> using terminate_primitive = void(Register n, Register m, CpuContext* context);
terminate_primitive<std::uint32_t> VecU32CTermEQ, VecU32CTermNE;
terminate_primitive<std::uint64_t> VecU64CTermEQ, VecU64CTermNE;

// TRN1, TRN2 and UZP2 of predicates, with each element's whole group of bits: the even or the odd elements of
// pn and pm in turn; the odd elements of pn, then those of pm.
using predicate_permute_primitive = PredV(const PredV& pn, const PredV& pm, CpuContext* context);
predicate_permute_primitive VecP8Trn1PP, VecP16Trn1PP, VecP32Trn1PP, VecP64Trn1PP;
predicate_permute_primitive VecP8Trn2PP, VecP16Trn2PP, VecP32Trn2PP, VecP64Trn2PP;
predicate_permute_primitive VecP8Uzp2PP, VecP16Uzp2PP, VecP32Uzp2PP, VecP64Uzp2PP;
