// Address generation for any vector length, ADR: zn[i] + zm[i] * scale modulo the element, the scale being
// the digit in the name. Nothing is accessed at these addresses.
#pragma once

#include "sve/library/primitive_shapes.h"

vector_primitive VecU32LEA1VV, VecU32LEA2VV, VecU32LEA4VV, VecU32LEA8VV;

// The same with the low 32 bits of zm[i], sign-extended (X) or zero-extended (Y).
vector_primitive VecU64LEA1XVV, VecU64LEA2XVV, VecU64LEA4XVV, VecU64LEA8XVV;
vector_primitive VecU64LEA1YVV, VecU64LEA2YVV, VecU64LEA4YVV, VecU64LEA8YVV;
