// Moves between one vector element and a scalar. The types B8, H16, F32 and D64 are the elements of SIMD
// scalars, by their bits; they differ from U8 to U64 in name alone.
#pragma once

#include "sve/decode/library_values.h"

// LASTA: the element after the last active one, and element 0 after the last element or if none is active.
template <class Element> using last_primitive = Element(const PredV& pg, const VecV& zn, CpuContext* context);
last_primitive<std::uint8_t> VecU8LastAV, VecB8LastAV;
last_primitive<std::uint16_t> VecU16LastAV, VecH16LastAV;
last_primitive<std::uint32_t> VecU32LastAV, VecF32LastAV;
last_primitive<std::uint64_t> VecU64LastAV, VecD64LastAV;

// CLASTA and CLASTB: the element after the last active one, with element 0 after the last element, or the
// last active element itself; the default if none is active.
template <class Element>
using conditional_last_primitive = Element(const PredV& pg, Element default_value, const VecV& zm,
                                           CpuContext* context);
conditional_last_primitive<std::uint8_t> VecU8CondXASV, VecB8CondXASV, VecB8CondXBSV;
conditional_last_primitive<std::uint16_t> VecU16CondXASV, VecH16CondXASV, VecH16CondXBSV;
conditional_last_primitive<std::uint32_t> VecU32CondXASV, VecF32CondXASV, VecF32CondXBSV;
conditional_last_primitive<std::uint64_t> VecU64CondXASV, VecD64CondXASV, VecD64CondXBSV;

// The same into a vector: the element chosen in every place, or the old destination if none is active.
using conditional_vector_primitive = VecV(const PredV& pg, const VecV& zdn, const VecV& zm,
                                          CpuContext* context);
conditional_vector_primitive VecU8VCondXAVV, VecU16VCondXAVV, VecU32VCondXAVV, VecU64VCondXAVV;
conditional_vector_primitive VecU8VCondXBVV, VecU16VCondXBVV, VecU32VCondXBVV, VecU64VCondXBVV;

// INSR: the scalar in element 0, and every element of zdn one place up; the last element is lost.
template <class Element> using insert_primitive = VecV(const VecV& zdn, Element scalar, CpuContext* context);
insert_primitive<std::uint8_t> VecU8InsertS, VecB8InsertS;
insert_primitive<std::uint16_t> VecU16InsertS, VecH16InsertS;
insert_primitive<std::uint32_t> VecU32InsertS, VecF32InsertS;
insert_primitive<std::uint64_t> VecU64InsertS, VecD64InsertS;
