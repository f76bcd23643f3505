// Replicating loads of a 128-bit block for any vector length, LD1RQ: the block's active elements, by the
// predicate's first 16 bits alone, with 0 for the others, in every block of the result. Each active element
// is read once; a fault ends the process.
#pragma once

#include "sve/decode/library_values.h"

// From base + imm4 * 16.
using load_block_immediate = VecV(const PredV& pg, std::uint64_t base, int imm4, CpuContext* context);
load_block_immediate VecU8LoadDup1QSIZ, VecU16LoadDup2QSIZ, VecU32LoadDup4QSIZ, VecU64LoadDup8QSIZ;

// From base + index * the element's size.
using load_block_scaled = VecV(const PredV& pg, std::uint64_t base, std::uint64_t index, CpuContext* context);
load_block_scaled VecU8LoadDup1QSSZ, VecU16LoadDup2QSSZ, VecU32LoadDup4QSSZ, VecU64LoadDup8QSSZ;
