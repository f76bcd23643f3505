// Logic of predicates, bit by bit; element sizes play no part.
#pragma once

#include "sve/decode/library_values.h"

// Computes the operation on pn and pm where pg is set, and 0 elsewhere. The forms with Flg set N, Z, C and V
// of that result under pg.
using predicate_logic_primitive = PredV(const PredV& pg, const PredV& pn, const PredV& pm,
                                        CpuContext* context);

predicate_logic_primitive VecPNandPPZ; // not (pn and pm)
predicate_logic_primitive VecPOrNPPZ;  // pn or not pm

predicate_logic_primitive VecPAndFlgPPZ;
predicate_logic_primitive VecPBicFlgPPZ; // pn and not pm
predicate_logic_primitive VecPXorFlgPPZ;
predicate_logic_primitive VecPOrFlgPPZ;
predicate_logic_primitive VecPNorFlgPPZ; // not (pn or pm)
predicate_logic_primitive VecPNandFlgPPZ;
predicate_logic_primitive VecPOrNFlgPPZ;
