// First-fault loads for any vector length, LDFF1: a fault does not end them, and the first-fault register
// records how far they got. Names and addresses are those of gather_scatter.h; with a C, the load is
// contiguous, from base + index * M on, M being an element's size in memory.
//
// Elements are read in ascending order. The first active one that cannot be read and all elements after it,
// active or not, become 0 and lose their bits in the context's FFR, and nothing more is read. Inactive
// elements are 0; before the fault they keep their FFR bits.
#pragma once

#include "sve/decode/library_values.h"
#include "sve/library/gather_scatter.h"

using first_fault_contiguous = VecV(const PredV& pg, std::uint64_t base, std::uint64_t index,
                                    CpuContext* context);

first_fault_contiguous VecS16CLoadFF1LSSZ, VecU16CLoadFF2LSSZ, VecS32CLoadFF1LSSZ, VecS32CLoadFF2LSSZ;
first_fault_contiguous VecU32CLoadFF2LSSZ, VecS64CLoadFF1LSSZ, VecS64CLoadFF2LSSZ, VecU64CLoadFF2LSSZ;
first_fault_contiguous VecS64CLoadFF4LSSZ;

gather_from_base VecU32LoadFF1VSZ, VecU32LoadFF1XVSZ, VecS32LoadFF1VSZ, VecS32LoadFF1XVSZ;
gather_from_base VecU32LoadFF2VSZ, VecU32LoadFF2SVZ, VecU32LoadFF2XVSZ, VecU32LoadFF2XSVZ;
gather_from_base VecS32LoadFF2VSZ, VecS32LoadFF2SVZ, VecS32LoadFF2XVSZ, VecS32LoadFF2XSVZ;
gather_from_base VecU32LoadFF4VSZ, VecU32LoadFF4SVZ, VecU32LoadFF4XVSZ, VecU32LoadFF4XSVZ;
gather_from_base VecU64LoadFF1VSZ, VecU64LoadFF1XVSZ, VecU64LoadFF1YVSZ;
gather_from_base VecS64LoadFF1VSZ, VecS64LoadFF1XVSZ, VecS64LoadFF1YVSZ;
gather_from_base VecU64LoadFF2VSZ, VecU64LoadFF2SVZ, VecU64LoadFF2XVSZ, VecU64LoadFF2XSVZ, VecU64LoadFF2YVSZ,
    VecU64LoadFF2YSVZ;
gather_from_base VecS64LoadFF2VSZ, VecS64LoadFF2SVZ, VecS64LoadFF2XVSZ, VecS64LoadFF2XSVZ, VecS64LoadFF2YVSZ,
    VecS64LoadFF2YSVZ;
gather_from_base VecU64LoadFF4VSZ, VecU64LoadFF4SVZ, VecU64LoadFF4XVSZ, VecU64LoadFF4XSVZ, VecU64LoadFF4YVSZ,
    VecU64LoadFF4YSVZ;
gather_from_base VecS64LoadFF4VSZ, VecS64LoadFF4SVZ, VecS64LoadFF4XVSZ, VecS64LoadFF4XSVZ, VecS64LoadFF4YVSZ,
    VecS64LoadFF4YSVZ;
gather_from_base VecU64LoadFF8VSZ, VecU64LoadFF8SVZ, VecU64LoadFF8XVSZ, VecU64LoadFF8XSVZ, VecU64LoadFF8YVSZ,
    VecU64LoadFF8YSVZ;

gather_from_bases VecU32LoadFF1VIZ, VecS32LoadFF1VIZ, VecU32LoadFF2VIZ, VecS32LoadFF2VIZ, VecU32LoadFF4VIZ;
gather_from_bases VecU64LoadFF1VIZ, VecS64LoadFF1VIZ, VecU64LoadFF2VIZ, VecS64LoadFF2VIZ, VecU64LoadFF4VIZ;
gather_from_bases VecS64LoadFF4VIZ, VecU64LoadFF8VIZ;
