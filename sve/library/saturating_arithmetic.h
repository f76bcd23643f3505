// Saturating additions and subtractions of vectors for any vector length. Saturation leaves no trace but the
// result.
#pragma once

#include "sve/library/primitive_shapes.h"

// SQADD, UQADD: zn[i] + zm[i] in the range of the element.
vector_primitive VecS8QAddVVX, VecS16QAddVVX, VecS32QAddVVX, VecS64QAddVVX;
vector_primitive VecU8QAddVVX, VecU16QAddVVX, VecU32QAddVVX, VecU64QAddVVX;

// SQSUB, UQSUB: zn[i] - zm[i] in the range of the element.
vector_primitive VecS8QSubVVX, VecS16QSubVVX, VecS32QSubVVX, VecS64QSubVVX;
vector_primitive VecU8QSubVVX, VecU16QSubVVX, VecU32QSubVVX, VecU64QSubVVX;

// The same with an immediate, which is never negative, whatever the signedness of the elements.
using saturating_immediate_primitive = VecV(const VecV& zdn, unsigned int immediate, CpuContext* context);
saturating_immediate_primitive VecS8QAddVIX, VecS16QAddVIX, VecS32QAddVIX, VecS64QAddVIX;
saturating_immediate_primitive VecU8QAddVIX, VecU16QAddVIX, VecU32QAddVIX, VecU64QAddVIX;
saturating_immediate_primitive VecS8QSubVIX, VecS16QSubVIX, VecS32QSubVIX, VecS64QSubVIX;
saturating_immediate_primitive VecU8QSubVIX, VecU16QSubVIX, VecU32QSubVIX, VecU64QSubVIX;
