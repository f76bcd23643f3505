// Counts of elements by predicate pattern, alone and added with saturation to a register or to every element
// of a vector. The count is that of the elements of 8, 16, 32 or 64 bits that the pattern selects at the
// context's vector length, times imm4 + 1.
#pragma once

#include "sve/decode/library_values.h"

// CNTB, CNTH, CNTW, CNTD.
unsigned long VecU8CountVLSI(unsigned long pattern, unsigned long imm4, CpuContext* context);
unsigned long VecU16CountVLSI(unsigned long pattern, unsigned long imm4, CpuContext* context);
unsigned long VecU32CountVLSI(unsigned long pattern, unsigned long imm4, CpuContext* context);
unsigned long VecU64CountVLSI(unsigned long pattern, unsigned long imm4, CpuContext* context);

// SQINCB and its like, UQINCB and its like, on a 32-bit register: the low 32 bits of the operand plus the
// count, in the range of the result's type.
using signed_word_increment = std::int32_t(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                                           CpuContext* context);
using unsigned_word_increment = std::uint32_t(std::uint64_t operand, unsigned long pattern,
                                              unsigned long imm4, CpuContext* context);
signed_word_increment VecS8QIncrVL4SI, VecS16QIncrVL4SI, VecS32QIncrVL4SI, VecS64QIncrVL4SI;
unsigned_word_increment VecU8QIncrVL4SI, VecU16QIncrVL4SI, VecU32QIncrVL4SI, VecU64QIncrVL4SI;

// The same with subtraction. UQDECB has a handler of its own.
signed_word_increment VecS8QDecrVL4SI, VecS16QDecrVL4SI, VecS32QDecrVL4SI, VecS64QDecrVL4SI;
unsigned_word_increment VecU16QDecrVL4SI, VecU32QDecrVL4SI, VecU64QDecrVL4SI;

// The same on a 64-bit register.
using signed_increment = std::int64_t(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                                      CpuContext* context);
using unsigned_increment = std::uint64_t(std::uint64_t operand, unsigned long pattern, unsigned long imm4,
                                         CpuContext* context);
signed_increment VecS8QIncrVL8SI, VecS16QIncrVL8SI, VecS32QIncrVL8SI, VecS64QIncrVL8SI;
unsigned_increment VecU8QIncrVL8SI, VecU16QIncrVL8SI, VecU32QIncrVL8SI, VecU64QIncrVL8SI;
signed_increment VecS8QDecrVL8SI, VecS16QDecrVL8SI, VecS32QDecrVL8SI, VecS64QDecrVL8SI;
unsigned_increment VecU16QDecrVL8SI, VecU32QDecrVL8SI, VecU64QDecrVL8SI;

// SQINCH, UQINCH, SQDECH, UQDECH and their like on vectors: zdn[i] plus or minus the count, saturated.
using vector_increment = VecV(const VecV& zdn, unsigned long pattern, unsigned long imm4,
                              CpuContext* context);
vector_increment VecS16QIncrVLVI, VecS32QIncrVLVI, VecS64QIncrVLVI;
vector_increment VecU16QIncrVLVI, VecU32QIncrVLVI, VecU64QIncrVLVI;
vector_increment VecS16QDecrVLVI, VecS32QDecrVLVI, VecS64QDecrVLVI;
vector_increment VecU16QDecrVLVI, VecU32QDecrVLVI, VecU64QDecrVLVI;
