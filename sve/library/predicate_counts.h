// The number of active elements of a predicate, added to a register or to every element of a vector.
#pragma once

#include "sve/decode/library_values.h"

// DECP: the operand minus the count, wrapping.
using predicate_count_decrement = std::uint64_t(std::uint64_t operand, const PredV& pm, CpuContext* context);
predicate_count_decrement VecU8DecrSCountPS, VecU16DecrSCountPS, VecU32DecrSCountPS, VecU64DecrSCountPS;

// INCP, DECP on vectors: zdn[i] plus or minus the count, wrapping. All elements take part.
using predicate_count_primitive = VecV(const VecV& zdn, const PredV& pm, CpuContext* context);
predicate_count_primitive VecU16IncrCountPV, VecU32IncrCountPV, VecU64IncrCountPV;
predicate_count_primitive VecU16DecrCountPV, VecU32DecrCountPV, VecU64DecrCountPV;

// SQINCP, UQINCP, SQDECP, UQDECP on vectors: the same, saturated.
predicate_count_primitive VecS16QIncrCountPV, VecS32QIncrCountPV, VecS64QIncrCountPV;
predicate_count_primitive VecU16QIncrCountPV, VecU32QIncrCountPV, VecU64QIncrCountPV;
predicate_count_primitive VecS16QDecrCountPV, VecS32QDecrCountPV, VecS64QDecrCountPV;
predicate_count_primitive VecU16QDecrCountPV, VecU32QDecrCountPV, VecU64QDecrCountPV;

// The same on a 32-bit register, whose low 32 bits are read, and on a 64-bit one: the operand plus or minus
// the count, in the range of the result's type.
using signed_word_predicate_count = std::int32_t(std::uint64_t operand, const PredV& pm, CpuContext* context);
using unsigned_word_predicate_count = std::uint32_t(std::uint64_t operand, const PredV& pm,
                                                    CpuContext* context);
using signed_predicate_count = std::int64_t(std::uint64_t operand, const PredV& pm, CpuContext* context);
using unsigned_predicate_count = std::uint64_t(std::uint64_t operand, const PredV& pm, CpuContext* context);
signed_word_predicate_count VecS8QIncrSCount4PS, VecS16QIncrSCount4PS, VecS32QIncrSCount4PS,
    VecS64QIncrSCount4PS;
unsigned_word_predicate_count VecU8QIncrSCount4PS, VecU16QIncrSCount4PS, VecU32QIncrSCount4PS,
    VecU64QIncrSCount4PS;
signed_word_predicate_count VecS8QDecrSCount4PS, VecS16QDecrSCount4PS, VecS32QDecrSCount4PS,
    VecS64QDecrSCount4PS;
unsigned_word_predicate_count VecU8QDecrSCount4PS, VecU16QDecrSCount4PS, VecU32QDecrSCount4PS,
    VecU64QDecrSCount4PS;
signed_predicate_count VecS8QIncrSCount8PS, VecS16QIncrSCount8PS, VecS32QIncrSCount8PS, VecS64QIncrSCount8PS;
unsigned_predicate_count VecU8QIncrSCount8PS, VecU16QIncrSCount8PS, VecU32QIncrSCount8PS,
    VecU64QIncrSCount8PS;
signed_predicate_count VecS8QDecrSCount8PS, VecS16QDecrSCount8PS, VecS32QDecrSCount8PS, VecS64QDecrSCount8PS;
unsigned_predicate_count VecU8QDecrSCount8PS, VecU16QDecrSCount8PS, VecU32QDecrSCount8PS,
    VecU64QDecrSCount8PS;
