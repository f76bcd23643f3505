// Integer arithmetic of two operands for any vector length: reversed subtraction, minimum and maximum with an
// immediate, absolute difference, high half of the product.
#pragma once

#include "sve/library/primitive_shapes.h"

// SUBR: zdn[i] = zm[i] - zdn[i] where active.
merging_primitive VecU8SubRVVM, VecU16SubRVVM, VecU32SubRVVM, VecU64SubRVVM;

// SABD, UABD: the absolute difference of zdn[i] and zm[i] where active, as an unsigned element.
merging_primitive VecS8AbdVVM, VecS16AbdVVM, VecS32AbdVVM, VecS64AbdVVM;
merging_primitive VecU8AbdVVM, VecU16AbdVVM, VecU32AbdVVM, VecU64AbdVVM;

// SMULH, UMULH: the high half of zdn[i] * zm[i] where active.
merging_primitive VecS8MulHVVM, VecS16MulHVVM, VecS32MulHVVM, VecS64MulHVVM;
merging_primitive VecU8MulHVVM, VecU16MulHVVM, VecU32MulHVVM, VecU64MulHVVM;

// SUBR: immediate - zdn[i].
VecV VecU8SubRVIX(const VecV& zdn, std::uint8_t immediate, CpuContext* context);
VecV VecU16SubRVIX(const VecV& zdn, std::uint16_t immediate, CpuContext* context);
VecV VecU32SubRVIX(const VecV& zdn, std::uint32_t immediate, CpuContext* context);
VecV VecU64SubRVIX(const VecV& zdn, std::uint64_t immediate, CpuContext* context);

// SMAX, UMAX, SMIN, UMIN: the larger or the smaller of zdn[i] and the immediate.
VecV VecS8MaxVIX(const VecV& zdn, std::int8_t immediate, CpuContext* context);
VecV VecS16MaxVIX(const VecV& zdn, std::int16_t immediate, CpuContext* context);
VecV VecS32MaxVIX(const VecV& zdn, std::int32_t immediate, CpuContext* context);
VecV VecS64MaxVIX(const VecV& zdn, std::int64_t immediate, CpuContext* context);
VecV VecU8MaxVIX(const VecV& zdn, std::uint8_t immediate, CpuContext* context);
VecV VecU16MaxVIX(const VecV& zdn, std::uint16_t immediate, CpuContext* context);
VecV VecU32MaxVIX(const VecV& zdn, std::uint32_t immediate, CpuContext* context);
VecV VecU64MaxVIX(const VecV& zdn, std::uint64_t immediate, CpuContext* context);
VecV VecS8MinVIX(const VecV& zdn, std::int8_t immediate, CpuContext* context);
VecV VecS16MinVIX(const VecV& zdn, std::int16_t immediate, CpuContext* context);
VecV VecS32MinVIX(const VecV& zdn, std::int32_t immediate, CpuContext* context);
VecV VecS64MinVIX(const VecV& zdn, std::int64_t immediate, CpuContext* context);
VecV VecU8MinVIX(const VecV& zdn, std::uint8_t immediate, CpuContext* context);
VecV VecU16MinVIX(const VecV& zdn, std::uint16_t immediate, CpuContext* context);
VecV VecU32MinVIX(const VecV& zdn, std::uint32_t immediate, CpuContext* context);
VecV VecU64MinVIX(const VecV& zdn, std::uint64_t immediate, CpuContext* context);
