// The rows of the opcode table as data: one for each of the 1483 instruction forms, grouped by family.
#pragma once

#include "sve/decode/decode_maps.h"
#include "sve/decode/decoder.h"

#include <span>

enum class opcode_route : int {
    handler,  // fixed-length code on the register file
    library,  // a primitive of the stub's name, through the bridge
    prefetch, // nothing to do
};

struct opcode_row {
    decode_map_id map;
    int key;
    const char* name;
    opcode_stub stub;
    opcode_route route;
    bool missing; // recognised, but not carried out yet
};

// The rows of one family, in the order of its table.
#define OPCODE_FAMILY(family) std::span<const opcode_row> family##_rows();
#include "sve/decode/families.def"
#undef OPCODE_FAMILY

// Calls `visit` with every row of every family.
template <class Visit> void for_each_opcode(Visit visit) {
#define OPCODE_FAMILY(family)                                                                                \
    for (const opcode_row& row : family##_rows())                                                            \
        visit(row);
#include "sve/decode/families.def"
#undef OPCODE_FAMILY
}
