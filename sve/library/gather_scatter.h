// Gather loads and scatter stores for any vector length: LD1 and ST1 with an address for each element.
//
// A name is VecU or VecS, the latter for loads that sign-extend; the element's size in the register in bits;
// Load or Store; the size in memory in bytes, M; and the address:
//     VIZ          base i + imm5 * M
//     VSZ, SVZ     base + offset i, or offset i * M; the offset is the whole element, zero-extended
//     XVSZ, XSVZ   the same with the low 32 bits of the element, sign-extended
//     YVSZ, YSVZ   the same with the low 32 bits of the element, zero-extended
// modulo 2^64 and at any alignment. Elements are accessed one by one in ascending order, so that of two
// stores to one address the later stays, and inactive ones are not accessed. A fault ends the process.
#pragma once

#include "sve/decode/library_values.h"

// Loads: inactive elements of the result are 0.
using gather_from_base = VecV(const PredV& pg, std::uint64_t base, const VecV& offsets, CpuContext* context);
using gather_from_bases = VecV(const PredV& pg, const VecV& bases, unsigned int imm5, CpuContext* context);

gather_from_base VecU32Load1VSZ, VecS32Load1VSZ, VecU32Load2VSZ, VecU32Load2SVZ;
gather_from_base VecS32Load2VSZ, VecS32Load2SVZ, VecU32Load4VSZ, VecU32Load4SVZ, VecU64Load1YVSZ;
gather_from_base VecU64Load2XVSZ, VecU64Load2YVSZ, VecU64Load2YSVZ, VecS64Load2XVSZ, VecS64Load2YVSZ;
gather_from_base VecU64Load4XVSZ, VecU64Load4YVSZ, VecU64Load4YSVZ;
gather_from_base VecS64Load4XVSZ, VecS64Load4YVSZ, VecS64Load4YSVZ, VecU64Load8XVSZ, VecU64Load8YVSZ;
gather_from_bases VecU32Load1VIZ, VecS32Load1VIZ, VecU32Load2VIZ, VecS32Load2VIZ, VecU32Load4VIZ;

// Stores of the low M bytes of the active elements.
using scatter_to_base = void(const VecV& data, const PredV& pg, std::uint64_t base, const VecV& offsets,
                             CpuContext* context);
using scatter_to_bases = void(const VecV& data, const PredV& pg, const VecV& bases, unsigned int imm5,
                              CpuContext* context);

scatter_to_base VecU32Store1VSZ, VecU32Store2VSZ, VecU32Store2SVZ, VecU32Store4VSZ, VecU32Store4SVZ;
scatter_to_base VecU64Store1YVSZ, VecU64Store2XVSZ, VecU64Store2YVSZ, VecU64Store2YSVZ;
scatter_to_base VecU64Store4XVSZ, VecU64Store4YVSZ, VecU64Store8XVSZ, VecU64Store8YVSZ;
scatter_to_bases VecU32Store1VIZ, VecU32Store2VIZ, VecU32Store4VIZ;
