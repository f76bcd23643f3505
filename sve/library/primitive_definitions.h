// Defines primitives in one line each: the name, and the function that computes it from the same operands.
// Macros, since only they can make the names. Shapes that one family alone has are in that family's file.
#pragma once

#include "sve/library/primitive_shapes.h"

// Two operands, or an old destination and one operand: the first stays where the predicate is inactive.
#define MERGING_PRIMITIVE(name, ...)                                                                         \
    VecV name(const VecV& zdn, const PredV& pg, const VecV& zm, CpuContext* context) {                       \
        return __VA_ARGS__(zdn, pg, zm, context);                                                            \
    }

// Two operands, all elements.
#define VECTOR_PRIMITIVE(name, ...)                                                                          \
    VecV name(const VecV& zn, const VecV& zm, CpuContext* context) { return __VA_ARGS__(zn, zm, context); }

// One operand, all elements.
#define UNARY_PRIMITIVE(name, ...)                                                                           \
    VecV name(const VecV& zn, CpuContext* context) { return __VA_ARGS__(zn, context); }

// Two operands, and a predicate for a result.
#define COMPARING_PRIMITIVE(name, ...)                                                                       \
    PredV name(const PredV& pg, const VecV& zn, const VecV& zm, CpuContext* context) {                       \
        return __VA_ARGS__(pg, zn, zm, context);                                                             \
    }
