// Which 5-bit fields of an A64 word name general registers, and whether the instruction reads or writes them.
#pragma once

#include "framework/aarch64/encode.h"

namespace a64 {

// How an instruction uses a register field: a set of the bits below.
using use = std::uint8_t;
inline constexpr use no_use = 0; // not a general register: SIMD, an immediate, an opcode
inline constexpr use reads = 1;
inline constexpr use writes = 2;
inline constexpr use updates = reads | writes;

// The four places where a register field can stand.
inline constexpr unsigned register_fields = 4;
inline constexpr unsigned field_low_bit[register_fields] = {0, 5, 10, 16};

struct register_uses {
    use field[register_fields]; // by place, in the order of field_low_bit
    bool memory;                // the instruction accesses memory, so that it may fault
    bool register_pairs;        // fields at bits 0 and 16 name a pair, the register and the next one
};

// The uses of an instruction that is neither a transfer nor dependent on its address. A word that no row of
// the table takes, as one of an extension not known here, uses none.
register_uses general_registers(word instruction);

// The number in the field at that place.
constexpr unsigned register_at(word instruction, unsigned place) {
    return (instruction >> field_low_bit[place]) & 31;
}

// What the instruction does with X28 in any of its fields.
use use_of_stolen_register(word instruction, const register_uses& uses);

// The word with every general register field that holds `from` changed to `to`.
word rename_register(word instruction, const register_uses& uses, unsigned from, unsigned to);

// True if one of the four places holds the number, whatever the place means.
constexpr bool may_name(word instruction, unsigned number) {
    return register_at(instruction, 0) == number || register_at(instruction, 1) == number ||
           register_at(instruction, 2) == number || register_at(instruction, 3) == number;
}

} // namespace a64
