// Integer compares into predicates: of each element with an immediate, or with the 64-bit element that shares
// its place in the vector.
#pragma once

#include "sve/decode/library_values.h"

// Sets an element's lowest predicate bit where pg makes it active and the comparison holds, clears all other
// bits, and sets N, Z, C and V of that result under pg.
template <class Element>
using compare_immediate_primitive = PredV(const PredV& pg, const VecV& zn, Element immediate,
                                          CpuContext* context);

compare_immediate_primitive<std::int8_t> VecS8CmpFlgGEVIZ;
compare_immediate_primitive<std::int16_t> VecS16CmpFlgGEVIZ;
compare_immediate_primitive<std::int32_t> VecS32CmpFlgGEVIZ;
compare_immediate_primitive<std::int64_t> VecS64CmpFlgGEVIZ;
compare_immediate_primitive<std::uint8_t> VecU8CmpFlgGEVIZ, VecU8CmpFlgLEVIZ;
compare_immediate_primitive<std::uint16_t> VecU16CmpFlgGEVIZ, VecU16CmpFlgLEVIZ;
compare_immediate_primitive<std::uint32_t> VecU32CmpFlgGEVIZ, VecU32CmpFlgLEVIZ;
compare_immediate_primitive<std::uint64_t> VecU64CmpFlgGEVIZ, VecU64CmpFlgLEVIZ;

// The same with zm's 64-bit elements, each against all the elements of zn that lie in its place. The elements
// of zn are extended to 64 bits by their own signedness.
using compare_wide_primitive = PredV(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context);

compare_wide_primitive VecS8CmpFlgEQVWZ, VecS8CmpFlgNEVWZ, VecS8CmpFlgGEVWZ, VecS8CmpFlgGTVWZ,
    VecS8CmpFlgLTVWZ, VecS8CmpFlgLEVWZ;
compare_wide_primitive VecS16CmpFlgEQVWZ, VecS16CmpFlgNEVWZ, VecS16CmpFlgGEVWZ, VecS16CmpFlgGTVWZ,
    VecS16CmpFlgLTVWZ, VecS16CmpFlgLEVWZ;
compare_wide_primitive VecS32CmpFlgEQVWZ, VecS32CmpFlgNEVWZ, VecS32CmpFlgGEVWZ, VecS32CmpFlgGTVWZ,
    VecS32CmpFlgLTVWZ, VecS32CmpFlgLEVWZ;
compare_wide_primitive VecU8CmpFlgGEVWZ, VecU8CmpFlgGTVWZ, VecU8CmpFlgLTVWZ, VecU8CmpFlgLEVWZ;
compare_wide_primitive VecU16CmpFlgGEVWZ, VecU16CmpFlgGTVWZ, VecU16CmpFlgLTVWZ, VecU16CmpFlgLEVWZ;
compare_wide_primitive VecU32CmpFlgGEVWZ, VecU32CmpFlgGTVWZ, VecU32CmpFlgLTVWZ, VecU32CmpFlgLEVWZ;
