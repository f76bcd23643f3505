// Rearrangement of vector elements.
#pragma once

#include "sve/decode/library_values.h"

// TRN1: the even elements of zn and zm in turn, element 2k of zn at 2k and that of zm at 2k + 1.
using transpose_primitive = VecV(const VecV& zn, const VecV& zm, CpuContext* context);
transpose_primitive VecU8Trn1VV, VecU16Trn1VV, VecU32Trn1VV, VecU64Trn1VV;

// SPLICE: the elements of zdn from the first active one to the last, inactive ones between them included,
// then as many elements of zm as fill the vector.
using splice_primitive = VecV(const PredV& pg, const VecV& zdn, const VecV& zm, CpuContext* context);
splice_primitive VecU8SpliceVV, VecU16SpliceVV, VecU32SpliceVV, VecU64SpliceVV;

// COMPACT: the active elements of zn without gaps, then zeros.
using compress_primitive = VecV(const PredV& pg, const VecV& zn, CpuContext* context);
compress_primitive VecU32CompressVV, VecU64CompressVV;

// SUNPKLO and SUNPKHI: the elements of half the size in the lower or upper half of zn, sign-extended.
using unpack_primitive = VecV(const VecV& zn, CpuContext* context);
unpack_primitive VecS16UnpackLoV, VecS32UnpackLoV;
unpack_primitive VecS16UnpackHiV, VecS32UnpackHiV;
